#include "TelemetryText.h"

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

QString simSlot(SimSlot slot) {
    switch (slot) {
    case SimSlot::Inserted:
        return QStringLiteral("Вставлена");
    case SimSlot::Active:
        return QStringLiteral("Активна");
    case SimSlot::Absent:
        break;
    }
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
        .arg(minutes, 0, 'f', 4);
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
    return code == 1 ? QStringLiteral("WIALON COMBINE") : QStringLiteral("TAVREL UNP");
}

QString serverState(int code) {
    if (code == 1)
        return QStringLiteral("Подключение");
    if (code == 2)
        return QStringLiteral("Подключен");
    return QStringLiteral("Отключен");
}

QString ipAddress(quint32 address) {
    return QStringLiteral("%1.%2.%3.%4")
        .arg(address & 0xFF)
        .arg((address >> 8) & 0xFF)
        .arg((address >> 16) & 0xFF)
        .arg((address >> 24) & 0xFF);
}

QString serverAddress(quint32 address, int port) {
    return QStringLiteral("%1:%2").arg(ipAddress(address)).arg(port);
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
    switch (mode) {
    case 1:
        return QStringLiteral("Логический, 0");
    case 2:
        return QStringLiteral("Логический, 1");
    case 3:
        return QStringLiteral("Частотомер, %1").arg(value);
    case 4:
        return QStringLiteral("Счетчик УСС, %1").arg(value);
    case 5:
        return QStringLiteral("Счетчик DFM, %1").arg(value);
    case 6:
        return QStringLiteral("Унив. счетчик, %1").arg(value);
    default:
        return QStringLiteral("Отключен");
    }
}

} // namespace TelemetryText
