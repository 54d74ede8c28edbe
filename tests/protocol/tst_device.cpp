#include "tests/support/DeviceProbe.h"
#include "tests/support/FakeLink.h"
#include "tests/support/LogCapture.h"
#include "tests/support/SectionsFixture.h"

#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"

#include <QtTest>

#include <functional>

using Flow = std::function<void(DeviceWorkflows &)>;
Q_DECLARE_METATYPE(Flow)

namespace {

const QByteArray SystemRead = QByteArray::fromHex("a5a506000400910100009301");
const QByteArray FuelRead = QByteArray::fromHex("a5a506000400880100008a01");
const QByteArray OutputsRead = QByteArray::fromHex("a5a5060004008e0100008c01");
// A status answer "executed" to a system write: 14 bytes, payload 11 81 00 00 01 00.
const QByteArray Executed = QByteArray::fromHex("a5a5060006001181000001009181");

QByteArray statusAnswer(quint8 code, quint8 operation) {
    QByteArray payload = QByteArray::fromHex("000000000100");
    payload[0] = char(code);
    payload[1] = char(operation | 0x80);
    return proto::Frame::build(6, payload);
}

// "type:code op parameter" of a frame, e.g. "6:830200".
QString headOf(const QByteArray &frame) {
    return QStringLiteral("%1:%2")
        .arg(quint8(frame.at(proto::Frame::TypeOffset)))
        .arg(QString::fromLatin1(frame.mid(proto::Frame::PayloadOffset, 3).toHex()));
}

struct Session {
    QObject owner;
    Device *device;
    FakeLink *link = new FakeLink;
    DeviceWorkflows *flows;

    explicit Session(int analog = 3, int logic = 2, int servers = 1)
        : device(new Device(makeConfiguration(&owner, analog, logic, servers), &owner))
        , flows(new DeviceWorkflows(device, &owner)) {
        // Time-outs are driven by hand unless a test asks for the timer.
        device->setResponseInterval(3600 * 1000);
        device->setWindow(1); // one request until its answer unless a test widens it
        device->setLink(link);
    }
    proto::UNPProtocol *protocol() const { return DeviceProbe::protocol(*device); }
    void queueThree() const {
        protocol()->readSystem();
        protocol()->readFuel();
        protocol()->readOutputs();
    }
    void timeouts(int n) const {
        for (int i = 0; i < n; ++i)
            device->onResponseTimeout();
    }
    // Frames in the order they would reach the device: the ones already written, then the queue.
    QStringList heads() const {
        QStringList out;
        for (const QByteArray &f : link->written + protocol()->queue())
            out << headOf(f);
        return out;
    }
};

} // namespace

// The session's requests on the line, and the workflows that queue them.
#define ROW(name, call, analog, logic, servers, ...)                                                         \
    QTest::newRow(name) << Flow([](DeviceWorkflows &w) { w.call; }) << analog << logic << servers            \
                        << QStringList {                                                                     \
        __VA_ARGS__                                                                                          \
    }

class tst_Device : public QObject {
    Q_OBJECT
private slots:
    void sendingStepWritesTheHeadAndDropsIt() {
        Session s;
        s.queueThree();
        QSignalSpy sent(s.device, &Device::frameSent);
        s.device->sendNextCommand();
        QCOMPARE(s.link->written, QList<QByteArray>{SystemRead});
        QCOMPARE(s.protocol()->queueSize(), 2);
        QVERIFY(s.device->isAnswerPending());
        QCOMPARE(sent.count(), 1);
        QCOMPARE(sent.at(0).at(0).toByteArray(), SystemRead);
        // A link still connecting is written to, but no answer is awaited (the timer stays off).
        s.device->stop();
        s.link->linkState = Connection::Connecting;
        s.device->sendNextCommand();
        QCOMPARE(s.link->written.size(), 2);
        QVERIFY(!s.device->isAnswerPending());
        // Without a link the frame stays queued, though the attempt is logged.
        s.device->setLink(nullptr);
        s.protocol()->clearQueue();
        s.protocol()->readSystem();
        LogCapture capture;
        s.device->sendNextCommand();
        QCOMPARE(s.protocol()->queueSize(), 1);
        QCOMPARE(capture.lines, QStringList{"Command a5a506000400910100009301"});
    }

