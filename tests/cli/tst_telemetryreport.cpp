#include "cli/TelemetryReport.h"

#include "ControlInfoConfiguration.h"

#include <QtTest>

namespace {

// The lines of one group: its title and the indented lines up to the next title.
QStringList group(const QStringList &lines, const QString &title) {
    QStringList out;
    int i = lines.indexOf(title);
    if (i < 0)
        return out;
    out << lines.at(i);
    for (++i; i < lines.size() && lines.at(i).startsWith(QLatin1Char(' ')); ++i)
        out << lines.at(i);
    return out;
}

} // namespace

class tst_TelemetryReport : public QObject {
    Q_OBJECT

private slots:
    void nothingReceived_printsNothing();
    void navReceiver_data();
    void navReceiver();
    void simAndRegistration_keepTheirSpellings();
    void server_protocolAddressState();
    void rawLines_onlyReceivedRecordsByKindThenIndex();
};

void tst_TelemetryReport::nothingReceived_printsNothing() {
    kd::ControlInfoConfiguration state;
    QVERIFY(TelemetryReport::lines(state).isEmpty());
    QVERIFY(TelemetryReport::rawLines(state).isEmpty());
}

void tst_TelemetryReport::navReceiver_data() {
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QStringList>("expected");

    kd::NavReceiverRecord fix;
    fix.day = 5;
    fix.month = 3;
    fix.year = 24;
    fix.hours = 14;
    fix.minutes = 7;
    fix.seconds = 9;
    fix.fixQuality = 2;
    fix.fixMode = 3;
    fix.latDegrees = 55;
    fix.latFlags = kd::NavReceiverRecord::HemisphereBit;
    fix.latMinutes = 4512340;
    fix.lonDegrees = 7;
    fix.lonMinutes = 3712000;
    fix.hdop = 85;
    fix.vdop = 120;
    fix.pdop = 145;
    fix.satellites = 9;
    fix.speed = 523;
    fix.course = 1805;
    QTest::newRow("3D fix, southern hemisphere")
        << fix.toBytes()
        << QStringList{
               QStringLiteral("Навигационный приемник 2"), QStringLiteral("  Фиксация: 3D, 9 спутн."),
               QStringLiteral("  Режим: 3D режим"), QStringLiteral("  Дата и время: 05.03.24 14:07:09"),
               // The minutes' precision is the state page's choice.
               QStringLiteral("re:  Широта: -55° 45\\.12340*"), QStringLiteral("re:  Долгота: 07° 37\\.120*"),
               QStringLiteral("  Качество: Дифференциальный"),
               QStringLiteral("  HDOP / VDOP / PDOP: 0.85 / 1.20 / 1.45"),
               QStringLiteral("  Скорость: 52.3 км/ч"), QStringLiteral("  Курс: 180.5°")};

    kd::NavReceiverRecord lost = fix;
    lost.fixMode = 1;
    lost.fixQuality = 0;
    lost.satellites = 2;
    QTest::newRow("no fix hides the stale position")
        << lost.toBytes()
        << QStringList{QStringLiteral("Навигационный приемник 2"),
                       QStringLiteral("  Фиксация: Нет фиксации, 2 спутн."),
                       QStringLiteral("  Режим: Нет навигации"),
                       QStringLiteral("  Дата и время: -"),
                       QStringLiteral("  Широта: -"),
                       QStringLiteral("  Долгота: -"),
                       QStringLiteral("  Качество: Обычный"),
                       QStringLiteral("  HDOP / VDOP / PDOP: 0.85 / 1.20 / 1.45"),
                       QStringLiteral("  Скорость: -"),
                       QStringLiteral("  Курс: -")};
}

void tst_TelemetryReport::navReceiver() {
    QFETCH(QByteArray, record);
    QFETCH(QStringList, expected);
    kd::ControlInfoConfiguration state;
    QVERIFY(state.setRecord(kd::telemetry::NavReceivers, 1, record));
    const QStringList lines = TelemetryReport::lines(state);
    const QStringList actual = group(lines, expected.constFirst());
    QCOMPARE(actual.size(), expected.size());
    for (int i = 0; i < expected.size(); ++i) {
        const QString &e = expected.at(i);
        if (e.startsWith(QLatin1String("re:")))
            QVERIFY2(QRegularExpression(QLatin1Char('^') + e.mid(3) + QLatin1Char('$'))
                         .match(actual.at(i))
                         .hasMatch(),
                     qPrintable(actual.at(i)));
        else
            QCOMPARE(actual.at(i), e);
    }
    // Receivers that sent nothing are not shown.
    QVERIFY(!lines.contains(QStringLiteral("Навигационный приемник 1")));
    QVERIFY(!lines.contains(QStringLiteral("Навигационный приемник 3")));
}

