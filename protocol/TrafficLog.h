#pragma once

#include <QByteArray>
#include <QLoggingCategory>
#include <QString>

Q_DECLARE_LOGGING_CATEGORY(lcProtocol)

namespace proto {

// The exchange log: each line is the Unix time in whole seconds, a blank and the text, written through
// the "default" logging category so that the window and the terminal tool can route it as they please.
class TrafficLog {
public:
    static void write(const QString &text);
    // Lower-case hex of a frame with the password of a login or password-change frame (and the checksum,
    // which would give away the XOR of its two halves) replaced by asterisks.
    static QString maskedHex(const QByteArray &frame);
};

} // namespace proto
