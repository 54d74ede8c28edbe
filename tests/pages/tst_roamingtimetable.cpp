#include "pages/RoamingTimetable.h"

#include <QtTest>

class tst_RoamingTimetable : public QObject {
    Q_OBJECT

private slots:
    void slotToWordsAndBack_data() {
        QTest::addColumn<int>("day");
        QTest::addColumn<int>("slot");
        QTest::addColumn<quint64>("low");
        QTest::addColumn<quint64>("high");
        QTest::newRow("Monday 00:00") << 0 << 0 << quint64(1) << quint64(0);
        QTest::newRow("Monday 22:30") << 0 << 15 << (quint64(1) << 15) << quint64(0);
        QTest::newRow("Tuesday 00:00") << 1 << 0 << (quint64(1) << 16) << quint64(0);
        QTest::newRow("Thursday 22:30, top of low word") << 3 << 15 << (quint64(1) << 63) << quint64(0);
        QTest::newRow("Friday 00:00, bottom of high word") << 4 << 0 << quint64(0) << quint64(1);
        QTest::newRow("Sunday 22:30, last day bit 111") << 6 << 15 << quint64(0) << (quint64(1) << 47);
        QTest::newRow("day -1 ignored") << -1 << 0 << quint64(0) << quint64(0);
        QTest::newRow("day 7 ignored") << 7 << 0 << quint64(0) << quint64(0);
        QTest::newRow("slot -1 ignored") << 0 << -1 << quint64(0) << quint64(0);
        QTest::newRow("slot 16 ignored") << 0 << 16 << quint64(0) << quint64(0);
    }
    void slotToWordsAndBack() {
        QFETCH(int, day);
        QFETCH(int, slot);
        QFETCH(quint64, low);
        QFETCH(quint64, high);
        RoamingTimetable t;
        t.setSlot(day, slot, true);
        QCOMPARE(t.low(), low);
        QCOMPARE(t.high(), high);
        const bool inGrid = low | high;
        QCOMPARE(t.slot(day, slot), inGrid);
        QCOMPARE(RoamingTimetable::bitIndex(day, slot), inGrid ? day * 16 + slot : -1);

        const RoamingTimetable back(low, high);
        for (int d = 0; d < RoamingTimetable::Days; ++d) {
            for (int s = 0; s < RoamingTimetable::SlotsPerDay; ++s)
                QCOMPARE(back.slot(d, s), d == day && s == slot);
        }
    }

    void slotStart_data() {
        QTest::addColumn<int>("slot");
        QTest::addColumn<QString>("start");
        QTest::newRow("first") << 0 << "00:00";
        QTest::newRow("fifth") << 5 << "07:30";
        QTest::newRow("last") << 15 << "22:30";
        QTest::newRow("end of day") << 16 << "24:00";
    }
    void slotStart() {
        QFETCH(int, slot);
        QFETCH(QString, start);
        QCOMPARE(RoamingTimetable::slotStart(slot), start);
    }

    void setAll_keepsBitsOfNoDay_data() {
        QTest::addColumn<quint64>("highBefore");
        QTest::addColumn<bool>("on");
        QTest::addColumn<quint64>("low");
        QTest::addColumn<quint64>("high");
        QTest::newRow("all on, reserved clear")
            << quint64(0) << true << ~quint64(0) << quint64(0x0000FFFFFFFFFFFF);
        QTest::newRow("all off, reserved set")
            << ~quint64(0) << false << quint64(0) << quint64(0xFFFF000000000000);
        QTest::newRow("all on, reserved partly set")
            << quint64(0x8001000000000000) << true << ~quint64(0) << quint64(0x8001FFFFFFFFFFFF);
    }
    void setAll_keepsBitsOfNoDay() {
        QFETCH(quint64, highBefore);
        QFETCH(bool, on);
        QFETCH(quint64, low);
        QFETCH(quint64, high);
        RoamingTimetable t(on ? 0 : ~quint64(0), highBefore);
        t.setAll(on);
        QCOMPARE(t.low(), low);
        QCOMPARE(t.high(), high);
    }
};

QTEST_MAIN(tst_RoamingTimetable)
#include "tst_roamingtimetable.moc"
