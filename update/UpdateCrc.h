#pragma once

#include <QByteArray>
#include <QtGlobal>

// The checksum of the boot loader's page channel: a CRC-16 with generator 0x1021 and start value 0 in its
// non-augmented form (message bits are shifted into the register, no zero bits are appended at the end).
// This differs from CRC-16/XMODEM on purpose: the device's boot loader computes it this way.
namespace UpdateCrc {

constexpr quint16 Generator = 0x1021;

quint16 compute(const char *data, int size, quint16 start = 0);
// Checksum over bytes [from, from + count) of bytes; a range reaching past the end is cut at the end.
quint16 compute(const QByteArray &bytes, int from, int count);

} // namespace UpdateCrc
