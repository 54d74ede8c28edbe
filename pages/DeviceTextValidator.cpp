#include "pages/DeviceTextValidator.h"

#include <QLineEdit>

DeviceTextValidator::DeviceTextValidator(QObject *parent, int maxLength)
    : QValidator(parent)
    , m_maxLength(maxLength) {}

bool DeviceTextValidator::isSendable(QChar c) {
    const ushort code = c.unicode();
    return (code >= 0x20 && code < 0x7F) || (code >= 0xA0 && code <= 0xFF);
}

bool DeviceTextValidator::isSendable(const QString &text, int maxLength) {
    if (text.size() > maxLength)
        return false;
    for (const QChar c : text) {
        if (!isSendable(c))
            return false;
    }
    return true;
}

QValidator::State DeviceTextValidator::validate(QString &input, int &) const {
    return isSendable(input, m_maxLength) ? Acceptable : Invalid;
}

void DeviceTextValidator::install(QLineEdit *edit, int maxLength) {
    edit->setMaxLength(maxLength);
    edit->setValidator(new DeviceTextValidator(edit, maxLength));
}
