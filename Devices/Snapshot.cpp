#include "Devices/Snapshot.h"

#include "Devices/ConfigurationDiff.h"
#include "Devices/VantorConfiguration.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace kd {

namespace {

const QString FormatName = QStringLiteral("tavrel-snapshot");

using Kind = ConfigField::Kind;

bool isText(const ConfigField &f) {
    return f.kind == Kind::Text || f.kind == Kind::Timetable;
}

QJsonValue toJsonValue(const ConfigField &f, const QVariant &v) {
    if (isText(f))
        return v.toString();
    return double(v.toULongLong());
}

QVariant toVariant(const ConfigField &f, const QJsonValue &v) {
    return isText(f) ? QVariant(v.toString()) : QVariant(qulonglong(qint64(v.toDouble())));
}

} // namespace

QVector<QJsonObject> Snapshot::changesOf(const ConfigurationDiff &diff) {
    QVector<QJsonObject> out;
    for (const FieldChange &c : diff.changes) {
        QJsonObject o;
        o.insert(QStringLiteral("path"), c.field->path);
        o.insert(QStringLiteral("before"), toJsonValue(*c.field, c.before));
        o.insert(QStringLiteral("after"), toJsonValue(*c.field, c.after));
        out.append(o);
    }
    return out;
}

QStringList Snapshot::writtenLines() const {
    QStringList lines;
    for (const QJsonObject &o : written) {
        const ConfigField *f = findField(o.value(QStringLiteral("path")).toString());
        if (f) {
            lines << FieldChange{f, toVariant(*f, o.value(QStringLiteral("before"))),
                                 toVariant(*f, o.value(QStringLiteral("after")))}
                         .humanLine();
        }
    }
    return lines;
}

QString Snapshot::summary() const {
    const QString count = QStringLiteral("изменено параметров: %1").arg(written.size());
    return complete ? count : count + QStringLiteral(", запись не завершена");
}

Snapshot Snapshot::capture(const VantorConfiguration &device, const QVector<QJsonObject> &written,
                           const QStringList &sections) {
    Snapshot s;
    s.time = QDateTime::currentDateTimeUtc();
    s.sections = sections;
    for (const ConfigField &f : configurationFields()) {
        if (s.carries(f.section))
            s.values.insert(f.path, toJsonValue(f, f.rawValue(device)));
    }
    // The tracker's folder is named by its identity even when the identity section is not carried.
    const ConfigField *imei = findField(QStringLiteral("IMEI"));
    s.imei = imei ? imei->rawValue(device).toString() : QString();
    s.written = written;
    return s;
}

QStringList Snapshot::carried(const QStringList &keys) const {
    QStringList out;
    for (const QString &key : keys) {
        if (carries(key))
            out << key;
    }
    return out;
}

void Snapshot::applyTo(VantorConfiguration &cfg) const {
    for (const ConfigField &f : configurationFields()) {
        if (carries(f.section))
            f.assign(cfg, toVariant(f, values.value(f.path)));
    }
}

QByteArray Snapshot::toJson() const {
    QJsonObject root;
    root.insert(QStringLiteral("format"), FormatName);
    root.insert(QStringLiteral("version"), FormatVersion);
    root.insert(QStringLiteral("imei"), imei);
    root.insert(QStringLiteral("time"), time.toUTC().toString(Qt::ISODateWithMs));
    root.insert(QStringLiteral("program"), programVersion);
    root.insert(QStringLiteral("complete"), complete);
    root.insert(QStringLiteral("values"), values);
    if (!sections.isEmpty())
        root.insert(QStringLiteral("sections"), QJsonArray::fromStringList(sections));
    QJsonArray w;
    for (const QJsonObject &o : written)
        w.append(o);
    root.insert(QStringLiteral("written"), w);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

bool Snapshot::fromJson(const QByteArray &data, Snapshot *snapshot, QString *error) {
    auto refuse = [error](const QString &why) {
        if (error)
            *error = why;
        return false;
    };
    QJsonParseError parse;
    const QJsonDocument doc = QJsonDocument::fromJson(data, &parse);
    if (parse.error != QJsonParseError::NoError)
        return refuse(
            QStringLiteral("поврежден (%1, позиция %2)").arg(parse.errorString()).arg(parse.offset));
    const QJsonObject root = doc.object();
    if (root.value(QStringLiteral("format")).toString() != FormatName)
        return refuse(QStringLiteral("это не снимок настроек"));
    if (root.value(QStringLiteral("version")).toInt() != FormatVersion)
        return refuse(QStringLiteral("снимок версии %1 не поддерживается")
                          .arg(root.value(QStringLiteral("version")).toInt()));
    const QDateTime time =
        QDateTime::fromString(root.value(QStringLiteral("time")).toString(), Qt::ISODateWithMs);
    if (!time.isValid())
        return refuse(QStringLiteral("нет времени снимка"));
    const QJsonObject values = root.value(QStringLiteral("values")).toObject();
    Snapshot s;
    for (const QJsonValue &key : root.value(QStringLiteral("sections")).toArray())
        s.sections << key.toString();
    for (const ConfigField &f : configurationFields()) {
        if (!s.carries(f.section))
            continue;
        const QJsonValue v = values.value(f.path);
        if (isText(f) ? !v.isString() : !v.isDouble())
            return refuse(QStringLiteral("нет значения %1").arg(f.path));
    }
    s.imei = root.value(QStringLiteral("imei")).toString();
    s.time = time;
    s.programVersion = root.value(QStringLiteral("program")).toString();
    s.complete = root.value(QStringLiteral("complete")).toBool(true);
    s.values = values;
    for (const QJsonValue &w : root.value(QStringLiteral("written")).toArray())
        s.written.append(w.toObject());
    *snapshot = s;
    return true;
}

} // namespace kd
