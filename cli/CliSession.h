#pragma once

#include "cli/CliOptions.h"

#include <QObject>
#include <QPointer>
#include <QVector>
#include <memory>

class DeviceCommand;
struct ConfigurationSource;
class PortWatcher;
class QTextStream;
class QTimer;
class SessionController;
class VantorConfiguration;

// A device command from start to exit status: opens the session the options name, runs the command over
// it and turns the session's failures into one line on stderr. Every path ends in finished() exactly
// once, at the latest when the command's deadline has passed.
class CliSession : public QObject {
    Q_OBJECT
public:
    CliSession(const CliOptions &options, QTextStream &out, QTextStream &err, QObject *parent = nullptr);
    ~CliSession() override;

    void start();
    // Ctrl+C: a watch ends normally, anything else as interrupted.
    void interrupt();

signals:
    void finished(int exitCode);

private:
    // The files `write`, `restore` and `diff` take, loaded and checked before any device is touched.
    bool loadSources();
    void connectSession();
    // --reconnect: the device restarts after reset or flash; asked again every second until it answers.
    void startReconnect();
    void stopReconnecting();
    void startCommand();
    void startFlash();
    void fail(const QString &message);
    void finish(int exitCode);

    CliOptions m_options;
    QTextStream &m_out;
    QTextStream &m_err;
    VantorConfiguration *m_configuration = nullptr;
    SessionController *m_session = nullptr;
    QPointer<DeviceCommand> m_command;
    QVector<std::shared_ptr<ConfigurationSource>> m_sources;
    QPointer<QObject> m_flash;
    PortWatcher *m_waitForPort = nullptr;
    QTimer *m_waitDeadline = nullptr;
    QTimer *m_reconnectTick = nullptr;
    bool m_reconnecting = false;
    bool m_started = false;
    bool m_finished = false;
};
