#pragma once

#include "protocol/Connection.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QList>
#include <QString>

#include <cstddef>
#include <cstdint>

#include <unistd.h>

// What every harness needs: an application object for signals and timers, silence (the code under test
// logs every frame it sees) and helpers for the chunked and file-based inputs.
namespace fuzz {

inline void quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

inline void initialise(int *argc, char ***argv) {
    static QCoreApplication app(*argc, *argv);
    qInstallMessageHandler(quiet);
}

inline QByteArray bytes(const uint8_t *data, size_t size) {
    return QByteArray(reinterpret_cast<const char *>(data), int(size));
}

// Objects a session hands to deleteLater() are deleted before the next input.
inline void settle() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// An input made of the reads a link delivers: each chunk is a 16-bit little-endian length and that many
// bytes (the last one cut short where the input ends). chunkRecord() writes one for the seeds.
inline QList<QByteArray> chunks(const QByteArray &data) {
    QList<QByteArray> list;
    int at = 0;
    while (at + 2 <= data.size()) {
        const int length = quint8(data.at(at)) | (quint8(data.at(at + 1)) << 8);
        at += 2;
        list << data.mid(at, length);
        at += length;
    }
    return list;
}

// A link that is always up, takes every write and hands over what deliver() puts in.
class Link : public Connection {
public:
    QByteArray pending;
    bool open() override { return true; }
    void close() override {}
    bool isOpen() const override { return true; }
    int state() const override { return Connected; }
    qint64 write(const QByteArray &bytes) override { return bytes.size(); }
    QByteArray readAll() override {
        QByteArray taken;
        taken.swap(pending);
        return taken;
    }
    void deliver(const QByteArray &chunk) {
        pending = chunk;
        emit readyRead();
    }
};

inline QByteArray chunkRecord(const QByteArray &chunk) {
    QByteArray r;
    r.append(char(chunk.size() & 0xFF)).append(char(chunk.size() >> 8));
    return r + chunk;
}

// Readers that take a path get the input through one file per process, rewritten for every input.
inline QString scratchFile(const QByteArray &content, const char *name) {
    static const QString dir =
        QFile::exists(QStringLiteral("/dev/shm")) ? QStringLiteral("/dev/shm") : QDir::tempPath();
    const QString path =
        QStringLiteral("%1/tavrel-fuzz-%2-%3").arg(dir).arg(::getpid()).arg(QLatin1String(name));
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(content);
    return path;
}

} // namespace fuzz

// Every harness defines its initialisation through this, so the application object exists first.
#define TAVREL_FUZZ_INITIALISE()                                                                             \
    extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {                                           \
        fuzz::initialise(argc, argv);                                                                        \
        return 0;                                                                                            \
    }
