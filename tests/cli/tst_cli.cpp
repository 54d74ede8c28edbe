// The terminal tool end to end: every case runs the real tavrel-cli binary against the virtual tracker
// (a pseudo-terminal or its configuration-server stand-in on 127.0.0.1) and checks exit status, stdout,
// stderr and the files it writes.
#include "BskBuilder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace {

const QString CliBinary = QStringLiteral(TAVREL_BINARY_DIR "/cli/tavrel-cli");
const QString DevsimBinary = QStringLiteral(TAVREL_BINARY_DIR "/tools/devsim/tavrel-devsim");
const QString DataDir = QStringLiteral(TAVREL_TEST_DATA "/cli");
const QString DeviceImei = QStringLiteral("863071014478127");

// One virtual tracker for the length of a test case.
class Devsim {
public:
    enum Transport { Pty, Tcp };

    ~Devsim() { stop(); }

    bool start(Transport transport, const QStringList &extra = {}) {
        m_transport = transport;
        QStringList args = transport == Pty ? QStringList{QStringLiteral("--pty")}
                                            : QStringList{QStringLiteral("--tcp"), QStringLiteral("0")};
        args += extra;
        m_process.setProgram(DevsimBinary);
        m_process.setArguments(args);
        m_process.setProcessChannelMode(QProcess::SeparateChannels);
        m_process.start();
        if (!m_process.waitForStarted(5000))
            return false;
        QByteArray first;
        QElapsedTimer waited;
        waited.start();
        while (!m_process.canReadLine() && waited.elapsed() < 5000)
            m_process.waitForReadyRead(100);
        if (!m_process.canReadLine())
            return false;
        m_endpoint = QString::fromLocal8Bit(m_process.readLine()).trimmed();
        return !m_endpoint.isEmpty();
    }

    // Arguments that point tavrel-cli at this tracker.
    QStringList link() const {
        if (m_transport == Pty)
            return {QStringLiteral("--port"), m_endpoint};
        return {QStringLiteral("--remote"), m_endpoint, QStringLiteral("--imei"), DeviceImei};
    }

    // SIGTERM: the tracker saves its --state file and exits.
    void stop() {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.terminate();
        if (!m_process.waitForFinished(5000)) {
            m_process.kill();
            m_process.waitForFinished(2000);
        }
    }

private:
    QProcess m_process;
    Transport m_transport = Pty;
    QString m_endpoint;
};

struct Result {
    int exitCode = -1;
    QProcess::ExitStatus exitStatus = QProcess::CrashExit;
    bool finished = false;
    QString out;
    QString err;
    qint64 elapsedMs = 0;
};

Result runCli(const QStringList &args, int limitMs = 30000) {
    QProcess p;
    p.setProgram(CliBinary);
    p.setArguments(args);
    QElapsedTimer clock;
    clock.start();
    p.start();
    Result r;
    r.finished = p.waitForStarted(5000) && p.waitForFinished(limitMs);
    if (!r.finished) {
        p.kill();
        p.waitForFinished(2000);
    }
    r.elapsedMs = clock.elapsed();
    r.exitCode = p.exitCode();
    r.exitStatus = p.exitStatus();
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    return r;
}

QString describe(const Result &r) {
    return QStringLiteral("exit %1, stdout:\n%2\nstderr:\n%3").arg(r.exitCode).arg(r.out, r.err);
}

QJsonObject readJson(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

// The sections that go to the device and come back unchanged (the loader of the file keeps its
// deliberate gaps: "faultSpeed" and the roaming objects are not read back, tanks 5 to 7 never travel).
QJsonObject transferable(const QJsonObject &root, bool withFaultSpeed) {
    QJsonObject o;
    o.insert(QStringLiteral("SystemParameters"), root.value(QStringLiteral("SystemParameters")));
    QJsonObject nav = root.value(QStringLiteral("navigation")).toObject();
    if (!withFaultSpeed)
        nav.remove(QStringLiteral("faultSpeed"));
    o.insert(QStringLiteral("navigation"), nav);
    QJsonArray gprs;
    const QJsonArray gsm = root.value(QStringLiteral("gsm")).toArray();
    for (int i = 0; i < gsm.size(); ++i)
        gprs.append(gsm.at(i).toObject().value(QStringLiteral("gprs %1").arg(i + 1)));
    o.insert(QStringLiteral("gprs"), gprs);
    for (const char *key : {"Server", "adcs", "dinputs", "fuel_sensors"})
        o.insert(QLatin1String(key), root.value(QLatin1String(key)));
    QJsonArray tanks;
    const QJsonArray allTanks = root.value(QStringLiteral("fuel_tanks")).toArray();
    for (int i = 0; i < 5 && i < allTanks.size(); ++i)
        tanks.append(allTanks.at(i));
    o.insert(QStringLiteral("fuel_tanks"), tanks);
    return o;
}

QString compactJson(const QJsonObject &o) {
    return QString::fromUtf8(QJsonDocument(o).toJson(QJsonDocument::Compact));
}

// A one-line error: "tavrel-cli: <text>" and nothing else on stderr.
bool isOneErrorLine(const QString &err) {
    const QStringList lines = err.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return lines.size() == 1 && lines.constFirst().startsWith(QLatin1String("tavrel-cli: ")) &&
           lines.constFirst().size() > 14;
}

} // namespace

