#pragma once

#include <QObject>

class QSocketNotifier;

// SIGINT and SIGTERM as a Qt signal. The handler only writes a byte into a socket pair that the event
// loop watches, so whatever the program does about it runs on the GUI thread like everything else.
// One watcher at a time; destroying it puts the default handlers back.
class InterruptWatcher : public QObject {
    Q_OBJECT
public:
    explicit InterruptWatcher(QObject *parent = nullptr);
    ~InterruptWatcher() override;

signals:
    void interrupted();

private:
    QSocketNotifier *m_notifier = nullptr;
};
