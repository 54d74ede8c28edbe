#include "app/ConfigurationFiles.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/VantorConfiguration.h"
#include "app/Prompter.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QLoggingCategory>

namespace {
Q_LOGGING_CATEGORY(lcFiles, "tavrel.window")
const char *const Filter = "JSON (*.json)";
} // namespace

ConfigurationFiles::ConfigurationFiles(VantorConfiguration *configuration, QWidget *window,
                                       std::shared_ptr<Prompter> prompter)
    : m_configuration(configuration)
    , m_window(window)
    , m_prompter(std::move(prompter))
    , m_lastDir(QDir::currentPath()) {}

QString ConfigurationFiles::appTitle() const {
    return QCoreApplication::applicationName();
}

bool ConfigurationFiles::createNew() {
    if (!m_prompter->question(
            m_window, appTitle(),
            QStringLiteral("Предыдущая загруженная конфигурация будет заменена.  Продолжить?"))) {
        m_prompter->information(m_window, appTitle(), QStringLiteral("Ничего не делаем"));
        return false;
    }
    // Every section takes the defaults of a file that lacks it.
    m_configuration->read(QJsonObject());
    return true;
}

bool ConfigurationFiles::open() {
    const QString path = m_prompter->openFileName(m_window, QStringLiteral("Open Json File"), m_lastDir,
                                                  QString::fromLatin1(Filter));
    if (path.isEmpty())
        return false;
    m_lastDir = QFileInfo(path).absolutePath();
    const auto result = kd::ConfigurationFile::load(path, *m_configuration);
    if (result.status != kd::ConfigurationFile::LoadResult::Ok) {
        qCWarning(lcFiles) << path << result.errorString;
        m_prompter->warning(m_window, appTitle(),
                            result.status == kd::ConfigurationFile::LoadResult::CannotOpen
                                ? QStringLiteral("Не удалось открыть файл конфигурации")
                                : QStringLiteral("Произошла ошибка при открытии файла"));
        return false;
    }
    m_openedPath = path;
    m_prompter->information(m_window, appTitle(), QStringLiteral("Конфигурация успешно загружена"));
    return true;
}

void ConfigurationFiles::save() {
    QString path = m_prompter->saveFileName(m_window, QStringLiteral("Save Json File"), m_lastDir,
                                            QString::fromLatin1(Filter));
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QStringLiteral(".json");
    m_lastDir = QFileInfo(path).absolutePath();
    QDir::setCurrent(m_lastDir);
    const auto result = kd::ConfigurationFile::save(path, *m_configuration);
    if (!result.ok()) {
        qCWarning(lcFiles) << path << result.errorString;
        m_prompter->critical(
            m_window, appTitle(),
            QStringLiteral("Не удалось сохранить файл конфигурации\n%1").arg(result.errorString));
    }
}