class tst_Cli : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void info_text_showsIdentity();
    void info_json_hasConfigurationFileKeys();
    void info_remote_throughConfigurationServer();
    void info_noRecognisedDevice_exitsOne();
    void info_serverRefuses_exitsOne();
    void read_writesWholeConfigurationFile();
    void read_refusedByDevice_keepsExistingFile();
    void read_unwritableTarget_exitsOne();
    void write_thenReadBack_givesFileValues();
    void write_badFile_failsBeforeTouchingDevice_data();
    void write_badFile_failsBeforeTouchingDevice();
    void telemetry_once_printsStateWording();
    void telemetry_raw_oneLinePerRecordInOrder();
    void telemetry_watch_endsCleanlyOnInterrupt();
    void serviceCommands_answeredByDevice_data();
    void serviceCommands_answeredByDevice();
    void password_asked_data();
    void password_asked();
    void blockedDevice_exitsOneWithMessage_data();
    void blockedDevice_exitsOneWithMessage();
    void silentDevice_deadlineEndsCommand();
    void log_recordsTraffic();
    void decode_data();
    void decode();
    void usageErrors_exitTwo_data();
    void usageErrors_exitTwo();
    void faults_sessionSurvives_data();
    void faults_sessionSurvives();
    void fwinfo_describesImageWithoutDevice();
    void flash_badFile_exitsBeforeTouchingDevice_data();
    void flash_badFile_exitsBeforeTouchingDevice();
    void flash_data();
    void flash();

private:
    QTemporaryDir m_dir;
};

void tst_Cli::initTestCase() {
    if (!QFile::exists(CliBinary) || !QFile::exists(DevsimBinary))
        QSKIP("tavrel-cli or tavrel-devsim is not built");
    QVERIFY(m_dir.isValid());
}

void tst_Cli::info_text_showsIdentity() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty));
    const Result r = runCli(sim.link() << QStringLiteral("info"));
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    QVERIFY(r.err.isEmpty());
    const QStringList lines = r.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QVERIFY(lines.contains(QStringLiteral("Прибор: Vantor micro")));
    QVERIFY(lines.contains(QStringLiteral("IMEI: ") + DeviceImei));
    QVERIFY(lines.contains(QStringLiteral("Серийный номер: 100234")));
    QVERIFY(lines.contains(QStringLiteral("Версия ПО: 918")));
    QVERIFY(lines.contains(QStringLiteral("Группа: 1")));
    QVERIFY(lines.contains(QStringLiteral("Тип: 3")));
    QVERIFY(lines.contains(QStringLiteral("Модификация: 2")));
}

void tst_Cli::info_json_hasConfigurationFileKeys() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty));
    const Result r = runCli(sim.link() << QStringLiteral("info") << QStringLiteral("--json"));
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    QJsonParseError error;
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8(), &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(o.size(), 7);
    QCOMPARE(o.value(QStringLiteral("name")).toString(), QStringLiteral("Vantor micro"));
    QCOMPARE(o.value(QStringLiteral("softver")).toInt(), 918);
    QCOMPARE(o.value(QStringLiteral("hardver.devmod")).toInt(), 2);
    QCOMPARE(o.value(QStringLiteral("hardver.devgroup")).toInt(), 1);
    QCOMPARE(o.value(QStringLiteral("hardver.devtype")).toInt(), 3);
    QCOMPARE(o.value(QStringLiteral("hardver.serial")).toInt(), 100234);
    QCOMPARE(o.value(QStringLiteral("IMEI")).toString(), DeviceImei);
}

void tst_Cli::info_remote_throughConfigurationServer() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Tcp));
    const Result r = runCli(sim.link() << QStringLiteral("info") << QStringLiteral("--json"));
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    QCOMPARE(QJsonDocument::fromJson(r.out.toUtf8()).object().value(QStringLiteral("IMEI")).toString(),
             DeviceImei);

    // The server closes the connection when asked for another device.
    QStringList other = sim.link();
    other[3] = QStringLiteral("111111111111111");
    const Result refused =
        runCli(other << QStringLiteral("--timeout") << QStringLiteral("3") << QStringLiteral("info"));
    QCOMPARE(refused.exitCode, 1);
    QVERIFY2(isOneErrorLine(refused.err), qPrintable(describe(refused)));
}

void tst_Cli::info_noRecognisedDevice_exitsOne() {
    const Result ports = runCli({QStringLiteral("ports")});
    QCOMPARE(ports.exitCode, 0);
    if (!ports.out.isEmpty())
        QSKIP("a real tracker is plugged in");
    const Result r = runCli({QStringLiteral("info")});
    QCOMPARE(r.exitCode, 1);
    QCOMPARE(r.err, QStringLiteral("tavrel-cli: Нет подключенных приборов\n"));
}

void tst_Cli::info_serverRefuses_exitsOne() {
    quint16 port = 0;
    {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost, 0));
        port = probe.serverPort();
    }
    const Result r = runCli({QStringLiteral("--remote"), QStringLiteral("127.0.0.1:%1").arg(port),
                             QStringLiteral("--imei"), DeviceImei, QStringLiteral("--timeout"),
                             QStringLiteral("5"), QStringLiteral("info")});
    QCOMPARE(r.exitCode, 1);
    QCOMPARE(r.err, QStringLiteral("tavrel-cli: Сервер отказал в подключении\n"));
    QVERIFY(r.elapsedMs < 4000);
}

