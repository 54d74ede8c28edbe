#pragma once

#include <QDialog>

class QLineEdit;

// Asks for the device password when the device refuses access. The password is up to nine digits; the
// field opens empty, shows the digits while they are typed and masks them once it loses the focus. The
// caller reads password() after acceptance and sends it to the device.
class PasswordDialog : public QDialog {
    Q_OBJECT
public:
    explicit PasswordDialog(QWidget *parent = nullptr);

    qint32 password() const { return m_password; }
    QLineEdit *passwordEdit() const { return m_edit; }

public slots:
    void on_buttonBox_accepted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void updatePassword(const QString &text);

    QLineEdit *m_edit;
    qint32 m_password = 0;
};
