#include "cli/TrafficLogFile.h"

#include <QFile>
#include <QtGlobal>

#include <cstdio>
#include <cstring>

namespace {

QFile *logFile = nullptr;
qint64 sizeLimit = TrafficLogFile::DefaultSizeLimit;

void rotate() {
    const QString path = logFile->fileName();
    const QString previous = path + QStringLiteral(".1");
    logFile->close();
    QFile::remove(previous);
    QFile::rename(path, previous);
    // Should the new file not open, logging stops rather than the command.
    if (!logFile->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        delete logFile;
        logFile = nullptr;
    }
}

void handler(QtMsgType type, const QMessageLogContext &context, const QString &message) {
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
        std::fflush(stderr);
        return;
    }
    if (!logFile)
        return;
    QByteArray line;
    const char *category = context.category ? context.category : "default";
    if (std::strcmp(category, "default") != 0)
        line = QByteArray(category) + ": ";
    line += message.toUtf8();
    line += '\n';
    if (!logFile->isSequential() && logFile->size() > 0 && logFile->size() + line.size() > sizeLimit)
        rotate();
    if (!logFile)
        return;
    logFile->write(line);
    logFile->flush();
}

} // namespace

bool TrafficLogFile::install(const QString &path, QString *error, qint64 limit) {
    sizeLimit = qMax<qint64>(1, limit);
    if (!path.isEmpty()) {
        auto *file = new QFile(path);
        if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
            if (error)
                *error = file->errorString();
            delete file;
            return false;
        }
        logFile = file;
    }
    qInstallMessageHandler(handler);
    return true;
}

void TrafficLogFile::uninstall() {
    qInstallMessageHandler(nullptr);
    delete logFile;
    logFile = nullptr;
}
