#include "tests/support/FakeLink.h"

#include "protocol/Frame.h"

#include <QTimer>

FakeLink::~FakeLink() {
    if (keepWriteHeads)
        *keepWriteHeads = writeHeads();
}

bool FakeLink::open() {
    opened = true;
    if (announceOpen)
        emit connected();
    return true;
}

qint64 FakeLink::write(const QByteArray &bytes) {
    written << bytes;
    emit wrote(bytes);
    if (fault != Silent && bytes.size() > proto::Frame::TypeOffset)
        deliverLater(answerFor(bytes));
    return bytes.size();
}

QByteArray FakeLink::readAll() {
    const QByteArray out = m_buffer;
    m_buffer.clear();
    return out;
}

void FakeLink::deliverNow(const QByteArray &bytes) {
    m_buffer += bytes;
    emit readyRead();
}

void FakeLink::deliverLater(const QByteArray &bytes) {
    QTimer::singleShot(0, this, [this, bytes] { deliverNow(bytes); });
}

void FakeLink::deliverPayload(quint8 type, const QByteArray &payload) {
    deliverNow(proto::Frame::build(type, payload));
}

QStringList FakeLink::writeHeads() const {
    QStringList heads;
    for (const QByteArray &f : written) {
        if (f.size() >= 10 && quint8(f[proto::Frame::TypeOffset]) == proto::ConfigPacketType &&
            !(quint8(f[proto::Frame::PayloadOffset]) & 0x80))
            heads << QString::fromLatin1(f.mid(proto::Frame::PayloadOffset, 3).toHex(' '));
    }
    return heads;
}

QByteArray FakeLink::answerFor(const QByteArray &frame) const {
    const quint8 type = quint8(frame.at(proto::Frame::TypeOffset));
    QByteArray head = frame.mid(proto::Frame::PayloadOffset, 4).leftJustified(4, '\0');
    if (type == proto::ConfigPacketType && quint8(head.at(0)) == 0x81 && !identity.name().isEmpty())
        return proto::Frame::build(type, identity.encodeAnswer(quint8(head.at(1))));
    head[1] = char(quint8(head.at(1)) | 0x80);
    return proto::Frame::build(type, head + QByteArray("\1\0", 2));
}
