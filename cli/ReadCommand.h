#pragma once

#include "cli/DeviceCommand.h"

class VantorConfiguration;

// `read -o FILE`: the identity and every section the full read asks for, then the configuration file,
// written atomically so that an unfinished read never replaces a good file.
class ReadCommand : public DeviceCommand {
    Q_OBJECT
public:
    ReadCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                const QString &file, QTextStream &out, QTextStream &err, QObject *parent = nullptr);

protected:
    void run() override;
    void jobDone(const JobResult &result) override;

private:
    VantorConfiguration *m_configuration;
    QString m_file;
};
