#include "support/TelemetryReport.h"

#include "Devices/ControlInfoConfiguration.h"
#include "Devices/TelemetryText.h"

#include <QDateTime>

namespace {

using namespace kd::telemetry;

QString line(const QString &name, const QString &value) {
    return QStringLiteral("  %1: %2").arg(name, value);
}

QString number(qint64 value) {
    return QString::number(value);
}

QString tenths(qint64 value, const QString &unit) {
    return QStringLiteral("%1 %2").arg(value / 10.0, 0, 'f', 1).arg(unit);
}

QString unixTime(quint32 seconds) {
    if (seconds == 0)
        return TelemetryText::noFixValue();
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(QStringLiteral("dd.MM.yyyy hh:mm:ss"));
}

void deviceState(const kd::ControlInfoConfiguration &state, QStringList &out) {
    const auto r = state.deviceState();
    if (!r)
        return;
    using Flag = kd::DeviceStateRecord::ActivityFlag;
    out << QStringLiteral("Прибор");
    out << line(QStringLiteral("Питание"), TelemetryText::voltage(r->supplyVoltage));
    out << line(QStringLiteral("Резервная батарея"), TelemetryText::voltage(r->batteryVoltage));
    out << line(QStringLiteral("Температура"),
                TelemetryText::temperatures(r->boardTemperature, r->batteryTemperature));
    out << line(QStringLiteral("Использованная память"),
                TelemetryText::counter(r->memoryUsed, r->memoryTotal));
    out << line(QStringLiteral("netAddr"), number(r->netAddr));
    out << line(QStringLiteral("Навигация"),
                TelemetryText::activity(r->activityFlags & Flag::NavigationActive));
    out << line(QStringLiteral("GSM"), TelemetryText::activity(r->activityFlags & Flag::GsmActive));
    out << line(QStringLiteral("Время работы"), TelemetryText::duration(r->uptime));
    out << line(QStringLiteral("Записи отправлены / сохранены"),
                TelemetryText::spacedCounter(r->recordsSent, r->recordsStored));
    out << line(QStringLiteral("Перезапуски"), number(r->resetCount));
    out << line(QStringLiteral("Пробег, м"), number(r->odometer));
}

void clock(const kd::ControlInfoConfiguration &state, QStringList &out) {
    const auto r = state.clock();
    if (!r)
        return;
    out << QStringLiteral("Часы");
    out << line(QStringLiteral("Время прибора (UTC)"), unixTime(r->unixTime));
    out << line(QStringLiteral("Синхронизация"), number(r->syncSource));
}

void navReceivers(const kd::ControlInfoConfiguration &state, QStringList &out) {
    const int kept = kd::ControlInfoConfiguration::recordsKept(NavReceivers);
    for (int i = 0; i < kept; ++i) {
        const auto r = state.navReceiver(i);
        if (!r)
            continue;
        out << QStringLiteral("Навигационный приемник %1").arg(i + 1);
        out << line(QStringLiteral("Фиксация"), TelemetryText::fixButton(r->fixMode, r->satellites));
        out << line(QStringLiteral("Режим"), TelemetryText::fixLabel(r->fixMode));
        out << line(QStringLiteral("Дата и время"), TelemetryText::fixDateTime(*r));
        out << line(QStringLiteral("Широта"), TelemetryText::latitude(*r));
        out << line(QStringLiteral("Долгота"), TelemetryText::longitude(*r));
        out << line(QStringLiteral("Качество"), TelemetryText::fixQuality(r->fixQuality));
        out << line(QStringLiteral("HDOP / VDOP / PDOP"), TelemetryText::dilution(*r));
        out << line(QStringLiteral("Скорость"), TelemetryText::speed(*r));
        out << line(QStringLiteral("Курс"), TelemetryText::course(*r));
    }
}

void servers(const kd::ControlInfoConfiguration &state, QStringList &out) {
    const int kept = kd::ControlInfoConfiguration::recordsKept(Servers);
    for (int i = 0; i < kept; ++i) {
        const auto r = state.serverState(i);
        if (!r)
            continue;
        out << QStringLiteral("Сервер %1").arg(i + 1);
        out << line(QStringLiteral("Протокол"), TelemetryText::serverProtocol(r->protocol));
        out << line(QStringLiteral("Адрес"), TelemetryText::serverAddress(r->ip, r->port));
        out << line(QStringLiteral("Состояние"), TelemetryText::serverState(r->state));
        out << line(QStringLiteral("Пакеты подтверждены / отправлены"),
                    TelemetryText::spacedCounter(r->packetsAcked, r->packetsSent));
        out << line(QStringLiteral("Записей в очереди"), number(r->recordsQueued));
    }
}

void navSummary(const kd::ControlInfoConfiguration &state, QStringList &out) {
    const auto r = state.navSummary();
    if (!r)
        return;
    const bool fix = TelemetryText::hasFix(r->fixMode);
    out << QStringLiteral("Навигация");
    out << line(QStringLiteral("Фиксация"), TelemetryText::fixButton(r->fixMode, r->satellites));
    out << line(QStringLiteral("Приемник"), number(r->activeReceiver + 1));
    out << line(QStringLiteral("Время фиксации (UTC)"),
                fix ? unixTime(r->fixTime) : TelemetryText::noFixValue());
    out << line(QStringLiteral("Широта"),
                fix ? QString::number(r->latitude / 1e7, 'f', 7) : TelemetryText::noFixValue());
    out << line(QStringLiteral("Долгота"),
                fix ? QString::number(r->longitude / 1e7, 'f', 7) : TelemetryText::noFixValue());
    out << line(QStringLiteral("Скорость"),
                fix ? tenths(r->speed, QStringLiteral("км/ч")) : TelemetryText::noFixValue());
    out << line(QStringLiteral("Курс"),
                fix ? tenths(r->course, QStringLiteral("°")) : TelemetryText::noFixValue());
    out << line(QStringLiteral("Пробег, м"), number(r->odometer));
}

void inputs(const kd::ControlInfoConfiguration &state, QStringList &out) {
    for (int i = 0; i < kd::ControlInfoConfiguration::recordsKept(AnalogInputs); ++i) {
        const auto r = state.analogInput(i);
        if (!r)
            continue;
        out << QStringLiteral("Аналоговый вход %1").arg(i + 1);
        out << line(QStringLiteral("Режим"), TelemetryText::inputMode(r->mode, r->averagedVoltage));
        out << line(QStringLiteral("Напряжение"), TelemetryText::voltage(r->voltage));
    }
    for (int i = 0; i < kd::ControlInfoConfiguration::recordsKept(LogicInputs); ++i) {
        const auto r = state.logicInput(i);
        if (!r)
            continue;
        out << QStringLiteral("Логический вход %1").arg(i + 1);
        out << line(QStringLiteral("Режим"), TelemetryText::inputMode(r->mode, r->value));
        out << line(QStringLiteral("Импульсы"), number(r->counter));
    }
}

void fuel(const kd::ControlInfoConfiguration &state, QStringList &out) {
    const auto r = state.fuelSensors();
    if (!r)
        return;
    out << QStringLiteral("Датчики топлива");
    for (int i = 0; i < kd::FuelSensorsRecord::Sensors; ++i) {
        out << line(QStringLiteral("Датчик %1").arg(i + 1),
                    r->online(i) ? number(r->level[i]) : TelemetryText::noFixValue());
    }
    out << line(QStringLiteral("Ошибки опроса"), TelemetryText::counter(r->errorCount, r->pollCount));
}

void sims(const kd::ControlInfoConfiguration &state, QStringList &out) {
    const int kept = qMax(kd::ControlInfoConfiguration::recordsKept(SimStates),
                          kd::ControlInfoConfiguration::recordsKept(GsmRegistration));
    for (int i = 0; i < kept; ++i) {
        const auto sim = state.simState(i);
        const auto reg = state.gsmRegistration(i);
        if (!sim && !reg)
            continue;
        out << QStringLiteral("SIM %1").arg(i + 1);
        if (sim)
            out << line(QStringLiteral("Состояние"), TelemetryText::simState(sim->code()));
        if (reg) {
            out << line(QStringLiteral("Слот"), TelemetryText::simSlot(reg->slotState));
            out << line(QStringLiteral("Регистрация"), TelemetryText::registration(reg->registration));
            out << line(QStringLiteral("Уровень сигнала"), number(reg->signalLevel));
            out << line(QStringLiteral("Оператор"), number(reg->operatorCode));
        }
    }
}

} // namespace

QStringList TelemetryReport::lines(const kd::ControlInfoConfiguration &state) {
    QStringList out;
    deviceState(state, out);
    clock(state, out);
    navSummary(state, out);
    navReceivers(state, out);
    sims(state, out);
    servers(state, out);
    inputs(state, out);
    fuel(state, out);
    return out;
}

QStringList TelemetryReport::rawLines(const kd::ControlInfoConfiguration &state) {
    QStringList out;
    for (int kind = 0; kind < FirstIgnored; ++kind) {
        const int kept = kd::ControlInfoConfiguration::recordsKept(kind);
        const ControlInfoConfigurationItem *item = state.value();
        for (int index = 0; item && index < kept; ++index) {
            if (!item->received(kind, index))
                continue;
            out << QStringLiteral("kind=%1 index=%2 %3")
                       .arg(kind)
                       .arg(index)
                       .arg(QString::fromLatin1(item->record(kind, index).toHex()));
        }
    }
    return out;
}
