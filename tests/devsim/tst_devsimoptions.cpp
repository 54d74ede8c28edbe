#include "DevsimOptions.h"

#include <QtTest>

class tst_DevsimOptions : public QObject {
    Q_OBJECT
private slots:
    void goodCommandLines_data();
    void goodCommandLines();
    void badCommandLines_data();
    void badCommandLines();
    void helpIsNotAnError();
};

void tst_DevsimOptions::goodCommandLines_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("expected"); // the fields that differ from a bare --pty
    QTest::newRow("bare pty") << QStringList{"--pty"} << "pty";
    QTest::newRow("tcp with imei") << QStringList{"--tcp", "0", "--imei", "123"} << "tcp 0 imei 123";
    QTest::newRow("files") << QStringList{"--pty", "--link", "/tmp/x", "--state", "s.json"}
                           << "pty link /tmp/x state s.json";
    QTest::newRow("largest password")
        << QStringList{"--pty", "--password", "4294967295", "--blocked"} << "pty password 4294967295 blocked";
    QTest::newRow("faults") << QStringList{"--pty", "--silent-every",  "3", "--truncate-every",
                                           "4",     "--garbage-every", "5", "--corrupt-every",
                                           "2",     "--split"}
                            << "pty silent 3 truncate 4 garbage 5 corrupt 2 split";
    QTest::newRow("pacing") << QStringList{"--pty",  "--latency",      "20", "--baud",
                                           "115200", "--hangup-after", "7"}
                            << "pty latency 20 baud 115200 hangup 7";
    QTest::newRow("versions") << QStringList{"--pty", "--fw-version", "3.9.17", "--hw-version", "0x1203"}
                              << "pty fw 3.9.17 hw 1203";
}

void tst_DevsimOptions::goodCommandLines() {
    QFETCH(QStringList, args);
    QFETCH(QString, expected);
    args.prepend("tavrel-devsim");
    DevsimOptions o;
    QString error;
    QVERIFY2(o.parse(args, &error), qPrintable(error));
    QStringList got{o.transport == DevsimOptions::Transport::Tcp ? QStringLiteral("tcp %1").arg(o.tcpPort)
                                                                 : QStringLiteral("pty")};
    auto add = [&got](bool set, const QString &text) {
        if (set)
            got << text;
    };
    add(!o.serverImei.isEmpty(), "imei " + o.serverImei);
    add(!o.linkPath.isEmpty(), "link " + o.linkPath);
    add(!o.statePath.isEmpty(), "state " + o.statePath);
    add(o.hasPassword, QStringLiteral("password %1").arg(o.password));
    add(o.blocked, "blocked");
    add(o.silentEvery, QStringLiteral("silent %1").arg(o.silentEvery));
    add(o.truncateEvery, QStringLiteral("truncate %1").arg(o.truncateEvery));
    add(o.garbageEvery, QStringLiteral("garbage %1").arg(o.garbageEvery));
    add(o.corruptEvery, QStringLiteral("corrupt %1").arg(o.corruptEvery));
    add(o.split, "split");
    add(o.latencyMs, QStringLiteral("latency %1").arg(o.latencyMs));
    add(o.baud, QStringLiteral("baud %1").arg(o.baud));
    add(o.hangupAfter, QStringLiteral("hangup %1").arg(o.hangupAfter));
    add(o.hasFwVersion, QStringLiteral("fw %1.%2.%3").arg(o.fwMajor).arg(o.fwMiddle).arg(o.fwBuild));
    add(o.hasHwVersion, QStringLiteral("hw %1").arg(o.hwVersion, 0, 16));
    QCOMPARE(got.join(' '), expected);
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
    QTest::newRow("unknown option") << QStringList{"--pty", "--colour"};
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
