#include "TrackerModel.h"

#include <Devices/ControlInfoConfiguration.h>

#include <QtTest>

using namespace kd;

class tst_TrackerModel : public QObject {
    Q_OBJECT
private slots:
    void fixComesAndGoes_data();
    void fixComesAndGoes();
    void positionMovesOnlyWithFix();
    void courseFollowsTheRingForHours();
    void clockTicksWithElapsedTime();
    void supplyVoltageDrifts();
    void serverStateCycles();
    void disabledServerStaysDisconnected();
    void registrationPassesThroughSearchToHome();
    void logicInputsFollowTheirFunction();
    void fuelLevelsOnlyForFittedSensors();
    void clearMemoryRestartsMemoryCount();
    void telemetryBlockSizes_data();
    void telemetryBlockSizes();
    void telemetryDecodesOnTheConfiguratorSide();
};

void tst_TrackerModel::fixComesAndGoes_data() {
    QTest::addColumn<int>("second");
    QTest::addColumn<int>("fixMode");
    QTest::addColumn<bool>("dateKnown");
    QTest::newRow("searching after power-on") << 5 << 0 << false;
    QTest::newRow("first 2D fix") << 13 << 2 << true;
    QTest::newRow("3D fix") << 30 << 3 << true;
    QTest::newRow("lost at the next minute") << 65 << 0 << true;
    QTest::newRow("back in the next minute") << 90 << 3 << true;
}

void tst_TrackerModel::fixComesAndGoes() {
    QFETCH(int, second);
    QFETCH(int, fixMode);
    QFETCH(bool, dateKnown);
    TrackerModel m;
    m.setElapsed(second * 1000);
    const NavReceiverRecord rx = m.receiver(0);
    QCOMPARE(int(rx.fixMode), fixMode);
    QCOMPARE(rx.hasFix(), fixMode != 0);
    QCOMPARE(int(m.navSummary().fixMode), fixMode);
    QCOMPARE(rx.day != 0, dateKnown);
    if (fixMode == 3)
        QVERIFY(rx.satellites >= 5);
    if (fixMode == 0)
        QVERIFY(rx.satellites < 3);
    QVERIFY(rx.satellitesInView >= rx.satellites);
    const bool navigationActive = m.deviceState().activityFlags & DeviceStateRecord::NavigationActive;
    QCOMPARE(navigationActive, fixMode != 0);
}

void tst_TrackerModel::positionMovesOnlyWithFix() {
    TrackerModel m;
    m.setElapsed(20000);
    const NavSummaryRecord a = m.navSummary();
    m.setElapsed(30000);
    const NavSummaryRecord b = m.navSummary();
    QVERIFY(a.latitude != b.latitude || a.longitude != b.longitude);
    QVERIFY(qAbs(a.latitude - 557558000) < 1000000); // on the ring round the centre
    QVERIFY(b.speed > 300);
    QVERIFY(b.odometer > a.odometer);
    const NavReceiverRecord rx = m.receiver(0);
    QCOMPARE(int(rx.latDegrees), 55);
    QCOMPARE(int(rx.lonDegrees), 37);
    QVERIFY(rx.latMinutes < 6000000u);

    m.setElapsed(62000);
    const NavSummaryRecord lost = m.navSummary();
    QCOMPARE(lost.latitude, 0);
    QCOMPARE(lost.speed, quint16(0));
    QCOMPARE(m.receiver(0).speed, quint16(0));
    QCOMPARE(lost.fixLostCount, 1u);
}

void tst_TrackerModel::courseFollowsTheRingForHours() {
    TrackerModel m;
    m.setElapsed(600000LL * 18 + 150000); // three hours and a quarter lap: north of the centre
    QCOMPARE(int(m.fixMode()), 3);
    QCOMPARE(int(m.receiver(0).course), 2700); // heading west
    QVERIFY(m.navSummary().latitude > 557558000 + 80000);
    for (qint64 s = 0; s < 24 * 3600; s += 977) {
        m.setElapsed(s * 1000);
        if (m.hasFix())
            QVERIFY2(m.receiver(0).course < 3600, qPrintable(QString::number(s)));
    }
}

