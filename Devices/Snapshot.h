#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

class VantorConfiguration;

namespace kd {

struct ConfigurationDiff;

// The device's values as read before a write, with what was then written. Unlike the configuration file a
// snapshot keeps every field (roaming, "faultSpeed" and the identity included), in a format of its own
// with a version number, so restoring it puts the device back exactly as it was.
struct Snapshot {
    static constexpr int FormatVersion = 1;

    QString imei;
    QDateTime time;
    QString programVersion;
    QJsonObject values; // field path -> value (text, number, timetable as 32 hex digits)
    // What was written over these values: {"path", "before", "after"} per changed field.
    QVector<QJsonObject> written;
    // The sections whose values were read from the device; empty: every section (older snapshots).
    QStringList sections;
    QString filePath; // where it was loaded from or saved to
    // The write over these values went through. Saved false before the write starts and rewritten once it
    // has, so a write cut short (or a program that died meanwhile) leaves it false; older snapshots: true.
    bool complete = true;

    // The device's values now of `sections` (every section when empty), and the changes about to be
    // written over them. A section never read holds no device values and stays out.
    static Snapshot capture(const VantorConfiguration &device, const QVector<QJsonObject> &written = {},
                            const QStringList &sections = {});
    static QVector<QJsonObject> changesOf(const ConfigurationDiff &diff);
    bool carries(const QString &section) const { return carries(sections, section); }
    // Whether a list of sections read from the device (empty: all of them) holds `section`.
    static bool carries(const QStringList &sections, const QString &section) {
        return sections.isEmpty() || sections.contains(section);
    }
    // Of `keys`, the sections the snapshot carries.
    QStringList carried(const QStringList &keys) const;
    // Every field it carries into `cfg`; the others keep their values.
    void applyTo(VantorConfiguration &cfg) const;
    // The written changes for the user: "SIM 2: роуминг: запрещен → разрешен".
    QStringList writtenLines() const;
    // "изменено параметров: 3", with ", запись не завершена" when the write did not go through.
    QString summary() const;

    QByteArray toJson() const;
    // All or nothing: a snapshot of another version, or one missing any field of a section it carries, is
    // refused with a reason.
    static bool fromJson(const QByteArray &data, Snapshot *snapshot, QString *error);
};

} // namespace kd
