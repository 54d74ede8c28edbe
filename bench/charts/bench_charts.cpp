// Usage:
//   bench_charts [--rounds N]         feeds N telemetry rounds one second apart (an hour by default)
//                                     to the window with the "Графики" page shown, then prints the
//                                     resident memory; the limit is 80 MB.
//   bench_charts --port PTY --screenshot FILE [--seconds N]
//                                     polls a (virtual) tracker for N seconds (60), then saves a
//                                     picture of the window showing the charts.
#include "app/MainWindow.h"
#include "app/TelemetryTools.h"
#include "bench/ResidentMemory.h"

#include "pages/TelemetryChartsPage.h"

#include "Devices/ControlInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QListWidget>
#include <QTextStream>
#include <QTimer>
#include <cmath>

namespace {

constexpr qint64 LimitKiB = 80 * 1024;

void showCharts(MainWindow &window) {
    auto *list = window.findChild<QListWidget *>(QStringLiteral("listWidget"));
    list->setCurrentRow(list->count() - 1);
}

// Telemetry that moves like a vehicle's: the supply sags at a start, the fix comes and goes.
void fillRound(kd::ControlInfoConfiguration *state, int second) {
    kd::DeviceStateRecord device;
    device.supplyVoltage = quint16(12600 + 400 * std::sin(second / 20.0) - (second % 300 < 5 ? 2500 : 0));
    device.batteryVoltage = quint16(4100 - second % 600);
    state->setRecord(kd::telemetry::DeviceState, 0, device.toBytes());
    for (int r = 0; r < 3; ++r) {
        kd::NavReceiverRecord rx;
        rx.fixMode = (second / 40 + r) % 5 == 0 ? 0 : 3;
        rx.satellites = quint8(rx.fixMode ? 6 + (second / 7 + r) % 7 : 0);
        state->setRecord(kd::telemetry::NavReceivers, r, rx.toBytes());
    }
    for (int s = 0; s < 2; ++s) {
        kd::GsmRegistrationRecord g;
        g.signalLevel = quint8(14 + (second / 3 + 5 * s) % 12);
        state->setRecord(kd::telemetry::GsmRegistration, s, g.toBytes());
    }
    kd::FuelSensorsRecord fuel;
    fuel.onlineMask = 0x3;
    fuel.level[0] = quint32(3000 - second / 2);
    fuel.level[1] = quint32(2800 - second / 3);
    state->setRecord(kd::telemetry::FuelSensors, 0, fuel.toBytes());
    for (int a = 0; a < 3; ++a) {
        kd::AnalogInputRecord in;
        in.voltage = quint32(5000 + 1000 * std::sin(second / 15.0 + a));
        state->setRecord(kd::telemetry::AnalogInputs, a, in.toBytes());
    }
    kd::NavSummaryRecord nav;
    nav.speed = quint16(std::max(0.0, 600 + 300 * std::sin(second / 50.0)));
    state->setRecord(kd::telemetry::NavSummary, 0, nav.toBytes());
}

int hour(int rounds, QTextStream &out) {
    MainWindow::Options options;
    options.connectAtStart = false;
    options.updateCheckAtStart = false;
    MainWindow window(options);
    window.resize(1280, 800);
    window.show();
    showCharts(window);
    QCoreApplication::processEvents();
    auto *tools = window.findChild<TelemetryTools *>();
    const qint64 before = residentKiB();
    const qint64 start = QDateTime::currentMSecsSinceEpoch();
    QElapsedTimer timer;
    timer.start();
    qint64 peak = before;
    for (int i = 0; i < rounds; ++i) {
        fillRound(window.configuration()->controlInfo(), i);
        tools->addRound(start + qint64(i) * 1000);
        QCoreApplication::processEvents();
        if (i % 60 == 0)
            peak = qMax(peak, residentKiB());
    }
    const qint64 after = residentKiB();
    peak = qMax(peak, after);
    out << "rounds: " << rounds << " (" << rounds / 60.0 << " min of 1 s polling) in " << timer.elapsed()
        << " ms\n"
        << "resident before: " << before / 1024.0 << " MB, after: " << after / 1024.0
        << " MB, peak: " << peak / 1024.0 << " MB, limit " << LimitKiB / 1024
        << " MB: " << (peak < LimitKiB ? "ok" : "OVER") << '\n';
    return peak < LimitKiB ? 0 : 1;
}

int screenshot(const QString &port, const QString &file, int seconds) {
    MainWindow::Options options;
    options.portName = port;
    options.updateCheckAtStart = false;
    MainWindow window(options);
    window.resize(1280, 800);
    window.show();
    showCharts(window);
    // A minute of data fills the one-minute span.
    window.findChild<TelemetryChartsPage *>()->setSpanMinutes(1);
    int status = 1;
    QTimer::singleShot(seconds * 1000, &window, [&] {
        status = window.grab().save(file) ? 0 : 1;
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    return status;
}

} // namespace

int main(int argc, char *argv[]) {
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOptions(
        {{QStringLiteral("rounds"), QStringLiteral("Rounds to feed."), QStringLiteral("n"),
          QStringLiteral("3600")},
         {QStringLiteral("port"), QStringLiteral("Tracker port."), QStringLiteral("path")},
         {QStringLiteral("screenshot"), QStringLiteral("Picture file."), QStringLiteral("file")},
         {QStringLiteral("seconds"), QStringLiteral("Polling time."), QStringLiteral("n"),
          QStringLiteral("60")}});
    parser.process(app);
    QTextStream out(stdout);
    if (parser.isSet(QStringLiteral("screenshot")))
        return screenshot(parser.value(QStringLiteral("port")), parser.value(QStringLiteral("screenshot")),
                          parser.value(QStringLiteral("seconds")).toInt());
    return hour(parser.value(QStringLiteral("rounds")).toInt(), out);
}
