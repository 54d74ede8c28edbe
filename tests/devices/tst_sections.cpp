#include "tests/support/SectionFields.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/SectionTable.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/TelemetryRecords.h"
#include "Devices/TelemetryText.h"

#include <QSignalSpy>
#include <QtTest>

using namespace kd;

namespace {

QStringList ownSignals(const QMetaObject &mo) {
    QStringList own;
    for (int i = mo.methodOffset(); i < mo.methodCount(); ++i) {
        if (mo.method(i).methodType() == QMetaMethod::Signal)
            own << QString::fromLatin1(mo.method(i).methodSignature());
    }
    return own;
}

// A telemetry answer of `kind` whose data bytes count up from 1, so every record is recognisable.
QByteArray answer(int byte1, int dataLength, int code = 0x82) {
    QByteArray p = QByteArray::fromHex("00 00 00 00");
    p[0] = char(code);
    p[1] = char(byte1);
    for (int i = 0; i < dataLength; ++i)
        p.append(char(i + 1));
    return p;
}

// group 1, type 3, mod 2, serial 100234, version 918, 12 unread bytes
const QByteArray kIdentity = QByteArray::fromHex("81 01 00 00 01000000 03000000 02000000 8a870100 96030000"
                                                 "ffffffffffffffffffffffff");

// addr/tank_num/averaging of each of the eight elements
QString describe(const FuelConfiguration &s) {
    QStringList parts;
    for (int i = 0; i < s.count(); ++i) {
        const FuelConfigurationItem *e = s.element(i);
        parts << QStringLiteral("%1/%2/%3").arg(e->addr()).arg(e->tank_num()).arg(e->averaging());
    }
    return parts.join(QLatin1Char(' '));
}

const QByteArray kBody = QByteArray::fromHex("01 00 02 01 03 01 04 02 05 02 06 03 07 03 08 04"
                                             "0a 00 14 00 1e 00 28 00 00 01");

QByteArray field(const QByteArray &text) {
    return text + QByteArray(32 - text.size(), '\0');
}

const QByteArray kRoaming1 = QByteArray::fromHex("01 00 0102030405060708 1112131415161718");
const QByteArray kRoaming2 = QByteArray::fromHex("fe 00 a1a2a3a4a5a6a7a8 b1b2b3b4b5b6b7b8");

QString states(const OutputConfigurationItem *e) {
    QStringList parts;
    for (quint8 s : e->states())
        parts << QString::number(s);
    return parts.join(QLatin1Char(' '));
}

// enable, address, port (LE), proto
QByteArray record(const QByteArray &enable, const QByteArray &text, const QByteArray &portAndProto) {
    return QByteArray::fromHex(enable) + field(text) + QByteArray::fromHex(portAndProto);
}

// What each section holds before a decode, in the form fieldsOf() gives.
const QString kOldTimetable = QStringLiteral("00000000000000050000000000000006"); // high word 5, low 6
const QString kOldSim = "old old old 1 " + kOldTimetable;
const QHash<QString, QString> kBefore = {
    {kd::keys::MainDeviceInfo, "old 9 9 9 9 9 old"},      {kd::keys::System, "99 98 9 1 0"},
    {kd::keys::Navigation, "91 92 93 94 0 5 96"},         {kd::keys::Server, "1 old 9 9"},
    {kd::keys::Agc, "1 9 9 9 9 / 1 9 9 9 9 / 1 9 9 9 9"}, {kd::keys::Gsm, kOldSim + " / " + kOldSim},
};

// Bytes 1, 8, 15, ... so that every field of a record gets a distinct value.
QByteArray counting(int size) {
    QByteArray b;
    for (int i = 0; i < size; ++i)
        b.append(char(i * 7 + 1));
    return b;
}

template <class R>
void addRecord(const char *name) {
    const QByteArray bytes = counting(R::Size);
    QTest::newRow(name) << bytes << R::fromBytes(bytes).toBytes() << R::fromBytes(bytes.left(3)).toBytes();
}
} // namespace

// The sections' codecs: every answer a section decodes and every write it encodes, as hex vectors; the
// telemetry records and their wording.
class tst_Sections : public QObject {
    Q_OBJECT

private slots:
    // One answer decoded into the section of the whole-device configuration; "expected" is what the
    // section then holds (empty: what it held before), "filled" whether it counts as read (-1: not checked).
    void decode_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<int>("filled");
        const auto row = [](const char *name, const char *key, const QByteArray &payload,
                            const QString &expected, int filled = -1) {
            QTest::addRow("%s: %s", key, name) << QString::fromLatin1(key) << payload << expected << filled;
        };
        using namespace kd::keys;
        const auto hex = [](const char *text) { return QByteArray::fromHex(text); };

