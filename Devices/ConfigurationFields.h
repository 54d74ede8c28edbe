#pragma once

#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <functional>

class QJsonObject;
class VantorConfiguration;

namespace kd {

class ConfigurationValue;

// One field of one section element, as the user, the configuration file and the device see it. The
// changes preview, the file check, verification, snapshots and the terminal tool all walk this one
// table, so a field is described once.
struct ConfigField {
    enum class Kind { Number, Flag, Text, Timetable };

    QString path;    // "gsm[1].roaming.forbidden": the terminal tool's, the file check's and snapshots' name
    QString section; // container key
    int element = 0;
    QString group; // "SIM 2", "Навигация"
    QString label; // "роуминг", "Порог ложной скорости"
    QString unit;
    Kind kind = Kind::Number;
    int width = 8;        // bits of a number on the wire, characters of a text
    bool writable = true; // false: the device's identity, never written
    QStringList words;    // a flag's texts for 0 and 1

    std::function<QVariant(const ConfigurationValue *)> get;
    std::function<void(ConfigurationValue *, const QVariant &)> set;
    // The value the configuration file's reader takes for this field; undefined when the reader finds
    // none (a key the file lacks, or one the reader deliberately does not look at).
    std::function<QJsonValue(const QJsonObject &root)> inFile;

    // The value as stored in the configuration (null when the element is gone).
    QVariant rawValue(const VantorConfiguration &cfg) const;
    // The value the device holds once it has been written: numbers masked to their width, text cut at
    // its field size or at the first character the wire turns into a zero byte.
    QVariant value(const VantorConfiguration &cfg) const;
    QVariant wireValue(const QVariant &raw) const;
    void assign(VantorConfiguration &cfg, const QVariant &value) const;

    QString title() const;                 // "SIM 2: роуминг"
    QString text(const QVariant &v) const; // "запрещен", "3 км/ч", "40 из 112 интервалов"
    QString plain(const QVariant &v) const; // "1", "\"internet\"", "0x...": the terminal tool's form
};

// Every field of every section that has fields, in the read order of the sections.
const QVector<ConfigField> &configurationFields();
const ConfigField *findField(const QString &path);
// The fields of the given sections (all writable fields when `sections` is empty).
QVector<const ConfigField *> writableFields(const QStringList &sections = {});

} // namespace kd
