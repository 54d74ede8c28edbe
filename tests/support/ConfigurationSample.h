#pragma once

#include "Devices/AgcConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "tests/support/SectionFields.h"

// A configuration with a distinct value in every field, shared by the file tests. The sections' values
// are in the form fieldsOf() gives; the name holds a blank, so it is set on its own.
inline void fillSample(VantorConfiguration &cfg) {
    const std::pair<const char *, const char *> sections[] = {
        {kd::keys::MainDeviceInfo, "- 918 1 3 2 100234 863071014478127"},
        {kd::keys::System, "15 2 7 1 1"},
        {kd::keys::Navigation, "10 20 30 40 1 3 150"},
        {kd::keys::Gsm, "internet.mts.ru user1 pass1 1 00000000000003e800000000000007d0 / "
                        "internet.beeline.ru user2 pass2 1 00000000000003e900000000000007d1"},
        {kd::keys::Server, "1 gps.tavrel.ru 21070 1"},
        {kd::keys::Agc, "1 1000 2000 10 5 / 0 1001 2001 11 6 / 1 1002 2002 12 7"},
        {kd::keys::Logic, "1 / 4"},
        {kd::keys::Fuel, "1 0 100 / 2 0 101 / 3 1 102 / 4 1 103 / 5 2 104 / 6 2 / 7 3 / 8 3"},
    };
    for (const auto &s : sections)
        setFields(cfg, QLatin1String(s.first), QLatin1String(s.second));
    cfg.deviceInfo()->setName(QStringLiteral("Vantor micro"));
    for (int i = 5; i < 8; ++i)
        cfg.fuel()->element(i)->setAveraging(quint16(100 + i)); // only the file keeps these
    OutputConfigurationItem *out = cfg.outputs()->value();
    out->setHighCondition(100);
    out->setLowCondition(10);
    out->setNumberOfOutputs(4);
    out->setOutNum(2);
    out->setReplayCounter(3);
}
