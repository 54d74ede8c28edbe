#pragma once

#include "Devices/ConfigurationFields.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

class QJsonObject;
class VantorConfiguration;

namespace kd {

struct FieldChange {
    const ConfigField *field = nullptr;
    QVariant before;
    QVariant after;

    QString humanLine() const; // "SIM 2: роуминг: запрещен → разрешен"
    QString plainLine() const; // "gsm[1].roaming.forbidden: 1 -> 0"
};

// What writing one configuration over another changes, field by field, comparing the values the device
// would hold (masked to the field, text as the wire carries it).
struct ConfigurationDiff {
    QVector<FieldChange> changes;
    int unchanged = 0;

    // Every writable field of `sections` (all sections when empty).
    static ConfigurationDiff compare(const VantorConfiguration &before, const VantorConfiguration &after,
                                     const QStringList &sections = {});
    bool isEmpty() const { return changes.isEmpty(); }
    QStringList humanLines() const;
    QStringList plainLines() const;
    // "Изменится параметров: 2, без изменений: 41" or "Отличий нет (параметров: 43)"
    QString summary() const;
};

// The writable fields of `sections` that the file's reader finds no value for: the roaming objects the
// writer names "roaming N" and the reader looks up as "roamingN", "faultSpeed" (written, never read) and
// every key the file lacks. Loading such a file sets them to zero (or leaves "faultSpeed" as it was).
QVector<const ConfigField *> fieldsNotInFile(const QJsonObject &root, const QStringList &sections = {});
// The same for the identity: "IMEI" is never read back.
QStringList identityNotInFile(const QJsonObject &root);

// "Keep the device's values for what the file lacks": copies `fields` from the device's configuration.
void keepDeviceValues(VantorConfiguration &target, const VantorConfiguration &device,
                      const QVector<const ConfigField *> &fields);

// The fields of `from` into `to`: every one, or the writable ones only (the identity stays).
// The fields of `sections` (every section when empty), and the identity when `identityToo`.
void copyFields(VantorConfiguration &to, const VantorConfiguration &from, bool identityToo = true,
                const QStringList &sections = {});

// The sections a full write sends; the outputs are written only from their own page.
QStringList writeAllSections();

// A write about to happen, as the user is asked about it: the device's values as read, what the
// configuration would write, and, for a configuration from a file, what the file could not carry.
struct WritePreview {
    const VantorConfiguration *device = nullptr;
    const VantorConfiguration *planned = nullptr;
    QStringList sections;
    QVector<const ConfigField *> notInFile;
    QString modelWarning;
    bool keepDeviceValues = false;

    ConfigurationDiff diff() const;
    // What to write into `target` (its identity untouched): `planned`, with the device's values for what
    // the file lacks when so chosen.
    void apply(VantorConfiguration &target) const;
    bool lacksInFile(const ConfigField *field) const { return notInFile.contains(field); }
};

// Read back after a write, the fields that do not hold what was written: "<title>: записано X, в приборе Y".
QStringList mismatchLines(const ConfigurationDiff &writtenVersusRead);

// A warning when the file names another model (group, type or modification) than the connected device;
// empty when it does not, or when the file names none.
QString otherModelWarning(const QJsonObject &root, const VantorConfiguration &device);

} // namespace kd
