#pragma once

#include <QString>

// Routes the program's messages while it runs: the exchange log (the "default" category) goes to the
// --log file when one is given, and nothing reaches the terminal except the command's own lines, so
// scripts can parse stdout and read one clear line from stderr.
//
// A log that reaches its size limit is renamed to "FILE.1" (replacing an older one) and started anew,
// so an unattended `telemetry --watch` keeps at most twice the limit on disk.
class TrafficLogFile {
public:
    static constexpr qint64 DefaultSizeLimit = 8 * 1024 * 1024;

    // Returns false (with the reason) when the file cannot be opened for writing.
    static bool install(const QString &path, QString *error, qint64 sizeLimit = DefaultSizeLimit);
    static void uninstall();
};
