#pragma once

#include <QByteArray>
#include <QtGlobal>

// Byte layouts of the boot loader's page channel. It shares the device link with the UNP protocol but has
// frames of its own: 12-byte messages from the device and 526-byte page packets to it.
namespace UpdateChannel {

constexpr quint8 Start = 0x55;
constexpr quint8 Marker = 0x9; // top four bits of the byte carrying page number bits 8..11

constexpr int PageSize = 520;
constexpr int PageSlots = 1024;
constexpr int StreamEnd = 512; // the transfer streams pages 0..511 whatever the file's page count
constexpr int LastPage = StreamEnd - 1;

// Device message.
constexpr int MessageSize = 12;
constexpr int MsgKind = 1;
constexpr int MsgHardware = 2;
constexpr int MsgFwMiddle = 4;
constexpr int MsgFwBuild = 6;
constexpr int MsgFwMajor = 7;
constexpr int MsgPageLow = 8;
constexpr int MsgPageHigh = 9;
constexpr int MsgCrc = 10;
constexpr int MsgCrcFrom = 1;
constexpr int MsgCrcCount = 9;

enum MessageKind : quint8 { PageConfirmed = 1, PageRequested = 2, PagePacket = 3, PageError = 4 };

// Page packet.
constexpr int PacketSize = 526;
constexpr int PktKind = 1;
constexpr int PktPageLow = 2;
constexpr int PktPageHigh = 3;
constexpr int PktData = 4;
constexpr int PktCrc = 524;
constexpr int PktCrcFrom = 1;
constexpr int PktCrcCount = 523;

constexpr quint8 NoVersionMatch = 255; // a major part of 255 in a request turns the version match off

struct Message {
    quint8 kind = 0;
    quint16 hardware = 0;
    quint16 fwMiddle = 0;
    quint8 fwBuild = 0;
    quint8 fwMajor = 0;
    quint16 page = 0;
    quint8 marker = Marker;
};

inline quint16 readU16(const QByteArray &b, int off) {
    return quint16(quint8(b.at(off)) | (quint8(b.at(off + 1)) << 8));
}
inline void writeU16(QByteArray &b, int off, quint16 v) {
    b[off] = char(v & 0xFF);
    b[off + 1] = char(v >> 8);
}

// Whether bytes begin like a page-channel message: the start byte and the marker in byte 9.
bool looksLikeMessage(const QByteArray &bytes);
bool messageCrcValid(const QByteArray &message);
// Decodes the first 12 bytes; the caller checks the size and the checksum first.
Message decodeMessage(const QByteArray &message);
QByteArray encodeMessage(const Message &m);
quint16 packetPage(const QByteArray &packet);
bool packetCrcValid(const QByteArray &packet);
// page must hold PageSize bytes; shorter data is padded with zero bytes.
QByteArray encodePagePacket(quint16 page, const QByteArray &data);

// Hardware version 0x1203 reads 1.2.0.3: its four nibbles from the top down.
QString hardwareText(quint16 version);
// A firmware build b of an image with major part M and middle part m reads M.m.b.
QString buildText(quint8 major, quint16 middle, quint16 build);

} // namespace UpdateChannel
