#include "tests/support/DeviceProbe.h"
#include "tests/support/FakeLink.h"
#include "tests/support/LogCapture.h"
#include "tests/support/SectionsFixture.h"

#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/Frame.h"
#include "protocol/SessionController.h"
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
    return proto::Frame::build(6, QByteArray(1, char(code)) + char(operation | 0x80) +
                                      QByteArray::fromHex("00000100"));
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
    // Frames in the order they would reach the device, the ones already written first, as "type:code op
    // parameter" (e.g. "6:830200").
    QStringList heads() const {
        QStringList out;
        for (const QByteArray &f : link->written + protocol()->queue())
            out << QString::number(f.at(proto::Frame::TypeOffset)) + ':' +
                       QString::fromLatin1(f.mid(proto::Frame::PayloadOffset, 3).toHex());
        return out;
    }
};

// A device in a few lines: a password it asks for, a blocked state, and answers that can go missing.
class ScriptedLink : public FakeLink {
    Q_OBJECT
public:
    quint32 password = 0;
    bool loggedIn = false;
    bool blocked = false;
    bool silent = false;
    // Answers every access block of the GSM section with the status of SIM 1 (a stale status on the line).
    bool echoFirstSim = false;
    int loginDelayMs = 0;
    int dataDelayMs = 0;
    // Counted into the test's own variable: the session may delete the link before the check.
    int *logins = nullptr;

    qint64 write(const QByteArray &bytes) override {
        written << bytes;
        const quint8 type = quint8(bytes.at(proto::Frame::TypeOffset));
        QByteArray p = bytes.mid(proto::Frame::PayloadOffset, 4).leftJustified(4, '\0');
        const bool login = type == proto::CommandPacketType && p.at(0) == 1 && p.at(1) == 1;
        if (login && logins)
            ++*logins;
        if (silent)
            return bytes.size();
        quint16 status = UNPParcer::Executed;
        if (blocked)
            status = UNPParcer::Blocked;
        else if (login)
            status = (loggedIn = bytes.mid(proto::Frame::PayloadOffset + 4, 4) ==
                                 QByteArray::fromRawData(reinterpret_cast<const char *>(&password), 4))
                         ? UNPParcer::Executed
                         : UNPParcer::WrongPassword;
        else if (password && !loggedIn)
            status = UNPParcer::AuthorisationNeeded;
        else if ((quint8(p.at(0)) & 0x80) || (type == proto::CommandPacketType && quint8(p.at(0)) == 0x82)) {
            const QByteArray answer = proto::Frame::build(type, p + QByteArray(4, '\0'));
            QTimer::singleShot(dataDelayMs, this, [this, answer] { deliverNow(answer); });
            return bytes.size();
        }
        if (echoFirstSim && p.at(0) == 4 && p.at(1) == 3)
            p[2] = 0;
        p[1] = char(quint8(p.at(1)) | 0x80);
        const QByteArray answer =
            proto::Frame::build(type, p + QByteArray(1, char(status)) + QByteArray(1, '\0'));
        QTimer::singleShot(login ? loginDelayMs : 0, this, [this, answer] { deliverNow(answer); });
        return bytes.size();
    }
};

using State = SessionController::State;

} // namespace

