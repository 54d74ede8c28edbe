#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>

#include <functional>

class Connection;
class QTimer;
class UNPParcer;

namespace kd {
class Configuration;
}

namespace proto {
class UNPProtocol;
}

// One device session: the current link, the protocol with its command queue, the answer parser and the
// response timer. Frames are sent one at a time; each leaves the queue as soon as it is written, so a
// time-out moves on to the next frame instead of repeating the unanswered one.
class Device : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultResponseInterval = 3000;
    static constexpr int DefaultRetryLimit = 3;

    // The configuration is filled by the parser and read by the writes; it is not owned.
    explicit Device(kd::Configuration *configuration = nullptr, QObject *parent = nullptr);
    ~Device() override;

    // Takes ownership of `link` (null drops the current one); the previous link is closed and deleted later.
    void setLink(Connection *link);
    Connection *link() const;
    proto::UNPProtocol *protocol() const;
    UNPParcer *parser() const;
    kd::Configuration *configuration() const;
    void setConfiguration(kd::Configuration *configuration);

    void setResponseInterval(int ms);
    int responseInterval() const;
    int retryLimit() const { return m_retryLimit; }
    int retryCount() const { return m_retries; }
    void resetRetries();
    // Stops waiting for an answer (the response timer) and forgets a held frame head; the queue stays.
    void stop();
    bool isAnswerPending() const;
    // Nothing queued and no answer awaited.
    bool isIdle() const;

    // Offered every received chunk before anything else; returning true claims it (firmware loader).
    void setFirmwareHandler(std::function<bool(const QByteArray &chunk)> handler);

    // Holding back the head of a frame that arrived in two chunks (on by default). Off: every chunk is
    // taken as one frame and a short one is simply dropped.
    void setReassembly(bool on);
    bool reassembly() const { return m_reassembly; }

    // Puts a built frame at the tail of the queue (a request sent again as it was).
    void enqueue(const QByteArray &frame);

    // The value last given to changePassword.
    quint32 lastPassword() const;

    // True from connectionLost() until an answer arrives or the owner calls resolveConnectionLost().
    bool isConnectionLost() const { return m_lostPending; }
    // The owner's waiting dialog is closed: a later loss may be reported again.
    void resolveConnectionLost();

public slots:
    // The sending step: writes the head of the queue; called after enqueuing, after each answer and on
    // each time-out.
    void sendNextCommand();
    // The time-out step, driven by the response timer.
    void onResponseTimeout();

signals:
    // The frame as written, password included: show it through proto::TrafficLog::maskedHex.
    void frameSent(const QByteArray &frame);
    void chunkReceived(const QByteArray &chunk);
    // A chunk neither claimed nor taken as a frame (announced length not all there).
    void chunkDropped(const QByteArray &chunk);
    void answerAccepted(quint8 type, const QByteArray &payload);
    void connectionLost();
    // A time-out found the link closed although nothing reported it: the device is gone.
    void linkDown();
    // A section decoded from an answer (its answer code) and a telemetry record (its kind).
    void sectionDecoded(int code);
    void telemetryDecoded(int kind);
    // An answer arrived while a loss was being reported: the owner closes its waiting dialog.
    void connectionRestored();
    void idle();
    void linkChanged(Connection *link);

private:
    void onReadyRead();
    void handleChunk(const QByteArray &chunk);
    void raiseConnectionLost();

    kd::Configuration *m_configuration = nullptr;
    QPointer<Connection> m_link;
    proto::UNPProtocol *m_protocol = nullptr;
    UNPParcer *m_parser = nullptr;
    QTimer *m_responseTimer = nullptr;
    std::function<bool(const QByteArray &)> m_firmwareHandler;
    QByteArray m_partial;
    int m_retries = 0;
    int m_retryLimit = DefaultRetryLimit;
    bool m_lostPending = false;
    bool m_reassembly = true;
};
