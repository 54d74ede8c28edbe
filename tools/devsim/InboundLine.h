#pragma once

#include <QByteArray>
#include <QObject>
#include <functional>

class QTimer;

// The line from the configurator to the device at a set rate. The configurator's writes cross the
// pseudo-terminal in an instant, but a UART hands the device each byte only once its stop bit is in, and
// bytes written together arrive one after the other. Each byte is passed on when it would have finished
// arriving, queued behind the bytes before it; at rate 0 everything is passed on at once.
class InboundLine : public QObject {
    Q_OBJECT
public:
    explicit InboundLine(int baud, QObject *parent = nullptr);

    // The microsecond clock arrivals are measured on (a monotonic clock unless a test injects one).
    void setClock(std::function<qint64()> clock);

    // Bytes the configurator has just written.
    void feed(const QByteArray &bytes);
    // Passes on every byte that has arrived by now; the line's timer calls it for the next one due.
    void deliverArrived();
    // Forgets the bytes still on the line (the peer went away).
    void clear();

    // When the nth byte still on the line (from 0) will have arrived, in microseconds of the clock.
    qint64 arrivalUs(int n) const;
    int pending() const { return m_pending.size(); }
    bool idle() const { return m_pending.isEmpty(); }

signals:
    void arrived(const QByteArray &bytes);

private:
    int m_baud;
    std::function<qint64()> m_clock;
    QTimer *m_timer;
    QByteArray m_pending;
    // Bytes follow each other without a gap from m_runStart on; arrival times are taken from the start of
    // such a run, so that rounding does not add up over a long packet.
    qint64 m_runStart = 0;
    qint64 m_runDelivered = 0;
};
