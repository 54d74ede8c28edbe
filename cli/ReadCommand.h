#pragma once

#include "cli/DeviceCommand.h"

// `read -o FILE`: the identity and every section the full read asks for, then the configuration file,
// written atomically so that an unfinished read never replaces a good file.
class ReadCommand : public DeviceCommand {
    Q_OBJECT
public:
    ReadCommand(Device *device, const Options &options, const QString &file, QTextStream &out,
                QTextStream &err, QObject *parent = nullptr);

protected:
    void buildRequests() override;
    void complete() override;

private:
    QString m_file;
};
