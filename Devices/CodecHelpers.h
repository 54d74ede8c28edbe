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

// Whether `payload` is a write of this code and block carrying at least `bodySize` bytes after its head
// (the device side's check before it stores a written block).
bool isWrite(const QByteArray &payload, quint8 code, quint8 block, int bodySize);

// Sections whose block is one fixed-size record per element (servers, analog channels): a write carries
// one record, its element in the head's index byte; the device's answer carries them all.
template <class Section, class Record>
QByteArray encodeRecord(const Section &section, quint8 code, quint8 block, int index, Record record) {
    const auto *e = section.element(index);
    return e ? head(code, block, quint8(index), 0) + record(e) : QByteArray();
}

template <class Section, class Record>
QByteArray encodeRecords(const Section &section, quint8 answerCode, quint8 block, Record record) {
    QByteArray b = head(answerCode, block, 0, 0);
    for (int i = 0; i < section.count(); ++i) {
        if (const auto *e = section.element(i))
            b += record(e);
    }
    return b;
}

// "Прочитано <head bytes in hex> <label>" to the exchange log.
void logRead(const QByteArray &payload, const QString &label);

} // namespace kd::codec
