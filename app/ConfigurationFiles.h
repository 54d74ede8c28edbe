#pragma once

#include <QString>
#include <memory>

class Prompter;
class QWidget;
class VantorConfiguration;

// "Создать конфигурацию", "Открыть из файла" and "Сохранить в файл": the questions, the file dialogs
// and the messages around replacing, loading and saving the whole configuration.
class ConfigurationFiles {
public:
    ConfigurationFiles(VantorConfiguration *configuration, QWidget *window,
                       std::shared_ptr<Prompter> prompter);

    // The folder the file dialogs open in: the last one used.
    QString lastDir() const { return m_lastDir; }
    // The file the configuration was last loaded from; empty after "Создать конфигурацию".
    QString openedPath() const { return m_openedPath; }

    // Each true when the configuration now holds new values.
    bool createNew();
    bool open();
    // A name without an extension is saved as ".json"; the folder becomes the current one.
    void save();

private:
    QString appTitle() const;

    VantorConfiguration *m_configuration;
    QWidget *m_window;
    std::shared_ptr<Prompter> m_prompter;
    QString m_lastDir;
    QString m_openedPath;
};
