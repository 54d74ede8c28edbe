#include "protocol/UNPParcer.h"

#include "protocol/Frame.h"
#include "protocol/StatusNotifier.h"
#include "protocol/TrafficLog.h"
#include "protocol/UNPProtocol.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/ByteOrder.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/configuration.h"

namespace {

constexpr quint8 StatusBit = 0x80;
constexpr quint8 OperationMask = 0x7F;

// Answer codes of the section reads.
constexpr quint8 DeviceInfoAnswer = 0x81;
constexpr quint8 NavigationAnswer = 0x83;
constexpr quint8 GsmAnswer = 0x84;
constexpr quint8 FuelAnswer = 0x88;
constexpr quint8 AnalogAnswer = 0x8C;
constexpr quint8 LogicAnswer = 0x8D;
constexpr quint8 OutputsAnswer = 0x8E;
constexpr quint8 ServerAnswer = 0x90;
constexpr quint8 SystemAnswer = 0x91;

// Telemetry sub-codes: 1 is a bare notice, 2..8 carry nothing we know, 9..24 go to the record decoder.
constexpr int TelemetryNotice = 1;
constexpr int FirstUnknownTelemetry = 2;
constexpr int LastUnknownTelemetry = 8;
constexpr int LastTelemetry = 24;

template <class S>
bool decodeInto(kd::Configuration *cfg, const char *key, const QByteArray &payload) {
    S *section = kd::typed_item<S>(cfg, QLatin1String(key));
    if (!section)
        return false;
    section->decode(payload);
    return true;
}

} // namespace

UNPParcer::UNPParcer(kd::Configuration *configuration, QObject *parent)
    : QObject(parent)
    , m_configuration(configuration) {}

void UNPParcer::setConfiguration(kd::Configuration *configuration) {
    m_configuration = configuration;
}

kd::Configuration *UNPParcer::configuration() const {
    return m_configuration;
}

void UNPParcer::setStatusNotifier(StatusNotifier *notifier) {
    m_notifier = notifier;
}

void UNPParcer::parse(const QByteArray &packet) {
    const quint8 type = kd::le::u8(packet, 0);
    const int length = kd::le::u16(packet, 2);
    const int payloadOffset = proto::Frame::PayloadOffset - proto::Frame::TypeOffset;
    parse(type, packet.mid(payloadOffset, qMin(length, qMax(0, packet.size() - payloadOffset))));
}

void UNPParcer::parse(quint8 type, const QByteArray &payload) {
    switch (type) {
    case proto::ConfigPacketType:
        parseConfigAnswer(payload);
        break;
    case proto::CommandPacketType:
        proto::TrafficLog::write(QStringLiteral("Команды"));
        parseCommandAnswer(payload);
        break;
    default:
        break;
    }
}

void UNPParcer::parseConfigAnswer(const QByteArray &payload) {
    const quint8 code = kd::le::u8(payload, proto::Frame::CodeOffset);
    const quint8 operation = kd::le::u8(payload, proto::Frame::OperationOffset);
    if (operation & StatusBit) {
        handleStatus(kd::le::u16(payload, proto::Frame::StatusOffset));
        return;
    }
    decodeSection(code, payload);
}

void UNPParcer::decodeSection(quint8 code, const QByteArray &payload) {
    kd::Configuration *cfg = m_configuration;
    bool decoded = false;
    switch (code) {
    case DeviceInfoAnswer:
        decoded = decodeInto<kd::DeviceInfoConfiguration>(cfg, kd::keys::MainDeviceInfo, payload);
        if (decoded)
            emit DeviceInfoAcquired();
        break;
    case NavigationAnswer:
        decoded = decodeInto<kd::NavigationConfiguration>(cfg, kd::keys::Navigation, payload);
        break;
    case GsmAnswer:
        decoded = decodeInto<kd::GSMConfiguration>(cfg, kd::keys::Gsm, payload);
        break;
    case FuelAnswer:
        decoded = decodeInto<kd::FuelConfiguration>(cfg, kd::keys::Fuel, payload);
        break;
    case AnalogAnswer:
        decoded = decodeInto<kd::AgcConfiguration>(cfg, kd::keys::Agc, payload);
        break;
    case LogicAnswer:
        decoded = decodeInto<kd::LogicConfiguration>(cfg, kd::keys::Logic, payload);
        break;
    case OutputsAnswer:
        decoded = decodeInto<kd::OutputConfiguration>(cfg, kd::keys::Output, payload);
        break;
    case ServerAnswer:
        decoded = decodeInto<kd::ServerConfiguration>(cfg, kd::keys::Server, payload);
        break;
    case SystemAnswer:
        decoded = decodeInto<kd::SystemConfiguration>(cfg, kd::keys::System, payload);
        break;
    default:
        // Write echoes (0x02 .. 0x11 without the read bit) and unknown codes carry nothing to decode.
        break;
    }
    if (decoded)
        emit ConfigPackageDetected(code);
}

