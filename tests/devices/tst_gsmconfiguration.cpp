#include "Devices/GSMConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::GSMConfiguration;

namespace {
// apn|user|password|forbidden|hi|low, words in hex
QString describe(const GSMConfigurationItem *e) {
    return QStringLiteral("%1|%2|%3|%4|%5|%6")
        .arg(e->apn(), e->apnUser(), e->apnPassword())
        .arg(e->forbidden())
        .arg(e->timetableHi(), 0, 16)
        .arg(e->timetableLow(), 0, 16);
}

QByteArray field(const QByteArray &text) {
    return text + QByteArray(32 - text.size(), '\0');
}

const QByteArray kRoaming1 = QByteArray::fromHex("01 00 0102030405060708 1112131415161718");
const QByteArray kRoaming2 = QByteArray::fromHex("fe 00 a1a2a3a4a5a6a7a8 b1b2b3b4b5b6b7b8");
const QString kOld = QStringLiteral("old|old|old|1|5|6");
} // namespace

class tst_GSMConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("sim0");
        QTest::addColumn<QString>("sim1");
        QTest::addColumn<bool>("filled");

        const QByteArray access = QByteArray::fromHex("84 03 00 00");
        const QByteArray roaming = QByteArray::fromHex("84 04 00 00");
        const QByteArray rec1 = field("internet.mts.ru") + field("mts") + field("mts");
        const QByteArray rec2 = field("internet.beeline.ru") + field("beeline") + field("");

        QTest::newRow("roaming 36 data bytes sets both SIMs")
            << roaming + kRoaming1 + kRoaming2 << "old|old|old|1|1817161514131211|807060504030201"
            << "old|old|old|0|b8b7b6b5b4b3b2b1|a8a7a6a5a4a3a2a1" << true;
        QTest::newRow("roaming 35 data bytes sets only the first SIM")
            << roaming + kRoaming1 + kRoaming2.left(17) << "old|old|old|1|1817161514131211|807060504030201"
            << kOld << true;
        QTest::newRow("roaming record for a third SIM is skipped")
            << roaming + kRoaming1 + kRoaming2 + kRoaming1 << "old|old|old|1|1817161514131211|807060504030201"
            << "old|old|old|0|b8b7b6b5b4b3b2b1|a8a7a6a5a4a3a2a1" << true;
        QTest::newRow("access 192 data bytes sets both SIMs")
            << access + rec1 + rec2 << "internet.mts.ru|mts|mts|1|5|6"
            << "internet.beeline.ru|beeline||1|5|6" << true;
        QTest::newRow("access 191 data bytes sets only the first SIM")
            << access + rec1 + rec2.left(95) << "internet.mts.ru|mts|mts|1|5|6" << kOld << true;
        QTest::newRow("apn of 32 characters without a terminating zero")
            << access + QByteArray(32, 'a') + field("u") + field("p")
            << QString(32, QLatin1Char('a')) + "|u|p|1|5|6" << kOld << true;
        QTest::newRow("another block changes nothing")
            << QByteArray::fromHex("84 05 00 00") + kRoaming1 << kOld << kOld << false;
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("84 84 00 00") + kRoaming1 << kOld << kOld << false;
        QTest::newRow("another code changes nothing")
            << QByteArray::fromHex("83 04 00 00") + kRoaming1 << kOld << kOld << false;
    }

    void decode() {
        QFETCH(QByteArray, payload);
        GSMConfiguration s(2);
        for (int i = 0; i < 2; ++i) {
            GSMConfigurationItem *e = s.element(i);
            e->setApn(QStringLiteral("old"));
            e->setApnUser(QStringLiteral("old"));
            e->setApnPassword(QStringLiteral("old"));
            e->setForbidden(1);
            e->setTimetableHi(5);
            e->setTimetableLow(6);
        }
        QSignalSpy filled(&s, &GSMConfiguration::DeviceInfoFilled);

        s.decode(payload);

        QTEST(describe(s.element(0)), "sim0");
        QTEST(describe(s.element(1)), "sim1");
        QTEST(filled.count() == 1, "filled");
    }

    void encodeAccess_data() {
        QTest::addColumn<int>("sim");
        QTest::addColumn<QString>("apn"); // user "u", password "pw"
        QTest::addColumn<QByteArray>("expected");
        const QByteArray tail = field("u") + field("pw");
        QTest::newRow("second SIM, short texts zero-padded")
            << 1 << "apn" << QByteArray::fromHex("04 03 01 00") + field("apn") + tail;
        QTest::newRow("apn of exactly 32 characters fills the field")
            << 0 << QString(32, QLatin1Char('x'))
            << QByteArray::fromHex("04 03 00 00") + QByteArray(32, 'x') + tail;
        QTest::newRow("Cyrillic character is sent as 0")
            << 0 << QStringLiteral("aпb")
            << QByteArray::fromHex("04 03 00 00") + field(QByteArray("a\0b", 3)) + tail;
        QTest::newRow("SIM outside the section gives nothing") << 2 << "apn" << QByteArray();
    }

    void encodeAccess() {
        QFETCH(int, sim);
        QFETCH(QString, apn);
        GSMConfiguration s(2);
        if (GSMConfigurationItem *e = s.element(sim)) {
            e->setApn(apn);
            e->setApnUser(QStringLiteral("u"));
            e->setApnPassword(QStringLiteral("pw"));
        }
        QTEST(s.encodeAccess(sim), "expected");
    }

    void encodeRoaming_sendsTheLowWordFirstAndForbiddenAsOneBit() {
        GSMConfiguration s(2);
        s.element(0)->setForbidden(1);
        s.element(0)->setTimetableHi(Q_UINT64_C(0x1817161514131211));
        s.element(0)->setTimetableLow(Q_UINT64_C(0x0807060504030201));
        s.element(1)->setForbidden(2);
        s.element(1)->setTimetableLow(Q_UINT64_C(0xffffffffffffffff));
        QCOMPARE(s.encodeRoaming(0).toHex(' '), (QByteArray::fromHex("04 04 00 00") + kRoaming1).toHex(' '));
        QCOMPARE(s.encodeRoaming(1).toHex(' '),
                 QByteArray("04 04 01 00 00 00 ff ff ff ff ff ff ff ff 00 00 00 00 00 00 00 00"));
        QVERIFY(s.encodeRoaming(2).isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_GSMConfiguration)
#include "tst_gsmconfiguration.moc"
