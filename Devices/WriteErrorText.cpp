#include "Devices/WriteErrorText.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

namespace kd {

QString writeErrorText(const QString &path, const QString &systemText) {
    const QFileInfo file(path);
    const QFileInfo folder(file.absolutePath());
    if (!folder.exists())
        return QStringLiteral("папка %1 не существует").arg(QDir::toNativeSeparators(folder.filePath()));
    if (!folder.isDir())
        return QStringLiteral("%1 не папка").arg(QDir::toNativeSeparators(folder.filePath()));
    if (file.exists() && file.isDir())
        return QStringLiteral("%1 это папка, а не файл").arg(QDir::toNativeSeparators(path));
    if (!folder.isWritable())
        return QStringLiteral("нет прав на запись в папку %1")
            .arg(QDir::toNativeSeparators(folder.filePath()));
    if (file.exists() && !file.isWritable())
        return QStringLiteral("нет прав на запись в файл %1").arg(QDir::toNativeSeparators(path));
    const QStorageInfo storage(folder.absoluteFilePath());
    if (storage.isValid() && storage.bytesAvailable() == 0)
        return QStringLiteral("нет места на диске (%1)").arg(QDir::toNativeSeparators(storage.rootPath()));
    return QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path), systemText);
}

} // namespace kd
