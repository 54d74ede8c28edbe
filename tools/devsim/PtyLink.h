#pragma once

#include "tools/devsim/SimLink.h"

class QSocketNotifier;
class QTimer;

// A pseudo-terminal whose slave side the configurator opens as if it were the USB serial port.
class PtyLink : public SimLink {
    Q_OBJECT
public:
    explicit PtyLink(const QString &symlinkPath, QObject *parent = nullptr);
    ~PtyLink() override;

    bool start(QString *error) override;
    QString address() const override { return m_slavePath; }
    void write(const QByteArray &bytes) override;
    void hangUp() override;
    void shutdown() override;

private:
    void readMaster();
    void watchPeers();
    void readPeerEvents();
    void flushOutput();
    void closeAll();

    QString m_symlinkPath;
    QString m_slavePath;
    bool m_symlinkMade = false;
    int m_master = -1;
    // Kept open by the device itself so that reading the master never fails with EIO while no configurator
    // has the port open, and the configurator may close and reopen the port as often as it likes.
    int m_slave = -1;
    QSocketNotifier *m_readNotifier = nullptr;
    QSocketNotifier *m_writeNotifier = nullptr;
    QTimer *m_retryRead = nullptr;
    QByteArray m_output;
    // Opens and closes of the slave by others, seen through inotify; -1 when they cannot be watched.
    int m_inotify = -1;
    QSocketNotifier *m_peerNotifier = nullptr;
    int m_peers = 0;
    int m_hangUpWaitMs = 0;
    bool m_hangingUp = false;
    int m_hangUpQuietPolls = 0;
};
