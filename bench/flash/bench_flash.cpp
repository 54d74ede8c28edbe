// Builds a 512-page firmware image, starts the virtual tracker on a pseudo-terminal paced like the USB line
// and times full flashes, once through the flash command in this process and once through the built
// command-line tool, each beside the time the 512 page packets need on the line.
#include "tests/update/BskBuilder.h"

#include "Devices/VantorConfiguration.h"
#include "cli/FirmwareCommands.h"
#include "protocol/SerialConnection.h"
#include "protocol/SessionController.h"
#include "update/UpdateChannel.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDebug>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

namespace {

// The serial link, counting what the session reads from it.
class CountingSerial : public SerialConnection {
public:
    using SerialConnection::SerialConnection;
    QByteArray readAll() override {
        const QByteArray bytes = SerialConnection::readAll();
        read += bytes.size();
        return bytes;
    }
    qint64 read = 0;
};

} // namespace

#ifndef TAVREL_DEVSIM_PATH
#define TAVREL_DEVSIM_PATH "tavrel-devsim"
#endif
#ifndef TAVREL_CLI_PATH
#define TAVREL_CLI_PATH ""
#endif

namespace {

constexpr int BitsPerByte = 10;
constexpr qint64 StreamBytes = qint64(UpdateChannel::StreamEnd) * UpdateChannel::PacketSize;
constexpr int StopGraceMs = 3000;

double lineMs(qint64 bytes, int baud) {
    return bytes * BitsPerByte * 1000.0 / baud;
}

struct Settings {
    QString devsim;
    QString cli;
    QStringList devsimExtra;
    int rounds = 3;
    int baud = 115200;
    int timeoutSeconds = 10;
};

enum class Way { FlashCommand, Cli };

struct Run {
    Way way = Way::FlashCommand;
    int round = 0;
    qint64 elapsedMs = -1;
    int exitCode = -1;
    qint64 bytesOut = -1; // -1: not counted (the tool's own process)
    qint64 bytesIn = -1;
    QString failure;

    Run() = default;
    Run(Way w, int r)
        : way(w)
        , round(r) {}
    bool ok() const { return failure.isEmpty() && exitCode == 0; }
};

// One run after the other, each with a fresh virtual tracker: start it, read its port from the first line,
// flash, stop it, go on when it has exited.
class FlashBench : public QObject {
public:
    FlashBench(const Settings &settings, const QString &image, const QStringList &devsimVersion,
               QTextStream &out, QObject *parent = nullptr)
        : QObject(parent)
        , m_settings(settings)
        , m_image(image)
        , m_devsimVersion(devsimVersion)
        , m_out(out)
        , m_guard(new QTimer(this)) {
        for (int round = 1; round <= settings.rounds; ++round) {
            m_runs.append(Run(Way::FlashCommand, round));
            if (!settings.cli.isEmpty())
                m_runs.append(Run(Way::Cli, round));
        }
        m_guard->setSingleShot(true);
        // A flash that stalls is stopped by its own quiet time-out; this only catches a tracker that never
        // prints its port or a tool that never exits.
        m_guard->setInterval((settings.timeoutSeconds + 60) * 1000);
        connect(m_guard, &QTimer::timeout, this,
                [this] { finishRun(-1, QStringLiteral("no end in sight")); });
    }

    // The devices point at the configuration member, which goes before the children would.
    ~FlashBench() override {
        delete m_flash;
        delete m_device;
    }

    void start() {
        QTimer::singleShot(0, this, [this] { startNext(); });
    }
    const QVector<Run> &runs() const { return m_runs; }

private:
    Run &current() { return m_runs[m_index]; }

    void startNext() {
        if (m_index + 1 >= m_runs.size()) {
            report();
            QCoreApplication::exit(failures() ? 1 : 0);
            return;
        }
        ++m_index;
        m_finished = false;
        m_devsimErr.clear();
        m_flashErr.clear();
        m_devsim = new QProcess(this);
        connect(m_devsim, &QProcess::readyReadStandardOutput, this, &FlashBench::devsimSpoke);
        connect(m_devsim, &QProcess::readyReadStandardError, this,
                [this] { m_devsimErr += QString::fromLocal8Bit(m_devsim->readAllStandardError()); });
        connect(m_devsim, &QProcess::errorOccurred, this, [this](QProcess::ProcessError e) {
            if (e == QProcess::FailedToStart)
                finishRun(-1, QStringLiteral("cannot start %1").arg(m_settings.devsim));
        });
        connect(m_devsim, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
                &FlashBench::devsimExited);
        m_guard->start();
        m_devsim->start(m_settings.devsim, QStringList{"--pty", "--baud", QString::number(m_settings.baud)} +
                                               m_devsimVersion + m_settings.devsimExtra);
    }

    void devsimSpoke() {
        if (!m_port.isEmpty() || !m_devsim->canReadLine())
            return;
        m_port = QString::fromLocal8Bit(m_devsim->readLine()).trimmed();
        if (current().way == Way::FlashCommand)
            flashInProcess();
        else
            flashWithCli();
    }

