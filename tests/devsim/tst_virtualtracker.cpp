#include "tools/devsim/VirtualTracker.h"

#include "Devices/ByteOrder.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Frame.h"
#include "protocol/UNPParcer.h"

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
    void everySectionReadDecodesToTheDevicesValues();
    void requestAnsweredWithStatus_data();
    void requestAnsweredWithStatus();
    void passwordGuardsTelemetryAndItsChangeIsStored();
    void outputsFollowSetOutputsAndSingleWrites();
    void telemetryOfEveryPolledKindDecodes();
    void stateRoundTripsEverything();
};

void tst_VirtualTracker::everySectionReadDecodesToTheDevicesValues() {
    VirtualTracker device;
    device.configuration()->system()->value()->setParkingMin(42); // not what a fresh configuration holds
    VantorConfiguration mine;
    UNPParcer parser(&mine);
    for (const char *request : {"81010000", "81020000", "91010000", "83020000", "83030000", "84030000",
                                "84040000", "90010000", "8c020000", "8d020000", "88010000", "8e010000"}) {
        const Answer a = ask(device, 6, hex(request));
        QCOMPARE(a.type, 6);
        QCOMPARE(a.payload.left(2), hex(request).left(2)); // a data answer, not a status
        parser.parse(6, a.payload);
    }
    QJsonObject ours, theirs;
    mine.write(ours);
    device.configuration()->write(theirs);
    theirs.remove("out_parameters"); // only ever written, as a command
    for (const QString &key : theirs.keys())
        QVERIFY2(ours.value(key) == theirs.value(key), qPrintable(key));
}

void tst_VirtualTracker::requestAnsweredWithStatus_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<int>("answerType");
    QTest::addColumn<int>("status");
    QTest::newRow("write of server 5") << 6 << hex("100105000000") << 6 << int(UNPParcer::ExecutionError);
    QTest::newRow("write of output 7") << 6 << hex("0e0107000100") << 6 << int(UNPParcer::ExecutionError);
    QTest::newRow("identity part 5") << 6 << hex("81050000") << 6 << int(UNPParcer::NotSupported);
    QTest::newRow("read of code 9") << 6 << hex("89010000") << 6 << int(UNPParcer::NotSupported);
    QTest::newRow("write of code 9") << 6 << hex("09010000") << 6 << int(UNPParcer::Executed);
    QTest::newRow("unknown section") << 6 << hex("95010000") << 6 << int(UNPParcer::NotSupported);
    QTest::newRow("unknown command") << 7 << hex("33010000") << 7 << int(UNPParcer::NotSupported);
    QTest::newRow("telemetry 13") << 7 << hex("820d0000") << 7 << -1;
    QTest::newRow("telemetry 5") << 7 << hex("82050000") << 7 << int(UNPParcer::NotSupported);
    QTest::newRow("packet type 9") << 9 << hex("81010000") << 6 << int(UNPParcer::UnknownPacketType);
    QTest::newRow("clear memory") << 7 << hex("010300000100") << 7 << int(UNPParcer::Executed);
    QTest::newRow("reset kind 7") << 7 << hex("010300000700") << 7 << int(UNPParcer::NotSupported);
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

void tst_VirtualTracker::passwordGuardsTelemetryAndItsChangeIsStored() {
    VirtualTracker device;
    device.setPassword(1234u);
    const Answer telemetry = ask(device, 7, hex("820a0000"));
    QCOMPARE(telemetry.type, 7);
    QCOMPARE(telemetry.status(), int(UNPParcer::AuthorisationNeeded));
    QCOMPARE(ask(device, 7, hex("01010000d2040000")).payload, hex("018100000100")); // 1234
    QSignalSpy changed(&device, &VirtualTracker::stateChanged);
    QCOMPARE(ask(device, 6, hex("0201000078563412")).status(), int(UNPParcer::Executed));
    QCOMPARE(device.password(), std::optional<quint32>(0x12345678));
    QCOMPARE(changed.count(), 1);
    device.logout();
    QCOMPARE(ask(device, 6, hex("91010000")).status(), int(UNPParcer::AuthorisationNeeded));
    QCOMPARE(ask(device, 7, hex("0101000078563412")).status(), int(UNPParcer::Executed));
}

void tst_VirtualTracker::outputsFollowSetOutputsAndSingleWrites() {
    VirtualTracker device;
    QCOMPARE(ask(device, 7, hex("0209000001010101")).status(), int(UNPParcer::Executed));
    QCOMPARE(device.configuration()->outputs()->value()->states(), (QVector<quint8>{1, 1})); // two outputs
    QCOMPARE(ask(device, 6, hex("0e0101000000")).status(), int(UNPParcer::Executed));
    QCOMPARE(device.configuration()->outputs()->value()->states(), (QVector<quint8>{1, 0}));

    // The output parameters travel as a command.
    QCOMPARE(ask(device, 7, hex("0e02000002050609")).status(), int(UNPParcer::Executed));
    const OutputConfigurationItem *out = device.configuration()->outputs()->value();
    QCOMPARE(QVector<int>({out->outNum(), out->highCondition(), out->lowCondition(), out->replayCounter()}),
             QVector<int>({2, 5, 6, 9}));
}

void tst_VirtualTracker::telemetryOfEveryPolledKindDecodes() {
    VirtualTracker device;
    device.setClock([] { return 30000; });
    for (int kind :
         {0x09, 0x0A, 0x0B, 0x0C, 0x0E, 0x0F, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18}) {
        const QByteArray request = hex("82000000").replace(1, 1, QByteArray(1, char(kind)));
        const Answer a = ask(device, 7, request);
        QCOMPARE(a.type, 7);
        QCOMPARE(a.payload.left(2), request.left(2));
        kd::ControlInfoConfiguration info;
        QVERIFY2(info.decode(a.payload), qPrintable(QString::number(kind))); // announced by the configurator
        for (int i = 0; i < kd::ControlInfoConfiguration::recordsKept(kind); ++i)
            QVERIFY2(info.value()->received(kind, i),
                     qPrintable(QStringLiteral("kind %1 record %2").arg(kind).arg(i)));
    }
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
    QCOMPARE(b.saveState(), a.saveState());
    // Equal states could both have lost the low bits of a 64-bit word: those are checked as numbers.
    QCOMPARE(b.configuration()->gsm()->element(0)->timetableLow(), 0x8000000000000001ull);
    QCOMPARE(b.configuration()->gsm()->element(0)->timetableHi(), 0xFFFFFFFFFFFFFFFFull);
    QCOMPARE(b.configuration()->outputs()->value()->states(), (QVector<quint8>{1, 0}));
    QCOMPARE(b.password(), std::optional<quint32>(15));

    // A plain configuration file loads as a state too.
    QJsonObject root;
    cfg->write(root);
    VirtualTracker c;
    c.loadState(root);
    QCOMPARE(int(c.configuration()->system()->value()->parkingMin()), 33);
    QCOMPARE(c.configuration()->outputs()->value()->states().size(), 2);
    QVERIFY(!c.password());
    // A reset asks for a power cycle and brings the factory values back.
    QCOMPARE(ask(c, 7, hex("010300000000")).status(), int(UNPParcer::PowerCycleNeeded));
    QCOMPARE(int(c.configuration()->system()->value()->parkingMin()), 5);
}

QTEST_GUILESS_MAIN(tst_VirtualTracker)
#include "tst_virtualtracker.moc"
