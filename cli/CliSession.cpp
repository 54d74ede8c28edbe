#include "cli/CliSession.h"

#include "cli/DeviceCommand.h"
#include "cli/InfoCommand.h"
#include "cli/ReadCommand.h"
#include "cli/ServiceCommand.h"
#include "cli/TelemetryCommand.h"
#include "cli/WriteCommand.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/SerialConnection.h"
#include "protocol/TcpConnection.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"

#include <QAbstractSocket>
#include <QSerialPort>
#include <QTextStream>

#include "cli/FirmwareCommands.h"
#include "update/FirmwareImage.h"

namespace {

// How long the session waits for one answer before it moves on: a device on the cable answers within
// milliseconds, one behind the configuration server may take seconds. Short deadlines shorten it so
// that a dropped answer is asked for again well before the command gives up.
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
    , m_err(err) {
    m_connectDeadline.setSingleShot(true);
    connect(&m_connectDeadline, &QTimer::timeout, this, [this] {
        if (m_options.isRemote())
            fail(QStringLiteral("не удалось подключиться к серверу %1:%2")
                     .arg(m_options.remoteHost)
                     .arg(m_options.remotePort));
        else
            fail(QStringLiteral("порт не открылся"));
    });
}

CliSession::~CliSession() = default;

QString CliSession::linkErrorText(int errorGroup, int errorCode) {
    if (errorGroup == Connection::SerialError) {
        switch (errorCode) {
        case QSerialPort::NoError:
        case QSerialPort::UnsupportedOperationError:
            return {};
        case QSerialPort::DeviceNotFoundError:
            return QStringLiteral("Прибор отключен");
        case QSerialPort::ResourceError:
        case QSerialPort::ReadError:
        case QSerialPort::WriteError:
            return QStringLiteral("Прибор был отключен");
        case QSerialPort::NotOpenError:
            return QStringLiteral("Порт закрыт");
        case QSerialPort::PermissionError:
            return QStringLiteral("Нет доступа к порту");
        default:
            return QStringLiteral("Ошибка порта %1").arg(errorCode);
        }
    }
    switch (errorCode) {
    case QAbstractSocket::RemoteHostClosedError:
        return QStringLiteral("Отключен от сервера");
    case QAbstractSocket::ConnectionRefusedError:
        return QStringLiteral("Сервер отказал в подключении");
    case QAbstractSocket::HostNotFoundError:
        return QStringLiteral("Сервер не найден");
    case QAbstractSocket::SocketTimeoutError:
        return QStringLiteral("Сервер не отвечает");
    default:
        return QStringLiteral("Ошибка подключения к серверу (%1)").arg(errorCode);
    }
}

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

    m_device = new Device(m_configuration, this);
    m_device->setResponseInterval(responseIntervalFor(m_options.isRemote(), m_options.deadlineMs()));
    Connection *link = createLink();
    if (!link)
        return;
    m_device->setLink(link);
    connect(link, &Connection::error, this, &CliSession::onLinkError);
    connect(link, &Connection::connected, this, &CliSession::onConnected);
    connect(link, &Connection::disconnected, this, [this] {
        fail(m_options.isRemote() ? QStringLiteral("Отключен от сервера")
                                  : QStringLiteral("Прибор был отключен"));
    });
    connect(m_device, &Device::connectionLost, this,
            [this] { fail(QStringLiteral("прибор не отвечает, соединение разорвано")); });

    if (m_options.deadlineMs() > 0)
        m_connectDeadline.start(m_options.deadlineMs());
    if (!link->open()) {
        if (m_options.isRemote())
            fail(QStringLiteral("не удалось подключиться к серверу %1:%2")
                     .arg(m_options.remoteHost)
                     .arg(m_options.remotePort));
        else
            fail(QStringLiteral("не удалось открыть порт %1")
                     .arg(static_cast<SerialConnection *>(link)->portName()));
        return;
    }
    if (link->state() == Connection::Connected)
        onConnected();
}

Connection *CliSession::createLink() {
    if (m_options.isRemote())
        return new TcpConnection(m_options.remoteHost, m_options.remotePort, m_options.imei);
    if (!m_options.port.isEmpty())
        return new SerialConnection(m_options.port);

    auto *serial = new SerialConnection;
    const int found = serial->findDevices();
    if (found == 1)
        return serial;
    delete serial;
    if (found == 0)
        fail(QStringLiteral("Нет подключенных приборов"));
    else
        fail(QStringLiteral("Подключено более одного прибора, отключите лишние для избежания ошибок "
                            "(или укажите --port)"));
    return nullptr;
}

void CliSession::onConnected() {
    if (m_started || m_finished)
        return;
    m_started = true;
    m_connectDeadline.stop();
    startCommand();
}

