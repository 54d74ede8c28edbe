#include "protocol/ConnectionWatcher.h"

ConnectionWatcher::ConnectionWatcher(SessionController *session, QObject *parent)
    : QObject(parent)
    , m_session(session)
    , m_ports(PortSelection()) {
    m_tick.setInterval(PortWatcher::DefaultIntervalMs);
    connect(&m_tick, &QTimer::timeout, this, &ConnectionWatcher::onTick);
    connect(&m_ports, &PortWatcher::appeared, this, &ConnectionWatcher::onAppeared);
    connect(m_session, &SessionController::stateChanged, this, [this](SessionController::State state) {
        if (m_waiting && state == SessionController::State::Ready)
            endWaiting(true);
    });
}

void ConnectionWatcher::setSettings(const SessionController::Settings &settings) {
    m_settings = settings;
    m_ports.setSelection(PortSelection::parse(settings.portName));
}

void ConnectionWatcher::setInterval(int ms) {
    m_tick.setInterval(ms);
    m_ports.setInterval(ms);
}

void ConnectionWatcher::setReturnLimit(int ms) {
    m_limitMs = ms;
}

void ConnectionWatcher::startWatching() {
    m_ports.start();
}

void ConnectionWatcher::stopWatching() {
    m_ports.stop();
}

bool ConnectionWatcher::hasDevice() const {
    const SessionController::State state = m_session->state();
    return state != SessionController::State::Disconnected && state != SessionController::State::Lost;
}

void ConnectionWatcher::onAppeared() {
    // Only a port that came is connected to: one the device keeps but does not answer on is not tried
    // again and again. Two trackers with automatic detection are left to the user.
    if (m_waiting || hasDevice() || (m_settings.portName.isEmpty() && m_ports.ports().size() != 1))
        return;
    m_session->connectDevice(m_settings);
}

void ConnectionWatcher::expectRestart() {
    m_session->disconnectDevice();
    m_waiting = true;
    m_waited.start();
    m_tick.start();
    emit waitingProgress(0, m_limitMs);
}

void ConnectionWatcher::cancelWaiting() {
    if (!m_waiting)
        return;
    m_session->disconnectDevice();
    endWaiting(false);
}

void ConnectionWatcher::onTick() {
    const int elapsed = int(m_waited.elapsed());
    if (elapsed >= m_limitMs) {
        m_session->disconnectDevice();
        endWaiting(false);
        return;
    }
    emit waitingProgress(elapsed, m_limitMs);
    // A try still connecting or identifying is left to finish; a failed one is tried again.
    if (hasDevice())
        return;
    m_ports.poll();
    if (!m_ports.ports().isEmpty())
        m_session->connectDevice(m_settings);
}

void ConnectionWatcher::endWaiting(bool back) {
    m_waiting = false;
    m_tick.stop();
    emit waitingFinished(back);
}
