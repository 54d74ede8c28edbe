#pragma once

#include <QString>

// Routes the program's messages while it runs: the exchange log (the "default" category) goes to the
// --log file when one is given, and nothing reaches the terminal except the command's own lines, so
// scripts can parse stdout and read one clear line from stderr.
class TrafficLogFile {
public:
    // Returns false (with the reason) when the file cannot be opened for writing.
    static bool install(const QString &path, QString *error);
    static void uninstall();
};
