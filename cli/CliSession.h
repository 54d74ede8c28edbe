#pragma once

#include "cli/CliOptions.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

class Connection;
class Device;
class DeviceCommand;
class QTextStream;
class VantorConfiguration;

// A device command from start to exit status: opens the link the options name, runs the command over
// one Device session and turns link failures into one line on stderr. Every path ends in finished()
// exactly once, at the latest when the command's deadline has passed.
class CliSession : public QObject {
    Q_OBJECT
public:
    CliSession(const CliOptions &options, QTextStream &out, QTextStream &err, QObject *parent = nullptr);
    ~CliSession() override;

    void start();
    // Ctrl+C: a watch ends normally, anything else as interrupted.
    void interrupt();

    // The link error text of the window's error boxes; empty for errors that do not end a session.
    static QString linkErrorText(int errorGroup, int errorCode);

signals:
    void finished(int exitCode);

private:
    Connection *createLink();
    void onConnected();
    void onLinkError(int errorGroup, int errorCode);
    void startCommand();
    void startFlash();
    void fail(const QString &message);
    void finish(int exitCode);

    CliOptions m_options;
    QTextStream &m_out;
    QTextStream &m_err;
    VantorConfiguration *m_configuration = nullptr;
    Device *m_device = nullptr;
    QPointer<DeviceCommand> m_command;
    QPointer<QObject> m_flash;
    QTimer m_connectDeadline;
    bool m_started = false;
    bool m_finished = false;
};
