#include "Devices/ConfigurationDiff.h"

#include "Devices/SectionTable.h"
#include "Devices/VantorConfiguration.h"

#include <QJsonObject>

namespace kd {

QString FieldChange::humanLine() const {
    QString from = field->text(before);
    QString to = field->text(after);
    // Two timetables with as many allowed intervals differ in which ones: show the words.
    if (from == to) {
        from += QStringLiteral(" (%1)").arg(field->plain(before));
        to += QStringLiteral(" (%1)").arg(field->plain(after));
    }
    return QStringLiteral("%1: %2 → %3").arg(field->title(), from, to);
}

QString FieldChange::plainLine() const {
    return QStringLiteral("%1: %2 -> %3").arg(field->path, field->plain(before), field->plain(after));
}

ConfigurationDiff ConfigurationDiff::compare(const VantorConfiguration &before,
                                             const VantorConfiguration &after, const QStringList &sections) {
    ConfigurationDiff d;
    for (const ConfigField *f : writableFields(sections)) {
        const QVariant a = f->value(before);
        const QVariant b = f->value(after);
        if (a == b)
            ++d.unchanged;
        else
            d.changes.append({f, a, b});
    }
    return d;
}

QStringList ConfigurationDiff::humanLines() const {
    QStringList lines;
    for (const FieldChange &c : changes)
        lines << c.humanLine();
    return lines;
}

QStringList ConfigurationDiff::plainLines() const {
    QStringList lines;
    for (const FieldChange &c : changes)
        lines << c.plainLine();
    return lines;
}

QString ConfigurationDiff::summary() const {
    if (changes.isEmpty())
        return QStringLiteral("Отличий нет (параметров: %1)").arg(unchanged);
    return QStringLiteral("Изменится параметров: %1, без изменений: %2").arg(changes.size()).arg(unchanged);
}

QVector<const ConfigField *> fieldsNotInFile(const QJsonObject &root, const QStringList &sections) {
    QVector<const ConfigField *> out;
    for (const ConfigField *f : writableFields(sections)) {
        if (f->inFile(root).isUndefined())
            out.append(f);
    }
    return out;
}

QStringList identityNotInFile(const QJsonObject &root) {
    QStringList out;
    for (const ConfigField &f : configurationFields()) {
        if (!f.writable && f.inFile(root).isUndefined())
            out << f.path;
    }
    return out;
}

void keepDeviceValues(VantorConfiguration &target, const VantorConfiguration &device,
                      const QVector<const ConfigField *> &fields) {
    for (const ConfigField *f : fields)
        f->assign(target, f->rawValue(device));
}

void copyFields(VantorConfiguration &to, const VantorConfiguration &from, bool identityToo,
                const QStringList &sections) {
    for (const ConfigField &f : configurationFields()) {
        if (f.writable ? sections.isEmpty() || sections.contains(f.section) : identityToo)
            f.assign(to, f.rawValue(from));
    }
}

QStringList writeAllSections() {
    QStringList out;
    for (const Section *s : writeOrder())
        out << QLatin1String(s->key);
    return out;
}

ConfigurationDiff WritePreview::diff() const {
    VantorConfiguration written;
    apply(written);
    return ConfigurationDiff::compare(*device, written, sections);
}

void WritePreview::apply(VantorConfiguration &target) const {
    copyFields(target, *planned, false);
    if (keepDeviceValues)
        kd::keepDeviceValues(target, *device, notInFile);
}

QStringList mismatchLines(const ConfigurationDiff &writtenVersusRead) {
    QStringList lines;
    for (const FieldChange &c : writtenVersusRead.changes) {
        lines << QStringLiteral("%1: записано %2, в приборе %3")
                     .arg(c.field->title(), c.field->text(c.before), c.field->text(c.after));
    }
    return lines;
}

QString otherModelWarning(const QJsonObject &root, const VantorConfiguration &device) {
    static const char *const model[] = {"hardver.devgroup", "hardver.devtype", "hardver.devmod"};
    QStringList file;
    QStringList connected;
    bool differs = false;
    for (const char *path : model) {
        const ConfigField *f = findField(QLatin1String(path));
        const QJsonValue v = f->inFile(root);
        if (!v.isDouble())
            continue;
        const QVariant mine = f->value(device);
        const QVariant theirs = QVariant(qulonglong(quint32(qint64(v.toDouble()))));
        file << QStringLiteral("%1 %2").arg(f->label.toLower(), theirs.toString());
        connected << QStringLiteral("%1 %2").arg(f->label.toLower(), mine.toString());
        differs = differs || mine != theirs;
    }
    if (!differs)
        return {};
    return QStringLiteral("Файл сохранен с прибора другой модели (%1), подключен прибор: %2")
        .arg(file.join(QStringLiteral(", ")), connected.join(QStringLiteral(", ")));
}

} // namespace kd
