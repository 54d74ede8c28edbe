#include "support/TelemetryRoundTracker.h"

TelemetryRoundTracker::TelemetryRoundTracker(int lastKind, QObject *parent)
    : QObject(parent)
    , m_lastKind(lastKind) {}

void TelemetryRoundTracker::kindArrived(int kind) {
    m_open = true;
    if (kind == m_lastKind)
        close();
}

void TelemetryRoundTracker::pollStarted() {
    close();
}

void TelemetryRoundTracker::close() {
    if (!m_open)
        return;
    m_open = false;
    emit roundComplete();
}