    void timeouts_data() {
        QTest::addColumn<int>("before");  // time-outs before an answer
        QTest::addColumn<int>("after");   // time-outs after that answer, -1: no answer
        QTest::addColumn<int>("written"); // the first sending step writes one; each time-out moves on
        QTest::addColumn<int>("retries");
        QTest::addColumn<int>("losses");
        QTest::newRow("first time-out sends the second frame") << 1 << -1 << 2 << 1 << 0;
        QTest::newRow("second time-out sends the third frame") << 2 << -1 << 3 << 2 << 0;
        QTest::newRow("third time-out: queue empty, counter still rises") << 3 << -1 << 3 << 3 << 0;
        QTest::newRow("fourth time-out: connection lost") << 4 << -1 << 3 << 4 << 1;
        QTest::newRow("later time-outs: counter stays, no second loss") << 7 << -1 << 3 << 4 << 1;
        QTest::newRow("three time-outs, an answer, three more: never lost") << 3 << 3 << 3 << 3 << 0;
    }

    void timeouts() {
        QFETCH(int, before);
        QFETCH(int, after);
        QFETCH(int, written);
        QFETCH(int, retries);
        QFETCH(int, losses);
        Session s;
        s.queueThree();
        QSignalSpy lost(s.device, &Device::connectionLost);
        s.device->sendNextCommand();
        LogCapture capture;
        s.timeouts(before);
        if (after >= 0) {
            s.link->deliverNow(Executed);
            QCOMPARE(s.device->retryCount(), 0);
            s.timeouts(after);
        }
        QCOMPARE(s.link->written, (QList<QByteArray>{SystemRead, FuelRead, OutputsRead}).mid(0, written));
        QCOMPARE(s.device->retryCount(), retries);
        QCOMPARE(lost.count(), losses);
        QCOMPARE(capture.lines.filter(QStringLiteral("Повторная отправка")).last(),
                 QStringLiteral("Повторная отправка, попытка номер: %1").arg(retries));
    }

    void secondLossWhileUnresolvedIsNotRaisedAndAnAnswerRestores() {
        Session s;
        QSignalSpy lost(s.device, &Device::connectionLost);
        QSignalSpy restored(s.device, &Device::connectionRestored);
        s.link->deliverNow(Executed);
        QCOMPARE(restored.count(), 0); // nothing was lost yet
        s.protocol()->readSystem();
        s.device->sendNextCommand();
        s.timeouts(4);
        QCOMPARE(lost.count(), 1);
        QVERIFY(s.device->isConnectionLost());
        // The window reconnects (counter back to 0) while its waiting dialog is still open.
        s.device->resetRetries();
        s.timeouts(4);
        QCOMPARE(lost.count(), 1);
        s.link->deliverNow(Executed);
        QCOMPARE(restored.count(), 1);
        QVERIFY(!s.device->isConnectionLost());
        s.device->resolveConnectionLost();
        s.device->resetRetries();
        s.timeouts(4);
        QCOMPARE(lost.count(), 2);
    }

    void timerDrivesTheTimeouts() {
        Session s;
        s.device->setResponseInterval(5);
        QSignalSpy lost(s.device, &Device::connectionLost);
        s.queueThree();
        s.device->sendNextCommand();
        QVERIFY(lost.wait(5000));
        QCOMPARE(s.link->written.size(), 3);
        QCOMPARE(s.device->retryCount(), 4);
        s.link->opened = false; // closing the link stops the timer at its next tick
        QTRY_VERIFY(!s.device->isAnswerPending());
    }

