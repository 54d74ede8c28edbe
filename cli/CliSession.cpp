#include "cli/CliSession.h"

#include "cli/BundleCommand.h"
#include "cli/ConfigurationCommands.h"
#include "cli/ConfigurationSource.h"
#include "cli/DeviceCommand.h"
#include "cli/DiffCommand.h"
#include "cli/FirmwareCommands.h"
#include "cli/InfoCommand.h"
#include "cli/ReadCommand.h"
#include "cli/ServiceCommand.h"
#include "cli/TelemetryCommand.h"
#include "cli/WriteCommand.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/PortWatcher.h"
#include "protocol/SessionController.h"
#include "update/FirmwareImage.h"

#include <QElapsedTimer>
#include <QTextStream>
#include <QTimer>

namespace {

// How long the session waits for one answer before it moves on: a device on the cable answers within
// milliseconds, one behind the configuration server may take seconds. Short deadlines shorten it so
// that a dropped answer is asked for again well before the command gives up.
// How long --reconnect waits for a restarting device when --wait does not say.
constexpr int DefaultReconnectMs = 60000;
constexpr int ReconnectIntervalMs = 1000;

int responseIntervalFor(bool remote, int deadlineMs) {
    const int base = remote ? Device::DefaultResponseInterval : 1000;
    if (deadlineMs <= 0)
        return base;
    // Four waits without a word count as a lost connection; the relay through the server gets longer ones.
    return qMin(base, qMax(remote ? 1000 : 250, deadlineMs / 10));
}

} // namespace

