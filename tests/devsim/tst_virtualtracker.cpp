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
    void everySectionReadDecodes_data();
    void everySectionReadDecodes();
    void requestAnsweredWithStatus_data();
    void requestAnsweredWithStatus();
    void passwordGuardsEverythingButLogin();
    void blockedRefusesEverythingAndChangesNothing();
    void resetRestoresDefaultsWithStatus6();
    void outputsFollowSetOutputsAndSingleWrites();
    void telemetryOfEveryPolledKind_data();
    void telemetryOfEveryPolledKind();
    void stateRoundTripsEverything();
};

void tst_VirtualTracker::everySectionReadDecodes_data() {
    QTest::addColumn<QByteArray>("request");
    QTest::newRow("identity name") << hex("81020000");
    QTest::newRow("system") << hex("91010000");
    QTest::newRow("navigation parking") << hex("83030000");
    QTest::newRow("navigation motion") << hex("83020000");
    QTest::newRow("gsm access") << hex("84030000");
    QTest::newRow("gsm roaming") << hex("84040000");
    QTest::newRow("servers") << hex("90010000");
    QTest::newRow("analog") << hex("8c020000");
    QTest::newRow("logic") << hex("8d020000");
    QTest::newRow("fuel") << hex("88010000");
    QTest::newRow("outputs") << hex("8e010000");
}

void tst_VirtualTracker::everySectionReadDecodes() {
    QFETCH(QByteArray, request);
    VirtualTracker device;
    const Answer a = ask(device, 6, request);
    QCOMPARE(a.type, 6);
    QCOMPARE(a.payload.left(2), request.left(2)); // a data answer, not a status

    // What the configurator makes of it equals what the device holds.
    VantorConfiguration mine;
    const VantorConfiguration *theirs = device.configuration();
    const bool second = request.at(1) == 2;
    switch (quint8(request.at(0))) {
    case 0x81:
        mine.deviceInfo()->decode(a.payload);
        QCOMPARE(mine.deviceInfo()->name(), QStringLiteral("Vantor micro"));
        break;
    case 0x91:
        mine.system()->decode(a.payload);
        QCOMPARE(mine.system()->encode(), theirs->system()->encode());
        break;
    case 0x83:
        mine.navigation()->decode(a.payload);
        QCOMPARE(second ? mine.navigation()->encodeMotion() : mine.navigation()->encodeParking(),
                 second ? theirs->navigation()->encodeMotion() : theirs->navigation()->encodeParking());
        break;
    case 0x84:
        mine.gsm()->decode(a.payload);
        for (int sim = 0; sim < 2; ++sim)
            QCOMPARE(request.at(1) == 3 ? mine.gsm()->encodeAccess(sim) : mine.gsm()->encodeRoaming(sim),
                     request.at(1) == 3 ? theirs->gsm()->encodeAccess(sim)
                                        : theirs->gsm()->encodeRoaming(sim));
        break;
    case 0x90:
        mine.servers()->decode(a.payload);
        QCOMPARE(mine.servers()->encode(0), theirs->servers()->encode(0));
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
        QCOMPARE(mine.outputs()->value()->states(), (QVector<quint8>{0, 0}));
        break;
    }
}

void tst_VirtualTracker::requestAnsweredWithStatus_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<int>("answerType");
    QTest::addColumn<int>("status");
    QTest::newRow("write of server 5") << 6 << hex("100105000000") << 6 << int(VirtualTracker::ExecuteError);
    QTest::newRow("write of output 7") << 6 << hex("0e0107000100") << 6 << int(VirtualTracker::ExecuteError);
    QTest::newRow("identity part 5") << 6 << hex("81050000") << 6 << int(VirtualTracker::NotSupported);
    QTest::newRow("read of code 9") << 6 << hex("89010000") << 6 << int(VirtualTracker::NotSupported);
    QTest::newRow("write of code 9") << 6 << hex("09010000") << 6 << int(VirtualTracker::Done);
    QTest::newRow("unknown section") << 6 << hex("95010000") << 6 << int(VirtualTracker::NotSupported);
    QTest::newRow("unknown command") << 7 << hex("33010000") << 7 << int(VirtualTracker::NotSupported);
    QTest::newRow("telemetry 13") << 7 << hex("820d0000") << 7 << -1;
    QTest::newRow("telemetry 5") << 7 << hex("82050000") << 7 << int(VirtualTracker::NotSupported);
    QTest::newRow("packet type 9") << 9 << hex("81010000") << 6 << int(VirtualTracker::UnknownPacketType);
    QTest::newRow("clear memory") << 7 << hex("010300000100") << 7 << int(VirtualTracker::Done);
    QTest::newRow("reset kind 7") << 7 << hex("010300000700") << 7 << int(VirtualTracker::NotSupported);
}

