#include "app/PasswordDialog.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

PasswordDialog::PasswordDialog(QWidget *parent)
    : QDialog(parent)
    , m_edit(new QLineEdit(this)) {
    setWindowTitle(QStringLiteral("Ввод пароля"));

    auto *prompt = new QLabel(QStringLiteral("Введите пароль для доступа к прибору"), this);
    m_edit->setObjectName(QStringLiteral("passwordEdit"));
    m_edit->setInputMask(QStringLiteral("999999999"));
    // Masked only once it holds digits: masking the mask's nine blanks would show an empty field as a
    // nine-character password.
    m_edit->installEventFilter(this);
    m_edit->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase |
                                Qt::ImhDigitsOnly);
    prompt->setBuddy(m_edit);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("buttonBox"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Отмена"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(prompt);
    layout->addWidget(m_edit);
    layout->addWidget(buttons);

    connect(m_edit, &QLineEdit::textChanged, this, &PasswordDialog::updatePassword);
    QMetaObject::connectSlotsByName(this);
}

void PasswordDialog::on_buttonBox_accepted() {
    accept();
}

bool PasswordDialog::eventFilter(QObject *watched, QEvent *event) {
    if (watched == m_edit && event->type() == QEvent::FocusOut)
        m_edit->setEchoMode(m_edit->text().isEmpty() ? QLineEdit::Normal : QLineEdit::PasswordEchoOnEdit);
    return QDialog::eventFilter(watched, event);
}

void PasswordDialog::updatePassword(const QString &text) {
    // Emptied while masked: nothing left to hide.
    if (text.isEmpty())
        m_edit->setEchoMode(QLineEdit::Normal);
    bool ok = false;
    const qint32 value = text.toInt(&ok, 10);
    m_password = ok ? value : 0;
}
