#include "tools/devsim/VirtualTracker.h"

#include "tools/devsim/DevsimLog.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/ByteOrder.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/TelemetryRecords.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Frame.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <memory>

using proto::Frame;

namespace {

namespace code {
constexpr quint8 Login = 0x01; // type 7: login, firmware-update mode, reset and memory clearing
constexpr quint8 PasswordChange = 0x02;
constexpr quint8 Code9 = 0x09;
constexpr quint8 Telemetry = 0x82;
constexpr quint8 ReadBit = 0x80;
} // namespace code

namespace op {
constexpr quint8 Login = 1;
constexpr quint8 FirmwareUpdate = 2;
constexpr quint8 ResetOrClear = 3;
} // namespace op

constexpr quint16 ResetSettingsArgument = 0;
constexpr quint16 ClearMemoryArgument = 1;
constexpr int DefaultOutputs = 2;

QString hex64(quint64 v) {
    return QStringLiteral("0x%1").arg(v, 16, 16, QLatin1Char('0'));
}

quint64 parse64(const QJsonValue &v) {
    if (v.isString()) {
        QString text = v.toString();
        const bool hex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
        return text.mid(hex ? 2 : 0).toULongLong(nullptr, hex ? 16 : 10);
    }
    return quint64(v.toDouble());
}

} // namespace

VirtualTracker::VirtualTracker(QObject *parent)
    : QObject(parent)
    , m_config(new VantorConfiguration(this)) {
    auto timer = std::make_shared<QElapsedTimer>();
    timer->start();
    m_clock = [timer] { return timer->elapsed(); };
    restoreDefaults();
}

VirtualTracker::~VirtualTracker() = default;

void VirtualTracker::setClock(std::function<qint64()> clock) {
    m_clock = std::move(clock);
}

void VirtualTracker::setPassword(std::optional<quint32> password) {
    m_password = password;
    m_loggedIn = false;
}

void VirtualTracker::logout() {
    m_loggedIn = false;
}

const TrackerModel &VirtualTracker::modelNow() {
    refreshModelSetup();
    m_model.setElapsed(m_clock());
    return m_model;
}

void VirtualTracker::restoreDefaults() {
    kd::DeviceInfoConfiguration *info = m_config->deviceInfo();
    info->setName(QStringLiteral("Vantor micro"));
    info->setIMEI(QStringLiteral("863071014478127"));
    info->setDeviceGroup(1);
    info->setDeviceType(3);
    info->setDeviceMod(2);
    info->setSerialNumber(100234);
    info->setVersion(918);

    SystemConfigurationItem *sys = m_config->system()->value();
    sys->setParkingMin(5);
    sys->setPwrMode(1);
    sys->setGsens(7);
    sys->setLowSpeed(0);
    sys->setOutCtrl(1);

    NavigationConfigurationItem *nav = m_config->navigation()->value();
    nav->setDeltaCourse(15);
    nav->setDeltaSpeed(10);
    nav->setDriveTimeout(60);
    nav->setDeltaDistance(200);
    nav->setFreezeNav(1);
    nav->setPwrNav(2);
    nav->setFaultSpeed(3);

    const struct {
        const char *apn, *user, *password;
        quint8 forbidden;
        quint64 low, high;
    } sims[] = {{"internet.mts.ru", "mts", "mts", 0, 0, 0},
                {"internet", "", "", 1, 0x00000000FFFFFF00ull, 0x00FFFFFF00000000ull}};
    for (int i = 0; i < m_config->gsm()->count() && i < 2; ++i) {
        GSMConfigurationItem *sim = m_config->gsm()->element(i);
        sim->setApn(QString::fromLatin1(sims[i].apn));
        sim->setApnUser(QString::fromLatin1(sims[i].user));
        sim->setApnPassword(QString::fromLatin1(sims[i].password));
        sim->setForbidden(sims[i].forbidden);
        sim->setTimetableLow(sims[i].low);
        sim->setTimetableHi(sims[i].high);
    }

    for (int i = 0; i < m_config->servers()->count(); ++i) {
        ServerConfigurationItem *server = m_config->servers()->element(i);
        server->setEnable(i == 0 ? 1 : 0);
        server->setServer(i == 0 ? QStringLiteral("gps.tavrel.ru") : QString());
        server->setPort(i == 0 ? 20629 : 0);
        server->setProto(0);
    }

    const struct {
        quint8 enabled;
        quint16 low, high, sensitivity, averaging;
    } channels[] = {{1, 9000, 11000, 100, 10}, {1, 1500, 3000, 50, 5}, {0, 0, 0, 0, 0}};
    for (int i = 0; i < m_config->agc()->count() && i < 3; ++i) {
        AgcConfigurationItem *ch = m_config->agc()->element(i);
        ch->setEnabled(channels[i].enabled);
        ch->setThresholdLow(channels[i].low);
        ch->setThresholdHigh(channels[i].high);
        ch->setSensitivity(channels[i].sensitivity);
        ch->setAveraging(channels[i].averaging);
    }

    const quint8 functions[] = {quint8(kd::InputMode::Logic), quint8(kd::InputMode::UniversalCounter)};
    for (int i = 0; i < m_config->logic()->count() && i < 2; ++i)
        m_config->logic()->element(i)->setFunc(functions[i]);

    for (int i = 0; i < m_config->fuel()->count(); ++i) {
        FuelConfigurationItem *f = m_config->fuel()->element(i);
        f->setAddr(i < 2 ? quint8(i + 1) : 0);
        f->setTank_num(i < 2 ? quint8(i) : 0);
        f->setAveraging(i < 2 ? 10 : 0);
    }

    OutputConfigurationItem *out = m_config->outputs()->value();
    out->setOutNum(1);
    out->setHighCondition(1);
    out->setLowCondition(0);
    out->setReplayCounter(3);
    m_outputCount = DefaultOutputs;
    out->setNumberOfOutputs(quint8(m_outputCount));
    out->setStates(QVector<quint8>(m_outputCount, 0));
    refreshModelSetup();
}

