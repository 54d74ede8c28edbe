#pragma once

#include <QDialog>

class QLabel;

// A small box shown while the link to the configuration server is being set up. Its frame has only
// the title bar (no close, minimise or help buttons: the attempt ends by itself) and it stays below
// other windows, so error boxes raised meanwhile are never hidden behind it.
class ConnectionToServerDialog : public QDialog {
    Q_OBJECT
public:
    explicit ConnectionToServerDialog(QWidget *parent = nullptr);

    void setMessage(const QString &text);
    QString message() const;

private:
    QLabel *m_message;
};
