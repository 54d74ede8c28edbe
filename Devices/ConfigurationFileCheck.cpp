#include "Devices/ConfigurationFileCheck.h"

#include "Devices/ConfigurationFields.h"
#include "Devices/VantorConfiguration.h"

#include <QJsonObject>

namespace kd {

namespace {

using Kind = ConfigField::Kind;

// Printable Latin-1 only: the device takes one byte per character and nothing else survives the wire.
bool sendable(const QString &text) {
    for (const QChar c : text) {
        const ushort code = c.unicode();
        if (!((code >= 0x20 && code < 0x7F) || (code >= 0xA0 && code <= 0xFF)))
            return false;
    }
    return true;
}

QString jsonText(const QJsonValue &v) {
    switch (v.type()) {
    case QJsonValue::String:
        return QLatin1Char('"') + v.toString() + QLatin1Char('"');
    case QJsonValue::Double:
        return QString::number(v.toDouble(), 'g', 17);
    case QJsonValue::Bool:
        return v.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Array:
        return QStringLiteral("массив");
    case QJsonValue::Object:
        return QStringLiteral("объект");
    case QJsonValue::Undefined:
        break;
    }
    return QString();
}

} // namespace

ConfigurationFileCheck ConfigurationFileCheck::check(const QJsonObject &root) {
    ConfigurationFileCheck result;
    VantorConfiguration loaded;
    loaded.read(root);
    int carried = 0;
    for (const ConfigField *f : writableFields()) {
        const QJsonValue v = f->inFile(root);
        if (v.isUndefined())
            continue;
        ++carried;
        const QVariant raw = f->rawValue(loaded);
        const QVariant wire = f->wireValue(raw);
        QString why;
        if (f->kind == Kind::Text) {
            if (!v.isString())
                why = QStringLiteral("не текст");
            else if (v.toString().size() > f->width)
                why = QStringLiteral("длиннее %1 символов").arg(f->width);
            else if (!sendable(v.toString()))
                why = QStringLiteral("символы, которые прибор не принимает");
        } else if (f->kind == Kind::Timetable) {
            if (!v.isDouble())
                why = QStringLiteral("не число");
        } else if (!v.isDouble()) {
            why = QStringLiteral("не число");
        } else if (v.toDouble() != double(wire.toULongLong())) {
            why = raw == wire ? QStringLiteral("вне диапазона")
                              : QStringLiteral("вне диапазона, читается как %1").arg(raw.toString());
        }
        if (!why.isEmpty()) {
            result.problems << QStringLiteral("%1: в файле %2 (%3), в прибор уйдет %4")
                                   .arg(f->path, jsonText(v), why, f->plain(wire));
        }
    }
    result.empty = carried == 0;
    return result;
}

QStringList ConfigurationFileCheck::lines() const {
    QStringList out;
    if (empty)
        out << QStringLiteral("в файле нет ни одного параметра конфигурации");
    return out + problems;
}

} // namespace kd
