#pragma once

#include "update/ComponentInformation.h"

#include <QObject>
#include <QProcess>

class QTimer;

// Asks the installer's maintenance tool whether updates of the configurator exist and reports the outcome:
// exactly one of errorOccurred, warningOccurred ("no updates") or checkComplete per check.
class QTIFWUpdater : public QObject {
    Q_OBJECT
public:
    static constexpr int DefaultTimeoutMs = 15000;

    struct NetworkSettings {
        int proxyType = 0;
        QString username;
        QString password;
    };

    explicit QTIFWUpdater(QObject *parent = nullptr);
    ~QTIFWUpdater() override;

    void setMaintenanceToolName(const QString &name) { m_toolName = name; }
    QString maintenanceToolName() const { return m_toolName; }
    void setWorkingDirectory(const QString &workingDirectory) { m_workingDirectory = workingDirectory; }
    QString workingDirectory() const { return m_workingDirectory; }
    void setProxyType(int proxy) { m_proxyType = proxy; }
    int proxyType() const { return m_proxyType; }
    void setTimeout(int ms) { m_timeoutMs = ms; }
    int timeout() const { return m_timeoutMs; }

    // With a proxy configured the tool is started in its updater mode rather than asked for a silent
    // check; the tool cannot check silently through a proxy.
    static QStringList checkArguments(int proxyType);
    static QStringList updaterArguments();

    // Starts a check; false when one is already running.
    bool checkUpdates();
    bool isRunning() const;
    void killCheckProcess();
    QList<ComponentInformation> components() const { return m_components; }

    // Starts the tool in its updater mode, detached from this process.
    bool startUpdater() const;

    // Parses the tool's XML answer; on failure returns false with the user's message in error.
    static bool parseAnswer(const QByteArray &answer, QList<ComponentInformation> &components,
                            QString &error);
    // The report the window shows in its "Результат проверки обновлений" question box.
    static QString reportText(const QList<ComponentInformation> &components);
    // Reads "network.xml"; on failure returns false with the message in error.
    static bool readNetworkSettings(const QString &fileName, NetworkSettings &settings, QString &error);

signals:
    void errorOccurred(const QString &error);
    void warningOccurred(const QString &warning);
    void checkComplete(QList<ComponentInformation> components);

private:
    QString toolPath() const;
    void processFinished(int exitCode, QProcess::ExitStatus status);
    void processFailed(QProcess::ProcessError error);
    void timedOut();
    void finishWithOutput(const QByteArray &output);

    QString m_toolName;
    QString m_workingDirectory;
    QProcess *m_process = nullptr;
    QTimer *m_timer = nullptr;
    QByteArray m_stdout;
    QByteArray m_stderr;
    QList<ComponentInformation> m_components;
    int m_proxyType = 0;
    int m_timeoutMs = DefaultTimeoutMs;
};
