#include "pages/GsmProfileDialog.h"

#include "pages/DeviceTextValidator.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

GsmProfileDialog::GsmProfileDialog(QWidget *parent)
    : QDialog(parent)
    , m_name(new QLineEdit(this))
    , m_apn(new QLineEdit(this))
    , m_user(new QLineEdit(this))
    , m_password(new QLineEdit(this)) {
    setWindowTitle(QStringLiteral("Добавление профиля"));
    // The three access values go to the device as they are: the same limits as on the GSM page.
    DeviceTextValidator::install(m_apn);
    DeviceTextValidator::install(m_user);
    DeviceTextValidator::install(m_password);

    auto *heading = new QLabel(QStringLiteral("Добавление нового профиля настроек GSM"), this);
    QFont font = heading->font();
    font.setBold(true);
    heading->setFont(font);

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Название профиля:"), m_name);
    form->addRow(QStringLiteral("Точка доступа:"), m_apn);
    form->addRow(QStringLiteral("Пользователь:"), m_user);
    form->addRow(QStringLiteral("Пароль:"), m_password);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Отмена"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

GsmProfile GsmProfileDialog::profile() const {
    return {m_name->text(), m_apn->text(), m_user->text(), m_password->text()};
}

void GsmProfileDialog::setProfile(const GsmProfile &profile) {
    m_name->setText(profile.name);
    m_apn->setText(profile.apn);
    m_user->setText(profile.user);
    m_password->setText(profile.password);
}