void tst_VirtualTracker::requestAnsweredWithStatus() {
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
    const Answer telemetry = ask(device, 7, hex("820a0000"));
    QCOMPARE(telemetry.type, 7);
    QCOMPARE(telemetry.status(), int(VirtualTracker::NeedLogin));

    const Answer wrong = ask(device, 7, hex("01010000d3040000")); // 1235
    QCOMPARE(wrong.payload.left(4), hex("01810000"));
    QCOMPARE(wrong.status(), int(VirtualTracker::WrongPassword));
    QCOMPARE(ask(device, 6, hex("91010000")).status(), int(VirtualTracker::NeedLogin));

    QCOMPARE(ask(device, 7, hex("01010000d2040000")).payload, hex("018100000100")); // 1234
    QVERIFY(device.loggedIn());
    QCOMPARE(quint8(ask(device, 6, hex("91010000")).payload.at(0)), quint8(0x91));

    // A new password is stored and asked for after the next log-out.
    QSignalSpy changed(&device, &VirtualTracker::stateChanged);
    QCOMPARE(ask(device, 6, hex("0201000078563412")).status(), int(VirtualTracker::Done));
    QCOMPARE(device.password(), std::optional<quint32>(0x12345678));
    QCOMPARE(changed.count(), 1);
    device.logout();
    QCOMPARE(ask(device, 6, hex("91010000")).status(), int(VirtualTracker::NeedLogin));
    QCOMPARE(ask(device, 7, hex("0101000078563412")).status(), int(VirtualTracker::Done));
}

void tst_VirtualTracker::blockedRefusesEverythingAndChangesNothing() {
    VirtualTracker device;
    device.setBlocked(true);
    QCOMPARE(ask(device, 6, hex("81010000")).status(), int(VirtualTracker::Blocked));
    QCOMPARE(ask(device, 7, hex("0101000000000000")).status(), int(VirtualTracker::Blocked)); // login
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

void tst_VirtualTracker::outputsFollowSetOutputsAndSingleWrites() {
    VirtualTracker device;
    QCOMPARE(ask(device, 7, hex("0209000001010101")).status(), int(VirtualTracker::Done));
    QCOMPARE(device.configuration()->outputs()->value()->states(), (QVector<quint8>{1, 1})); // two outputs
    QCOMPARE(ask(device, 6, hex("0e0101000000")).status(), int(VirtualTracker::Done));
    QCOMPARE(device.configuration()->outputs()->value()->states(), (QVector<quint8>{1, 0}));

    // The output parameters travel as a command.
    QCOMPARE(ask(device, 7, hex("0e02000002050609")).status(), int(VirtualTracker::Done));
    const OutputConfigurationItem *out = device.configuration()->outputs()->value();
    QCOMPARE(QVector<int>({out->outNum(), out->highCondition(), out->lowCondition(), out->replayCounter()}),
             QVector<int>({2, 5, 6, 9}));
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
    QCOMPARE(a.payload.left(2), request.left(2));
    kd::ControlInfoConfiguration info;
    QVERIFY(info.decode(a.payload)); // announced by the configurator
    for (int i = 0; i < kd::ControlInfoConfiguration::recordsKept(kind); ++i)
        QVERIFY2(info.value()->received(kind, i), qPrintable(QStringLiteral("record %1").arg(i)));
}

void tst_VirtualTracker::stateRoundTripsEverything() {
    VirtualTracker a;
    VantorConfiguration *cfg = a.configuration();
    cfg->deviceInfo()->setIMEI(QStringLiteral("111222333444555"));
    cfg->navigation()->value()->setFaultSpeed(77);
    cfg->system()->value()->setParkingMin(33);
    cfg->gsm()->element(0)->setTimetableLow(0x8000000000000001ull);
    cfg->gsm()->element(0)->setTimetableHi(0xFFFFFFFFFFFFFFFFull);
    cfg->gsm()->element(1)->setForbidden(0);
    ask(a, 7, hex("0209000001000000"));
    ask(a, 6, hex("020100000f000000")); // password 15

    VirtualTracker b;
    b.loadState(a.saveState());
    VantorConfiguration *back = b.configuration();
    QCOMPARE(back->deviceInfo()->IMEI(), QStringLiteral("111222333444555"));
    QCOMPARE(int(back->navigation()->value()->faultSpeed()), 77);
    for (int sim = 0; sim < 2; ++sim) {
        QCOMPARE(back->gsm()->encodeAccess(sim), cfg->gsm()->encodeAccess(sim));
        QCOMPARE(back->gsm()->encodeRoaming(sim), cfg->gsm()->encodeRoaming(sim));
    }
    QCOMPARE(back->outputs()->value()->states(), (QVector<quint8>{1, 0}));
    QCOMPARE(b.password(), std::optional<quint32>(15));

    // A plain configuration file loads as a state too.
    QJsonObject root;
    cfg->write(root);
    VirtualTracker c;
    c.loadState(root);
    QCOMPARE(int(c.configuration()->system()->value()->parkingMin()), 33);
    QCOMPARE(c.configuration()->outputs()->value()->states().size(), 2);
    QVERIFY(!c.password());
}

QTEST_GUILESS_MAIN(tst_VirtualTracker)
#include "tst_virtualtracker.moc"
