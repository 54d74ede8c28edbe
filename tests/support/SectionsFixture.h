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
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/configuration.h"

// A container holding all ten sections; the element counts of the multi-element sections are chosen by
// the test so that per-element writes can be counted.
inline kd::Configuration *makeConfiguration(QObject *parent, int analog = 3, int logic = 2, int servers = 1) {
    auto *cfg = new kd::Configuration(parent);
    const auto add = [cfg](const char *key, kd::IConfigurationItem *item) {
        cfg->registerItem(QLatin1String(key), item);
    };
    add(kd::keys::MainDeviceInfo, new kd::DeviceInfoConfiguration(1, cfg));
    add(kd::keys::Agc, new kd::AgcConfiguration(analog, cfg));
    add(kd::keys::Navigation, new kd::NavigationConfiguration(1, cfg));
    add(kd::keys::Logic, new kd::LogicConfiguration(logic, cfg));
    add(kd::keys::Gsm, new kd::GSMConfiguration(2, cfg));
    add(kd::keys::Fuel, new kd::FuelConfiguration(8, cfg));
    add(kd::keys::Server, new kd::ServerConfiguration(servers, cfg));
    add(kd::keys::System, new kd::SystemConfiguration(1, cfg));
    add(kd::keys::Output, new kd::OutputConfiguration(1, cfg));
    add(kd::keys::ControlInfo, new kd::ControlInfoConfiguration(1, cfg));
    return cfg;
}

template <class S>
S *section(kd::Configuration *cfg, const char *key) {
    return kd::typed_item<S>(cfg, QLatin1String(key));
}
