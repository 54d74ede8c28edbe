// The virtual tracker: its parts without a process (its command line, its answers and state, the simulated
// vehicle, and the faults and line timing it puts on the link), then the real program over a
// pseudo-terminal, talking to its boot loader through the protocol library.
#include "Devices/ByteOrder.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/Frame.h"
#include "protocol/SerialConnection.h"
#include "protocol/UNPParcer.h"
#include "tests/support/DeviceProbe.h"
#include "tests/support/DevsimProcess.h"
#include "tools/devsim/DevsimOptions.h"
#include "tools/devsim/FaultInjector.h"
#include "tools/devsim/InboundLine.h"
#include "tools/devsim/TrackerModel.h"
#include "tools/devsim/VirtualTracker.h"
#include "update/UpdateChannel.h"

#include <QtTest>

using proto::Frame;
using namespace kd;

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

QByteArray answer(int n) {
    return QByteArray(12, char(n));
}

QByteArrayList written(const QSignalSpy &spy) {
    QByteArrayList all;
    for (const QList<QVariant> &w : spy)
        all.append(w.at(0).toByteArray());
    return all;
}

// Bytes numbered across all writes, so that order and loss show in what arrives.
QByteArray numbered(int from, int count) {
    QByteArray bytes(count, '\0');
    for (int i = 0; i < count; ++i)
        bytes[i] = char(from + i);
    return bytes;
}
} // namespace

class tst_Devsim : public QObject {
    Q_OBJECT

private slots:
    void validCommandLines() {
        DevsimOptions o, tcp;
        QString error;
        QVERIFY2(
            o.parse(QStringLiteral("tavrel-devsim --pty --link /tmp/x --state s.json --password 4294967295 "
                                   "--blocked --silent-every 3 --truncate-every 4 --garbage-every 5 --split "
                                   "--latency 20 --baud 115200 --hangup-after 7 --fw-version 3.9.17 "
                                   "--hw-version 0x1203 --corrupt-every 2 --ignore-writes GSMConfiguration "
                                   "--ignore-writes SystemConfiguration")
                        .split(' '),
                    &error),
            qPrintable(error));
        QVERIFY(o.transport == DevsimOptions::Transport::Pty && o.hasFwVersion && o.hasHwVersion);
        QCOMPARE(QVariantList({o.linkPath, o.statePath, o.hasPassword, o.password, o.blocked, o.split}),
                 QVariantList({"/tmp/x", "s.json", true, 4294967295u, true, true}));
        QCOMPARE(QVector<int>({o.silentEvery, o.truncateEvery, o.garbageEvery, o.corruptEvery, o.latencyMs,
                               o.baud, o.hangupAfter, o.fwMajor, o.fwMiddle, o.fwBuild, o.hwVersion}),
                 QVector<int>({3, 4, 5, 2, 20, 115200, 7, 3, 9, 17, 0x1203}));
        QCOMPARE(o.ignoredWrites, QStringList({"GSMConfiguration", "SystemConfiguration"}));
        // Over TCP, with nothing else set.
        QVERIFY(tcp.parse({"tavrel-devsim", "--tcp", "0", "--imei", "123"}, &error));
        QVERIFY(tcp.transport == DevsimOptions::Transport::Tcp && tcp.tcpPort == 0 &&
                tcp.serverImei == "123");
        QVERIFY(!tcp.hasPassword && !tcp.hasFwVersion && tcp.baud == 0);
    }

    void badCommandLines_data() {
        QTest::addColumn<QString>("args");
        for (const char *bad : {"--state x.json", "--pty --tcp 0", "--tcp 65536", "--pty --silent-every -1",
                                "--pty --baud fast", "--pty --fw-version 3.9", "--pty --fw-version 256.1.1",
                                "--pty --hw-version xyz", "--pty --password secret", "--tcp 0 --link /tmp/x",
                                "--pty --imei 1", "--tcp 0 --bench 4", "--pty --colour",
                                "--pty --ignore-writes mainDviceInfo", "--pty extra", "--help"})
            QTest::newRow(bad) << bad;
    }

