#pragma once

#include "protocol/PortSelection.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>

// Notices trackers being plugged in and pulled out by looking at the selected ports once a second (the
// system gives no portable plug-in event, and a poll costs one directory read).
class PortWatcher : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultIntervalMs = 1000;

    explicit PortWatcher(const PortSelection &selection, QObject *parent = nullptr);

    void setSelection(const PortSelection &selection);
    void setInterval(int ms);
    // Replaces the system's port enumeration (tests).
    void setPortLister(SerialConnection::PortLister lister);

    // Looks at once (every port present then "appears") and then at every interval.
    void start();
    void stop();
    bool isActive() const { return m_timer.isActive(); }
    // The ports seen at the last look.
    QStringList ports() const { return m_ports; }
    // Looks now; emits the differences to the last look.
    void poll();

signals:
    void appeared(const QString &port);
    void disappeared(const QString &port);

private:
    PortSelection m_selection;
    SerialConnection::PortLister m_lister;
    QStringList m_ports;
    QTimer m_timer;
};