    void chunks_data() {
        QTest::addColumn<QList<QByteArray>>("reads");
        QTest::addColumn<bool>("reassembly");
        QTest::addColumn<QList<QByteArray>>("accepted"); // payloads handed to the parser

        const QByteArray payload = QByteArray::fromHex("118100000100");
        const QByteArray other = QByteArray::fromHex("a5a5060006000381000001008381");
        const QByteArray otherPayload = QByteArray::fromHex("038100000100");
        const QByteArray loader = QByteArray::fromHex("550100000400000000910000") + QByteArray(8, '\0');
        using L = QList<QByteArray>;
        for (bool on : {true, false}) {
            const char *mode = on ? " (joining)" : " (one chunk, one frame)";
            QTest::addRow("N+8 accepted%s", mode) << L{Executed} << on << L{payload};
            QTest::addRow("N+20 accepted, surplus cut%s", mode)
                << L{Executed + QByteArray(12, 'x')} << on << L{payload};
            QTest::addRow("N+7 not parsed%s", mode) << L{Executed.chopped(1)} << on << L{};
            QTest::addRow("N+7 then a whole fresh answer%s", mode)
                << L{Executed.chopped(1), other} << on << L{otherPayload};
            QTest::addRow("two whole answers%s", mode)
                << L{Executed, other} << on << L{payload, otherPayload};
            QTest::addRow("loader packet never reaches the parser%s", mode) << L{loader} << on << L{};
        }
        QTest::newRow("N+7 completed by the next read (joining)")
            << L{Executed.chopped(1), Executed.right(1)} << true << L{payload};
        QTest::newRow("N+7 and its last byte (one chunk, one frame)")
            << L{Executed.chopped(1), Executed.right(1)} << false << L{};
        QTest::newRow("split after the header (joining)")
            << L{Executed.left(6), Executed.mid(6)} << true << L{payload};
        QTest::newRow("split in three (joining)")
            << L{Executed.left(3), Executed.mid(3, 5), Executed.mid(8)} << true << L{payload};
        // Without markers the head is not held back, so the tail stands alone (and announces length 0).
        QTest::newRow("garbage head is not held (joining)")
            << L{QByteArray::fromHex("0102ff00"), Executed.mid(4)} << true << L{QByteArray()};
    }

    void chunks() {
        QFETCH(QList<QByteArray>, reads);
        QFETCH(bool, reassembly);
        QFETCH(QList<QByteArray>, accepted);
        Session s;
        s.device->setReassembly(reassembly);
        QList<QByteArray> parsed;
        connect(s.device, &Device::answerAccepted, [&parsed](quint8, const QByteArray &p) { parsed << p; });
        for (const QByteArray &r : reads)
            s.link->deliverNow(r);
        QCOMPARE(parsed, accepted);
    }

    void answersMatchedInAnyOrderWithinTheWindow() {
        Session s;
        s.device->setWindow(3);
        s.queueThree();
        QSignalSpy abandoned(s.device, &Device::requestAbandoned);
        s.device->sendNextCommand();
        QCOMPARE(s.link->written, (QList<QByteArray>{SystemRead, FuelRead, OutputsRead}));
        s.link->deliverNow(statusAnswer(0x8E, 1) + statusAnswer(0x88, 1));
        QCOMPARE(s.device->outstanding(), 1);
        QSignalSpy idle(s.device, &Device::idle);
        s.timeouts(1); // the oldest, the system read, is given up
        QCOMPARE(abandoned.count(), 1);
        QCOMPARE(abandoned.at(0), (QList<QVariant>{quint8(0x91), quint8(1), quint8(0), false}));
        QCOMPARE(idle.count(), 0); // a time-out ends no round: the owner's quiet spell does
        QVERIFY(s.device->isIdle());
        s.link->deliverNow(statusAnswer(0x91, 1)); // late, yet the device is there
        QCOMPARE(s.device->retryCount(), 0);
    }

    // Requests given up while the device was taken for lost are asked again once it answers.
    void askedInVainWhileLostAskedAgainOnReturn() {
        Session s;
        s.device->setWindow(2);
        s.queueThree();
        s.device->sendNextCommand();
        s.timeouts(4);
        QVERIFY(s.device->isConnectionLost());
        s.protocol()->readFuel();
        s.protocol()->readOutputs();
        s.device->sendNextCommand();
        s.timeouts(2);
        s.link->written.clear();
        s.link->deliverNow(statusAnswer(0x91, 1)); // late, for the first system read
        QCOMPARE(s.link->written, (QList<QByteArray>{FuelRead, OutputsRead}));
    }

