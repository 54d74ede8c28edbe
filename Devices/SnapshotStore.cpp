#include "Devices/SnapshotStore.h"
#include "Devices/WriteErrorText.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace kd {

namespace {

// An IMEI is digits; anything else (an empty IMEI of a device not yet identified) must not make a path.
QString folderName(const QString &imei) {
    QString name;
    for (const QChar c : imei) {
        if (c.isLetterOrNumber() && c.unicode() < 0x80)
            name += c;
    }
    return name.isEmpty() ? QStringLiteral("unknown") : name;
}

} // namespace

SnapshotStore::SnapshotStore(const QString &folder)
    : m_folder(folder) {}

QString SnapshotStore::defaultFolder() {
    // The window's application data folder, spelled out so the command-line tool (an application of
    // another name) keeps the same history.
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/Tavrel/Tavrel_micro_cfg/snapshots");
}

QString SnapshotStore::trackerFolder(const QString &imei) const {
    return m_folder + QLatin1Char('/') + folderName(imei);
}

QStringList SnapshotStore::files(const QString &imei) const {
    const QDir dir(trackerFolder(imei));
    QStringList out;
    // Names are the UTC time, so the name order is the time order.
    for (const QString &name :
         dir.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name | QDir::Reversed))
        out << dir.filePath(name);
    return out;
}

QString SnapshotStore::save(Snapshot &snapshot, QString *error) const {
    const QString folder = trackerFolder(snapshot.imei);
    if (!QDir().mkpath(folder)) {
        if (error)
            *error = QStringLiteral("не удалось создать папку %1").arg(folder);
        return {};
    }
    QString base =
        folder + QLatin1Char('/') + snapshot.time.toUTC().toString(QStringLiteral("yyyyMMdd-HHmmsszzz"));
    QString path = base + QStringLiteral(".json");
    for (int n = 2; QFile::exists(path); ++n)
        path = base + QStringLiteral("_%1.json").arg(n, 2, 10, QLatin1Char('0'));
    snapshot.filePath = path;
    if (!rewrite(snapshot, error)) {
        snapshot.filePath.clear();
        return {};
    }
    const QStringList all = files(snapshot.imei);
    for (int i = Kept; i < all.size(); ++i)
        QFile::remove(all.at(i));
    return path;
}

bool SnapshotStore::rewrite(const Snapshot &snapshot, QString *error) const {
    QSaveFile file(snapshot.filePath);
    const QByteArray data = snapshot.toJson();
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.commit()) {
        if (error)
            *error = writeErrorText(snapshot.filePath, file.errorString());
        return false;
    }
    return true;
}

bool SnapshotStore::load(const QString &path, Snapshot *snapshot, QString *error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    if (!Snapshot::fromJson(file.readAll(), snapshot, error))
        return false;
    snapshot->filePath = path;
    return true;
}

QVector<Snapshot> SnapshotStore::list(const QString &imei, QStringList *damaged) const {
    QVector<Snapshot> out;
    for (const QString &path : files(imei)) {
        Snapshot s;
        QString why;
        if (load(path, &s, &why))
            out.append(s);
        else if (damaged)
            *damaged << QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path), why);
    }
    return out;
}

QStringList SnapshotStore::trackers() const {
    return QDir(m_folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace kd