void tst_TrackerModel::clockTicksWithElapsedTime() {
    TrackerModel m(1700000000);
    m.setElapsed(0);
    QCOMPARE(m.clock().unixTime, 1700000000u);
    QCOMPARE(m.clock().syncSource, quint16(ClockRecord::NotSynced));
    m.setElapsed(42500);
    QCOMPARE(m.clock().unixTime, 1700000042u);
    QCOMPARE(m.clock().syncSource, quint16(ClockRecord::Navigation));
    QCOMPARE(m.deviceState().uptime, 42u);
}

void tst_TrackerModel::supplyVoltageDrifts() {
    TrackerModel m;
    QSet<quint16> seen;
    for (int s = 0; s < 120; s += 10) {
        m.setElapsed(s * 1000);
        const quint16 v = m.deviceState().supplyVoltage;
        QVERIFY2(v > 11000 && v < 14000, qPrintable(QString::number(v)));
        seen.insert(v);
    }
    QVERIFY(seen.size() > 5);
}

void tst_TrackerModel::serverStateCycles() {
    TrackerModel m;
    QSet<quint8> states;
    for (int s = 0; s < 200; ++s) {
        m.setElapsed(s * 1000);
        states.insert(m.server(0).state);
    }
    QCOMPARE(states, (QSet<quint8>{quint8(ServerState::Disconnected), quint8(ServerState::Connecting),
                                   quint8(ServerState::Connected)}));
    m.setElapsed(50000);
    const ServerStateRecord r = m.server(0);
    QCOMPARE(r.state, quint8(ServerState::Connected));
    QCOMPARE(r.port, quint16(20629));
    QCOMPARE(r.enabled, quint8(1));
    QVERIFY(r.ip[0] != 0);
    QCOMPARE(m.server(1).enabled, quint8(0));
}

void tst_TrackerModel::disabledServerStaysDisconnected() {
    TrackerModel m;
    TrackerModel::Setup setup = m.setup();
    setup.servers = {TrackerModel::ServerSetup{false, QStringLiteral("10.1.2.3"), 5000, 1}};
    m.setSetup(setup);
    m.setElapsed(50000);
    const ServerStateRecord r = m.server(0);
    QCOMPARE(r.state, quint8(ServerState::Disconnected));
    QCOMPARE(r.protocol, quint8(ServerProtocol::WialonCombine));
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(r.ip), 4), QByteArray("\x0a\x01\x02\x03", 4));
}

void tst_TrackerModel::registrationPassesThroughSearchToHome() {
    TrackerModel m;
    m.setElapsed(1000);
    QCOMPARE(m.gsm(0).registration, quint8(GsmRegistration::NotRegistered));
    m.setElapsed(5000);
    QCOMPARE(m.gsm(0).registration, quint8(GsmRegistration::Searching));
    m.setElapsed(20000);
    QCOMPARE(m.gsm(0).registration, quint8(GsmRegistration::Home));
    QCOMPARE(m.gsm(0).operatorCode, 25001u);
    m.setElapsed(112000); // 104 s after registration: a roaming spell
    QCOMPARE(m.gsm(0).registration, quint8(GsmRegistration::Roaming));
    QCOMPARE(m.gsm(0).slotState, quint8(SimSlotState::Active));
    QCOMPARE(m.gsm(1).slotState, quint8(SimSlotState::Inserted));
    QCOMPARE(m.gsm(2).slotState, quint8(SimSlotState::Absent));
    QCOMPARE(m.sim(0).code(), quint8(SimState::Ready));
    QCOMPARE(m.sim(2).code(), quint8(SimState::Absent));
    m.setElapsed(1000);
    QCOMPARE(m.sim(1).code(), quint8(SimState::WaitPin));
}

