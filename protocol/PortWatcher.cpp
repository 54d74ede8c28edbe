#include "protocol/PortWatcher.h"

PortWatcher::PortWatcher(const PortSelection &selection, QObject *parent)
    : QObject(parent)
    , m_selection(selection)
    , m_lister(&SerialConnection::systemPorts) {
    m_timer.setInterval(DefaultIntervalMs);
    connect(&m_timer, &QTimer::timeout, this, &PortWatcher::poll);
}

void PortWatcher::setSelection(const PortSelection &selection) {
    m_selection = selection;
}

void PortWatcher::setInterval(int ms) {
    m_timer.setInterval(ms);
}

void PortWatcher::setPortLister(SerialConnection::PortLister lister) {
    m_lister = std::move(lister);
}

void PortWatcher::start() {
    m_ports.clear();
    m_timer.start();
    poll();
}

void PortWatcher::stop() {
    m_timer.stop();
}

void PortWatcher::poll() {
    const QList<SerialPortDescription> system =
        m_lister && m_selection.needsSystemPorts() ? m_lister() : QList<SerialPortDescription>();
    const QStringList now = m_selection.present(system);
    const QStringList before = m_ports;
    m_ports = now;
    for (const QString &port : before) {
        if (!now.contains(port))
            emit disappeared(port);
    }
    for (const QString &port : now) {
        if (!before.contains(port))
            emit appeared(port);
    }
}
