#include "tools/devsim/TrackerModel.h"

#include <QtTest>

using namespace kd;

class tst_TrackerModel : public QObject {
    Q_OBJECT
private slots:
    void fixComesAndGoes_data();
    void fixComesAndGoes();
    void positionMovesOnlyWithFix();
    void courseStaysBelow360DegreesForHours();
    void clockAndCountersTickWithElapsedTime();
    void registrationPassesThroughSearchToHome();
    void fuelFallsOnlyForFittedSensors();
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
    QCOMPARE(int(m.navSummary().fixMode), fixMode);
    QCOMPARE(rx.day != 0, dateKnown);
    QVERIFY(fixMode == 3 ? rx.satellites >= 5 : fixMode != 0 || rx.satellites < 3);
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
    QCOMPARE(int(m.receiver(0).latDegrees), 55);

    m.setElapsed(62000);
    const NavSummaryRecord lost = m.navSummary();
    QCOMPARE(lost.latitude, 0);
    QCOMPARE(lost.speed, quint16(0));
    QCOMPARE(lost.fixLostCount, 1u);
}

void tst_TrackerModel::courseStaysBelow360DegreesForHours() {
    TrackerModel m;
    m.setElapsed(600000LL * 18 + 150000);      // three hours and a quarter lap: north of the centre
    QCOMPARE(int(m.receiver(0).course), 2700); // heading west
    for (qint64 s = 0; s < 24 * 3600; s += 977) {
        m.setElapsed(s * 1000);
        if (m.hasFix())
            QVERIFY2(m.receiver(0).course < 3600, qPrintable(QString::number(s)));
    }
}

void tst_TrackerModel::clockAndCountersTickWithElapsedTime() {
    TrackerModel m(1700000000);
    m.setElapsed(0);
    QCOMPARE(m.clock().unixTime, 1700000000u);
    QCOMPARE(m.clock().syncSource, quint16(ClockRecord::NotSynced));
    const LogicInputRecord a0 = m.logicInput(0), a1 = m.logicInput(1); // logic, universal counter
    m.setElapsed(16000);
    QCOMPARE(m.clock().unixTime, 1700000016u);
    QCOMPARE(m.clock().syncSource, quint16(ClockRecord::Navigation));
    QCOMPARE(m.deviceState().uptime, 16u);
    QVERIFY(m.logicInput(0).value != a0.value); // the level toggles every 15 s
    QVERIFY(m.logicInput(1).counter > a1.counter);

    m.setElapsed(100000);
    QVERIFY(m.deviceState().memoryUsed > 1000);
    m.clearMemory();
    QCOMPARE(m.deviceState().memoryUsed, 0u);
    m.setElapsed(130000);
    QCOMPARE(m.deviceState().memoryUsed, 3u);
}

void tst_TrackerModel::registrationPassesThroughSearchToHome() {
    TrackerModel m;
    const QVector<int> seconds{1, 5, 20, 112}; // 104 s after registration: a roaming spell
    const QVector<GsmRegistration> states{GsmRegistration::NotRegistered, GsmRegistration::Searching,
                                          GsmRegistration::Home, GsmRegistration::Roaming};
    for (int i = 0; i < seconds.size(); ++i) {
        m.setElapsed(seconds.at(i) * 1000);
        QCOMPARE(m.gsm(0).registration, quint8(states.at(i)));
    }
    m.setElapsed(20000);
    QCOMPARE(m.gsm(0).operatorCode, 25001u);
}

void tst_TrackerModel::fuelFallsOnlyForFittedSensors() {
    TrackerModel m; // sensors 0 and 1 fitted
    m.setElapsed(8000);
    const FuelSensorsRecord a = m.fuel();
    QCOMPARE(a.onlineMask, quint16(0x3));
    QVERIFY(a.level[0] > 0 && a.level[1] > 0);
    QCOMPARE(a.level[2], 0u);
    m.setElapsed(400000);
    QVERIFY(m.fuel().level[0] < a.level[0]);
}

QTEST_GUILESS_MAIN(tst_TrackerModel)
#include "tst_trackermodel.moc"