CliSession::CliSession(const CliOptions &options, QTextStream &out, QTextStream &err, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_out(out)
    , m_err(err) {}

CliSession::~CliSession() = default;

void CliSession::start() {
    m_configuration = new VantorConfiguration(this);
    if (m_options.command == CliOptions::Command::Write) {
        // The file is checked before the device is touched.
        const kd::ConfigurationFile::LoadResult loaded =
            kd::ConfigurationFile::load(m_options.file, *m_configuration);
        if (loaded.status == kd::ConfigurationFile::LoadResult::CannotOpen) {
            fail(QStringLiteral("Не удалось открыть файл конфигурации %1").arg(m_options.file));
            return;
        }
        if (!loaded.ok()) {
            // A file that does not parse is the caller's mistake, not the device's: usage status 2.
            m_err << QStringLiteral("tavrel-cli: Произошла ошибка при открытии файла %1: %2")
                         .arg(m_options.file, loaded.errorString)
                  << '\n';
            finish(2);
            return;
        }
    }
    if (!loadSources())
        return;
    if (m_options.command == CliOptions::Command::Flash) {
        // The image is checked before the device is touched: a bad file is the file's fault, not the link's.
        FirmwareImage image;
        const FirmwareImage::LoadResult loaded = image.load(m_options.file);
        if (loaded != FirmwareImage::Loaded) {
            m_err << FirmwareImage::failureText(m_options.file, loaded) << '\n';
            finish(FlashCommand::ExitBadFile + loaded);
            return;
        }
    }

    if (m_options.waitMs > 0 && !m_options.isRemote()) {
        // The tracker may not be plugged in yet: look for its port once a second until --wait runs out.
        m_waitForPort = new PortWatcher(PortSelection::parse(m_options.port), this);
        m_waitDeadline = new QTimer(this);
        m_waitDeadline->setSingleShot(true);
        connect(m_waitDeadline, &QTimer::timeout, this, [this] {
            m_waitForPort->stop();
            fail(QStringLiteral("Нет подключенных приборов (ждали %1 с)").arg(m_options.waitMs / 1000.0));
        });
        connect(m_waitForPort, &PortWatcher::appeared, this, [this] {
            if (!m_waitForPort->isActive())
                return;
            m_waitForPort->stop();
            m_waitDeadline->stop();
            connectSession();
        });
        m_waitDeadline->start(m_options.waitMs);
        m_waitForPort->start();
        return;
    }
    connectSession();
}

void CliSession::connectSession() {
    SessionController::Settings s;
    s.remote = m_options.isRemote();
    s.portName = m_options.port;
    s.host = m_options.remoteHost;
    s.port = m_options.remotePort;
    s.imei = m_options.imei;
    s.hasPassword = m_options.hasPassword;
    s.password = m_options.password;
    s.responseIntervalMs = responseIntervalFor(s.remote, m_options.deadlineMs());
    s.identify = false; // each command asks for what it needs
    s.connectTimeoutMs = m_options.deadlineMs();
    s.jobDeadlineMs = m_options.deadlineMs();
    s.jobRounds = 0;
    s.window = m_options.window;

    m_session = new SessionController(m_configuration, this);
    connect(m_session, &SessionController::identified, this, [this] {
        if (!m_reconnecting)
            return;
        stopReconnecting();
        m_out << InfoCommand::identityLines(*m_configuration->deviceInfo()).join(QLatin1Char('\n')) << '\n';
        finish(0);
    });
    connect(m_session, &SessionController::stateChanged, this, [this](SessionController::State state) {
        if (state == SessionController::State::Ready && !m_started) {
            m_started = true;
            startCommand();
        }
    });
    connect(m_session, &SessionController::linkFailed, this, [this](const LinkFailure &failure) {
        if (m_reconnecting)
            return; // not back yet: the next tick asks again
        QString text = linkErrorText(failure);
        if (failure.error == LinkError::SeveralDevices)
            text = text.simplified() + QStringLiteral(" (или укажите --port)");
        fail(text);
    });
    // The device stopped answering: give up at once, the job says what it had done by then.
    connect(m_session, &SessionController::connectionLost, this, [this] {
        if (m_reconnecting) {
            m_session->disconnectDevice();
            return;
        }
        const QString text = linkErrorText(m_session->lastFailure());
        m_session->disconnectDevice();
        fail(text);
    });
    connect(m_session, &SessionController::passwordRequested, this,
            [this] { fail(QStringLiteral("прибор запрашивает пароль, укажите его параметром --password")); });
    connect(m_session, &SessionController::passwordRejected, this,
            [this] { fail(QStringLiteral("неверный пароль")); });
    connect(m_session, &SessionController::deviceBlocked, this, [this](const QString &powerCycleText) {
        // A reset the device takes but applies only after a power cycle is no failure of the command.
        if (powerCycleText.isEmpty())
            fail(QStringLiteral("прибор заблокирован, повторите попытку позже"));
    });
    m_session->connectDevice(s);
}

bool CliSession::loadSources() {
    if (m_options.command == CliOptions::Command::Write ||
        m_options.command == CliOptions::Command::Restore) {
        m_sources.append(std::make_shared<ConfigurationSource>());
        const int refused = loadWriteSource(m_options, m_sources.last().get(), m_err);
        if (refused >= 0) {
            finish(refused);
            return false;
        }
    }
    if (m_options.command == CliOptions::Command::Diff) {
        for (const QString &argument : {m_options.diffA, m_options.diffB}) {
            m_sources.append(std::make_shared<ConfigurationSource>());
            QString error;
            if (!ConfigurationSource::load(argument, m_sources.last().get(), &error)) {
                m_err << QStringLiteral("tavrel-cli: ") << error << '\n';
                finish(2);
                return false;
            }
        }
    }
    return true;
}

void CliSession::startReconnect() {
    m_reconnecting = true;
    m_session->disconnectDevice();
    m_err << QStringLiteral("Ожидание прибора после перезапуска...") << '\n';
    m_err.flush();
    const int limitMs = m_options.waitMs > 0 ? m_options.waitMs : DefaultReconnectMs;
    m_reconnectTick = new QTimer(this);
    m_reconnectTick->setInterval(ReconnectIntervalMs);
    QElapsedTimer waited;
    waited.start();
    connect(m_reconnectTick, &QTimer::timeout, this, [this, waited, limitMs] {
        if (waited.elapsed() >= limitMs) {
            fail(QStringLiteral("прибор не вернулся за %1 с").arg(limitMs / 1000.0));
            return;
        }
        SessionController::Settings s = m_session->settings();
        s.identify = true;
        s.connectTimeoutMs = ReconnectIntervalMs;
        s.jobDeadlineMs = ReconnectIntervalMs;
        m_session->connectDevice(s);
    });
    m_reconnectTick->start();
}

void CliSession::startCommand() {
    if (m_finished)
        return;
    if (m_options.command == CliOptions::Command::Flash) {
        startFlash();
        return;
    }
    const int deadline = m_options.deadlineMs();
    DeviceCommand *command = nullptr;
    switch (m_options.command) {
    case CliOptions::Command::Info:
        command = new InfoCommand(m_session, m_configuration, deadline, m_options.json, m_out, m_err, this);
        break;
    case CliOptions::Command::Read:
        command = new ReadCommand(m_session, m_configuration, deadline, m_options.file, m_out, m_err, this);
        break;
    case CliOptions::Command::Write:
    case CliOptions::Command::Restore: {
        WriteCommand::Choices choices;
        choices.dryRun = m_options.dryRun;
        choices.keepDeviceValues = m_options.keepDeviceValues;
        choices.verify = !m_options.noVerify;
        command = new WriteCommand(m_session, m_configuration, deadline, *m_sources.at(0), choices, m_out,
                                   m_err, this);
        break;
    }
    case CliOptions::Command::Diff:
        command = new DiffCommand(m_session, m_configuration, deadline, *m_sources.at(0), *m_sources.at(1),
                                  m_out, m_err, this);
        break;
    case CliOptions::Command::Telemetry:
        command = new TelemetryCommand(m_session, m_configuration, deadline, m_options.watch, m_options.raw,
                                       m_out, m_err, this, m_options.csvFile);
        break;
    case CliOptions::Command::Bundle:
        command = new BundleCommand(m_session, m_configuration, deadline, m_options.file,
                                    m_options.hasPassword, m_options.password, m_out, m_err, this);
        break;
    case CliOptions::Command::Reset:
        command =
            new ServiceCommand(m_session, deadline, ServiceCommand::Action::Reset, 0, m_out, m_err, this);
        break;
    case CliOptions::Command::ClearMemory:
        command = new ServiceCommand(m_session, deadline, ServiceCommand::Action::ClearMemory, 0, m_out,
                                     m_err, this);
        break;
    case CliOptions::Command::SetPassword:
        command = new ServiceCommand(m_session, deadline, ServiceCommand::Action::SetPassword,
                                     m_options.newPassword, m_out, m_err, this);
        break;
    default:
        fail(QStringLiteral("команда %1 не работает с прибором").arg(m_options.commandName));
        return;
    }
    m_command = command;
    connect(command, &DeviceCommand::finished, this, &CliSession::finish);
    command->start();
}

void CliSession::startFlash() {
    auto *flash =
        new FlashCommand(m_session, m_options.file, qMax(1, m_options.deadlineMs() / 1000), m_err, this);
    m_flash = flash;
    connect(flash, &FlashCommand::finished, this, &CliSession::finish);
    flash->start();
}

void CliSession::interrupt() {
    if (m_finished)
        return;
    stopReconnecting();
    const bool watching = m_options.command == CliOptions::Command::Telemetry && m_options.watch;
    if (!watching)
        m_err << QStringLiteral("tavrel-cli: прервано") << '\n';
    finish(watching ? 0 : 1);
}

void CliSession::stopReconnecting() {
    m_reconnecting = false;
    if (m_reconnectTick)
        m_reconnectTick->stop();
}

void CliSession::fail(const QString &message) {
    if (m_finished)
        return;
    stopReconnecting();
    m_err << QStringLiteral("tavrel-cli: ") << message << '\n';
    m_err.flush();
    finish(1);
}

void CliSession::finish(int exitCode) {
    if (m_finished || m_reconnecting)
        return;
    const bool restarts =
        m_options.command == CliOptions::Command::Reset || m_options.command == CliOptions::Command::Flash;
    if (exitCode == 0 && m_options.reconnect && restarts && !m_reconnectTick) {
        startReconnect();
        return;
    }
    m_finished = true;
    if (m_command)
        m_command->cancel(exitCode);
    if (m_session)
        m_session->disconnect(this);
    m_out.flush();
    m_err.flush();
    emit finished(exitCode);
}
