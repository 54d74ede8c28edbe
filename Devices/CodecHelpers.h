#pragma once

#include <QByteArray>
#include <QString>

// Small pieces shared by the section codecs.
namespace kd::codec {

constexpr int HeadSize = 4;        // code, operation, index, reserved
constexpr quint8 StatusBit = 0x80; // bit 7 of the operation byte: a status answer, not section data

// A command head followed by `bodySize` zero bytes.
QByteArray head(quint8 code, quint8 operation, quint8 index, int bodySize);

// Whether `payload` is a data answer with this code (and, if operation >= 0, this operation).
bool isAnswer(const QByteArray &payload, quint8 code, int operation = -1);

// Number of whole records of `recordSize` bytes after the head.
int recordCount(const QByteArray &payload, int recordSize);

// "Прочитано <head bytes in hex> <label>" to the exchange log.
void logRead(const QByteArray &payload, const QString &label);

} // namespace kd::codec
