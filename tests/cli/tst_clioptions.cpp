#include "cli/CliOptions.h"

#include <QtTest>

class tst_CliOptions : public QObject {
    Q_OBJECT

private slots:
    void parse_validLines_data();
    void parse_validLines();
    void deadline_defaultsPerCommand_data();
    void deadline_defaultsPerCommand();
    void needsDevice_onlyForDeviceCommands();
};

void tst_CliOptions::parse_validLines_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("command");
    QTest::addColumn<QString>("check"); // field=value pairs joined by ';'

    QTest::newRow("options after the command")
        << QStringList{QStringLiteral("info"), QStringLiteral("--json"), QStringLiteral("--port"),
                       QStringLiteral("/dev/pts/3")}
        << int(CliOptions::Command::Info) << QStringLiteral("port=/dev/pts/3;json=1");
    QTest::newRow("inline values") << QStringList{QStringLiteral("--timeout=2.5"),
                                                  QStringLiteral("--password=0"), QStringLiteral("reset")}
                                   << int(CliOptions::Command::Reset)
                                   << QStringLiteral("timeout=2500;password=0");
    QTest::newRow("largest password")
        << QStringList{QStringLiteral("--password"), QStringLiteral("4294967295"), QStringLiteral("info")}
        << int(CliOptions::Command::Info) << QStringLiteral("password=4294967295");
    QTest::newRow("remote with ipv6-like host")
        << QStringList{QStringLiteral("--remote"), QStringLiteral("::1:7000"), QStringLiteral("--imei"),
                       QStringLiteral("86307"), QStringLiteral("info")}
        << int(CliOptions::Command::Info) << QStringLiteral("host=::1;remotePort=7000;imei=86307");
    QTest::newRow("read output") << QStringList{QStringLiteral("read"), QStringLiteral("--output"),
                                                QStringLiteral("a.json")}
                                 << int(CliOptions::Command::Read) << QStringLiteral("file=a.json");
    QTest::newRow("decode joins its arguments")
        << QStringList{QStringLiteral("decode"), QStringLiteral("a5"), QStringLiteral("a5")}
        << int(CliOptions::Command::Decode) << QStringLiteral("hex=a5 a5");
    QTest::newRow("hex after double dash")
        << QStringList{QStringLiteral("decode"), QStringLiteral("--"), QStringLiteral("-a5")}
        << int(CliOptions::Command::Decode) << QStringLiteral("hex=-a5");
    QTest::newRow("set-password") << QStringList{QStringLiteral("set-password"), QStringLiteral("77")}
                                  << int(CliOptions::Command::SetPassword)
                                  << QStringLiteral("newPassword=77");
    QTest::newRow("watch raw") << QStringList{QStringLiteral("telemetry"), QStringLiteral("--watch"),
                                              QStringLiteral("--raw")}
                               << int(CliOptions::Command::Telemetry) << QStringLiteral("watch=1;raw=1");
    QTest::newRow("help wins") << QStringList{QStringLiteral("flush"), QStringLiteral("--help")}
                               << int(CliOptions::Command::Help) << QString();
}

void tst_CliOptions::parse_validLines() {
    QFETCH(QStringList, args);
    QFETCH(int, command);
    QFETCH(QString, check);
    CliOptions o;
    const QString error = o.parse(args);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QCOMPARE(int(o.command), command);
    const QHash<QString, QString> actual{
        {QStringLiteral("port"), o.port},
        {QStringLiteral("json"), QString::number(o.json)},
        {QStringLiteral("timeout"), QString::number(o.timeoutMs)},
        {QStringLiteral("password"), o.hasPassword ? QString::number(o.password) : QStringLiteral("none")},
        {QStringLiteral("host"), o.remoteHost},
        {QStringLiteral("remotePort"), QString::number(o.remotePort)},
        {QStringLiteral("imei"), o.imei},
        {QStringLiteral("file"), o.file},
        {QStringLiteral("hex"), o.decodeHex},
        {QStringLiteral("newPassword"), QString::number(o.newPassword)},
        {QStringLiteral("watch"), QString::number(o.watch)},
        {QStringLiteral("raw"), QString::number(o.raw)},
    };
    for (const QString &pair : check.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const int eq = pair.indexOf(QLatin1Char('='));
        QCOMPARE(actual.value(pair.left(eq)), pair.mid(eq + 1));
    }
}

void tst_CliOptions::deadline_defaultsPerCommand_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("deadlineMs");
    QTest::newRow("info") << QStringList{QStringLiteral("info")} << 15000;
    QTest::newRow("read") << QStringList{QStringLiteral("read"), QStringLiteral("-o"), QStringLiteral("x")}
                          << 60000;
    QTest::newRow("flash") << QStringList{QStringLiteral("flash"), QStringLiteral("f.bsk")} << 120000;
    QTest::newRow("given") << QStringList{QStringLiteral("--timeout"), QStringLiteral("0.25"),
                                          QStringLiteral("read"), QStringLiteral("-o"), QStringLiteral("x")}
                           << 250;
}

void tst_CliOptions::deadline_defaultsPerCommand() {
    QFETCH(QStringList, args);
    QFETCH(int, deadlineMs);
    CliOptions o;
    QCOMPARE(o.parse(args), QString());
    QCOMPARE(o.deadlineMs(), deadlineMs);
}

void tst_CliOptions::needsDevice_onlyForDeviceCommands() {
    const QList<QPair<QStringList, bool>> rows{
        {{QStringLiteral("ports")}, false},
        {{QStringLiteral("decode"), QStringLiteral("a5")}, false},
        {{QStringLiteral("fwinfo"), QStringLiteral("f.bsk")}, false},
        {{QStringLiteral("flash"), QStringLiteral("f.bsk")}, true},
        {{QStringLiteral("clear-memory")}, true},
        {{QStringLiteral("telemetry"), QStringLiteral("--once")}, true},
    };
    for (const auto &row : rows) {
        CliOptions o;
        QCOMPARE(o.parse(row.first), QString());
        QVERIFY2(o.needsDevice() == row.second, qPrintable(row.first.join(' ')));
    }
}

QTEST_GUILESS_MAIN(tst_CliOptions)
#include "tst_clioptions.moc"
