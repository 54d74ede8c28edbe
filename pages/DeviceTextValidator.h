#pragma once

#include <QValidator>

class QLineEdit;

// Text fields of the device (access point, user, password, server address) are 32 single-byte
// characters on the wire. The device firmware takes Latin-1 bytes; anything else would be sent as
// byte 0 and silently cut the text, so such characters are refused while the user types.
class DeviceTextValidator : public QValidator {
    Q_OBJECT
public:
    static constexpr int MaxLength = 32;

    explicit DeviceTextValidator(QObject *parent = nullptr, int maxLength = MaxLength);

    State validate(QString &input, int &pos) const override;

    int maxLength() const { return m_maxLength; }

    // Printable Latin-1 only: no control characters (C0, DEL, C1) and nothing above 0xFF.
    static bool isSendable(QChar c);
    static bool isSendable(const QString &text, int maxLength = MaxLength);

    // Puts a validator and the length limit on an edit.
    static void install(QLineEdit *edit, int maxLength = MaxLength);

private:
    int m_maxLength;
};
