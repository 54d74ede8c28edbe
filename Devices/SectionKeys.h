#pragma once

#include <QString>
#include <QStringList>

// Keys of the ten configuration sections, in the container and in the configuration file (the rest of
// what a section is lives in Devices/SectionTable.h). "mainDviceInfo" lacks its e on purpose: saved
// files carry it so.
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

// The ten keys in table order (not the creation order of VantorConfiguration).
QStringList sectionKeys();

} // namespace kd