void tst_Cli::read_writesWholeConfigurationFile() {
    const QString state = m_dir.filePath(QStringLiteral("read-state.json"));
    QFile::remove(state);
    QVERIFY(QFile::copy(DataDir + QStringLiteral("/device-state.json"), state));
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty, {QStringLiteral("--state"), state}));

    const QString out = m_dir.filePath(QStringLiteral("read.json"));
    const Result r = runCli(sim.link() << QStringLiteral("read") << QStringLiteral("-o") << out);
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    const QJsonObject read = readJson(out);
    const QJsonObject expected = readJson(DataDir + QStringLiteral("/device-state.json"));
    QCOMPARE(compactJson(transferable(read, true)), compactJson(transferable(expected, true)));
    QCOMPARE(read.value(QStringLiteral("IMEI")).toString(), DeviceImei);
    QCOMPARE(read.value(QStringLiteral("name")).toString(), QStringLiteral("Vantor micro"));
    QCOMPARE(read.value(QStringLiteral("out_parameters")).toArray().size(), 1);
}

void tst_Cli::read_refusedByDevice_keepsExistingFile() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty, {QStringLiteral("--blocked")}));
    const QString out = m_dir.filePath(QStringLiteral("kept.json"));
    {
        QFile file(out);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("{\"kept\": true}\n");
    }
    const Result r = runCli(sim.link() << QStringLiteral("--timeout") << QStringLiteral("3")
                                       << QStringLiteral("read") << QStringLiteral("-o") << out);
    QCOMPARE(r.exitCode, 1);
    QVERIFY2(isOneErrorLine(r.err), qPrintable(describe(r)));
    QCOMPARE(readJson(out).value(QStringLiteral("kept")).toBool(), true);
}

void tst_Cli::read_unwritableTarget_exitsOne() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty));
    const QString out = m_dir.filePath(QStringLiteral("no-such-folder/read.json"));
    const Result r = runCli(sim.link() << QStringLiteral("read") << QStringLiteral("-o") << out);
    QCOMPARE(r.exitCode, 1);
    QVERIFY2(isOneErrorLine(r.err), qPrintable(describe(r)));
    QVERIFY(r.err.contains(out));
    QVERIFY(!QFile::exists(out));
}

void tst_Cli::write_thenReadBack_givesFileValues() {
    const QString state = m_dir.filePath(QStringLiteral("write-state.json"));
    QFile::remove(state);
    QVERIFY(QFile::copy(DataDir + QStringLiteral("/device-state.json"), state));
    QFile::setPermissions(state, QFile::ReadOwner | QFile::WriteOwner);
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty, {QStringLiteral("--state"), state}));

    const QString source = DataDir + QStringLiteral("/write-config.json");
    const Result w = runCli(sim.link() << QStringLiteral("write") << source);
    QVERIFY2(w.exitCode == 0, qPrintable(describe(w)));

    const QString back = m_dir.filePath(QStringLiteral("back.json"));
    const Result r = runCli(sim.link() << QStringLiteral("read") << QStringLiteral("-o") << back);
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    const QJsonObject written = readJson(source);
    QCOMPARE(compactJson(transferable(readJson(back), false)), compactJson(transferable(written, false)));
    // The file's "faultSpeed" is never loaded, so the device gets the fresh configuration's zero.
    QCOMPARE(readJson(back)
                 .value(QStringLiteral("navigation"))
                 .toObject()
                 .value(QStringLiteral("faultSpeed"))
                 .toInt(),
             0);

    sim.stop();
    QCOMPARE(compactJson(transferable(readJson(state), false)), compactJson(transferable(written, false)));
}

void tst_Cli::write_badFile_failsBeforeTouchingDevice_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    QTest::newRow("missing file") << QByteArray() << QStringLiteral("Не удалось открыть файл конфигурации");
    QTest::newRow("not json") << QByteArray("{ \"SystemParameters\": ")
                              << QStringLiteral("Произошла ошибка при открытии файла");
    QTest::newRow("json array") << QByteArray("[1, 2]")
                                << QStringLiteral("Произошла ошибка при открытии файла");
}