void VirtualTracker::refreshModelSetup() {
    TrackerModel::Setup setup;
    for (int i = 0; i < m_config->servers()->count(); ++i) {
        const ServerConfigurationItem *s = m_config->servers()->element(i);
        setup.servers.append({(s->enable() & 1) != 0, s->server(), s->port(), s->proto()});
    }
    for (int i = 0; i < m_config->agc()->count(); ++i)
        setup.analogEnabled.append((m_config->agc()->element(i)->enabled() & 1) != 0);
    for (int i = 0; i < m_config->logic()->count(); ++i)
        setup.logicFunctions.append(m_config->logic()->element(i)->func());
    for (int i = 0; i < m_config->fuel()->count(); ++i)
        setup.fuelAddresses.append(m_config->fuel()->element(i)->addr());
    setup.simsWithApn = 0;
    for (int i = 0; i < m_config->gsm()->count(); ++i)
        setup.simsWithApn += m_config->gsm()->element(i)->apn().isEmpty() ? 0 : 1;
    m_model.setSetup(setup);
}

QByteArray VirtualTracker::statusPayload(quint8 code, quint8 operation, quint8 parameter, quint16 status) {
    QByteArray p(Frame::HeadSize + 2, '\0');
    p[Frame::CodeOffset] = char(code);
    p[Frame::OperationOffset] = char(operation | 0x80);
    p[Frame::ParameterOffset] = char(parameter);
    kd::le::put16(p, Frame::StatusOffset, status);
    return p;
}

QList<QByteArray> VirtualTracker::handle(quint8 type, const QByteArray &payload) {
    const quint8 c = kd::le::u8(payload, Frame::CodeOffset);
    const quint8 o = kd::le::u8(payload, Frame::OperationOffset);
    const quint8 p = kd::le::u8(payload, Frame::ParameterOffset);
    auto status = [&](quint8 answerType, quint16 s) {
        return QList<QByteArray>{Frame::build(answerType, statusPayload(c, o, p, s))};
    };

    if (type != proto::ConfigPacketType && type != proto::CommandPacketType)
        return status(proto::ConfigPacketType, UnknownPacketType);
    if (m_blocked)
        return status(type, Blocked);
    const bool isLogin = type == proto::CommandPacketType && c == code::Login && o == op::Login;
    if (m_password && !m_loggedIn && !isLogin)
        return status(type, NeedLogin);

    if (type == proto::ConfigPacketType && m_silentReads.contains(c))
        return {};
    const QByteArray answer =
        type == proto::ConfigPacketType ? handleConfig(payload) : handleCommand(payload);
    QList<QByteArray> frames{Frame::build(type, answer)};
    if (type == proto::CommandPacketType && c == code::Login && o == op::FirmwareUpdate)
        emit firmwareUpdateRequested();
    return frames;
}

