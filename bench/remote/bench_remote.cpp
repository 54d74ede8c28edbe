// Starts the virtual tracker as a configuration server with a round-trip latency and on a pseudo-terminal
// paced like the USB line, and times read-all, write-all and one telemetry round through the protocol
// library. Each time is set beside its floor: one round trip of the latency plus the time the bytes need
// on the line (the busier direction: requests and answers travel at once).
#include "Devices/VantorConfiguration.h"
#include "protocol/Connection.h"
#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/SerialConnection.h"
#include "protocol/TcpConnection.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QProcess>
#include <QTextStream>
#include <QTimer>

#include <functional>
#include <memory>

#ifndef TAVREL_DEVSIM_PATH
#define TAVREL_DEVSIM_PATH "tavrel-devsim"
#endif

namespace {

constexpr int BitsPerByte = 10;
const QString Imei = QStringLiteral("863071014478127");

struct Setup {
    QString name;
    QStringList devsimArgs;
    int latencyMs = 0;
    int baud = 0; // 0: the line adds no time of its own
};

struct Round {
    qint64 elapsedMs = 0;
    // Both directions at once: the line needs the time of the busier one.
    qint64 bytesOut = 0;
    qint64 bytesIn = 0;
    bool complete = false;
};

// Runs one workflow until the session is idle again (or the limit passes).
Round run(Device *device, DeviceWorkflows &workflows, const std::function<void(DeviceWorkflows &)> &workflow,
          int limitMs) {
    Round r;
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
    const auto done = QObject::connect(device, &Device::idle, &loop, &QEventLoop::quit);
    const auto out =
        QObject::connect(device, &Device::frameSent, [&r](const QByteArray &f) { r.bytesOut += f.size(); });
    const auto in = QObject::connect(device, &Device::chunkReceived,
                                     [&r](const QByteArray &c) { r.bytesIn += c.size(); });
    QElapsedTimer clock;
    clock.start();
    limit.start(limitMs);
    workflow(workflows);
    if (!device->isIdle())
        loop.exec();
    QObject::disconnect(done);
    QObject::disconnect(out);
    QObject::disconnect(in);
    r.elapsedMs = clock.elapsed();
    r.complete = limit.isActive();
    return r;
}

// Waits for the first line the tracker prints: its pseudo-terminal or its address.
QString startDevsim(QProcess &devsim, const QString &program, const QStringList &args) {
    devsim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    devsim.start(program, args);
    if (!devsim.waitForStarted(5000) || !devsim.waitForReadyRead(5000))
        return QString();
    return QString::fromLocal8Bit(devsim.readLine()).trimmed();
}

Connection *connectTo(const QString &address, bool remote) {
    if (!remote)
        return new SerialConnection(address);
    const int colon = address.lastIndexOf(QLatin1Char(':'));
    return new TcpConnection(address.left(colon), quint16(address.mid(colon + 1).toUInt()), Imei);
}

bool waitConnected(Connection *link) {
    if (link->state() == Connection::Connected)
        return true;
    QEventLoop loop;
    QTimer::singleShot(5000, &loop, &QEventLoop::quit);
    QObject::connect(link, &Connection::connected, &loop, &QEventLoop::quit);
    loop.exec();
    return link->state() == Connection::Connected;
}

} // namespace

int main(int argc, char *argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Times the workflows over a slow remote link and a USB line."));
    parser.addHelpOption();
    const QCommandLineOption devsimOption("devsim", "The virtual tracker program.", "path",
                                          TAVREL_DEVSIM_PATH);
    const QCommandLineOption roundsOption("rounds", "Rounds of each workflow (default 3).", "n", "3");
    const QCommandLineOption latencyOption("latency", "Round trip of the remote link in ms (default 300).",
                                           "ms", "300");
    const QCommandLineOption windowOption("window", "Requests on the line at once (default: the session's).",
                                          "n", QString::number(Device::DefaultWindow));
    parser.addOptions({devsimOption, roundsOption, latencyOption, windowOption});
    parser.process(app);
    const int rounds = qMax(1, parser.value(roundsOption).toInt());
    const int latency = qMax(0, parser.value(latencyOption).toInt());
    const int window = qMax(1, parser.value(windowOption).toInt());

    // The exchange log would swamp the measurements.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\ntavrel.*.debug=false"));

    const Setup setups[] = {
        {QStringLiteral("remote, %1 ms").arg(latency),
         {"--tcp", "0", "--latency", QString::number(latency)},
         latency,
         0},
        {QStringLiteral("USB, 115200 baud"), {"--pty", "--baud", "115200"}, 0, 115200},
    };
    const struct {
        const char *name;
        std::function<void(DeviceWorkflows &)> run;
    } workflows[] = {{"read-all", [](DeviceWorkflows &w) { w.readAll(); }},
                     {"write-all", [](DeviceWorkflows &w) { w.writeAll(); }},
                     {"telemetry", [](DeviceWorkflows &w) { w.pollTelemetry(); }}};

    out << "window " << window << "\n";
    out << qSetFieldWidth(20) << Qt::left << "link" << qSetFieldWidth(11) << "workflow"
        << "elapsed"
        << "floor"
        << "ratio" << qSetFieldWidth(0) << "\n";
    int failures = 0;
    for (const Setup &setup : setups) {
        QProcess devsim;
        const QString address = startDevsim(devsim, parser.value(devsimOption), setup.devsimArgs);
        VantorConfiguration config;
        Device device(&config);
        device.setWindow(window);
        DeviceWorkflows flows(&device);
        Connection *link = address.isEmpty() ? nullptr : connectTo(address, setup.baud == 0);
        if (link) {
            device.setLink(link);
            link->open();
        }
        if (!link || !waitConnected(link)) {
            err << "cannot reach the virtual tracker for " << setup.name << "\n";
            ++failures;
            continue;
        }
        run(
            &device, flows, [](DeviceWorkflows &w) { w.readIdentity(); }, 10000);
        for (const auto &wf : workflows) {
            double elapsed = 0;
            double floor = 0;
            bool complete = true;
            for (int i = 0; i < rounds; ++i) {
                const Round r = run(&device, flows, wf.run, 30000);
                elapsed += r.elapsedMs;
                floor += setup.latencyMs +
                         (setup.baud ? qMax(r.bytesOut, r.bytesIn) * BitsPerByte * 1000.0 / setup.baud : 0.0);
                complete = complete && r.complete;
            }
            elapsed /= rounds;
            floor /= rounds;
            if (!complete)
                ++failures;
            out << qSetFieldWidth(20) << setup.name << qSetFieldWidth(11) << wf.name
                << QStringLiteral("%1 ms").arg(elapsed, 0, 'f', 0)
                << QStringLiteral("%1 ms").arg(floor, 0, 'f', 1)
                << QStringLiteral("%1").arg(floor > 0 ? elapsed / floor : 0.0, 0, 'f', 2) << qSetFieldWidth(0)
                << (complete ? "" : "  (did not finish)") << "\n";
        }
        out.flush();
        device.setLink(nullptr);
        devsim.terminate();
        if (!devsim.waitForFinished(3000))
            devsim.kill();
    }
    return failures ? 1 : 0;
}
