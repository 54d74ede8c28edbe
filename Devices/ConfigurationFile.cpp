#include "Devices/ConfigurationFile.h"
#include "Devices/WriteErrorText.h"

#include "Devices/VantorConfiguration.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace kd {

namespace {

// QSaveFile writes beside the target into "NAME.XXXXXX", six random letters. A name of one case only
// ("NAME.backup") is far more likely the user's own file and is left alone.
constexpr int TemporarySuffixLength = 6;

bool isTemporarySuffix(const QString &suffix) {
    if (suffix.size() != TemporarySuffixLength)
        return false;
    bool upper = false, lower = false;
    for (const QChar c : suffix) {
        upper = upper || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'));
        lower = lower || (c >= QLatin1Char('a') && c <= QLatin1Char('z'));
        if (!(c >= QLatin1Char('A') && c <= QLatin1Char('Z')) &&
            !(c >= QLatin1Char('a') && c <= QLatin1Char('z')))
            return false;
    }
    return upper && lower;
}

} // namespace

ConfigurationFile::LoadResult ConfigurationFile::load(const QString &path, VantorConfiguration &cfg) {
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        LoadResult r;
        r.status = LoadResult::CannotOpen;
        r.errorString = info.isDir() ? QStringLiteral("это папка") : QStringLiteral("это не обычный файл");
        return r;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        LoadResult r;
        r.status = LoadResult::CannotOpen;
        r.errorString = file.errorString();
        return r;
    }
    return loadFromData(file.readAll(), cfg);
}

ConfigurationFile::LoadResult ConfigurationFile::loadFromData(const QByteArray &data,
                                                              VantorConfiguration &cfg) {
    LoadResult r;
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError) {
        const TextPosition at = positionOf(data, error.offset);
        r.status = LoadResult::ParseError;
        r.line = at.line;
        r.column = at.column;
        r.errorString = QStringLiteral("строка %1, столбец %2: %3")
                            .arg(at.line)
                            .arg(at.column)
                            .arg(parseErrorReason(error.error));
        return r;
    }
    if (!doc.isObject()) {
        r.status = LoadResult::ParseError;
        r.line = r.column = 1;
        r.errorString = QStringLiteral("строка 1, столбец 1: документ не объект JSON");
        return r;
    }
    cfg.read(doc.object());
    return r;
}

QString ConfigurationFile::parseErrorReason(QJsonParseError::ParseError error) {
    switch (error) {
    case QJsonParseError::NoError:
        return {};
    case QJsonParseError::UnterminatedObject:
        return QStringLiteral("объект не закрыт");
    case QJsonParseError::MissingNameSeparator:
        return QStringLiteral("нет двоеточия после имени");
    case QJsonParseError::UnterminatedArray:
        return QStringLiteral("массив не закрыт");
    case QJsonParseError::MissingValueSeparator:
        return QStringLiteral("нет запятой между значениями");
    case QJsonParseError::IllegalValue:
        return QStringLiteral("недопустимое значение");
    case QJsonParseError::TerminationByNumber:
        return QStringLiteral("текст оборвался на числе");
    case QJsonParseError::IllegalNumber:
        return QStringLiteral("недопустимое число");
    case QJsonParseError::IllegalEscapeSequence:
        return QStringLiteral("недопустимая escape-последовательность");
    case QJsonParseError::IllegalUTF8String:
        return QStringLiteral("строка не в кодировке UTF-8");
    case QJsonParseError::UnterminatedString:
        return QStringLiteral("строка не закрыта");
    case QJsonParseError::MissingObject:
        return QStringLiteral("ожидался объект");
    case QJsonParseError::DeepNesting:
        return QStringLiteral("слишком глубокая вложенность");
    case QJsonParseError::DocumentTooLarge:
        return QStringLiteral("документ слишком велик");
    case QJsonParseError::GarbageAtEnd:
        return QStringLiteral("лишний текст после документа");
    }
    return QStringLiteral("ошибка разбора JSON %1").arg(int(error));
}

ConfigurationFile::TextPosition ConfigurationFile::positionOf(const QByteArray &text, int offset) {
    TextPosition at;
    const int end = qBound(0, offset, text.size());
    for (int i = 0; i < end; ++i) {
        const char c = text.at(i);
        if (c == '\n') {
            ++at.line;
            at.column = 1;
        } else if ((quint8(c) & 0xC0) != 0x80) { // continuation bytes belong to the previous character
            ++at.column;
        }
    }
    return at;
}

QByteArray ConfigurationFile::toJson(const VantorConfiguration &cfg) {
    QJsonObject root;
    cfg.write(root);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

void ConfigurationFile::removeStaleTemporaries(const QString &path, int minimumAgeSeconds) {
    const QFileInfo target(path);
    const QString prefix = target.fileName() + QLatin1Char('.');
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-minimumAgeSeconds);
    QDir dir = target.absoluteDir();
    const QFileInfoList candidates =
        dir.entryInfoList({prefix + QStringLiteral("??????")}, QDir::Files | QDir::Hidden);
    for (const QFileInfo &candidate : candidates) {
        if (isTemporarySuffix(candidate.fileName().mid(prefix.size())) &&
            candidate.lastModified().toUTC() <= before)
            QFile::remove(candidate.absoluteFilePath());
    }
}

ConfigurationFile::SaveResult ConfigurationFile::save(const QString &path, const VantorConfiguration &cfg) {
    SaveResult r;
    removeStaleTemporaries(path);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        r.status = SaveResult::CannotOpen;
        r.errorString = writeErrorText(path, file.errorString());
        return r;
    }
    const QByteArray text = toJson(cfg);
    if (file.write(text) != text.size() || !file.commit()) {
        r.status = SaveResult::WriteFailed;
        r.errorString = writeErrorText(path, file.errorString());
    }
    return r;
}

} // namespace kd
