#include "app/AutoConnect.h"

#include "app/ConnectionIndicators.h"
#include "app/ConnectionWaitDlg.h"

namespace {
const char WaitText[] = "Ожидание перезапуска прибора: %1 из %2 с";
}

AutoConnect::AutoConnect(SessionController *session, ConnectionIndicators *indicators, QObject *parent)
    : QObject(parent)
    , m_watcher(session)
    , m_indicators(indicators) {
    connect(&m_watcher, &ConnectionWatcher::waitingProgress, this, &AutoConnect::showProgress);
    connect(&m_watcher, &ConnectionWatcher::waitingFinished, m_indicators, &ConnectionIndicators::closeWait);
    // The box is shared with the other waits: its cancel stops this one only while it runs.
    connect(m_indicators, &ConnectionIndicators::waitCancelled, &m_watcher,
            &ConnectionWatcher::cancelWaiting);
    connect(session, &SessionController::jobFinished, this, [this](const JobResult &result) {
        if (result.kind == JobResult::Kind::Reset && result.ok())
            m_watcher.expectRestart();
    });
}

void AutoConnect::apply(const SessionController::Settings &settings) {
    m_watcher.setSettings(settings);
    if (settings.remote)
        m_watcher.stopWatching();
    else
        m_watcher.startWatching();
}

void AutoConnect::expectRestart() {
    m_watcher.expectRestart();
}

void AutoConnect::showProgress(int elapsedMs, int limitMs) {
    const QString text = QString::fromUtf8(WaitText).arg(elapsedMs / 1000).arg(limitMs / 1000);
    // A failed try in between closes the box with the session's state; it comes back with the next tick.
    m_indicators->showWait(text);
    if (ConnectionWaitDlg *dialog = m_indicators->waitDialog())
        dialog->setMessage(text);
}