void tst_Cli::write_badFile_failsBeforeTouchingDevice() {
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    const QString path =
        m_dir.filePath(QStringLiteral("bad-%1.json").arg(QTest::currentDataTag()).replace(' ', '-'));
    QFile::remove(path);
    if (!content.isEmpty()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    // No device at all: the file is refused before any link is opened.
    const Result r = runCli(
        {QStringLiteral("--port"), m_dir.filePath(QStringLiteral("no-port")), QStringLiteral("write"), path});
    QCOMPARE(r.exitCode, 1);
    QVERIFY2(isOneErrorLine(r.err), qPrintable(describe(r)));
    QVERIFY2(r.err.contains(message), qPrintable(r.err));
}

void tst_Cli::telemetry_once_printsStateWording() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty));
    const Result r = runCli(sim.link() << QStringLiteral("telemetry") << QStringLiteral("--once"));
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    const QStringList lines = r.out.split(QLatin1Char('\n'));
    // Group titles in the order of the state page, each followed by its "  name: value" lines.
    for (const QString &title :
         {QStringLiteral("Прибор"), QStringLiteral("Часы"), QStringLiteral("Навигация"),
          QStringLiteral("Навигационный приемник 1"), QStringLiteral("SIM 1"), QStringLiteral("Сервер 1"),
          QStringLiteral("Аналоговый вход 1"), QStringLiteral("Логический вход 1"),
          QStringLiteral("Датчики топлива")})
        QVERIFY2(lines.contains(title), qPrintable(title));
    QVERIFY(lines.indexOf(QStringLiteral("Прибор")) < lines.indexOf(QStringLiteral("Датчики топлива")));
    static const QRegularExpression valueLine(QStringLiteral("^  [^:]+: .*$"));
    for (const QString &l : lines) {
        if (l.startsWith(QLatin1Char(' ')))
            QVERIFY2(valueLine.match(l).hasMatch(), qPrintable(l));
    }
    // The virtual tracker's third SIM slot is empty: the SIM state keeps its own spelling, the slot line the
    // other.
    QVERIFY(lines.contains(QStringLiteral("  Состояние: Сим отсутсвует")));
    QVERIFY(lines.contains(QStringLiteral("  Слот: Сим отсутствует")));
    QVERIFY(r.out.contains(QRegularExpression(QStringLiteral("  Температура: -?\\d+ / -?\\d+°С\\n"))));
    QVERIFY(r.out.contains(QRegularExpression(QStringLiteral("  Использованная память: \\d+/\\d+\\n"))));
    QVERIFY(r.out.contains(QRegularExpression(QStringLiteral("  Протокол: (TAVREL UNP|WIALON COMBINE)\\n"))));
    QVERIFY(r.out.contains(
        QRegularExpression(QStringLiteral("  Состояние: (Отключен|Подключение|Подключен)\\n"))));
    QVERIFY(r.out.contains(QRegularExpression(QStringLiteral("  Адрес: \\d+\\.\\d+\\.\\d+\\.\\d+:\\d+\\n"))));
    // Each receiver either has a fix with date and coordinates, or reads "-" in them.
    static const QRegularExpression fix(QStringLiteral(
        "  Фиксация: (2D|3D), \\d+ спутн\\.\\n  Режим: (2D|3D) режим\\n"
        "  Дата и время: \\d\\d\\.\\d\\d\\.\\d\\d \\d\\d:\\d\\d:\\d\\d\\n  Широта: -?\\d\\d° [\\d.]+\\n"));
    static const QRegularExpression noFix(
        QStringLiteral("  Фиксация: Нет фиксации, \\d+ спутн\\.\\n  Режим: Нет навигации\\n  Дата и время: "
                       "-\\n  Широта: -\\n"));
    QVERIFY(r.out.contains(fix) || r.out.contains(noFix));
}

void tst_Cli::telemetry_raw_oneLinePerRecordInOrder() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Tcp));
    const Result r = runCli(sim.link() << QStringLiteral("telemetry") << QStringLiteral("--once")
                                       << QStringLiteral("--raw"));
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    const QStringList lines = r.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    static const QRegularExpression rawLine(QStringLiteral("^kind=(\\d+) index=(\\d+) ([0-9a-f]+)$"));
    const QHash<int, int> sizes{{10, 72}, {11, 6},  {14, 38}, {15, 48}, {16, 44}, {17, 10},
                                {18, 10}, {19, 42}, {21, 8},  {22, 8},  {23, 2},  {24, 36}};
    QSet<int> kinds;
    int previous = -1;
    for (const QString &l : lines) {
        const QRegularExpressionMatch m = rawLine.match(l);
        QVERIFY2(m.hasMatch(), qPrintable(l));
        const int kind = m.captured(1).toInt();
        const int index = m.captured(2).toInt();
        QVERIFY2(sizes.contains(kind), qPrintable(l));
        QCOMPARE(m.captured(3).size(), sizes.value(kind) * 2);
        const int order = kind * 16 + index;
        QVERIFY2(order > previous, qPrintable(l));
        previous = order;
        kinds.insert(kind);
    }
    QCOMPARE(kinds, QSet<int>({10, 11, 14, 15, 16, 17, 18, 19, 21, 22, 23, 24}));
}

void tst_Cli::telemetry_watch_endsCleanlyOnInterrupt() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty));
    QProcess p;
    p.start(CliBinary, sim.link() << QStringLiteral("telemetry") << QStringLiteral("--watch"));
    QVERIFY(p.waitForStarted(5000));
    static const QRegularExpression stamp(QStringLiteral("(^|\\n)\\d\\d:\\d\\d:\\d\\d\\n"));
    QByteArray seen;
    QElapsedTimer clock;
    clock.start();
    // Two rounds, a second apart.
    while (QString::fromUtf8(seen).count(stamp) < 2 && clock.elapsed() < 10000) {
        p.waitForReadyRead(200);
        seen += p.readAllStandardOutput();
    }
    QCOMPARE(QString::fromUtf8(seen).count(stamp), 2);
    QVERIFY(clock.elapsed() >= 900);
    ::kill(pid_t(p.processId()), SIGINT);
    QVERIFY(p.waitForFinished(5000));
    QCOMPARE(p.exitStatus(), QProcess::NormalExit);
    QCOMPARE(p.exitCode(), 0);
    QVERIFY(p.readAllStandardError().isEmpty());
}

