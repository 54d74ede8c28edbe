#include "pages/TelemetryChartsPage.h"
#include "support/TelemetryHistory.h"

#include <QApplication>
#include <QtCharts/QChart>
#include <QtCharts/QDateTimeAxis>
#include <QtCharts/QLineSeries>
#include <QtTest>
#include <cmath>

using namespace QtCharts;

namespace {
constexpr qint64 Start = 1700000000000; // ms since the epoch
constexpr int Minutes = 20;

int column(const QString &key) {
    const QVector<TelemetrySeries::Column> &columns = TelemetrySeries::columns();
    for (int i = 0; i < columns.size(); ++i) {
        if (columns[i].key == key)
            return i;
    }
    return -1;
}

// One round a second: the supply voltage rises by 1 mV a round, everything else unknown.
void addRounds(TelemetryHistory &history, int from, int count) {
    QVector<double> values(TelemetrySeries::columns().size(), NAN);
    for (int s = from; s < from + count; ++s) {
        values[column("supply_v")] = 12.0 + s / 1000.0;
        history.add(Start + qint64(s) * 1000, values);
    }
}

qint64 shownFrom(const TelemetryChartsPage &page, TelemetrySeries::Group group) {
    const auto axes = page.chart(group)->axes(Qt::Horizontal);
    return qobject_cast<QDateTimeAxis *>(axes.value(0))->min().toMSecsSinceEpoch();
}
} // namespace

class TestTelemetryChartsPage : public QObject {
    Q_OBJECT
private slots:
    void followsPausesAndSwitches();
};

// The page draws the last span of the rings, stops following while paused, and a switched-off or a
// never-reported series draws nothing.
void TestTelemetryChartsPage::followsPausesAndSwitches() {
    TelemetryHistory history(TelemetrySeries::columns().size());
    addRounds(history, 0, Minutes * 60);
    TelemetryChartsPage page(&history);
    page.show();
    QLineSeries *supply = page.series("supply_v");
    QVERIFY(supply);

    const qint64 last = Start + qint64(Minutes * 60 - 1) * 1000;
    QCOMPARE(page.spanMinutes(), TelemetryChartsPage::DefaultSpanMinutes);
    QCOMPARE(page.shownUntil(), last);
    QCOMPARE(supply->count(), TelemetryChartsPage::DefaultSpanMinutes * 60 + 1);
    QCOMPARE(supply->at(supply->count() - 1), QPointF(last, 12.0 + (Minutes * 60 - 1) / 1000.0));
    QCOMPARE(shownFrom(page, TelemetrySeries::Group::Voltage), last - 10 * 60 * 1000);

    page.setSpanMinutes(1);
    page.refresh();
    QCOMPARE(supply->count(), 61);

    page.setPaused(true);
    addRounds(history, Minutes * 60, 5);
    page.refresh();
    QCOMPARE(page.shownUntil(), last);
    page.setPaused(false);
    QCOMPARE(page.shownUntil(), last + 5000);

    QCOMPARE(page.series("battery_v")->count(), 0);

    page.setSeriesVisible("supply_v", false);
    page.refresh();
    QCOMPARE(supply->count(), 0);
    page.setSeriesVisible("supply_v", true);
    page.refresh();
    QCOMPARE(supply->count(), 61);
}

QTEST_MAIN(TestTelemetryChartsPage)
#include "tst_telemetrychartspage.moc"
