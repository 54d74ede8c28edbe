#pragma once

#include <QByteArray>
#include <QList>

namespace proto {

// Cuts the bytes of a link into frames however the reads split them: several frames in one read, one
// frame over several reads, a frame behind garbage. The buffer is bounded by the largest payload taken;
// what cannot become a frame is dropped.
class StreamDeframer {
public:
    enum class Policy {
        // The configurator's side. The first frame of a read is taken as it stands (markers and checksum
        // unexamined, as when one read was taken as one frame); frames behind it, or found after garbage,
        // need the markers and a right checksum. A read that begins with the markers starts afresh.
        Lenient,
        // The device's side: every frame needs the markers, a zero reserved byte and a right checksum.
        Checked,
    };

    struct Item {
        bool firmware =
            false; // a boot-loader message: its bytes up to the next whole frame or the end of the read
        quint8 type = 0;
        QByteArray payload;
        QByteArray bytes; // as received
    };

    static constexpr int DefaultMaxPayload = 4096;

    // staleAfterMs > 0: a partial frame left alone that long is forgotten (the sender gave up on it).
    explicit StreamDeframer(Policy policy = Policy::Lenient, int maxPayload = DefaultMaxPayload,
                            qint64 staleAfterMs = 0);

    // One read of the link (nowMs: a monotonic time stamp, only needed with a stale limit). Returns the
    // frames and boot-loader messages now complete, in order.
    QList<Item> feed(const QByteArray &bytes, qint64 nowMs = 0);

    // Off: every read stands alone and yields at most its first frame (and a boot-loader message right
    // behind it); nothing is held for the next read.
    void setJoining(bool on);
    bool joining() const { return m_joining; }

    void clear();
    int buffered() const { return m_buffer.size(); }
    // Bytes thrown away by the last feed (garbage, a head that never completed, a frame that did not fit).
    int droppedLast() const { return m_droppedLast; }
    // Frame heads held for more bytes that the last feed gave up on (a fresh frame began, the head went
    // stale, or a whole frame behind it showed that its bytes would never come).
    int droppedHeads() const { return m_droppedHeads; }
    // How often bytes were thrown away since construction.
    int discarded() const { return m_discarded; }

private:
    bool markersAt(int pos) const;
    bool firmwareAt(int pos) const;
    bool checkedFrameAt(int pos) const;
    int frameSizeAt(int pos) const;
    int nextMarkers(int from) const;
    int nextCheckedFrame(int from) const;
    Item frameAt(int pos, int size) const;
    void drop(int bytes);

    Policy m_policy;
    int m_maxPayload;
    qint64 m_staleAfterMs;
    qint64 m_lastFeed = 0;
    QByteArray m_buffer;
    bool m_joining = true;
    bool m_headHeld = false;
    int m_droppedLast = 0;
    int m_droppedHeads = 0;
    int m_discarded = 0;
};

} // namespace proto