void tst_Cli::serviceCommands_answeredByDevice_data() {
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QString>("printed");
    // The device takes the reset with status 6: the user has to cut its power for it to apply.
    QTest::newRow("reset") << QStringList{QStringLiteral("reset")}
                           << QStringLiteral(
                                  "Настройки сброшены на заводские\nДля сброса настроек необходимо "
                                  "отключить питание прибора");
    QTest::newRow("clear-memory") << QStringList{QStringLiteral("clear-memory")}
                                  << QStringLiteral("Память очищена");
    QTest::newRow("set-password") << QStringList{QStringLiteral("set-password"), QStringLiteral("4321")}
                                  << QStringLiteral("Пароль изменен");
}

void tst_Cli::serviceCommands_answeredByDevice() {
    QFETCH(QStringList, command);
    QFETCH(QString, printed);
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty));
    const Result r = runCli(sim.link() << command);
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    QVERIFY2(r.out.startsWith(printed), qPrintable(r.out));
}

void tst_Cli::password_asked_data() {
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QStringList>("password");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    const QStringList read{QStringLiteral("read"), QStringLiteral("-o")}; // the file name is added later
    const QStringList telemetry{QStringLiteral("telemetry"), QStringLiteral("--once"),
                                QStringLiteral("--raw")};
    const QStringList reset{QStringLiteral("reset")};
    const QStringList right{QStringLiteral("--password"), QStringLiteral("1234")};
    const QStringList wrong{QStringLiteral("--password"), QStringLiteral("1235")};
    QTest::newRow("read right") << read << right << 0 << QString();
    QTest::newRow("read wrong") << read << wrong << 1 << QStringLiteral("неверный пароль");
    QTest::newRow("read none") << read << QStringList() << 1 << QStringLiteral("--password");
    // Command answers (telemetry, reset) ask for the password with statuses the parser leaves unreported.
    QTest::newRow("telemetry right") << telemetry << right << 0 << QString();
    QTest::newRow("telemetry none") << telemetry << QStringList() << 1 << QStringLiteral("--password");
    QTest::newRow("reset right") << reset << right << 0 << QString();
    QTest::newRow("reset wrong") << reset << wrong << 1 << QStringLiteral("неверный пароль");
}

void tst_Cli::password_asked() {
    QFETCH(QStringList, command);
    QFETCH(QStringList, password);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    // A fresh tracker each time: once logged in, the device does not ask again.
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty, {QStringLiteral("--password"), QStringLiteral("1234")}));
    const bool isRead = command.constFirst() == QLatin1String("read");
    const QString out = m_dir.filePath(QStringLiteral("password-%1.json")
                                           .arg(QTest::currentDataTag())
                                           .replace(QLatin1Char(' '), QLatin1Char('-')));
    if (isRead)
        command << out;
    const Result r =
        runCli(sim.link() << password << QStringLiteral("--timeout") << QStringLiteral("5") << command);
    QVERIFY2(r.exitCode == exitCode, qPrintable(describe(r)));
    if (exitCode == 0) {
        // The request the device refused before the login is repeated.
        if (isRead)
            QCOMPARE(readJson(out).value(QStringLiteral("hardver.serial")).toInt(), 100234);
        else
            QVERIFY2(!r.out.isEmpty(), qPrintable(describe(r)));
        QVERIFY(r.err.isEmpty());
    } else {
        QVERIFY2(isOneErrorLine(r.err), qPrintable(describe(r)));
        QVERIFY2(r.err.contains(message), qPrintable(r.err));
        QVERIFY(r.out.isEmpty());
        QVERIFY(!QFile::exists(out));
        QVERIFY2(r.elapsedMs < 4000, qPrintable(QString::number(r.elapsedMs))); // not the deadline
    }
}

void tst_Cli::blockedDevice_exitsOneWithMessage_data() {
    QTest::addColumn<QStringList>("command");
    QTest::newRow("info") << QStringList{QStringLiteral("info")};
    QTest::newRow("telemetry") << QStringList{QStringLiteral("telemetry"), QStringLiteral("--once")};
    QTest::newRow("clear-memory") << QStringList{QStringLiteral("clear-memory")};
}

void tst_Cli::blockedDevice_exitsOneWithMessage() {
    QFETCH(QStringList, command);
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty, {QStringLiteral("--blocked")}));
    const Result r = runCli(sim.link() << QStringLiteral("--timeout") << QStringLiteral("5") << command);
    QCOMPARE(r.exitCode, 1);
    QVERIFY2(isOneErrorLine(r.err), qPrintable(describe(r)));
    QVERIFY2(r.err.contains(QStringLiteral("заблокирован")), qPrintable(r.err));
    QVERIFY(r.out.isEmpty());
    QVERIFY2(r.elapsedMs < 4000, qPrintable(QString::number(r.elapsedMs))); // not the deadline
}

void tst_Cli::silentDevice_deadlineEndsCommand() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty, {QStringLiteral("--silent-every"), QStringLiteral("1")}));
    const Result r =
        runCli(sim.link() << QStringLiteral("--timeout") << QStringLiteral("1.5") << QStringLiteral("info"));
    QVERIFY(r.finished);
    QCOMPARE(r.exitCode, 1);
    QVERIFY2(isOneErrorLine(r.err), qPrintable(describe(r)));
    QVERIFY2(r.err.contains(QStringLiteral("сведения о приборе")) ||
                 r.err.contains(QStringLiteral("не отвечает")),
             qPrintable(r.err));
    QVERIFY2(r.elapsedMs < 4000, qPrintable(QString::number(r.elapsedMs)));
}

