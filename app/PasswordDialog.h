#pragma once

#include <QDialog>

class QLineEdit;

// Asks for the device password when the device refuses access. The password is nine digits; the
// caller reads password() after acceptance and sends it to the device.
class PasswordDialog : public QDialog {
    Q_OBJECT
public:
    explicit PasswordDialog(QWidget *parent = nullptr);

    qint32 password() const { return m_password; }
    QLineEdit *passwordEdit() const { return m_edit; }

public slots:
    void on_buttonBox_accepted();

private:
    void updatePassword(const QString &text);

    QLineEdit *m_edit;
    qint32 m_password = 0;
};
