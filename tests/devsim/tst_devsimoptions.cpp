#include "tools/devsim/DevsimOptions.h"

#include <QtTest>

class tst_DevsimOptions : public QObject {
    Q_OBJECT
private slots:
    void ptyWithEverything();
    void tcpPortAndImei();
    void badCommandLines_data();
    void badCommandLines();
    void helpIsNotAnError();
};

void tst_DevsimOptions::ptyWithEverything() {
    DevsimOptions o;
    QString error;
    QVERIFY2(o.parse(QStringLiteral("tavrel-devsim --pty --link /tmp/x --state s.json --password 4294967295 "
                                    "--blocked --silent-every 3 --truncate-every 4 --garbage-every 5 --split "
                                    "--latency 20 --baud 115200 --hangup-after 7 --fw-version 3.9.17 "
                                    "--hw-version 0x1203 --corrupt-every 2 --ignore-writes GSMConfiguration "
                                    "--ignore-writes SystemConfiguration")
                         .split(' '),
                     &error),
             qPrintable(error));
    QCOMPARE(o.transport, DevsimOptions::Transport::Pty);
    QCOMPARE(QVariantList({o.linkPath, o.statePath, o.hasPassword, o.password, o.blocked, o.split}),
             QVariantList({"/tmp/x", "s.json", true, 4294967295u, true, true}));
    QCOMPARE(QVector<int>({o.silentEvery, o.truncateEvery, o.garbageEvery, o.corruptEvery, o.latencyMs,
                           o.baud, o.hangupAfter, o.fwMajor, o.fwMiddle, o.fwBuild, o.hwVersion}),
             QVector<int>({3, 4, 5, 2, 20, 115200, 7, 3, 9, 17, 0x1203}));
    QVERIFY(o.hasFwVersion && o.hasHwVersion);
    QCOMPARE(o.ignoredWrites, QStringList({"GSMConfiguration", "SystemConfiguration"}));
}

void tst_DevsimOptions::tcpPortAndImei() {
    DevsimOptions o;
    QString error;
    QVERIFY(o.parse({"tavrel-devsim", "--tcp", "0", "--imei", "123"}, &error));
    QCOMPARE(o.transport, DevsimOptions::Transport::Tcp);
    QCOMPARE(o.tcpPort, quint16(0));
    QCOMPARE(o.serverImei, QStringLiteral("123"));
    QVERIFY(!o.hasPassword && !o.hasFwVersion && o.baud == 0);
}

void tst_DevsimOptions::badCommandLines_data() {
    QTest::addColumn<QStringList>("args");
    QTest::newRow("no link") << QStringList{"--state", "x.json"};
    QTest::newRow("both links") << QStringList{"--pty", "--tcp", "0"};
    QTest::newRow("port too big") << QStringList{"--tcp", "65536"};
    QTest::newRow("negative count") << QStringList{"--pty", "--silent-every", "-1"};
    QTest::newRow("word for a count") << QStringList{"--pty", "--baud", "fast"};
    QTest::newRow("short firmware version") << QStringList{"--pty", "--fw-version", "3.9"};
    QTest::newRow("major above a byte") << QStringList{"--pty", "--fw-version", "256.1.1"};
    QTest::newRow("hardware not hex") << QStringList{"--pty", "--hw-version", "xyz"};
    QTest::newRow("password not a number") << QStringList{"--pty", "--password", "secret"};
    QTest::newRow("link with tcp") << QStringList{"--tcp", "0", "--link", "/tmp/x"};
    QTest::newRow("imei with pty") << QStringList{"--pty", "--imei", "1"};
    QTest::newRow("bench with tcp") << QStringList{"--tcp", "0", "--bench", "4"};
    QTest::newRow("unknown option") << QStringList{"--pty", "--colour"};
    QTest::newRow("unwritten section") << QStringList{"--pty", "--ignore-writes", "mainDviceInfo"};
    QTest::newRow("stray argument") << QStringList{"--pty", "extra"};
}

void tst_DevsimOptions::badCommandLines() {
    QFETCH(QStringList, args);
    args.prepend("tavrel-devsim");
    DevsimOptions o;
    QString error;
    QVERIFY(!o.parse(args, &error));
    QVERIFY(!error.isEmpty());
}

void tst_DevsimOptions::helpIsNotAnError() {
    DevsimOptions o;
    QString error = "x";
    QVERIFY(!o.parse({"tavrel-devsim", "--help"}, &error));
    QVERIFY(error.isEmpty());
    QVERIFY(DevsimOptions::usage().contains("--hangup-after"));
}

QTEST_GUILESS_MAIN(tst_DevsimOptions)
#include "tst_devsimoptions.moc"
