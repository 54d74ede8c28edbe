#include "app/UpdateChecks.h"

#include "app/Prompter.h"
#include "update/ComponentInformation.h"
#include "update/FirmwareUpdater.h"
#include "update/QTIFWUpdater.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QWidget>

namespace {
Q_LOGGING_CATEGORY(lcUpdates, "tavrel.window")
const char *const ToolName = "maintenancetool";
const char *const AboutAddress = "https://tavrel.ru";
} // namespace

UpdateChecks::UpdateChecks(QWidget *window, std::shared_ptr<Prompter> prompter,
                           std::function<qint64()> deviceVersion)
    : QObject(window)
    , m_window(window)
    , m_prompter(std::move(prompter))
    , m_deviceVersion(std::move(deviceVersion))
    , m_selfUpdater(new QTIFWUpdater(this)) {
    connect(m_selfUpdater, &QTIFWUpdater::errorOccurred, this, [this](const QString &error) {
        m_prompter->warning(m_window, appTitle(),
                            QStringLiteral("Ошибка проверки обновлений программы конфигуратора\n") +
                                QStringLiteral("Ошибка: %1").arg(error));
    });
    connect(m_selfUpdater, &QTIFWUpdater::warningOccurred, this, [this](const QString &) {
        m_prompter->information(m_window, appTitle(),
                                QStringLiteral("Нет доступных обновлений конфигуратора"));
    });
    connect(m_selfUpdater, &QTIFWUpdater::checkComplete, this, &UpdateChecks::onProgramCheckComplete);
    m_selfUpdater->setMaintenanceToolName(QString::fromLatin1(ToolName));
    m_selfUpdater->setWorkingDirectory(QCoreApplication::applicationDirPath());
}

QString UpdateChecks::appTitle() const {
    return QCoreApplication::applicationName();
}

QString UpdateChecks::firmwarePath() const {
    return m_firmwareUpdater ? m_firmwareUpdater->firmwarePath() : QString();
}

void UpdateChecks::readNetworkSettings() {
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/network.xml");
    // Installations without a proxy carry no file at all; only a broken file is worth a box.
    if (!QFileInfo::exists(path))
        return;
    QTIFWUpdater::NetworkSettings network;
    QString error;
    if (!QTIFWUpdater::readNetworkSettings(path, network, error)) {
        qCWarning(lcUpdates) << error;
        m_prompter->critical(m_window, QStringLiteral("Ошибка"),
                             QStringLiteral("Ошибка чтения файла сетевых настроек network.xml"));
        return;
    }
    m_selfUpdater->setProxyType(network.proxyType);
}

void UpdateChecks::checkProgram() {
    if (!m_selfUpdater->checkUpdates())
        qCDebug(lcUpdates) << "an update check is already running";
}

void UpdateChecks::checkDevice(bool asked) {
    m_asked = asked;
    if (m_firmwareUpdater) {
        m_firmwareUpdater->download();
        return;
    }
    // Creating the downloader starts the download.
    m_firmwareUpdater = new FirmwareUpdater(QString(), this);
    connect(m_firmwareUpdater, &FirmwareUpdater::newFirmwareAvailable, this, [this] {
        m_versionAnswered = true;
        m_asked = false;
        emit newFirmwareAvailable();
    });
    connect(m_firmwareUpdater, &FirmwareUpdater::downloadError, this, [this] {
        m_prompter->information(m_window, QStringLiteral("Информация по обновлению прошивки"),
                                QStringLiteral("Не удалось загрузить с сервера файл актуального обновления "
                                               "прибора. \nУстройство может работать некорректно!"));
    });
    connect(m_firmwareUpdater, &FirmwareUpdater::firwareUpdateNotAvailable, this, [this] {
        m_versionAnswered = true;
        m_asked = false;
        m_prompter->information(m_window, appTitle(), QStringLiteral("Нет доступных обновлений прибора."));
    });
    connect(m_firmwareUpdater, &FirmwareUpdater::downloadComplete, this, &UpdateChecks::onFirmwareReady);
}

void UpdateChecks::deviceIdentified() {
    if (m_firmwareUpdater && QFileInfo::exists(m_firmwareUpdater->firmwarePath()) && m_deviceVersion() >= 0)
        m_firmwareUpdater->checkVersion(quint32(m_deviceVersion()));
}

void UpdateChecks::showAbout() {
    m_prompter->information(
        m_window, QStringLiteral("О программе"),
        QString::fromLatin1(AboutAddress) +
            QStringLiteral("\nВерсия программного обеспечения: %1").arg(QStringLiteral(TAVREL_VERSION)));
}

void UpdateChecks::showVersions() {
    QString text = QStringLiteral("Версия программного обеспечения: %1").arg(QStringLiteral(TAVREL_VERSION));
    if (m_deviceVersion() >= 0)
        text += QStringLiteral("\nВерсия прошивки прибора: %1").arg(m_deviceVersion());
    m_prompter->information(m_window, QStringLiteral("Версия ПО"), text);
}

void UpdateChecks::onFirmwareReady() {
    const qint64 version = m_deviceVersion();
    if (version < 0) {
        if (m_asked)
            m_prompter->information(m_window, appTitle(),
                                    QStringLiteral("Файл обновления загружен. Версия прошивки будет сравнена "
                                                   "после подключения прибора."));
        return;
    }
    m_versionAnswered = false;
    m_firmwareUpdater->checkVersion(quint32(version));
    if (!m_versionAnswered && m_asked)
        m_prompter->warning(
            m_window, QStringLiteral("Информация по обновлению прошивки"),
            QStringLiteral("Загруженный с сервера файл не является файлом прошивки прибора."));
    m_asked = false;
}

void UpdateChecks::onProgramCheckComplete(const QList<ComponentInformation> &components) {
    if (!m_prompter->question(m_window, QStringLiteral("Результат проверки обновлений"),
                              QTIFWUpdater::reportText(components)))
        return;
    if (!m_selfUpdater->startUpdater())
        m_prompter->critical(m_window, QStringLiteral("Ошибка выполнения обновления"),
                             QStringLiteral("Обновление приостановлено."));
}
