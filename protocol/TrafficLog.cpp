#include "protocol/TrafficLog.h"

#include "protocol/Frame.h"
#include "protocol/UNPProtocol.h"

#include "Devices/configuration.h"

Q_LOGGING_CATEGORY(lcProtocol, "tavrel.protocol")

namespace proto {

namespace {

constexpr int PasswordOffset = Frame::PayloadOffset + Frame::HeadSize;
constexpr int PasswordSize = 4;

bool carriesPassword(const QByteArray &frame) {
    if (frame.size() < PasswordOffset + PasswordSize)
        return false;
    const quint8 type = quint8(frame.at(Frame::TypeOffset));
    const quint8 code = quint8(frame.at(Frame::PayloadOffset + Frame::CodeOffset));
    const quint8 operation = quint8(frame.at(Frame::PayloadOffset + Frame::OperationOffset));
    const bool login = type == CommandPacketType && code == code::Mode && operation == op::Login;
    const bool change = type == ConfigPacketType && code == code::PasswordChange;
    return login || change;
}

} // namespace

void TrafficLog::write(const QString &text) {
    kd::trafficLog(text);
}

QString TrafficLog::maskedHex(const QByteArray &frame) {
    QString hex = QString::fromLatin1(frame.toHex());
    if (!carriesPassword(frame))
        return hex;
    hex.replace(PasswordOffset * 2, PasswordSize * 2, QString(PasswordSize * 2, QLatin1Char('*')));
    const int checksumAt = frame.size() - 2;
    if (checksumAt >= PasswordOffset + PasswordSize)
        hex.replace(checksumAt * 2, 4, QStringLiteral("****"));
    return hex;
}

} // namespace proto