    void nonsenseCountsAsSilence_data() {
        QTest::addColumn<QByteArray>("reply");
        QTest::newRow("garbage") << QByteArray::fromHex("0102030405ff0708");
        QTest::newRow("frame shorter than its head") << QByteArray::fromHex("a5a50600010091");
        QTest::newRow("length past the bound") << QByteArray::fromHex("a5a50600ff7f91010000");
        QTest::newRow("boot-loader look-alike") << QByteArray::fromHex("550203120900110300901d1c");
        QTest::newRow("an answer to nothing asked") << statusAnswer(0x84, 3);
        QTest::newRow("a garbage chunk taken as a frame")
            << QByteArray::fromHex("0000070004008201000000000000");
    }

    void nonsenseCountsAsSilence() {
        QFETCH(QByteArray, reply);
        Session s;
        s.device->setWindow(2);
        s.device->setStallInterval(0);
        s.queueThree();
        QSignalSpy abandoned(s.device, &Device::requestAbandoned);
        s.device->sendNextCommand();
        s.device->onResponseTimeout(); // a time-out before: nonsense must not clear it
        QCOMPARE(s.link->written, (QList<QByteArray>{SystemRead, FuelRead, OutputsRead}));
        // The oldest request, the fuel read, is asked again twice and given up at the third nonsense.
        for (int written : {4, 5, 5}) {
            s.link->deliverNow(reply);
            QTRY_COMPARE(s.link->written.size(), written);
        }
        QCOMPARE(s.link->written.mid(3), (QList<QByteArray>{FuelRead, FuelRead}));
        QTRY_COMPARE(abandoned.count(), 2);
        QCOMPARE(abandoned.at(1), (QList<QVariant>{quint8(0x88), quint8(1), quint8(0), true}));
        QCOMPARE(s.device->retryCount(), 1);
        s.link->deliverNow(statusAnswer(0x8E, 1));
        QCOMPARE(s.device->retryCount(), 0);
        QVERIFY(s.device->isIdle());
    }

    void stopForgetsTheHeldHead() {
        Session s;
        s.protocol()->readSystem();
        s.device->sendNextCommand();
        QSignalSpy answered(s.device, &Device::answerAccepted);
        s.link->deliverNow(Executed.left(6));
        s.device->stop();
        s.link->deliverNow(Executed.mid(6));
        QCOMPARE(answered.count(), 0);
        QVERIFY(!s.device->isAnswerPending());
        QCOMPARE(s.protocol()->queueSize(), 0);
    }

    void firmwareHandlerIsOfferedEveryChunkAndARequestBehindAnAnswer() {
        Session s;
        QList<QByteArray> offered;
        bool claim = true;
        s.device->setFirmwareHandler([&](const QByteArray &chunk) {
            offered << chunk;
            return claim;
        });
        QSignalSpy answered(s.device, &Device::answerAccepted);
        s.link->deliverNow(Executed);
        QCOMPARE(answered.count(), 0);
        QCOMPARE(offered, QList<QByteArray>{Executed});

        // The loader's first request arriving in the same read as the mode answer is offered on its own too;
        // other surplus is not.
        claim = false;
        offered.clear();
        const QByteArray request = QByteArray::fromHex("550203120900110300901d1c");
        const QByteArray updateAnswer = QByteArray::fromHex("a5a5070006000102000001000100");
        s.link->deliverNow(updateAnswer + request);
        s.link->deliverNow(updateAnswer + QByteArray::fromHex("00ff"));
        QCOMPARE(answered.count(), 2);
        QCOMPARE(offered, (QList<QByteArray>{updateAnswer + request, request,
                                             updateAnswer + QByteArray::fromHex("00ff")}));
    }

    void queueSizeLine_data() {
        QTest::addColumn<int>("queued");
        QTest::addColumn<QString>("line");
        QTest::newRow("empty queue") << 0 << "Queue size: ";
        QTest::newRow("one frame") << 1 << "ueue size: ";
        QTest::newRow("five frames") << 5 << " size: ";
        QTest::newRow("eleven frames") << 11 << " ";
        QTest::newRow("twelve frames") << 12 << "";
        QTest::newRow("twenty frames") << 20 << "";
    }

