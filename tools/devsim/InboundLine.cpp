#include "tools/devsim/InboundLine.h"

#include "tools/devsim/FaultInjector.h"

#include <QElapsedTimer>
#include <QTimer>
#include <memory>

InboundLine::InboundLine(int baud, QObject *parent)
    : QObject(parent)
    , m_baud(qMax(0, baud))
    , m_timer(new QTimer(this)) {
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    m_clock = [clock] { return clock->nsecsElapsed() / 1000; };
    m_timer->setSingleShot(true);
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &InboundLine::deliverArrived);
}

void InboundLine::setClock(std::function<qint64()> clock) {
    m_clock = std::move(clock);
    clear();
}

void InboundLine::feed(const QByteArray &bytes) {
    if (bytes.isEmpty())
        return;
    if (m_baud == 0) {
        emit arrived(bytes);
        return;
    }
    deliverArrived();
    // An idle line starts a new run now; a busy one takes the bytes after those already on it.
    if (m_pending.isEmpty()) {
        m_runStart = m_clock();
        m_runDelivered = 0;
    }
    m_pending.append(bytes);
    deliverArrived();
}

void InboundLine::deliverArrived() {
    if (m_pending.isEmpty())
        return;
    const qint64 now = m_clock();
    int n = 0;
    while (n < m_pending.size() && arrivalUs(n) <= now)
        ++n;
    if (n > 0) {
        const QByteArray bytes = m_pending.left(n);
        m_pending.remove(0, n);
        m_runDelivered += n;
        emit arrived(bytes);
    }
    // The receiver may have cleared the line meanwhile.
    if (m_pending.isEmpty())
        m_timer->stop();
    else
        m_timer->start(int(qMax<qint64>(0, (arrivalUs(0) - m_clock() + 999) / 1000)));
}

void InboundLine::clear() {
    m_pending.clear();
    m_runStart = 0;
    m_runDelivered = 0;
    m_timer->stop();
}

qint64 InboundLine::arrivalUs(int n) const {
    if (m_baud == 0)
        return m_clock();
    return m_runStart + FaultInjector::lineTimeUs(m_runDelivered + n + 1, m_baud);
}
