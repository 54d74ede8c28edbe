#include "VirtualTracker.h"

#include <Devices/AgcConfiguration.h>
#include <Devices/ByteOrder.h>
#include <Devices/ControlInfoConfiguration.h>
#include <Devices/DeviceInfoConfiguration.h>
#include <Devices/FuelConfiguration.h>
#include <Devices/GSMConfiguration.h>
#include <Devices/LogicConfiguration.h>
#include <Devices/NavigationConfiguration.h>
#include <Devices/OutputConfiguration.h>
#include <Devices/ServerConfiguration.h>
#include <Devices/SystemConfiguration.h>
#include <Devices/VantorConfiguration.h>
#include <protocol/Frame.h>

#include <QtTest>

using proto::Frame;

namespace {

struct Answer {
    int type = -1;
    QByteArray payload;
    int status() const { return (kd::le::u8(payload, 1) & 0x80) ? kd::le::u16(payload, 4) : -1; }
};

Answer ask(VirtualTracker &t, quint8 type, const QByteArray &payload) {
    const QList<QByteArray> frames = t.handle(type, payload);
    if (frames.size() != 1)
        return Answer();
    const Frame::Received r = Frame::check(frames.first());
    if (r.kind != Frame::ChunkKind::Accepted || r.payload.size() + Frame::Overhead != frames.first().size())
        return Answer();
    return Answer{r.type, r.payload};
}

QByteArray hex(const char *text) {
    return QByteArray::fromHex(text);
}

} // namespace

class tst_VirtualTracker : public QObject {
    Q_OBJECT
private slots:
    void init();
    void identityAnswersCarryTheDefaults();
    void everySectionReadDecodes_data();
    void everySectionReadDecodes();
    void writeIsStoredAndReadBack();
    void writeOfMissingElementIsAnExecutionError();
    void unknownCodesAreNotSupported_data();
    void unknownCodesAreNotSupported();
    void passwordGuardsEverythingButLogin();
    void passwordChangeIsStored();
    void blockedRefusesEverything();
    void resetRestoresDefaultsWithStatus6();
    void clearMemoryAnswersDone();
    void outputsFollowSetOutputsAndSingleWrites();
    void telemetryOfEveryPolledKind_data();
    void telemetryOfEveryPolledKind();
    void telemetryChangesWithTime();
    void firmwareUpdateAnswersAndAnnounces();
    void stateRoundTripsEverything();
    void plainConfigurationFileLoadsAsState();

private:
    qint64 m_now = 0;
};

void tst_VirtualTracker::init() {
    m_now = 0;
}

void tst_VirtualTracker::identityAnswersCarryTheDefaults() {
    VirtualTracker t;
    kd::DeviceInfoConfiguration info;
    const Answer a1 = ask(t, 6, hex("81010000"));
    const Answer a2 = ask(t, 6, hex("81020000"));
    QCOMPARE(a1.type, 6);
    QCOMPARE(a2.type, 6);
    info.decode(a1.payload);
    info.decode(a2.payload);
    QCOMPARE(info.name(), QStringLiteral("Vantor micro"));
    QCOMPARE(info.IMEI(), QStringLiteral("863071014478127"));
    QCOMPARE(info.DeviceGroup(), 1u);
    QCOMPARE(info.DeviceType(), 3u);
    QCOMPARE(info.DeviceMod(), 2u);
    QCOMPARE(info.SerialNumber(), 100234u);
    QCOMPARE(info.Version(), 918u);
    QCOMPARE(ask(t, 6, hex("81050000")).status(), int(VirtualTracker::NotSupported));
}

void tst_VirtualTracker::everySectionReadDecodes_data() {
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<int>("answerCode");
    QTest::newRow("system") << hex("91010000") << 0x91;
    QTest::newRow("navigation parking") << hex("83030000") << 0x83;
    QTest::newRow("navigation motion") << hex("83020000") << 0x83;
    QTest::newRow("gsm access") << hex("84030000") << 0x84;
    QTest::newRow("gsm roaming") << hex("84040000") << 0x84;
    QTest::newRow("servers") << hex("90010000") << 0x90;
    QTest::newRow("analog") << hex("8c020000") << 0x8C;
    QTest::newRow("logic") << hex("8d020000") << 0x8D;
    QTest::newRow("fuel") << hex("88010000") << 0x88;
    QTest::newRow("outputs") << hex("8e010000") << 0x8E;
}

