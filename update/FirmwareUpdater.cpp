#include "update/FirmwareUpdater.h"

#include "update/FirmwareImage.h"
#include "update/UpdateLog.h"

#include <QDir>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSaveFile>
#include <QSettings>
#include <QUrl>

namespace {

const QString FolderName = QStringLiteral("FirmwareUpdates");

} // namespace

FirmwareUpdater::FirmwareUpdater(const QString &address, QObject *parent)
    : QObject(parent)
    , m_address(address.isEmpty() ? builtInAddress() : address)
    , m_manager(new QNetworkAccessManager(this)) {
    connect(m_manager, &QNetworkAccessManager::finished, this, &FirmwareUpdater::replyFinished);
    QDir current = QDir::current();
    if (!current.exists(FolderName))
        current.mkdir(FolderName);
    m_folder = current.absoluteFilePath(FolderName);
    download();
}

QString FirmwareUpdater::builtInAddress(const QString &host) {
    QString h = host;
    if (h.isEmpty())
        h = QSettings().value(QLatin1String(HostSettingsKey), QLatin1String(DefaultHost)).toString();
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setUserName(QStringLiteral("updater1"));
    url.setPassword(QStringLiteral("moonlock"));
    url.setHost(h);
    url.setPath(QStringLiteral("/guard/kdsolo/Vantor_micro_9_18_10.bsk"));
    return url.toString();
}

void FirmwareUpdater::download() {
    QNetworkRequest request{QUrl(m_address)};
    request.setRawHeader("User-Agent", "Tavrel_updater");
    m_manager->get(request);
}

void FirmwareUpdater::replyFinished(QNetworkReply *reply) {
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        qCWarning(lcUpdate).noquote() << reply->errorString();
        emit downloadError();
        return;
    }
    // Written atomically: an interrupted write never leaves half an image where a whole one was.
    QSaveFile file(firmwarePath());
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(reply->readAll());
    if (!file.commit())
        return;
    emit downloadComplete();
}

void FirmwareUpdater::checkVersion(quint32 currentVersion) {
    m_filePath = firmwarePath();
    qCDebug(lcUpdate).noquote().nospace() << "Текущая версия " << currentVersion;
    QFile file(m_filePath);
    if (!file.open(QIODevice::ReadOnly))
        return;
    qCDebug(lcUpdate).noquote().nospace() << "Открыт файл "
                                          << "Firmware.bsk";
    const QByteArray header = file.read(FirmwareImage::HeaderSize);
    if (FirmwareImage::checkHeader(header, file.size()) != FirmwareImage::Loaded)
        return;
    if (currentVersion >= FirmwareImage::headerVersionNumber(header))
        emit firwareUpdateNotAvailable();
    else
        emit newFirmwareAvailable();
}
