#include "cli/BatchCommand.h"
#include "cli/CliOptions.h"
#include "cli/CliSession.h"
#include "cli/ConfigurationCommands.h"
#include "cli/FrameText.h"
#include "cli/PortList.h"
#include "cli/TrafficLogFile.h"

#include "protocol/InterruptWatcher.h"
#include "protocol/SerialConnection.h"

#include <QCoreApplication>
#include <QTextCodec>
#include <QTextStream>

#include "cli/FirmwareCommands.h"
#include "update/FirmwareImage.h"

namespace {

constexpr int ExitOk = 0;
constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;

int listPorts(QTextStream &out) {
    SerialConnection serial;
    serial.findDevices();
    for (const SerialPortRecord &r : serial.devices())
        out << portRecordLine(r) << '\n';
    return ExitOk;
}

int decode(const CliOptions &options, QTextStream &out, QTextStream &err) {
    QByteArray frame;
    if (!FrameText::extractHex(options.decodeHex, &frame)) {
        // The exchange log hides passwords behind asterisks; such a frame cannot be rebuilt.
        const QString reason = options.decodeHex.contains(QLatin1Char('*'))
                                   ? QStringLiteral("пароль в журнале скрыт, кадр не восстановить")
                                   : QStringLiteral("нужны пары шестнадцатеричных цифр");
        err << QStringLiteral("tavrel-cli: не удалось прочитать кадр: ") << reason << '\n'
            << CliOptions::usageHint() << '\n';
        return ExitUsage;
    }
    out << FrameText::explain(frame).join(QLatin1Char('\n')) << '\n';
    return ExitOk;
}

// Runs a command on the event loop until it finishes; Ctrl+C and SIGTERM reach its interrupt().
template <class Command>
int runUntilFinished(QCoreApplication &app, Command &command) {
    QObject::connect(&command, &Command::finished, &app, &QCoreApplication::exit, Qt::QueuedConnection);
    InterruptWatcher interrupts;
    QObject::connect(&interrupts, &InterruptWatcher::interrupted, &command,
                     [&command] { command.interrupt(); });
    command.start();
    return app.exec();
}

} // namespace

int main(int argc, char *argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavrel-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVREL_VERSION));

    QTextStream out(stdout);
    QTextStream err(stderr);
    out.setCodec(QTextCodec::codecForName("UTF-8"));
    err.setCodec(QTextCodec::codecForName("UTF-8"));

    CliOptions options;
    QString usageError = options.parse(QCoreApplication::arguments().mid(1));
    if (usageError.isEmpty())
        usageError = options.resolvePassword(qgetenv("TAVREL_PASSWORD"));
    if (!usageError.isEmpty()) {
        err << QStringLiteral("tavrel-cli: ") << usageError << '\n' << CliOptions::usageHint() << '\n';
        return ExitUsage;
    }

    const QString fileError = options.inputFileError();
    if (!fileError.isEmpty()) {
        err << QStringLiteral("tavrel-cli: ") << fileError << '\n';
        return options.command == CliOptions::Command::Write
                   ? ExitUsage
                   : FlashCommand::ExitBadFile + FirmwareImage::CannotOpen;
    }

    QString logError;
    if (!TrafficLogFile::install(options.logFile, &logError)) {
        err << QStringLiteral("tavrel-cli: не удалось открыть журнал %1: %2").arg(options.logFile, logError)
            << '\n';
        return ExitFailure;
    }

    int status = ExitOk;
    switch (options.command) {
    case CliOptions::Command::Help:
        out << CliOptions::usage();
        break;
    case CliOptions::Command::Version:
        out << QStringLiteral("tavrel-cli %1").arg(QCoreApplication::applicationVersion()) << '\n';
        break;
    case CliOptions::Command::Ports:
        status = listPorts(out);
        break;
    case CliOptions::Command::Decode:
        status = decode(options, out, err);
        break;
    case CliOptions::Command::FwInfo:
        status = fwInfoCommand(options.file, out, err);
        break;
    case CliOptions::Command::History:
        status = historyCommand(options, out, err);
        break;
    case CliOptions::Command::Batch: {
        BatchPlan plan;
        QString error;
        if (!BatchCommand::loadPlan(options, &plan, &error)) {
            err << QStringLiteral("tavrel-cli: ") << error << '\n';
            status = ExitUsage;
            break;
        }
        BatchCommand batch(plan, PortSelection::parse(options.ports), options.waitNew, options.reportFile,
                           out, err);
        status = runUntilFinished(app, batch);
        break;
    }
    case CliOptions::Command::Diff:
        if (!options.needsDevice()) {
            status = diffCommand(options, out, err);
            break;
        }
        Q_FALLTHROUGH();
    default: {
        CliSession session(options, out, err);
        status = runUntilFinished(app, session);
        break;
    }
    }
    out.flush();
    err.flush();
    TrafficLogFile::uninstall();
    return status;
}
