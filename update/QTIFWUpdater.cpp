#include "update/QTIFWUpdater.h"

#include "update/UpdateLog.h"

#include <QBuffer>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

namespace {

const QByteArray NoUpdates("no updates");

} // namespace

QTIFWUpdater::QTIFWUpdater(QObject *parent)
    : QObject(parent)
    , m_timer(new QTimer(this)) {
    qRegisterMetaType<QList<ComponentInformation>>();
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &QTIFWUpdater::timedOut);
}

QTIFWUpdater::~QTIFWUpdater() {
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
        m_process->waitForFinished(1000); // reap the child; the window is closing anyway
    }
}

QStringList QTIFWUpdater::checkArguments(int proxyType) {
    if (proxyType == 0)
        return {QStringLiteral("--checkupdates"), QStringLiteral("--no-proxy")};
    return {QStringLiteral("--start-updater"), QStringLiteral("--system-proxy")};
}

QStringList QTIFWUpdater::updaterArguments() {
    return {QStringLiteral("--updater"), QStringLiteral("--no-proxy")};
}

QString QTIFWUpdater::toolPath() const {
    // A bare name means the tool beside the configurator, in the working directory, not one on the PATH.
    if (!m_workingDirectory.isEmpty() && QFileInfo(m_toolName).isRelative())
        return QDir(m_workingDirectory).absoluteFilePath(m_toolName);
    return m_toolName;
}

bool QTIFWUpdater::checkUpdates() {
    if (isRunning())
        return false;
    m_stdout.clear();
    m_stderr.clear();
    m_process = new QProcess(this);
    connect(m_process, &QProcess::readyReadStandardOutput, this,
            [this] { m_stdout += m_process->readAllStandardOutput(); });
    connect(m_process, &QProcess::readyReadStandardError, this,
            [this] { m_stderr += m_process->readAllStandardError(); });
    connect(m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            &QTIFWUpdater::processFinished);
    connect(m_process, &QProcess::errorOccurred, this, &QTIFWUpdater::processFailed);
    m_timer->start(m_timeoutMs);
    if (!m_workingDirectory.isEmpty())
        m_process->setWorkingDirectory(m_workingDirectory);
    m_process->start(toolPath(), checkArguments(m_proxyType), QIODevice::ReadWrite);
    return true;
}

bool QTIFWUpdater::isRunning() const {
    return m_process != nullptr;
}

void QTIFWUpdater::killCheckProcess() {
    if (!m_process)
        return;
    m_timer->stop();
    QProcess *process = m_process;
    m_process = nullptr;
    process->disconnect(this);
    connect(process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), process,
            &QObject::deleteLater);
    if (process->state() == QProcess::NotRunning)
        process->deleteLater();
    else
        process->kill();
}

bool QTIFWUpdater::startUpdater() const {
    return QProcess::startDetached(toolPath(), updaterArguments(), m_workingDirectory);
}

void QTIFWUpdater::timedOut() {
    if (!m_process)
        return;
    killCheckProcess();
    emit errorOccurred(QStringLiteral("Updates checking timeout"));
}

void QTIFWUpdater::processFailed(QProcess::ProcessError error) {
    // Crashes and time-outs arrive through finished(); only a tool that never started ends here.
    if (error != QProcess::FailedToStart || !m_process)
        return;
    const QString detail = m_process->errorString();
    killCheckProcess();
    emit errorOccurred(QStringLiteral("Update checking tool finished unexpectedly.") +
                       QStringLiteral("\n%1").arg(detail));
}