void tst_Cli::log_recordsTraffic() {
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty));
    const QString log = m_dir.filePath(QStringLiteral("traffic.log"));
    const Result r = runCli(sim.link() << QStringLiteral("--log") << log << QStringLiteral("info"));
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    QFile file(log);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    // Requests and answers as the exchange log writes them: seconds, a blank, lower-case hex.
    QVERIFY2(
        text.contains(QRegularExpression(QStringLiteral("(^|\\n)\\d+ Command a5a506000400810100008301\\n"))),
        qPrintable(text));
    QVERIFY(
        text.contains(QRegularExpression(QStringLiteral("\\n\\d+ From device: a5a50600[0-9a-f]+: \\d+\\n"))));
    // The log stays out of the terminal.
    QVERIFY(!r.out.contains(QStringLiteral("Command")));
    QVERIFY(r.err.isEmpty());
}

void tst_Cli::decode_data() {
    QTest::addColumn<QStringList>("input");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("navigation read") << QStringList{QStringLiteral("a5a506000400830200008102")}
                                     << QStringList{QStringLiteral("тип пакета: 6 (конфигурация)"),
                                                    QStringLiteral("длина данных: 4"),
                                                    QStringLiteral("контрольная сумма: 0x0281 верна"),
                                                    QStringLiteral("код: 0x83 (навигация, чтение / ответ)"),
                                                    QStringLiteral("операция: 0x02")};
    QTest::newRow("bad checksum") << QStringList{QStringLiteral("a5a50600040083020000ffff")}
                                  << QStringList{QStringLiteral(
                                         "контрольная сумма: 0xffff неверна, ожидалась 0x0281")};
    QTest::newRow("blanks and upper case")
        << QStringList{QStringLiteral("A5"), QStringLiteral("A5 06 00 04 00 83 02 00 00 81 02")}
        << QStringList{QStringLiteral("контрольная сумма: 0x0281 верна")};
    QTest::newRow("odd last byte outside checksum")
        << QStringList{QStringLiteral("a5a5060007008303000001020f83010000")}
        << QStringList{QStringLiteral("контрольная сумма: 0x0183 верна"),
                       QStringLiteral("лишние байты за кадром: 2")};
    QTest::newRow("write status") << QStringList{QStringLiteral("a5a5060006000382000001000282")}
                                  << QStringList{QStringLiteral("код: 0x03 (навигация, запись)"),
                                                 QStringLiteral("операция: 0x82 (ответ о выполнении)"),
                                                 QStringLiteral("статус: 1 (Команду выполнил)")};
    QTest::newRow("wrong password") << QStringList{QStringLiteral("a5a5070006000181000004000481")}
                                    << QStringList{QStringLiteral("тип пакета: 7 (команда)"),
                                                   QStringLiteral("код: 0x01 (ввод пароля)"),
                                                   QStringLiteral("статус: 4 (Введен неправильный пароль)")};
    QTest::newRow("blocked") << QStringList{QStringLiteral("a5a5060006008181000005008481")}
                             << QStringList{QStringLiteral("статус: 5 (Прибор заблокирован)")};
    QTest::newRow("answer log line")
        << QStringList{QStringLiteral("1795395300 From device: a5a5060008009101000005012700bd00: 16")}
        << QStringList{
               QStringLiteral("код: 0x91 (системные параметры, чтение / ответ)"),
               QStringLiteral("SystemParameters: {\"OutCtrl\":1,\"gsens\":7,\"lowSpeed\":0,\"parkingMin\":5,"
                              "\"pwrMode\":1}")};
    QTest::newRow("request log line")
        << QStringList{QStringLiteral("1795395300"), QStringLiteral("Command"),
                       QStringLiteral("a5a506000800110100000c0239002a03")}
        << QStringList{
               QStringLiteral("код: 0x11 (системные параметры, запись)"),
               QStringLiteral("данные: 0c 02 39 00"),
               QStringLiteral("SystemParameters: {\"OutCtrl\":1,\"gsens\":9,\"lowSpeed\":1,\"parkingMin\":12,"
                              "\"pwrMode\":2}")};
    QTest::newRow("cut answer") << QStringList{QStringLiteral("a5a5060008009101")}
                                << QStringList{QStringLiteral("кадр неполный: 8 из 16 байт")};
    QTest::newRow("server login") << QStringList{QStringLiteral(
                                         "a5a50800140038363330373130313434373831323700000000001538")}
                                  << QStringList{QStringLiteral("тип пакета: 8 (вход на сервер)"),
                                                 QStringLiteral("IMEI: 863071014478127")};
    QTest::newRow("sim telemetry") << QStringList{QStringLiteral("a5a507000a00821700000000010008008617")}
                                   << QStringList{QStringLiteral("код: 0x82 (телеметрия)"),
                                                  QStringLiteral("kind=23 index=2 0800"),
                                                  QStringLiteral("  Состояние: Сим отсутсвует")};
    QTest::newRow("wrong markers") << QStringList{QStringLiteral("a5a406000400830200008102")}
                                   << QStringList{QStringLiteral("маркеры: неверны")};
}

