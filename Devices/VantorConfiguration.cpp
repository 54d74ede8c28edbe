#include "Devices/VantorConfiguration.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionTable.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"

#include <QJsonArray>

using namespace kd;

namespace {
// Sections whose filled flags make a full read complete. "SystemConfiguration" keeps a flag but is
// deliberately left out of the test.
const char *const kCompletionKeys[] = {keys::MainDeviceInfo, keys::Agc,   keys::Navigation,
                                       keys::Logic,          keys::Gsm,   keys::Fuel,
                                       keys::Server,         keys::Output};

// Missing values, non-numbers and numbers beyond 64 bits read as 0 (JSON numbers are doubles, and
// converting an out-of-range double to an integer is undefined).
qint64 number(const QJsonValue &v) {
    if (!v.isDouble())
        return 0;
    const double d = v.toDouble();
    constexpr double Limit = 9223372036854775808.0; // 2^63
    return (d > -Limit && d < Limit) ? qint64(d) : 0;
}

quint8 byteOf(const QJsonValue &v) {
    return quint8(number(v) & 0xFF);
}

quint16 wordOf(const QJsonValue &v) {
    return quint16(number(v) & 0xFFFF);
}

quint32 dwordOf(const QJsonValue &v) {
    return quint32(number(v) & 0xFFFFFFFF);
}

QJsonObject objectAt(const QJsonArray &a, int i) {
    return a.at(i).toObject(); // out of range: an empty object
}

} // namespace

VantorConfiguration::VantorConfiguration(QObject *parent)
    : kd::Configuration(parent) {
    const char *const creationOrder[] = {
        keys::MainDeviceInfo, keys::Agc,    keys::Navigation, keys::Logic,  keys::Gsm,
        keys::Fuel,           keys::Server, keys::System,     keys::Output, keys::ControlInfo};
    for (const char *k : creationOrder) {
        const Section *s = sectionByKey(QLatin1String(k));
        registerItem(QString::fromLatin1(k), s->create(s->elements, this));
    }

    const char *const flagged[] = {keys::MainDeviceInfo, keys::Agc,    keys::Navigation,
                                   keys::Logic,          keys::Gsm,    keys::Fuel,
                                   keys::Server,         keys::System, keys::Output};
    for (const char *k : flagged) {
        const QString key = QString::fromLatin1(k);
        m_filled.insert(key, false);
        connect(item(key), &IConfigurationItem::DeviceInfoFilled, this, [this, key] { markFilled(key); });
    }
}

void VantorConfiguration::markFilled(const QString &key) {
    m_filled[key] = true;
    checkComplete();
}

void VantorConfiguration::checkComplete() {
    for (const char *k : kCompletionKeys) {
        if (!m_filled.value(QString::fromLatin1(k)))
            return;
    }
    emit configComplete();
}

bool VantorConfiguration::isFilled(const QString &key) const {
    return m_filled.value(key, false);
}

void VantorConfiguration::resetFilled(bool includeDeviceInfo) {
    for (auto it = m_filled.begin(); it != m_filled.end(); ++it) {
        if (includeDeviceInfo || it.key() != QLatin1String(keys::MainDeviceInfo))
            it.value() = false;
    }
}

DeviceInfoConfiguration *VantorConfiguration::deviceInfo() const {
    return typed_item<DeviceInfoConfiguration>(this, QString::fromLatin1(keys::MainDeviceInfo));
}

AgcConfiguration *VantorConfiguration::agc() const {
    return typed_item<AgcConfiguration>(this, QString::fromLatin1(keys::Agc));
}

NavigationConfiguration *VantorConfiguration::navigation() const {
    return typed_item<NavigationConfiguration>(this, QString::fromLatin1(keys::Navigation));
}

LogicConfiguration *VantorConfiguration::logic() const {
    return typed_item<LogicConfiguration>(this, QString::fromLatin1(keys::Logic));
}

GSMConfiguration *VantorConfiguration::gsm() const {
    return typed_item<GSMConfiguration>(this, QString::fromLatin1(keys::Gsm));
}

FuelConfiguration *VantorConfiguration::fuel() const {
    return typed_item<FuelConfiguration>(this, QString::fromLatin1(keys::Fuel));
}

ServerConfiguration *VantorConfiguration::servers() const {
    return typed_item<ServerConfiguration>(this, QString::fromLatin1(keys::Server));
}