QByteArray VirtualTracker::handleConfig(const QByteArray &payload) {
    const quint8 c = kd::le::u8(payload, Frame::CodeOffset);
    const quint8 o = kd::le::u8(payload, Frame::OperationOffset);
    const quint8 p = kd::le::u8(payload, Frame::ParameterOffset);
    if (payload.size() < Frame::HeadSize)
        return statusPayload(c, o, p, ExecuteError);

    if (c & code::ReadBit) {
        const QByteArray answer = readSection(c, o);
        return answer.isEmpty() ? statusPayload(c, o, p, NotSupported) : answer;
    }
    if (c == code::PasswordChange) {
        if (o != 1 || !kd::le::has(payload, Frame::HeadSize, 4))
            return statusPayload(c, o, p, ExecuteError);
        m_password = kd::le::u32(payload, Frame::HeadSize);
        m_loggedIn = true; // the one who set it knows it
        qCInfo(lcDevsim) << "password changed";
        emit stateChanged();
        return statusPayload(c, o, p, Done);
    }
    if (c == code::Code9)
        return statusPayload(c, o, p, Done);
    if (c != kd::NavigationConfiguration::Code && c != kd::GSMConfiguration::Code &&
        c != kd::FuelConfiguration::Code && c != kd::AgcConfiguration::Code &&
        c != kd::LogicConfiguration::Code && c != kd::OutputConfiguration::Code &&
        c != kd::ServerConfiguration::Code && c != kd::SystemConfiguration::Code)
        return statusPayload(c, o, p, NotSupported);
    if (!writeSection(payload))
        return statusPayload(c, o, p, ExecuteError);
    emit stateChanged();
    return statusPayload(c, o, p, Done);
}

QByteArray VirtualTracker::readSection(quint8 c, quint8 o) {
    switch (c) {
    case kd::DeviceInfoConfiguration::AnswerCode:
        return m_config->deviceInfo()->encodeAnswer(o & 0x7F);
    case kd::NavigationConfiguration::AnswerCode:
        return m_config->navigation()->encodeAnswer(o);
    case kd::GSMConfiguration::AnswerCode:
        return m_config->gsm()->encodeAnswer(o);
    case kd::FuelConfiguration::AnswerCode:
        return o == kd::FuelConfiguration::Block ? m_config->fuel()->encodeAnswer() : QByteArray();
    case kd::AgcConfiguration::AnswerCode:
        return o == kd::AgcConfiguration::Block ? m_config->agc()->encodeAnswer() : QByteArray();
    case kd::LogicConfiguration::AnswerCode:
        return o == kd::LogicConfiguration::Block ? m_config->logic()->encodeAnswer() : QByteArray();
    case kd::OutputConfiguration::AnswerCode:
        return o == 1 ? m_config->outputs()->encodeAnswer() : QByteArray();
    case kd::ServerConfiguration::AnswerCode:
        return o == 1 ? m_config->servers()->encodeAnswer() : QByteArray();
    case kd::SystemConfiguration::AnswerCode:
        return o == 1 ? m_config->system()->encodeAnswer() : QByteArray();
    default:
        return QByteArray();
    }
}

quint8 VirtualTracker::writeCode(const QString &sectionKey) {
    const QPair<const char *, quint8> codes[] = {{kd::keys::Navigation, kd::NavigationConfiguration::Code},
                                                 {kd::keys::Gsm, kd::GSMConfiguration::Code},
                                                 {kd::keys::Fuel, kd::FuelConfiguration::Code},
                                                 {kd::keys::Agc, kd::AgcConfiguration::Code},
                                                 {kd::keys::Logic, kd::LogicConfiguration::Code},
                                                 {kd::keys::Output, kd::OutputConfiguration::Code},
                                                 {kd::keys::Server, kd::ServerConfiguration::Code},
                                                 {kd::keys::System, kd::SystemConfiguration::Code}};
    for (const auto &c : codes) {
        if (sectionKey == QLatin1String(c.first))
            return c.second;
    }
    return 0;
}

