#pragma once

#include "tools/devsim/DevsimOptions.h"

#include <QObject>
#include <QString>

class QTimer;

// A service bench of virtual trackers: each one on its own pseudo-terminal with its own IMEI, numbered link
// and numbered state file; with an appearance interval one more is "plugged in" at every tick. A tracker
// whose line is hung up is unplugged (its link removed); the others go on.
class DevsimBench : public QObject {
    Q_OBJECT
public:
    explicit DevsimBench(const DevsimOptions &options, QObject *parent = nullptr);

    // Starts the first trackers; false with a reason when one cannot be started.
    bool start(QString *error);
    // Saves every state and removes every link (on the way out).
    void shutdown();

    // Tracker number n (from 1): "PATH-n" for "PATH", "state-n.json" for "state.json"; empty stays empty.
    static QString numberedPath(const QString &path, int n);
    // A valid 15-digit IMEI (Luhn check digit) distinct for every number.
    static QString imei(int n);

signals:
    // A tracker is up: its pseudo-terminal and its IMEI.
    void appeared(const QString &address, const QString &imei);

private:
    bool addTracker(QString *error);

    DevsimOptions m_options;
    QTimer *m_appear = nullptr;
    int m_count = 0;
};
