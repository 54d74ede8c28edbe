#include "tools/devsim/FaultInjector.h"

#include "tools/devsim/DevsimLog.h"

#include "protocol/Frame.h"

#include <QElapsedTimer>
#include <QTimer>
#include <memory>

namespace {
constexpr int BitsPerByte = 10; // start bit, 8 data bits, stop bit
// Garbage must be the same every run, so that a failing test can be repeated.
constexpr quint32 GarbageSeed = 20629;

bool every(int n, int period) {
    return period > 0 && n % period == 0;
}
} // namespace

FaultInjector::FaultInjector(const Settings &settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_random(GarbageSeed)
    , m_timer(new QTimer(this)) {
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    m_clock = [clock] { return clock->nsecsElapsed() / 1000; };
    m_timer->setSingleShot(true);
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &FaultInjector::deliverDue);
}

void FaultInjector::setClock(std::function<qint64()> clock) {
    m_clock = std::move(clock);
    m_lineFreeAt = 0;
}

FaultInjector::Fault FaultInjector::faultFor(int n) const {
    if (every(n, m_settings.silentEvery))
        return Fault::Silent;
    if (every(n, m_settings.garbageEvery))
        return Fault::Garbage;
    if (every(n, m_settings.truncateEvery))
        return Fault::Truncated;
    return Fault::None;
}

qint64 FaultInjector::lineTimeUs(qint64 bytes, int baud) {
    if (baud <= 0 || bytes <= 0)
        return 0;
    return (bytes * BitsPerByte * 1000000 + baud - 1) / baud;
}

QByteArray FaultInjector::truncated(const QByteArray &frame) {
    return frame.left(qMax(1, frame.size() / 2));
}

QStringList FaultInjector::nonsenseKinds() {
    return {QStringLiteral("garbage"), QStringLiteral("short"), QStringLiteral("long"),
            QStringLiteral("loader")};
}

QByteArray FaultInjector::nonsense(const QString &kind, const QByteArray &frame) {
    if (kind == QLatin1String("garbage")) {
        // A fixed pattern without a marker pair whose length field never fits.
        QByteArray bytes(frame.size(), '\0');
        for (int i = 0; i < bytes.size(); ++i)
            bytes[i] = char(i * 37 + 11);
        return bytes;
    }
    if (kind == QLatin1String("short")) // announces one payload byte, then stops
        return frame.left(proto::Frame::PayloadOffset)
                   .replace(proto::Frame::LengthOffset, 2, QByteArray("\1\0", 2)) +
               frame.mid(proto::Frame::PayloadOffset, 1);
    if (kind == QLatin1String("long"))
        return QByteArray(frame).replace(proto::Frame::LengthOffset, 2, QByteArray("\xff\xff", 2));
    if (kind == QLatin1String("loader"))
        return QByteArray::fromHex("550203120900110300901d1c");
    return QByteArray();
}

void FaultInjector::restart() {
    m_pending.clear();
    m_hungUp = false;
}

void FaultInjector::sendAnswer(const QByteArray &frame, int requestBytes) {
    if (m_hungUp)
        return;
    const int n = ++m_answers;
    const qint64 delay = m_settings.latencyMs * 1000ll + lineTimeUs(requestBytes, m_settings.baud);
    const bool last = m_settings.hangupAfter > 0 && n == m_settings.hangupAfter;
    QByteArray bytes = frame;
    switch (faultFor(n)) {
    case Fault::Silent:
        qCInfo(lcDevsim) << "answer" << n << "dropped on purpose";
        if (last)
            schedule(QByteArray(), delay, true);
        return;
    case Fault::Garbage:
        qCInfo(lcDevsim) << "answer" << n << "replaced by random bytes";
        for (char &c : bytes)
            c = char(m_random.bounded(256));
        break;
    case Fault::Truncated:
        qCInfo(lcDevsim) << "answer" << n << "cut short";
        bytes = truncated(frame);
        break;
    case Fault::None:
        break;
    }
    if (m_settings.split && bytes.size() > 1) {
        const int half = bytes.size() / 2;
        schedule(bytes.left(half), delay, false);
        schedule(bytes.mid(half), m_settings.splitPauseMs * 1000ll, last);
    } else {
        schedule(bytes, delay, last);
    }
}

void FaultInjector::sendRaw(const QByteArray &bytes) {
    schedule(bytes, 0, false);
}

void FaultInjector::schedule(const QByteArray &bytes, qint64 extraDelay, bool hangUpAfter) {
    // A piece is written at once when its last byte would have left a line of the set rate, after the
    // line has finished with what went before.
    const qint64 now = m_clock();
    const qint64 start = qMax(now + extraDelay, m_lineFreeAt);
    const qint64 due = start + lineTimeUs(bytes.size(), m_settings.baud);
    m_lineFreeAt = due;
    m_pending.append(Piece{due, bytes, hangUpAfter});
    deliverDue();
}

void FaultInjector::deliverDue() {
    while (!m_pending.isEmpty() && m_pending.first().due <= m_clock()) {
        const Piece piece = m_pending.takeFirst();
        if (!piece.bytes.isEmpty())
            emit write(piece.bytes);
        if (piece.hangUpAfter) {
            m_pending.clear();
            m_hungUp = true;
            emit hangUp();
            return;
        }
    }
    if (!m_pending.isEmpty())
        m_timer->start(int(qMax<qint64>(0, (m_pending.first().due - m_clock() + 999) / 1000)));
}
