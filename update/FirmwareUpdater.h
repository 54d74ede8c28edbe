#pragma once

#include <QObject>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;

// Fetches the current device firmware from the update server into "FirmwareUpdates/Firmware.bsk" under the
// current directory, and tells whether that image is newer than the firmware running in the device.
// Creating the object starts the download.
class FirmwareUpdater : public QObject {
    Q_OBJECT
public:
    static constexpr const char *DefaultHost = "update.tavrel.ru";
    // Settings key that overrides the update server's host of the built-in address.
    static constexpr const char *HostSettingsKey = "updates/firmwareHost";

    // An empty address means the built-in one.
    explicit FirmwareUpdater(const QString &address = QString(), QObject *parent = nullptr);

    // The built-in download address on host (empty: the stored host, else DefaultHost).
    static QString builtInAddress(const QString &host = QString());

    QString address() const { return m_address; }
    QString downloadFolder() const { return m_folder; }
    QString firmwarePath() const { return m_folder + QStringLiteral("/Firmware.bsk"); }

    void download();
    // Compares the stored image's version number with the device's; emits one of the two result signals,
    // or nothing when the stored file is missing or is not a firmware image.
    void checkVersion(quint32 currentVersion);

signals:
    void downloadError();
    void downloadComplete();
    void newFirmwareAvailable();
    void firwareUpdateNotAvailable();

private:
    void replyFinished(QNetworkReply *reply);

    QString m_address;
    QString m_folder;
    QString m_filePath;
    QNetworkAccessManager *m_manager;
};
