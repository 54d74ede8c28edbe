#pragma once

#include "protocol/StreamDeframer.h"

#include <QByteArray>
#include <QList>
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
// response timer. Up to a window of requests is on the line at once; each leaves the queue as soon as it
// is written and waits among the outstanding ones until an answer of its code and operation comes. The
// response timer watches the oldest outstanding request: a time-out gives it up and moves on to the next
// frame instead of repeating it. An answer that fits no request, or a read that makes no frame, counts
// as silence for the oldest request: it is asked once more, and given up after the third such answer.
class Device : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultResponseInterval = 3000;
    static constexpr int DefaultRetryLimit = 3;
    // Requests on the line at once: the whole of a read-all, a write-all or a telemetry round, so that a
    // remote device costs one round trip instead of one per request.
    static constexpr int DefaultWindow = 32;
    // Nonsense answers in a row after which a request is given up.
    static constexpr int NonsenseLimit = 3;
    // A frame head that gets no more bytes for this long is taken for nonsense.
    static constexpr int DefaultStallInterval = 500;

    // The configuration is filled by the parser and read by the writes; it is not owned.
    explicit Device(kd::Configuration *configuration = nullptr, QObject *parent = nullptr);
    ~Device() override;

    // Takes ownership of `link` (null drops the current one); the previous link is closed and deleted later.
    void setLink(Connection *link);
    Connection *link() const;
    kd::Configuration *configuration() const;
    void setConfiguration(kd::Configuration *configuration);

    void setResponseInterval(int ms);
    int responseInterval() const;
    // Requests awaiting their answers at most (1: one request until its answer).
    void setWindow(int requests);
    int window() const { return m_window; }
    int outstanding() const { return m_outstanding.size(); }
    void setStallInterval(int ms);
    int retryLimit() const { return m_retryLimit; }
    int retryCount() const { return m_retries; }
    void resetRetries();
    // Stops waiting for answers (the response timer, the outstanding requests) and forgets a held frame
    // head; the queue stays.
    void stop();
    // A written request still awaits its answer.
    bool isAnswerPending() const;
    // Nothing queued and no answer awaited.
    bool isIdle() const;

    // Offered every received chunk before anything else; returning true claims it (firmware loader).
    void setFirmwareHandler(std::function<bool(const QByteArray &chunk)> handler);

    // Joining the reads into frames (on by default). Off: every chunk is taken as one frame and a short
    // one is simply dropped.
    void setReassembly(bool on);
    bool reassembly() const { return m_deframer.joining(); }

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
    // A chunk neither claimed nor making a frame (announced length not all there, garbage).
    void chunkDropped(const QByteArray &chunk);
    // A request given up: its time-out passed, or (`nonsense`) it was answered with nonsense three times in
    // a row, so that asking it again is no use.
    void requestAbandoned(quint8 code, quint8 operation, quint8 parameter, bool nonsense);
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
    // The queue and the parser stay inside the protocol layer: the workflows fill the queue, the session
    // controller reads the parser; the layers above talk to the controller. Tests look in through
    // DeviceProbe.
    friend class DeviceWorkflows;
    friend class SessionController;
    friend struct DeviceProbe;
    proto::UNPProtocol *protocol() const;
    UNPParcer *parser() const;

    struct Request {
        QByteArray frame;
        quint8 code = 0;
        quint8 operation = 0;
        quint8 parameter = 0;
        int nonsense = 0;
        bool intoSilence = false; // written while the device was taken for lost
    };

    void onReadyRead();
    void handleFrame(const proto::StreamDeframer::Item &frame);
    void onNonsense();
    void onStall();
    void abandonOldest(bool nonsense);
    void remember(const Request &request);
    void resendParked();
    void writeFrame(const QByteArray &frame);
    static int find(const QList<Request> &requests, const QByteArray &payload);
    void raiseConnectionLost();

    kd::Configuration *m_configuration = nullptr;
    QPointer<Connection> m_link;
    proto::UNPProtocol *m_protocol = nullptr;
    UNPParcer *m_parser = nullptr;
    QTimer *m_responseTimer = nullptr;
    QTimer *m_stallTimer = nullptr;
    std::function<bool(const QByteArray &)> m_firmwareHandler;
    proto::StreamDeframer m_deframer;
    QList<Request> m_outstanding; // oldest first
    QList<Request> m_recent;      // the last ones answered or given up: a late answer is no nonsense
    QList<Request> m_parked;      // given up at a time-out while the device was taken for lost
    int m_window = DefaultWindow;
    int m_retries = 0;
    int m_retryLimit = DefaultRetryLimit;
    bool m_lostPending = false;
};
