#pragma once

#include "protocol/PortWatcher.h"
#include "protocol/SessionController.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

// Keeps a session with the tracker on the cable without the user's help. Watching: a tracker whose port
// appears (plugged in, or back after being pulled out) is connected to while the session has none.
// Restart: after a factory reset, a reboot or a firmware update the device goes away for a while; the
// session is asked to connect once a second until the device answers again, the user gives up or the
// limit passes. The window renders the waiting and the states; nothing here shows anything.
class ConnectionWatcher : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultReturnLimitMs = 60000;

    explicit ConnectionWatcher(SessionController *session, QObject *parent = nullptr);

    // What to connect to; an empty port name: the one port with the tracker's USB identifiers.
    void setSettings(const SessionController::Settings &settings);
    void setInterval(int ms);
    void setReturnLimit(int ms);
    PortWatcher *ports() { return &m_ports; }

    // Connects whenever a tracker's port appears and the session has no device.
    void startWatching();
    void stopWatching();
    // The device restarts now: the session is closed and connected again once the device answers.
    void expectRestart();
    // The user stops waiting; the session stays closed.
    void cancelWaiting();
    bool isWaiting() const { return m_waiting; }

signals:
    // Once a second while waiting, for a progress display.
    void waitingProgress(int elapsedMs, int limitMs);
    // The waiting is over: the device answered (back), or the limit passed or the user gave up.
    void waitingFinished(bool back);

private:
    void onAppeared();
    void onTick();
    void endWaiting(bool back);
    bool hasDevice() const;

    SessionController *m_session;
    SessionController::Settings m_settings;
    PortWatcher m_ports;
    QTimer m_tick;
    QElapsedTimer m_waited;
    int m_limitMs = DefaultReturnLimitMs;
    bool m_waiting = false;
};
