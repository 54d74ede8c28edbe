#include "pages/RoamingTimetable.h"
#include "pages/RoamingTimetableGrid.h"
#include "pages/roumingShedulerDialog.h"

#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

// The timetable's words, the painted grid and the dialog around it.
class tst_RoamingTimetable : public QObject {
    Q_OBJECT

private:
    static void mouse(QWidget *w, QEvent::Type type, const QPoint &pos) {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent e(type, pos, w->mapToGlobal(pos), button, held, Qt::NoModifier);
        QApplication::sendEvent(w, &e);
    }

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

    void slotStart() {
        QCOMPARE((QStringList{RoamingTimetable::slotStart(0), RoamingTimetable::slotStart(5),
                              RoamingTimetable::slotStart(15), RoamingTimetable::slotStart(16)}),
                 (QStringList{"00:00", "07:30", "22:30", "24:00"}));
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

    void cellAt_mapsEveryCellBack() {
        RoamingTimetableGrid grid;
        for (int d = 0; d < RoamingTimetable::Days; ++d) {
            for (int s = 0; s < RoamingTimetable::SlotsPerDay; ++s)
                QCOMPARE(grid.cellAt(grid.cellRect(d, s).center()), qMakePair(d, s));
        }
        QCOMPARE(grid.cellAt(QPoint(0, 0)), qMakePair(-1, -1));
        const QRect last = grid.cellRect(6, 15);
        QCOMPARE(grid.cellAt(last.bottomRight() + QPoint(2, 2)), qMakePair(-1, -1));
    }

    void pressAndDrag_data() {
        QTest::addColumn<quint64>("lowBefore");
        QTest::addColumn<quint64>("lowAfter");
        QTest::newRow("drag over empty cells sets them") << quint64(0) << quint64(0x1E);
        QTest::newRow("drag from a set cell clears") << quint64(0xFF) << quint64(0xE1);
        // The first cell decides: set cells met later stay set.
        QTest::newRow("mixed row painted on") << quint64(0x08) << quint64(0x1E);
    }
    void pressAndDrag() {
        QFETCH(quint64, lowBefore);
        QFETCH(quint64, lowAfter);
        RoamingTimetableGrid grid;
        grid.setTimetable(RoamingTimetable(lowBefore, 0));
        QSignalSpy spy(&grid, &RoamingTimetableGrid::timetableChanged);

        // Monday, slots 1 to 4, passing slot 2 twice.
        mouse(&grid, QEvent::MouseButtonPress, grid.cellRect(0, 1).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 2).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 2).topLeft() + QPoint(1, 1));
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 3).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 4).center());
        mouse(&grid, QEvent::MouseButtonRelease, grid.cellRect(0, 4).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 5).center()); // after release: no painting

        QCOMPARE(grid.timetable().low(), lowAfter);
        QCOMPARE(grid.timetable().high(), quint64(0));
        QVERIFY(spy.count() >= 1);
    }

    void dialog_clearAndMarkAllKeepReservedBits() {
        roumingShedulerDialog dialog(RoamingTimetable(0x5, 0xF000000000000000), 1);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Расписание роуминга SIM 2")); // the SIM counts from 1
        QPushButton *all = nullptr, *none = nullptr;
        for (QPushButton *b : dialog.findChildren<QPushButton *>()) {
            if (b->text() == QStringLiteral("Отметить все"))
                all = b;
            if (b->text() == QStringLiteral("Очистить"))
                none = b;
        }
        QVERIFY(all && none);
        none->click();
        QCOMPARE(dialog.timetable(), RoamingTimetable(0, 0xF000000000000000));
        all->click();
        QCOMPARE(dialog.timetable(), RoamingTimetable(~quint64(0), 0xF000FFFFFFFFFFFF));
    }

    // Each slot's start is written centred over its column; the last one ("22:30") is wider than a
    // column and must still lie inside the widget.
    void slotLabels_fitInsideTheWidget() {
        RoamingTimetableGrid grid;
        const int last = RoamingTimetable::SlotsPerDay - 1;
        for (int slot : {0, last}) {
            const QRect cell = grid.cellRect(0, slot);
            const int half =
                (grid.fontMetrics().horizontalAdvance(RoamingTimetable::slotStart(slot)) + 1) / 2;
            const int centre = cell.left() + cell.width() / 2;
            QVERIFY2(centre + half <= grid.sizeHint().width(),
                     qPrintable(QStringLiteral("%1 > %2").arg(centre + half).arg(grid.sizeHint().width())));
            QVERIFY(centre - half >= 0);
        }
    }
};

QTEST_MAIN(tst_RoamingTimetable)
#include "tst_roamingtimetable.moc"
