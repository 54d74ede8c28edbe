#pragma once

#include <QJsonParseError>
#include <QString>

class VantorConfiguration;

namespace kd {

// Whole configuration files, without any user interface: the window and the command-line tool turn
// the statuses into their own texts.
class ConfigurationFile {
public:
    struct LoadResult {
        enum Status { Ok, CannotOpen, ParseError };
        Status status = Ok;
        // The file's text when it cannot be opened; for a ParseError "строка L, столбец C: <reason>".
        QString errorString;
        int line = 0; // where the parser stopped, from 1; 0 when the status is not ParseError
        int column = 0;
        bool ok() const { return status == Ok; }
    };
    struct SaveResult {
        enum Status { Ok, CannotOpen, WriteFailed };
        Status status = Ok;
        QString errorString;
        bool ok() const { return status == Ok; }
    };
    struct TextPosition {
        int line = 1;
        int column = 1;
    };

    // Reads and parses `path`; on Ok the sections are updated through VantorConfiguration::read().
    // A document that is not a JSON object is a ParseError and leaves the configuration unchanged.
    // A path that is not a regular file (a folder, a FIFO, a device) is CannotOpen without being opened.
    static LoadResult load(const QString &path, VantorConfiguration &cfg);
    static LoadResult loadFromData(const QByteArray &data, VantorConfiguration &cfg);
    // Writes the indented JSON document atomically: an existing file is replaced only when the whole
    // new text has been written. Temporary files an interrupted earlier save left beside it are removed.
    static SaveResult save(const QString &path, const VantorConfiguration &cfg);
    static QByteArray toJson(const VantorConfiguration &cfg);

    // The Russian wording of a JSON parser error.
    static QString parseErrorReason(QJsonParseError::ParseError error);
    // Line and column (in characters, both from 1) of a byte offset into UTF-8 text.
    static TextPosition positionOf(const QByteArray &text, int offset);
    // Removes "NAME.XXXXXX" files beside `path` that an atomic save killed midway left behind and that
    // have not changed for `minimumAgeSeconds` (a younger one may belong to a save still running).
    static void removeStaleTemporaries(const QString &path, int minimumAgeSeconds = 10);
};

} // namespace kd
