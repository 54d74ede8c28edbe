#include "FakeLink.h"
#include "SectionsFixture.h"

#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/UNPProtocol.h"

#include <QtTest>

#include <functional>

using Flow = std::function<void(DeviceWorkflows &)>;
Q_DECLARE_METATYPE(Flow)

namespace {

// "type:code op parameter" of a frame, e.g. "6:83 02 00".
QString headOf(const QByteArray &frame) {
    return QStringLiteral("%1:%2")
        .arg(quint8(frame.at(proto::Frame::TypeOffset)))
        .arg(QString::fromLatin1(frame.mid(proto::Frame::PayloadOffset, 3).toHex(' ')));
}

struct Bench {
    QObject owner;
    Device *device;
    FakeLink *link = new FakeLink;
    DeviceWorkflows *flows;

    Bench(int analog = 3, int logic = 2, int servers = 1)
        : device(new Device(makeConfiguration(&owner, analog, logic, servers), &owner))
        , flows(new DeviceWorkflows(device, &owner)) {
        device->setResponseInterval(3600 * 1000);
        link->linkState = Connection::Connecting; // sent frames arm no timer
        device->setLink(link);
    }
    // Frames in the order they would reach the device: the ones already written, then the queue.
    QStringList heads() const {
        QStringList out;
        for (const QByteArray &f : link->written + device->protocol()->queue())
            out << headOf(f);
        return out;
    }
};

} // namespace

#define ROW(name, call, analog, logic, servers, ...)                                                         \
    QTest::newRow(name) << Flow([](DeviceWorkflows &w) { w.call; }) << analog << logic << servers            \
                        << QStringList {                                                                     \
        __VA_ARGS__                                                                                          \
    }

class tst_DeviceWorkflows : public QObject {
    Q_OBJECT
private slots:
    void frameOrder_data();
    void frameOrder();
    void readAllAndWriteAllDropWhatWaits();
    void pollTelemetryNeverGrowsTheQueue();
    void workflowWhileAnAnswerIsOwedOnlyQueues();
};

void tst_DeviceWorkflows::frameOrder_data() {
    QTest::addColumn<Flow>("flow");
    QTest::addColumn<int>("analog");
    QTest::addColumn<int>("logic");
    QTest::addColumn<int>("servers");
    QTest::addColumn<QStringList>("heads");

#define READ_ALL                                                                                             \
    "6:91 01 00", "6:83 02 00", "6:83 03 00", "6:84 03 00", "6:84 04 00", "6:90 01 00", "6:8c 02 00",        \
        "6:8d 02 00", "6:88 01 00", "6:8e 01 00"
#define WRITE_FIXED                                                                                          \
    "6:03 03 00", "6:03 02 00", "6:04 03 00", "6:04 03 01", "6:04 04 00", "6:04 04 01", "6:08 01 00",        \
        "6:11 01 00"
    ROW("read all", readAll(), 3, 2, 1, READ_ALL);
    ROW("read all with empty lists still reads every section", readAll(), 0, 0, 0, READ_ALL);
    ROW("write all", writeAll(), 3, 2, 2, WRITE_FIXED, "6:0c 02 00", "6:0c 02 01", "6:0c 02 02", "6:0d 02 00",
        "6:0d 02 01", "6:10 01 00", "6:10 01 01");
    ROW("write all without lists writes only the fixed sections", writeAll(), 0, 0, 0, WRITE_FIXED);
    ROW("identity", readIdentity(), 3, 2, 1, "6:81 01 00", "6:81 02 00");
    ROW("clear memory", clearMemory(), 3, 2, 1, "7:01 03 00");
    ROW("reset settings", resetSettings(), 3, 2, 1, "7:01 03 00");
    ROW("login", login(1), 3, 2, 1, "7:01 01 00");
    ROW("change password", changePassword(4321), 3, 2, 1, "6:02 01 00");
    ROW("firmware-update mode", enterFirmwareUpdate(), 3, 2, 1, "7:01 02 00");
    ROW("apply system", writeSystem(), 3, 2, 1, "6:11 01 00");
    ROW("apply navigation", writeNavigation(), 3, 2, 1, "6:03 03 00", "6:03 02 00");
    ROW("apply GSM", writeGsm(), 3, 2, 1, "6:04 03 00", "6:04 03 01", "6:04 04 00", "6:04 04 01");
    ROW("apply servers", writeServers(), 3, 2, 3, "6:10 01 00", "6:10 01 01", "6:10 01 02");
    ROW("apply analog inputs", writeAnalogInputs(), 2, 2, 1, "6:0c 02 00", "6:0c 02 01");
    ROW("apply logic inputs", writeLogicInputs(), 3, 2, 1, "6:0d 02 00", "6:0d 02 01");
    ROW("apply fuel", writeFuel(), 3, 2, 1, "6:08 01 00");
    ROW("apply output parameters", writeOutputParameters(0x0E, 0x05), 3, 2, 1, "7:0e 05 00");
    ROW("set outputs", setOutputs(), 3, 2, 1, "7:02 09 00");
    ROW("set one output", setOutput(1, 3), 3, 2, 1, "6:0e 01 03");
    ROW("telemetry poll", pollTelemetry(), 3, 2, 1, "7:82 0a 00", "7:82 09 00", "7:82 0b 00", "7:82 0c 00",
        "7:82 0e 00", "7:82 0f 00", "7:82 10 00", "7:82 11 00", "7:82 12 00", "7:82 13 00", "7:82 14 00",
        "7:82 15 00", "7:82 16 00", "7:82 17 00", "7:82 18 00");
}