void tst_VirtualTracker::everySectionReadDecodes() {
    QFETCH(QByteArray, request);
    QFETCH(int, answerCode);
    VirtualTracker device;
    const Answer a = ask(device, 6, request);
    QCOMPARE(a.type, 6);
    QCOMPARE(quint8(a.payload.at(0)), quint8(answerCode));
    QCOMPARE(a.payload.at(1), request.at(1)); // a data answer, not a status

    // What the configurator makes of it equals what the device holds.
    VantorConfiguration mine;
    VirtualTracker reference;
    VantorConfiguration *theirs = reference.configuration();
    switch (answerCode) {
    case 0x91:
        mine.system()->decode(a.payload);
        QCOMPARE(mine.system()->encode(), theirs->system()->encode());
        break;
    case 0x83:
        mine.navigation()->decode(a.payload);
        if (request.at(1) == 2)
            QCOMPARE(mine.navigation()->encodeMotion(), theirs->navigation()->encodeMotion());
        else
            QCOMPARE(mine.navigation()->encodeParking(), theirs->navigation()->encodeParking());
        break;
    case 0x84:
        mine.gsm()->decode(a.payload);
        for (int sim = 0; sim < 2; ++sim) {
            if (request.at(1) == 3)
                QCOMPARE(mine.gsm()->encodeAccess(sim), theirs->gsm()->encodeAccess(sim));
            else
                QCOMPARE(mine.gsm()->encodeRoaming(sim), theirs->gsm()->encodeRoaming(sim));
        }
        break;
    case 0x90:
        mine.servers()->decode(a.payload);
        QCOMPARE(mine.servers()->value()->server(), QStringLiteral("gps.tavrel.ru"));
        QCOMPARE(mine.servers()->value()->port(), 20629u);
        break;
    case 0x8C:
        mine.agc()->decode(a.payload);
        for (int ch = 0; ch < 3; ++ch)
            QCOMPARE(mine.agc()->encode(ch), theirs->agc()->encode(ch));
        break;
    case 0x8D:
        mine.logic()->decode(a.payload);
        for (int in = 0; in < 2; ++in)
            QCOMPARE(mine.logic()->encode(in), theirs->logic()->encode(in));
        break;
    case 0x88:
        mine.fuel()->decode(a.payload);
        QCOMPARE(mine.fuel()->encode(), theirs->fuel()->encode());
        break;
    case 0x8E:
        mine.outputs()->decode(a.payload);
        QCOMPARE(int(mine.outputs()->value()->numberOfOutputs()), 2);
        QCOMPARE(mine.outputs()->value()->states(), (QVector<quint8>{0, 0}));
        break;
    }
}

void tst_VirtualTracker::writeIsStoredAndReadBack() {
    VirtualTracker device;
    QSignalSpy changed(&device, &VirtualTracker::stateChanged);
    VantorConfiguration cfg;
    cfg.system()->value()->setParkingMin(42);
    cfg.system()->value()->setGsens(12);
    GSMConfigurationItem *sim1 = cfg.gsm()->element(1);
    sim1->setApn(QStringLiteral("apn.example"));
    sim1->setTimetableLow(0x0123456789ABCDEFull);
    sim1->setTimetableHi(0xFEDCBA9876543210ull);
    sim1->setForbidden(1);
    cfg.servers()->value()->setServer(QStringLiteral("10.0.0.7"));
    cfg.servers()->value()->setPort(4444);

    const QList<QByteArray> writes = {cfg.system()->encode(), cfg.gsm()->encodeAccess(1),
                                      cfg.gsm()->encodeRoaming(1), cfg.servers()->encode(0)};
    for (const QByteArray &w : writes) {
        const Answer a = ask(device, 6, w);
        QCOMPARE(a.type, 6);
        QCOMPARE(a.payload.left(4), QByteArray(w.left(4)).replace(1, 1, QByteArray(1, char(w.at(1) | 0x80))));
        QCOMPARE(a.status(), int(VirtualTracker::Done));
    }
    QCOMPARE(changed.count(), writes.size());

    VantorConfiguration back;
    back.system()->decode(ask(device, 6, hex("91010000")).payload);
    back.gsm()->decode(ask(device, 6, hex("84030000")).payload);
    back.gsm()->decode(ask(device, 6, hex("84040000")).payload);
    back.servers()->decode(ask(device, 6, hex("90010000")).payload);
    QCOMPARE(back.system()->encode(), cfg.system()->encode());
    QCOMPARE(back.gsm()->encodeAccess(1), cfg.gsm()->encodeAccess(1));
    QCOMPARE(back.gsm()->encodeRoaming(1), cfg.gsm()->encodeRoaming(1));
    QCOMPARE(back.gsm()->element(0)->apn(), QStringLiteral("internet.mts.ru")); // the other SIM untouched
    QCOMPARE(back.servers()->encode(0), cfg.servers()->encode(0));
}

