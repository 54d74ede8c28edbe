// The terminal tool: its command line, traffic log and port list on their own; then end to end, running the
// real tavrel-cli binary against the virtual tracker (a pseudo-terminal or its configuration-server
// stand-in on 127.0.0.1) and checking exit status, stdout, stderr and the files it writes.
#include "tests/support/DevsimProcess.h"
#include "tests/update/BskBuilder.h"

#include "Devices/ConfigurationDiff.h"
#include "Devices/VantorConfiguration.h"
#include "cli/CliOptions.h"
#include "cli/PortList.h"
#include "cli/TrafficLogFile.h"
#include "protocol/Frame.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString CliBinary = QStringLiteral(TAVREL_BINARY_DIR "/cli/tavrel-cli");
const QString DevsimBinary = QStringLiteral(TAVREL_BINARY_DIR "/tools/devsim/tavrel-devsim");
const QString DataDir = QStringLiteral(TAVREL_TEST_DATA "/cli");
const QString DeviceImei = QStringLiteral("863071014478127");
const QByteArray Fifo = QByteArrayLiteral("<fifo>");

// One virtual tracker per test case, on a pseudo-terminal unless "--tcp 0" puts it behind its
// configuration-server stand-in.
struct Devsim : DevsimProcess {
    bool start(const QStringList &args = {}) {
        return DevsimProcess::start(args.contains("--tcp") ? args : QStringList{"--pty"} + args);
    }
    // Arguments that point tavrel-cli at this tracker.
    QStringList link() const {
        return address().startsWith('/') ? QStringList{"--port", address()}
                                         : QStringList{"--remote", address(), "--imei", DeviceImei};
    }
};

struct Result {
    int exitCode = -1; // -1: hung or crashed
    QString out, err;
    qint64 elapsedMs = 0;
    QString describe() const {
        return QStringLiteral("exit %1, stdout:\n%2\nstderr:\n%3").arg(exitCode).arg(out, err);
    }
};

Result runCli(const QStringList &args, int limitMs = 30000, const QByteArray &input = {}) {
    QProcess p;
    QElapsedTimer clock;
    clock.start();
    p.start(CliBinary, args);
    Result r;
    if (p.waitForStarted(5000) && !input.isEmpty())
        p.write(input), p.closeWriteChannel();
    if (p.waitForStarted(5000) && p.waitForFinished(limitMs) && p.exitStatus() == QProcess::NormalExit)
        r.exitCode = p.exitCode();
    else
        p.kill(), p.waitForFinished(2000);
    r.elapsedMs = clock.elapsed();
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    return r;
}

// A file's bytes, empty when it cannot be read.
QByteArray contents(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject readJson(const QString &path) {
    return QJsonDocument::fromJson(contents(path)).object();
}

// How the settings of two configuration files differ once the configurator has loaded them ("path: a -> b"
// lines): what its loader deliberately skips (the false-speed threshold, the roaming) drops out on both
// sides. A file that loads no settings at all is a difference of its own.
QStringList differences(const QJsonObject &a, const QJsonObject &b) {
    VantorConfiguration x, y;
    x.read(a);
    y.read(b);
    if (kd::ConfigurationDiff::compare(x, VantorConfiguration()).isEmpty())
        return {"no settings"};
    return kd::ConfigurationDiff::compare(x, y).plainLines();
}

// A one-line error: "tavrel-cli: <text>" and nothing else on stderr.
bool isOneErrorLine(const QString &err) {
    const QStringList lines = err.split('\n', Qt::SkipEmptyParts);
    return lines.size() == 1 && lines.constFirst().startsWith("tavrel-cli: ") &&
           lines.constFirst().size() > 14;
}

// A copy of the tracker's starting state: the tracker writes its state back when it stops.
QString stateCopy(const QString &path) {
    QFile::remove(path);
    QFile::copy(DataDir + "/device-state.json", path);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return path;
}

QString tagFile(const QString &dir, const char *suffix) {
    return dir + '/' + QString::fromUtf8(QTest::currentDataTag()).replace(' ', '-') + QLatin1String(suffix);
}

} // namespace

class tst_Cli : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QString m_image;

