#pragma once

#include <QByteArray>
#include <QString>

namespace proto {

// Packet types carried in byte 2 of a frame.
constexpr quint8 ConfigPacketType = 6;
constexpr quint8 CommandPacketType = 7;
// The configuration server learns from this text frame which device the configurator wants.
constexpr quint8 ServerLoginPacketType = 8;

// The outgoing packet from which frames are built.
struct Packet {
    quint8 type = 0;
    quint8 reserved = 0;
    quint16 length = 0;
    QByteArray payload;
    QByteArray frame;
};

// UNP frame: A5 A5, type, 0, length (LE16), payload, XOR checksum (LE16).
struct Frame {
    static constexpr quint8 Marker = 0xA5;
    static constexpr int MarkerSize = 2;
    static constexpr int TypeOffset = 2;
    static constexpr int LengthOffset = 4;
    static constexpr int PayloadOffset = 6;
    static constexpr int Overhead = 8; // markers, header and checksum
    static constexpr int TextSize = 20;
    static constexpr int TextFrameSize = TextSize + Overhead;

    // Bytes of the payload header (code, operation, parameter, reserved) and the status that follows it.
    static constexpr int CodeOffset = 0;
    static constexpr int OperationOffset = 1;
    static constexpr int ParameterOffset = 2;
    static constexpr int HeadSize = 4;
    static constexpr int StatusOffset = 4;

    // The firmware loader answers in frames of its own that start with 'U' and carry 0x9? at offset 9.
    static constexpr quint8 FirmwareMarker = 0x55;
    static constexpr int FirmwareKindOffset = 9;

    // XOR of the little-endian words 1 .. size/2-1 of the bytes built so far.
    static quint16 checksum(const QByteArray &frameSoFar);
    static QByteArray build(quint8 type, const QByteArray &payload, quint8 reserved = 0);
    // Fills packet.length from the payload and packet.frame from the packet.
    static void build(Packet &packet);
    // A 20-byte text payload: characters as single bytes (above 255 become 0), zero padded, cut at 20.
    static QByteArray textPayload(const QString &text);
    static QByteArray textFrame(quint8 type, const QString &text);

    enum class ChunkKind { Accepted, Firmware, Short };
    struct Received {
        ChunkKind kind = ChunkKind::Short;
        quint8 type = 0;
        quint16 length = 0;
        QByteArray payload; // exactly `length` bytes when accepted
    };
    // One chunk is taken as one frame: markers and checksum are not examined, surplus bytes are ignored.
    static Received check(const QByteArray &chunk);
    static bool isFirmwareChunk(const QByteArray &chunk);

    struct Explanation {
        bool complete = false;
        bool markersOk = false;
        bool checksumOk = false;
        quint8 type = 0;
        quint16 length = 0;
        quint16 checksum = 0;
        quint16 expectedChecksum = 0;
        int code = -1;
        int operation = -1;
        int parameter = -1;
        QByteArray body;    // payload after the four-byte head
        QByteArray surplus; // bytes behind the frame
    };
    // Header, checksum verdict and payload head of a frame, for reading traffic logs.
    static Explanation explain(const QByteArray &bytes);
};

} // namespace proto
