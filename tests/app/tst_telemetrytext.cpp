#include "TelemetryText.h"

#include <QtTest>

class tst_TelemetryText : public QObject {
    Q_OBJECT
private slots:
    void simState_data();
    void simState();
    void registration_data();
    void registration();
    void simSlot_data();
    void simSlot();
    void fixDateTime_padsEveryFieldToTwoDigits();
    void coordinate_data();
    void coordinate();
    void fixQuality_data();
    void fixQuality();
    void fixMode_data();
    void fixMode();
    void dilution_usesTwoDecimals();
    void server_data();
    void server();
    void inputMode_data();
    void inputMode();
    void counters_and_temperatures();
    void receiverRecord_data();
    void receiverRecord();
};

void tst_TelemetryText::simState_data() {
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("0 ready") << 0 << "Готово";
    QTest::newRow("1 pin") << 1 << "Ожидание PIN";
    QTest::newRow("2 puk") << 2 << "Ожидание PUK";
    QTest::newRow("3 ph pin") << 3 << "Ожидание PH_PIN";
    QTest::newRow("4 ph puk") << 4 << "Ожидание PH_PUK";
    QTest::newRow("5 pin2") << 5 << "Ожидание PIN2";
    QTest::newRow("6 puk2") << 6 << "Ожидание PUK2";
    QTest::newRow("7 not ready") << 7 << "Сим не готова";
    QTest::newRow("8 absent keeps its own spelling") << 8 << "Сим отсутсвует";
    QTest::newRow("9 no text") << 9 << "";
    QTest::newRow("255 no text") << 255 << "";
}

void tst_TelemetryText::simState() {
    QFETCH(int, code);
    QFETCH(QString, text);
    QCOMPARE(TelemetryText::simState(code), text);
}

void tst_TelemetryText::registration_data() {
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("0 none") << 0 << "Нет регистрации";
    QTest::newRow("1 home") << 1 << "Домашняя сеть";
    QTest::newRow("2 searching") << 2 << "Поиск сети";
    QTest::newRow("3 denied") << 3 << "Ошибка регистрации";
    QTest::newRow("4 empty") << 4 << "";
    QTest::newRow("5 roaming") << 5 << "Роуминг";
    QTest::newRow("6 empty") << 6 << "";
}

void tst_TelemetryText::registration() {
    QFETCH(int, code);
    QFETCH(QString, text);
    QCOMPARE(TelemetryText::registration(code), text);
}

void tst_TelemetryText::simSlot_data() {
    QTest::addColumn<int>("slot");
    QTest::addColumn<QString>("text");
    QTest::newRow("absent, correct spelling") << 0 << "Сим отсутствует";
    QTest::newRow("inserted") << 1 << "Вставлена";
    QTest::newRow("active") << 2 << "Активна";
    QTest::newRow("unknown reads absent") << 7 << "Сим отсутствует";
}

void tst_TelemetryText::simSlot() {
    QFETCH(int, slot);
    QFETCH(QString, text);
    QCOMPARE(TelemetryText::simSlot(slot), text);
}

void tst_TelemetryText::fixDateTime_padsEveryFieldToTwoDigits() {
    QCOMPARE(TelemetryText::fixDateTime(3, 7, 9, 4, 5, 6), QStringLiteral("03.07.09 04:05:06"));
    QCOMPARE(TelemetryText::fixDateTime(31, 12, 26, 23, 59, 58), QStringLiteral("31.12.26 23:59:58"));
}

void tst_TelemetryText::coordinate_data() {
    QTest::addColumn<bool>("negative");
    QTest::addColumn<int>("degrees");
    QTest::addColumn<double>("minutes");
    QTest::addColumn<QString>("text");
    QTest::newRow("north, padded degrees") << false << 5 << 30.5 << "05° 30.50000";
    QTest::newRow("south gets a minus") << true << 55 << 45.1234 << "-55° 45.12340";
    QTest::newRow("three-digit longitude") << false << 137 << 0.0 << "137° 0.00000";
}

