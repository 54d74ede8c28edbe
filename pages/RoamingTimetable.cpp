#include "pages/RoamingTimetable.h"

#include <QStringList>

RoamingTimetable::RoamingTimetable(quint64 low, quint64 high)
    : m_low(low)
    , m_high(high) {}

int RoamingTimetable::bitIndex(int day, int slot) {
    if (day < 0 || day >= Days || slot < 0 || slot >= SlotsPerDay)
        return -1;
    return day * SlotsPerDay + slot;
}

QString RoamingTimetable::dayName(int day) {
    static const QStringList names = {QStringLiteral("Понедельник"), QStringLiteral("Вторник"),
                                      QStringLiteral("Среда"),       QStringLiteral("Четверг"),
                                      QStringLiteral("Пятница"),     QStringLiteral("Суббота"),
                                      QStringLiteral("Воскресенье")};
    return day >= 0 && day < names.size() ? names.at(day) : QString();
}

QString RoamingTimetable::slotStart(int slot) {
    const int minutes = slot * SlotMinutes;
    return QStringLiteral("%1:%2")
        .arg(minutes / 60, 2, 10, QLatin1Char('0'))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

bool RoamingTimetable::bit(int index) const {
    if (index < 0 || index >= Bits)
        return false;
    const quint64 word = index < 64 ? m_low : m_high;
    return (word >> (index % 64)) & 1U;
}

void RoamingTimetable::setBit(int index, bool on) {
    if (index < 0 || index >= Bits)
        return;
    quint64 &word = index < 64 ? m_low : m_high;
    const quint64 mask = quint64(1) << (index % 64);
    word = on ? (word | mask) : (word & ~mask);
}

void RoamingTimetable::setAll(bool on) {
    for (int day = 0; day < Days; ++day) {
        for (int s = 0; s < SlotsPerDay; ++s)
            setSlot(day, s, on);
    }
}
