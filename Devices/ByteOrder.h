#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

// Little-endian field access for protocol bodies and telemetry records. Readers return 0 for any byte
// beyond the end of the array, so a short record decodes as if zero-padded and nothing is read past it;
// writers touch only bytes that exist (callers size the buffer first).
namespace kd::le {

inline bool has(const QByteArray &b, int off, int width) {
    return off >= 0 && width >= 0 && off + width <= b.size();
}

inline quint8 u8(const QByteArray &b, int off) {
    return (off >= 0 && off < b.size()) ? quint8(b.at(off)) : quint8(0);
}

inline quint16 u16(const QByteArray &b, int off) {
    return quint16(u8(b, off) | (quint16(u8(b, off + 1)) << 8));
}

inline quint32 u32(const QByteArray &b, int off) {
    return quint32(u16(b, off)) | (quint32(u16(b, off + 2)) << 16);
}

inline quint64 u64(const QByteArray &b, int off) {
    return quint64(u32(b, off)) | (quint64(u32(b, off + 4)) << 32);
}

inline qint16 i16(const QByteArray &b, int off) {
    return qint16(u16(b, off));
}

inline qint32 i32(const QByteArray &b, int off) {
    return qint32(u32(b, off));
}

inline void put8(QByteArray &b, int off, quint8 v) {
    if (off >= 0 && off < b.size())
        b[off] = char(v);
}

inline void put16(QByteArray &b, int off, quint16 v) {
    put8(b, off, quint8(v));
    put8(b, off + 1, quint8(v >> 8));
}

inline void put32(QByteArray &b, int off, quint32 v) {
    put16(b, off, quint16(v));
    put16(b, off + 2, quint16(v >> 16));
}

inline void put64(QByteArray &b, int off, quint64 v) {
    put32(b, off, quint32(v));
    put32(b, off + 4, quint32(v >> 32));
}

// Text fields travel as one byte per character, zero-padded to a fixed width; a character that does not
// fit in a byte is sent as 0 (the device has no other encoding). A text that fills its field exactly
// carries no terminating zero.
inline void putText(QByteArray &b, int off, int width, const QString &text) {
    for (int i = 0; i < width; ++i) {
        const ushort c = i < text.size() ? text.at(i).unicode() : 0;
        put8(b, off + i, c > 0xFF ? 0 : quint8(c));
    }
}

// Reads a zero-terminated text of at most maxLen bytes (maxLen < 0: up to the end of the array).
inline QString text(const QByteArray &b, int off, int maxLen = -1) {
    if (off < 0 || off >= b.size())
        return QString();
    int end = maxLen < 0 ? b.size() : qMin(b.size(), off + maxLen);
    int stop = off;
    while (stop < end && b.at(stop) != '\0')
        ++stop;
    return QString::fromLatin1(b.constData() + off, stop - off);
}

} // namespace kd::le