void tst_TelemetryText::coordinate() {
    QFETCH(bool, negative);
    QFETCH(int, degrees);
    QFETCH(double, minutes);
    QFETCH(QString, text);
    QCOMPARE(TelemetryText::coordinate(negative, degrees, minutes), text);
}

void tst_TelemetryText::fixQuality_data() {
    QTest::addColumn<int>("quality");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0 << "Обычный";
    QTest::newRow("1") << 1 << "Обычный";
    QTest::newRow("2") << 2 << "Дифференциальный";
    QTest::newRow("3") << 3 << "Прецизионный";
    QTest::newRow("7") << 7 << "Прецизионный";
}

void tst_TelemetryText::fixQuality() {
    QFETCH(int, quality);
    QFETCH(QString, text);
    QCOMPARE(TelemetryText::fixQuality(quality), text);
}

void tst_TelemetryText::fixMode_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("satellites");
    QTest::addColumn<bool>("fix");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("label");
    QTest::newRow("2D") << 2 << 4 << true << "2D, 4 спутн."
                        << "2D режим";
    QTest::newRow("3D") << 3 << 11 << true << "3D, 11 спутн."
                        << "3D режим";
    QTest::newRow("1 no fix") << 1 << 2 << false << "Нет фиксации, 2 спутн."
                              << "Нет навигации";
    QTest::newRow("0 no fix") << 0 << 0 << false << "Нет фиксации, 0 спутн."
                              << "Нет навигации";
}

void tst_TelemetryText::fixMode() {
    QFETCH(int, mode);
    QFETCH(int, satellites);
    QFETCH(bool, fix);
    QFETCH(QString, button);
    QFETCH(QString, label);
    QCOMPARE(TelemetryText::hasFix(mode), fix);
    QCOMPARE(TelemetryText::fixButton(mode, satellites), button);
    QCOMPARE(TelemetryText::fixLabel(mode), label);
}

void tst_TelemetryText::dilution_usesTwoDecimals() {
    QCOMPARE(TelemetryText::dilution(0.8, 1.25, 12), QStringLiteral("0.80 / 1.25 / 12.00"));
}

void tst_TelemetryText::server_data() {
    QTest::addColumn<int>("protocol");
    QTest::addColumn<int>("state");
    QTest::addColumn<QByteArray>("ip");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("protocolText");
    QTest::addColumn<QString>("stateText");
    QTest::addColumn<QString>("addressText");
    QTest::newRow("own protocol, connected, first octet first")
        << 0 << 2 << QByteArray::fromHex("7f000001") << 20100 << "TAVREL UNP"
        << "Подключен"
        << "127.0.0.1:20100";
    QTest::newRow("wialon, connecting") << 1 << 1 << QByteArray::fromHex("c0a801fe") << 1 << "WIALON COMBINE"
                                        << "Подключение"
                                        << "192.168.1.254:1";
    QTest::newRow("unknown codes read as own protocol, disconnected")
        << 7 << 9 << QByteArray(4, 0) << 0 << "TAVREL UNP"
        << "Отключен"
        << "0.0.0.0:0";
}

void tst_TelemetryText::server() {
    QFETCH(int, protocol);
    QFETCH(int, state);
    QFETCH(QByteArray, ip);
    QFETCH(int, port);
    QFETCH(QString, protocolText);
    QFETCH(QString, stateText);
    QFETCH(QString, addressText);
    QCOMPARE(TelemetryText::serverProtocol(protocol), protocolText);
    QCOMPARE(TelemetryText::serverState(state), stateText);
    const quint8 octets[4] = {quint8(ip[0]), quint8(ip[1]), quint8(ip[2]), quint8(ip[3])};
    QCOMPARE(TelemetryText::serverAddress(octets, port), addressText);
}

