#pragma once

#include "Devices/configuration.h"

#include <QHash>

namespace kd {
class DeviceInfoConfiguration;
class AgcConfiguration;
class NavigationConfiguration;
class LogicConfiguration;
class GSMConfiguration;
class FuelConfiguration;
class ServerConfiguration;
class SystemConfiguration;
class OutputConfiguration;
class ControlInfoConfiguration;
} // namespace kd

// The whole device: the ten sections, created in the order "mainDviceInfo", "agcConfiguration",
// "NavConfiguration", "LogicConfiguration", "GSMConfiguration", "FuelConfiguration",
// "ServerConfiguration", "SystemConfiguration", "OutConfiguration", "ControlInfo", each a child.
class VantorConfiguration : public kd::Configuration {
    Q_OBJECT
public:
    explicit VantorConfiguration(QObject *parent = nullptr);

    // Configuration file form. Deliberate asymmetries of the file are kept: "IMEI" and "faultSpeed"
    // are written but not read, the roaming object is written as "roaming N" but looked up as
    // "roamingN", "timetableHi" holds the low word, and "ControlInfo" is not written.
    void write(QJsonObject &root) const override;
    void read(const QJsonObject &root) override;
    // Emits configComplete when the eight read sections have reported. "SystemConfiguration" has a
    // flag that is deliberately not tested; "ControlInfo" has none.
    void checkComplete() override;

    // The filled flags: set by each section's DeviceInfoFilled, never cleared by the container itself.
    bool isFilled(const QString &key) const;
    // Clears the flags before a new full read. "mainDviceInfo" is read once at identification, not by
    // a full read, so its flag is kept unless includeDeviceInfo is true.
    void resetFilled(bool includeDeviceInfo = false);

    // Typed shortcuts (null when the section's value object is gone).
    kd::DeviceInfoConfiguration *deviceInfo() const;
    kd::AgcConfiguration *agc() const;
    kd::NavigationConfiguration *navigation() const;
    kd::LogicConfiguration *logic() const;
    kd::GSMConfiguration *gsm() const;
    kd::FuelConfiguration *fuel() const;
    kd::ServerConfiguration *servers() const;
    kd::SystemConfiguration *system() const;
    kd::OutputConfiguration *outputs() const;
    kd::ControlInfoConfiguration *controlInfo() const;

private:
    void markFilled(const QString &key);

    QHash<QString, bool> m_filled;
};
