#pragma once

#include "protocol/StreamDeframer.h"

#include "tools/devsim/FaultInjector.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>

class BootLoader;
class QTimer;
class InboundLine;
class SimLink;
class VirtualTracker;
struct DevsimOptions;

// One running virtual tracker: bytes from the link are buffered into requests, answered by the tracker
// and sent back through the fault layer; in firmware-update mode the boot loader owns the line, and what the
// configurator writes reaches it at the line rate.
class DevsimSession : public QObject {
    Q_OBJECT
public:
    DevsimSession(const DevsimOptions &options, SimLink *link, QObject *parent = nullptr);

    // Loads the state file if there is one; false with a reason when it exists but cannot be read.
    bool loadState(QString *error);
    // Writes the state file if one was named (atomically); false with a reason on failure.
    bool saveState(QString *error = nullptr);

    VirtualTracker *tracker() const { return m_tracker; }
    // Saves after each change only once the changes have paused for `ms` (0: at once). Trackers of a
    // bench share one process, where each one's disk flush would hold up the exchanges of all the others.
    void setSaveDelay(int ms);
    static FaultInjector::Settings faultSettings(const DevsimOptions &options);

    // The largest request payload the device takes; a longer announced length means we are not on a frame.
    static constexpr int MaxRequestPayload = 512;

signals:
    // The link is gone for good (pty hung up): the program ends.
    void finished();

private:
    void onReceived(const QByteArray &bytes);
    void onArrived(const QByteArray &bytes);
    void onFirmwareUpdateRequested();

    SimLink *m_link;
    VirtualTracker *m_tracker;
    FaultInjector *m_faults;
    BootLoader *m_bootLoader = nullptr;
    InboundLine *m_inbound;
    // The device's receive buffer: requests may arrive in pieces or several in one read, as on a UART; a
    // partial request left alone for a second is forgotten (the sender gave up on it).
    proto::StreamDeframer m_requestReader{proto::StreamDeframer::Policy::Checked, MaxRequestPayload, 1000};
    QElapsedTimer m_clock;
    QString m_statePath;
    int m_dropRequestsEvery = 0;
    int m_requests = 0;
    QTimer *m_saveTimer = nullptr;
    quint8 m_nonsenseCode = 0; // the section answered with nonsense (write code), 0: none
    QString m_nonsenseKind;
};
