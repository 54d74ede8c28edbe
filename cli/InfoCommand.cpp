#include "cli/InfoCommand.h"

#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/SessionController.h"

#include <QJsonDocument>
#include <QTextStream>

InfoCommand::InfoCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                         bool json, QTextStream &out, QTextStream &err, QObject *parent)
    : DeviceCommand(session, deadlineMs, out, err, parent)
    , m_configuration(configuration)
    , m_json(json) {}

void InfoCommand::run() {
    session()->readIdentity();
}

QJsonObject InfoCommand::identityJson(const kd::DeviceInfoConfiguration &info) {
    QJsonObject o;
    o.insert(QStringLiteral("name"), info.name());
    o.insert(QStringLiteral("softver"), qint64(info.Version()));
    o.insert(QStringLiteral("hardver.devmod"), qint64(info.DeviceMod()));
    o.insert(QStringLiteral("hardver.devgroup"), qint64(info.DeviceGroup()));
    o.insert(QStringLiteral("hardver.devtype"), qint64(info.DeviceType()));
    o.insert(QStringLiteral("hardver.serial"), qint64(info.SerialNumber()));
    o.insert(QStringLiteral("IMEI"), info.IMEI());
    return o;
}

QStringList InfoCommand::identityLines(const kd::DeviceInfoConfiguration &info) {
    return {
        QStringLiteral("Прибор: %1").arg(info.name()),
        QStringLiteral("IMEI: %1").arg(info.IMEI()),
        QStringLiteral("Серийный номер: %1").arg(info.SerialNumber()),
        QStringLiteral("Версия ПО: %1").arg(info.Version()),
        QStringLiteral("Группа: %1").arg(info.DeviceGroup()),
        QStringLiteral("Тип: %1").arg(info.DeviceType()),
        QStringLiteral("Модификация: %1").arg(info.DeviceMod()),
    };
}

void InfoCommand::jobDone(const JobResult &result) {
    if (failed(result))
        return;
    const kd::DeviceInfoConfiguration *info = m_configuration->deviceInfo();
    if (!info) {
        fail(QStringLiteral("нет сведений о приборе"));
        return;
    }
    if (m_json)
        out() << QString::fromUtf8(QJsonDocument(identityJson(*info)).toJson(QJsonDocument::Indented));
    else
        out() << identityLines(*info).join(QLatin1Char('\n')) << '\n';
    finish(0);
}
