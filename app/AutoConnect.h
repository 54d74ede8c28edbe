#pragma once

#include "protocol/ConnectionWatcher.h"

#include <QObject>

class ConnectionIndicators;

// The window's side of keeping a tracker connected by itself: a tracker plugged in on the chosen port
// (or, with automatic detection, any port carrying the tracker's USB identifiers) is connected to, and
// after a factory reset the device confirmed or a firmware update the wait box shows how long the device has
// been away, with a button to stop waiting.
class AutoConnect : public QObject {
    Q_OBJECT
public:
    AutoConnect(SessionController *session, ConnectionIndicators *indicators, QObject *parent = nullptr);

    ConnectionWatcher *watcher() { return &m_watcher; }
    bool isWaiting() const { return m_watcher.isWaiting(); }
    // A serial link is watched for its port; a remote one has nothing to watch.
    void apply(const SessionController::Settings &settings);
    void expectRestart();

private:
    void showProgress(int elapsedMs, int limitMs);

    ConnectionWatcher m_watcher;
    ConnectionIndicators *m_indicators;
};