SystemConfiguration *VantorConfiguration::system() const {
    return typed_item<SystemConfiguration>(this, QString::fromLatin1(keys::System));
}

OutputConfiguration *VantorConfiguration::outputs() const {
    return typed_item<OutputConfiguration>(this, QString::fromLatin1(keys::Output));
}

ControlInfoConfiguration *VantorConfiguration::controlInfo() const {
    return typed_item<ControlInfoConfiguration>(this, QString::fromLatin1(keys::ControlInfo));
}

void VantorConfiguration::write(QJsonObject &root) const {
    if (const DeviceInfoConfiguration *d = deviceInfo()) {
        root.insert(QStringLiteral("name"), d->name());
        root.insert(QStringLiteral("softver"), qint64(d->Version()));
        root.insert(QStringLiteral("hardver.devmod"), qint64(d->DeviceMod()));
        root.insert(QStringLiteral("hardver.devgroup"), qint64(d->DeviceGroup()));
        root.insert(QStringLiteral("hardver.devtype"), qint64(d->DeviceType()));
        root.insert(QStringLiteral("hardver.serial"), qint64(d->SerialNumber()));
        root.insert(QStringLiteral("IMEI"), d->IMEI());
    }

    if (const SystemConfiguration *s = system()) {
        const SystemConfigurationItem *e = s->value();
        QJsonObject o;
        o.insert(QStringLiteral("gsens"), e->gsens());
        o.insert(QStringLiteral("lowSpeed"), e->lowSpeed());
        o.insert(QStringLiteral("OutCtrl"), e->OutCtrl());
        o.insert(QStringLiteral("parkingMin"), e->parkingMin());
        o.insert(QStringLiteral("pwrMode"), e->pwrMode());
        root.insert(QStringLiteral("SystemParameters"), o);
    }

    if (const NavigationConfiguration *s = navigation()) {
        const NavigationConfigurationItem *e = s->value();
        QJsonObject o;
        o.insert(QStringLiteral("deltaCourse"), e->deltaCourse());
        o.insert(QStringLiteral("deltaSpeed"), e->deltaSpeed());
        o.insert(QStringLiteral("driveTimeout"), e->driveTimeout());
        o.insert(QStringLiteral("deltaDistance"), e->deltaDistance());
        o.insert(QStringLiteral("faultSpeed"), e->faultSpeed());
        o.insert(QStringLiteral("freezeNav"), e->freezeNav());
        o.insert(QStringLiteral("pwrNav"), e->pwrNav());
        root.insert(QStringLiteral("navigation"), o);
    }

    if (const GSMConfiguration *s = gsm()) {
        QJsonArray a;
        for (int i = 0; i < s->count(); ++i) {
            const GSMConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            const QString n = QString::number(i + 1);
            QJsonObject gprs;
            gprs.insert(QStringLiteral("apn"), e->apn());
            gprs.insert(QStringLiteral("apn_name"), e->apnUser());
            gprs.insert(QStringLiteral("apn_password"), e->apnPassword());
            QJsonObject roaming;
            roaming.insert(QStringLiteral("forbidden"), e->forbidden());
            // Both words go under the same key, so the file keeps only the low word. Files in the
            // field look like this; the reader expects it.
            roaming.insert(QStringLiteral("timetableHi"), qint64(e->timetableHi()));
            roaming.insert(QStringLiteral("timetableHi"), qint64(e->timetableLow()));
            QJsonObject o;
            o.insert(QStringLiteral("gprs ") + n, gprs);
            o.insert(QStringLiteral("roaming ") + n, roaming);
            a.append(o);
        }
        root.insert(QStringLiteral("gsm"), a);
    }

    if (const ServerConfiguration *s = servers()) {
        QJsonArray a;
        for (int i = 0; i < s->count(); ++i) {
            const ServerConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            QJsonObject o;
            o.insert(QStringLiteral("enable"), e->enable());
            o.insert(QStringLiteral("port"), qint64(e->port()));
            o.insert(QStringLiteral("proto"), e->proto());
            o.insert(QStringLiteral("server"), e->server());
            a.append(o);
        }
        root.insert(QStringLiteral("Server"), a);
    }

    if (const AgcConfiguration *s = agc()) {
        QJsonArray a;
        for (int i = 0; i < s->count(); ++i) {
            const AgcConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            QJsonObject o;
            o.insert(QStringLiteral("id"), i);
            o.insert(QStringLiteral("averaging"), e->averaging());
            o.insert(QStringLiteral("high_level_threshold"), e->thresholdHigh());
            o.insert(QStringLiteral("low_level_threshold"), e->thresholdLow());
            o.insert(QStringLiteral("sensitivity"), e->sensitivity());
            o.insert(QStringLiteral("enabled"), e->enabled());
            a.append(o);
        }
        root.insert(QStringLiteral("adcs"), a);
    }

    if (const LogicConfiguration *s = logic()) {
        QJsonArray a;
        for (int i = 0; i < s->count(); ++i) {
            const LogicConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            QJsonObject o;
            o.insert(QStringLiteral("id"), i);
            o.insert(QStringLiteral("func"), e->func());
            a.append(o);
        }
        root.insert(QStringLiteral("dinputs"), a);
    }

    if (const FuelConfiguration *s = fuel()) {
        QJsonArray sensors;
        QJsonArray tanks;
        for (int i = 0; i < s->count(); ++i) {
            const FuelConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            QJsonObject sensor;
            sensor.insert(QStringLiteral("addr"), e->addr());
            sensor.insert(QStringLiteral("tank_num"), e->tank_num());
            sensors.append(sensor);
            QJsonObject tank;
            tank.insert(QStringLiteral("averaging"), e->averaging());
            tanks.append(tank);
        }
        root.insert(QStringLiteral("fuel_sensors"), sensors);
        root.insert(QStringLiteral("fuel_tanks"), tanks);
    }

    if (const OutputConfiguration *s = outputs()) {
        QJsonArray a;
        for (int i = 0; i < s->count(); ++i) {
            const OutputConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            QJsonObject o;
            o.insert(QStringLiteral("highCondition"), e->highCondition());
            o.insert(QStringLiteral("lowCondition"), e->lowCondition());
            o.insert(QStringLiteral("numberOfOutputs"), e->numberOfOutputs());
            o.insert(QStringLiteral("outNum"), e->outNum());
            o.insert(QStringLiteral("replayCounter"), e->replayCounter());
            a.append(o);
        }
        root.insert(QStringLiteral("out_parameters"), a);
    }
}

