#include "support/SupportBundle.h"
#include "Devices/WriteErrorText.h"

#include "support/TelemetryReport.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"

#include <KZip>
#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QSysInfo>

namespace {

// Shorter strings would mask ordinary digits all over the report; a password that short is still kept
// out, by the masked log and the filtered settings.
constexpr int ShortestMaskedSecret = 3;
const QByteArray Mask("********");

QByteArray lines(const QStringList &list) {
    return list.isEmpty() ? QByteArray() : list.join(QLatin1Char('\n')).toUtf8() + '\n';
}

QByteArray json(const QJsonObject &o) {
    return QJsonDocument(o).toJson(QJsonDocument::Indented);
}

QJsonObject identity(const VantorConfiguration &cfg) {
    QJsonObject o;
    const kd::DeviceInfoConfiguration *info = cfg.deviceInfo();
    if (!info)
        return o;
    o.insert(QStringLiteral("name"), info->name());
    o.insert(QStringLiteral("softver"), qint64(info->Version()));
    o.insert(QStringLiteral("hardver.devmod"), qint64(info->DeviceMod()));
    o.insert(QStringLiteral("hardver.devgroup"), qint64(info->DeviceGroup()));
    o.insert(QStringLiteral("hardver.devtype"), qint64(info->DeviceType()));
    o.insert(QStringLiteral("hardver.serial"), qint64(info->SerialNumber()));
    o.insert(QStringLiteral("IMEI"), info->IMEI());
    return o;
}

QByteArray about(const QString &program) {
    return lines({QStringLiteral("Программа: %1 %2").arg(program, QStringLiteral(TAVREL_VERSION)),
                  QStringLiteral("Qt: %1").arg(QString::fromLatin1(qVersion())),
                  QStringLiteral("Система: %1").arg(QSysInfo::prettyProductName()),
                  QStringLiteral("Ядро: %1 %2").arg(QSysInfo::kernelType(), QSysInfo::kernelVersion()),
                  QStringLiteral("Процессор: %1").arg(QSysInfo::currentCpuArchitecture()),
                  QStringLiteral("Отчет создан: %1")
                      .arg(QDateTime::currentDateTime().toString(QStringLiteral("dd.MM.yyyy hh:mm:ss")))});
}

// A numeric device password also travels as four little-endian bytes in the login frame.
QStringList secretForms(const QString &secret) {
    QStringList forms{secret};
    bool numeric = false;
    const quint32 n = secret.toUInt(&numeric);
    if (numeric && n != 0) {
        const char le[4] = {char(n & 0xFF), char((n >> 8) & 0xFF), char((n >> 16) & 0xFF), char(n >> 24)};
        forms << QString::fromLatin1(QByteArray(le, 4).toHex());
    }
    return forms;
}

} // namespace

bool SupportBundle::isPasswordKey(const QString &key) {
    return key.contains(QLatin1String("password"), Qt::CaseInsensitive);
}

QVector<SupportBundle::Member> SupportBundle::collect(const VantorConfiguration &cfg, const QString &program,
                                                      QSettings &settings, const QStringList &secrets) {
    QStringList masked;
    QJsonObject kept;
    for (const QString &key : settings.allKeys()) {
        const QString value = settings.value(key).toString();
        if (isPasswordKey(key)) {
            masked << secretForms(value);
            continue;
        }
        kept.insert(key, QJsonValue::fromVariant(settings.value(key)));
    }
    for (const QString &s : secrets)
        masked << secretForms(s);

    const kd::ControlInfoConfiguration *state = cfg.controlInfo();
    QVector<Member> members{
        {QStringLiteral("identity.json"), json(identity(cfg))},
        {QStringLiteral("configuration.json"), kd::ConfigurationFile::toJson(cfg)},
        {QStringLiteral("telemetry.txt"), state ? lines(TelemetryReport::lines(*state)) : QByteArray()},
        {QStringLiteral("telemetry-raw.txt"),
         state ? lines(TelemetryReport::rawLines(*state)) : QByteArray()},
        {QStringLiteral("exchange.log"), lines(kd::recentTrafficLog())},
        {QStringLiteral("about.txt"), about(program)},
        {QStringLiteral("settings.json"), json(kept)},
    };
    for (const QString &secret : masked) {
        if (secret.size() < ShortestMaskedSecret)
            continue;
        for (Member &m : members)
            m.data.replace(secret.toUtf8(), Mask);
    }
    return members;
}

bool SupportBundle::write(const QString &path, const QVector<Member> &members, QString *error) {
    // KZip writes through a QSaveFile: the archive appears under its name only when complete.
    KZip zip(path);
    if (!zip.open(QIODevice::WriteOnly)) {
        if (error)
            *error = kd::writeErrorText(path, zip.errorString());
        return false;
    }
    for (const Member &m : members) {
        if (!zip.writeFile(m.name, m.data)) {
            if (error)
                *error = zip.errorString();
            return false;
        }
    }
    if (!zip.close()) {
        if (error)
            *error = zip.errorString();
        return false;
    }
    return true;
}
