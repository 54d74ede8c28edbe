#include "protocol/UNPParcer.h"

#include "protocol/Frame.h"
#include "protocol/StatusNotifier.h"
#include "protocol/TrafficLog.h"
#include "protocol/UNPProtocol.h"

#include "Devices/ByteOrder.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/SectionTable.h"
#include "Devices/configuration.h"

namespace {

constexpr quint8 OperationMask = 0x7F;

// Telemetry sub-codes: 1 is a bare notice, 2..8 carry nothing we know, 9..24 go to the record decoder.
constexpr int TelemetryNotice = 1;
constexpr int FirstUnknownTelemetry = 2;
constexpr int LastUnknownTelemetry = 8;
constexpr int LastTelemetry = 24;

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
    if (operation & proto::op::StatusBit) {
        handleStatus(kd::le::u16(payload, proto::Frame::StatusOffset));
        return;
    }
    decodeSection(code, payload);
}

void UNPParcer::decodeSection(quint8 code, const QByteArray &payload) {
    // Write echoes (0x02 .. 0x11 without the read bit) and unknown codes carry nothing to decode.
    const kd::Section *section = kd::sectionByAnswerCode(code, proto::ConfigPacketType);
    if (!section || !section->decode || !section->decode(m_configuration, payload))
        return;
    if (qstrcmp(section->key, kd::keys::MainDeviceInfo) == 0)
        emit DeviceInfoAcquired();
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

std::optional<quint16> UNPParcer::statusOf(const QByteArray &payload) {
    if (!kd::le::has(payload, proto::Frame::StatusOffset, 2))
        return std::nullopt;
    return kd::le::u16(payload, proto::Frame::StatusOffset);
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
