#pragma once

#include "cli/DeviceCommand.h"

#include <QJsonObject>

namespace kd {
class DeviceInfoConfiguration;
}

// `info`: the device's identity (kinds 1 and 2), as text lines or as one JSON object with the keys the
// configuration file uses.
class InfoCommand : public DeviceCommand {
    Q_OBJECT
public:
    InfoCommand(Device *device, const Options &options, bool json, QTextStream &out, QTextStream &err,
                QObject *parent = nullptr);

    // Adds the two identity reads; the read command asks for the identity the same way.
    static void addIdentityRequests(DeviceCommand *command);
    static QJsonObject identityJson(const kd::DeviceInfoConfiguration &info);
    static QStringList identityLines(const kd::DeviceInfoConfiguration &info);

protected:
    void buildRequests() override;
    void complete() override;

private:
    bool m_json;
};