    void flashInProcess() {
        m_device = new SessionController(&m_configuration, this);
        auto *link = new CountingSerial(m_port);
        m_device->setLinkFactory([link](const SessionController::Settings &) { return link; });
        current().bytesOut = current().bytesIn = 0;
        connect(link, &Connection::bytesWritten, this, [this](qint64 n) { current().bytesOut += n; });
        SessionController::Settings settings;
        settings.identify = false;
        m_device->connectDevice(settings);
        // After the session's own reader, so that the count includes the chunk just read.
        connect(link, &Connection::readyRead, this, [this, link] { current().bytesIn = link->read; });
        if (m_device->state() != SessionController::State::Ready) {
            finishRun(-1, QStringLiteral("cannot open %1").arg(m_port));
            return;
        }
        m_flashErrStream.setString(&m_flashErr);
        m_flash = new FlashCommand(m_device, m_image, m_settings.timeoutSeconds, m_flashErrStream, this);
        m_flash->setProgressBar(false);
        connect(m_flash, &FlashCommand::finished, this, [this](int code) { finishRun(code, QString()); });
        m_clock.start();
        m_flash->start();
    }

    void flashWithCli() {
        m_cli = new QProcess(this);
        connect(m_cli, &QProcess::readyReadStandardError, this,
                [this] { m_flashErr += QString::fromLocal8Bit(m_cli->readAllStandardError()); });
        connect(m_cli, &QProcess::errorOccurred, this, [this](QProcess::ProcessError e) {
            if (e == QProcess::FailedToStart)
                finishRun(-1, QStringLiteral("cannot start %1").arg(m_settings.cli));
        });
        connect(m_cli, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
                [this](int code, QProcess::ExitStatus status) {
                    finishRun(status == QProcess::NormalExit ? code : -1,
                              status == QProcess::NormalExit ? QString() : QStringLiteral("tool crashed"));
                });
        m_cli->setStandardOutputFile(QProcess::nullDevice());
        m_clock.start();
        m_cli->start(m_settings.cli, {"--port", m_port, "--timeout",
                                      QString::number(m_settings.timeoutSeconds), "flash", m_image});
    }

    void finishRun(int exitCode, const QString &failure) {
        if (m_finished)
            return;
        m_finished = true;
        m_guard->stop();
        Run &run = current();
        run.elapsedMs = m_clock.isValid() ? m_clock.elapsed() : -1;
        m_clock.invalidate();
        run.exitCode = exitCode;
        run.failure = failure;
        if (!run.ok() && run.failure.isEmpty())
            run.failure = m_flashErr.trimmed().section('\n', -1);
        if (!run.ok() && !m_devsimErr.isEmpty())
            qWarning().noquote() << "tavrel-devsim said:" << m_devsimErr.trimmed();
        // Leave the signal handlers of the flash before tearing its objects down.
        QTimer::singleShot(0, this, [this] { stopRun(); });
    }

    void stopRun() {
        if (m_flash)
            m_flash->deleteLater();
        if (m_device) {
            m_device->disconnectDevice();
            m_device->deleteLater();
        }
        if (m_cli) {
            m_cli->disconnect(this);
            if (m_cli->state() != QProcess::NotRunning)
                m_cli->kill();
            m_cli->deleteLater();
        }
        m_port.clear();
        if (!m_devsim || m_devsim->state() == QProcess::NotRunning) {
            devsimExited();
            return;
        }
        m_devsim->terminate();
        QPointer<QProcess> devsim = m_devsim;
        QTimer::singleShot(StopGraceMs, this, [devsim] {
            if (devsim && devsim->state() != QProcess::NotRunning)
                devsim->kill();
        });
    }

    void devsimExited() {
        if (!m_finished) {
            finishRun(-1, QStringLiteral("tavrel-devsim exited during the flash"));
            return;
        }
        if (!m_devsim)
            return;
        m_devsim->disconnect(this);
        m_devsim->deleteLater();
        m_devsim = nullptr;
        QTimer::singleShot(0, this, [this] { startNext(); });
    }

    int failures() const {
        int n = 0;
        for (const Run &r : m_runs)
            n += r.ok() ? 0 : 1;
        return n;
    }

    static QString wayName(Way way) {
        return way == Way::FlashCommand ? QStringLiteral("flash-cmd") : QStringLiteral("tavrel-cli");
    }