void tst_Cli::decode() {
    QFETCH(QStringList, input);
    QFETCH(QStringList, expected);
    const Result r = runCli(QStringList{QStringLiteral("decode")} + input);
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    const QStringList lines = r.out.split(QLatin1Char('\n'));
    for (const QString &line : expected)
        QVERIFY2(lines.contains(line), qPrintable(QStringLiteral("missing \"%1\" in\n%2").arg(line, r.out)));
}

void tst_Cli::usageErrors_exitTwo_data() {
    QTest::addColumn<QStringList>("args");
    QTest::newRow("no command") << QStringList();
    QTest::newRow("unknown command") << QStringList{QStringLiteral("flush")};
    QTest::newRow("unknown option") << QStringList{QStringLiteral("info"), QStringLiteral("--verbose")};
    QTest::newRow("option of another command") << QStringList{
        QStringLiteral("read"), QStringLiteral("--json"), QStringLiteral("-o"), QStringLiteral("x.json")};
    QTest::newRow("read without file") << QStringList{QStringLiteral("read")};
    QTest::newRow("write without file") << QStringList{QStringLiteral("write")};
    QTest::newRow("telemetry without mode") << QStringList{QStringLiteral("telemetry")};
    QTest::newRow("telemetry both modes")
        << QStringList{QStringLiteral("telemetry"), QStringLiteral("--once"), QStringLiteral("--watch")};
    QTest::newRow("password not a number")
        << QStringList{QStringLiteral("--password"), QStringLiteral("abc"), QStringLiteral("info")};
    QTest::newRow("password too big")
        << QStringList{QStringLiteral("--password"), QStringLiteral("4294967296"), QStringLiteral("info")};
    QTest::newRow("timeout zero") << QStringList{QStringLiteral("--timeout"), QStringLiteral("0"),
                                                 QStringLiteral("info")};
    QTest::newRow("remote without imei")
        << QStringList{QStringLiteral("--remote"), QStringLiteral("127.0.0.1:9"), QStringLiteral("info")};
    QTest::newRow("remote without port")
        << QStringList{QStringLiteral("--remote"), QStringLiteral("localhost"), QStringLiteral("--imei"),
                       QStringLiteral("1"), QStringLiteral("info")};
    QTest::newRow("port and remote") << QStringList{QStringLiteral("--port"),   QStringLiteral("/dev/null"),
                                                    QStringLiteral("--remote"), QStringLiteral("h:1"),
                                                    QStringLiteral("--imei"),   QStringLiteral("1"),
                                                    QStringLiteral("info")};
    QTest::newRow("option without value") << QStringList{QStringLiteral("info"), QStringLiteral("--port")};
    QTest::newRow("extra argument") << QStringList{QStringLiteral("info"), QStringLiteral("now")};
    QTest::newRow("decode odd digits") << QStringList{QStringLiteral("decode"), QStringLiteral("a5a")};
    QTest::newRow("decode not hex") << QStringList{QStringLiteral("decode"), QStringLiteral("a5zz")};
    QTest::newRow("decode masked login") << QStringList{
        QStringLiteral("decode"), QStringLiteral("1795396427 Command a5a50700080001010000************")};
    QTest::newRow("set-password not a number")
        << QStringList{QStringLiteral("set-password"), QStringLiteral("-1")};
}

void tst_Cli::usageErrors_exitTwo() {
    QFETCH(QStringList, args);
    const Result r = runCli(args, 5000);
    QCOMPARE(r.exitCode, 2);
    QVERIFY(r.out.isEmpty());
    const QStringList lines = r.err.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 2);
    QVERIFY2(isOneErrorLine(lines.constFirst()), qPrintable(r.err));
    QCOMPARE(lines.constLast(), QStringLiteral("Справка: tavrel-cli --help"));
}

void tst_Cli::faults_sessionSurvives_data() {
    QTest::addColumn<int>("transport");
    QTest::addColumn<QStringList>("faults");
    QTest::addColumn<bool>("readSucceeds");
    // The tool asks again for whatever a fault swallowed, so a flaky line still yields a whole file.
    QTest::newRow("silent every 3") << int(Devsim::Pty)
                                    << QStringList{QStringLiteral("--silent-every"), QStringLiteral("3")}
                                    << true;
    QTest::newRow("truncate every 2")
        << int(Devsim::Pty) << QStringList{QStringLiteral("--truncate-every"), QStringLiteral("2")} << true;
    QTest::newRow("split") << int(Devsim::Pty) << QStringList{QStringLiteral("--split")} << true;
    QTest::newRow("garbage every 3") << int(Devsim::Tcp)
                                     << QStringList{QStringLiteral("--garbage-every"), QStringLiteral("3")}
                                     << true;
    QTest::newRow("latency") << int(Devsim::Tcp)
                             << QStringList{QStringLiteral("--latency"), QStringLiteral("150")} << true;
    // The server hangs up in the middle of the read: the read fails, the next connection works.
    QTest::newRow("hangup after 5") << int(Devsim::Tcp)
                                    << QStringList{QStringLiteral("--hangup-after"), QStringLiteral("5")}
                                    << false;
}

