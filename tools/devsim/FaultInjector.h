#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QRandomGenerator>
#include <QStringList>
#include <functional>

class QTimer;

// Sits between the device logic and the link and spoils answers on demand, so that every way a real
// line fails can be produced at will: lost, cut and garbled answers, answers in two pieces, a slow
// device, a slow line, a device that goes away. Answers are numbered from 1 in the order they are sent.
class FaultInjector : public QObject {
    Q_OBJECT
public:
    enum class Fault { None, Silent, Truncated, Garbage };
    Q_ENUM(Fault)

    struct Settings {
        int silentEvery = 0;   // drop every Nth answer
        int truncateEvery = 0; // cut every Nth answer short
        int garbageEvery = 0;  // random bytes instead of every Nth answer
        bool split = false;    // each answer in two writes
        int splitPauseMs = 20; // pause between the two pieces
        int latencyMs = 0;     // the device's think time before each answer
        int baud = 0;          // line rate the output is paced at (0: unpaced)
        int hangupAfter = 0;   // close the link after this many answers
    };

    explicit FaultInjector(const Settings &settings, QObject *parent = nullptr);

    // The microsecond clock that pacing is measured on (a monotonic clock unless a test injects one).
    void setClock(std::function<qint64()> clock);

    // An answer of the device: numbered, possibly spoilt, paced. requestBytes: the size of the request it
    // answers, which on a paced line takes its own time to come in before the device can answer.
    void sendAnswer(const QByteArray &frame, int requestBytes = 0);
    // Bytes of the boot loader: paced like everything on the line but never spoilt or counted.
    void sendRaw(const QByteArray &bytes);

    // Which fault hits answer number n (from 1). A silent answer beats garbage, garbage beats a cut.
    Fault faultFor(int n) const;
    // How many microseconds bytes take on a line of baud bits per second at 10 bits a byte (0: unpaced).
    static qint64 lineTimeUs(qint64 bytes, int baud);
    // The first part of a cut answer: half of it, at least one byte.
    static QByteArray truncated(const QByteArray &frame);
    // What a confused device sends instead of `frame`: "garbage" (bytes that hold no frame), "short" (a
    // frame shorter than its own head), "long" (a length past any frame) or "loader" (a boot-loader
    // look-alike). Empty for an unknown kind.
    static QByteArray nonsense(const QString &kind, const QByteArray &frame);
    static QStringList nonsenseKinds();

    // A new peer: the line starts afresh, a hang-up no longer silences it.
    void restart();

    int answersSent() const { return m_answers; }
    bool idle() const { return m_pending.isEmpty(); }
    // Writes every piece whose time has come on the clock; a timer calls it when the next one is due.
    void deliverDue();

signals:
    // Bytes to put on the line now.
    void write(const QByteArray &bytes);
    // The answer limit of hangupAfter has been reached and its last byte written.
    void hangUp();

private:
    struct Piece {
        qint64 due = 0; // microseconds
        QByteArray bytes;
        bool hangUpAfter = false;
    };
    void schedule(const QByteArray &bytes, qint64 extraDelay, bool hangUpAfter);

    Settings m_settings;
    std::function<qint64()> m_clock;
    QRandomGenerator m_random;
    QList<Piece> m_pending;
    QTimer *m_timer;
    qint64 m_lineFreeAt = 0;
    int m_answers = 0;
    bool m_hungUp = false; // requests that came in with the last answer before a hang-up get none
};
