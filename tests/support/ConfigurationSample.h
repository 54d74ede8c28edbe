#pragma once

#include "Devices/AgcConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/VantorConfiguration.h"

// A configuration with a distinct value in every field, shared by the file tests.
inline void fillSample(VantorConfiguration &cfg) {
    kd::DeviceInfoConfiguration *d = cfg.deviceInfo();
    d->setName(QStringLiteral("Vantor micro"));
    d->setVersion(918);
    d->setDeviceMod(2);
    d->setDeviceGroup(1);
    d->setDeviceType(3);
    d->setSerialNumber(100234);
    d->setIMEI(QStringLiteral("863071014478127"));

    SystemConfigurationItem *sys = cfg.system()->value();
    sys->setGsens(7);
    sys->setLowSpeed(1);
    sys->setOutCtrl(1);
    sys->setParkingMin(15);
    sys->setPwrMode(2);

    NavigationConfigurationItem *nav = cfg.navigation()->value();
    nav->setDeltaCourse(10);
    nav->setDeltaSpeed(20);
    nav->setDriveTimeout(30);
    nav->setDeltaDistance(40);
    nav->setFaultSpeed(150);
    nav->setFreezeNav(1);
    nav->setPwrNav(3);

    const char *apns[] = {"internet.mts.ru", "internet.beeline.ru"};
    for (int i = 0; i < 2; ++i) {
        GSMConfigurationItem *g = cfg.gsm()->element(i);
        g->setApn(QString::fromLatin1(apns[i]));
        g->setApnUser(QStringLiteral("user%1").arg(i + 1));
        g->setApnPassword(QStringLiteral("pass%1").arg(i + 1));
        g->setForbidden(1);
        g->setTimetableHi(quint64(1000 + i));
        g->setTimetableLow(quint64(2000 + i));
    }

    ServerConfigurationItem *srv = cfg.servers()->value();
    srv->setEnable(1);
    srv->setServer(QStringLiteral("gps.tavrel.ru"));
    srv->setPort(21070);
    srv->setProto(1);

    for (int i = 0; i < 3; ++i) {
        AgcConfigurationItem *a = cfg.agc()->element(i);
        a->setEnabled(i == 1 ? 0 : 1);
        a->setThresholdLow(quint16(1000 + i));
        a->setThresholdHigh(quint16(2000 + i));
        a->setSensitivity(quint16(10 + i));
        a->setAveraging(quint16(5 + i));
    }

    cfg.logic()->element(0)->setFunc(1);
    cfg.logic()->element(1)->setFunc(4);

    for (int i = 0; i < 8; ++i) {
        FuelConfigurationItem *f = cfg.fuel()->element(i);
        f->setAddr(quint8(i + 1));
        f->setTank_num(quint8(i / 2));
        f->setAveraging(quint16(100 + i)); // elements 5..7 only live in the file
    }

    OutputConfigurationItem *out = cfg.outputs()->value();
    out->setHighCondition(100);
    out->setLowCondition(10);
    out->setNumberOfOutputs(4);
    out->setOutNum(2);
    out->setReplayCounter(3);
}