void tst_DeviceWorkflows::frameOrder() {
    QFETCH(Flow, flow);
    QFETCH(int, analog);
    QFETCH(int, logic);
    QFETCH(int, servers);
    QFETCH(QStringList, heads);
    Bench b(analog, logic, servers);
    flow(*b.flows);
    QCOMPARE(b.heads(), heads);
    QCOMPARE(b.link->written.size(), 1); // the queue was started
}

void tst_DeviceWorkflows::readAllAndWriteAllDropWhatWaits() {
    Bench b;
    b.device->protocol()->readTelemetryClock();
    b.device->protocol()->readTelemetrySim();
    b.flows->readAll();
    QCOMPARE(b.heads().size(), 10);
    QCOMPARE(b.heads().first(), QStringLiteral("6:91 01 00"));
    b.link->written.clear();
    b.flows->writeAll();
    QCOMPARE(b.heads().first(), QStringLiteral("6:03 03 00"));
    QVERIFY(!b.heads().contains(QStringLiteral("6:83 02 00")));
}

void tst_DeviceWorkflows::pollTelemetryNeverGrowsTheQueue() {
    Bench b;
    // The device is slow: nothing is answered and the link is not writable, so every frame stays queued.
    b.device->setLink(nullptr);
    QCOMPARE(b.flows->pollTelemetry(), 15);
    for (int i = 0; i < 100; ++i)
        QCOMPARE(b.flows->pollTelemetry(), 0);
    QCOMPARE(b.device->protocol()->queueSize(), 15);
    // Once a request has gone out it may be asked for again.
    b.device->protocol()->dropFirst();
    QCOMPARE(b.flows->pollTelemetry(), 1);
    QCOMPARE(b.device->protocol()->queue().last(), proto::UNPProtocol::telemetryFrame(0x0A));
}

void tst_DeviceWorkflows::workflowWhileAnAnswerIsOwedOnlyQueues() {
    Bench b(0, 0, 0);
    b.link->linkState = Connection::Connected;
    b.flows->writeSystem();
    QVERIFY(b.device->isAnswerPending());
    b.flows->writeFuel();
    QCOMPARE(b.link->written.size(), 1);
    QCOMPARE(b.heads(), (QStringList{"6:11 01 00", "6:08 01 00"}));
    b.link->deliverNow(QByteArray::fromHex("a5a506000600118100000100") + QByteArray(2, '\0'));
    QCOMPARE(b.heads(), (QStringList{"6:11 01 00", "6:08 01 00"}));
    QCOMPARE(b.link->written.size(), 2);
}

QTEST_GUILESS_MAIN(tst_DeviceWorkflows)
#include "tst_deviceworkflows.moc"
