#pragma once

#include <QByteArray>
#include <QObject>
#include <QStringList>
#include <QVector>

// A device firmware image loaded from a ".bsk" file: its header checks, the lists of firmware builds and
// hardware versions it is meant for, and the page store the transfer serves the boot loader from.
//
// File layout (little-endian): a 520-byte header block (magic "BOOT2FILE\0", page count, page size 520,
// version fields, S build numbers, H hardware versions, a checksum word, filler), then the pages of 520
// bytes each.
class FirmwareImage : public QObject {
    Q_OBJECT
public:
    enum LoadResult {
        Loaded = 0,
        NoFileName = 1,
        CannotOpen = 2,
        NotFirmware = 3,
        NotBoot2File = 4,
        BadCrc = 5,
    };
    Q_ENUM(LoadResult)

    static constexpr int HeaderSize = 26;
    static constexpr int HeaderBlockSize = 520;
    static constexpr int MaxBuilds = 20;
    static constexpr int SizeSlack = 281; // the file must be longer than S + 281 bytes

    explicit FirmwareImage(QObject *parent = nullptr);

    // Loads fileName into the store; a failed load leaves what it had already stored.
    LoadResult load(const QString &fileName);
    // The header checks, in the loader's order, of the first 26 bytes of a file of fileSize bytes.
    static LoadResult checkHeader(const QByteArray &header, qint64 fileSize);
    // The firmware version number (offset 16) the download check compares with the device's version.
    static quint16 headerVersionNumber(const QByteArray &header);
    // The user's text for a result code; empty for Loaded and unknown codes.
    static QString reasonText(int code);
    // "Не удалось загрузить прошивку '<file>'\nПричина: <reason>", the warning shown on a failed load.
    static QString failureText(const QString &fileName, int code);

    // True only while the last load succeeded: a transfer may only be started from such an image.
    bool isLoaded() const { return m_loaded; }
    QString fileName() const { return m_fileName; }
    int pageCount() const { return m_pageCount; }
    // Slot n (0..1023), 520 bytes; slots the file did not fill stay zero (or keep an older file's page).
    QByteArray page(int n) const;

    QVector<quint16> builds() const { return m_builds; }
    QVector<quint16> hardwareVersions() const { return m_hardware; }
    quint16 versionNumber() const { return m_versionNumber; }
    quint16 middle() const { return m_middle; }
    quint8 keptByte() const { return m_kept; }
    quint8 major() const { return m_major; }
    // The lines of the version list as the page shows them: "3.9.17" per build, then "1.2.0.3" per hardware.
    QStringList versionLines() const { return m_versionLines; }

    bool skipFirmwareVersionMatch() const { return m_skipFirmwareMatch; }
    void setSkipFirmwareVersionMatch(bool skip) { m_skipFirmwareMatch = skip; }
    bool skipHardwareVersionLookup() const { return m_skipHardwareLookup; }
    void setSkipHardwareVersionLookup(bool skip) { m_skipHardwareLookup = skip; }

signals:
    // Emitted while loading, in the order a version list widget needs them.
    void versionsCleared();
    void versionLineAdded(const QString &line);
    // The file name has passed the header and version checks; the page shows it in its file-name field.
    void fileNameAccepted(const QString &fileName);

private:
    LoadResult loadFrom(const QString &fileName);

    QVector<QByteArray> m_slots;
    QVector<quint16> m_builds;
    QVector<quint16> m_hardware;
    QStringList m_versionLines;
    QString m_fileName;
    int m_pageCount = 0;
    quint16 m_versionNumber = 0;
    quint16 m_middle = 0;
    quint8 m_kept = 0;
    quint8 m_major = 0;
    bool m_skipFirmwareMatch = false;
    bool m_skipHardwareLookup = false;
    bool m_loaded = false;
};