void tst_Cli::faults_sessionSurvives() {
    QFETCH(int, transport);
    QFETCH(QStringList, faults);
    QFETCH(bool, readSucceeds);
    Devsim sim;
    QVERIFY(sim.start(Devsim::Transport(transport), faults));
    const QString out =
        m_dir.filePath(QStringLiteral("fault-%1.json").arg(QTest::currentDataTag()).replace(' ', '-'));
    QFile::remove(out);

    const Result read = runCli(sim.link() << QStringLiteral("--timeout") << QStringLiteral("12")
                                          << QStringLiteral("read") << QStringLiteral("-o") << out);
    QVERIFY(read.finished);
    QCOMPARE(read.exitStatus, QProcess::NormalExit);
    if (readSucceeds) {
        QVERIFY2(read.exitCode == 0, qPrintable(describe(read)));
        QCOMPARE(readJson(out).value(QStringLiteral("hardver.serial")).toInt(), 100234);
    } else {
        QCOMPARE(read.exitCode, 1);
        QVERIFY2(isOneErrorLine(read.err), qPrintable(describe(read)));
        QVERIFY(!QFile::exists(out));
    }

    const Result next = runCli(sim.link() << QStringLiteral("--timeout") << QStringLiteral("8")
                                          << QStringLiteral("info") << QStringLiteral("--json"));
    QVERIFY2(next.exitCode == 0, qPrintable(describe(next)));
    QCOMPARE(QJsonDocument::fromJson(next.out.toUtf8()).object().value(QStringLiteral("IMEI")).toString(),
             DeviceImei);
}

void tst_Cli::fwinfo_describesImageWithoutDevice() {
    BskBuilder b;
    b.pages = 3;
    const QString file = m_dir.filePath(QStringLiteral("info.bsk"));
    QVERIFY(BskBuilder::write(file, b.build()));
    const Result r = runCli({QStringLiteral("fwinfo"), file});
    QVERIFY2(r.exitCode == 0, qPrintable(describe(r)));
    QVERIFY2(r.out.startsWith(QStringLiteral("pages 3\n")), qPrintable(r.out));

    const Result missing = runCli({QStringLiteral("fwinfo"), m_dir.filePath(QStringLiteral("none.bsk"))});
    QVERIFY(missing.exitCode != 0 && missing.exitCode != 2);
    QVERIFY(!missing.err.isEmpty());
}

void tst_Cli::flash_badFile_exitsBeforeTouchingDevice_data() {
    QTest::addColumn<QByteArray>("file"); // empty: no file at all
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("reason");
    BskBuilder magic;
    magic.magic = QByteArray("BOOT2FILX\0", 10);
    QTest::newRow("missing file") << QByteArray() << 12 << QStringLiteral("Не удалось открыть файл");
    QTest::newRow("short file") << BskBuilder().build().left(25) << 13
                                << QStringLiteral("Файл не является прошивкой");
    QTest::newRow("other magic") << magic.build() << 14
                                 << QStringLiteral("Файл не является прошивкой BOOT2FILE");
}

void tst_Cli::flash_badFile_exitsBeforeTouchingDevice() {
    QFETCH(QByteArray, file);
    QFETCH(int, exitCode);
    QFETCH(QString, reason);
    const QString name =
        m_dir.filePath(QStringLiteral("bad-%1.bsk").arg(QTest::currentDataTag()).replace(' ', '-'));
    QFile::remove(name);
    if (!file.isEmpty())
        QVERIFY(BskBuilder::write(name, file));
    // No device behind the port: the file decides the exit status alone.
    const Result r = runCli({QStringLiteral("--port"), m_dir.filePath(QStringLiteral("no-such-port")),
                             QStringLiteral("flash"), name});
    QVERIFY2(r.exitCode == exitCode, qPrintable(describe(r)));
    QCOMPARE(r.err, QStringLiteral("Не удалось загрузить прошивку '%1'\nПричина: %2\n").arg(name, reason));
    QVERIFY(r.out.isEmpty());
}

void tst_Cli::flash_data() {
    QTest::addColumn<QStringList>("devsim");
    QTest::addColumn<QStringList>("password");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("plain") << QStringList() << QStringList() << 0;
    QTest::newRow("login first") << QStringList{QStringLiteral("--password"), QStringLiteral("55")}
                                 << QStringList{QStringLiteral("--password"), QStringLiteral("55")} << 0;
    QTest::newRow("password missing")
        << QStringList{QStringLiteral("--password"), QStringLiteral("55")} << QStringList() << 1;
    QTest::newRow("password wrong") << QStringList{QStringLiteral("--password"), QStringLiteral("55")}
                                    << QStringList{QStringLiteral("--password"), QStringLiteral("56")} << 1;
}

void tst_Cli::flash() {
    QFETCH(QStringList, devsim);
    QFETCH(QStringList, password);
    QFETCH(int, exitCode);
    BskBuilder b;
    b.pages = 512;
    const QString file = m_dir.filePath(QStringLiteral("flash.bsk"));
    QVERIFY(BskBuilder::write(file, b.build()));
    Devsim sim;
    QVERIFY(sim.start(Devsim::Pty, devsim));
    const Result r = runCli(sim.link() << password << QStringLiteral("--timeout") << QStringLiteral("5")
                                       << QStringLiteral("flash") << file);
    QVERIFY(r.finished);
    QVERIFY2(r.exitCode == exitCode, qPrintable(describe(r)));
    // A refused password ends the command at once, not after the loader's silence.
    if (exitCode != 0) {
        QVERIFY2(r.err.contains(QStringLiteral("tavrel-cli: ")) && r.err.contains(QStringLiteral("парол")),
                 qPrintable(r.err));
        QVERIFY(r.elapsedMs < 4000);
    }
}

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_cli.moc"
