#include "cli/InfoCommand.h"

#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/UNPProtocol.h"

#include <QJsonDocument>
#include <QTextStream>

InfoCommand::InfoCommand(Device *device, const Options &options, bool json, QTextStream &out,
                         QTextStream &err, QObject *parent)
    : DeviceCommand(device, options, out, err, parent)
    , m_json(json) {}

void InfoCommand::buildRequests() {
    addIdentityRequests(this);
}

void InfoCommand::addIdentityRequests(DeviceCommand *command) {
    using Kind = kd::DeviceInfoConfiguration;
    command->addRequest(
        [](AbstarctProtocol *p) { p->readDeviceInfo(Kind::KindIdentity); },
        {dataAnswer(Kind::AnswerCode, Kind::KindIdentity, QStringLiteral("сведения о приборе"))});
    command->addRequest([](AbstarctProtocol *p) { p->readDeviceInfo(Kind::KindText); },
                        {dataAnswer(Kind::AnswerCode, Kind::KindText, QStringLiteral("название прибора"))});
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

void InfoCommand::complete() {
    if (!allDone()) {
        fail(missingAnswers());
        return;
    }
    auto *cfg = qobject_cast<VantorConfiguration *>(device()->configuration());
    const kd::DeviceInfoConfiguration *info = cfg ? cfg->deviceInfo() : nullptr;
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