void VirtualTracker::setIgnoredWrites(const QStringList &sectionKeys) {
    m_ignoredWrites.clear();
    for (const QString &key : sectionKeys)
        m_ignoredWrites << writeCode(key);
}

void VirtualTracker::setSilentReads(const QStringList &sectionKeys) {
    m_silentReads.clear();
    for (const QString &key : sectionKeys)
        m_silentReads << quint8(writeCode(key) | code::ReadBit);
}

bool VirtualTracker::writeSection(const QByteArray &payload) {
    if (m_ignoredWrites.contains(quint8(payload.at(Frame::CodeOffset))))
        return true;
    bool ok = false;
    switch (quint8(payload.at(Frame::CodeOffset))) {
    case kd::NavigationConfiguration::Code:
        ok = m_config->navigation()->decodeWrite(payload);
        break;
    case kd::GSMConfiguration::Code:
        ok = m_config->gsm()->decodeWrite(payload);
        break;
    case kd::FuelConfiguration::Code:
        ok = m_config->fuel()->decodeWrite(payload);
        break;
    case kd::AgcConfiguration::Code:
        ok = m_config->agc()->decodeWrite(payload);
        break;
    case kd::LogicConfiguration::Code:
        ok = m_config->logic()->decodeWrite(payload);
        break;
    case kd::OutputConfiguration::Code:
        // One output: 0E 01 number 00 state 00; the device has only so many.
        ok = kd::le::u8(payload, Frame::ParameterOffset) < m_outputCount &&
             m_config->outputs()->decodeWrite(payload);
        trimOutputs();
        break;
    case kd::ServerConfiguration::Code:
        ok = m_config->servers()->decodeWrite(payload);
        break;
    case kd::SystemConfiguration::Code:
        ok = m_config->system()->decodeWrite(payload);
        break;
    }
    if (ok)
        refreshModelSetup();
    return ok;
}

void VirtualTracker::trimOutputs() {
    OutputConfigurationItem *out = m_config->outputs()->value();
    QVector<quint8> states = out->states();
    states.resize(m_outputCount);
    out->setStates(states);
    out->setNumberOfOutputs(quint8(m_outputCount));
}

QByteArray VirtualTracker::handleCommand(const QByteArray &payload) {
    const quint8 c = kd::le::u8(payload, Frame::CodeOffset);
    const quint8 o = kd::le::u8(payload, Frame::OperationOffset);
    const quint8 p = kd::le::u8(payload, Frame::ParameterOffset);

    if (c == code::Login) {
        switch (o) {
        case op::Login: {
            if (!kd::le::has(payload, Frame::HeadSize, 4))
                return statusPayload(c, o, p, ExecuteError);
            const quint32 given = kd::le::u32(payload, Frame::HeadSize);
            if (m_password && given != *m_password) {
                qCInfo(lcDevsim) << "login with a wrong password";
                return statusPayload(c, o, p, WrongPassword);
            }
            m_loggedIn = true;
            return statusPayload(c, o, p, Done);
        }
        case op::FirmwareUpdate: {
            // The loader takes over the line right after this answer.
            QByteArray answer(Frame::HeadSize + 2, '\0');
            answer[Frame::CodeOffset] = char(c);
            answer[Frame::OperationOffset] = char(o);
            kd::le::put16(answer, Frame::StatusOffset, Done);
            return answer;
        }
        case op::ResetOrClear: {
            if (!kd::le::has(payload, Frame::HeadSize, 2))
                return statusPayload(c, o, p, ExecuteError);
            const quint16 what = kd::le::u16(payload, Frame::HeadSize);
            if (what == ResetSettingsArgument) {
                qCInfo(lcDevsim) << "settings reset to the factory defaults";
                restoreDefaults();
                emit stateChanged();
                return statusPayload(c, o, p, ResetNeedsPowerCycle);
            }
            if (what == ClearMemoryArgument) {
                qCInfo(lcDevsim) << "memory cleared";
                m_model.setElapsed(m_clock());
                m_model.clearMemory();
                return statusPayload(c, o, p, Done);
            }
            return statusPayload(c, o, p, NotSupported);
        }
        default:
            return statusPayload(c, o, p, NotSupported);
        }
    }
    if (c == kd::OutputConfiguration::SetOutputsCode && o == kd::OutputConfiguration::SetOutputsOperation) {
        if (!m_config->outputs()->decodeWrite(payload))
            return statusPayload(c, o, p, ExecuteError);
        trimOutputs();
        emit stateChanged();
        return statusPayload(c, o, p, Done);
    }
    if (c == kd::OutputConfiguration::Code) {
        // Output parameters travel as a command: code op 00 00 outNum high low replay.
        if (!m_config->outputs()->decodeParameters(payload))
            return statusPayload(c, o, p, ExecuteError);
        emit stateChanged();
        return statusPayload(c, o, p, Done);
    }
    if (c == code::Telemetry) {
        const int kind = o & 0x7F;
        const QByteArray data = modelNow().telemetry(kind);
        if (data.isNull())
            return statusPayload(c, o, p, NotSupported);
        QByteArray answer(Frame::HeadSize, '\0');
        answer[Frame::CodeOffset] = char(code::Telemetry);
        answer[Frame::OperationOffset] = char(kind);
        return answer + data;
    }
    return statusPayload(c, o, p, NotSupported);
}

