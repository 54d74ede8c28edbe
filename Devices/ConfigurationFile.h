#pragma once

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
        QString errorString; // the file's or the JSON parser's text when status is not Ok
        bool ok() const { return status == Ok; }
    };
    struct SaveResult {
        enum Status { Ok, CannotOpen, WriteFailed };
        Status status = Ok;
        QString errorString;
        bool ok() const { return status == Ok; }
    };

    // Reads and parses `path`; on Ok the sections are updated through VantorConfiguration::read().
    // A document that is not a JSON object is a ParseError and leaves the configuration unchanged.
    static LoadResult load(const QString &path, VantorConfiguration &cfg);
    static LoadResult loadFromData(const QByteArray &data, VantorConfiguration &cfg);
    // Writes the indented JSON document atomically: an existing file is replaced only when the whole
    // new text has been written.
    static SaveResult save(const QString &path, const VantorConfiguration &cfg);
    static QByteArray toJson(const VantorConfiguration &cfg);
};

} // namespace kd
