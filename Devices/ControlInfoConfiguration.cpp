#include "Devices/ControlInfoConfiguration.h"

#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"

namespace {
struct KindInfo {
    int kind;
    int recordSize;
    int kept;
    const char *label; // null: the block is stored without a log line
};

// The stored blocks. Kinds 17 and 18 describe the analog channels and the logic inputs although
// their log labels say "outputs"; the labels are kept as the exchange log has always read.
const KindInfo kCatalogue[] = {
    {10, 72, 1, "....телеметрия прибора"},
    {11, 6, 1, "....телеметрия часов"},
    {14, 38, 3, "....телеметрия навигации"},
    {15, 48, 3, "....телеметрия серверов"},
    {16, 44, 1, "....телеметрия Навигации"},
    {17, 10, 3, "....телеметрия аналоговых выходов"},
    {18, 10, 2, "....телеметрия цифровых выходов"},
    {19, 42, 1, "....телеметрия топливных датчиков"},
    {21, 8, 1, nullptr},
    {22, 8, 1, nullptr},
    {23, 2, 3, "....телеметрия сим карты GSM"},
    {24, 36, 3, "....телеметрия сим карты GSM REG"},
};

const KindInfo *info(int kind) {
    for (const KindInfo &k : kCatalogue) {
        if (k.kind == kind)
            return &k;
    }
    return nullptr;
}

constexpr int KindMask = 0x7F;
constexpr int ExactKind22Size = 8; // a kind-22 block of any other length is dropped
} // namespace

ControlInfoConfigurationItem::ControlInfoConfigurationItem(QObject *parent)
    : kd::ConfigurationValue(parent) {
    clear();
}

void ControlInfoConfigurationItem::clear() {
    m_records.clear();
    for (const KindInfo &k : kCatalogue)
        m_records.insert(k.kind, QVector<Slot>(k.kept, Slot{QByteArray(k.recordSize, '\0'), false}));
}

QByteArray ControlInfoConfigurationItem::record(int kind, int index) const {
    const auto it = m_records.constFind(kind);
    if (it == m_records.constEnd() || index < 0 || index >= it->size())
        return QByteArray();
    return it->at(index).bytes;
}

bool ControlInfoConfigurationItem::received(int kind, int index) const {
    const auto it = m_records.constFind(kind);
    return it != m_records.constEnd() && index >= 0 && index < it->size() && it->at(index).received;
}

bool ControlInfoConfigurationItem::setRecord(int kind, int index, const QByteArray &bytes) {
    const KindInfo *k = info(kind);
    auto it = m_records.find(kind);
    if (!k || it == m_records.end() || index < 0 || index >= it->size())
        return false;
    QByteArray stored = bytes.left(k->recordSize);
    stored.append(QByteArray(k->recordSize - stored.size(), '\0'));
    (*it)[index] = Slot{stored, true};
    emit changed();
    return true;
}

