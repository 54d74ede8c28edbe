#pragma once

#include <QString>
#include <QVector>

namespace kd {
class ControlInfoConfiguration;
}

// The telemetry values that change over time and are worth a line on a chart or a column in a
// recording: supply and backup voltage, satellites per receiver, GSM signal per SIM, fuel per sensor,
// analog inputs and speed. The keys are stable (recordings are read back by them); the titles and units
// are the ones the "Прибор" page shows.
namespace TelemetrySeries {

// Which chart a series is drawn on: series of one group share a unit and an axis.
enum class Group { Voltage, Satellites, Signal, Fuel, Speed };

struct Column {
    QString key;   // "supply_v", "satellites_1", ...
    QString title; // "Питание"
    QString label; // short name within its group on a chart ("Приемник 1")
    QString unit;  // "В"; empty for counts and sensor units
    Group group;
    int decimals;
};

const QVector<Column> &columns();
// "Питание, В", or the bare title without a unit.
QString titleWithUnit(const Column &column);

// One value per column, in columns() order; NaN where the block has not arrived or the device reports
// no value (a fuel sensor off line, an unknown signal level).
QVector<double> values(const kd::ControlInfoConfiguration &state);

} // namespace TelemetrySeries
