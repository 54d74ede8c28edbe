#pragma once

#include <QString>
#include <QtGlobal>

// The 128-bit roaming timetable of a SIM card, as the device keeps it in two 64-bit words.
//
// Each day of the week owns 16 consecutive bits, one per 90-minute slot of the day:
//   bit = day * 16 + slot,  day 0 = Monday ... 6 = Sunday,  slot s covers [s * 1:30, (s + 1) * 1:30).
// The low word holds bits 0..63 (Monday to Thursday), the high word bits 64..127 (Friday to Sunday
// in bits 64..111). Bits 112..127 belong to no day; they are kept exactly as read from the device.
// A set bit marks a slot in which the SIM may work in roaming.
class RoamingTimetable {
public:
    static constexpr int Days = 7;
    static constexpr int SlotsPerDay = 16;
    static constexpr int SlotMinutes = 90;
    static constexpr int Bits = 128;

    RoamingTimetable() = default;
    RoamingTimetable(quint64 low, quint64 high);

    quint64 low() const { return m_low; }
    quint64 high() const { return m_high; }

    static int bitIndex(int day, int slot);
    static QString dayName(int day);
    // "07:30" style start of a slot; slot SlotsPerDay gives "24:00".
    static QString slotStart(int slot);

    bool bit(int index) const;
    void setBit(int index, bool on);
    bool slot(int day, int slot) const { return bit(bitIndex(day, slot)); }
    void setSlot(int day, int slot, bool on) { setBit(bitIndex(day, slot), on); }
    void setAll(bool on);

    bool operator==(const RoamingTimetable &other) const {
        return m_low == other.m_low && m_high == other.m_high;
    }
    bool operator!=(const RoamingTimetable &other) const { return !(*this == other); }

private:
    quint64 m_low = 0;
    quint64 m_high = 0;
};
