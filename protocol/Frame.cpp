#include "protocol/Frame.h"

namespace proto {

namespace {

quint16 readU16(const QByteArray &bytes, int offset) {
    return quint16(quint8(bytes.at(offset)) | (quint8(bytes.at(offset + 1)) << 8));
}

void appendU16(QByteArray &bytes, quint16 value) {
    bytes.append(char(value & 0xFF));
    bytes.append(char(value >> 8));
}

} // namespace

quint16 Frame::checksum(const QByteArray &frameSoFar) {
    quint16 sum = 0;
    if (frameSoFar.size() <= 3)
        return sum;
    // Word 0 (the markers) is left out, and an odd last byte belongs to no word: the device
    // computes it the same way, so both gaps stay.
    const int words = frameSoFar.size() / 2;
    for (int i = 1; i < words; ++i)
        sum ^= readU16(frameSoFar, i * 2);
    return sum;
}

QByteArray Frame::build(quint8 type, const QByteArray &payload, quint8 reserved) {
    QByteArray frame;
    frame.reserve(payload.size() + Overhead);
    frame.append(char(Marker));
    frame.append(char(Marker));
    frame.append(char(type));
    frame.append(char(reserved));
    appendU16(frame, quint16(payload.size()));
    frame.append(payload);
    appendU16(frame, checksum(frame));
    return frame;
}

void Frame::build(Packet &packet) {
    packet.length = quint16(packet.payload.size());
    packet.frame = build(packet.type, packet.payload, packet.reserved);
}

QByteArray Frame::textPayload(const QString &text) {
    QByteArray payload(TextSize, '\0');
    const int n = qMin(TextSize, text.size());
    for (int i = 0; i < n; ++i) {
        const ushort c = text.at(i).unicode();
        payload[i] = char(c > 255 ? 0 : c);
    }
    return payload;
}

QByteArray Frame::textFrame(quint8 type, const QString &text) {
    return build(type, textPayload(text));
}

bool Frame::isFirmwareChunk(const QByteArray &chunk) {
    return chunk.size() > FirmwareKindOffset && quint8(chunk.at(0)) == FirmwareMarker &&
           (quint8(chunk.at(FirmwareKindOffset)) & 0xF0) == 0x90;
}

Frame::Received Frame::check(const QByteArray &chunk) {
    Received r;
    if (isFirmwareChunk(chunk)) {
        r.kind = ChunkKind::Firmware;
        return r;
    }
    if (chunk.size() < PayloadOffset)
        return r;
    const quint16 length = readU16(chunk, LengthOffset);
    if (int(length) + Overhead > chunk.size())
        return r;
    r.kind = ChunkKind::Accepted;
    r.type = quint8(chunk.at(TypeOffset));
    r.length = length;
    r.payload = chunk.mid(PayloadOffset, length);
    return r;
}

Frame::Explanation Frame::explain(const QByteArray &bytes) {
    Explanation e;
    if (bytes.size() < PayloadOffset)
        return e;
    e.markersOk = quint8(bytes.at(0)) == Marker && quint8(bytes.at(1)) == Marker;
    e.type = quint8(bytes.at(TypeOffset));
    e.length = readU16(bytes, LengthOffset);
    const int end = PayloadOffset + e.length;
    if (end + 2 > bytes.size())
        return e;
    e.complete = true;
    e.checksum = readU16(bytes, end);
    e.expectedChecksum = checksum(bytes.left(end));
    e.checksumOk = e.checksum == e.expectedChecksum;
    const QByteArray payload = bytes.mid(PayloadOffset, e.length);
    if (payload.size() > CodeOffset)
        e.code = quint8(payload.at(CodeOffset));
    if (payload.size() > OperationOffset)
        e.operation = quint8(payload.at(OperationOffset));
    if (payload.size() > ParameterOffset)
        e.parameter = quint8(payload.at(ParameterOffset));
    e.body = payload.mid(HeadSize);
    e.surplus = bytes.mid(end + 2);
    return e;
}

} // namespace proto
