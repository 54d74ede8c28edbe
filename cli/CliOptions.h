#pragma once

#include <QString>
#include <QStringList>

// What the user asked for on the command line. Parsing never touches a device, so usage errors are found
// before any link is opened and always end with exit status 2.
struct CliOptions {
    enum class Command {
        None,
        Ports,
        Info,
        Read,
        Write,
        Diff,
        History,
        Restore,
        Telemetry,
        Reset,
        ClearMemory,
        SetPassword,
        Decode,
        FwInfo,
        Flash,
        Batch,
        Bundle,
        Help,
        Version
    };

    Command command = Command::None;
    QString commandName;
    QStringList arguments; // positional arguments after the command name

    QString port;
    QString remoteHost;
    quint16 remotePort = 0;
    QString imei;
    bool hasPassword = false;
    quint32 password = 0;
    QString passwordFile;        // --password-file FILE: the password is the file's first line
    bool passwordPrompt = false; // --password -: asked for on the terminal without echo
    quint32 newPassword = 0;
    QString logFile;
    int timeoutMs = 0; // 0 = the command's own default
    int window = 0;    // --window N: requests on the line at once (0: the session's default)
    QString file;      // read/bundle -o FILE, write FILE, fwinfo/flash FILE
    QString csvFile;   // telemetry --csv FILE
    QString decodeHex; // decode: the hex digits of the frame

    bool json = false;
    bool raw = false;
    bool once = false;
    bool watch = false;
    // write and restore: show the changes and write nothing; take the device's values for what the file
    // does not carry; no read-back check; write a file whose values the reader would change.
    bool dryRun = false;
    bool keepDeviceValues = false;
    bool noVerify = false;
    bool force = false;
    QString diffA; // diff: a file, a snapshot or "device"
    QString diffB;
    QString imeiArgument; // history IMEI

    // batch: the template, the per-device values, the firmware, which ports, the report; wait-new stays
    // on the bench until Ctrl+C.
    QString templateFile;
    QString overridesFile;
    QString flashFile;
    QString ports; // "all" or ports and patterns separated by commas
    QString reportFile;
    bool waitNew = false;
    // --wait S: a device command waits up to S seconds for the tracker to appear; --reconnect: after reset
    // and flash, wait for the tracker to come back and show who it is.
    int waitMs = 0;
    bool reconnect = false;

    bool isRemote() const { return !remoteHost.isEmpty(); }
    bool needsDevice() const;
    // The deadline of the whole command in milliseconds, --timeout when given, else the command's default.
    int deadlineMs() const;

    // Returns an empty string on success, else one line that explains the usage error.
    QString parse(const QStringList &argv);
    // Fills the password of a device command from the prompt, the --password-file or, when neither nor
    // --password is given, from `environment` (the TAVREL_PASSWORD variable), so that it need not appear
    // among the process arguments. Returns a usage error or an empty string.
    QString resolvePassword(const QByteArray &environment);
    // Why the file of write, fwinfo or flash cannot be read as a file (a folder, a FIFO, a device),
    // checked before anything opens it: opening a FIFO would wait for a writer forever. Empty when fine.
    QString inputFileError() const;

    static QString usage();
    static QString usageHint();
};
