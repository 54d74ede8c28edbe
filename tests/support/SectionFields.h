#pragma once

#include "Devices/ConfigurationFields.h"
#include "Devices/VantorConfiguration.h"

#include <QMap>
#include <QStringList>

// A section's values as one text, in the order of the field table: an element's values divided by blanks,
// the elements by " / " ("1 1000 2000 10 5 / 0 1 2 3 4"). Texts hold no blank.
inline QString fieldsOf(const VantorConfiguration &cfg, const QString &key) {
    QMap<int, QStringList> elements;
    for (const kd::ConfigField &f : kd::configurationFields()) {
        if (f.section == key)
            elements[f.element] << f.rawValue(cfg).toString();
    }
    QStringList out;
    for (const QStringList &e : elements)
        out << e.join(QLatin1Char(' '));
    return out.join(QLatin1String(" / "));
}

inline void setFields(VantorConfiguration &cfg, const QString &key, const QString &values) {
    const QStringList elements = values.split(QLatin1String(" / "));
    QMap<int, int> next;
    for (const kd::ConfigField &f : kd::configurationFields()) {
        if (f.section == key)
            f.assign(cfg, elements.value(f.element).split(QLatin1Char(' ')).value(next[f.element]++));
    }
}

// Puts another value into every field of the section: what is sent afterwards can only come from
// somewhere else.
inline void scrambleFields(VantorConfiguration &cfg, const QString &key) {
    for (const kd::ConfigField &f : kd::configurationFields()) {
        if (f.section != key)
            continue;
        const QVariant v = f.rawValue(cfg);
        if (f.kind == kd::ConfigField::Kind::Text)
            f.assign(cfg, QString(v.toString() + QLatin1Char('z')));
        else if (f.kind == kd::ConfigField::Kind::Timetable)
            f.assign(cfg, QString(32, v.toString().startsWith(QLatin1Char('f')) ? QLatin1Char('0')
                                                                                : QLatin1Char('f')));
        else
            f.assign(cfg, v.toULongLong() == 0 ? 1 : 0);
    }
}
