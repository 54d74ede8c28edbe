#include "Devices/TelemetryRecords.h"
#include "Devices/TelemetryText.h"

#include <QtTest>

using namespace kd;

namespace {
// Bytes 1, 8, 15, ... so that every field of a record gets a distinct value.
QByteArray counting(int size) {
    QByteArray b;
    for (int i = 0; i < size; ++i)
        b.append(char(i * 7 + 1));
    return b;
}

template <class R>
void addRecord(const char *name) {
    const QByteArray bytes = counting(R::Size);
    QTest::newRow(name) << bytes << R::fromBytes(bytes).toBytes() << R::fromBytes(bytes.left(3)).toBytes();
}
} // namespace

class tst_TelemetryRecords : public QObject {
    Q_OBJECT

private slots:
    void everyFieldSurvivesARoundTrip_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("full");  // the whole record decoded and encoded again
        QTest::addColumn<QByteArray>("short"); // its first three bytes decoded and encoded again
        addRecord<DeviceStateRecord>("kind 10 device state");
        addRecord<ClockRecord>("kind 11 clock");
        addRecord<NavReceiverRecord>("kind 14 navigation receiver");
        addRecord<ServerStateRecord>("kind 15 server state");
        addRecord<NavSummaryRecord>("kind 16 navigation summary");
        addRecord<AnalogInputRecord>("kind 17 analog input");
        addRecord<LogicInputRecord>("kind 18 logic input");
        addRecord<FuelSensorsRecord>("kind 19 fuel sensors");
        addRecord<StateWordsRecord>("kind 21 state words");
        addRecord<SimStateRecord>("kind 23 SIM state");
        addRecord<GsmRegistrationRecord>("kind 24 GSM registration");
    }

    void everyFieldSurvivesARoundTrip() {
        QFETCH(QByteArray, bytes);
        // Every byte is mapped to a field: a field left out, overlapping or misplaced changes the bytes.
        QTEST(bytes, "full");
        // Missing bytes read as zero, and the record keeps its size.
        QTEST(bytes.left(3) + QByteArray(bytes.size() - 3, '\0'), "short");
    }

    void navReceiver_fieldsFromAHexVector() {
        // 23.11.26 14:05:09, quality 2, 3D; 55° 45.12345' N, 37° 37.00001' W; PDOP 1.50 HDOP 0.90 VDOP 1.20;
        // 9 of 14 satellites; 61.5 km/h; course 270.0; altitude -12.3 m; receiver powered, antenna ok
        const NavReceiverRecord r = NavReceiverRecord::fromBytes(
            QByteArray::fromHex("17 0b 1a 0e 05 09 02 03 37 00 25 01 59 da 44 00 21 75 38 00"
                                "96 00 5a 00 78 00 09 0e 67 02 8c 0a 85 ff ff ff 03 00"));
        const int south = r.latFlags & NavReceiverRecord::HemisphereBit;
        const int west = r.lonFlags & NavReceiverRecord::HemisphereBit;
        const QList<qint64> fields{
            r.day,        r.month,      r.year,       r.hours,         r.minutes,    r.seconds,
            r.fixQuality, r.latDegrees, r.latMinutes, south,           r.lonDegrees, r.lonMinutes,
            west,         r.pdop,       r.hdop,       r.vdop,          r.satellites, r.satellitesInView,
            r.speed,      r.course,     r.altitude,   r.receiverFlags, r.hasFix()};
        QCOMPARE(fields, QList<qint64>({23, 11,  26, 14,  5, 9,  2,   55,   4512345, 0, 37, 3700001,
                                        1,  150, 90, 120, 9, 14, 615, 2700, -123,    3, 1}));
    }

    void deviceState_temperaturesAreSigned() {
        DeviceStateRecord r;
        r.supplyVoltage = 12600;
        r.boardTemperature = -25;
        r.batteryTemperature = 41;
        const QByteArray b = r.toBytes();
        QCOMPARE(b.left(8).toHex(' '), QByteArray("38 31 00 00 e7 ff 29 00"));
        QCOMPARE(DeviceStateRecord::fromBytes(b).boardTemperature, qint16(-25));
    }

    // Each row: what a TelemetryText function made of the given codes, and what the window must show.
    void text_data() {
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

    void text() {
        QFETCH(QString, actual);
        QFETCH(QString, expected);
        QCOMPARE(actual, expected);
    }
};

QTEST_GUILESS_MAIN(tst_TelemetryRecords)
#include "tst_telemetryrecords.moc"
