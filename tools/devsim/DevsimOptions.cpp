#include "tools/devsim/DevsimOptions.h"

#include "tools/devsim/FaultInjector.h"

#include "tools/devsim/VirtualTracker.h"

#include <QCommandLineParser>

namespace {

// A non-negative count or interval; every fault option treats 0 as "off".
bool readCount(const QCommandLineParser &p, const QString &name, int *value, QString *error) {
    if (!p.isSet(name))
        return true;
    bool ok = false;
    const int v = p.value(name).toInt(&ok);
    if (!ok || v < 0) {
        *error = QStringLiteral("--%1 wants a number of 0 or more, got \"%2\"").arg(name, p.value(name));
        return false;
    }
    *value = v;
    return true;
}

} // namespace

QString DevsimOptions::usage() {
    return QStringLiteral(
        "Usage: tavrel-devsim (--pty [--link PATH] | --tcp PORT [--imei IMEI]) [options]\n"
        "A virtual tracker that answers the configurator like the real device.\n"
        "\n"
        "Link:\n"
        "  --pty                 open a pseudo-terminal; its slave path is the first line printed\n"
        "  --link PATH           also make the symlink PATH to the slave (removed on exit)\n"
        "  --bench N             serve N trackers with distinct IMEIs, each on its own pseudo-terminal\n"
        "                        (one path a line); --link PATH and --state FILE get numbered: PATH-1 ...\n"
        "  --appear-every S      plug in one more tracker every S seconds (with --pty, --bench optional)\n"
        "  --tcp PORT            act as the configuration server on 127.0.0.1:PORT (0: a free port);\n"
        "                        \"127.0.0.1:<port>\" is the first line printed\n"
        "  --imei IMEI           the IMEI the server accepts in the login frame (default: the device's)\n"
        "Device:\n"
        "  --state FILE.json     load the device's settings from FILE and save them after each write\n"
        "  --password N          ask for a login with password N before anything else\n"
        "  --blocked             answer every request with \"device blocked\"\n"
        "  --fw-version M.m.B    firmware version the boot loader reports (e.g. 3.9.17)\n"
        "  --hw-version HEX      hardware version the boot loader reports (e.g. 1203)\n"
        "  --corrupt-every N     the boot loader garbles the checksum of every Nth message\n"
        "Faults:\n"
        "  --silent-every N      drop every Nth answer\n"
        "  --truncate-every N    cut every Nth answer short\n"
        "  --garbage-every N     send random bytes instead of every Nth answer\n"
        "  --split               send each answer in two writes with a pause between them\n"
        "  --latency MS          wait MS milliseconds before each answer\n"
        "  --baud B              pace the line at B baud both ways (10 bits a byte)\n"
        "  --hangup-after N      close the link after N answers (pty: exit; tcp: disconnect the client)\n"
        "  --ignore-writes KEY   answer writes of section KEY (e.g. SystemConfiguration) with status 1\n"
        "                        but keep the old values (repeatable)\n"
        "  --silent-section KEY  never answer reads of section KEY (repeatable)\n"
        "  --drop-requests-every N  lose every Nth request on its way in, as if lost on the line\n"
        "  --nonsense KEY[:KIND] answer every read and write of section KEY with nonsense of KIND:\n"
        "                        garbage (default), short (a frame shorter than its head), long (a\n"
        "                        length past any frame) or loader (a boot-loader look-alike)\n");
}

