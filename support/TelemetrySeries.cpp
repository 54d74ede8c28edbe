#include "support/TelemetrySeries.h"

#include "Devices/ControlInfoConfiguration.h"

#include <cmath>

namespace TelemetrySeries {

namespace {

constexpr int Receivers = 3;
constexpr int Sims = 2;
constexpr int AnalogInputs = 3;
constexpr quint8 UnknownSignal = 99;

QVector<Column> buildColumns() {
    const QString volts = QStringLiteral("В");
    QVector<Column> c{
        {QStringLiteral("supply_v"), QStringLiteral("Питание"), QStringLiteral("Питание"), volts,
         Group::Voltage, 2},
        {QStringLiteral("battery_v"), QStringLiteral("Резервное питание"), QStringLiteral("Резерв"), volts,
         Group::Voltage, 2},
    };
    for (int i = 1; i <= AnalogInputs; ++i)
        c.append({QStringLiteral("analog_%1_v").arg(i), QStringLiteral("Аналоговый вход %1").arg(i),
                  QStringLiteral("Вход %1").arg(i), volts, Group::Voltage, 2});
    for (int i = 1; i <= Receivers; ++i)
        c.append({QStringLiteral("satellites_%1").arg(i), QStringLiteral("Спутники, приемник %1").arg(i),
                  QStringLiteral("Приемник %1").arg(i), QString(), Group::Satellites, 0});
    for (int i = 1; i <= Sims; ++i)
        c.append({QStringLiteral("gsm_signal_%1").arg(i), QStringLiteral("Сигнал GSM, SIM %1").arg(i),
                  QStringLiteral("SIM %1").arg(i), QString(), Group::Signal, 0});
    for (int i = 1; i <= kd::FuelSensorsRecord::Sensors; ++i)
        c.append({QStringLiteral("fuel_%1").arg(i), QStringLiteral("Топливо, датчик %1").arg(i),
                  QStringLiteral("Датчик %1").arg(i), QString(), Group::Fuel, 0});
    c.append({QStringLiteral("speed_kmh"), QStringLiteral("Скорость"), QStringLiteral("Скорость"),
              QStringLiteral("км/ч"), Group::Speed, 1});
    return c;
}

} // namespace

const QVector<Column> &columns() {
    static const QVector<Column> c = buildColumns();
    return c;
}

QString titleWithUnit(const Column &column) {
    return column.unit.isEmpty() ? column.title : column.title + QStringLiteral(", ") + column.unit;
}

QVector<double> values(const kd::ControlInfoConfiguration &state) {
    const double none = std::nan("");
    QVector<double> v;
    v.reserve(columns().size());
    const auto device = state.deviceState();
    v << (device ? device->supplyVoltage / 1000.0 : none)
      << (device ? device->batteryVoltage / 1000.0 : none);
    for (int i = 0; i < AnalogInputs; ++i) {
        const auto a = state.analogInput(i);
        v << (a ? a->voltage / 1000.0 : none);
    }
    for (int i = 0; i < Receivers; ++i) {
        const auto r = state.navReceiver(i);
        v << (r ? double(r->satellites) : none);
    }
    for (int i = 0; i < Sims; ++i) {
        const auto g = state.gsmRegistration(i);
        v << (g && g->signalLevel != UnknownSignal ? double(g->signalLevel) : none);
    }
    const auto fuel = state.fuelSensors();
    for (int i = 0; i < kd::FuelSensorsRecord::Sensors; ++i)
        v << (fuel && fuel->online(i) ? double(fuel->level[i]) : none);
    const auto nav = state.navSummary();
    v << (nav ? nav->speed / 10.0 : none);
    return v;
}

} // namespace TelemetrySeries
