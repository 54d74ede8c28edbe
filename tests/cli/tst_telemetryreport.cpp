#include "support/TelemetryReport.h"

#include "Devices/ControlInfoConfiguration.h"

#include <QtTest>

namespace {

// The lines of one group: its title and the indented lines up to the next title.
QStringList group(const QStringList &lines, const QString &title) {
    int i = lines.indexOf(title);
    if (i < 0)
        return {};
    QStringList out{title};
    while (++i < lines.size() && lines.at(i).startsWith(' '))
        out << lines.at(i);
    return out;
}

} // namespace

class tst_TelemetryReport : public QObject {
    Q_OBJECT

private slots:
    void navReceiver_data();
    void navReceiver();
    void simAndRegistration_keepTheirSpellings();
    void rawLines_onlyReceivedRecordsByKindThenIndex();
};

void tst_TelemetryReport::navReceiver_data() {
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QString>("expected"); // one line each; "re:" lines are patterns
    kd::NavReceiverRecord fix;
    fix.day = 5, fix.month = 3, fix.year = 24, fix.hours = 14, fix.minutes = 7, fix.seconds = 9;
    fix.fixQuality = 2, fix.fixMode = 3, fix.satellites = 9;
    fix.latDegrees = 55, fix.latFlags = kd::NavReceiverRecord::HemisphereBit, fix.latMinutes = 4512340;
    fix.lonDegrees = 7, fix.lonFlags = kd::NavReceiverRecord::HemisphereBit, fix.lonMinutes = 3712000;
    fix.hdop = 85, fix.vdop = 120, fix.pdop = 145, fix.speed = 523, fix.course = 1805;
    // The minutes' precision is the state page's choice.
    QTest::newRow("3D fix, south-western hemisphere")
        << fix.toBytes()
        << "Навигационный приемник 2\n  Фиксация: 3D, 9 спутн.\n  Режим: 3D режим\n"
           "  Дата и время: 05.03.24 14:07:09\nre:  Широта: -55° 45\\.12340*\nre:  Долгота: -07° 37\\.120*\n"
           "  Качество: Дифференциальный\n  HDOP / VDOP / PDOP: 0.85 / 1.20 / 1.45\n"
           "  Скорость: 52.3 км/ч\n  Курс: 180.5°";
    kd::NavReceiverRecord lost = fix;
    lost.fixMode = 1, lost.fixQuality = 0, lost.satellites = 2;
    QTest::newRow("no fix hides the stale position")
        << lost.toBytes()
        << "Навигационный приемник 2\n  Фиксация: Нет фиксации, 2 спутн.\n  Режим: Нет навигации\n"
           "  Дата и время: -\n  Широта: -\n  Долгота: -\n  Качество: Обычный\n"
           "  HDOP / VDOP / PDOP: 0.85 / 1.20 / 1.45\n  Скорость: -\n  Курс: -";
}

void tst_TelemetryReport::navReceiver() {
    QFETCH(QByteArray, record);
    QFETCH(QString, expected);
    kd::ControlInfoConfiguration state;
    QVERIFY(state.setRecord(kd::telemetry::NavReceivers, 1, record));
    const QStringList lines = TelemetryReport::lines(state), want = expected.split('\n');
    const QStringList actual = group(lines, want.constFirst());
    QCOMPARE(actual.size(), want.size());
    for (int i = 0; i < want.size(); ++i) {
        const QString &e = want.at(i);
        QVERIFY2(e.startsWith("re:") ? QRegularExpression('^' + e.mid(3) + '$').match(actual.at(i)).hasMatch()
                                     : actual.at(i) == e,
                 qPrintable(actual.at(i)));
    }
    // Receivers that sent nothing are not shown.
    QVERIFY(!lines.contains("Навигационный приемник 1") && !lines.contains("Навигационный приемник 3"));
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
    QCOMPARE(group(TelemetryReport::lines(state), "SIM 1"),
             QStringList({"SIM 1", "  Состояние: Сим отсутсвует", "  Слот: Сим отсутствует",
                          "  Регистрация: ", "  Уровень сигнала: 17", "  Оператор: 25001"}));
}

void tst_TelemetryReport::rawLines_onlyReceivedRecordsByKindThenIndex() {
    kd::ControlInfoConfiguration state;
    QVERIFY(TelemetryReport::lines(state).isEmpty() && TelemetryReport::rawLines(state).isEmpty());
    QVERIFY(state.setRecord(kd::telemetry::GsmRegistration, 1, QByteArray(36, '\x01')));
    QVERIFY(state.setRecord(kd::telemetry::SimStates, 2, QByteArray::fromHex("0800")));
    QVERIFY(state.setRecord(kd::telemetry::DeviceState, 0, QByteArray(72, '\xAB')));
    QVERIFY(state.setRecord(kd::telemetry::SimStates, 0, QByteArray::fromHex("0100")));
    QVERIFY(state.setRecord(kd::telemetry::Clock, 0, QByteArray::fromHex("00e1f505")));
    const QStringList expected{
        "kind=10 index=0 " + QString("ab").repeated(72),
        "kind=11 index=0 00e1f5050000", // a short block is padded to the record size
        "kind=23 index=0 0100",
        "kind=23 index=2 0800",
        "kind=24 index=1 " + QString("01").repeated(36),
    };
    QCOMPARE(TelemetryReport::rawLines(state), expected);
}

QTEST_GUILESS_MAIN(tst_TelemetryReport)
#include "tst_telemetryreport.moc"