void tst_TelemetryText::inputMode_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<qint64>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("off ignores the value") << 0 << qint64(17) << "Отключен";
    QTest::newRow("logic low") << 1 << qint64(0) << "Логический, 0";
    QTest::newRow("logic high") << 1 << qint64(1) << "Логический, 1";
    QTest::newRow("frequency") << 2 << qint64(1500) << "Частотомер, 1500";
    QTest::newRow("uss counter") << 3 << qint64(42) << "Счетчик УСС, 42";
    QTest::newRow("dfm counter") << 4 << qint64(7) << "Счетчик DFM, 7";
    QTest::newRow("universal counter") << 5 << qint64(99) << "Унив. счетчик, 99";
    QTest::newRow("unknown mode reads off") << 6 << qint64(99) << "Отключен";
}

void tst_TelemetryText::inputMode() {
    QFETCH(int, mode);
    QFETCH(qint64, value);
    QFETCH(QString, text);
    QCOMPARE(TelemetryText::inputMode(mode, value), text);
}

void tst_TelemetryText::counters_and_temperatures() {
    QCOMPARE(TelemetryText::counter(3, 10), QStringLiteral("3/10"));
    QCOMPARE(TelemetryText::spacedCounter(3, 10), QStringLiteral("3 / 10"));
    // The degree sign is followed by the Cyrillic capital Es.
    QCOMPARE(TelemetryText::temperatures(-5, 31), QString::fromUtf8("-5 / 31\xC2\xB0\xD0\xA1"));
    QCOMPARE(TelemetryText::activity(true), QStringLiteral("Активен"));
    QCOMPARE(TelemetryText::activity(false), QStringLiteral("Неактивен"));
}

void tst_TelemetryText::receiverRecord_data() {
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QString>("dateTime");
    QTest::addColumn<QString>("latitude");
    QTest::addColumn<QString>("longitude");
    QTest::addColumn<QString>("speed");
    QTest::addColumn<QString>("course");
    QTest::addColumn<QString>("dilution");

    kd::NavReceiverRecord fix;
    fix.day = 9;
    fix.month = 3;
    fix.year = 26;
    fix.hours = 7;
    fix.minutes = 5;
    fix.seconds = 1;
    fix.fixMode = 3;
    fix.latDegrees = 55;
    fix.latMinutes = 4512345; // 45.12345'
    fix.lonDegrees = 37;
    fix.lonFlags = kd::NavReceiverRecord::HemisphereBit;
    fix.lonMinutes = 600000;
    fix.hdop = 80;
    fix.vdop = 125;
    fix.pdop = 1500;
    fix.speed = 605;
    fix.course = 1800;
    QTest::newRow("3D fix, western longitude") << fix.toBytes() << "09.03.26 07:05:01"
                                               << "55° 45.12345"
                                               << "-37° 6.00000"
                                               << "60.5 км/ч"
                                               << "180.0°"
                                               << "0.80 / 1.25 / 15.00";

    kd::NavReceiverRecord noFix = fix;
    noFix.fixMode = 1;
    QTest::newRow("no fix: dashes") << noFix.toBytes() << "-"
                                    << "-"
                                    << "-"
                                    << "-"
                                    << "-"
                                    << "0.80 / 1.25 / 15.00";
    QTest::newRow("short record reads as no fix") << QByteArray::fromHex("0102") << "-"
                                                  << "-"
                                                  << "-"
                                                  << "-"
                                                  << "-"
                                                  << "0.00 / 0.00 / 0.00";
}

void tst_TelemetryText::receiverRecord() {
    QFETCH(QByteArray, record);
    const auto r = kd::NavReceiverRecord::fromBytes(record);
    QTEST(TelemetryText::fixDateTime(r), "dateTime");
    QTEST(TelemetryText::latitude(r), "latitude");
    QTEST(TelemetryText::longitude(r), "longitude");
    QTEST(TelemetryText::speed(r), "speed");
    QTEST(TelemetryText::course(r), "course");
    QTEST(TelemetryText::dilution(r), "dilution");
}

QTEST_GUILESS_MAIN(tst_TelemetryText)
#include "tst_telemetrytext.moc"