void tst_VirtualTracker::writeOfMissingElementIsAnExecutionError() {
    VirtualTracker device;
    QCOMPARE(ask(device, 6, hex("100105000000")).status(), int(VirtualTracker::ExecuteError));
    QCOMPARE(ask(device, 6, hex("0e0107000100")).status(), int(VirtualTracker::ExecuteError)); // output 7
}

void tst_VirtualTracker::unknownCodesAreNotSupported_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<int>("answerType");
    QTest::addColumn<int>("status");
    QTest::newRow("read of code 9") << 6 << hex("89010000") << 6 << int(VirtualTracker::NotSupported);
    QTest::newRow("write of code 9") << 6 << hex("09010000") << 6 << int(VirtualTracker::Done);
    QTest::newRow("unknown section") << 6 << hex("95010000") << 6 << int(VirtualTracker::NotSupported);
    QTest::newRow("unknown command") << 7 << hex("33010000") << 7 << int(VirtualTracker::NotSupported);
    QTest::newRow("telemetry 13") << 7 << hex("820d0000") << 7 << -1;
    QTest::newRow("telemetry 5") << 7 << hex("82050000") << 7 << int(VirtualTracker::NotSupported);
    QTest::newRow("packet type 9") << 9 << hex("81010000") << 6 << int(VirtualTracker::UnknownPacketType);
}

void tst_VirtualTracker::unknownCodesAreNotSupported() {
    QFETCH(int, type);
    QFETCH(QByteArray, request);
    QFETCH(int, answerType);
    QFETCH(int, status);
    VirtualTracker device;
    const Answer a = ask(device, quint8(type), request);
    QCOMPARE(a.type, answerType);
    QCOMPARE(a.status(), status);
}

void tst_VirtualTracker::passwordGuardsEverythingButLogin() {
    VirtualTracker device;
    device.setPassword(1234u);
    QCOMPARE(ask(device, 6, hex("81010000")).status(), int(VirtualTracker::NeedLogin));
    QCOMPARE(ask(device, 7, hex("820a0000")).status(), int(VirtualTracker::NeedLogin));
    QCOMPARE(ask(device, 7, hex("820a0000")).type, 7);

    const Answer wrong = ask(device, 7, hex("01010000d3040000")); // 1235
    QCOMPARE(wrong.type, 7);
    QCOMPARE(wrong.payload.left(4), hex("01810000"));
    QCOMPARE(wrong.status(), int(VirtualTracker::WrongPassword));
    QVERIFY(!device.loggedIn());
    QCOMPARE(ask(device, 6, hex("91010000")).status(), int(VirtualTracker::NeedLogin));

    const Answer right = ask(device, 7, hex("01010000d2040000")); // 1234
    QCOMPARE(right.payload, hex("018100000100"));
    QVERIFY(device.loggedIn());
    QCOMPARE(quint8(ask(device, 6, hex("91010000")).payload.at(0)), quint8(0x91));

    device.logout();
    QCOMPARE(ask(device, 6, hex("91010000")).status(), int(VirtualTracker::NeedLogin));
}

void tst_VirtualTracker::passwordChangeIsStored() {
    VirtualTracker device;
    QSignalSpy changed(&device, &VirtualTracker::stateChanged);
    QCOMPARE(ask(device, 6, hex("0201000078563412")).status(), int(VirtualTracker::Done));
    QCOMPARE(device.password(), std::optional<quint32>(0x12345678));
    QCOMPARE(changed.count(), 1);
    device.logout();
    QCOMPARE(ask(device, 6, hex("81010000")).status(), int(VirtualTracker::NeedLogin));
    QCOMPARE(ask(device, 7, hex("0101000078563412")).status(), int(VirtualTracker::Done));
}

