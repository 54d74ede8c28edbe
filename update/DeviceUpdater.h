#pragma once

#include "protocol/Connection.h"
#include "update/FirmwareImage.h"
#include "update/UpdateChannel.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>

class QTimer;

// Serves a device whose boot loader is reloading its firmware. Every chunk received from the link is
// offered here before the UNP parser; page-channel messages are claimed, and each page request starts a
// stream of page packets (one per interval, 1 ms by default) from the requested page up to page 511.
// The confirmation of page 511 completes the transfer.
class DeviceUpdater : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultIntervalMs = 1;

    explicit DeviceUpdater(QObject *parent = nullptr);

    void setConnection(Connection *link) { m_link = link; }
    Connection *connection() const { return m_link; }
    void setImage(FirmwareImage *image) { m_image = image; }
    FirmwareImage *image() const { return m_image; }
    void setInterval(int ms);
    int interval() const { return m_intervalMs; }

    // Puts the updater in service for the current image; refused (false) unless the image's last load
    // succeeded. Until then page requests are only logged.
    bool begin();
    // Stops serving: the stream stops and later requests are only logged.
    void stop();
    bool inProgress() const { return m_inProgress; }
    bool streaming() const;
    int currentPage() const { return m_current; }

    // Claims chunks that belong to the page channel (true) and processes them; others go to the parser.
    bool offer(const QByteArray &chunk);

signals:
    void UpdateComplete();
    void pageRequested(int page);
    void pageSent(int page);
    void pageConfirmed(int page);
    void pageError(int page);
    // Page 0 was not sent: the device's firmware does not match the image's compatibility lists.
    void pageRefused(int page);
    void messageCorrupted();
    // Lines for the page's progress log ("Подготовка прибора.", "Ожидание перезагрузки прибора.").
    void progressLine(const QString &line);

private:
    bool claims(const QByteArray &chunk) const;
    void processBuffer();
    void handleMessage(const UpdateChannel::Message &m);
    void sendNextPage();
    bool buildPacket(quint16 page, QByteArray &packet) const;

    QPointer<Connection> m_link;
    QPointer<FirmwareImage> m_image;
    QTimer *m_timer = nullptr;
    QByteArray m_buffer;
    QByteArray m_request;
    int m_intervalMs = DefaultIntervalMs;
    int m_current = 0;
    bool m_inProgress = false;
    bool m_refusalReported = false;
};
