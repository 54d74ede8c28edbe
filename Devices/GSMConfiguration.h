#pragma once

#include "Devices/configuration.h"

#include <QString>

// One SIM card: data-connection access and roaming rules.
class GSMConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
public:
    static constexpr int TextSize = 32; // each text field on the wire; longer texts must not be sent

    explicit GSMConfigurationItem(QObject *parent = nullptr);

    QString apn() const { return m_apn; }
    QString apnUser() const { return m_apnUser; }
    QString apnPassword() const { return m_apnPassword; }
    quint8 forbidden() const { return m_forbidden; } // roaming forbidden (1 bit on the wire)
    // The roaming timetable: a 128-bit schedule in two 64-bit words.
    quint64 timetableHi() const { return m_timetableHi; }
    quint64 timetableLow() const { return m_timetableLow; }

    void setApn(const QString &v) { setField(m_apn, v, &GSMConfigurationItem::apnChanged); }
    void setApnUser(const QString &v) { setField(m_apnUser, v, &GSMConfigurationItem::apnUserChanged); }
    void setApnPassword(const QString &v) {
        setField(m_apnPassword, v, &GSMConfigurationItem::apnPasswordChanged);
    }
    void setForbidden(quint8 v) { setField(m_forbidden, v, &GSMConfigurationItem::forbiddenChanged); }
    void setTimetableHi(quint64 v) { setField(m_timetableHi, v, &GSMConfigurationItem::timetableHiChanged); }
    void setTimetableLow(quint64 v) {
        setField(m_timetableLow, v, &GSMConfigurationItem::timetableLowChanged);
    }

signals:
    void apnChanged(const QString &value);
    void apnUserChanged(const QString &value);
    void apnPasswordChanged(const QString &value);
    void forbiddenChanged(quint8 value);
    void timetableHiChanged(quint64 value);
    void timetableLowChanged(quint64 value);

private:
    QString m_apn;
    QString m_apnUser;
    QString m_apnPassword;
    quint8 m_forbidden = 0;
    quint64 m_timetableHi = 0;
    quint64 m_timetableLow = 0;
};

namespace kd {

class GSMConfiguration : public ConfigurationItem<GSMConfigurationItem> {
    Q_OBJECT
public:
    static constexpr quint8 Code = 0x04;
    static constexpr quint8 AnswerCode = 0x84;
    static constexpr int AccessBlock = 3;
    static constexpr int RoamingBlock = 4;
    static constexpr int AccessRecordSize = 96;
    static constexpr int RoamingRecordSize = 18;

    explicit GSMConfiguration(int count = 2, QObject *parent = nullptr);

    // Answer 0x84: block 3 carries 96-byte access records, block 4 18-byte roaming records, one per
    // SIM in index order; records beyond the section's elements are skipped.
    void decode(const QByteArray &payload);
    QByteArray encodeAccess(int sim) const;  // 04 03 sim 00 + 96 bytes (empty if sim is not an element)
    QByteArray encodeRoaming(int sim) const; // 04 04 sim 00 + 18 bytes (empty if sim is not an element)

    QByteArray encodeAnswer(int block) const; // device side: 84 block 00 00 + one record per element
    bool decodeWrite(const QByteArray &writePayload);
};

} // namespace kd