void tst_VirtualTracker::blockedRefusesEverything() {
    VirtualTracker device;
    device.setBlocked(true);
    QCOMPARE(ask(device, 6, hex("81010000")).status(), int(VirtualTracker::Blocked));
    QCOMPARE(ask(device, 7, hex("0101000000000000")).status(), int(VirtualTracker::Blocked));
    QCOMPARE(ask(device, 7, hex("820b0000")).status(), int(VirtualTracker::Blocked));
    QCOMPARE(ask(device, 6, hex("1101000001020300")).status(), int(VirtualTracker::Blocked));
    QCOMPARE(device.configuration()->system()->value()->parkingMin(), quint8(5));
}

void tst_VirtualTracker::resetRestoresDefaultsWithStatus6() {
    VirtualTracker device;
    QCOMPARE(ask(device, 6, hex("1101000063000000")).status(), int(VirtualTracker::Done));
    QCOMPARE(device.configuration()->system()->value()->parkingMin(), quint8(99));
    QSignalSpy changed(&device, &VirtualTracker::stateChanged);
    const Answer a = ask(device, 7, hex("010300000000"));
    QCOMPARE(a.type, 7);
    QCOMPARE(a.payload, hex("018300000600"));
    QCOMPARE(device.configuration()->system()->value()->parkingMin(), quint8(5));
    QCOMPARE(changed.count(), 1);
}

void tst_VirtualTracker::clearMemoryAnswersDone() {
    VirtualTracker device;
    device.setClock([this] { return m_now; });
    m_now = 200000;
    QVERIFY(device.modelNow().deviceState().memoryUsed > 0);
    QCOMPARE(ask(device, 7, hex("010300000100")).payload, hex("018300000100"));
    QCOMPARE(device.modelNow().deviceState().memoryUsed, 0u);
    QCOMPARE(ask(device, 7, hex("010300000700")).status(), int(VirtualTracker::NotSupported));
}

void tst_VirtualTracker::outputsFollowSetOutputsAndSingleWrites() {
    VirtualTracker device;
    QCOMPARE(ask(device, 7, hex("0209000001010101")).status(), int(VirtualTracker::Done));
    VantorConfiguration cfg;
    cfg.outputs()->decode(ask(device, 6, hex("8e010000")).payload);
    QCOMPARE(cfg.outputs()->value()->states(), (QVector<quint8>{1, 1})); // the device has two outputs
    QCOMPARE(ask(device, 6, hex("0e0101000000")).status(), int(VirtualTracker::Done));
    cfg.outputs()->decode(ask(device, 6, hex("8e010000")).payload);
    QCOMPARE(cfg.outputs()->value()->states(), (QVector<quint8>{1, 0}));

    // The output parameters travel as a command.
    QCOMPARE(ask(device, 7, hex("0e02000002050609")).status(), int(VirtualTracker::Done));
    const OutputConfigurationItem *out = device.configuration()->outputs()->value();
    QCOMPARE(int(out->outNum()), 2);
    QCOMPARE(int(out->highCondition()), 5);
    QCOMPARE(int(out->lowCondition()), 6);
    QCOMPARE(int(out->replayCounter()), 9);
}

void tst_VirtualTracker::telemetryOfEveryPolledKind_data() {
    QTest::addColumn<int>("kind");
    for (int kind :
         {0x09, 0x0A, 0x0B, 0x0C, 0x0E, 0x0F, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18})
        QTest::addRow("kind %d", kind) << kind;
}

void tst_VirtualTracker::telemetryOfEveryPolledKind() {
    QFETCH(int, kind);
    VirtualTracker device;
    device.setClock([] { return 30000; });
    QByteArray request = hex("82000000");
    request[1] = char(kind);
    const Answer a = ask(device, 7, request);
    QCOMPARE(a.type, 7);
    QCOMPARE(quint8(a.payload.at(0)), quint8(0x82));
    QCOMPARE(int(a.payload.at(1)), kind);
    kd::ControlInfoConfiguration info;
    QVERIFY(info.decode(a.payload)); // announced by the configurator
    const int kept = kd::ControlInfoConfiguration::recordsKept(kind);
    for (int i = 0; i < kept; ++i)
        QVERIFY2(info.value()->received(kind, i), qPrintable(QStringLiteral("record %1").arg(i)));
}

