#include "tools/devsim/RequestAssembler.h"

#include "Devices/ByteOrder.h"
#include "protocol/Frame.h"

using proto::Frame;

namespace {
constexpr int ReservedOffset = 3;
}

RequestAssembler::RequestAssembler(qint64 gapMs)
    : m_gapMs(gapMs) {}

QList<RequestAssembler::Request> RequestAssembler::feed(const QByteArray &bytes, qint64 nowMs) {
    if (!m_buffer.isEmpty() && nowMs - m_lastFeed > m_gapMs) {
        ++m_discarded;
        m_buffer.clear();
    }
    m_lastFeed = nowMs;
    m_buffer.append(bytes);

    QList<Request> requests;
    for (;;) {
        // Resynchronise on the two markers.
        int start = 0;
        while (start < m_buffer.size() &&
               !(quint8(m_buffer.at(start)) == Frame::Marker &&
                 (start + 1 >= m_buffer.size() || quint8(m_buffer.at(start + 1)) == Frame::Marker)))
            ++start;
        if (start > 0) {
            ++m_discarded;
            m_buffer.remove(0, start);
        }
        if (m_buffer.size() < Frame::PayloadOffset)
            break;
        // A sender always puts 0 in the reserved byte; anything else means these markers are payload.
        const int length = kd::le::u16(m_buffer, Frame::LengthOffset);
        if (length > MaxPayload || m_buffer.at(ReservedOffset) != 0) {
            ++m_discarded;
            m_buffer.remove(0, 1);
            continue;
        }
        const int size = length + Frame::Overhead;
        if (m_buffer.size() < size)
            break;
        const QByteArray frame = m_buffer.left(size);
        const quint16 sum = kd::le::u16(frame, size - 2);
        if (Frame::checksum(frame.left(size - 2)) != sum) {
            ++m_discarded;
            m_buffer.remove(0, 1);
            continue;
        }
        m_buffer.remove(0, size);
        requests.append(
            Request{quint8(frame.at(Frame::TypeOffset)), frame.mid(Frame::PayloadOffset, length)});
    }
    return requests;
}