void CliSession::startCommand() {
    const int deadline = m_options.deadlineMs();
    if (m_options.command == CliOptions::Command::Flash) {
        startFlash();
        return;
    }
    DeviceCommand::Options o;
    o.deadlineMs = deadline;
    o.quietMs = m_device->responseInterval() + 200;
    o.hasPassword = m_options.hasPassword;
    o.password = m_options.password;

    DeviceCommand *command = nullptr;
    switch (m_options.command) {
    case CliOptions::Command::Info:
        command = new InfoCommand(m_device, o, m_options.json, m_out, m_err, this);
        break;
    case CliOptions::Command::Read:
        command = new ReadCommand(m_device, o, m_options.file, m_out, m_err, this);
        break;
    case CliOptions::Command::Write:
        command = new WriteCommand(m_device, o, m_options.file, m_out, m_err, this);
        break;
    case CliOptions::Command::Telemetry:
        command = new TelemetryCommand(m_device, o, m_options.watch, m_options.raw, m_out, m_err, this);
        break;
    case CliOptions::Command::Reset:
        command = new ServiceCommand(m_device, o, ServiceCommand::Action::Reset, 0, m_out, m_err, this);
        break;
    case CliOptions::Command::ClearMemory:
        command = new ServiceCommand(m_device, o, ServiceCommand::Action::ClearMemory, 0, m_out, m_err, this);
        break;
    case CliOptions::Command::SetPassword:
        command = new ServiceCommand(m_device, o, ServiceCommand::Action::SetPassword, m_options.newPassword,
                                     m_out, m_err, this);
        break;
    default:
        fail(QStringLiteral("команда %1 не работает с прибором").arg(m_options.commandName));
        return;
    }
    m_command = command;
    connect(m_device, &Device::answerAccepted, command, &DeviceCommand::onPacket);
    connect(command, &DeviceCommand::finished, this, &CliSession::finish);
    command->start();
}

void CliSession::startFlash() {
    UNPParcer *parser = m_device->parser();
    connect(parser, &UNPParcer::PasswordChange, this,
            [this] { fail(QStringLiteral("прибор запрашивает пароль, укажите его параметром --password")); });
    connect(parser, &UNPParcer::PasswordError, this, [this] { fail(QStringLiteral("неверный пароль")); });
    connect(parser, &UNPParcer::DeviceBlocked, this,
            [this] { fail(QStringLiteral("прибор заблокирован, повторите попытку позже")); });
    // The switch to the loader is answered like a login: a status that refuses it is no switch at all.
    connect(m_device, &Device::answerAccepted, this, [this](quint8 type, const QByteArray &payload) {
        if (type != proto::CommandPacketType || payload.size() < 6 ||
            quint8(payload.at(0)) != proto::code::Mode ||
            quint8(payload.at(1)) != (proto::op::FirmwareUpdate | 0x80))
            return;
        const quint16 status = quint16(quint8(payload.at(4)) | (quint8(payload.at(5)) << 8));
        if (status == UNPParcer::AuthorisationNeeded)
            fail(QStringLiteral("прибор запрашивает пароль, укажите его параметром --password"));
        else if (status == UNPParcer::Blocked)
            fail(QStringLiteral("прибор заблокирован, повторите попытку позже"));
    });
    auto begin = [this] {
        if (m_flash || m_finished)
            return;
        m_connectDeadline.stop();
        auto *flash =
            new FlashCommand(m_device, m_options.file, qMax(1, m_options.deadlineMs() / 1000), m_err, this);
        m_flash = flash;
        connect(flash, &FlashCommand::finished, this, &CliSession::finish);
        flash->start();
    };
    if (!m_options.hasPassword) {
        begin();
        return;
    }
    // The loader is only reached once the device has accepted the password.
    connect(parser, &UNPParcer::PasswordComplete, this, begin);
    m_connectDeadline.start(m_options.deadlineMs());
    m_device->protocol()->clearQueue();
    m_device->protocol()->login(m_options.password);
    m_device->sendNextCommand();
}

void CliSession::onLinkError(int errorGroup, int errorCode) {
    const QString text = linkErrorText(errorGroup, errorCode);
    if (!text.isEmpty())
        fail(text);
}

void CliSession::interrupt() {
    if (m_finished)
        return;
    m_connectDeadline.stop();
    const bool watching = m_options.command == CliOptions::Command::Telemetry && m_options.watch;
    if (!watching)
        m_err << QStringLiteral("tavrel-cli: прервано") << '\n';
    if (m_command)
        m_command->cancel(watching ? 0 : 1);
    finish(watching ? 0 : 1);
}

void CliSession::fail(const QString &message) {
    if (m_finished)
        return;
    if (m_command && !m_command->isFinished()) {
        m_command->onConnectionLost(message);
        return;
    }
    m_err << QStringLiteral("tavrel-cli: ") << message << '\n';
    m_err.flush();
    finish(1);
}

void CliSession::finish(int exitCode) {
    if (m_finished)
        return;
    m_finished = true;
    m_connectDeadline.stop();
    m_out.flush();
    m_err.flush();
    if (m_device && m_device->link())
        m_device->link()->disconnect(this);
    emit finished(exitCode);
}