    void queueSizeLine() {
        QFETCH(int, queued);
        QFETCH(QString, line);
        Session s;
        for (int i = 0; i < queued; ++i)
            s.protocol()->readSystem();
        LogCapture capture;
        s.link->deliverNow(Executed + QByteArray(1, '\0')); // the read's length counts the stray byte too
        // The size line follows the parser's status line and comes before the next command.
        QCOMPARE(capture.lines.mid(0, 3), (QStringList{"From device: a5a506000600118100000100918100: 15",
                                                       "....Команду выполнил", line}));
        QCOMPARE(capture.unstamped, 0);
    }

    void passwordMasked_data() {
        QTest::addColumn<int>("request");
        QTest::addColumn<QString>("line");
        QTest::newRow("login") << 0 << "Command a5a50700080001010000************";
        QTest::newRow("password change") << 1 << "Command a5a50600080002010000************";
        QTest::newRow("reset settings is not masked") << 2 << "Command a5a5070006000103000000000003";
    }

    void passwordMasked() {
        QFETCH(int, request);
        QFETCH(QString, line);
        Session s;
        if (request == 0)
            s.protocol()->login(0x12345678);
        else if (request == 1)
            s.protocol()->changePassword(0x0A0B0C0D);
        else
            s.protocol()->resetSettings();
        LogCapture capture;
        s.device->sendNextCommand();
        QCOMPARE(capture.lines, QStringList{line});
        QCOMPARE(s.link->written.first().size() * 2 + 8, line.size()); // the frame itself goes out whole
        QVERIFY(!s.link->written.first().contains('*'));
    }

    void replacingTheLink() {
        Session s;
        QPointer<FakeLink> old = s.link;
        auto *fresh = new FakeLink;
        QSignalSpy changed(s.device, &Device::linkChanged);
        s.device->setLink(fresh);
        QCOMPARE(changed.count(), 1);
        QVERIFY(!old->opened);
        QSignalSpy answered(s.device, &Device::answerAccepted);
        s.protocol()->readSystem();
        s.device->sendNextCommand();
        old->deliverNow(Executed); // a late answer on the old link is not ours
        emit old->disconnected();
        QCOMPARE(answered.count(), 0);
        QVERIFY(s.device->isAnswerPending());
        QTRY_VERIFY(old.isNull());
        QCOMPARE(fresh->parent(), s.device);
        fresh->deliverNow(Executed);
        QCOMPARE(answered.count(), 1);
    }

    void frameOrder_data() {
        QTest::addColumn<Flow>("flow");
        QTest::addColumn<int>("analog");
        QTest::addColumn<int>("logic");
        QTest::addColumn<int>("servers");
        QTest::addColumn<QStringList>("heads");

#define READ_ALL                                                                                             \
    "6:910100", "6:830200", "6:830300", "6:840300", "6:840400", "6:900100", "6:8c0200", "6:8d0200",          \
        "6:880100", "6:8e0100"
#define WRITE_FIXED                                                                                          \
    "6:030300", "6:030200", "6:040300", "6:040301", "6:040400", "6:040401", "6:080100", "6:110100"
        ROW("read all", readAll(), 3, 2, 1, READ_ALL);
        ROW("read all with empty lists still reads every section", readAll(), 0, 0, 0, READ_ALL);
        ROW("write all", writeAll(), 3, 2, 2, WRITE_FIXED, "6:0c0200", "6:0c0201", "6:0c0202", "6:0d0200",
            "6:0d0201", "6:100100", "6:100101");
        ROW("write all without lists writes only the fixed sections", writeAll(), 0, 0, 0, WRITE_FIXED);
        ROW("identity", readIdentity(), 3, 2, 1, "6:810100", "6:810200");
        ROW("clear memory", clearMemory(), 3, 2, 1, "7:010300");
        ROW("reset settings", resetSettings(), 3, 2, 1, "7:010300");
        ROW("login", login(1), 3, 2, 1, "7:010100");
        ROW("change password", changePassword(4321), 3, 2, 1, "6:020100");
        ROW("firmware-update mode", enterFirmwareUpdate(), 3, 2, 1, "7:010200");
        ROW("apply system", writeSystem(), 3, 2, 1, "6:110100");
        ROW("apply navigation", writeNavigation(), 3, 2, 1, "6:030300", "6:030200");
        ROW("apply GSM", writeGsm(), 3, 2, 1, "6:040300", "6:040301", "6:040400", "6:040401");
        ROW("apply servers", writeServers(), 3, 2, 3, "6:100100", "6:100101", "6:100102");
        ROW("apply analog inputs", writeAnalogInputs(), 2, 2, 1, "6:0c0200", "6:0c0201");
        ROW("apply logic inputs", writeLogicInputs(), 3, 2, 1, "6:0d0200", "6:0d0201");
        ROW("apply fuel", writeFuel(), 3, 2, 1, "6:080100");
        ROW("apply output parameters", writeOutputParameters(0x0E, 0x05), 3, 2, 1, "7:0e0500");
        ROW("set outputs", setOutputs(), 3, 2, 1, "7:020900");
        ROW("set one output", setOutput(1, 3), 3, 2, 1, "6:0e0103");
        ROW("telemetry poll", pollTelemetry(), 3, 2, 1, "7:820a00", "7:820900", "7:820b00", "7:820c00",
            "7:820e00", "7:820f00", "7:821000", "7:821100", "7:821200", "7:821300", "7:821400", "7:821500",
            "7:821600", "7:821700", "7:821800");
    }

