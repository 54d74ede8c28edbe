#pragma once

#include "cli/DeviceCommand.h"

// One-request commands: `reset` (factory settings), `clear-memory` and `set-password N`, each settled
// by the device's status answer.
class ServiceCommand : public DeviceCommand {
    Q_OBJECT
public:
    enum class Action { Reset, ClearMemory, SetPassword };

    ServiceCommand(SessionController *session, int deadlineMs, Action action, quint32 newPassword,
                   QTextStream &out, QTextStream &err, QObject *parent = nullptr);

protected:
    void run() override;
    void jobDone(const JobResult &result) override;

private:
    Action m_action;
    quint32 m_newPassword;
};