QJsonObject VirtualTracker::saveState() const {
    QJsonObject root;
    m_config->write(root);

    QJsonObject device;
    device.insert(QStringLiteral("IMEI"), m_config->deviceInfo()->IMEI());
    device.insert(QStringLiteral("faultSpeed"), m_config->navigation()->value()->faultSpeed());
    QJsonArray roaming;
    for (int i = 0; i < m_config->gsm()->count(); ++i) {
        const GSMConfigurationItem *sim = m_config->gsm()->element(i);
        roaming.append(QJsonObject{{QStringLiteral("forbidden"), sim->forbidden()},
                                   {QStringLiteral("timetableHi"), hex64(sim->timetableHi())},
                                   {QStringLiteral("timetableLow"), hex64(sim->timetableLow())}});
    }
    device.insert(QStringLiteral("roaming"), roaming);
    QJsonArray states;
    for (quint8 s : m_config->outputs()->value()->states())
        states.append(s);
    device.insert(QStringLiteral("outputStates"), states);
    if (m_password)
        device.insert(QStringLiteral("password"), double(*m_password));
    root.insert(QStringLiteral("device"), device);
    return root;
}

void VirtualTracker::loadState(const QJsonObject &root) {
    m_config->read(root);
    const QJsonObject device = root.value(QStringLiteral("device")).toObject();
    if (device.contains(QStringLiteral("IMEI")))
        m_config->deviceInfo()->setIMEI(device.value(QStringLiteral("IMEI")).toString());
    if (device.contains(QStringLiteral("faultSpeed")))
        m_config->navigation()->value()->setFaultSpeed(
            quint8(device.value(QStringLiteral("faultSpeed")).toInt()));
    const QJsonArray roaming = device.value(QStringLiteral("roaming")).toArray();
    for (int i = 0; i < roaming.size() && i < m_config->gsm()->count(); ++i) {
        const QJsonObject r = roaming.at(i).toObject();
        GSMConfigurationItem *sim = m_config->gsm()->element(i);
        sim->setForbidden(quint8(r.value(QStringLiteral("forbidden")).toInt()));
        sim->setTimetableHi(parse64(r.value(QStringLiteral("timetableHi"))));
        sim->setTimetableLow(parse64(r.value(QStringLiteral("timetableLow"))));
    }
    if (device.contains(QStringLiteral("outputStates"))) {
        QVector<quint8> states;
        for (const QJsonValue &v : device.value(QStringLiteral("outputStates")).toArray())
            states.append(quint8(v.toInt()));
        if (!states.isEmpty())
            m_outputCount = states.size();
        m_config->outputs()->value()->setStates(states);
    }
    trimOutputs();
    if (device.contains(QStringLiteral("password")))
        setPassword(quint32(device.value(QStringLiteral("password")).toDouble()));
    refreshModelSetup();
}