    void frameOrder() {
        QFETCH(Flow, flow);
        QFETCH(int, analog);
        QFETCH(int, logic);
        QFETCH(int, servers);
        QFETCH(QStringList, heads);
        Session s(analog, logic, servers);
        s.link->linkState = Connection::Connecting; // sent frames arm no timer
        flow(*s.flows);
        QCOMPARE(s.heads(), heads);
        QCOMPARE(s.link->written.size(), 1); // the queue was started
    }

    void readAllAndWriteAllDropWhatWaits() {
        Session s;
        s.protocol()->readTelemetryClock();
        s.protocol()->readTelemetrySim();
        s.flows->readAll();
        QCOMPARE(s.heads().size(), 10);
        QCOMPARE(s.heads().first(), QStringLiteral("6:910100"));
        s.link->written.clear();
        s.flows->writeAll();
        QCOMPARE(s.heads().first(), QStringLiteral("6:030300"));
        QVERIFY(!s.heads().contains(QStringLiteral("6:830200")));
    }

    void pollTelemetryNeverGrowsTheQueue() {
        Session s;
        // The device is slow: nothing is answered and the link is not writable, so every frame stays queued.
        s.device->setLink(nullptr);
        QCOMPARE(s.flows->pollTelemetry(), 15);
        for (int i = 0; i < 100; ++i)
            QCOMPARE(s.flows->pollTelemetry(), 0);
        QCOMPARE(s.protocol()->queueSize(), 15);
        // Once a request has gone out it may be asked for again.
        s.protocol()->dropFirst();
        QCOMPARE(s.flows->pollTelemetry(), 1);
        QCOMPARE(s.protocol()->queue().last(), proto::UNPProtocol::telemetryFrame(0x0A));
    }

    void workflowsFillTheWindow() {
        Session s(0, 0, 0);
        s.flows->writeSystem();
        QVERIFY(s.device->isAnswerPending());
        s.flows->writeFuel();
        QCOMPARE(s.link->written.size(), 1);
        QCOMPARE(s.heads(), (QStringList{"6:110100", "6:080100"}));
        s.link->deliverNow(QByteArray::fromHex("a5a506000600118100000100") + QByteArray(2, '\0'));
        QCOMPARE(s.heads(), (QStringList{"6:110100", "6:080100"}));
        QCOMPARE(s.link->written.size(), 2);
        // A wider window puts a request on the line while others are owed.
        s.device->setWindow(Device::DefaultWindow);
        s.flows->writeSystem();
        QCOMPARE(s.link->written.size(), 3);
    }
};

QTEST_GUILESS_MAIN(tst_Device)
#include "tst_device.moc"
