#include "Devices/TelemetryText.h"

#include <QtTest>

class tst_TelemetryText : public QObject {
    Q_OBJECT
private slots:
    void text_data();
    void text();
};

// Each row: what a TelemetryText function made of the given codes, and what the window must show.
void tst_TelemetryText::text_data() {
    namespace T = TelemetryText;
    QTest::addColumn<QString>("actual");
    QTest::addColumn<QString>("expected");
    auto row = [](const char *name, const QString &actual, const char *expected) {
        QTest::newRow(name) << actual << QString::fromUtf8(expected);
    };
    row("sim 0 ready", T::simState(0), "Готово");
    row("sim 6 puk2", T::simState(6), "Ожидание PUK2");
    row("sim 7 not ready", T::simState(7), "Сим не готова");
    row("sim 8 absent keeps its own spelling", T::simState(8), "Сим отсутсвует");
    row("sim 9 no text", T::simState(9), "");
    row("registration 0 none", T::registration(0), "Нет регистрации");
    row("registration 1 home", T::registration(1), "Домашняя сеть");
    row("registration 3 denied", T::registration(3), "Ошибка регистрации");
    row("registration 4 no text", T::registration(4), "");
    row("registration 5 roaming", T::registration(5), "Роуминг");
    row("slot absent, correct spelling", T::simSlot(0), "Сим отсутствует");
    row("slot active", T::simSlot(2), "Активна");
    row("slot unknown reads absent", T::simSlot(7), "Сим отсутствует");
    row("fix time padded", T::fixDateTime(3, 7, 9, 4, 5, 6), "03.07.09 04:05:06");
    row("north, padded degrees", T::coordinate(false, 5, 30.5), "05° 30.50000");
    row("south gets a minus", T::coordinate(true, 55, 45.1234), "-55° 45.12340");
    row("three-digit longitude", T::coordinate(false, 137, 0.0), "137° 0.00000");
    row("quality 2 differential", T::fixQuality(2), "Дифференциальный");
    row("quality 7 precise", T::fixQuality(7), "Прецизионный");
    row("2D button", T::fixButton(2, 4), "2D, 4 спутн.");
    row("mode 1 button: no fix", T::fixButton(1, 2), "Нет фиксации, 2 спутн.");
    row("mode 0 label: no navigation", T::fixLabel(0), "Нет навигации");
    row("dilution two decimals", T::dilution(0.8, 1.25, 12), "0.80 / 1.25 / 12.00");
    row("own protocol", T::serverProtocol(0), "TAVREL UNP");
    row("unknown protocol reads own", T::serverProtocol(7), "TAVREL UNP");
    row("server connecting", T::serverState(1), "Подключение");
    row("unknown state reads disconnected", T::serverState(9), "Отключен");
    const quint8 ip[4] = {127, 0, 0, 1};
    row("address first octet first", T::serverAddress(ip, 20100), "127.0.0.1:20100");
    row("input off ignores the value", T::inputMode(0, 17), "Отключен");
    row("input logic", T::inputMode(1, 1), "Логический, 1");
    row("input frequency", T::inputMode(2, 1500), "Частотомер, 1500");
    row("input uss counter", T::inputMode(3, 42), "Счетчик УСС, 42");
    row("input universal counter", T::inputMode(5, 99), "Унив. счетчик, 99");
    row("unknown input mode reads off", T::inputMode(6, 99), "Отключен");
    row("counter", T::counter(3, 10), "3/10");
    // The degree sign is followed by the Cyrillic capital Es.
    row("temperatures", T::temperatures(-5, 31), "-5 / 31\xC2\xB0\xD0\xA1");

    const auto shortRecord = kd::NavReceiverRecord::fromBytes(QByteArray::fromHex("0102"));
    row("short record: longitude is a dash", T::longitude(shortRecord), "-");
    row("short record: zero dilution", T::dilution(shortRecord), "0.00 / 0.00 / 0.00");
}

void tst_TelemetryText::text() {
    QFETCH(QString, actual);
    QFETCH(QString, expected);
    QCOMPARE(actual, expected);
}

QTEST_GUILESS_MAIN(tst_TelemetryText)
#include "tst_telemetrytext.moc"
