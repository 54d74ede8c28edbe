// Starts the virtual tracker on a pseudo-terminal paced like the USB line, then times full reads and
// full writes through the protocol library and sets each beside the time its bytes need on the line.
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/SerialConnection.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QProcess>
#include <QTextStream>
#include <QTimer>

#include <functional>

#ifndef TAVREL_DEVSIM_PATH
#define TAVREL_DEVSIM_PATH "tavrel-devsim"
#endif

namespace {

constexpr int BitsPerByte = 10;

struct Round {
    qint64 elapsedMs = 0;
    qint64 bytesOut = 0;
    qint64 bytesIn = 0;
    bool complete = false;
};

class Bench {
public:
    Bench(Device *device, int baud)
        : m_device(device)
        , m_workflows(device)
        , m_baud(baud) {
        QObject::connect(device, &Device::frameSent, [this](const QByteArray &f) { m_out += f.size(); });
        QObject::connect(device, &Device::chunkReceived, [this](const QByteArray &c) { m_in += c.size(); });
    }

    // Runs one workflow until the queue is idle again (or the time limit passes).
    Round run(const std::function<void(DeviceWorkflows &)> &workflow, int limitMs) {
        m_out = m_in = 0;
        QEventLoop loop;
        QTimer limit;
        limit.setSingleShot(true);
        QObject::connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
        const auto done = QObject::connect(m_device, &Device::idle, &loop, &QEventLoop::quit);
        QElapsedTimer clock;
        clock.start();
        limit.start(limitMs);
        workflow(m_workflows);
        loop.exec();
        QObject::disconnect(done);
        Round r;
        r.elapsedMs = clock.elapsed();
        r.bytesOut = m_out;
        r.bytesIn = m_in;
        r.complete = limit.isActive();
        return r;
    }

    double lineMs(const Round &r) const { return (r.bytesOut + r.bytesIn) * BitsPerByte * 1000.0 / m_baud; }

private:
    Device *m_device;
    DeviceWorkflows m_workflows;
    int m_baud;
    qint64 m_out = 0;
    qint64 m_in = 0;
};

} // namespace

int main(int argc, char *argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Times full reads and writes against the virtual tracker."));
    parser.addHelpOption();
    const QCommandLineOption devsimOption("devsim", "The virtual tracker program.", "path",
                                          TAVREL_DEVSIM_PATH);
    const QCommandLineOption roundsOption("rounds", "Rounds of read-all and write-all (default 5).", "n",
                                          "5");
    const QCommandLineOption baudOption("baud", "Line rate the tracker paces at (default 115200).", "baud",
                                        "115200");
    const QCommandLineOption extraOption("devsim-arg", "Extra argument for the tracker (repeatable).", "arg");
    parser.addOptions({devsimOption, roundsOption, baudOption, extraOption});
    parser.process(app);
    const int rounds = qMax(1, parser.value(roundsOption).toInt());
    const int baud = qMax(1, parser.value(baudOption).toInt());

    // The exchange log would swamp the measurements.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\ntavrel.*.debug=false"));

    QProcess devsim;
    devsim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    devsim.start(parser.value(devsimOption),
                 QStringList{"--pty", "--baud", QString::number(baud)} + parser.values(extraOption));
    if (!devsim.waitForStarted(5000) || !devsim.waitForReadyRead(5000)) {
        err << "cannot start " << parser.value(devsimOption) << "\n";
        return 1;
    }
    const QString port = QString::fromLocal8Bit(devsim.readLine()).trimmed();

    VantorConfiguration config;
    Device device(&config);
    auto *link = new SerialConnection(port);
    device.setLink(link);
    if (!link->open()) {
        err << "cannot open " << port << "\n";
        devsim.terminate();
        devsim.waitForFinished(3000);
        return 1;
    }
    Bench bench(&device, baud);
    bench.run([](DeviceWorkflows &w) { w.readIdentity(); }, 10000);

    out << "tavrel-devsim on " << port << ", paced at " << baud << " baud (" << BitsPerByte
        << " bits a byte)\n";
    out << qSetFieldWidth(10) << Qt::left << "workflow"
        << "round"
        << "elapsed"
        << "line"
        << "ratio"
        << "bytes out"
        << "bytes in" << qSetFieldWidth(0) << "\n";
    int failures = 0;
    const struct {
        const char *name;
        std::function<void(DeviceWorkflows &)> run;
    } workflows[] = {{"read-all", [](DeviceWorkflows &w) { w.readAll(); }},
                     {"write-all", [](DeviceWorkflows &w) { w.writeAll(); }}};
    for (const auto &wf : workflows) {
        double totalElapsed = 0;
        double totalLine = 0;
        for (int i = 1; i <= rounds; ++i) {
            const Round r = bench.run(wf.run, 30000);
            const double line = bench.lineMs(r);
            totalElapsed += r.elapsedMs;
            totalLine += line;
            if (!r.complete)
                ++failures;
            out << qSetFieldWidth(10) << wf.name << i << QStringLiteral("%1 ms").arg(r.elapsedMs)
                << QStringLiteral("%1 ms").arg(line, 0, 'f', 1)
                << QStringLiteral("%1").arg(line > 0 ? r.elapsedMs / line : 0.0, 0, 'f', 2) << r.bytesOut
                << r.bytesIn << qSetFieldWidth(0) << (r.complete ? "" : "  (did not finish)") << "\n";
        }
        out << qSetFieldWidth(10) << wf.name << "mean"
            << QStringLiteral("%1 ms").arg(totalElapsed / rounds, 0, 'f', 1)
            << QStringLiteral("%1 ms").arg(totalLine / rounds, 0, 'f', 1)
            << QStringLiteral("%1").arg(totalLine > 0 ? totalElapsed / totalLine : 0.0, 0, 'f', 2)
            << qSetFieldWidth(0) << "\n";
    }
    out.flush();

    devsim.terminate();
    if (!devsim.waitForFinished(3000))
        devsim.kill();
    return failures ? 1 : 0;
}
