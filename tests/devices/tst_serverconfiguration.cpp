#include "Devices/ServerConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::ServerConfiguration;

namespace {
QString describe(const ServerConfigurationItem *e) {
    return QStringLiteral("%1|%2|%3|%4").arg(e->enable()).arg(e->server()).arg(e->port()).arg(e->proto());
}

QByteArray address(const QByteArray &text) {
    return text + QByteArray(32 - text.size(), '\0');
}

// enable, address, port (LE), proto
QByteArray record(const QByteArray &enable, const QByteArray &text, const QByteArray &portAndProto) {
    return QByteArray::fromHex(enable) + address(text) + QByteArray::fromHex(portAndProto);
}
} // namespace

class tst_ServerConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("expected");

        const QByteArray head = QByteArray::fromHex("90 01 00 00");
        QTest::newRow("one record") << head + record("01", "gps.tavrel.ru", "4e 52 00 00 01")
                                    << "1|gps.tavrel.ru|21070|1";
        QTest::newRow("enable takes bit 0 only")
            << head + record("fe", "10.0.0.1", "ff ff ff ff 07") << "0|10.0.0.1|4294967295|7";
        QTest::newRow("address of 32 characters has no zero")
            << head + record("01", QByteArray(32, 'h'), "01 00 00 00 00")
            << "1|" + QString(32, QLatin1Char('h')) + "|1|0";
        QTest::newRow("a second record is skipped")
            << head + record("01", "a", "02 00 00 00 00") + record("01", "b", "03 00 00 00 00") << "1|a|2|0";
        QTest::newRow("37 data bytes hold no record")
            << head + record("01", "a", "02 00 00 00 00").left(37) << "1|old|9|9";
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("90 81 00 00") + record("00", "a", "02 00 00 00 00") << "1|old|9|9";
    }

    void decode() {
        QFETCH(QByteArray, payload);
        ServerConfiguration s(1);
        s.value()->setEnable(1);
        s.value()->setServer(QStringLiteral("old"));
        s.value()->setPort(9);
        s.value()->setProto(9);

        s.decode(payload);

        QTEST(describe(s.value()), "expected");
    }

    void encode_masksEnableAndSendsCyrillicAsZero() {
        ServerConfiguration s(1);
        s.value()->setEnable(1);
        s.value()->setServer(QStringLiteral("gps.tavrel.ru"));
        s.value()->setPort(21070);
        s.value()->setProto(1);
        QCOMPARE(s.encode(0).toHex(' '),
                 (QByteArray::fromHex("10 01 00 00") + record("01", "gps.tavrel.ru", "4e 52 00 00 01"))
                     .toHex(' '));
        s.value()->setEnable(2);
        s.value()->setServer(QStringLiteral("сервер"));
        s.value()->setPort(0x01020304u);
        s.value()->setProto(0);
        QCOMPARE(s.encode(0).toHex(' '),
                 (QByteArray::fromHex("10 01 00 00") + record("00", QByteArray(6, '\0'), "04 03 02 01 00"))
                     .toHex(' '));
        QVERIFY(s.encode(1).isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_ServerConfiguration)
#include "tst_serverconfiguration.moc"
