#pragma once

#include "Devices/AgcConfiguration.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/SectionTable.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/configuration.h"

// A container holding all ten sections as the section table makes them; the element counts of the
// multi-element sections are chosen by the test so that per-element writes can be counted.
inline kd::Configuration *makeConfiguration(QObject *parent, int analog = 3, int logic = 2, int servers = 1) {
    auto *cfg = new kd::Configuration(parent);
    const QHash<QString, int> counts{
        {kd::keys::Agc, analog}, {kd::keys::Logic, logic}, {kd::keys::Server, servers}};
    for (const kd::Section &s : kd::sections())
        cfg->registerItem(QLatin1String(s.key),
                          s.create(counts.value(QLatin1String(s.key), s.elements), cfg));
    return cfg;
}

template <class S>
S *section(kd::Configuration *cfg, const char *key) {
    return kd::typed_item<S>(cfg, QLatin1String(key));
}
