#pragma once

#include <QString>
#include <QStringList>

// Names of the ten configuration sections: the keys of the container and of the configuration file,
// and their human-readable titles. "mainDviceInfo" lacks its e on purpose: saved files carry it so.
namespace kd {

namespace keys {
inline constexpr char MainDeviceInfo[] = "mainDviceInfo";
inline constexpr char Gsm[] = "GSMConfiguration";
inline constexpr char Agc[] = "agcConfiguration";
inline constexpr char Navigation[] = "NavConfiguration";
inline constexpr char Logic[] = "LogicConfiguration";
inline constexpr char Fuel[] = "FuelConfiguration";
inline constexpr char Server[] = "ServerConfiguration";
inline constexpr char System[] = "SystemConfiguration";
inline constexpr char Output[] = "OutConfiguration";
inline constexpr char ControlInfo[] = "ControlInfo";
} // namespace keys

struct SectionName {
    const char *key;
    const char *displayName;
};

// The ten sections in table order (not the creation order of VantorConfiguration).
inline constexpr SectionName kSectionNames[] = {
    {keys::MainDeviceInfo, "Main Device Info"}, {keys::Gsm, "GSM configuration"},
    {keys::Agc, "ADC configuration"},           {keys::Navigation, "Nav configuration"},
    {keys::Logic, "Logic configuration"},       {keys::Fuel, "Fuel configuration"},
    {keys::Server, "Server configuration"},     {keys::System, "System configuration"},
    {keys::Output, "Outputs configuration"},    {keys::ControlInfo, "Device current state"},
};

QStringList sectionKeys();
QString sectionDisplayName(const QString &key); // empty for an unknown key

} // namespace kd
