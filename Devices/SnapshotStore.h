#pragma once

#include "Devices/Snapshot.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace kd {

// Snapshots per tracker: one folder per IMEI under the application's data folder, one file per snapshot,
// each written atomically. Only the newest Kept of a tracker are kept.
class SnapshotStore {
public:
    static constexpr int Kept = 50;

    explicit SnapshotStore(const QString &folder = defaultFolder());
    static QString defaultFolder(); // <the window's application data>/snapshots

    QString folder() const { return m_folder; }
    // Saves and prunes; returns the file's path, or an empty string with `error` set.
    QString save(Snapshot &snapshot, QString *error = nullptr) const;
    // Writes a saved snapshot again over its file (its write's outcome now known).
    bool rewrite(const Snapshot &snapshot, QString *error = nullptr) const;
    // A tracker's snapshots, newest first. A damaged file is skipped and named in `damaged` with the reason.
    QVector<Snapshot> list(const QString &imei, QStringList *damaged = nullptr) const;
    // Trackers that have snapshots.
    QStringList trackers() const;
    static bool load(const QString &path, Snapshot *snapshot, QString *error = nullptr);

private:
    QString trackerFolder(const QString &imei) const;
    QStringList files(const QString &imei) const; // newest first

    QString m_folder;
};

} // namespace kd
