#pragma once

#include "protocol/JobResult.h"

#include <QObject>
#include <QString>

class QTextStream;
class SessionController;

// One command of the terminal tool against a connected device: it starts the session's jobs and prints
// their results. Asking again for lost answers, the password and a blocked device are the session's.
class DeviceCommand : public QObject {
    Q_OBJECT
public:
    DeviceCommand(SessionController *session, int deadlineMs, QTextStream &out, QTextStream &err,
                  QObject *parent = nullptr);
    ~DeviceCommand() override;

    // Starts the first job; finished() follows exactly once.
    void start();
    // Ends at once without a word (the session has said why).
    void cancel(int exitCode);
    bool isFinished() const { return m_finished; }

signals:
    void finished(int exitCode);

protected:
    // Starts the command's first job.
    virtual void run() = 0;
    // A job of the command has ended.
    virtual void jobDone(const JobResult &result) = 0;

    // True, with the failure printed, when the job did not come through: cut short, refused as a whole,
    // out of time, or with answers missing (`incomplete` leads that line; empty: the missing ones alone).
    bool failed(const JobResult &result, const QString &incomplete = QString());
    void finish(int exitCode);
    // Ends with 1 and one line on stderr.
    void fail(const QString &message);

    SessionController *session() const { return m_session; }
    QTextStream &out() { return m_out; }

private:
    SessionController *m_session;
    int m_deadlineMs;
    QTextStream &m_out;
    QTextStream &m_err;
    bool m_finished = false;
};
