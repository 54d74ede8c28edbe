#include "Devices/SectionTable.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/ByteOrder.h"
#include "Devices/CodecHelpers.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"

namespace kd {

quint8 SectionRequest::code() const {
    return le::u8(payload, 0);
}

quint8 SectionRequest::operation() const {
    return le::u8(payload, 1);
}

quint8 SectionRequest::parameter() const {
    return le::u8(payload, 2);
}

namespace {

constexpr quint8 ConfigType = 6;
constexpr quint8 CommandType = 7;
constexpr quint8 OperationMask = 0x7F;
constexpr int GsmSims = 2; // the GSM writes cover SIM 1 and 2

// The telemetry sub-codes in the order they are polled (0x0D is never asked for).
constexpr telemetry::Kind kTelemetrySubCodes[] = {
    telemetry::DeviceState,  telemetry::Unnamed9,    telemetry::Clock,          telemetry::Unnamed12,
    telemetry::NavReceivers, telemetry::Servers,     telemetry::NavSummary,     telemetry::AnalogInputs,
    telemetry::LogicInputs,  telemetry::FuelSensors, telemetry::Unnamed20,      telemetry::StateWords21,
    telemetry::StateWords22, telemetry::SimStates,   telemetry::GsmRegistration};

SectionRequest read(quint8 type, quint8 code, int operation, const QString &label) {
    SectionRequest r;
    r.type = type;
    r.payload = codec::head(code, quint8(operation), 0, 0);
    r.answerCode = code;
    r.answerOperation = quint8(operation);
    r.label = label;
    return r;
}

SectionRequest read(quint8 code, int operation, const QString &label) {
    return read(ConfigType, code, operation, label);
}

// A write is settled by the status answer that echoes its head.
SectionRequest write(const QByteArray &payload, const QString &label) {
    SectionRequest r;
    r.payload = payload;
    r.answerCode = le::u8(payload, 0);
    r.answerOperation = le::u8(payload, 1);
    r.answerParameter = le::u8(payload, 2);
    r.statusAnswer = true;
    r.label = label;
    return r;
}

template <class S>
IConfigurationItem *create(int elements, QObject *parent) {
    return new S(elements, parent);
}

template <class S, const char *Key>
S *find(const Configuration *cfg) {
    return typed_item<S>(cfg, QLatin1String(Key));
}

template <class S, const char *Key>
bool decode(Configuration *cfg, const QByteArray &payload) {
    S *s = find<S, Key>(cfg);
    if (!s)
        return false;
    s->decode(payload);
    return true;
}

template <class S, const char *Key>
bool decodeWrite(Configuration *cfg, const QByteArray &payload) {
    S *s = find<S, Key>(cfg);
    return s && s->decodeWrite(payload);
}

// Sections of one block: the answer to any other operation is empty.
template <class S, const char *Key>
QByteArray answerOneBlock(const Configuration *cfg, quint8 operation) {
    const S *s = find<S, Key>(cfg);
    return s && operation == S::Block ? s->encodeAnswer() : QByteArray();
}

template <class S, const char *Key>
QByteArray answerBlock(const Configuration *cfg, quint8 operation) {
    const S *s = find<S, Key>(cfg);
    return s ? s->encodeAnswer(operation) : QByteArray();
}

// Telemetry and identity kinds ignore bit 7 of the operation.
template <class S, const char *Key>
QByteArray answerKind(const Configuration *cfg, quint8 operation) {
    const S *s = find<S, Key>(cfg);
    return s ? s->encodeAnswer(operation & OperationMask) : QByteArray();
}

// Sections written item by item: one request per element.
template <class S, const char *Key>
QVector<SectionRequest> eachItem(const Configuration *cfg, const QString &label) {
    QVector<SectionRequest> requests;
    if (const S *s = find<S, Key>(cfg)) {
        for (int i = 0; i < s->count(); ++i)
            requests << write(s->encode(i), label.arg(i + 1));
    }
    return requests;
}

QVector<SectionRequest> navigationWrites(const Configuration *cfg) {
    const auto *s = find<NavigationConfiguration, keys::Navigation>(cfg);
    if (!s)
        return {};
    // The parking block goes first.
    return {write(s->encodeParking(), QStringLiteral("навигация на стоянке")),
            write(s->encodeMotion(), QStringLiteral("навигация в движении"))};
}

QVector<SectionRequest> gsmWrites(const Configuration *cfg) {
    const auto *s = find<GSMConfiguration, keys::Gsm>(cfg);
    if (!s)
        return {};
    // Access blocks of both SIMs first, then the roaming blocks; a SIM the section lacks sends nothing
    // rather than an empty packet.
    QVector<SectionRequest> requests;
    for (int sim = 0; sim < GsmSims; ++sim) {
        const QByteArray access = s->encodeAccess(sim);
        if (!access.isEmpty())
            requests << write(access, QStringLiteral("GSM (провайдер SIM%1)").arg(sim + 1));
    }
    for (int sim = 0; sim < GsmSims; ++sim) {
        const QByteArray roaming = s->encodeRoaming(sim);
        if (!roaming.isEmpty())
            requests << write(roaming, QStringLiteral("GSM (роуминг SIM%1)").arg(sim + 1));
    }
    return requests;
}

QVector<SectionRequest> fuelWrites(const Configuration *cfg) {
    const auto *s = find<FuelConfiguration, keys::Fuel>(cfg);
    if (!s)
        return {};
    return {write(s->encode(), QStringLiteral("датчики топлива"))};
}

QVector<SectionRequest> systemWrites(const Configuration *cfg) {
    const auto *s = find<SystemConfiguration, keys::System>(cfg);
    if (!s)
        return {};
    return {write(s->encode(), QStringLiteral("системные параметры"))};
}

QVector<SectionRequest> agcWrites(const Configuration *cfg) {
    return eachItem<AgcConfiguration, keys::Agc>(cfg, QStringLiteral("аналоговый вход %1"));
}

QVector<SectionRequest> logicWrites(const Configuration *cfg) {
    return eachItem<LogicConfiguration, keys::Logic>(cfg, QStringLiteral("логический вход %1"));
}

QVector<SectionRequest> serverWrites(const Configuration *cfg) {
    return eachItem<ServerConfiguration, keys::Server>(cfg, QStringLiteral("сервер %1"));
}

QVector<SectionRequest> telemetryReads() {
    QVector<SectionRequest> reads;
    for (int subCode : kTelemetrySubCodes) {
        reads << read(CommandType, ControlInfoConfiguration::AnswerCode, subCode,
                      QStringLiteral("телеметрия 0x%1").arg(subCode, 2, 16, QLatin1Char('0')));
    }
    return reads;
}

QVector<Section> buildTable() {
    using DeviceInfo = DeviceInfoConfiguration;
    using Nav = NavigationConfiguration;
    using Gsm = GSMConfiguration;
    using Agc = AgcConfiguration;
    using Logic = LogicConfiguration;
    using Fuel = FuelConfiguration;
    using Server = ServerConfiguration;
    using System = SystemConfiguration;
    using Output = OutputConfiguration;
    using ControlInfo = ControlInfoConfiguration;
    // clang-format off
    return {
        {keys::MainDeviceInfo, QStringLiteral("сведения о приборе"), "Main Device Info",
         ConfigType, DeviceInfo::Code, DeviceInfo::AnswerCode, -1, -1, 1,
         {QStringLiteral("name"), QStringLiteral("softver"), QStringLiteral("hardver.devmod"),
          QStringLiteral("hardver.devgroup"), QStringLiteral("hardver.devtype"),
          QStringLiteral("hardver.serial"), QStringLiteral("IMEI")},
         {read(DeviceInfo::AnswerCode, DeviceInfo::KindIdentity, QStringLiteral("сведения о приборе")),
          read(DeviceInfo::AnswerCode, DeviceInfo::KindText, QStringLiteral("название прибора"))},
         create<DeviceInfo>, decode<DeviceInfo, keys::MainDeviceInfo>, nullptr,
         answerKind<DeviceInfo, keys::MainDeviceInfo>, nullptr},
        {keys::Gsm, QStringLiteral("GSM"), "GSM configuration",
         ConfigType, Gsm::Code, Gsm::AnswerCode, 2, 1, 2, {QStringLiteral("gsm")},
         {read(Gsm::AnswerCode, Gsm::AccessBlock, QStringLiteral("GSM (провайдеры)")),
          read(Gsm::AnswerCode, Gsm::RoamingBlock, QStringLiteral("GSM (роуминг)"))},
         create<Gsm>, decode<Gsm, keys::Gsm>, gsmWrites, answerBlock<Gsm, keys::Gsm>,
         decodeWrite<Gsm, keys::Gsm>},
        {keys::Agc, QStringLiteral("аналоговые входы"), "ADC configuration",
         ConfigType, Agc::Code, Agc::AnswerCode, 4, 4, 3, {QStringLiteral("adcs")},
         {read(Agc::AnswerCode, Agc::Block, QStringLiteral("аналоговые входы"))},
         create<Agc>, decode<Agc, keys::Agc>, agcWrites, answerOneBlock<Agc, keys::Agc>,
         decodeWrite<Agc, keys::Agc>},
        {keys::Navigation, QStringLiteral("навигация"), "Nav configuration",
         ConfigType, Nav::Code, Nav::AnswerCode, 1, 0, 1, {QStringLiteral("navigation")},
         {read(Nav::AnswerCode, Nav::MotionBlock, QStringLiteral("навигация в движении")),
          read(Nav::AnswerCode, Nav::ParkingBlock, QStringLiteral("навигация на стоянке"))},
         create<Nav>, decode<Nav, keys::Navigation>, navigationWrites,
         answerBlock<Nav, keys::Navigation>, decodeWrite<Nav, keys::Navigation>},
        {keys::Logic, QStringLiteral("логические входы"), "Logic configuration",
         ConfigType, Logic::Code, Logic::AnswerCode, 5, 5, 2, {QStringLiteral("dinputs")},
         {read(Logic::AnswerCode, Logic::Block, QStringLiteral("логические входы"))},
         create<Logic>, decode<Logic, keys::Logic>, logicWrites, answerOneBlock<Logic, keys::Logic>,
         decodeWrite<Logic, keys::Logic>},
        {keys::Fuel, QStringLiteral("датчики топлива"), "Fuel configuration",
         ConfigType, Fuel::Code, Fuel::AnswerCode, 6, 2, 8,
         {QStringLiteral("fuel_sensors"), QStringLiteral("fuel_tanks")},
         {read(Fuel::AnswerCode, Fuel::Block, QStringLiteral("датчики топлива"))},
         create<Fuel>, decode<Fuel, keys::Fuel>, fuelWrites, answerOneBlock<Fuel, keys::Fuel>,
         decodeWrite<Fuel, keys::Fuel>},
        {keys::Server, QStringLiteral("серверы"), "Server configuration",
         ConfigType, Server::Code, Server::AnswerCode, 3, 6, 1, {QStringLiteral("Server")},
         {read(Server::AnswerCode, Server::Block, QStringLiteral("серверы"))},
         create<Server>, decode<Server, keys::Server>, serverWrites,
         answerOneBlock<Server, keys::Server>, decodeWrite<Server, keys::Server>},
        {keys::System, QStringLiteral("системные параметры"), "System configuration",
         ConfigType, System::Code, System::AnswerCode, 0, 3, 1, {QStringLiteral("SystemParameters")},
         {read(System::AnswerCode, System::Block, QStringLiteral("системные параметры"))},
         create<System>, decode<System, keys::System>, systemWrites,
         answerOneBlock<System, keys::System>, decodeWrite<System, keys::System>},
        // Outputs are set one at a time from their page, never by the full write.
        {keys::Output, QStringLiteral("выходы"), "Outputs configuration",
         ConfigType, Output::Code, Output::AnswerCode, 7, -1, 1, {QStringLiteral("out_parameters")},
         {read(Output::AnswerCode, Output::Block, QStringLiteral("выходы"))},
         create<Output>, decode<Output, keys::Output>, nullptr, answerOneBlock<Output, keys::Output>,
         decodeWrite<Output, keys::Output>},
        // The device's current state travels as telemetry command packets and is not in the file.
        {keys::ControlInfo, QStringLiteral("текущее состояние"), "Device current state",
         CommandType, ControlInfo::AnswerCode, ControlInfo::AnswerCode, -1, -1, 1, {},
         telemetryReads(), create<ControlInfo>, nullptr, nullptr,
         answerKind<ControlInfo, keys::ControlInfo>, nullptr},
    };
    // clang-format on
}

QVector<const Section *> ordered(int Section::*order) {
    QVector<const Section *> result;
    for (const Section &s : sections()) {
        if (s.*order >= 0)
            result << &s;
    }
    std::sort(result.begin(), result.end(),
              [order](const Section *a, const Section *b) { return a->*order < b->*order; });
    return result;
}

} // namespace

const QVector<Section> &sections() {
    static const QVector<Section> table = buildTable();
    return table;
}

QStringList sectionKeys() {
    QStringList keys;
    for (const Section &s : sections())
        keys << QString::fromLatin1(s.key);
    return keys;
}

const Section *sectionByKey(const QString &key) {
    for (const Section &s : sections()) {
        if (key == QLatin1String(s.key))
            return &s;
    }
    return nullptr;
}

const Section *sectionByRequestCode(quint8 code, quint8 type) {
    for (const Section &s : sections()) {
        if (s.packetType == type && (code == s.code || code == s.answerCode))
            return &s;
    }
    return nullptr;
}

const Section *sectionByAnswerCode(quint8 code, quint8 type) {
    for (const Section &s : sections()) {
        if (s.packetType == type && code == s.answerCode)
            return &s;
    }
    return nullptr;
}

QVector<const Section *> readOrder() {
    return ordered(&Section::readOrder);
}

QVector<const Section *> writeOrder() {
    return ordered(&Section::writeOrder);
}

QVector<SectionRequest> writeRequests(const QString &key, const Configuration *cfg) {
    const Section *s = sectionByKey(key);
    return s && s->writes ? s->writes(cfg) : QVector<SectionRequest>();
}

} // namespace kd