void tst_VirtualTracker::telemetryChangesWithTime() {
    VirtualTracker device;
    device.setClock([this] { return m_now; });
    m_now = 5000;
    const QByteArray searching = ask(device, 7, hex("820e0000")).payload;
    m_now = 30000;
    const QByteArray fixed = ask(device, 7, hex("820e0000")).payload;
    QCOMPARE(int(kd::NavReceiverRecord::fromBytes(searching.mid(4)).fixMode), 0);
    QCOMPARE(int(kd::NavReceiverRecord::fromBytes(fixed.mid(4)).fixMode), 3);
    m_now = 31000;
    const quint32 t1 = kd::ClockRecord::fromBytes(ask(device, 7, hex("820b0000")).payload.mid(4)).unixTime;
    m_now = 41000;
    const quint32 t2 = kd::ClockRecord::fromBytes(ask(device, 7, hex("820b0000")).payload.mid(4)).unixTime;
    QCOMPARE(t2 - t1, 10u);
}

void tst_VirtualTracker::firmwareUpdateAnswersAndAnnounces() {
    VirtualTracker device;
    QSignalSpy requested(&device, &VirtualTracker::firmwareUpdateRequested);
    const Answer a = ask(device, 7, hex("01020000"));
    QCOMPARE(a.type, 7);
    QCOMPARE(a.payload.left(2), hex("0102"));
    QCOMPARE(requested.count(), 1);
}

void tst_VirtualTracker::stateRoundTripsEverything() {
    VirtualTracker a;
    VantorConfiguration *cfg = a.configuration();
    cfg->deviceInfo()->setIMEI(QStringLiteral("111222333444555"));
    cfg->navigation()->value()->setFaultSpeed(77);
    cfg->gsm()->element(0)->setTimetableLow(0x8000000000000001ull);
    cfg->gsm()->element(0)->setTimetableHi(0xFFFFFFFFFFFFFFFFull);
    cfg->gsm()->element(1)->setForbidden(0);
    ask(a, 7, hex("0209000001000000"));
    ask(a, 6, hex("020100000f000000")); // password 15

    VirtualTracker b;
    b.loadState(a.saveState());
    VantorConfiguration *back = b.configuration();
    QCOMPARE(back->deviceInfo()->IMEI(), QStringLiteral("111222333444555"));
    QCOMPARE(back->deviceInfo()->name(), QStringLiteral("Vantor micro"));
    QCOMPARE(int(back->navigation()->value()->faultSpeed()), 77);
    for (int sim = 0; sim < 2; ++sim) {
        QCOMPARE(back->gsm()->encodeAccess(sim), cfg->gsm()->encodeAccess(sim));
        QCOMPARE(back->gsm()->encodeRoaming(sim), cfg->gsm()->encodeRoaming(sim));
    }
    QCOMPARE(back->outputs()->value()->states(), (QVector<quint8>{1, 0}));
    QCOMPARE(back->system()->encode(), cfg->system()->encode());
    QCOMPARE(back->fuel()->encode(), cfg->fuel()->encode());
    for (int ch = 0; ch < 3; ++ch)
        QCOMPARE(back->agc()->encode(ch), cfg->agc()->encode(ch));
    QCOMPARE(back->servers()->encode(0), cfg->servers()->encode(0));
    QCOMPARE(b.password(), std::optional<quint32>(15));
}

void tst_VirtualTracker::plainConfigurationFileLoadsAsState() {
    VantorConfiguration file;
    file.system()->value()->setParkingMin(33);
    file.deviceInfo()->setName(QStringLiteral("Другой прибор"));
    QJsonObject root;
    file.write(root);
    VirtualTracker device;
    device.loadState(root);
    QCOMPARE(int(device.configuration()->system()->value()->parkingMin()), 33);
    QCOMPARE(device.configuration()->outputs()->value()->states().size(), 2);
    QVERIFY(!device.password());
}

QTEST_GUILESS_MAIN(tst_VirtualTracker)
#include "tst_virtualtracker.moc"
