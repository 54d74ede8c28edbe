#pragma once

#include "protocol/StatusNotifier.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVector>
#include <functional>

class AbstarctProtocol;
class Device;
class QTextStream;

// One command of the terminal tool against a connected device: a set of requests, each settled by the
// answers it expects. Requests whose answers do not come (a dropped or cut answer stalls the queue
// for good) are sent again after a quiet spell, until every answer is in or the command's deadline
// passes. Password requests and a blocked device are handled here once for every command.
class DeviceCommand : public QObject, public StatusNotifier {
    Q_OBJECT
public:
    struct Options {
        int deadlineMs = 15000;
        int quietMs = 3500; // no answer for this long: send what is still missing again
        int stallMs = 250;  // a chunk that was no whole frame and nothing after it: the queue has stalled
        bool hasPassword = false;
        quint32 password = 0;
    };

    DeviceCommand(Device *device, const Options &options, QTextStream &out, QTextStream &err,
                  QObject *parent = nullptr);
    ~DeviceCommand() override;

    // Sends the requests; finished() follows exactly once.
    void start();
    // Every answer the device sent, as the frame announced it (the session's packet tap feeds it).
    void onPacket(quint8 type, const QByteArray &payload);
    // The link is gone: report it and finish with 1.
    void onConnectionLost(const QString &text);
    void cancel(int exitCode);

    bool isFinished() const { return m_finished; }
    // The device asks for a power cycle after a settings reset: not a failure of the command.
    void notify(const QString &text) override;

    // One answer a request waits for: packet type, code, operation without bit 7 and, for item writes,
    // the index (-1 = any). A status answer with bit 7 of the operation settles a write; a data answer
    // (bit 7 clear) settles a read.
    struct Expectation {
        quint8 type = 6;
        quint8 code = 0;
        quint8 operation = 0;
        int parameter = -1;
        bool status = false;
        QString label;
        enum State { Pending, Done, Failed } state = Pending;
        QString failure;
    };
    struct Request {
        std::function<void(AbstarctProtocol *)> enqueue;
        QVector<int> expectations; // indexes into m_expectations
    };

    // Adds a request whose enqueue function puts its frames in the queue, answered by `answers`.
    void addRequest(const std::function<void(AbstarctProtocol *)> &enqueue,
                    const QVector<Expectation> &answers);
    static Expectation dataAnswer(quint8 code, quint8 kind, const QString &label, quint8 type = 6);
    static Expectation statusAnswer(quint8 code, quint8 operation, int parameter, const QString &label,
                                    quint8 type = 6);

signals:
    void finished(int exitCode);

protected:
    // Fills the request list; called once by start().
    virtual void buildRequests() = 0;
    // Every expectation settled (some may have failed); the command prints its result and finishes.
    virtual void complete() = 0;

    void finish(int exitCode);
    // Ends with 1 and one line on stderr.
    void fail(const QString &message);
    // "нет ответа: ..." and "отказ: ..." naming what is not done, empty when all are done.
    QString missingAnswers() const;
    bool allDone() const;
    void sendMissing();

    Device *device() const { return m_device; }
    QTextStream &out() { return m_out; }
    // Starts the requests again from scratch (telemetry watch rounds).
    void resetExpectations();
    void restartDeadline();
    // The power-cycle text the device asked to show, empty when it did not.
    QString powerCycleText() const { return m_powerCycleText; }

private:
    void matchAnswer(quint8 type, const QByteArray &payload);
    void onQuiet();
    void onChunkDropped();
    void onStall();
    void onIdle();
    bool hasPending() const;
    void onDeadline();
    void onPasswordChange();
    void onPasswordError();
    void onPasswordComplete();
    void onDeviceBlocked();
    void checkComplete();

    Device *m_device;
    Options m_options;
    QTextStream &m_out;
    QTextStream &m_err;
    QVector<Expectation> m_expectations;
    QVector<Request> m_requests;
    QTimer m_quiet;
    QTimer m_deadline;
    QTimer m_stall;
    bool m_finished = false;
    bool m_loginSent = false;
    int m_logins = 0;
    bool m_completing = false;
    bool m_powerCycle = false;
    QString m_powerCycleText;
};