void tst_TelemetryReport::simAndRegistration_keepTheirSpellings() {
    kd::ControlInfoConfiguration state;
    kd::SimStateRecord sim;
    sim.state = 0x0108; // the high byte is not part of the state
    QVERIFY(state.setRecord(kd::telemetry::SimStates, 0, sim.toBytes()));
    kd::GsmRegistrationRecord reg;
    reg.slotState = quint8(kd::SimSlotState::Absent);
    reg.registration = quint8(kd::GsmRegistration::Unknown);
    reg.signalLevel = 17;
    reg.operatorCode = 25001;
    QVERIFY(state.setRecord(kd::telemetry::GsmRegistration, 0, reg.toBytes()));

    const QStringList expected{QStringLiteral("SIM 1"),
                               QStringLiteral("  Состояние: Сим отсутсвует"),
                               QStringLiteral("  Слот: Сим отсутствует"),
                               QStringLiteral("  Регистрация: "),
                               QStringLiteral("  Уровень сигнала: 17"),
                               QStringLiteral("  Оператор: 25001")};
    QCOMPARE(group(TelemetryReport::lines(state), QStringLiteral("SIM 1")), expected);
}

void tst_TelemetryReport::server_protocolAddressState() {
    kd::ControlInfoConfiguration state;
    kd::ServerStateRecord server;
    server.protocol = quint8(kd::ServerProtocol::WialonCombine);
    server.state = quint8(kd::ServerState::Connected);
    server.ip[0] = 10;
    server.ip[3] = 5;
    server.port = 5000;
    server.packetsSent = 40;
    server.packetsAcked = 38;
    server.recordsQueued = 3;
    QVERIFY(state.setRecord(kd::telemetry::Servers, 2, server.toBytes()));
    const QStringList expected{QStringLiteral("Сервер 3"),
                               QStringLiteral("  Протокол: WIALON COMBINE"),
                               QStringLiteral("  Адрес: 10.0.0.5:5000"),
                               QStringLiteral("  Состояние: Подключен"),
                               QStringLiteral("  Пакеты подтверждены / отправлены: 38 / 40"),
                               QStringLiteral("  Записей в очереди: 3")};
    QCOMPARE(group(TelemetryReport::lines(state), QStringLiteral("Сервер 3")), expected);
}

void tst_TelemetryReport::rawLines_onlyReceivedRecordsByKindThenIndex() {
    kd::ControlInfoConfiguration state;
    QVERIFY(state.setRecord(kd::telemetry::GsmRegistration, 1, QByteArray(36, '\x01')));
    QVERIFY(state.setRecord(kd::telemetry::SimStates, 2, QByteArray::fromHex("0800")));
    QVERIFY(state.setRecord(kd::telemetry::DeviceState, 0, QByteArray(72, '\xAB')));
    QVERIFY(state.setRecord(kd::telemetry::SimStates, 0, QByteArray::fromHex("0100")));
    QVERIFY(state.setRecord(kd::telemetry::Clock, 0, QByteArray::fromHex("00e1f505")));

    const QStringList expected{
        QStringLiteral("kind=10 index=0 ") + QString(QStringLiteral("ab")).repeated(72),
        // A short block is padded to the record size.
        QStringLiteral("kind=11 index=0 00e1f5050000"),
        QStringLiteral("kind=23 index=0 0100"),
        QStringLiteral("kind=23 index=2 0800"),
        QStringLiteral("kind=24 index=1 ") + QString(QStringLiteral("01")).repeated(36),
    };
    QCOMPARE(TelemetryReport::rawLines(state), expected);
}

QTEST_GUILESS_MAIN(tst_TelemetryReport)
#include "tst_telemetryreport.moc"
