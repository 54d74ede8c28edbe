#include "Devices/TelemetryText.h"

namespace TelemetryText {

namespace {
QString twoDigits(int value) {
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}
} // namespace

QString simState(int code) {
    // Code 8 keeps its own spelling; the SIM slot line spells the same words differently.
    static const char *const texts[] = {
        "Готово",        "Ожидание PIN",  "Ожидание PUK",  "Ожидание PH_PIN", "Ожидание PH_PUK",
        "Ожидание PIN2", "Ожидание PUK2", "Сим не готова", "Сим отсутсвует",
    };
    if (code < 0 || code > 8)
        return QString();
    return QString::fromUtf8(texts[code]);
}

QString registration(int code) {
    switch (code) {
    case 0:
        return QStringLiteral("Нет регистрации");
    case 1:
        return QStringLiteral("Домашняя сеть");
    case 2:
        return QStringLiteral("Поиск сети");
    case 3:
        return QStringLiteral("Ошибка регистрации");
    case 5:
        return QStringLiteral("Роуминг");
    default:
        return QString();
    }
}

QString simSlot(int code) {
    if (code == int(kd::SimSlotState::Inserted))
        return QStringLiteral("Вставлена");
    if (code == int(kd::SimSlotState::Active))
        return QStringLiteral("Активна");
    return QStringLiteral("Сим отсутствует");
}

QString fixDateTime(int day, int month, int year, int hours, int minutes, int seconds) {
    return QStringLiteral("%1.%2.%3 %4:%5:%6")
        .arg(twoDigits(day), twoDigits(month), twoDigits(year), twoDigits(hours), twoDigits(minutes),
             twoDigits(seconds));
}

QString coordinate(bool negativeHemisphere, int degrees, double minutes) {
    return QStringLiteral("%1%2° %3")
        .arg(negativeHemisphere ? QStringLiteral("-") : QString(), twoDigits(degrees))
        .arg(minutes, 0, 'f', 5);
}

QString fixQuality(int quality) {
    if (quality <= 1)
        return QStringLiteral("Обычный");
    if (quality == 2)
        return QStringLiteral("Дифференциальный");
    return QStringLiteral("Прецизионный");
}

QString dilution(double horizontal, double vertical, double position) {
    return QStringLiteral("%1 / %2 / %3")
        .arg(horizontal, 0, 'f', 2)
        .arg(vertical, 0, 'f', 2)
        .arg(position, 0, 'f', 2);
}

bool hasFix(int mode) {
    return mode == 2 || mode == 3;
}

QString fixButton(int mode, int satellites) {
    const QString count = QString::number(satellites) + QStringLiteral(" спутн.");
    if (mode == 2)
        return QStringLiteral("2D, ") + count;
    if (mode == 3)
        return QStringLiteral("3D, ") + count;
    return QStringLiteral("Нет фиксации, ") + count;
}

QString fixLabel(int mode) {
    if (mode == 2)
        return QStringLiteral("2D режим");
    if (mode == 3)
        return QStringLiteral("3D режим");
    return QStringLiteral("Нет навигации");
}

QString noFixValue() {
    return QStringLiteral("-");
}

QString serverProtocol(int code) {
    return code == int(kd::ServerProtocol::WialonCombine) ? QStringLiteral("WIALON COMBINE")
                                                          : QStringLiteral("TAVREL UNP");
}

QString serverState(int code) {
    if (code == int(kd::ServerState::Connecting))
        return QStringLiteral("Подключение");
    if (code == int(kd::ServerState::Connected))
        return QStringLiteral("Подключен");
    return QStringLiteral("Отключен");
}

QString serverAddress(const quint8 ip[4], int port) {
    const QString address = QStringLiteral("%1.%2.%3.%4").arg(ip[0]).arg(ip[1]).arg(ip[2]).arg(ip[3]);
    return QStringLiteral("%1:%2").arg(address).arg(port);
}

QString counter(qint64 value, qint64 total) {
    return QStringLiteral("%1/%2").arg(value).arg(total);
}

QString spacedCounter(qint64 value, qint64 total) {
    return QStringLiteral("%1 / %2").arg(value).arg(total);
}

QString temperatures(int first, int second) {
    return QStringLiteral("%1 / %2°С").arg(first).arg(second);
}

QString activity(bool active) {
    return active ? QStringLiteral("Активен") : QStringLiteral("Неактивен");
}

QString inputMode(int mode, qint64 value) {
    switch (kd::InputMode(mode)) {
    case kd::InputMode::Logic:
        return value ? QStringLiteral("Логический, 1") : QStringLiteral("Логический, 0");
    case kd::InputMode::Frequency:
        return QStringLiteral("Частотомер, %1").arg(value);
    case kd::InputMode::CounterUss:
        return QStringLiteral("Счетчик УСС, %1").arg(value);
    case kd::InputMode::CounterDfm:
        return QStringLiteral("Счетчик DFM, %1").arg(value);
    case kd::InputMode::UniversalCounter:
        return QStringLiteral("Унив. счетчик, %1").arg(value);
    case kd::InputMode::Off:
        break;
    }
    return QStringLiteral("Отключен");
}

QString fixDateTime(const kd::NavReceiverRecord &r) {
    if (!r.hasFix())
        return noFixValue();
    return fixDateTime(r.day, r.month, r.year, r.hours, r.minutes, r.seconds);
}

QString latitude(const kd::NavReceiverRecord &r) {
    if (!r.hasFix())
        return noFixValue();
    return coordinate(r.latFlags & kd::NavReceiverRecord::HemisphereBit, r.latDegrees, r.latitudeMinutes());
}

QString longitude(const kd::NavReceiverRecord &r) {
    if (!r.hasFix())
        return noFixValue();
    return coordinate(r.lonFlags & kd::NavReceiverRecord::HemisphereBit, r.lonDegrees, r.longitudeMinutes());
}

QString dilution(const kd::NavReceiverRecord &r) {
    return dilution(r.hdop / 100.0, r.vdop / 100.0, r.pdop / 100.0);
}

QString speed(const kd::NavReceiverRecord &r) {
    if (!r.hasFix())
        return noFixValue();
    return QStringLiteral("%1 км/ч").arg(r.speed / 10.0, 0, 'f', 1);
}

QString course(const kd::NavReceiverRecord &r) {
    if (!r.hasFix())
        return noFixValue();
    return QStringLiteral("%1°").arg(r.course / 10.0, 0, 'f', 1);
}

QString voltage(quint32 millivolts) {
    return QStringLiteral("%1 В").arg(millivolts / 1000.0, 0, 'f', 2);
}

QString duration(quint32 seconds) {
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / 3600)
        .arg(twoDigits(int(seconds / 60 % 60)), twoDigits(int(seconds % 60)));
}

} // namespace TelemetryText
