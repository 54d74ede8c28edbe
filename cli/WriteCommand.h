#pragma once

#include "cli/DeviceCommand.h"

// `write FILE`: every section the full write sends, taken from the configuration the file was loaded
// into. Each write is settled by the device's status answer; the outputs are not part of it.
class WriteCommand : public DeviceCommand {
    Q_OBJECT
public:
    WriteCommand(Device *device, const Options &options, const QString &file, QTextStream &out,
                 QTextStream &err, QObject *parent = nullptr);

protected:
    void buildRequests() override;
    void complete() override;

private:
    QString m_file;
};
