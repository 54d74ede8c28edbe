#include "protocol/StreamDeframer.h"

#include "protocol/Frame.h"

namespace proto {

namespace {

constexpr int ReservedOffset = 3;
constexpr int ChecksumSize = 2;

int readU16(const QByteArray &bytes, int offset) {
    return quint8(bytes.at(offset)) | (quint8(bytes.at(offset + 1)) << 8);
}

bool startsWithMarkers(const QByteArray &bytes) {
    return bytes.size() >= Frame::MarkerSize && quint8(bytes.at(0)) == Frame::Marker &&
           quint8(bytes.at(1)) == Frame::Marker;
}

} // namespace

StreamDeframer::StreamDeframer(Policy policy, int maxPayload, qint64 staleAfterMs)
    : m_policy(policy)
    , m_maxPayload(maxPayload)
    , m_staleAfterMs(staleAfterMs) {}

void StreamDeframer::setJoining(bool on) {
    m_joining = on;
    clear();
}

void StreamDeframer::clear() {
    m_buffer.clear();
    m_headHeld = false;
}

void StreamDeframer::drop(int bytes) {
    if (bytes <= 0)
        return;
    m_droppedLast += bytes;
    ++m_discarded;
}

// A marker pair, or a lone marker at the very end that may be the first half of one.
bool StreamDeframer::markersAt(int pos) const {
    return quint8(m_buffer.at(pos)) == Frame::Marker &&
           (pos + 1 == m_buffer.size() || quint8(m_buffer.at(pos + 1)) == Frame::Marker);
}

bool StreamDeframer::firmwareAt(int pos) const {
    return m_policy == Policy::Lenient && m_buffer.size() - pos > Frame::FirmwareKindOffset &&
           quint8(m_buffer.at(pos)) == Frame::FirmwareMarker &&
           (quint8(m_buffer.at(pos + Frame::FirmwareKindOffset)) & 0xF0) == 0x90;
}

int StreamDeframer::frameSizeAt(int pos) const {
    if (m_buffer.size() - pos < Frame::PayloadOffset)
        return -1;
    return readU16(m_buffer, pos + Frame::LengthOffset) + Frame::Overhead;
}

bool StreamDeframer::checkedFrameAt(int pos) const {
    const int size = frameSizeAt(pos);
    if (size < 0 || size > m_buffer.size() - pos || size - Frame::Overhead > m_maxPayload)
        return false;
    if (quint8(m_buffer.at(pos)) != Frame::Marker || quint8(m_buffer.at(pos + 1)) != Frame::Marker)
        return false;
    if (m_policy == Policy::Checked && m_buffer.at(pos + ReservedOffset) != 0)
        return false;
    const int sumAt = pos + size - ChecksumSize;
    return Frame::checksum(m_buffer.mid(pos, size - ChecksumSize)) == readU16(m_buffer, sumAt);
}

int StreamDeframer::nextMarkers(int from) const {
    for (int p = from; p < m_buffer.size(); ++p) {
        if (markersAt(p))
            return p;
    }
    return -1;
}

int StreamDeframer::nextCheckedFrame(int from) const {
    for (int p = from; p + Frame::Overhead <= m_buffer.size(); ++p) {
        if (checkedFrameAt(p))
            return p;
    }
    return -1;
}

StreamDeframer::Item StreamDeframer::frameAt(int pos, int size) const {
    Item item;
    item.type = quint8(m_buffer.at(pos + Frame::TypeOffset));
    item.payload = m_buffer.mid(pos + Frame::PayloadOffset, size - Frame::Overhead);
    item.bytes = m_buffer.mid(pos, size);
    return item;
}

QList<StreamDeframer::Item> StreamDeframer::feed(const QByteArray &bytes, qint64 nowMs) {
    m_droppedLast = 0;
    m_droppedHeads = 0;
    if (m_staleAfterMs > 0 && !m_buffer.isEmpty() && nowMs - m_lastFeed > m_staleAfterMs) {
        ++m_droppedHeads;
        drop(m_buffer.size());
        m_buffer.clear();
    }
    m_lastFeed = nowMs;
    // A read that begins a frame (or a loader message) of its own is never glued to a held head, so every
    // read that makes a frame by itself still makes that same frame.
    const bool freshStart =
        m_policy == Policy::Lenient && (startsWithMarkers(bytes) || Frame::isFirmwareChunk(bytes));
    if (!m_buffer.isEmpty() && (!m_joining || freshStart)) {
        ++m_droppedHeads;
        drop(m_buffer.size());
        m_buffer.clear();
    }
    // A head held from the start of a read is still that read's first frame when it completes.
    const bool headAtStart = m_policy == Policy::Lenient && (m_buffer.isEmpty() || m_headHeld);
    bool head = headAtStart;
    bool boundary = true; // at the start of a read or right behind a frame
    m_buffer.append(bytes);

    QList<Item> items;
    int pos = 0;
    while (pos < m_buffer.size()) {
        const int available = m_buffer.size() - pos;
        if (boundary && firmwareAt(pos)) {
            // A loader message runs up to the next whole frame, or to the end of the read.
            const int next = m_joining ? nextCheckedFrame(pos + 1) : -1;
            const int end = next < 0 ? m_buffer.size() : next;
            Item item;
            item.firmware = true;
            item.bytes = m_buffer.mid(pos, end - pos);
            items << item;
            pos = end;
            continue;
        }
        if (head) {
            head = false;
            const int size = frameSizeAt(pos);
            if (size >= 0 && size <= available) {
                items << frameAt(pos, size);
                pos += size;
                if (!m_joining) {
                    boundary = true;
                    if (firmwareAt(pos))
                        continue;
                    break;
                }
                continue;
            }
        }
        if (!m_joining)
            break;
        if (!markersAt(pos)) {
            int next = nextMarkers(pos + 1);
            if (next < 0)
                next = m_buffer.size();
            drop(next - pos);
            pos = next;
            boundary = false;
            continue;
        }
        const int size = frameSizeAt(pos);
        if (size < 0)
            break; // the header is still coming
        const bool plausible = size - Frame::Overhead <= m_maxPayload &&
                               (m_policy == Policy::Lenient || m_buffer.at(pos + ReservedOffset) == 0);
        if (plausible && size > available) {
            // A head still waiting for its bytes, unless a whole checked frame behind it shows it never
            // will get them.
            const int later = nextCheckedFrame(pos + 1);
            if (later < 0)
                break;
            ++m_droppedHeads;
            drop(later - pos);
            pos = later;
            boundary = false;
            continue;
        }
        if (!plausible || !checkedFrameAt(pos)) {
            drop(1);
            ++pos;
            boundary = false;
            continue;
        }
        items << frameAt(pos, size);
        pos += size;
        boundary = true;
    }
    if (!m_joining) {
        drop(m_buffer.size() - pos);
        m_buffer.clear();
    } else {
        m_buffer.remove(0, pos);
    }
    m_headHeld = headAtStart && pos == 0 && !m_buffer.isEmpty();
    return items;
}

} // namespace proto
