#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

// Command line of the virtual tracker. Parsing is separate from main() so that tests can check it.
struct DevsimOptions {
    enum class Transport { None, Pty, Tcp };

    Transport transport = Transport::None;
    QString linkPath;    // --link: symlink to the pseudo-terminal's slave side
    quint16 tcpPort = 0; // --tcp PORT (0: any free port)
    QString serverImei;  // --imei: the IMEI the configuration server stand-in accepts (empty: the device's)
    QString statePath;   // --state FILE.json

    bool hasPassword = false;
    quint32 password = 0;
    bool blocked = false;

    int silentEvery = 0;
    int truncateEvery = 0;
    int garbageEvery = 0;
    bool split = false;
    int latencyMs = 0;
    int baud = 0;
    int hangupAfter = 0;
    int benchCount = 0;        // --bench N: N trackers, each on its own pseudo-terminal
    int appearEverySec = 0;    // --appear-every S: one more tracker every S seconds
    QStringList ignoredWrites; // --ignore-writes SECTION: section keys whose writes are answered but not kept
    QStringList silentSections; // --silent-section SECTION: section keys whose reads are never answered
    int dropRequestsEvery = 0;  // lose every Nth request on its way in
    QString nonsenseSection; // --nonsense SECTION[:KIND]: that section's requests are answered with nonsense
    QString nonsenseKind;    // garbage, short, long or loader

    bool hasFwVersion = false;
    quint8 fwMajor = 0;
    quint16 fwMiddle = 0;
    quint8 fwBuild = 0;
    bool hasHwVersion = false;
    quint16 hwVersion = 0;
    int corruptEvery = 0;

    bool isBench() const { return benchCount > 0 || appearEverySec > 0; }

    // Fills the options from arguments (arguments[0] is the program). False with a message on a bad command
    // line.
    bool parse(const QStringList &arguments, QString *error);
    static QString usage();
};
