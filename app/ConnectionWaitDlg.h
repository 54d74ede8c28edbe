#pragma once

#include <QDialog>

class QLabel;
class QMovie;
class QPushButton;

// Shown while the remote link waits for the device to come to the configuration server. Cancel
// (the button, Esc or the close box) emits connectionWaitCancelled so the attempt is dropped; the
// window closes the box with accept() once the device answers.
class ConnectionWaitDlg : public QDialog {
    Q_OBJECT
public:
    explicit ConnectionWaitDlg(QWidget *parent = nullptr);

    void setMessage(const QString &text);
    QMovie *movie() const { return m_movie; }
    QPushButton *cancelButton() const { return m_cancel; }

signals:
    void connectionWaitCancelled();

public slots:
    void reject() override;

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void fitMessage();

    QLabel *m_message;
    QLabel *m_animation;
    QMovie *m_movie;
    QPushButton *m_cancel;
};
