#pragma once

#include <QByteArray>
#include <QList>

// The device's receive buffer: requests may arrive in pieces or several in one chunk, as on a UART.
// Bytes before a frame marker are skipped, frames with a wrong checksum are discarded, and a partial
// frame left alone longer than the gap limit is forgotten (the sender gave up on it).
class RequestAssembler {
public:
    struct Request {
        quint8 type = 0;
        QByteArray payload;
    };

    // The largest payload the device accepts; a longer announced length means we are not on a frame.
    static constexpr int MaxPayload = 512;
    static constexpr qint64 DefaultGapMs = 1000;

    explicit RequestAssembler(qint64 gapMs = DefaultGapMs);

    // Adds received bytes (nowMs: a monotonic time stamp) and returns the requests now complete.
    QList<Request> feed(const QByteArray &bytes, qint64 nowMs);
    void clear() { m_buffer.clear(); }
    int buffered() const { return m_buffer.size(); }
    int discarded() const { return m_discarded; }

private:
    qint64 m_gapMs;
    qint64 m_lastFeed = 0;
    QByteArray m_buffer;
    int m_discarded = 0;
};