        row("identity with a terminated IMEI", MainDeviceInfo,
            kIdentity + "863071014478127" + QByteArray(1, '\0') + "junk",
            "old 918 1 3 2 100234 863071014478127", 1);
        row("IMEI filling the body without a zero stops at the end", MainDeviceInfo, kIdentity + "8630710144",
            "old 918 1 3 2 100234 8630710144", 1);
        row("identity without IMEI bytes keeps the IMEI", MainDeviceInfo, kIdentity,
            "old 918 1 3 2 100234 old", 1);
        row("short identity sets only whole fields", MainDeviceInfo, kIdentity.left(14), "old 9 1 3 9 9 old",
            1);
        row("text information", MainDeviceInfo, hex("81 02 00 00") + "Vantor micro" + QByteArray(1, '\0'),
            "Vantor micro 9 9 9 9 9 old", 1);
        row("text without a zero stops at the end", MainDeviceInfo, hex("81 02 00 00") + "Vantor",
            "Vantor 9 9 9 9 9 old", 1);
        row("bit 7 of byte 1 changes nothing", MainDeviceInfo, hex("81 81 00 00 01 00"), "", 0);
        row("another kind changes nothing", MainDeviceInfo, hex("81 03 00 00") + kIdentity.mid(4), "", 0);
        row("another code changes nothing", MainDeviceInfo, hex("91") + kIdentity.mid(1), "", 0);

        row("byte 6 = 3F gives gsens 15 and both flags", System, hex("91 01 00 00 0a 02 3f 00"),
            "10 2 15 1 1", 1);
        row("byte 6 = C0 gives all three zero", System, hex("91 01 00 00 0a 02 c0 00"), "10 2 0 0 0", 1);
        row("reserved byte 7 is ignored", System, hex("91 01 00 00 01 02 13 ff"), "1 2 3 1 0", 1);
        row("answer of another code changes nothing", System, hex("90 01 00 00 0a 02 3f 00"), "", 0);
        row("status answer changes nothing", System, hex("91 81 00 00 01 00 3f 00"), "", 0);
        row("short body decodes only the bytes it holds", System, hex("91 01 00 00 05"), "5 98 9 1 0", 1);
        row("head only changes nothing but is a read", System, hex("91 01 00 00"), "", 1);
        row("one byte changes nothing", System, hex("91"), "", 0);

        row("motion answer leaves the parking fields", Navigation, hex("83 02 00 00 0a 14 1e 28 ff ff"),
            "10 20 30 40 0 5 96", 1);
        row("parking answer FF FF gives freezeNav 1 and pwrNav 15", Navigation,
            hex("83 03 00 00 ff ff 07 ff"), "91 92 93 94 1 15 7", 1);
        row("parking answer keeps only bit 0 and the low nibble", Navigation, hex("83 03 00 00 fe f0 00 00"),
            "91 92 93 94 0 0 0", 1);
        row("another block changes nothing", Navigation, hex("83 04 00 00 01 02 03 04 05 06"), "", 0);
        row("bit 7 of byte 1 set changes nothing", Navigation, hex("83 82 00 00 01 02 03 04 05 06"), "", 0);
        row("another code changes nothing", Navigation, hex("84 02 00 00 01 02 03 04 05 06"), "", 0);
        row("short parking answer decodes the bytes it holds", Navigation, hex("83 03 00 00 01"),
            "91 92 93 94 1 5 96", 1);

        const QByteArray server = hex("90 01 00 00");
        row("one record", Server, server + record("01", "gps.tavrel.ru", "4e 52 00 00 01"),
            "1 gps.tavrel.ru 21070 1");
        row("enable takes bit 0 only", Server, server + record("fe", "10.0.0.1", "ff ff ff ff 07"),
            "0 10.0.0.1 4294967295 7");
        row("address of 32 characters has no zero", Server,
            server + record("01", QByteArray(32, 'h'), "01 00 00 00 00"),
            "1 " + QString(32, QLatin1Char('h')) + " 1 0");
        row("a second record is skipped", Server,
            server + record("01", "a", "02 00 00 00 00") + record("01", "b", "03 00 00 00 00"), "1 a 2 0");
        row("37 data bytes hold no record", Server, server + record("01", "a", "02 00 00 00 00").left(37),
            "");
        row("status answer changes nothing", Server, hex("90 81 00 00") + record("00", "a", "02 00 00 00 00"),
            "");

        const QByteArray agc = hex("8c 02 00 00");
        const QByteArray r0 = hex("01 00 e8 03 d0 07 0a 00 05 00");
        const QByteArray r1 = hex("fe 00 01 00 02 00 03 00 04 00");
        const QByteArray r2 = hex("03 ff ff ff 00 80 01 01 00 00");
        const QString three = QStringLiteral("1 1000 2000 10 5 / 0 1 2 3 4 / 1 65535 32768 257 0");
        row("three records set three channels", Agc, agc + r0 + r1 + r2, three);
        row("25 bytes set channels 0 and 1 only", Agc, agc + r0 + r1 + r2.left(1),
            "1 1000 2000 10 5 / 0 1 2 3 4 / 1 9 9 9 9");
        row("a fourth record is skipped", Agc, agc + r0 + r1 + r2 + r0, three);
        row("another kind changes nothing", Agc, hex("8c 01 00 00") + r0, "");
        row("status answer changes nothing", Agc, hex("8c 82 00 00") + r0, "");

