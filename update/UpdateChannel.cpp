#include "update/UpdateChannel.h"

#include "update/UpdateCrc.h"

#include <QString>

namespace UpdateChannel {

bool looksLikeMessage(const QByteArray &bytes) {
    return bytes.size() > MsgPageHigh && quint8(bytes.at(0)) == Start &&
           (quint8(bytes.at(MsgPageHigh)) >> 4) == Marker;
}

bool messageCrcValid(const QByteArray &message) {
    return message.size() >= MessageSize &&
           UpdateCrc::compute(message, MsgCrcFrom, MsgCrcCount) == readU16(message, MsgCrc);
}

Message decodeMessage(const QByteArray &message) {
    Message m;
    m.kind = quint8(message.at(MsgKind));
    m.hardware = readU16(message, MsgHardware);
    m.fwMiddle = readU16(message, MsgFwMiddle);
    m.fwBuild = quint8(message.at(MsgFwBuild));
    m.fwMajor = quint8(message.at(MsgFwMajor));
    const quint8 high = quint8(message.at(MsgPageHigh));
    m.page = quint16(quint8(message.at(MsgPageLow)) | ((high & 0x0F) << 8));
    m.marker = high >> 4;
    return m;
}

QByteArray encodeMessage(const Message &m) {
    QByteArray b(MessageSize, '\0');
    b[0] = char(Start);
    b[MsgKind] = char(m.kind);
    writeU16(b, MsgHardware, m.hardware);
    writeU16(b, MsgFwMiddle, m.fwMiddle);
    b[MsgFwBuild] = char(m.fwBuild);
    b[MsgFwMajor] = char(m.fwMajor);
    b[MsgPageLow] = char(m.page & 0xFF);
    b[MsgPageHigh] = char(((m.marker & 0x0F) << 4) | ((m.page >> 8) & 0x0F));
    writeU16(b, MsgCrc, UpdateCrc::compute(b, MsgCrcFrom, MsgCrcCount));
    return b;
}

quint16 packetPage(const QByteArray &packet) {
    return quint16(quint8(packet.at(PktPageLow)) | ((quint8(packet.at(PktPageHigh)) & 0x0F) << 8));
}

bool packetCrcValid(const QByteArray &packet) {
    return packet.size() >= PacketSize &&
           UpdateCrc::compute(packet, PktCrcFrom, PktCrcCount) == readU16(packet, PktCrc);
}

QByteArray encodePagePacket(quint16 page, const QByteArray &data) {
    QByteArray b(PacketSize, '\0');
    b[0] = char(Start);
    b[PktKind] = char(PagePacket);
    b[PktPageLow] = char(page & 0xFF);
    b[PktPageHigh] = char((Marker << 4) | ((page >> 8) & 0x0F));
    const int n = qMin(data.size(), PageSize);
    for (int i = 0; i < n; ++i)
        b[PktData + i] = data.at(i);
    writeU16(b, PktCrc, UpdateCrc::compute(b, PktCrcFrom, PktCrcCount));
    return b;
}

QString hardwareText(quint16 version) {
    return QStringLiteral("%1.%2.%3.%4")
        .arg((version >> 12) & 0xF)
        .arg((version >> 8) & 0xF)
        .arg((version >> 4) & 0xF)
        .arg(version & 0xF);
}

QString buildText(quint8 major, quint16 middle, quint16 build) {
    return QStringLiteral("%1.%2.%3").arg(major).arg(middle).arg(build);
}

} // namespace UpdateChannel