void QTIFWUpdater::processFinished(int exitCode, QProcess::ExitStatus status) {
    if (!m_process)
        return;
    m_stdout += m_process->readAllStandardOutput();
    m_stderr += m_process->readAllStandardError();
    const QByteArray output = m_stdout;
    const QByteArray errorOutput = m_stderr;
    const QString errorText = QString::fromLocal8Bit(errorOutput);
    m_stdout.clear();
    m_stderr.clear();
    m_timer->stop();
    m_process->disconnect(this);
    m_process->deleteLater();
    m_process = nullptr;

    if (status == QProcess::CrashExit) {
        emit errorOccurred(QStringLiteral("Update checking tool finished unexpectedly.") +
                           QStringLiteral("\n%1").arg(errorText));
        return;
    }
    if (exitCode == 0) {
        finishWithOutput(output);
        return;
    }
    // Exit code 1 is how the tool says there is nothing to install; some versions say so on stderr.
    if (exitCode == 1 && (output.contains(NoUpdates) || errorOutput.contains(NoUpdates))) {
        emit warningOccurred(QString::fromLocal8Bit(output.contains(NoUpdates) ? output : errorOutput));
        return;
    }
    emit errorOccurred(QStringLiteral("Update checking tool returns error code %1").arg(exitCode) +
                       QStringLiteral("\n%1").arg(errorText));
}

void QTIFWUpdater::finishWithOutput(const QByteArray &output) {
    if (output.contains(NoUpdates)) {
        emit warningOccurred(QString::fromLocal8Bit(output));
        return;
    }
    QList<ComponentInformation> components;
    QString error;
    if (!parseAnswer(output, components, error)) {
        emit errorOccurred(error);
        return;
    }
    m_components = components;
    emit checkComplete(m_components);
}

bool QTIFWUpdater::parseAnswer(const QByteArray &answer, QList<ComponentInformation> &components,
                               QString &error) {
    QByteArray data = answer;
    QBuffer buffer(&data);
    if (!buffer.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("Internal error");
        return false;
    }
    QDomDocument doc;
    QString message;
    int line = 0;
    int column = 0;
    if (!doc.setContent(&buffer, &message, &line, &column)) {
        error = QStringLiteral("Update information parsing error.\n%1 (line %2:%3).")
                    .arg(message)
                    .arg(line)
                    .arg(column);
        return false;
    }
    const QDomNode updates = doc.elementsByTagName(QStringLiteral("updates")).item(0);
    if (updates.isNull() || !updates.isElement()) {
        error = QStringLiteral("Unrecognized response format");
        return false;
    }
    components.clear();
    for (QDomElement e = updates.firstChildElement(QStringLiteral("update")); !e.isNull();
         e = e.nextSiblingElement(QStringLiteral("update"))) {
        components.append({e.attribute(QStringLiteral("name")), e.attribute(QStringLiteral("version")),
                           e.attribute(QStringLiteral("size"))});
    }
    return true;
}

QString QTIFWUpdater::reportText(const QList<ComponentInformation> &components) {
    QString text = QStringLiteral("Количество обновлений: %1\n").arg(components.size());
    for (const ComponentInformation &c : components) {
        text += QStringLiteral("Доступно обновление.\n");
        text += QStringLiteral("Название приложения: %1\n").arg(c.name);
        text += QStringLiteral("Версия: %1\n").arg(c.version);
        text += QStringLiteral("Размер: %1\n").arg(c.size);
        text += QLatin1Char('\n');
    }
    return text;
}

bool QTIFWUpdater::readNetworkSettings(const QString &fileName, NetworkSettings &settings, QString &error) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return false;
    }
    QDomDocument doc;
    QString message;
    int line = 0;
    int column = 0;
    if (!doc.setContent(&file, &message, &line, &column)) {
        error = QStringLiteral("XML file parsing error.\n%1\nFile: %2\nLine %3:%4")
                    .arg(message, QFileInfo(file).absoluteFilePath())
                    .arg(line)
                    .arg(column);
        return false;
    }
    const QDomElement network = doc.elementsByTagName(QStringLiteral("Network")).item(0).toElement();
    settings.proxyType = network.firstChildElement(QStringLiteral("ProxyType")).text().trimmed().toInt();
    settings.username = network.firstChildElement(QStringLiteral("Username")).text();
    settings.password = network.firstChildElement(QStringLiteral("Password")).text();
    return true;
}