private slots:
    void initTestCase() {
        if (!QFile::exists(CliBinary) || !QFile::exists(DevsimBinary))
            QSKIP("tavrel-cli or tavrel-devsim is not built");
        QVERIFY(m_dir.isValid());
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_dir.path())); // the writes' snapshots stay out of $HOME
        BskBuilder b;
        b.pages = 512;
        m_image = m_dir.filePath("flash.bsk");
        QVERIFY(BskBuilder::write(m_image, b.build()));
    }

    // Each row: the arguments divided by blanks, the command, field=value pairs joined by ';'.
    void parse_validLines_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("command");
        QTest::addColumn<QString>("check");
        using C = CliOptions::Command;
        const auto row = [](const char *name, const QString &args, C command, const QString &check) {
            QTest::newRow(name) << args.split(' ') << int(command) << check;
        };
        // The deadline defaults per command unless --timeout gives one.
        row("options after the command", "info --json --port /dev/pts/3", C::Info,
            "port=/dev/pts/3;json=1;deadline=15000;device=1");
        row("inline values", "--timeout=2.5 --password=0 reset", C::Reset,
            "timeout=2500;deadline=2500;password=0");
        row("largest password", "--password 4294967295 info", C::Info, "password=4294967295");
        row("remote with ipv6-like host", "--remote ::1:7000 --imei 86307 info", C::Info,
            "host=::1;remotePort=7000;imei=86307");
        row("read output", "read --output a.json", C::Read, "file=a.json;deadline=60000");
        row("flash", "flash f.bsk", C::Flash, "file=f.bsk;deadline=120000;device=1");
        row("decode joins its arguments", "decode a5 a5", C::Decode, "hex=a5 a5;device=0");
        row("hex after double dash", "decode -- -a5", C::Decode, "hex=-a5");
        row("set-password", "set-password 77", C::SetPassword, "newPassword=77");
        row("watch raw", "telemetry --watch --raw", C::Telemetry, "watch=1;raw=1;device=1");
        row("ports", "ports", C::Ports, "device=0");
        row("fwinfo", "fwinfo f.bsk", C::FwInfo, "device=0");
        row("password file", "--password-file p.txt info", C::Info, "passwordFile=p.txt;password=none");
        row("write safely", "write a.json --dry-run --keep-device-values --force", C::Write,
            "file=a.json;flags=1101;device=1");
        row("restore", "restore s.json --no-verify", C::Restore, "file=s.json;flags=0010;device=1");
        row("diff of files", "diff a.json b.json", C::Diff, "diff=a.json b.json;device=0");
        row("diff with the device", "diff s.json device", C::Diff, "diff=s.json device;device=1");
        row("history", "history 86307", C::History, "imei=86307;device=0");
        row("help wins", "flush --help", C::Help, QString());
    }

    void parse_validLines() {
        QFETCH(QStringList, args);
        QFETCH(int, command);
        QFETCH(QString, check);
        CliOptions o;
        const QString error = o.parse(args);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QCOMPARE(int(o.command), command);
        const QHash<QString, QString> actual{
            {"port", o.port},
            {"json", QString::number(o.json)},
            {"timeout", QString::number(o.timeoutMs)},
            {"deadline", QString::number(o.deadlineMs())},
            {"device", QString::number(o.needsDevice())},
            {"password", o.hasPassword ? QString::number(o.password) : QStringLiteral("none")},
            {"host", o.remoteHost},
            {"remotePort", QString::number(o.remotePort)},
            {"imei", o.imei + o.imeiArgument},
            {"diff", o.diffA + ' ' + o.diffB},
            {"flags", QString("%1%2%3%4").arg(o.dryRun).arg(o.keepDeviceValues).arg(o.noVerify).arg(o.force)},
            {"file", o.file},
            {"hex", o.decodeHex},
            {"newPassword", QString::number(o.newPassword)},
            {"watch", QString::number(o.watch)},
            {"raw", QString::number(o.raw)},
            {"passwordFile", o.passwordFile},
        };
        for (const QString &pair : check.split(';', Qt::SkipEmptyParts)) {
            const int eq = pair.indexOf('=');
            QCOMPARE(actual.value(pair.left(eq)), pair.mid(eq + 1));
        }
    }

    // Three 31-byte lines fit under a 100-byte limit: the fourth starts a new file, the older one becomes
    // ".1".
    void trafficLog_rotatesAtItsSizeLimit() {
        QTemporaryDir dir;
        const QString path = dir.filePath("exchange.log");
        QString error;
        QVERIFY(TrafficLogFile::install(path, &error, 100));
        for (char c = 'a'; c <= 'j'; ++c)
            qDebug("%s", QByteArray(30, c).constData());
        TrafficLogFile::uninstall();
        QCOMPARE(contents(path), QByteArray(30, 'j') + '\n');
        QCOMPARE(contents(path + ".1"),
                 QByteArray(30, 'g') + '\n' + QByteArray(30, 'h') + '\n' + QByteArray(30, 'i') + '\n');
        QCOMPARE(QDir(dir.path()).count(), 4u); // ".", "..", the log and one older part
    }

    // The blanks of a port that does not report a field are SerialConnection::record's.
    void portList_oneTabSeparatedLinePerPort() {
        SerialPortDescription port;
        port.portName = QStringLiteral("ttyACM0");
        port.description = QStringLiteral("Vantor micro");
        port.hasVendorIdentifier = true;
        port.vendorIdentifier = 0x2226;
        port.hasProductIdentifier = true;
        port.productIdentifier = 0x0013;
        QCOMPARE(portRecordLine(SerialConnection::record(port)),
                 QStringLiteral("ttyACM0\tVantor micro\t - \t13\t2226"));
    }

    // Group titles in the order of the state page, each followed by its "  name: value" lines; raw, the
    // records of every polled kind (their layout is the report's own business).
    void telemetry_once_textAndRaw() {
        Devsim sim;
        QVERIFY(sim.start({"--tcp", "0"}));
        Result r = runCli(sim.link() + QStringList{"telemetry", "--once"});
        QVERIFY2(r.exitCode == 0, qPrintable(r.describe()));
        const QStringList lines = r.out.split('\n');
        int previous = -1;
        for (const char *title : {"Прибор", "Часы", "Навигация", "Навигационный приемник 1", "SIM 1",
                                  "Сервер 1", "Аналоговый вход 1", "Логический вход 1", "Датчики топлива"}) {
            QVERIFY2(lines.indexOf(title) > previous, title);
            previous = lines.indexOf(title);
        }
        static const QRegularExpression valueLine("^  [^:]+: .*$");
        for (const QString &l : lines)
            QVERIFY2(!l.startsWith(' ') || valueLine.match(l).hasMatch(), qPrintable(l));
        QVERIFY(r.out.contains(QRegularExpression("  Адрес: \\d+\\.\\d+\\.\\d+\\.\\d+:\\d+\\n")));

        r = runCli(sim.link() + QStringList{"telemetry", "--once", "--raw"});
        QVERIFY2(r.exitCode == 0, qPrintable(r.describe()));
        static const QRegularExpression rawLine("^kind=(\\d+) index=\\d+ [0-9a-f]+$");
        QSet<int> kinds;
        for (const QString &l : r.out.split('\n', Qt::SkipEmptyParts)) {
            QVERIFY2(rawLine.match(l).hasMatch(), qPrintable(l));
            kinds.insert(rawLine.match(l).captured(1).toInt());
        }
        QCOMPARE(kinds, QSet<int>({10, 11, 14, 15, 16, 17, 18, 19, 21, 22, 23, 24}));
    }

    void telemetry_watch_endsCleanlyOnInterrupt() {
        Devsim sim;
        QVERIFY(sim.start());
        QProcess p;
        p.start(CliBinary, sim.link() + QStringList{"telemetry", "--watch"});
        static const QRegularExpression stamp("(^|\\n)\\d\\d:\\d\\d:\\d\\d\\n");
        QString seen;
        QElapsedTimer clock;
        clock.start();
        // Two rounds, a second apart.
        while (seen.count(stamp) < 2 && clock.elapsed() < 10000 && p.waitForStarted(5000)) {
            p.waitForReadyRead(200);
            seen += QString::fromUtf8(p.readAllStandardOutput());
        }
        QCOMPARE(seen.count(stamp), 2);
        QVERIFY(clock.elapsed() >= 900);
        ::kill(pid_t(p.processId()), SIGINT);
        QVERIFY(p.waitForFinished(5000) && p.exitStatus() == QProcess::NormalExit);
        QCOMPARE(p.exitCode(), 0);
        QVERIFY(p.readAllStandardError().isEmpty());
    }

    // A bench of three trackers plus three that fail: each of the three is flashed and gets its own row of
    // the table (its state file shows it) or, the third being unlisted, the template alone; the others fail
    // alone, each with its reason.
    void batch_bench_eachTrackerItsOwnValues() {
        const QString dir = m_dir.filePath("bench");
        QVERIFY(QDir().mkpath(dir));
        QProcess bench;
        bench.start(DevsimBinary,
                    {"--pty", "--bench", "3", "--link", dir + "/t", "--state", dir + "/s.json"});
        // Trackers that fail, each alone with its reason: a password nobody gave, a blocked device, a
        // section answered with nonsense.
        Devsim locked, blocked, nonsense;
        QVERIFY(locked.start({"--link", dir + "/t-locked", "--password", "5"}));
        QVERIFY(blocked.start({"--link", dir + "/t-blocked", "--blocked"}));
        QVERIFY(nonsense.start({"--link", dir + "/t-nonsense", "--nonsense", "ServerConfiguration:short"}));
        while (bench.waitForReadyRead(5000) && bench.readAll().count('\n') < 3 &&
               !QFile::exists(dir + "/t-3"))
            ;
        const QString csv = dir + "/devices.csv";
        const QStringList imeis{"863071010000013", "863071010000021", "863071010000039"};
        QByteArray table = "IMEI;Server[0].server;gsm[1].gprs 2.apn\n";
        for (int i = 0; i < 2; ++i)
            table += QStringLiteral("%1;srv%2.example.ru;apn%2\n").arg(imeis.at(i)).arg(i + 1).toUtf8();
        QVERIFY(BskBuilder::write(csv, table));
        const QString report = dir + "/report.csv";
        const Result r =
            runCli({"batch", "--template", DataDir + "/write-config.json", "--overrides", csv, "--ports",
                    dir + "/t-*", "--report", report, "--timeout", "5", "--flash", m_image});
        QVERIFY2(r.exitCode == 1 && r.out.count(QStringLiteral(": успешно\n")) == 2 &&
                     r.out.contains(imeis.at(2) + " (" + dir +
                                    "/t-3): успешно (только шаблон: IMEI нет в таблице значений)") &&
                     r.out.contains("(" + dir + "/t-locked): ошибка: прибор запросил пароль") &&
                     r.out.contains("(" + dir + "/t-blocked): ошибка: прибор заблокирован") &&
                     r.out.contains("(" + dir + "/t-nonsense): ошибка: нет ответа: серверы"),
                 qPrintable(r.describe()));
        const QStringList lines = QString::fromUtf8(contents(report)).split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 7);
        QVERIFY(lines.constFirst().startsWith("время,порт,IMEI,"));
        ::kill(pid_t(bench.processId()), SIGTERM);
        QVERIFY(bench.waitForFinished(5000));
        const QJsonObject expected = readJson(DataDir + "/write-config.json");
        for (int i = 0; i < 3; ++i) {
            QVERIFY2(lines.filter(imeis.at(i) + ",918,918,успешно")
                             .filter(QRegularExpression(",\"системные параметры, навигация, .*\",да$"))
                             .size() == 1,
                     qPrintable(lines.join('\n')));
            const QJsonObject state = readJson(QStringLiteral("%1/s-%2.json").arg(dir).arg(i + 1));
            const QJsonObject &values = i < 2 ? QJsonObject() : expected;
            QCOMPARE(state["Server"][0]["server"].toString(),
                     values["Server"][0]["server"].toString(QStringLiteral("srv%1.example.ru").arg(i + 1)));
            QCOMPARE(state["gsm"][1]["gprs 2"]["apn"].toString(),
                     values["gsm"][1]["gprs 2"]["apn"].toString(QStringLiteral("apn%1").arg(i + 1)));
            QCOMPARE(state.value("SystemParameters"), expected.value("SystemParameters"));
        }
    }

    // The service bench: trackers plugged in one after another are programmed as they come; one that
    // comes back (same IMEI) is not programmed again; Ctrl+C ends the run with the report of each.
    void batch_waitNew_programsEachNewTrackerOnce() {
        const QString dir = m_dir.filePath("waitnew");
        QVERIFY(QDir().mkpath(dir));
        Devsim solo;
        QVERIFY(solo.start({"--link", dir + "/solo"}));
        QProcess cli;
        // The bench goes on plugging in trackers: only the first two are chosen, so that none is being
        // programmed when the run is interrupted.
        cli.start(CliBinary, {"batch", "--template", DataDir + "/write-config.json", "--ports",
                              dir + "/b-1," + dir + "/b-2," + dir + "/solo", "--wait-new", "--report",
                              dir + "/report.csv"});
        QProcess bench;
        bench.start(DevsimBinary, {"--pty", "--bench", "1", "--appear-every", "1", "--link", dir + "/b"});
        QString out, err;
        QElapsedTimer clock;
        clock.start();
        bool replugged = false;
        while (out.count('\n') < 3 && clock.elapsed() < 15000 && cli.waitForStarted(5000)) {
            cli.waitForReadyRead(200);
            out += QString::fromUtf8(cli.readAllStandardOutput());
            err += QString::fromUtf8(cli.readAllStandardError());
            // The same tracker pulled out, and plugged in again once the tool has seen it go.
            if (!replugged && out.contains(DeviceImei) && solo.process().state() == QProcess::Running)
                solo.stop();
            if (!replugged && err.contains(dir + "/solo: прибор отключен"))
                replugged = solo.start({"--link", dir + "/solo"});
        }
        while (!err.contains(QStringLiteral("уже запрограммирован")) && clock.elapsed() < 15000) {
            cli.waitForReadyRead(200);
            err += QString::fromUtf8(cli.readAllStandardError());
        }
        ::kill(pid_t(cli.processId()), SIGINT);
        QVERIFY(cli.waitForFinished(5000) && cli.exitStatus() == QProcess::NormalExit);
        out += QString::fromUtf8(cli.readAllStandardOutput());
        ::kill(pid_t(bench.processId()), SIGTERM);
        bench.waitForFinished(5000);
        QVERIFY2(err.contains(DeviceImei + " (" + dir + "/solo): уже запрограммирован"), qPrintable(err));
        QCOMPARE(out.count(DeviceImei), 1);
        QVERIFY2(out.contains("863071010000013 (" + dir + "/b-1): успешно") &&
                     out.contains("863071010000021 (" + dir + "/b-2): успешно"),
                 qPrintable(out));
        QCOMPARE(contents(dir + "/report.csv").count('\n'), out.count('\n') + 1);
        QCOMPARE(cli.exitCode(), 0);
    }

    // --wait: the command is started before the tracker is plugged in; --reconnect: after the flash the
    // tracker starts again and is shown once it answers.
    void waitAndReconnect_followTheTrackerComingAndGoing() {
        const QString link = m_dir.filePath("late");
        QProcess cli;
        cli.start(CliBinary, {"--port", link, "--wait", "10", "info"});
        QVERIFY(cli.waitForStarted(5000));
        Devsim sim;
        QVERIFY(!cli.waitForFinished(300) && sim.start({"--link", link}));
        QVERIFY(cli.waitForFinished(10000));
        QVERIFY2(cli.exitCode() == 0 && cli.readAllStandardOutput().contains(DeviceImei.toUtf8()),
                 cli.readAllStandardError().constData());

        Result r = runCli({"--port", link, "flash", m_image, "--reconnect"});
        QVERIFY2(r.exitCode == 0 && r.out.contains("IMEI: " + DeviceImei) &&
                     r.err.contains("Обновление завершено."),
                 qPrintable(r.describe()));
        sim.stop();
        r = runCli({"--port", link, "--wait", "1.2", "info"});
        QVERIFY2(r.exitCode == 1 && r.err.contains("Нет подключенных приборов"), qPrintable(r.describe()));
    }

    // A configurator asked for telemetry and went away without reading the answer: the next session's first
    // answer is its own.
    void staleAnswer_doesNotGreetTheNextSession() {
        Devsim sim;
        QVERIFY(sim.start());
        const int fd = ::open(QFile::encodeName(sim.address()).constData(), O_RDWR | O_NOCTTY);
        const QByteArray request = proto::Frame::build(7, QByteArray::fromHex("820a0000"));
        pollfd answer{fd, POLLIN, 0}; // the answer is on the line, unread, when the configurator goes away
        QVERIFY(fd >= 0 && ::write(fd, request.constData(), size_t(request.size())) == request.size() &&
                ::poll(&answer, 1, 5000) == 1);
        ::close(fd);
        const QString log = m_dir.filePath("stale.log");
        QCOMPARE(runCli(sim.link() + QStringList{"--log", log, "info"}).exitCode, 0);
        QString answers; // the bytes from the device, however they were read
        for (const QString &line : QString::fromUtf8(contents(log)).split('\n').filter(" From device: "))
            answers += line.section(": ", 1, 1);
        QVERIFY2(answers.contains(QRegularExpression("^a5a50600....8101")), qPrintable(answers));
    }

    // One fresh tracker per row, its arguments and the tool's divided by blanks: once logged in, the device
    // does not ask again. "%out" is a file that already holds the user's data, "%image" a firmware image,
    // "%config" a configuration file, "%pwfile" a file holding "1234"; "TAVREL_PASSWORD=N" goes to the
    // environment and "<N" to stdin instead of the arguments. Exit 0: stdout starts with the text; exit 1:
    // one error line matching it, well before the 5 s deadline.
    void deviceCommand_exitStatusAndText_data() {
        QTest::addColumn<QStringList>("devsim");
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("text");
        const auto row = [](const QString &name, const QString &devsim, const QString &args, int exitCode,
                            const QString &text = QString()) {
            QTest::newRow(qPrintable(name)) << devsim.split(' ', Qt::SkipEmptyParts)
                                            << args.split(' ', Qt::SkipEmptyParts) << exitCode << text;
        };
        const QString locked = "--password 1234", tcp = "--tcp 0";
        const QString identity = "Прибор: Vantor micro\nIMEI: 863071014478127\nСерийный номер: 100234\n"
                                 "Версия ПО: 918\nГруппа: 1\nТип: 3\nМодификация: 2\n";
        const QString json =
            "{\n    \"IMEI\": \"863071014478127\",\n    \"hardver.devgroup\": 1,\n    "
            "\"hardver.devmod\": 2,\n    \"hardver.devtype\": 3,\n    \"hardver.serial\": 100234,\n    "
            "\"name\": \"Vantor micro\",\n    \"softver\": 918\n}\n";
        row("info", "", "--log %log info", 0, identity);
        row("info json", "", "--log %log info --json", 0, json);
        row("info json, tcp", tcp, "--log %log info --json", 0, json);
        // The server closes the connection when asked for another device.
        row("info, other imei", tcp, "--imei 111111111111111 info", 1);
        // The device takes the reset with status 6: the user has to cut its power for it to apply.
        row("reset", "", "reset", 0,
            "Сброс настроек принят: прибор выполнит его после отключения питания\nДля сброса настроек "
            "необходимо отключить питание прибора");
        row("clear-memory", "", "clear-memory", 0, "Память очищена");
        row("set-password", "", "set-password 4321", 0, "Пароль изменен");
        // With the right password the request the device refused before the login is repeated.
        row("read right", locked, "--password 1234 read -o %out", 0);
        row("read wrong", locked, "--password 1235 read -o %out", 1, "неверный пароль");
        row("read none", locked, "read -o %out", 1, "--password");
        // Command answers (telemetry, reset) ask for the password with statuses the parser leaves unreported.
        row("telemetry right", locked, "--password 1234 telemetry --once --raw", 0, "kind=");
        row("telemetry none", locked, "telemetry --once --raw", 1, "--password");
        row("reset right", locked, "--password 1234 reset", 0, "Сброс настроек принят");
        row("reset wrong", locked, "--password 1235 reset", 1, "неверный пароль");
        row("read password file", locked, "--password-file %pwfile read -o %out", 0);
        row("read password environment", locked, "TAVREL_PASSWORD=1234 read -o %out", 0);
        row("telemetry password prompt", locked, "--password - <1234 telemetry --once --raw", 0, "kind=");
        row("reset wrong environment", locked, "TAVREL_PASSWORD=1235 reset", 1, "неверный пароль");
        // The loader switch is refused at once, not after the loader's silence.
        row("flash plain", "", "flash %image", 0, "Обновление завершено.");
        row("flash right", locked, "--password 1234 flash %image", 0, "Обновление завершено.");
        row("flash wrong", locked, "--password 1235 flash %image", 1, "парол");
        row("flash none", locked, "flash %image", 1, "парол");
        for (const QString command : {"info", "telemetry --once", "clear-memory", "read -o %out"})
            row("blocked " + command.section(' ', 0, 0), "--blocked", command, 1, "заблокирован");
        row("silent device", "--silent-every 1", "--timeout 1.5 info", 1, "не отвечает|сведения о приборе");
        // Cut short after the identity and the read before it (12 answers), a write names what the device
        // confirmed, what went out unconfirmed and what never left (one request on the line at a time).
        row("write hung up", "--hangup-after 20 --link %link", "--window 1 write %config", 1,
            "Прибор был отключен; подтверждено: навигация на стоянке.*; отправлено без подтверждения: .+; "
            "не отправлено: .*сервер 1$");
        // A section answered with nonsense is given up after a few tries, named alone, the rest is read.
        for (const QString kind : {"garbage", "short", "long", "loader"})
            row("read, navigation answered with " + kind, "--nonsense NavConfiguration:" + kind,
                "read -o %out", 1,
                "(нет ответа|без подтверждения): навигация в движении, навигация на стоянке$");
        // The tool asks again for whatever a fault swallowed, so a flaky line still yields a whole file
        // (over TCP: the tracker behind its configuration server).
        for (const QString faults : {"--silent-every 3", "--truncate-every 2", "--split",
                                     "--tcp 0 --garbage-every 3", "--tcp 0 --latency 150"})
            row("read, " + faults, faults, "--timeout 12 read -o %out", 0);
        // A server that hangs up in the middle of a read takes the next connection; a tracker on a
        // pseudo-terminal ends and removes its link ("%link").
        row("read, server hangs up", "--tcp 0 --hangup-after 5", "read -o %out", 1);
        row("set-password unanswered", "--silent-every 1", "set-password 4321", 1,
            "отправлено без подтверждения: смена пароля; новый пароль мог уже вступить в силу$");
    }

    void deviceCommand_exitStatusAndText() {
        QFETCH(QStringList, devsim);
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(QString, text);
        Devsim sim;
        const QString link = tagFile(m_dir.path(), ".link");
        QVERIFY(sim.start(devsim.replaceInStrings("%link", link)));
        const QString out = tagFile(m_dir.path(), ".json");
        const QString passwordFile = m_dir.filePath("password.txt");
        QVERIFY(BskBuilder::write(out, "{\"kept\": true}\n") && BskBuilder::write(passwordFile, "1234\n"));
        args.replaceInStrings("%out", out)
            .replaceInStrings("%log", link + ".log")
            .replaceInStrings("%image", m_image)
            .replaceInStrings("%config", DataDir + "/write-config.json")
            .replaceInStrings("%pwfile", passwordFile);
        QByteArray input;
        for (const QString &arg : args.filter(QRegularExpression("^(<|TAVREL_PASSWORD=)"))) {
            args.removeOne(arg);
            if (arg.startsWith('<'))
                input = arg.mid(1).toLatin1() + '\n';
            else
                qputenv("TAVREL_PASSWORD", arg.section('=', 1).toLatin1());
        }
        const Result r = runCli(sim.link() + QStringList{"--timeout", "5"} + args, 30000, input);
        qunsetenv("TAVREL_PASSWORD");
        QVERIFY2(r.exitCode == exitCode, qPrintable(r.describe()));
        // Flashing reports its progress and a write the changes it makes on stderr before the outcome.
        const bool flashing = args.contains(m_image);
        const QString err = flashing || args.contains("write") ? r.err.section('\n', -2) : r.err;
        if (exitCode == 0) {
            QVERIFY2((flashing ? err : r.out).startsWith(text) && (flashing || err.isEmpty()),
                     qPrintable(r.describe()));
            QVERIFY(!args.contains(out) || readJson(out).value("hardver.serial").toInt() == 100234);
            // The traffic log goes to its file, out of the terminal: seconds, a blank, lower-case hex.
            const QString log = QString::fromUtf8(contents(link + ".log"));
            QVERIFY2(
                !args.contains("--log") ||
                    (log.contains(QRegularExpression("(^|\\n)\\d+ Command a5a506000400810100008301\\n")) &&
                     log.contains(QRegularExpression("\\n\\d+ From device: a5a50600[0-9a-f]+: \\d+\\n"))),
                qPrintable(log));
        } else {
            QVERIFY2(isOneErrorLine(err) && err.contains(QRegularExpression(text)), qPrintable(r.describe()));
            QVERIFY(r.out.isEmpty() && readJson(out).value("kept").toBool());
            QVERIFY2(r.elapsedMs < 4000, qPrintable(QString::number(r.elapsedMs)));
        }
        if (devsim.contains("--hangup-after") && devsim.contains("--tcp"))
            QCOMPARE(runCli(sim.link() + QStringList{"info"}).exitCode, 0);
        else if (devsim.contains("--hangup-after")) {
            QTRY_VERIFY_WITH_TIMEOUT(sim.process().state() == QProcess::NotRunning, 5000);
            QVERIFY(sim.stop() == 0 && !QFileInfo(link).isSymLink());
        }
    }

    // Each row: the arguments (divided by commas) and lines the decoded text must hold (divided by '|').
    void decode_data() {
        QTest::addColumn<QStringList>("input");
        QTest::addColumn<QStringList>("expected");
        const auto row = [](const char *name, const QString &input, const QString &expected) {
            QTest::newRow(name) << input.split(',') << expected.split('|');
        };
        row("navigation read", "a5a506000400830200008102",
            "тип пакета: 6 (конфигурация)|длина данных: 4|контрольная сумма: 0x0281 верна|"
            "код: 0x83 (навигация, чтение / ответ)|операция: 0x02");
        row("bad checksum", "a5a50600040083020000ffff",
            "контрольная сумма: 0xffff неверна, ожидалась 0x0281");
        row("blanks and upper case", "A5,A5 06 00 04 00 83 02 00 00 81 02",
            "контрольная сумма: 0x0281 верна");
        row("odd last byte outside checksum", "a5a5060007008303000001020f83010000",
            "контрольная сумма: 0x0183 верна|лишние байты за кадром: 2");
        row("write status", "a5a5060006000382000001000282",
            "код: 0x03 (навигация, запись)|операция: 0x82 (ответ о выполнении)|статус: 1 (Команду выполнил)");
        row("wrong password", "a5a5070006000181000004000481",
            "тип пакета: 7 (команда)|код: 0x01 (ввод пароля)|статус: 4 (Введен неправильный пароль)");
        row("blocked", "a5a5060006008181000005008481", "статус: 5 (Прибор заблокирован)");
        row("answer log line", "1795395300 From device: a5a5060008009101000005012700bd00: 16",
            "код: 0x91 (системные параметры, чтение / ответ)|SystemParameters: "
            "{\"OutCtrl\":1,\"gsens\":7,\"lowSpeed\":0,\"parkingMin\":5,\"pwrMode\":1}");
        row("request log line", "1795395300,Command,a5a506000800110100000c0239002a03",
            "код: 0x11 (системные параметры, запись)|данные: 0c 02 39 00|SystemParameters: "
            "{\"OutCtrl\":1,\"gsens\":9,\"lowSpeed\":1,\"parkingMin\":12,\"pwrMode\":2}");
        // A whole 50 000-byte frame as 100 KB of hex, far beyond what a pattern match takes.
        row("100 KB of hex", "a5a5060048c3" + QString(2 * 49992, '0') + "0000",
            "кадр: 50000 байт|длина данных: 49992");
        row("cut answer", "a5a5060008009101", "кадр неполный: 8 из 16 байт");
        row("server login", "a5a50800140038363330373130313434373831323700000000001538",
            "тип пакета: 8 (вход на сервер)|IMEI: 863071014478127");
        row("sim telemetry", "a5a507000a00821700000000010008008617",
            "код: 0x82 (телеметрия)|kind=23 index=2 0800|  Состояние: Сим отсутсвует");
        row("wrong markers", "a5a406000400830200008102", "маркеры: неверны");
    }

    void decode() {
        QFETCH(QStringList, input);
        QFETCH(QStringList, expected);
        const Result r = runCli(QStringList{"decode"} + input);
        QVERIFY2(r.exitCode == 0, qPrintable(r.describe()));
        const QStringList lines = r.out.split('\n');
        for (const QString &line : expected)
            QVERIFY2(lines.contains(line),
                     qPrintable(QStringLiteral("missing \"%1\" in\n%2").arg(line, r.out)));
    }

    // Refused before any device is reached: a usage error exits 2 with one error line and the hint to the
    // help; no tracker to be found or a server that refuses exits 1 with its message, at once.
    void refused_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("message"); // empty: a usage error
        const auto usage = [](const char *name, const QStringList &args) {
            QTest::newRow(name) << args << QString();
        };
        usage("no command", {});
        usage("unknown command", {"flush"});
        usage("option of another command", {"read", "--json", "-o", "x.json"});
        usage("telemetry both modes", {"telemetry", "--once", "--watch"});
        usage("password too big", {"--password", "4294967296", "info"});
        usage("password and password file", {"--password", "1", "--password-file", "p.txt", "info"});
        usage("password file missing", {"--password-file", "no-such-file", "info"});
        usage("remote without imei", {"--remote", "127.0.0.1:9", "info"});
        usage("batch without report", {"batch", "--template", "t.json"});
        usage("reconnect after info", {"info", "--reconnect"});
        usage("option without value", {"info", "--port"});
        usage("decode not hex", {"decode", "a5zz"});
        usage("decode masked login", {"decode", "1795396427 Command a5a50700080001010000************"});
        QTest::newRow("no recognised device")
            << QStringList{"--timeout", "3", "info"} << "tavrel-cli: Нет подключенных приборов\n";
        QTcpServer closed; // a port nobody listens on once the table is made
        QVERIFY(closed.listen(QHostAddress::LocalHost, 0));
        const QString remote = QStringLiteral("127.0.0.1:%1").arg(closed.serverPort());
        QTest::newRow("server refuses")
            << QStringList{"--timeout", "3", "--remote", remote, "--imei", DeviceImei, "info"}
            << "tavrel-cli: Сервер отказал в подключении\n";
    }

    void refused() {
        QFETCH(QStringList, args);
        QFETCH(QString, message);
        if (QTest::currentDataTag() == QByteArray("no recognised device") && !runCli({"ports"}).out.isEmpty())
            QSKIP("a real tracker is plugged in");
        const Result r = runCli(args, 5000);
        const QStringList lines = r.err.split('\n', Qt::SkipEmptyParts);
        if (message.isEmpty())
            QVERIFY2(r.exitCode == 2 && r.out.isEmpty() && lines.size() == 2 &&
                         isOneErrorLine(lines.constFirst()) &&
                         lines.constLast() == QStringLiteral("Справка: tavrel-cli --help"),
                     qPrintable(r.describe()));
        else
            QVERIFY2(r.exitCode == 1 && r.err == message && r.elapsedMs < 4000, qPrintable(r.describe()));
    }

    // The tracker starts from a known state and saves what it stores, in its own layout, when it stops. The
    // round trip through a file loses the roaming and the false-speed threshold: the write says so before
    // anything is sent, keeps the tracker's own values on request, a snapshot taken before a write restores
    // the tracker exactly, a write survives lost requests, and the read-back catches a tracker that confirms
    // but ignores a write.
    void readAndWrite_fileAndDeviceStateAgree() {
        const QString state = stateCopy(m_dir.filePath("state.json")), file = m_dir.filePath("read.json");
        const QString log = m_dir.filePath("dry-run.log"), source = DataDir + "/write-config.json";
        Devsim sim;
        QVERIFY(sim.start({"--state", state}));
        sim.stop();
        const QByteArray before = contents(state);
        QVERIFY(sim.start({"--state", state}));
        Result r = runCli(sim.link() + QStringList{"read", "-o", file});
        QVERIFY2(r.exitCode == 0, qPrintable(r.describe()));
        QJsonObject read = readJson(file);
        const QJsonObject initial = readJson(DataDir + "/device-state.json");
        QCOMPARE(differences(read, initial), QStringList());
        QCOMPARE(QJsonArray({read.value("navigation")["faultSpeed"], read.value("IMEI"), read.value("name"),
                             read.value("out_parameters").toArray().size()}),
                 QJsonArray({initial.value("navigation")["faultSpeed"], DeviceImei, "Vantor micro", 1}));
        // A target that cannot be written is named in the error.
        const QString bad = m_dir.filePath("no-such-folder/read.json");
        r = runCli(sim.link() + QStringList{"read", "-o", bad});
        QVERIFY2(r.exitCode == 1 && isOneErrorLine(r.err) && r.err.contains(bad), qPrintable(r.describe()));

        r = runCli(sim.link() + QStringList{"--log", log, "write", file, "--dry-run"});
        QVERIFY2(r.exitCode == 0 && r.err.contains("\nnavigation.faultSpeed: 9 -> 0\n") &&
                     r.err.contains("gsm[0].roaming.forbidden"),
                 qPrintable(r.describe()));
        // Requests with bit 7 of the code clear are writes.
        QVERIFY(
            !QString::fromUtf8(contents(log)).contains(QRegularExpression("Command a5a50[67]00....[0-7]")));

        r = runCli(sim.link() + QStringList{"write", file, "--keep-device-values"});
        QVERIFY2(r.exitCode == 0 && r.err.contains("Отличий нет") && r.out.contains("подтверждена чтением"),
                 qPrintable(r.describe()));
        QCOMPARE(contents(state), before);
        r = runCli(sim.link() + QStringList{"write", source, "--no-verify"});
        QVERIFY2(r.exitCode == 0, qPrintable(r.describe()));
        const QString snapshot = r.err.section("Снимок настроек прибора: ", 1).section('\n', 0, 0);
        r = runCli(sim.link() + QStringList{"restore", snapshot});
        QVERIFY2(r.exitCode == 0 && r.err.contains("navigation.faultSpeed: 0 -> 9"),
                 qPrintable(r.describe()));
        r = runCli(sim.link() + QStringList{"diff", snapshot, "device"});
        QVERIFY2(r.exitCode == 0 && r.out.isEmpty(), qPrintable(r.describe()));
        sim.stop();
        QCOMPARE(contents(state), before);

        // One request in four is lost on the way in: the write still counts only blocks the device confirmed
        // with their own status answers, so the state it leaves must equal the file.
        QVERIFY(sim.start({"--state", state, "--drop-requests-every", "4"}));
        r = runCli(sim.link() + QStringList{"--timeout", "6", "write", source});
        QVERIFY2(r.exitCode == 0, qPrintable(r.describe()));
        sim.stop();
        QVERIFY(sim.start({"--state", state}));
        r = runCli(sim.link() + QStringList{"read", "-o", file});
        QVERIFY2(r.exitCode == 0 && !(read = readJson(file)).isEmpty(), qPrintable(r.describe()));
        QCOMPARE(differences(read, readJson(source)), QStringList());
        // The file's "faultSpeed" is never loaded, so the device gets the fresh configuration's zero.
        QCOMPARE(read.value("navigation").toObject().value("faultSpeed").toInt(), 0);
        sim.stop();
        QCOMPARE(differences(readJson(state), readJson(source)), QStringList());

        Devsim ignoring;
        QVERIFY(ignoring.start({"--state", stateCopy(state), "--ignore-writes", "SystemConfiguration"}));
        r = runCli(ignoring.link() + QStringList{"write", source});
        QVERIFY2(r.exitCode == 1 &&
                     r.err.contains("tavrel-cli: Система: Чувствительность акселерометра: записано 3, в "
                                    "приборе 9\n") &&
                     r.err.contains("не подтверждено"),
                 qPrintable(r.describe()));
    }

    // No device behind the port: the file decides the outcome alone; stdout is empty and stderr starts with
    // the text (%1: the file's path). The row's first word is the command.
    void file_checkedBeforeTouchingDevice_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QByteArray>("content"); // empty: no file at all; Fifo: a named pipe nobody writes
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QByteArray &content, int exitCode, const QString &text) {
            QTest::newRow(name) << QString(name).section(' ', 0, 0) << content << exitCode << text;
        };
        BskBuilder magic;
        magic.magic = QByteArray("BOOT2FILX\0", 10);
        const QString fifo = "tavrel-cli: %1 - не обычный файл (канал или устройство)";
        const QString opening = "tavrel-cli: Произошла ошибка при открытии файла %1: ";
        const QString bad = "Не удалось загрузить прошивку '%1'\nПричина: ";
        row("write missing file", {}, 1, "tavrel-cli: Не удалось открыть файл конфигурации %1");
        // A file that does not parse is a usage error, reported where the parser stopped.
        row("write not json", "{\n  \"SystemParameters\": }", 2,
            opening + "строка 2, столбец 24: ожидался объект\n");
        row("write cut json", "{ \"имя\": 1", 2,
            opening + "строка 1, столбец 11: текст оборвался на числе\n");
        row("write fifo", Fifo, 2, fifo);
        // Written as is, the file's checked values would change on the way.
        row("write masked value", R"({"SystemParameters": {"gsens": 300}})", 2,
            "tavrel-cli: SystemParameters.gsens: в файле 300 (вне диапазона, читается как 44), в прибор "
            "уйдет 12\n");
        row("restore a configuration file", R"({"navigation": {}})", 2,
            "tavrel-cli: %1 - не снимок настроек");
        row("fwinfo fifo", Fifo, 12, fifo);
        row("flash fifo", Fifo, 12, fifo);
        row("fwinfo missing file", {}, 12, bad + "Не удалось открыть файл\n");
        // A bad image exits 10 + its load code.
        row("flash missing file", {}, 12, bad + "Не удалось открыть файл\n");
        row("flash short file", BskBuilder().build().left(25), 13, bad + "Файл не является прошивкой\n");
        row("flash other magic", magic.build(), 14, bad + "Файл не является прошивкой BOOT2FILE\n");
    }

    void file_checkedBeforeTouchingDevice() {
        QFETCH(QString, command);
        QFETCH(QByteArray, content);
        QFETCH(int, exitCode);
        QFETCH(QString, text);
        const QString path = tagFile(m_dir.path(), ".file");
        if (content == Fifo)
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else
            QVERIFY(content.isEmpty() || BskBuilder::write(path, content));
        // Opening the FIFO would wait for a writer for ever: the run must end well before the limit.
        const Result r = runCli({"--port", m_dir.filePath("no-such-port"), command, path}, 5000);
        QVERIFY2(r.exitCode == exitCode &&
                     QString(r.err + r.out).startsWith(QString(text).replace("%1", path)),
                 qPrintable(r.describe()));
    }
};

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_cli.moc"
