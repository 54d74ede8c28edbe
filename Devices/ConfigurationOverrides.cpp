#include "Devices/ConfigurationOverrides.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

namespace kd {

namespace {

// Splits spreadsheet text into rows of cells; a quoted cell may hold separators, doubled quotes and line
// breaks. False when a quote is left open.
bool splitRows(const QString &text, QChar separator, QVector<QStringList> *rows, QVector<int> *lines) {
    QStringList row;
    QString cell;
    bool quoted = false;
    bool rowHasText = false;
    int line = 1;
    int rowLine = 1;
    auto endRow = [&] {
        row << cell;
        if (rowHasText) {
            rows->append(row);
            lines->append(rowLine);
        }
        row.clear();
        cell.clear();
        rowHasText = false;
    };
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (quoted) {
            if (c == QLatin1Char('"') && i + 1 < text.size() && text.at(i + 1) == QLatin1Char('"')) {
                cell += c;
                ++i;
            } else if (c == QLatin1Char('"')) {
                quoted = false;
            } else {
                if (c == QLatin1Char('\n'))
                    ++line;
                cell += c;
            }
            continue;
        }
        if (c == QLatin1Char('"')) {
            quoted = true;
            rowHasText = true;
        } else if (c == separator) {
            row << cell;
            cell.clear();
        } else if (c == QLatin1Char('\n')) {
            endRow();
            rowLine = ++line;
        } else if (c != QLatin1Char('\r')) {
            cell += c;
            rowHasText = rowHasText || !c.isSpace();
        }
    }
    if (quoted)
        return false;
    endRow();
    return true;
}

QString describe(const QJsonValue &value) {
    return value.isString()   ? QStringLiteral("строка")
           : value.isDouble() ? QStringLiteral("число")
                              : QStringLiteral("значение");
}

// The longest key of `object` that `path` starts with, followed by the end, a dot or an index.
QString memberAt(const QJsonObject &object, const QString &path) {
    QString best;
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QString &key = it.key();
        if (key.size() <= best.size() || !path.startsWith(key))
            continue;
        if (path.size() == key.size() || path.at(key.size()) == QLatin1Char('.') ||
            path.at(key.size()) == QLatin1Char('['))
            best = key;
    }
    return best;
}

bool converted(const QJsonValue &old, const QString &text, QJsonValue *value) {
    if (!old.isDouble() && !old.isBool()) {
        *value = text;
        return true;
    }
    bool ok = false;
    const qlonglong integer = text.trimmed().toLongLong(&ok);
    if (ok) {
        *value = old.isBool() ? QJsonValue(integer != 0) : QJsonValue(double(integer));
        return true;
    }
    const double real = text.trimmed().toDouble(&ok);
    if (ok && old.isDouble())
        *value = real;
    return ok && old.isDouble();
}

// Walks `path` (what is left of the key) inside `node` and puts the value at its end.
bool setAt(QJsonValue *node, const QString &path, const QString &key, const QString &text, QString *error) {
    if (path.isEmpty()) {
        QJsonValue value;
        if (node->isObject() || node->isArray() || !converted(*node, text, &value)) {
            *error =
                QStringLiteral("%1: \"%2\" не подходит, в шаблоне здесь %3").arg(key, text, describe(*node));
            return false;
        }
        *node = value;
        return true;
    }
    if (path.startsWith(QLatin1Char('['))) {
        const int close = path.indexOf(QLatin1Char(']'));
        bool ok = false;
        const int index = close > 1 ? path.mid(1, close - 1).toInt(&ok) : -1;
        QJsonArray array = node->toArray();
        if (!ok || !node->isArray() || index < 0 || index >= array.size()) {
            *error = QStringLiteral("%1: в шаблоне нет элемента %2").arg(key, path.left(close + 1));
            return false;
        }
        QJsonValue element = array.at(index);
        QString rest = path.mid(close + 1);
        if (rest.startsWith(QLatin1Char('.')))
            rest.remove(0, 1);
        if (!setAt(&element, rest, key, text, error))
            return false;
        array.replace(index, element);
        *node = array;
        return true;
    }
    QJsonObject object = node->toObject();
    const QString member = node->isObject() ? memberAt(object, path) : QString();
    if (member.isEmpty()) {
        *error = QStringLiteral("%1: в шаблоне нет ключа \"%2\"").arg(key, path);
        return false;
    }
    QJsonValue child = object.value(member);
    QString rest = path.mid(member.size());
    if (rest.startsWith(QLatin1Char('.')))
        rest.remove(0, 1);
    if (!setAt(&child, rest, key, text, error))
        return false;
    object.insert(member, child);
    *node = object;
    return true;
}

} // namespace