void UNPParcer::parseCommandAnswer(const QByteArray &payload) {
    const quint8 code = kd::le::u8(payload, proto::Frame::CodeOffset);
    const int operation = kd::le::u8(payload, proto::Frame::OperationOffset) & OperationMask;
    if (code == proto::code::Mode) {
        if (operation == proto::op::Login) {
            proto::TrafficLog::write(QStringLiteral("Ввод пароля"));
            const quint16 status = kd::le::u16(payload, proto::Frame::StatusOffset);
            handleStatus(status);
            if (status == Executed) {
                proto::TrafficLog::write(QStringLiteral("Введен верный пароль"));
                emit PasswordComplete();
            }
        } else if (operation == proto::op::FirmwareUpdate) {
            emit OnFirmwareUpdateEnter();
        }
        return;
    }
    if (code != proto::code::Telemetry)
        return;
    if (operation == TelemetryNotice) {
        proto::TrafficLog::write(QStringLiteral("....телеметрия прибора"));
        emit ControlTelemetry(operation);
    } else if (operation >= FirstUnknownTelemetry && operation <= LastUnknownTelemetry) {
        proto::TrafficLog::write(QStringLiteral("....телеметрия????"));
    } else if (operation > LastUnknownTelemetry && operation <= LastTelemetry) {
        auto *info = kd::typed_item<kd::ControlInfoConfiguration>(m_configuration,
                                                                  QLatin1String(kd::keys::ControlInfo));
        if (info && info->decode(payload))
            emit ControlTelemetry(operation);
    }
}

QString UNPParcer::statusText(quint16 status) {
    switch (status) {
    case Executed:
        return QStringLiteral("....Команду выполнил");
    case NotSupported:
        return QStringLiteral("....Команда не поддерживается");
    case AuthorisationNeeded:
        return QStringLiteral("Нужна авторизация, введите пароль....");
    case WrongPassword:
        return QStringLiteral("....Введен неправильный пароль");
    case Blocked:
        return QStringLiteral("...Прибор заблокирован");
    case PowerCycleNeeded:
        return QString();
    case UnknownPacketType:
        return QStringLiteral("....Неизвестный тип пакета");
    case ExecutionError:
        return QStringLiteral("....Ошибка исполнения команды EXECUTE_ERROR");
    default:
        return QStringLiteral("....Неизвестный тип ответа");
    }
}

QString UNPParcer::powerCycleText() {
    return QStringLiteral(
        "Для сброса настроек необходимо отключить питание прибора на несколько секунд, а потом "
        "снова включить.\nВозможно, Вы просто выдернули и вставили кабель USB, этого "
        "недостаточно.");
}

void UNPParcer::handleStatus(quint16 status) {
    const QString text = statusText(status);
    if (!text.isEmpty())
        proto::TrafficLog::write(text);
    switch (status) {
    case AuthorisationNeeded:
        emit PasswordChange();
        break;
    case WrongPassword:
        emit PasswordError();
        break;
    case Blocked:
        emit DeviceBlocked();
        break;
    case PowerCycleNeeded:
        // The device cannot reset itself while powered from USB; after the box it is treated as blocked.
        if (m_notifier)
            m_notifier->notify(powerCycleText());
        else
            qCWarning(lcProtocol).noquote() << powerCycleText();
        emit DeviceBlocked();
        break;
    default:
        break;
    }
}
