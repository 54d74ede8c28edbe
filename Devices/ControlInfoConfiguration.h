#pragma once

#include "Devices/TelemetryRecords.h"
#include "Devices/configuration.h"

#include <QHash>
#include <QVector>
#include <optional>

// The stored copy of every telemetry block: per kind a fixed number of fixed-size records.
class ControlInfoConfigurationItem : public kd::ConfigurationValue {
    Q_OBJECT
public:
    explicit ControlInfoConfigurationItem(QObject *parent = nullptr);

    // Record `index` of `kind` as stored (zero-filled until the first block arrives); empty for a kind
    // that is not stored or an index outside the kept range.
    QByteArray record(int kind, int index = 0) const;
    // Whether record `index` of `kind` has been received since construction or clear().
    bool received(int kind, int index = 0) const;
    // Stores a record (cut or zero-padded to the record size); false outside the kept range.
    bool setRecord(int kind, int index, const QByteArray &bytes);
    void clear();

private:
    struct Slot {
        QByteArray bytes;
        bool received = false;
    };
    QHash<int, QVector<Slot>> m_records;
};

namespace kd {

// "ControlInfo": the device's current state from telemetry answers (code 0x82). Not part of the
// configuration file.
class ControlInfoConfiguration : public ConfigurationItem<ControlInfoConfigurationItem> {
    Q_OBJECT
public:
    static constexpr quint8 AnswerCode = 0x82;

    explicit ControlInfoConfiguration(int count = 1, QObject *parent = nullptr);

    // Catalogue: bytes per record and records kept for a stored kind; 0 for any other kind.
    static int recordSize(int kind);
    static int recordsKept(int kind);
    // The exchange-log label of a kind; empty for kinds that have none.
    static QString logLabel(int kind);

    // Decodes one telemetry answer (code 0x82; kind = byte 1 & 0x7F, data from offset 4). Returns
    // whether ControlTelemetry(kind) is to be emitted: true for kind 1, for 9..24 (kind 22 only with
    // exactly 8 data bytes), even when the block holds no whole record; false for 0, 2..8, 25 and
    // above, another code, and a dropped kind-22 block.
    bool decode(const QByteArray &payload);

    // Device side: the telemetry answer of `kind` with every kept record (82 kind 00 00 + records);
    // kinds that are not stored answer with the head only.
    QByteArray encodeAnswer(int kind) const;

    // Typed reads; nullopt outside the kept range or before the first block of that kind arrived.
    std::optional<DeviceStateRecord> deviceState() const;
    std::optional<ClockRecord> clock() const;
    std::optional<NavReceiverRecord> navReceiver(int index) const;
    std::optional<ServerStateRecord> serverState(int index) const;
    std::optional<NavSummaryRecord> navSummary() const;
    std::optional<AnalogInputRecord> analogInput(int index) const;
    std::optional<LogicInputRecord> logicInput(int index) const;
    std::optional<FuelSensorsRecord> fuelSensors() const;
    std::optional<StateWordsRecord> stateWords(int kind) const; // kind 21 or 22
    std::optional<SimStateRecord> simState(int index) const;
    std::optional<GsmRegistrationRecord> gsmRegistration(int index) const;

    // Raw access (see ControlInfoConfigurationItem); empty when the value object is gone.
    QByteArray record(int kind, int index = 0) const;
    bool setRecord(int kind, int index, const QByteArray &bytes); // announces changed()
};

} // namespace kd