bool ConfigurationOverrides::read(const QString &path, ConfigurationOverrides *overrides, QString *error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("не удалось открыть %1: %2").arg(path, file.errorString());
        return false;
    }
    if (!parse(file.readAll(), overrides, error)) {
        *error = QStringLiteral("%1: %2").arg(path, *error);
        return false;
    }
    return true;
}

bool ConfigurationOverrides::parse(const QByteArray &bytes, ConfigurationOverrides *overrides,
                                   QString *error) {
    QString text = QString::fromUtf8(bytes);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    const QString header = text.section(QLatin1Char('\n'), 0, 0);
    const QChar separator =
        header.count(QLatin1Char(';')) > header.count(QLatin1Char(',')) ? QLatin1Char(';') : QLatin1Char(',');
    QVector<QStringList> rows;
    QVector<int> lines;
    if (!splitRows(text, separator, &rows, &lines)) {
        *error = QStringLiteral("кавычка не закрыта");
        return false;
    }
    ConfigurationOverrides result;
    int imeiColumn = -1;
    const QStringList names = rows.isEmpty() ? QStringList() : rows.first();
    for (int i = 0; i < names.size(); ++i) {
        const QString name = names.at(i).trimmed();
        if (name.compare(QLatin1String(ImeiColumn), Qt::CaseInsensitive) == 0 && imeiColumn < 0)
            imeiColumn = i;
        else
            result.m_keys << name;
    }
    if (imeiColumn < 0) {
        *error = QStringLiteral("в первой строке нет столбца IMEI");
        return false;
    }
    for (int r = 1; r < rows.size(); ++r) {
        QStringList cells = rows.at(r);
        if (cells.size() != names.size()) {
            *error = QStringLiteral("строка %1: %2 столбцов вместо %3")
                         .arg(lines.at(r))
                         .arg(cells.size())
                         .arg(names.size());
            return false;
        }
        const QString imei = cells.takeAt(imeiColumn).trimmed();
        if (imei.isEmpty() || result.m_rows.contains(imei)) {
            *error = imei.isEmpty() ? QStringLiteral("строка %1: пустой IMEI").arg(lines.at(r))
                                    : QStringLiteral("строка %1: IMEI %2 уже был").arg(lines.at(r)).arg(imei);
            return false;
        }
        result.m_order << imei;
        result.m_rows.insert(imei, cells);
    }
    *overrides = result;
    return true;
}

bool ConfigurationOverrides::apply(const QString &imei, QJsonObject *root, QString *error) const {
    const QStringList cells = m_rows.value(imei);
    for (int i = 0; i < cells.size(); ++i) {
        if (!cells.at(i).isEmpty() && !setValue(root, m_keys.at(i), cells.at(i), error))
            return false;
    }
    return true;
}

bool ConfigurationOverrides::check(const QJsonObject &root, QString *error) const {
    for (const QString &imei : m_order) {
        QJsonObject copy = root;
        if (!apply(imei, &copy, error)) {
            *error = QStringLiteral("IMEI %1, %2").arg(imei, *error);
            return false;
        }
    }
    return true;
}

bool ConfigurationOverrides::setValue(QJsonObject *root, const QString &key, const QString &text,
                                      QString *error) {
    QJsonValue node(*root);
    if (!setAt(&node, key, key, text, error))
        return false;
    *root = node.toObject();
    return true;
}

} // namespace kd