void VantorConfiguration::read(const QJsonObject &root) {
    // "IMEI" belongs to the device, not to the settings: it is written for the reader's information
    // and never read back.
    if (DeviceInfoConfiguration *d = deviceInfo()) {
        d->setName(root.value(QStringLiteral("name")).toString());
        d->setVersion(dwordOf(root.value(QStringLiteral("softver"))));
        d->setDeviceMod(dwordOf(root.value(QStringLiteral("hardver.devmod"))));
        d->setDeviceGroup(dwordOf(root.value(QStringLiteral("hardver.devgroup"))));
        d->setDeviceType(dwordOf(root.value(QStringLiteral("hardver.devtype"))));
        d->setSerialNumber(dwordOf(root.value(QStringLiteral("hardver.serial"))));
    }

    if (SystemConfiguration *s = system()) {
        SystemConfigurationItem *e = s->value();
        const QJsonObject o = root.value(QStringLiteral("SystemParameters")).toObject();
        e->setGsens(byteOf(o.value(QStringLiteral("gsens"))));
        e->setLowSpeed(byteOf(o.value(QStringLiteral("lowSpeed"))));
        e->setOutCtrl(byteOf(o.value(QStringLiteral("OutCtrl"))));
        e->setParkingMin(byteOf(o.value(QStringLiteral("parkingMin"))));
        e->setPwrMode(byteOf(o.value(QStringLiteral("pwrMode"))));
    }

    if (FuelConfiguration *s = fuel()) {
        const QJsonArray sensors = root.value(QStringLiteral("fuel_sensors")).toArray();
        const QJsonArray tanks = root.value(QStringLiteral("fuel_tanks")).toArray();
        for (int i = 0; i < s->count(); ++i) {
            FuelConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            const QJsonObject sensor = objectAt(sensors, i);
            e->setAddr(byteOf(sensor.value(QStringLiteral("addr"))));
            e->setTank_num(byteOf(sensor.value(QStringLiteral("tank_num"))));
            e->setAveraging(wordOf(objectAt(tanks, i).value(QStringLiteral("averaging"))));
        }
    }

    // "faultSpeed" is written but deliberately not read back: it keeps the value it had.
    if (NavigationConfiguration *s = navigation()) {
        NavigationConfigurationItem *e = s->value();
        const QJsonObject o = root.value(QStringLiteral("navigation")).toObject();
        e->setDeltaCourse(byteOf(o.value(QStringLiteral("deltaCourse"))));
        e->setDeltaSpeed(byteOf(o.value(QStringLiteral("deltaSpeed"))));
        e->setDriveTimeout(byteOf(o.value(QStringLiteral("driveTimeout"))));
        e->setDeltaDistance(byteOf(o.value(QStringLiteral("deltaDistance"))));
        e->setFreezeNav(byteOf(o.value(QStringLiteral("freezeNav"))));
        e->setPwrNav(byteOf(o.value(QStringLiteral("pwrNav"))));
    }

    if (GSMConfiguration *s = gsm()) {
        const QJsonArray a = root.value(QStringLiteral("gsm")).toArray();
        for (int i = 0; i < s->count(); ++i) {
            GSMConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            const QJsonObject o = objectAt(a, i);
            const QString n = QString::number(i + 1);
            const QJsonObject gprs = o.value(QStringLiteral("gprs ") + n).toObject();
            e->setApn(gprs.value(QStringLiteral("apn")).toString());
            e->setApnUser(gprs.value(QStringLiteral("apn_name")).toString());
            e->setApnPassword(gprs.value(QStringLiteral("apn_password")).toString());
            // Looked up without the blank the writer puts before the number: the roaming object this
            // program writes is not found and the roaming values read as zero. Kept on purpose.
            const QJsonObject roaming = o.value(QStringLiteral("roaming") + n).toObject();
            e->setForbidden(byteOf(roaming.value(QStringLiteral("forbidden"))));
            e->setTimetableHi(quint64(number(roaming.value(QStringLiteral("timetableHi")))));
            e->setTimetableLow(quint64(number(roaming.value(QStringLiteral("timetableLow")))));
        }
    }

    if (ServerConfiguration *s = servers()) {
        const QJsonArray a = root.value(QStringLiteral("Server")).toArray();
        for (int i = 0; i < s->count(); ++i) {
            ServerConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            const QJsonObject o = objectAt(a, i);
            e->setEnable(byteOf(o.value(QStringLiteral("enable"))));
            e->setPort(dwordOf(o.value(QStringLiteral("port"))));
            e->setProto(byteOf(o.value(QStringLiteral("proto"))));
            e->setServer(o.value(QStringLiteral("server")).toString());
        }
    }

    if (AgcConfiguration *s = agc()) {
        const QJsonArray a = root.value(QStringLiteral("adcs")).toArray();
        for (int i = 0; i < s->count(); ++i) {
            AgcConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            const QJsonObject o = objectAt(a, i);
            e->setAveraging(wordOf(o.value(QStringLiteral("averaging"))));
            e->setThresholdHigh(wordOf(o.value(QStringLiteral("high_level_threshold"))));
            e->setThresholdLow(wordOf(o.value(QStringLiteral("low_level_threshold"))));
            e->setSensitivity(wordOf(o.value(QStringLiteral("sensitivity"))));
            e->setEnabled(byteOf(o.value(QStringLiteral("enabled"))));
        }
    }

    if (LogicConfiguration *s = logic()) {
        const QJsonArray a = root.value(QStringLiteral("dinputs")).toArray();
        for (int i = 0; i < s->count(); ++i) {
            if (LogicConfigurationItem *e = s->element(i))
                e->setFunc(byteOf(objectAt(a, i).value(QStringLiteral("func"))));
        }
    }

    if (OutputConfiguration *s = outputs()) {
        const QJsonArray a = root.value(QStringLiteral("out_parameters")).toArray();
        for (int i = 0; i < s->count(); ++i) {
            OutputConfigurationItem *e = s->element(i);
            if (!e)
                continue;
            const QJsonObject o = objectAt(a, i);
            e->setHighCondition(byteOf(o.value(QStringLiteral("highCondition"))));
            e->setLowCondition(byteOf(o.value(QStringLiteral("lowCondition"))));
            e->setNumberOfOutputs(byteOf(o.value(QStringLiteral("numberOfOutputs"))));
            e->setOutNum(byteOf(o.value(QStringLiteral("outNum"))));
            e->setReplayCounter(byteOf(o.value(QStringLiteral("replayCounter"))));
        }
    }
}