bool DevsimOptions::parse(const QStringList &arguments, QString *error) {
    QString dummy;
    if (!error)
        error = &dummy;
    QCommandLineParser p;
    p.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QString valued[] = {"link",
                              "tcp",
                              "imei",
                              "state",
                              "password",
                              "silent-every",
                              "truncate-every",
                              "garbage-every",
                              "latency",
                              "baud",
                              "hangup-after",
                              "fw-version",
                              "hw-version",
                              "corrupt-every",
                              "ignore-writes",
                              "silent-section",
                              "bench",
                              "appear-every",
                              "drop-requests-every",
                              "nonsense"};
    const QString flags[] = {"pty", "blocked", "split", "help"};
    for (const QString &name : valued)
        p.addOption(QCommandLineOption(name, QString(), QStringLiteral("value")));
    for (const QString &name : flags)
        p.addOption(QCommandLineOption(name));
    if (!p.parse(arguments)) {
        *error = p.errorText();
        return false;
    }
    if (p.isSet("help")) {
        *error = QString();
        return false;
    }
    if (!p.positionalArguments().isEmpty()) {
        *error = QStringLiteral("unexpected argument \"%1\"").arg(p.positionalArguments().first());
        return false;
    }

    if (p.isSet("pty") == p.isSet("tcp")) {
        *error = QStringLiteral("choose exactly one link: --pty or --tcp PORT");
        return false;
    }
    if (p.isSet("pty")) {
        transport = Transport::Pty;
        linkPath = p.value("link");
        if (p.isSet("imei")) {
            *error = QStringLiteral("--imei belongs to --tcp");
            return false;
        }
    } else {
        transport = Transport::Tcp;
        bool ok = false;
        const uint port = p.value("tcp").toUInt(&ok);
        if (!ok || port > 65535) {
            *error = QStringLiteral("--tcp wants a port number (0 to 65535), got \"%1\"").arg(p.value("tcp"));
            return false;
        }
        tcpPort = quint16(port);
        serverImei = p.value("imei");
        if (p.isSet("link")) {
            *error = QStringLiteral("--link belongs to --pty");
            return false;
        }
    }
    statePath = p.value("state");
    blocked = p.isSet("blocked");
    split = p.isSet("split");
    ignoredWrites = p.values("ignore-writes");
    for (const QString &key : ignoredWrites) {
        if (!VirtualTracker::writeCode(key)) {
            *error = QStringLiteral("--ignore-writes wants a written section key, got \"%1\"").arg(key);
            return false;
        }
    }

    silentSections = p.values("silent-section");
    for (const QString &key : silentSections) {
        if (!VirtualTracker::writeCode(key)) {
            *error = QStringLiteral("--silent-section wants a section key, got \"%1\"").arg(key);
            return false;
        }
    }

    if (p.isSet("nonsense")) {
        const QStringList parts = p.value("nonsense").split(QLatin1Char(':'));
        nonsenseSection = parts.first();
        nonsenseKind = parts.value(1, QStringLiteral("garbage"));
        if (parts.size() > 2 || !VirtualTracker::writeCode(nonsenseSection) ||
            !FaultInjector::nonsenseKinds().contains(nonsenseKind)) {
            *error = QStringLiteral(
                         "--nonsense wants a section key and garbage, short, long or loader, got \"%1\"")
                         .arg(p.value("nonsense"));
            return false;
        }
    }

    if (p.isSet("password")) {
        bool ok = false;
        password = p.value("password").toUInt(&ok);
        if (!ok) {
            *error = QStringLiteral("--password wants an unsigned 32-bit number, got \"%1\"")
                         .arg(p.value("password"));
            return false;
        }
        hasPassword = true;
    }

    if (!readCount(p, "silent-every", &silentEvery, error) ||
        !readCount(p, "truncate-every", &truncateEvery, error) ||
        !readCount(p, "garbage-every", &garbageEvery, error) || !readCount(p, "latency", &latencyMs, error) ||
        !readCount(p, "baud", &baud, error) || !readCount(p, "hangup-after", &hangupAfter, error) ||
        !readCount(p, "drop-requests-every", &dropRequestsEvery, error) ||
        !readCount(p, "corrupt-every", &corruptEvery, error) || !readCount(p, "bench", &benchCount, error) ||
        !readCount(p, "appear-every", &appearEverySec, error))
        return false;
    if (isBench() && transport != Transport::Pty) {
        *error = QStringLiteral("--bench and --appear-every belong to --pty");
        return false;
    }

    if (p.isSet("fw-version")) {
        const QStringList parts = p.value("fw-version").split('.');
        bool ok[3] = {false, false, false};
        uint v[3] = {0, 0, 0};
        for (int i = 0; i < parts.size() && i < 3; ++i)
            v[i] = parts.at(i).toUInt(&ok[i]);
        if (parts.size() != 3 || !ok[0] || !ok[1] || !ok[2] || v[0] > 0xFF || v[1] > 0xFFFF || v[2] > 0xFF) {
            *error = QStringLiteral("--fw-version wants MAJOR.MIDDLE.BUILD (0-255.0-65535.0-255), got \"%1\"")
                         .arg(p.value("fw-version"));
            return false;
        }
        hasFwVersion = true;
        fwMajor = quint8(v[0]);
        fwMiddle = quint16(v[1]);
        fwBuild = quint8(v[2]);
    }
    if (p.isSet("hw-version")) {
        QString text = p.value("hw-version");
        if (text.startsWith("0x", Qt::CaseInsensitive))
            text = text.mid(2);
        bool ok = false;
        const uint v = text.toUInt(&ok, 16);
        if (!ok || v > 0xFFFF) {
            *error = QStringLiteral("--hw-version wants a 16-bit hexadecimal number, got \"%1\"")
                         .arg(p.value("hw-version"));
            return false;
        }
        hasHwVersion = true;
        hwVersion = quint16(v);
    }
    return true;
}
