#pragma once

#include "cli/DeviceCommand.h"

#include <QJsonObject>

class VantorConfiguration;

namespace kd {
class DeviceInfoConfiguration;
}

// `info`: the device's identity (kinds 1 and 2), as text lines or as one JSON object with the keys the
// configuration file uses.
class InfoCommand : public DeviceCommand {
    Q_OBJECT
public:
    InfoCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs, bool json,
                QTextStream &out, QTextStream &err, QObject *parent = nullptr);

    static QJsonObject identityJson(const kd::DeviceInfoConfiguration &info);
    static QStringList identityLines(const kd::DeviceInfoConfiguration &info);

protected:
    void run() override;
    void jobDone(const JobResult &result) override;

private:
    VantorConfiguration *m_configuration;
    bool m_json;
};