// The device's requests on the line, the workflows that queue them and the session controller above them.
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
        const auto row = [](const QString &name, const L &reads, bool on, const L &accepted) {
            QTest::newRow(qPrintable(name)) << reads << on << accepted;
        };
        for (bool on : {true, false}) {
            const QString mode = on ? " (joining)" : " (one chunk, one frame)";
            row("N+8 accepted" + mode, {Executed}, on, {payload});
            row("N+20 accepted, surplus cut" + mode, {Executed + QByteArray(12, 'x')}, on, {payload});
            row("N+7 not parsed" + mode, {Executed.chopped(1)}, on, {});
            row("N+7 then a whole fresh answer" + mode, {Executed.chopped(1), other}, on, {otherPayload});
            row("two whole answers" + mode, {Executed, other}, on, {payload, otherPayload});
            row("loader packet never reaches the parser" + mode, {loader}, on, {});
        }
        row("N+7 completed by the next read (joining)", {Executed.chopped(1), Executed.right(1)}, true,
            {payload});
        row("N+7 and its last byte (one chunk, one frame)", {Executed.chopped(1), Executed.right(1)}, false,
            {});
        row("split after the header (joining)", {Executed.left(6), Executed.mid(6)}, true, {payload});
        row("split in three (joining)", {Executed.left(3), Executed.mid(3, 5), Executed.mid(8)}, true,
            {payload});
        // Without markers the head is not held back, so the tail stands alone (and announces length 0).
        row("garbage head is not held (joining)", {QByteArray::fromHex("0102ff00"), Executed.mid(4)}, true,
            {QByteArray()});
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
        QTest::addColumn<Flow>("flow");
        QTest::addColumn<QString>("line");
        QTest::newRow("login") << Flow([](DeviceWorkflows &w) { w.login(0x12345678); })
                               << "Command a5a50700080001010000************";
        QTest::newRow("password change") << Flow([](DeviceWorkflows &w) { w.changePassword(0x0A0B0C0D); })
                                         << "Command a5a50600080002010000************";
        QTest::newRow("reset settings is not masked")
            << Flow([](DeviceWorkflows &w) { w.resetSettings(); }) << "Command a5a5070006000103000000000003";
    }

    void passwordMasked() {
        QFETCH(Flow, flow);
        QFETCH(QString, line);
        Session s;
        LogCapture capture;
        flow(*s.flows);
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

    // The session's state machine against a scripted device behind a fake link: every row starts a session,
    // lets the device behave as the row says and compares what the session reported, in order.
    void session_data() {
        QTest::addColumn<quint32>("devicePassword");
        QTest::addColumn<quint32>("startupPassword");
        QTest::addColumn<QList<quint32>>("typed"); // on each question, in order; none left: give up
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<int>("logins");
        const auto row = [](const char *name, quint32 device, quint32 startup, const QList<quint32> &typed,
                            const char *script, const QString &events, int logins) {
            QTest::newRow(name) << device << startup << typed << QString(script) << events.split(' ')
                                << logins;
        };
        const QString identified = "Connecting Identifying identified Ready";
        row("plain", 0, 0, {}, "", identified, 0);
        // The start-up password goes once, without a question, and the identity read that was refused
        // before the login is sent again.
        row("password at start", 1234, 1234, {}, "",
            "Connecting Identifying PasswordRequired accepted Identifying identified Ready", 1);
        row("wrong then right", 1234, 1111, {1234}, "",
            "Connecting Identifying PasswordRequired rejected asked accepted Identifying identified Ready",
            2);
        // A second password typed before the first one's answer: the late refusal of the first means nothing.
        row("replaced login answer ignored", 1234, 0, {1111, 1234}, "retype",
            "Connecting Identifying PasswordRequired asked accepted Identifying identified Ready", 2);
        row("password abandoned", 1234, 0, {}, "",
            "Connecting Identifying PasswordRequired asked job:PasswordAbandoned Disconnected", 0);
        row("blocked", 0, 0, {}, "blocked", "Connecting Identifying Ready job:Blocked blocked", 0);
        // Blocked later, found by two telemetry rounds: said once.
        row("blocked while polled", 0, 0, {}, "polled", identified + " job:Blocked blocked job:Blocked", 0);
        row("link error", 0, 0, {}, "error", identified + " Busy job:LinkLost Lost failed:DeviceGone", 0);
        row("link closed", 0, 0, {}, "closed", identified + " Busy job:LinkLost Lost failed:LinkClosed", 0);
        row("four time-outs", 0, 0, {}, "silent", identified + " Busy Lost lost job:LinkLost Disconnected",
            0);
        row("silent, then back", 0, 0, {}, "back",
            identified + " Lost lost job:Cancelled Ready restored job:Done", 0);
        // A telemetry round is replaced by the full read: none of its requests follows the read's first one.
        row("read all clears the queue", 0, 0, {}, "telemetry",
            identified + " job:Cancelled Busy Ready job:Done", 0);
        // The status of SIM 1's block confirms SIM 1 only, however often it comes.
        row("status of another block", 0, 0, {}, "echo", identified + " Busy Ready job:Done", 0);
    }

    void session() {
        QFETCH(quint32, devicePassword);
        QFETCH(quint32, startupPassword);
        QFETCH(QList<quint32>, typed);
        QFETCH(QString, script);
        QFETCH(QStringList, events);
        QFETCH(int, logins);

        auto *cfg = makeConfiguration(this);
        SessionController session(cfg);
        auto *link = new ScriptedLink;
        int loginCount = 0;
        link->logins = &loginCount;
        link->password = devicePassword;
        link->blocked = script == "blocked";
        link->echoFirstSim = script == "echo";
        link->loginDelayMs = script == "retype" ? 10 : 0;
        link->dataDelayMs = script == "telemetry" ? 5 : 0;
        session.setLinkFactory([link](const SessionController::Settings &) { return link; });
        QStringList log;
        JobResult last;
        connect(&session, &SessionController::stateChanged, this, [&](State s) {
            log << QString::fromLatin1(QMetaEnum::fromType<State>().valueToKey(int(s)));
        });
        connect(&session, &SessionController::identified, this, [&] { log << "identified"; });
        connect(&session, &SessionController::passwordAccepted, this, [&] { log << "accepted"; });
        connect(&session, &SessionController::passwordRejected, this, [&](const QString &text) {
            QCOMPARE(text, QStringLiteral("....Введен неправильный пароль"));
            log << "rejected";
        });
        connect(&session, &SessionController::passwordRequested, this, [&] {
            log << "asked";
            if (typed.isEmpty())
                return session.abandonLogin();
            session.submitPassword(typed.takeFirst());
            if (script == "retype" && !typed.isEmpty())
                QTimer::singleShot(2, &session, [&] { session.submitPassword(typed.takeFirst()); });
        });
        // The window's box opens its own event loop here: nothing may be left waiting for an answer.
        connect(&session, &SessionController::deviceBlocked, this, [&] {
            log << (session.findChild<Device *>()->isAnswerPending() ? "blocked,waiting" : "blocked");
        });
        connect(&session, &SessionController::connectionLost, this, [&] {
            log << "lost";
            if (script != "back")
                return session.disconnectDevice();
            link->silent = false;
            session.cancelJob();
            QVERIFY(!session.readAll() && session.telemetryRound()); // only telemetry probes a silent device
        });
        connect(&session, &SessionController::connectionRestored, this, [&] { log << "restored"; });
        connect(&session, &SessionController::linkFailed, this, [&](const LinkFailure &f) {
            log << QStringLiteral("failed:") +
                       (f.error == LinkError::DeviceGone ? "DeviceGone" : "LinkClosed");
        });
        connect(&session, &SessionController::jobFinished, this, [&](const JobResult &r) {
            static const char *const ends[] = {"Done",          "LinkLost", "Blocked",  "PasswordAbandoned",
                                               "WrongPassword", "Deadline", "Cancelled"};
            if (r.kind != JobResult::Kind::Identity || r.end != JobResult::End::Done)
                log << QStringLiteral("job:") + ends[int(r.end)];
            last = r;
        });

        SessionController::Settings settings;
        settings.portName = "fake";
        settings.hasPassword = startupPassword != 0;
        settings.password = startupPassword;
        settings.responseIntervalMs = 20;
        settings.jobRounds = 1;
        session.connectDevice(settings);
        QTRY_VERIFY(session.state() == State::Ready || session.state() == State::Disconnected);
        QCOMPARE(loginCount, logins);
        if (script == "back") {
            link->silent = true;
            QVERIFY(session.telemetryRound());
        } else if (script == "error" || script == "closed" || script == "silent") {
            link->silent = true;
            QVERIFY(session.readAll());
            if (script == "error")
                emit link->error(Connection::SerialError, 9);
            else if (script == "closed")
                emit link->disconnected();
        } else if (script == "polled") {
            link->blocked = true;
            for (int round = 0; round < 2; ++round) {
                QVERIFY(session.telemetryRound());
                QTRY_VERIFY(!session.isJobRunning());
            }
        } else if (script == "telemetry") {
            QVERIFY(session.telemetryRound());
            QCoreApplication::processEvents(); // the round's requests go out, their answers still to come
            QVERIFY(session.readAll());
            const int readStart = link->written.size();
            QTRY_VERIFY(!session.isJobRunning());
            for (const QByteArray &frame : link->written.mid(readStart))
                QVERIFY(quint8(frame.at(proto::Frame::PayloadOffset)) != 0x82);
        } else if (script == "echo") {
            QVERIFY(session.writeSection(kd::keys::Gsm));
            QTRY_VERIFY(!session.isJobRunning());
            QCOMPARE(last.labels(JobResult::Outcome::Confirmed),
                     QStringList({"GSM (провайдер SIM1)", "GSM (роуминг SIM1)", "GSM (роуминг SIM2)"}));
            QCOMPARE(last.labels(JobResult::Outcome::NotAnswered), QStringList{"GSM (провайдер SIM2)"});
        }
        QTRY_COMPARE(log, events);
    }
};

QTEST_GUILESS_MAIN(tst_Device)
#include "tst_device.moc"