    // Refused with a message; help, not an error, without one.
    void badCommandLines() {
        QFETCH(QString, args);
        DevsimOptions o;
        QString error = "x";
        QVERIFY(!o.parse(QString("tavrel-devsim " + args).split(' '), &error));
        QCOMPARE(error.isEmpty(), args == "--help");
    }

    void everySectionReadDecodesToTheDevicesValues() {
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

    void requestAnsweredWithStatus_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<int>("answerType");
        QTest::addColumn<int>("status");
        QTest::newRow("write of server 5") << 6 << hex("100105000000") << 6 << int(UNPParcer::ExecutionError);
        QTest::newRow("write of output 7") << 6 << hex("0e0107000100") << 6 << int(UNPParcer::ExecutionError);
        QTest::newRow("identity request 5") << 6 << hex("81050000") << 6 << int(UNPParcer::NotSupported);
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

    void requestAnsweredWithStatus() {
        QFETCH(int, type);
        QFETCH(QByteArray, request);
        QFETCH(int, answerType);
        QFETCH(int, status);
        VirtualTracker device;
        const Answer a = ask(device, quint8(type), request);
        QCOMPARE(a.type, answerType);
        QCOMPARE(a.status(), status);
    }

    void passwordGuardsTelemetryAndItsChangeIsStored() {
        VirtualTracker device;
        device.setPassword(1234u);
        const Answer telemetry = ask(device, 7, hex("820a0000"));
        QVERIFY(telemetry.type == 7 && telemetry.status() == int(UNPParcer::AuthorisationNeeded));
        QCOMPARE(ask(device, 7, hex("01010000d2040000")).payload, hex("018100000100")); // 1234
        QSignalSpy changed(&device, &VirtualTracker::stateChanged);
        QCOMPARE(ask(device, 6, hex("0201000078563412")).status(), int(UNPParcer::Executed));
        QCOMPARE(device.password(), std::optional<quint32>(0x12345678));
        QCOMPARE(changed.count(), 1);
        device.logout();
        QCOMPARE(ask(device, 6, hex("91010000")).status(), int(UNPParcer::AuthorisationNeeded));
        QCOMPARE(ask(device, 7, hex("0101000078563412")).status(), int(UNPParcer::Executed));
    }

    void outputsFollowSetOutputsAndSingleWrites() {
        VirtualTracker device;
        const OutputConfigurationItem *out = device.configuration()->outputs()->value();
        QCOMPARE(ask(device, 7, hex("0209000001010101")).status(), int(UNPParcer::Executed));
        QCOMPARE(out->states(), (QVector<quint8>{1, 1})); // two outputs
        QCOMPARE(ask(device, 6, hex("0e0101000000")).status(), int(UNPParcer::Executed));
        QCOMPARE(out->states(), (QVector<quint8>{1, 0}));
        // The output parameters travel as a command.
        QCOMPARE(ask(device, 7, hex("0e02000002050609")).status(), int(UNPParcer::Executed));
        QCOMPARE(
            QVector<int>({out->outNum(), out->highCondition(), out->lowCondition(), out->replayCounter()}),
            QVector<int>({2, 5, 6, 9}));
    }

    void telemetryOfEveryPolledKindDecodes() {
        VirtualTracker device;
        device.setClock([] { return 30000; });
        for (int kind :
             {0x09, 0x0A, 0x0B, 0x0C, 0x0E, 0x0F, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18}) {
            const QByteArray request = hex("82000000").replace(1, 1, QByteArray(1, char(kind)));
            const Answer a = ask(device, 7, request);
            kd::ControlInfoConfiguration info; // a data answer the configurator announces
            QVERIFY2(a.type == 7 && a.payload.left(2) == request.left(2) && info.decode(a.payload),
                     qPrintable(QString::number(kind)));
            for (int i = 0; i < kd::ControlInfoConfiguration::recordsKept(kind); ++i)
                QVERIFY2(info.value()->received(kind, i),
                         qPrintable(QStringLiteral("kind %1 record %2").arg(kind).arg(i)));
        }
    }

    void stateRoundTripsEverything() {
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

        VirtualTracker b, c;
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
        c.loadState(root);
        QVERIFY(c.configuration()->system()->value()->parkingMin() == 33 && !c.password());
        QCOMPARE(c.configuration()->outputs()->value()->states().size(), 2);
        // A reset asks for a power cycle and brings the factory values back.
        QCOMPARE(ask(c, 7, hex("010300000000")).status(), int(UNPParcer::PowerCycleNeeded));
        QCOMPARE(int(c.configuration()->system()->value()->parkingMin()), 5);
    }

    // The receiver searches after power-on, finds a 2D then a 3D fix, loses it at each new minute; the modem
    // searches, registers at home and roams for a spell.
    void timeline_data() {
        QTest::addColumn<int>("second");
        QTest::addColumn<int>("fixMode");
        QTest::addColumn<bool>("dateKnown");
        QTest::addColumn<int>("registration");
        using G = GsmRegistration;
        QTest::newRow("power-on") << 1 << 0 << false << int(G::NotRegistered);
        QTest::newRow("searching") << 5 << 0 << false << int(G::Searching);
        QTest::newRow("first 2D fix") << 13 << 2 << true << int(G::Home);
        QTest::newRow("registered") << 20 << 3 << true << int(G::Home);
        QTest::newRow("3D fix") << 30 << 3 << true << int(G::Home);
        QTest::newRow("lost at the next minute") << 65 << 0 << true << int(G::Home);
        QTest::newRow("back in the next minute") << 90 << 3 << true << int(G::Home);
        QTest::newRow("roaming 104 s after registration") << 112 << 3 << true << int(G::Roaming);
    }

    void timeline() {
        QFETCH(int, second);
        QFETCH(int, fixMode);
        QFETCH(bool, dateKnown);
        QFETCH(int, registration);
        TrackerModel m;
        m.setElapsed(second * 1000);
        const NavReceiverRecord rx = m.receiver(0);
        QCOMPARE(int(rx.fixMode), fixMode);
        const NavSummaryRecord nav = m.navSummary();
        QCOMPARE(int(nav.fixMode), fixMode);
        // On the ring round the centre with a fix, nowhere and still without one.
        QVERIFY(fixMode ? qAbs(nav.latitude - 557558000) < 1000000 : nav.latitude == 0 && nav.speed == 0);
        QCOMPARE(nav.fixLostCount, uint(second / 60));
        QCOMPARE(rx.day != 0, dateKnown);
        QVERIFY(fixMode == 3 ? rx.satellites >= 5 : fixMode != 0 || rx.satellites < 3);
        QVERIFY(rx.satellitesInView >= rx.satellites);
        const bool navigationActive = m.deviceState().activityFlags & DeviceStateRecord::NavigationActive;
        QCOMPARE(navigationActive, fixMode != 0);
        QCOMPARE(m.gsm(0).registration, quint8(registration));
        if (registration == int(GsmRegistration::Home))
            QCOMPARE(m.gsm(0).operatorCode, 25001u);
    }

    void positionMovesOnlyWithFix() {
        TrackerModel m;
        m.setElapsed(20000);
        const NavSummaryRecord a = m.navSummary();
        m.setElapsed(30000);
        const NavSummaryRecord b = m.navSummary();
        QVERIFY(a.latitude != b.latitude || a.longitude != b.longitude);
        QVERIFY(b.speed > 300);
        QVERIFY(b.odometer > a.odometer);
        QCOMPARE(int(m.receiver(0).latDegrees), 55);
    }

    void courseStaysBelow360DegreesForHours() {
        TrackerModel m;
        m.setElapsed(600000LL * 18 + 150000);      // three hours and a quarter lap: north of the centre
        QCOMPARE(int(m.receiver(0).course), 2700); // heading west
        for (qint64 s = 0; s < 24 * 3600; s += 977) {
            m.setElapsed(s * 1000);
            if (m.hasFix())
                QVERIFY2(m.receiver(0).course < 3600, qPrintable(QString::number(s)));
        }
    }

    void clockAndCountersTickWithElapsedTime() {
        TrackerModel m(1700000000);
        m.setElapsed(0);
        QCOMPARE(m.clock().unixTime, 1700000000u);
        QCOMPARE(m.clock().syncSource, quint16(ClockRecord::NotSynced));
        const LogicInputRecord a0 = m.logicInput(0), a1 = m.logicInput(1); // logic, universal counter
        m.setElapsed(16000);
        QCOMPARE(m.clock().unixTime, 1700000016u);
        QCOMPARE(m.clock().syncSource, quint16(ClockRecord::Navigation));
        QCOMPARE(m.deviceState().uptime, 16u);
        QVERIFY(m.logicInput(0).value != a0.value); // the level toggles every 15 s
        QVERIFY(m.logicInput(1).counter > a1.counter);

        m.setElapsed(100000);
        QVERIFY(m.deviceState().memoryUsed > 1000);
        m.clearMemory();
        QCOMPARE(m.deviceState().memoryUsed, 0u);
        m.setElapsed(130000);
        QCOMPARE(m.deviceState().memoryUsed, 3u);
    }

    void fuelFallsOnlyForFittedSensors() {
        TrackerModel m; // sensors 0 and 1 fitted
        m.setElapsed(8000);
        const FuelSensorsRecord a = m.fuel();
        QCOMPARE(a.onlineMask, quint16(0x3));
        QVERIFY(a.level[0] > 0 && a.level[1] > 0);
        QCOMPARE(a.level[2], 0u);
        m.setElapsed(400000);
        QVERIFY(m.fuel().level[0] < a.level[0]);
    }

    // What answers 1, 2, ... become: "a" as they are, "c" cut to half, "g" garbage of their length, "-"
    // nothing at all.
    void answersSpoiltByNumber_data() {
        QTest::addColumn<QVector<int>>("every"); // silent, truncate, garbage
        QTest::addColumn<QString>("sent");
        QTest::newRow("nothing set") << QVector<int>{0, 0, 0} << "aaaaaa";
        QTest::newRow("garbage 5") << QVector<int>{0, 0, 5} << "aaaagaaaag";
        QTest::newRow("garbage every time") << QVector<int>{0, 0, 1} << "ggg";
        QTest::newRow("silent beats garbage") << QVector<int>{2, 0, 2} << "a-a-";
        QTest::newRow("garbage beats cut") << QVector<int>{0, 3, 3} << "aagaag";
        QTest::newRow("silent beats cut") << QVector<int>{3, 2, 0} << "ac-ca-a";
    }

    void answersSpoiltByNumber() {
        QFETCH(QVector<int>, every);
        QFETCH(QString, sent);
        FaultInjector::Settings s;
        s.silentEvery = every[0], s.truncateEvery = every[1], s.garbageEvery = every[2];
        FaultInjector f(s), again(s);
        QSignalSpy writes(&f, &FaultInjector::write), againWrites(&again, &FaultInjector::write);
        QString actual;
        QByteArray garbage;
        for (int n = 1; n <= sent.size(); ++n) {
            const int before = writes.count();
            f.sendAnswer(answer(n));
            again.sendAnswer(answer(n));
            const QByteArray w = writes.count() == before + 1 ? writes.last().at(0).toByteArray() : "?";
            actual += writes.count() == before         ? '-'
                      : w == answer(n)                 ? 'a'
                      : w == answer(n).left(6)         ? 'c'
                      : w.size() == 12 && w != garbage ? 'g'
                                                       : '?';
            garbage = actual.endsWith('g') ? w : garbage;
        }
        QCOMPARE(actual, sent);
        QCOMPARE(f.answersSent(), sent.size());
        // Garbage differs from one answer to the next but is the same in every run.
        QCOMPARE(written(againWrites), written(writes));
        QCOMPARE(FaultInjector::truncated(QByteArray(1, 'x')), QByteArray(1, 'x')); // never cut to nothing
    }

    void splitSendsTwoPiecesThatJoin() {
        FaultInjector::Settings s;
        s.split = true;
        s.splitPauseMs = 5;
        FaultInjector f(s);
        QSignalSpy writes(&f, &FaultInjector::write);
        const QByteArray frame = QByteArray::fromHex("a5a5060011008102000056616e746f72206d6963726f00fa04");
        f.sendAnswer(frame);
        QCOMPARE(writes.count(), 1); // the second piece waits for the pause
        QTRY_COMPARE(writes.count(), 2);
        const QByteArrayList pieces = written(writes);
        QVERIFY(!pieces.at(0).isEmpty() && !pieces.at(1).isEmpty());
        QCOMPARE(pieces.at(0) + pieces.at(1), frame);
    }

    // The hang-up follows the nth answer even when that one is silent; the boot loader's raw bytes between
    // answers are neither spoilt nor counted.
    void hangUpFollowsTheNthAnswerEvenWhenSilent() {
        FaultInjector::Settings s;
        s.hangupAfter = 2;
        s.silentEvery = 2;
        s.truncateEvery = 1;
        FaultInjector f(s);
        QSignalSpy writes(&f, &FaultInjector::write), hungUp(&f, &FaultInjector::hangUp);
        f.sendAnswer(answer(1));
        f.sendRaw(QByteArray("U page request"));
        QCOMPARE(written(writes), (QByteArrayList{answer(1).left(6), "U page request"}));
        QVERIFY(f.answersSent() == 1 && hungUp.isEmpty());
        f.sendAnswer(answer(2));
        QVERIFY(writes.count() == 2 && hungUp.count() == 1);
    }

    void baudHoldsAnswerUntilItsLastByteLeft() {
        FaultInjector::Settings s;
        s.baud = 115200;
        s.latencyMs = 30;
        FaultInjector f(s);
        qint64 now = 0;
        f.setClock([&now] { return now; });
        QSignalSpy writes(&f, &FaultInjector::write);
        f.sendAnswer(QByteArray(1152, 'a')); // 30 ms latency, then 100 ms on the line
        f.sendAnswer(QByteArray(1152, 'b')); // queued behind it
        // What has left the line by a moment of our clock (its timer does the same when the next is due).
        const auto by = [&](qint64 us) {
            now = us;
            f.deliverDue();
            return writes.count();
        };
        QCOMPARE(by(129000), 0);
        QCOMPARE(by(130000), 1);
        QCOMPARE(written(writes).at(0).at(0), 'a');
        QCOMPARE(by(130000), 1); // the second one is still on the line
        QCOMPARE(by(230000), 2);
        QCOMPARE(written(writes).at(1).at(0), 'b');

        // A request takes its own line time before the device can answer: 96 bytes, 8334 us each way.
        f.sendAnswer(QByteArray(96, 'c'), 96);
        QCOMPARE(by(230000 + 30000 + 2 * 8334 - 1), 2);
        QCOMPARE(by(230000 + 30000 + 2 * 8334), 3);
    }

    void bytesArriveAtLineRate_data() {
        QTest::addColumn<int>("baud");
        QTest::addColumn<QVector<qint64>>("writeTimes"); // microseconds
        QTest::addColumn<QVector<int>>("writeSizes");    // -1: the line is cleared
        QTest::addColumn<qint64>("at");
        QTest::addColumn<int>("arrived");

        const QVector<qint64> once{0};
        const QVector<int> page{526};
        QTest::newRow("unpaced: all at once") << 0 << once << page << qint64(0) << 526;
        QTest::newRow("first byte not before its stop bit") << 115200 << once << page << qint64(86) << 0;
        QTest::newRow("first byte after 87 us") << 115200 << once << page << qint64(87) << 1;
        QTest::newRow("page one microsecond short") << 115200 << once << page << qint64(45659) << 525;
        QTest::newRow("page after 45.66 ms") << 115200 << once << page << qint64(45660) << 526;
        QTest::newRow("page at 9600 after 547.9 ms") << 9600 << once << page << qint64(547917) << 526;
        QTest::newRow("second write queues behind the first")
            << 115200 << QVector<qint64>{0, 0} << QVector<int>{10, 10} << qint64(1736) << 19;
        QTest::newRow("both writes in after 20 byte times")
            << 115200 << QVector<qint64>{0, 0} << QVector<int>{10, 10} << qint64(1737) << 20;
        QTest::newRow("write during a page waits for its end")
            << 115200 << QVector<qint64>{0, 10000} << QVector<int>{526, 10} << qint64(46527) << 535;
        QTest::newRow("write during a page, all in")
            << 115200 << QVector<qint64>{0, 10000} << QVector<int>{526, 10} << qint64(46528) << 536;
        QTest::newRow("idle line, second byte 87 us after its write")
            << 115200 << QVector<qint64>{0, 5000} << QVector<int>{1, 1} << qint64(5087) << 2;
        QTest::newRow("write just as the line falls idle")
            << 115200 << QVector<qint64>{0, 869} << QVector<int>{10, 10} << qint64(1738) << 20;
        // After a clear the next write starts a fresh run.
        const QVector<qint64> clear{0, 0, 1000000};
        QTest::newRow("cleared: byte not before its time")
            << 9600 << clear << QVector<int>{100, -1, 1} << qint64(1001041) << 0;
        QTest::newRow("cleared: byte after 1042 us")
            << 9600 << clear << QVector<int>{100, -1, 1} << qint64(1001042) << 1;
    }

    void bytesArriveAtLineRate() {
        QFETCH(int, baud);
        QFETCH(QVector<qint64>, writeTimes);
        QFETCH(QVector<int>, writeSizes);
        QFETCH(qint64, at);
        QFETCH(int, arrived);

        InboundLine line(baud);
        qint64 now = 0;
        line.setClock([&now] { return now; });
        QSignalSpy spy(&line, &InboundLine::arrived);
        QByteArray fed; // what is still to come: the bytes on the line when it was cleared are forgotten
        for (int i = 0, next = 0; i < writeTimes.size(); ++i) {
            now = writeTimes.at(i);
            const QByteArray bytes = numbered(next, qMax(writeSizes.at(i), 0));
            writeSizes.at(i) < 0 ? line.clear() : line.feed(bytes);
            fed = writeSizes.at(i) < 0 ? QByteArray() : fed + bytes;
            next += bytes.size();
        }
        now = at;
        line.deliverArrived();
        QCOMPARE(written(spy).join(), fed.left(arrived));
        QCOMPARE(line.pending(), fed.size() - arrived);
    }

    // The loader announces the versions it was started with, and a page takes its time on the line:
    // 526 bytes at 19200 baud take 274 ms, well inside the loader's half-second repeat.
    void bootLoaderTakesPagesAtTheLineRate() {
        using namespace UpdateChannel;
        // The exchange log would drown the test's own lines.
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\ntavrel.*.debug=false"));
        DevsimProcess sim;
        QVERIFY(sim.start({"--pty", "--baud", "19200", "--fw-version", "4.10.21", "--hw-version", "1a05"}));
        QList<Message> messages;
        QElapsedTimer sincePage;
        qint64 confirmedAfterNs = -1;
        QByteArray pending;
        auto *link = new SerialConnection(sim.address());
        VantorConfiguration config;
        Device device(&config);
        DeviceWorkflows workflows(&device);
        device.setResponseInterval(1000);
        device.setLink(link);
        QVERIFY(link->open());
        // The loader's other side: its messages, decoded; page 0 goes out once it is asked for.
        device.setFirmwareHandler([&](const QByteArray &chunk) {
            if (pending.isEmpty() && !chunk.startsWith(char(Start)))
                return false;
            for (pending += chunk; pending.size() >= MessageSize; pending.remove(0, MessageSize)) {
                const Message m = decodeMessage(pending.left(MessageSize));
                if (!messageCrcValid(pending.left(MessageSize)))
                    continue;
                messages.append(m);
                if (m.kind == PageRequested && m.page == 0 && !sincePage.isValid()) {
                    link->write(encodePagePacket(0, QByteArray(PageSize, char(0x5A))));
                    sincePage.start();
                } else if (m.kind == PageConfirmed && m.page == 0 && confirmedAfterNs < 0) {
                    confirmedAfterNs = sincePage.nsecsElapsed();
                }
            }
            return true;
        });
        QSignalSpy entered(DeviceProbe::parser(device), &UNPParcer::OnFirmwareUpdateEnter);
        workflows.enterFirmwareUpdate();
        QTRY_VERIFY_WITH_TIMEOUT(confirmedAfterNs >= 0, 5000);
        QCOMPARE(entered.count(), 1);
        const Message first = messages.first();
        QCOMPARE(QVector<int>(
                     {first.kind, first.page, first.hardware, first.fwMajor, first.fwMiddle, first.fwBuild}),
                 QVector<int>({int(PageRequested), 0, 0x1a05, 4, 10, 21}));
        QVERIFY2(confirmedAfterNs >= 273959000ll, qPrintable(QString::number(confirmedAfterNs)));
    }
};

QTEST_GUILESS_MAIN(tst_Devsim)
#include "tst_devsim.moc"
