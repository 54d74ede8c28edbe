#pragma once

#include "pages/GsmProfileStore.h"

#include <QDialog>

class QLineEdit;

// Asks for the name and the three access values of a new GSM profile.
class GsmProfileDialog : public QDialog {
    Q_OBJECT
public:
    explicit GsmProfileDialog(QWidget *parent = nullptr);

    GsmProfile profile() const;
    void setProfile(const GsmProfile &profile);

    QLineEdit *nameEdit() const { return m_name; }
    QLineEdit *apnEdit() const { return m_apn; }
    QLineEdit *userEdit() const { return m_user; }
    QLineEdit *passwordEdit() const { return m_password; }

private:
    QLineEdit *m_name;
    QLineEdit *m_apn;
    QLineEdit *m_user;
    QLineEdit *m_password;
};