namespace kd {

ControlInfoConfiguration::ControlInfoConfiguration(int count, QObject *parent)
    : ConfigurationItem<ControlInfoConfigurationItem>(count, parent) {}

int ControlInfoConfiguration::recordSize(int kind) {
    const KindInfo *k = info(kind);
    return k ? k->recordSize : 0;
}

int ControlInfoConfiguration::recordsKept(int kind) {
    const KindInfo *k = info(kind);
    return k ? k->kept : 0;
}

QString ControlInfoConfiguration::logLabel(int kind) {
    if (kind == telemetry::DeviceInfo)
        return QStringLiteral("....телеметрия прибора");
    if (kind >= 2 && kind <= 8)
        return QStringLiteral("....телеметрия????");
    const KindInfo *k = info(kind);
    return (k && k->label) ? QString::fromUtf8(k->label) : QString();
}

bool ControlInfoConfiguration::decode(const QByteArray &payload) {
    if (payload.size() < 2 || quint8(payload.at(0)) != AnswerCode)
        return false;
    const int kind = quint8(payload.at(1)) & KindMask;
    if (kind == 0 || kind >= telemetry::FirstIgnored)
        return false;
    if (kind < telemetry::Unnamed9) {
        trafficLog(logLabel(kind));
        return kind == telemetry::DeviceInfo;
    }
    const KindInfo *k = info(kind);
    if (!k)
        return true; // 9, 12, 13, 20: announced, not stored
    const int dataLength = payload.size() - codec::HeadSize;
    if (kind == telemetry::StateWords22 && dataLength != ExactKind22Size)
        return false;
    ControlInfoConfigurationItem *e = value();
    if (e) {
        const int records = qMin(codec::recordCount(payload, k->recordSize), k->kept);
        for (int n = 0; n < records; ++n)
            e->setRecord(kind, n, payload.mid(codec::HeadSize + n * k->recordSize, k->recordSize));
    }
    if (k->label)
        trafficLog(QString::fromUtf8(k->label));
    return true;
}

QByteArray ControlInfoConfiguration::encodeAnswer(int kind) const {
    QByteArray b = codec::head(AnswerCode, quint8(kind), 0, 0);
    const KindInfo *k = info(kind);
    const ControlInfoConfigurationItem *e = value();
    if (!k || !e)
        return b;
    for (int n = 0; n < k->kept; ++n)
        b += e->record(kind, n);
    return b;
}

QByteArray ControlInfoConfiguration::record(int kind, int index) const {
    return value() ? value()->record(kind, index) : QByteArray();
}

bool ControlInfoConfiguration::setRecord(int kind, int index, const QByteArray &bytes) {
    return value() && value()->setRecord(kind, index, bytes);
}

namespace {
template <class R>
std::optional<R> typedRecord(const ControlInfoConfigurationItem *e, int kind, int index) {
    if (!e || !e->received(kind, index))
        return std::nullopt;
    return R::fromBytes(e->record(kind, index));
}
} // namespace

std::optional<DeviceStateRecord> ControlInfoConfiguration::deviceState() const {
    return typedRecord<DeviceStateRecord>(value(), telemetry::DeviceState, 0);
}

std::optional<ClockRecord> ControlInfoConfiguration::clock() const {
    return typedRecord<ClockRecord>(value(), telemetry::Clock, 0);
}

std::optional<NavReceiverRecord> ControlInfoConfiguration::navReceiver(int index) const {
    return typedRecord<NavReceiverRecord>(value(), telemetry::NavReceivers, index);
}

std::optional<ServerStateRecord> ControlInfoConfiguration::serverState(int index) const {
    return typedRecord<ServerStateRecord>(value(), telemetry::Servers, index);
}

std::optional<NavSummaryRecord> ControlInfoConfiguration::navSummary() const {
    return typedRecord<NavSummaryRecord>(value(), telemetry::NavSummary, 0);
}

std::optional<AnalogInputRecord> ControlInfoConfiguration::analogInput(int index) const {
    return typedRecord<AnalogInputRecord>(value(), telemetry::AnalogInputs, index);
}

std::optional<LogicInputRecord> ControlInfoConfiguration::logicInput(int index) const {
    return typedRecord<LogicInputRecord>(value(), telemetry::LogicInputs, index);
}

std::optional<FuelSensorsRecord> ControlInfoConfiguration::fuelSensors() const {
    return typedRecord<FuelSensorsRecord>(value(), telemetry::FuelSensors, 0);
}

std::optional<StateWordsRecord> ControlInfoConfiguration::stateWords(int kind) const {
    if (kind != telemetry::StateWords21 && kind != telemetry::StateWords22)
        return std::nullopt;
    return typedRecord<StateWordsRecord>(value(), kind, 0);
}

std::optional<SimStateRecord> ControlInfoConfiguration::simState(int index) const {
    return typedRecord<SimStateRecord>(value(), telemetry::SimStates, index);
}

std::optional<GsmRegistrationRecord> ControlInfoConfiguration::gsmRegistration(int index) const {
    return typedRecord<GsmRegistrationRecord>(value(), telemetry::GsmRegistration, index);
}

} // namespace kd