    void report() {
        const double line = lineMs(StreamBytes, m_settings.baud);
        m_out << "tavrel-devsim on a pseudo-terminal, paced at " << m_settings.baud << " baud ("
              << BitsPerByte << " bits a byte)\n";
        m_out << "line time of " << UpdateChannel::StreamEnd << " page packets: " << UpdateChannel::StreamEnd
              << " x " << UpdateChannel::PacketSize << " bytes = " << StreamBytes
              << " bytes = " << QString::number(line, 'f', 1) << " ms\n";
        m_out << qSetFieldWidth(12) << Qt::left << "way"
              << "round"
              << "elapsed"
              << "line"
              << "ratio"
              << "bytes out"
              << "bytes in" << qSetFieldWidth(0) << "\n";
        for (Way way : {Way::FlashCommand, Way::Cli}) {
            qint64 total = 0;
            int counted = 0;
            for (const Run &r : m_runs) {
                if (r.way != way)
                    continue;
                m_out << qSetFieldWidth(12) << wayName(way) << r.round
                      << (r.elapsedMs < 0 ? QStringLiteral("-") : QStringLiteral("%1 ms").arg(r.elapsedMs))
                      << QStringLiteral("%1 ms").arg(line, 0, 'f', 1)
                      << (r.elapsedMs < 0 ? QStringLiteral("-") : QString::number(r.elapsedMs / line, 'f', 3))
                      << (r.bytesOut < 0 ? QStringLiteral("-") : QString::number(r.bytesOut))
                      << (r.bytesIn < 0 ? QStringLiteral("-") : QString::number(r.bytesIn))
                      << qSetFieldWidth(0);
                if (!r.ok())
                    m_out << "  failed (exit " << r.exitCode << "): " << r.failure;
                m_out << "\n";
                if (r.ok()) {
                    total += r.elapsedMs;
                    ++counted;
                }
            }
            if (counted > 0) {
                const double mean = double(total) / counted;
                m_out << qSetFieldWidth(12) << wayName(way) << "mean"
                      << QStringLiteral("%1 ms").arg(mean, 0, 'f', 1)
                      << QStringLiteral("%1 ms").arg(line, 0, 'f', 1) << QString::number(mean / line, 'f', 3)
                      << qSetFieldWidth(0) << "\n";
            }
        }
        m_out << "The tracker paces both directions: each page byte reaches its loader once it would "
                 "have crossed the line, and its own messages leave at the line rate.\n";
        m_out.flush();
    }

    Settings m_settings;
    QString m_image;
    QStringList m_devsimVersion;
    QTextStream &m_out;
    QTimer *m_guard;
    QVector<Run> m_runs;
    int m_index = -1;
    bool m_finished = false;
    VantorConfiguration m_configuration;
    QPointer<QProcess> m_devsim;
    QPointer<QProcess> m_cli;
    QPointer<SessionController> m_device;
    QPointer<FlashCommand> m_flash;
    QString m_port;
    QString m_devsimErr;
    QString m_flashErr;
    QTextStream m_flashErrStream;
    QElapsedTimer m_clock;
};

} // namespace

int main(int argc, char *argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Times full firmware flashes against the virtual tracker."));
    parser.addHelpOption();
    const QCommandLineOption devsimOption("devsim", "The virtual tracker program.", "path",
                                          TAVREL_DEVSIM_PATH);
    const QCommandLineOption cliOption("cli", "The command-line tool (empty: skip its runs).", "path",
                                       TAVREL_CLI_PATH);
    const QCommandLineOption roundsOption("rounds", "Flashes of each kind (default 3).", "n", "3");
    const QCommandLineOption baudOption("baud", "Line rate the tracker paces at (default 115200).", "baud",
                                        "115200");
    const QCommandLineOption timeoutOption("timeout", "Longest pause of the loader in seconds (default 10).",
                                           "s", "10");
    const QCommandLineOption extraOption("devsim-arg", "Extra argument for the tracker (repeatable).", "arg");
    parser.addOptions({devsimOption, cliOption, roundsOption, baudOption, timeoutOption, extraOption});
    parser.process(app);

    Settings settings;
    settings.devsim = parser.value(devsimOption);
    settings.cli = parser.value(cliOption);
    settings.devsimExtra = parser.values(extraOption);
    settings.rounds = qMax(1, parser.value(roundsOption).toInt());
    settings.baud = qMax(1, parser.value(baudOption).toInt());
    settings.timeoutSeconds = qMax(1, parser.value(timeoutOption).toInt());
    if (!settings.cli.isEmpty() && !QFileInfo(settings.cli).isExecutable()) {
        err << "no command-line tool at " << settings.cli << ", its runs are skipped\n";
        err.flush();
        settings.cli.clear();
    }

    // The exchange log of 512 pages would swamp the measurements.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\ntavrel.*.debug=false"));

    QTemporaryDir dir;
    BskBuilder builder;
    builder.pages = UpdateChannel::StreamEnd;
    const QString image = dir.filePath(QStringLiteral("bench.bsk"));
    if (!dir.isValid() || !BskBuilder::write(image, builder.build())) {
        err << "cannot write the image in " << dir.path() << "\n";
        return 1;
    }
    // The tracker reports the version and board the image is meant for, so that page 0 is sent.
    const QStringList version{
        "--fw-version",
        QStringLiteral("%1.%2.%3").arg(builder.major).arg(builder.middle).arg(builder.builds.first()),
        "--hw-version", QString::number(builder.hardware.first(), 16)};

    FlashBench bench(settings, image, version, out);
    bench.start();
    return app.exec();
}
