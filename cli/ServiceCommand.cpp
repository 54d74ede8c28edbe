#include "cli/ServiceCommand.h"

#include "protocol/Device.h"
#include "protocol/UNPProtocol.h"

#include <QTextStream>

ServiceCommand::ServiceCommand(Device *device, const Options &options, Action action, quint32 newPassword,
                               QTextStream &out, QTextStream &err, QObject *parent)
    : DeviceCommand(device, options, out, err, parent)
    , m_action(action)
    , m_newPassword(newPassword) {}

void ServiceCommand::buildRequests() {
    switch (m_action) {
    case Action::Reset:
        addRequest([](AbstarctProtocol *p) { p->resetSettings(); },
                   {statusAnswer(proto::code::Mode, proto::op::ResetOrClear, -1,
                                 QStringLiteral("сброс настроек"), proto::CommandPacketType)});
        break;
    case Action::ClearMemory:
        addRequest([](AbstarctProtocol *p) { p->clearMemory(); },
                   {statusAnswer(proto::code::Mode, proto::op::ResetOrClear, -1,
                                 QStringLiteral("очистка памяти"), proto::CommandPacketType)});
        break;
    case Action::SetPassword: {
        const quint32 password = m_newPassword;
        addRequest([password](AbstarctProtocol *p) { p->changePassword(password); },
                   {statusAnswer(proto::code::PasswordChange, 1, -1, QStringLiteral("смена пароля"))});
        break;
    }
    }
}

void ServiceCommand::complete() {
    if (!allDone()) {
        fail(missingAnswers());
        return;
    }
    switch (m_action) {
    case Action::Reset:
        out() << QStringLiteral("Настройки сброшены на заводские") << '\n';
        break;
    case Action::ClearMemory:
        out() << QStringLiteral("Память очищена") << '\n';
        break;
    case Action::SetPassword:
        out() << QStringLiteral("Пароль изменен") << '\n';
        break;
    }
    if (!powerCycleText().isEmpty())
        out() << powerCycleText() << '\n';
    finish(0);
}