        const QByteArray access = hex("84 03 00 00"), roaming = hex("84 04 00 00");
        const QByteArray rec1 = field("internet.mts.ru") + field("mts") + field("mts");
        const QByteArray rec2 = field("internet.beeline.ru") + field("beeline") + field("");
        const QString roamed1 = "old old old 1 18171615141312110807060504030201";
        const QString roamed2 = "old old old 0 b8b7b6b5b4b3b2b1a8a7a6a5a4a3a2a1";
        const QString mts = "internet.mts.ru mts mts 1 " + kOldTimetable;
        row("roaming 36 data bytes sets both SIMs", Gsm, roaming + kRoaming1 + kRoaming2,
            roamed1 + " / " + roamed2, 1);
        row("roaming 35 data bytes sets only the first SIM", Gsm, roaming + kRoaming1 + kRoaming2.left(17),
            roamed1 + " / " + kOldSim, 1);
        row("roaming record for a third SIM is skipped", Gsm, roaming + kRoaming1 + kRoaming2 + kRoaming1,
            roamed1 + " / " + roamed2, 1);
        row("access 192 data bytes sets both SIMs", Gsm, access + rec1 + rec2,
            mts + " / internet.beeline.ru beeline  1 " + kOldTimetable, 1);
        row("access 191 data bytes sets only the first SIM", Gsm, access + rec1 + rec2.left(95),
            mts + " / " + kOldSim, 1);
        row("apn of 32 characters without a terminating zero", Gsm,
            access + QByteArray(32, 'a') + field("u") + field("p"),
            QString(32, QLatin1Char('a')) + " u p 1 " + kOldTimetable + " / " + kOldSim, 1);
        row("another block changes nothing", Gsm, hex("84 05 00 00") + kRoaming1, "", 0);
        row("status answer changes nothing", Gsm, hex("84 84 00 00") + kRoaming1, "", 0);
        row("another code changes nothing", Gsm, hex("83 04 00 00") + kRoaming1, "", 0);
    }

    void decode() {
        QFETCH(QString, key);
        QFETCH(QByteArray, payload);
        QFETCH(QString, expected);
        QFETCH(int, filled);
        VantorConfiguration cfg;
        setFields(cfg, key, kBefore.value(key));
        QSignalSpy read(cfg.item(key), &kd::IConfigurationItem::DeviceInfoFilled);

        QVERIFY(kd::sectionByKey(key)->decode(&cfg, payload));

        QCOMPARE(fieldsOf(cfg, key), expected.isEmpty() ? kBefore.value(key) : expected);
        if (filled >= 0)
            QCOMPARE(read.count(), filled);
    }

    void agc_decode_logsAndAnnouncesEveryChannel() {
        AgcConfiguration s(3);
        for (const char *n : {"0", "1"})
            QTest::ignoreMessage(
                QtDebugMsg,
                QRegularExpression(QStringLiteral("^\\d+ Прочитано 8c 02 00 00 Конфигурация ADC\\[%1$")
                                       .arg(QLatin1String(n))));
        QSignalSpy filled(&s, &AgcConfiguration::DeviceInfoFilled);
        QSignalSpy channelFilled(&s, &AgcConfiguration::DeviceInfoChanged);
        s.decode(QByteArray::fromHex("8c 02 00 00") + QByteArray(20, '\0'));
        QCOMPARE(filled.count(), 1);
        QCOMPARE(channelFilled.count(), 2);
        QCOMPARE(channelFilled.at(1).at(0).toUInt(), 1u);
    }

    // The four value signals and the filled signal come first, in the order connections by index rely on.
    void agc_signals_keepTheirOrder() {
        QCOMPARE(ownSignals(AgcConfigurationItem::staticMetaObject),
                 QStringList({"thresholdLowChanged(uint16_t)", "thresholdHighChanged(uint16_t)",
                              "sensitivityChanged(uint16_t)", "averagingChanged(uint16_t)",
                              "DeviceInfoFilled()", "enabledChanged(uchar)"}));
        QCOMPARE(ownSignals(AgcConfiguration::staticMetaObject),
                 QStringList({"agcChannelHighThresholdChanged(uint32_t,uint32_t)",
                              "agcChannelLowThresholdChanged(uint32_t,uint32_t)",
                              "agcChannelAveragingChanged(uint32_t,uint32_t)",
                              "agcChannelSensitivityChanged(uint32_t,uint32_t)",
                              "DeviceInfoChanged(uint32_t)", "agcChannelEnabledChanged(uint32_t,uint32_t)"}));
    }

    void agc_elementSignals_areReemittedWithTheChannel_data() {
        QTest::addColumn<int>("channel");
        QTest::addColumn<QByteArray>("elementSignal");
        QTest::addColumn<QByteArray>("sectionSignal");
        const auto row = [](const char *name, int channel, const char *element, const char *section) {
            QTest::newRow(name) << channel << QByteArray(element) << QByteArray(section);
        };
        row("high threshold of the third channel", 2, "thresholdHighChanged",
            SIGNAL(agcChannelHighThresholdChanged(uint32_t, uint32_t)));
        row("low threshold of the first channel", 0, "thresholdLowChanged",
            SIGNAL(agcChannelLowThresholdChanged(uint32_t, uint32_t)));
        row("averaging of the second channel", 1, "averagingChanged",
            SIGNAL(agcChannelAveragingChanged(uint32_t, uint32_t)));
        row("sensitivity of the third channel", 2, "sensitivityChanged",
            SIGNAL(agcChannelSensitivityChanged(uint32_t, uint32_t)));
    }

    void agc_elementSignals_areReemittedWithTheChannel() {
        QFETCH(int, channel);
        QFETCH(QByteArray, elementSignal);
        QFETCH(QByteArray, sectionSignal);
        AgcConfiguration s(3);
        QSignalSpy spy(&s, sectionSignal.constData());
        // Emitted directly, as a page's widget mapping may do, not only through the setters.
        QVERIFY(QMetaObject::invokeMethod(s.element(channel), elementSignal.constData(),
                                          Q_ARG(uint16_t, uint16_t(65535))));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0), QVariantList({uint(channel), 65535u}));
    }

    void controlInfo_decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("kind");
        QTest::addColumn<bool>("announce");
        QTest::addColumn<int>("stored"); // records received, from index 0

        QTest::newRow("kind 18 of 30 bytes stores records 0 and 1, drops the third")
            << answer(18, 30) << 18 << true << 2;
        QTest::newRow("kind 14 of 37 bytes stores nothing but is announced")
            << answer(14, 37) << 14 << true << 0;
        QTest::newRow("kind 23 of 6 bytes stores three SIM states") << answer(23, 6) << 23 << true << 3;
        QTest::newRow("0x8E in byte 1 is kind 14") << answer(0x8e, 38) << 14 << true << 1;
        QTest::newRow("kind 15 of 192 bytes keeps three servers") << answer(15, 192) << 15 << true << 3;
        QTest::newRow("kind 24 of 72 bytes stores two SIMs") << answer(24, 72) << 24 << true << 2;
        QTest::newRow("kind 10 of 71 bytes stores nothing") << answer(10, 71) << 10 << true << 0;
        QTest::newRow("kind 11 of 12 bytes keeps the first record") << answer(11, 12) << 11 << true << 1;
        QTest::newRow("kind 21 of 16 bytes keeps the first record") << answer(21, 16) << 21 << true << 1;
        QTest::newRow("kind 22 of exactly 8 bytes") << answer(22, 8) << 22 << true << 1;
        QTest::newRow("kind 22 of 9 bytes is dropped") << answer(22, 9) << 22 << false << 0;
        QTest::newRow("kind 22 of 7 bytes is dropped") << answer(22, 7) << 22 << false << 0;
        QTest::newRow("kind 9 is announced, not stored") << answer(9, 20) << 9 << true << 0;
        QTest::newRow("kind 1 is announced") << answer(1, 20) << 1 << true << 0;
        QTest::newRow("kind 5 is only logged") << answer(5, 20) << 5 << false << 0;
        QTest::newRow("kind 25 is ignored") << answer(25, 20) << 25 << false << 0;
        QTest::newRow("another code is ignored") << answer(14, 38, 0x83) << 14 << false << 0;
    }

    void controlInfo_decode() {
        QFETCH(QByteArray, payload);
        QFETCH(int, kind);
        QFETCH(int, stored);
        ControlInfoConfiguration s(1);
        QSignalSpy changed(&s, &ControlInfoConfiguration::changed);

        QTEST(s.decode(payload), "announce");

        const int size = ControlInfoConfiguration::recordSize(kind);
        for (int n = 0; n < ControlInfoConfiguration::recordsKept(kind); ++n) {
            QCOMPARE(s.value()->received(kind, n), n < stored);
            const QByteArray expected = n < stored ? payload.mid(4 + n * size, size) : QByteArray(size, '\0');
            QCOMPARE(s.record(kind, n).toHex(), expected.toHex());
        }
        QCOMPARE(changed.count(), stored);
    }

    void controlInfo_decode_logsTheLabel_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("label");
        QTest::newRow("kind 3") << answer(3, 0) << "....телеметрия????";
        QTest::newRow("kind 17 says outputs") << answer(17, 10) << "....телеметрия аналоговых выходов";
        QTest::newRow("kind 18 says outputs") << answer(18, 10) << "....телеметрия цифровых выходов";
    }

    void controlInfo_decode_logsTheLabel() {
        QFETCH(QByteArray, payload);
        QFETCH(QString, label);
        ControlInfoConfiguration s(1);
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression("^\\d+ " + QRegularExpression::escape(label) + "$"));
        s.decode(payload);
    }

    void controlInfo_typedReads_outsideTheKeptRangeAreEmpty() {
        ControlInfoConfiguration s(1);
        s.decode(answer(14, 3 * 38));
        s.decode(answer(18, 2 * 10));
        s.decode(answer(23, 3 * 2));
        QVERIFY(s.navReceiver(2).has_value());
        QVERIFY(!s.navReceiver(3).has_value());
        QVERIFY(!s.logicInput(2).has_value());
        QCOMPARE(s.simState(2)->state, quint16(0x0605));
        QVERIFY(!s.simState(3).has_value());
        QVERIFY(!s.serverState(0).has_value()); // nothing received yet
        QVERIFY(s.record(9, 0).isEmpty());
    }

    void deviceInfo_decode_setsVersionFirstAndIMEILast() {
        DeviceInfoConfiguration s(1);
        QStringList order;
        connect(&s, &DeviceInfoConfiguration::VersionChanged, this, [&] { order << "Version"; });
        connect(&s, &DeviceInfoConfiguration::DeviceGroupChanged, this, [&] { order << "DeviceGroup"; });
        connect(&s, &DeviceInfoConfiguration::IMEIChanged, this, [&] { order << "IMEI"; });
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression("^\\d+ Прочитано 81 01 00 00 <Информация о приборе>$"));
        s.decode(kIdentity + "1");
        QCOMPARE(order, QStringList({"Version", "DeviceGroup", "IMEI"}));
    }

    void deviceInfo_identityAnswer_hasTheFixedLayout() {
        VantorConfiguration device;
        setFields(device, kd::keys::MainDeviceInfo, "x 918 1 3 2 100234 12");
        QCOMPARE(device.deviceInfo()->encodeAnswer(1).toHex(' '),
                 QByteArray::fromHex("81 01 00 00 01000000 03000000 02000000 8a870100 96030000"
                                     "000000000000000000000000 31 32 00")
                     .toHex(' '));
        QVERIFY(device.deviceInfo()->encodeAnswer(3).isEmpty());
    }

    void fuel_decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("filled");

        const QByteArray head = QByteArray::fromHex("88 01 00 00");
        const QString nines = QStringLiteral("9/9/9 ").repeated(8).trimmed();
        QTest::newRow("full body; tanks 5 to 7 keep their averaging")
            << head + kBody << "1/0/10 2/1/20 3/1/30 4/2/40 5/2/256 6/3/9 7/3/9 8/4/9" << true;
        QTest::newRow("short body decodes only whole fields")
            << head + kBody.left(17) << "1/0/9 2/1/9 3/1/9 4/2/9 5/2/9 6/3/9 7/3/9 8/4/9" << true;
        QTest::newRow("body cut inside the first averaging")
            << head + kBody.left(3) << "1/0/9 2/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9 9/9/9" << true;
        QTest::newRow("another kind changes nothing")
            << QByteArray::fromHex("88 02 00 00") + kBody << nines << false;
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("88 81 00 00 01 00") << nines << false;
    }

    void fuel_decode() {
        QFETCH(QByteArray, payload);
        FuelConfiguration s(8);
        for (int i = 0; i < 8; ++i) {
            s.element(i)->setAddr(9);
            s.element(i)->setTank_num(9);
            s.element(i)->setAveraging(9);
        }
        QSignalSpy filled(&s, &FuelConfiguration::DeviceInfoFilled);

        s.decode(payload);

        QTEST(describe(s), "expected");
        QTEST(filled.count() == 1, "filled");
    }

    void fuel_encode_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("expected");

        QTest::newRow("eight sensors") << 8 << QByteArray::fromHex("08 01 00 00") + kBody;
        QTest::newRow("three sensors still send 26 bytes")
            << 3
            << QByteArray::fromHex("08 01 00 00 01 00 02 01 03 01 00 00 00 00 00 00 00 00 00 00"
                                   "0a 00 14 00 1e 00 00 00 00 00");
    }

    void fuel_encode() {
        QFETCH(int, count);
        QFETCH(QByteArray, expected);
        FuelConfiguration s(count);
        const quint8 tanks[] = {0, 1, 1, 2, 2, 3, 3, 4};
        const quint16 averaging[] = {10, 20, 30, 40, 256, 60, 70, 80}; // 60..80 never reach the device
        for (int i = 0; i < count; ++i) {
            s.element(i)->setAddr(quint8(i + 1));
            s.element(i)->setTank_num(tanks[i]);
            s.element(i)->setAveraging(averaging[i]);
        }

        QCOMPARE(s.encode().toHex(' '), expected.toHex(' '));
    }

    void logic_decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("func0");
        QTest::addColumn<int>("func1");
        QTest::addColumn<QString>("loggedHead"); // empty: nothing decoded

        const auto row = [](const char *name, const char *hex, int func0, int func1, const char *head) {
            QTest::newRow(name) << QByteArray::fromHex(hex) << func0 << func1 << QString::fromLatin1(head);
        };
        row("two records", "8d 02 00 00 03 00 07 00", 3, 7, "8d 02 00 00");
        row("index byte 5 is clamped to 1, records still start at input 0", "8d 02 05 00 03 00 07 00", 3, 7,
            "8d 02 01 00");
        row("index byte 1 stays 1", "8d 02 01 00 04 00", 4, 9, "8d 02 01 00");
        row("odd byte is no record", "8d 02 00 00 04 00 05", 4, 9, "8d 02 00 00");
        row("a third record is skipped", "8d 02 00 00 01 00 02 00 03 00", 1, 2, "8d 02 00 00");
        row("another kind changes nothing", "8d 01 00 00 01 00 02 00", 9, 9, "");
        row("status answer changes nothing", "8d 82 00 00 01 00", 9, 9, "");
    }

    void logic_decode() {
        QFETCH(QByteArray, payload);
        QFETCH(QString, loggedHead);
        LogicConfiguration s(2);
        s.element(0)->setFunc(9);
        s.element(1)->setFunc(9);
        if (!loggedHead.isEmpty()) {
            QTest::ignoreMessage(QtDebugMsg,
                                 QRegularExpression(QStringLiteral("^\\d+ Прочитано %1 "
                                                                   "Конфигурация LogicInputs\\[0$")
                                                        .arg(loggedHead)));
        }
        QSignalSpy filled(&s, &LogicConfiguration::DeviceInfoFilled);

        s.decode(payload);

        QTEST(int(s.element(0)->func()), "func0");
        QTEST(int(s.element(1)->func()), "func1");
        QCOMPARE(filled.count(), loggedHead.isEmpty() ? 0 : 1);
    }

    void logic_funcChange_isReemittedWithTheInput() {
        LogicConfiguration s(2);
        QSignalSpy spy(&s, &LogicConfiguration::funcChanged);
        s.element(1)->setFunc(3);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), 1);
    }

    void output_decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("numberOfOutputs");
        QTest::addColumn<QString>("states");

        const auto row = [](const char *name, const QByteArray &payload, int count, const QString &states) {
            QTest::newRow(name) << payload << count << states;
        };
        const QByteArray head = QByteArray::fromHex("8e 01 00 00");
        row("7 data bytes give 3 outputs", head + QByteArray::fromHex("01 00 00 00 01 00 ff"), 3, "1 0 1");
        row("no data, no outputs", head, 0, "");
        row("second byte of each record is not a state", head + QByteArray::fromHex("00 01 02 03"), 2, "0 2");
        row("257 outputs count as 1 in 8 bits", head + QByteArray(2 * 257, '\1'), 1,
            QStringLiteral("1 ").repeated(257).trimmed());
        row("status answer changes nothing", QByteArray::fromHex("8e 81 00 00 01 00"), 7, "5");
        row("another code changes nothing", QByteArray::fromHex("8d 01 00 00 01 00"), 7, "5");
    }

    void output_decode() {
        QFETCH(QByteArray, payload);
        OutputConfiguration s(1);
        s.value()->setNumberOfOutputs(7);
        s.value()->setStates({5});

        s.decode(payload);

        QTEST(int(s.value()->numberOfOutputs()), "numberOfOutputs");
        QTEST(states(s.value()), "states");
    }

    void output_encodeParameters_takesTheHeadFromTheCallerAndLeavesOutTheCount() {
        OutputConfiguration s(1);
        s.value()->setOutNum(2);
        s.value()->setHighCondition(100);
        s.value()->setLowCondition(10);
        s.value()->setReplayCounter(3);
        s.value()->setNumberOfOutputs(4);
        QCOMPARE(s.encodeParameters(0x02, 0x0a).toHex(' '), QByteArray("02 0a 00 00 02 64 0a 03"));
    }

    void output_encodeStates_data() {
        QTest::addColumn<QByteArray>("states");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("missing states are 0")
            << QByteArray::fromHex("01 00") << QByteArray::fromHex("01 00 00 00");
        QTest::newRow("states beyond four are dropped")
            << QByteArray::fromHex("01 01 00 01 01") << QByteArray::fromHex("01 01 00 01");
        QTest::newRow("no states") << QByteArray() << QByteArray::fromHex("00 00 00 00");
    }

    void output_encodeStates() {
        QFETCH(QByteArray, states);
        OutputConfiguration s(1);
        s.value()->setStates(QVector<quint8>(states.begin(), states.end()));
        QTEST(s.encodeStates(), "expected");
    }

    // The write requests of a section holding `values` (in the form fieldsOf() gives): all of them, or the
    // one of `index`, each as hex, divided by " | ".
    void encode_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("values");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *key, const QString &values, int index,
                            const QByteArray &expected) {
            QTest::addRow("%s: %s", key, name)
                << QString::fromLatin1(key) << values << index << QString::fromLatin1(expected);
        };
        using namespace kd::keys;
        const QByteArray zeros(32, '0');
        row("all zero", System, "0 0 0 0 0", -1, "11 01 00 00 00 00 00 00");
        row("gsens 17 puts 1 in the low nibble", System, "0 0 17 0 0", -1, "11 01 00 00 00 00 01 00");
        row("flags are written as their lowest bit", System, "5 6 15 2 3", -1, "11 01 00 00 05 06 2f 00");
        row("everything set", System, "255 255 15 1 1", -1, "11 01 00 00 ff ff 3f 00");
        row("plain values", Navigation, "1 2 3 4 1 7 200", -1,
            "03 03 00 00 01 07 c8 00 | 03 02 00 00 01 02 03 04 00 00");
        row("pwrNav 16 sends 0, freezeNav 3 sends 1", Navigation, "0 0 0 0 3 16 0", -1,
            "03 03 00 00 01 00 00 00 | 03 02 00 00 00 00 00 00 00 00");
        row("pwrNav 31 keeps the low nibble", Navigation, "255 255 255 255 2 31 255", -1,
            "03 03 00 00 00 0f ff 00 | 03 02 00 00 ff ff ff ff 00 00");
        row("enabled 2 sends 0", Agc, "1 9 9 9 9 / 1 9 9 9 9 / 2 1000 2000 10 5", 2,
            "0c 02 02 00 00 00 e8 03 d0 07 0a 00 05 00");
        row("enabled 1 sends 1", Agc, "1 9 9 9 9 / 1 9 9 9 9 / 1 1000 2000 10 5", 2,
            "0c 02 02 00 01 00 e8 03 d0 07 0a 00 05 00");
        row("the input index in byte 2", Logic, "42 / 42", -1, "0d 02 00 00 2a 00 | 0d 02 01 00 2a 00");
        row("one record", Server, "1 gps.tavrel.ru 21070 1", -1,
            (QByteArray::fromHex("10 01 00 00") + record("01", "gps.tavrel.ru", "4e 52 00 00 01")).toHex());
        row("enable masked, Cyrillic sent as 0", Server, "2 сервер 16909060 0", -1,
            (QByteArray::fromHex("10 01 00 00") + record("00", QByteArray(6, '\0'), "04 03 02 01 00"))
                .toHex());
        const QString otherSim = " / apn u pw 0 " + zeros;
        row("access of the second SIM, short texts zero-padded", Gsm, "x u pw 0 " + zeros + otherSim, 1,
            (QByteArray::fromHex("04 03 01 00") + field("apn") + field("u") + field("pw")).toHex());
        row("apn of exactly 32 characters fills the field", Gsm,
            QString(32, QLatin1Char('x')) + " u pw 0 " + zeros + otherSim, 0,
            (QByteArray::fromHex("04 03 00 00") + QByteArray(32, 'x') + field("u") + field("pw")).toHex());
        row("Cyrillic character is sent as 0", Gsm, "aпb u pw 0 " + zeros + otherSim, 0,
            (QByteArray::fromHex("04 03 00 00") + field(QByteArray("a\0b", 3)) + field("u") + field("pw"))
                .toHex());
        row("roaming sends the low word first and forbidden as one bit", Gsm,
            "a u p 1 18171615141312110807060504030201 / a u p 2 0000000000000000ffffffffffffffff", -1,
            (QByteArray::fromHex("04 03 00 00") + field("a") + field("u") + field("p")).toHex() + " | " +
                (QByteArray::fromHex("04 03 01 00") + field("a") + field("u") + field("p")).toHex() + " | " +
                (QByteArray::fromHex("04 04 00 00") + kRoaming1).toHex() + " | 04 04 01 00 00 00 " +
                QByteArray(16, 'f') + QByteArray(16, '0'));
    }

    void encode() {
        QFETCH(QString, key);
        QFETCH(QString, values);
        QFETCH(int, index);
        QFETCH(QString, expected);
        VantorConfiguration cfg;
        setFields(cfg, key, values);
        QCOMPARE(fieldsOf(cfg, key), values);
        const QVector<kd::SectionRequest> requests = kd::writeRequests(key, &cfg);
        QStringList sent, wanted;
        for (int i = 0; i < requests.size(); ++i) {
            if (index < 0 || i == index)
                sent << QString::fromLatin1(requests.at(i).payload.toHex(' '));
        }
        for (const QString &hex : expected.split(QLatin1Char('|')))
            wanted << QString::fromLatin1(QByteArray::fromHex(hex.toLatin1()).toHex(' '));
        QCOMPARE(sent.join(QLatin1String(" | ")), wanted.join(QLatin1String(" | ")));
    }

    // An element the section does not have encodes to nothing.
    void encode_outsideTheSectionGivesNothing() {
        QVERIFY(AgcConfiguration(3).encode(3).isEmpty());
        QVERIFY(LogicConfiguration(2).encode(2).isEmpty());
        QVERIFY(ServerConfiguration(1).encode(1).isEmpty());
        QVERIFY(GSMConfiguration(2).encodeAccess(2).isEmpty());
        QVERIFY(GSMConfiguration(2).encodeRoaming(2).isEmpty());
    }
    void everyFieldSurvivesARoundTrip_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("full");  // the whole record decoded and encoded again
        QTest::addColumn<QByteArray>("short"); // its first three bytes decoded and encoded again
        addRecord<DeviceStateRecord>("kind 10 device state");
        addRecord<ClockRecord>("kind 11 clock");
        addRecord<NavReceiverRecord>("kind 14 navigation receiver");
        addRecord<ServerStateRecord>("kind 15 server state");
        addRecord<NavSummaryRecord>("kind 16 navigation summary");
        addRecord<AnalogInputRecord>("kind 17 analog input");
        addRecord<LogicInputRecord>("kind 18 logic input");
        addRecord<FuelSensorsRecord>("kind 19 fuel sensors");
        addRecord<StateWordsRecord>("kind 21 state words");
        addRecord<SimStateRecord>("kind 23 SIM state");
        addRecord<GsmRegistrationRecord>("kind 24 GSM registration");
    }

    void everyFieldSurvivesARoundTrip() {
        QFETCH(QByteArray, bytes);
        // Every byte is mapped to a field: a field left out, overlapping or misplaced changes the bytes.
        QTEST(bytes, "full");
        // Missing bytes read as zero, and the record keeps its size.
        QTEST(bytes.left(3) + QByteArray(bytes.size() - 3, '\0'), "short");
    }

    void navReceiver_fieldsFromAHexVector() {
        // 23.11.26 14:05:09, quality 2, 3D; 55° 45.12345' N, 37° 37.00001' W; PDOP 1.50 HDOP 0.90 VDOP 1.20;
        // 9 of 14 satellites; 61.5 km/h; course 270.0; altitude -12.3 m; receiver powered, antenna ok
        const NavReceiverRecord r = NavReceiverRecord::fromBytes(
            QByteArray::fromHex("17 0b 1a 0e 05 09 02 03 37 00 25 01 59 da 44 00 21 75 38 00"
                                "96 00 5a 00 78 00 09 0e 67 02 8c 0a 85 ff ff ff 03 00"));
        const int south = r.latFlags & NavReceiverRecord::HemisphereBit;
        const int west = r.lonFlags & NavReceiverRecord::HemisphereBit;
        const QList<qint64> fields{
            r.day,        r.month,      r.year,       r.hours,         r.minutes,    r.seconds,
            r.fixQuality, r.latDegrees, r.latMinutes, south,           r.lonDegrees, r.lonMinutes,
            west,         r.pdop,       r.hdop,       r.vdop,          r.satellites, r.satellitesInView,
            r.speed,      r.course,     r.altitude,   r.receiverFlags, r.hasFix()};
        QCOMPARE(fields, QList<qint64>({23, 11,  26, 14,  5, 9,  2,   55,   4512345, 0, 37, 3700001,
                                        1,  150, 90, 120, 9, 14, 615, 2700, -123,    3, 1}));
    }

    void deviceState_temperaturesAreSigned() {
        DeviceStateRecord r;
        r.supplyVoltage = 12600;
        r.boardTemperature = -25;
        r.batteryTemperature = 41;
        const QByteArray b = r.toBytes();
        QCOMPARE(b.left(8).toHex(' '), QByteArray("38 31 00 00 e7 ff 29 00"));
        QCOMPARE(DeviceStateRecord::fromBytes(b).boardTemperature, qint16(-25));
    }

    // Each row: what a TelemetryText function made of the given codes, and what the window must show.
    void text_data() {
        namespace T = TelemetryText;
        QTest::addColumn<QString>("actual");
        QTest::addColumn<QString>("expected");
        auto row = [](const char *name, const QString &actual, const char *expected) {
            QTest::newRow(name) << actual << QString::fromUtf8(expected);
        };
        row("sim 0 ready", T::simState(0), "Готово");
        row("sim 6 puk2", T::simState(6), "Ожидание PUK2");
        row("sim 7 not ready", T::simState(7), "Сим не готова");
        row("sim 8 absent keeps its own spelling", T::simState(8), "Сим отсутсвует");
        row("sim 9 no text", T::simState(9), "");
        row("registration 0 none", T::registration(0), "Нет регистрации");
        row("registration 1 home", T::registration(1), "Домашняя сеть");
        row("registration 3 denied", T::registration(3), "Ошибка регистрации");
        row("registration 4 no text", T::registration(4), "");
        row("registration 5 roaming", T::registration(5), "Роуминг");
        row("slot absent, correct spelling", T::simSlot(0), "Сим отсутствует");
        row("slot active", T::simSlot(2), "Активна");
        row("slot unknown reads absent", T::simSlot(7), "Сим отсутствует");
        row("fix time padded", T::fixDateTime(3, 7, 9, 4, 5, 6), "03.07.09 04:05:06");
        row("north, padded degrees", T::coordinate(false, 5, 30.5), "05° 30.50000");
        row("south gets a minus", T::coordinate(true, 55, 45.1234), "-55° 45.12340");
        row("three-digit longitude", T::coordinate(false, 137, 0.0), "137° 0.00000");
        row("quality 2 differential", T::fixQuality(2), "Дифференциальный");
        row("quality 7 precise", T::fixQuality(7), "Прецизионный");
        row("2D button", T::fixButton(2, 4), "2D, 4 спутн.");
        row("mode 1 button: no fix", T::fixButton(1, 2), "Нет фиксации, 2 спутн.");
        row("mode 0 label: no navigation", T::fixLabel(0), "Нет навигации");
        row("dilution two decimals", T::dilution(0.8, 1.25, 12), "0.80 / 1.25 / 12.00");
        row("own protocol", T::serverProtocol(0), "TAVREL UNP");
        row("unknown protocol reads own", T::serverProtocol(7), "TAVREL UNP");
        row("server connecting", T::serverState(1), "Подключение");
        row("unknown state reads disconnected", T::serverState(9), "Отключен");
        const quint8 ip[4] = {127, 0, 0, 1};
        row("address first octet first", T::serverAddress(ip, 20100), "127.0.0.1:20100");
        row("input off ignores the value", T::inputMode(0, 17), "Отключен");
        row("input logic", T::inputMode(1, 1), "Логический, 1");
        row("input frequency", T::inputMode(2, 1500), "Частотомер, 1500");
        row("input uss counter", T::inputMode(3, 42), "Счетчик УСС, 42");
        row("input universal counter", T::inputMode(5, 99), "Унив. счетчик, 99");
        row("unknown input mode reads off", T::inputMode(6, 99), "Отключен");
        row("counter", T::counter(3, 10), "3/10");
        // The degree sign is followed by the Cyrillic capital Es.
        row("temperatures", T::temperatures(-5, 31), "-5 / 31\xC2\xB0\xD0\xA1");

        const auto shortRecord = kd::NavReceiverRecord::fromBytes(QByteArray::fromHex("0102"));
        row("short record: longitude is a dash", T::longitude(shortRecord), "-");
        row("short record: zero dilution", T::dilution(shortRecord), "0.00 / 0.00 / 0.00");
    }

    void text() {
        QFETCH(QString, actual);
        QFETCH(QString, expected);
        QCOMPARE(actual, expected);
    }
};

QTEST_GUILESS_MAIN(tst_Sections)
#include "tst_sections.moc"
