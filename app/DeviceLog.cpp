#include "app/DeviceLog.h"

#include "app/AppSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>
#include <QStandardPaths>
#include <QTextCodec>

#include <cstdio>
#include <cstring>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

struct LogState {
    // Qt logs from its own worker threads too (host lookup, network), so the file is guarded.
    QMutex mutex;
    bool toFile = false;
    QString directory;
    QFile file;
    QTextCodec *consoleCodec = nullptr;
};

LogState &state() {
    // Never destroyed: a line logged by some other static's destructor must still find it.
    static LogState *s = new LogState;
    return *s;
}

QString defaultDirectory() {
    // The program's data folder whatever the application object's names are at this point.
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QLatin1Char('/') +
           QLatin1String(AppSettings::Organisation) + QLatin1Char('/') +
           QLatin1String(AppSettings::Application) + QLatin1String("/logs");
}

bool isTraffic(const QMessageLogContext &context) {
    return !context.category || std::strcmp(context.category, "default") == 0;
}

void writeToFile(LogState &s, const QString &message) {
    const QString path = DeviceLog::filePath();
    if (s.file.fileName() != path) {
        s.file.close();
        QDir().mkpath(QFileInfo(path).absolutePath());
        s.file.setFileName(path);
    }
    if (!s.file.isOpen() && !s.file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return;
    s.file.write(message.toUtf8());
    s.file.write("\n", 1);
    s.file.flush();
}

} // namespace

void DeviceLog::install(bool toFile) {
#ifdef Q_OS_WIN
    SetConsoleCP(1251);
    SetConsoleOutputCP(1251);
    QTextCodec *codec = QTextCodec::codecForName("CP1251");
#else
    QTextCodec *codec = QTextCodec::codecForLocale();
#endif
    {
        QMutexLocker lock(&state().mutex);
        state().consoleCodec = codec;
    }
    setFileEnabled(toFile);
    qInstallMessageHandler(handleMessage);
}

void DeviceLog::setFileEnabled(bool on) {
    LogState &s = state();
    QMutexLocker lock(&s.mutex);
    s.toFile = on;
    if (!on)
        s.file.close();
}

bool DeviceLog::fileEnabled() {
    QMutexLocker lock(&state().mutex);
    return state().toFile;
}

void DeviceLog::setDirectory(const QString &path) {
    LogState &s = state();
    QMutexLocker lock(&s.mutex);
    s.directory = path;
    s.file.close();
}

QString DeviceLog::directory() {
    const QString dir = state().directory;
    return dir.isEmpty() ? defaultDirectory() : dir;
}

QString DeviceLog::filePath(const QDate &day) {
    return directory() + QLatin1String("/device-") + day.toString(QStringLiteral("yyyyMMdd")) +
           QLatin1String(".log");
}

void DeviceLog::handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message) {
    LogState &s = state();
    const QString line = qFormatLogMessage(type, context, message);
    {
        QMutexLocker lock(&s.mutex);
        const QByteArray bytes = s.consoleCodec ? s.consoleCodec->fromUnicode(line) : line.toLocal8Bit();
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
        std::fputc('\n', stderr);
        std::fflush(stderr);
        if (s.toFile && isTraffic(context))
            writeToFile(s, message);
    }
}
