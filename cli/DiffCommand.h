#pragma once

#include "cli/ConfigurationSource.h"
#include "cli/DeviceCommand.h"

class VantorConfiguration;

// `diff A B` with the device on one side (or both): reads the device's configuration, then compares.
// Exit status 0 equal, 1 different (or the device did not answer, with a line on stderr).
class DiffCommand : public DeviceCommand {
    Q_OBJECT
public:
    DiffCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                const ConfigurationSource &a, const ConfigurationSource &b, QTextStream &out,
                QTextStream &err, QObject *parent = nullptr);

protected:
    void run() override;
    void jobDone(const JobResult &result) override;

private:
    VantorConfiguration *m_configuration;
    ConfigurationSource m_a;
    ConfigurationSource m_b;
};
