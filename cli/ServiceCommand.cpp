#include "cli/ServiceCommand.h"

#include "protocol/SessionController.h"

#include <QTextStream>

ServiceCommand::ServiceCommand(SessionController *session, int deadlineMs, Action action, quint32 newPassword,
                               QTextStream &out, QTextStream &err, QObject *parent)
    : DeviceCommand(session, deadlineMs, out, err, parent)
    , m_action(action)
    , m_newPassword(newPassword) {}

void ServiceCommand::run() {
    switch (m_action) {
    case Action::Reset:
        session()->resetSettings();
        break;
    case Action::ClearMemory:
        session()->clearMemory();
        break;
    case Action::SetPassword:
        session()->setPassword(m_newPassword);
        break;
    }
}

void ServiceCommand::jobDone(const JobResult &result) {
    if (failed(result))
        return;
    switch (m_action) {
    case Action::Reset:
        // A device that wants a power cycle has taken the reset but not applied it yet.
        out() << (result.powerCycleText.isEmpty()
                      ? QStringLiteral("Настройки сброшены на заводские")
                      : QStringLiteral("Сброс настроек принят: прибор выполнит его после отключения питания"))
              << '\n';
        break;
    case Action::ClearMemory:
        out() << QStringLiteral("Память очищена") << '\n';
        break;
    case Action::SetPassword:
        out() << QStringLiteral("Пароль изменен") << '\n';
        break;
    }
    if (!result.powerCycleText.isEmpty())
        out() << result.powerCycleText << '\n';
    finish(0);
}
