#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <optional>

class StatusNotifier;

namespace kd {
class Configuration;
}

// Dispatches accepted answers by packet type, code and operation to the section decoders of the
// configuration and reports them by signals. Keeps no state besides the configuration it fills.
class UNPParcer : public QObject {
    Q_OBJECT
public:
    enum Status : quint16 {
        Executed = 1,
        NotSupported = 2,
        AuthorisationNeeded = 3,
        WrongPassword = 4,
        Blocked = 5,
        PowerCycleNeeded = 6,
        UnknownPacketType = 7,
        ExecutionError = 9,
    };

    explicit UNPParcer(kd::Configuration *configuration = nullptr, QObject *parent = nullptr);

    void setConfiguration(kd::Configuration *configuration);
    kd::Configuration *configuration() const;
    // Not owned; without one the power-cycle text goes to the protocol's diagnostic log.
    void setStatusNotifier(StatusNotifier *notifier);

    // `packet` starts at the packet header (type, reserved, length LE16) and carries at least `length`
    // payload bytes; anything behind them is ignored.
    void parse(const QByteArray &packet);
    // `payload` is exactly the payload the frame announced.
    void parse(quint8 type, const QByteArray &payload);
    void handleStatus(quint16 status);

    // The 16-bit status behind the head of a status answer; nullopt when the payload is too short
    // to hold one.
    static std::optional<quint16> statusOf(const QByteArray &payload);
    // The log text of a status, empty for the power-cycle status (which is a box, not a log line).
    static QString statusText(quint16 status);
    static QString powerCycleText();

signals:
    void PasswordChange();
    void PasswordError();
    void PasswordComplete();
    void DeviceBlocked();
    void ControlTelemetry(int type);
    void ConfigPackageDetected(int type);
    void DeviceInfoAcquired();
    void OnFirmwareUpdateEnter();

private:
    void parseConfigAnswer(const QByteArray &payload);
    void parseCommandAnswer(const QByteArray &payload);
    void decodeSection(quint8 code, const QByteArray &payload);

    QPointer<kd::Configuration> m_configuration;
    StatusNotifier *m_notifier = nullptr;
};