void tst_TrackerModel::logicInputsFollowTheirFunction() {
    TrackerModel m; // input 0 logic, input 1 universal counter
    m.setElapsed(1000);
    const LogicInputRecord a0 = m.logicInput(0);
    const LogicInputRecord a1 = m.logicInput(1);
    m.setElapsed(16000);
    const LogicInputRecord b0 = m.logicInput(0);
    const LogicInputRecord b1 = m.logicInput(1);
    QCOMPARE(a0.mode, quint16(InputMode::Logic));
    QVERIFY(a0.value != b0.value); // the level toggles every 15 s
    QCOMPARE(a1.mode, quint16(InputMode::UniversalCounter));
    QVERIFY(b1.counter > a1.counter);

    TrackerModel::Setup setup = m.setup();
    setup.logicFunctions = {0, 2};
    m.setSetup(setup);
    QCOMPARE(m.logicInput(0).mode, quint16(InputMode::Off));
    QCOMPARE(m.logicInput(0).value, 0u);
    QCOMPARE(m.logicInput(1).mode, quint16(InputMode::Frequency));
    QVERIFY(m.logicInput(1).value >= 40 && m.logicInput(1).value <= 60);
}

void tst_TrackerModel::fuelLevelsOnlyForFittedSensors() {
    TrackerModel m; // sensors 0 and 1 fitted
    m.setElapsed(8000);
    const FuelSensorsRecord a = m.fuel();
    QCOMPARE(a.onlineMask, quint16(0x3));
    QVERIFY(a.level[0] > 0 && a.level[1] > 0);
    QCOMPARE(a.level[2], 0u);
    m.setElapsed(400000);
    QVERIFY(m.fuel().level[0] < a.level[0]);
}

void tst_TrackerModel::clearMemoryRestartsMemoryCount() {
    TrackerModel m;
    m.setElapsed(100000);
    QVERIFY(m.deviceState().memoryUsed > 1000);
    m.clearMemory();
    QCOMPARE(m.deviceState().memoryUsed, 0u);
    m.setElapsed(130000);
    QCOMPARE(m.deviceState().memoryUsed, 3u);
}

void tst_TrackerModel::telemetryBlockSizes_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("size");
    QTest::newRow("9 announced only") << 9 << 8;
    QTest::newRow("10 device state") << 10 << DeviceStateRecord::Size;
    QTest::newRow("11 clock") << 11 << ClockRecord::Size;
    QTest::newRow("12 announced only") << 12 << 8;
    QTest::newRow("14 three receivers") << 14 << 3 * NavReceiverRecord::Size;
    QTest::newRow("15 three servers") << 15 << 3 * ServerStateRecord::Size;
    QTest::newRow("16 navigation") << 16 << NavSummaryRecord::Size;
    QTest::newRow("17 three analog") << 17 << 3 * AnalogInputRecord::Size;
    QTest::newRow("18 two logic") << 18 << 2 * LogicInputRecord::Size;
    QTest::newRow("19 fuel") << 19 << FuelSensorsRecord::Size;
    QTest::newRow("21 words") << 21 << StateWordsRecord::Size;
    QTest::newRow("22 exactly eight") << 22 << 8;
    QTest::newRow("23 three SIMs") << 23 << 3 * SimStateRecord::Size;
    QTest::newRow("24 three registrations") << 24 << 3 * GsmRegistrationRecord::Size;
    QTest::newRow("13 announced only") << 13 << 8;
    QTest::newRow("5 not reported") << 5 << -1;
    QTest::newRow("25 not reported") << 25 << -1;
}

void tst_TrackerModel::telemetryBlockSizes() {
    QFETCH(int, kind);
    QFETCH(int, size);
    TrackerModel m;
    m.setElapsed(33000);
    const QByteArray data = m.telemetry(kind);
    if (size < 0)
        QVERIFY(data.isNull());
    else
        QCOMPARE(data.size(), size);
}

void tst_TrackerModel::telemetryDecodesOnTheConfiguratorSide() {
    TrackerModel m;
    m.setElapsed(30000);
    ControlInfoConfiguration info;
    QByteArray payload("\x82\x0e\x00\x00", 4);
    QVERIFY(info.decode(payload + m.telemetry(14)));
    const NavReceiverRecord stored = NavReceiverRecord::fromBytes(info.value()->record(14, 0));
    QCOMPARE(stored.toBytes(), m.receiver(0).toBytes());
    QCOMPARE(int(stored.fixMode), 3);
}

QTEST_GUILESS_MAIN(tst_TrackerModel)
#include "tst_trackermodel.moc"
