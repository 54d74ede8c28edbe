#pragma once

#include "cli/DeviceCommand.h"

// `write FILE`: every section the full write sends, taken from the configuration the file was loaded
// into. Each write counts only once the device's status answer to that very request confirms it; the
// outputs are not part of it.
class WriteCommand : public DeviceCommand {
    Q_OBJECT
public:
    WriteCommand(SessionController *session, int deadlineMs, const QString &file, QTextStream &out,
                 QTextStream &err, QObject *parent = nullptr);

protected:
    void run() override;
    void jobDone(const JobResult &result) override;

private:
    QString m_file;
};
