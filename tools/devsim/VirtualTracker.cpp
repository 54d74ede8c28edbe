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
#include "Devices/SectionTable.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/TelemetryRecords.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Frame.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <memory>

using proto::Frame;

namespace {

namespace code = proto::code;
namespace op = proto::op;
using Status = UNPParcer::Status;
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
    p[Frame::OperationOffset] = char(operation | op::StatusBit);
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
        return status(proto::ConfigPacketType, Status::UnknownPacketType);
    if (m_blocked)
        return status(type, Status::Blocked);
    const bool isLogin = type == proto::CommandPacketType && c == code::Mode && o == op::Login;
    if (m_password && !m_loggedIn && !isLogin)
        return status(type, Status::AuthorisationNeeded);

    if (type == proto::ConfigPacketType && m_silentReads.contains(c))
        return {};
    const QByteArray answer =
        type == proto::ConfigPacketType ? handleConfig(payload) : handleCommand(payload);
    QList<QByteArray> frames{Frame::build(type, answer)};
    if (type == proto::CommandPacketType && c == code::Mode && o == op::FirmwareUpdate)
        emit firmwareUpdateRequested();
    return frames;
}

QByteArray VirtualTracker::handleConfig(const QByteArray &payload) {
    const quint8 c = kd::le::u8(payload, Frame::CodeOffset);
    const quint8 o = kd::le::u8(payload, Frame::OperationOffset);
    const quint8 p = kd::le::u8(payload, Frame::ParameterOffset);
    if (payload.size() < Frame::HeadSize)
        return statusPayload(c, o, p, Status::ExecutionError);

    if (c & code::ReadBit) {
        const kd::Section *section = kd::sectionByAnswerCode(c);
        const QByteArray answer = section ? section->encodeAnswer(m_config, o) : QByteArray();
        return answer.isEmpty() ? statusPayload(c, o, p, Status::NotSupported) : answer;
    }
    if (c == code::PasswordChange) {
        if (o != 1 || !kd::le::has(payload, Frame::HeadSize, 4))
            return statusPayload(c, o, p, Status::ExecutionError);
        m_password = kd::le::u32(payload, Frame::HeadSize);
        m_loggedIn = true; // the one who set it knows it
        qCInfo(lcDevsim) << "password changed";
        emit stateChanged();
        return statusPayload(c, o, p, Status::Executed);
    }
    if (c == code::Code9)
        return statusPayload(c, o, p, Status::Executed);
    const kd::Section *section = kd::sectionByRequestCode(c);
    if (!section || section->code != c || !section->decodeWrite)
        return statusPayload(c, o, p, Status::NotSupported);
    if (!writeSection(*section, payload))
        return statusPayload(c, o, p, Status::ExecutionError);
    emit stateChanged();
    return statusPayload(c, o, p, Status::Executed);
}

quint8 VirtualTracker::writeCode(const QString &sectionKey) {
    const kd::Section *section = kd::sectionByKey(sectionKey);
    return section && section->decodeWrite ? section->code : 0;
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

bool VirtualTracker::writeSection(const kd::Section &section, const QByteArray &payload) {
    if (m_ignoredWrites.contains(section.code))
        return true;
    bool ok = false;
    if (qstrcmp(section.key, kd::keys::Output) == 0) {
        // One output: 0E 01 number 00 state 00; the device has only so many.
        ok = kd::le::u8(payload, Frame::ParameterOffset) < m_outputCount &&
             section.decodeWrite(m_config, payload);
        trimOutputs();
    } else {
        ok = section.decodeWrite(m_config, payload);
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

    if (c == code::Mode) {
        switch (o) {
        case op::Login: {
            if (!kd::le::has(payload, Frame::HeadSize, 4))
                return statusPayload(c, o, p, Status::ExecutionError);
            const quint32 given = kd::le::u32(payload, Frame::HeadSize);
            if (m_password && given != *m_password) {
                qCInfo(lcDevsim) << "login with a wrong password";
                return statusPayload(c, o, p, Status::WrongPassword);
            }
            m_loggedIn = true;
            return statusPayload(c, o, p, Status::Executed);
        }
        case op::FirmwareUpdate: {
            // The loader takes over the line right after this answer.
            QByteArray answer(Frame::HeadSize + 2, '\0');
            answer[Frame::CodeOffset] = char(c);
            answer[Frame::OperationOffset] = char(o);
            kd::le::put16(answer, Frame::StatusOffset, Status::Executed);
            return answer;
        }
        case op::ResetOrClear: {
            if (!kd::le::has(payload, Frame::HeadSize, 2))
                return statusPayload(c, o, p, Status::ExecutionError);
            const quint16 what = kd::le::u16(payload, Frame::HeadSize);
            if (what == op::ResetSettingsArgument) {
                qCInfo(lcDevsim) << "settings reset to the factory defaults";
                restoreDefaults();
                emit stateChanged();
                return statusPayload(c, o, p, Status::PowerCycleNeeded);
            }
            if (what == op::ClearMemoryArgument) {
                qCInfo(lcDevsim) << "memory cleared";
                m_model.setElapsed(m_clock());
                m_model.clearMemory();
                return statusPayload(c, o, p, Status::Executed);
            }
            return statusPayload(c, o, p, Status::NotSupported);
        }
        default:
            return statusPayload(c, o, p, Status::NotSupported);
        }
    }
    if (c == code::OutputControl && o == op::SetOutputs) {
        if (!m_config->outputs()->decodeWrite(payload))
            return statusPayload(c, o, p, Status::ExecutionError);
        trimOutputs();
        emit stateChanged();
        return statusPayload(c, o, p, Status::Executed);
    }
    if (c == kd::OutputConfiguration::Code) {
        // Output parameters travel as a command: code op 00 00 outNum high low replay.
        if (!m_config->outputs()->decodeParameters(payload))
            return statusPayload(c, o, p, Status::ExecutionError);
        emit stateChanged();
        return statusPayload(c, o, p, Status::Executed);
    }
    if (c == code::Telemetry) {
        const int kind = o & ~op::StatusBit;
        const QByteArray data = modelNow().telemetry(kind);
        if (data.isNull())
            return statusPayload(c, o, p, Status::NotSupported);
        QByteArray answer(Frame::HeadSize, '\0');
        answer[Frame::CodeOffset] = char(code::Telemetry);
        answer[Frame::OperationOffset] = char(kind);
        return answer + data;
    }
    return statusPayload(c, o, p, Status::NotSupported);
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
