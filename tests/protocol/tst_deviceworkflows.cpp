#include "tests/support/DeviceProbe.h"
#include "tests/support/FakeLink.h"
#include "tests/support/SectionsFixture.h"

#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/UNPProtocol.h"

#include <QtTest>

#include <functional>

using Flow = std::function<void(DeviceWorkflows &)>;
Q_DECLARE_METATYPE(Flow)

namespace {

// "type:code op parameter" of a frame, e.g. "6:830200".
QString headOf(const QByteArray &frame) {
    return QStringLiteral("%1:%2")
        .arg(quint8(frame.at(proto::Frame::TypeOffset)))
        .arg(QString::fromLatin1(frame.mid(proto::Frame::PayloadOffset, 3).toHex()));
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
        for (const QByteArray &f : link->written + DeviceProbe::protocol(*device)->queue())
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
        Bench b(analog, logic, servers);
        flow(*b.flows);
        QCOMPARE(b.heads(), heads);
        QCOMPARE(b.link->written.size(), 1); // the queue was started
    }

    void readAllAndWriteAllDropWhatWaits() {
        Bench b;
        DeviceProbe::protocol(*b.device)->readTelemetryClock();
        DeviceProbe::protocol(*b.device)->readTelemetrySim();
        b.flows->readAll();
        QCOMPARE(b.heads().size(), 10);
        QCOMPARE(b.heads().first(), QStringLiteral("6:910100"));
        b.link->written.clear();
        b.flows->writeAll();
        QCOMPARE(b.heads().first(), QStringLiteral("6:030300"));
        QVERIFY(!b.heads().contains(QStringLiteral("6:830200")));
    }

    void pollTelemetryNeverGrowsTheQueue() {
        Bench b;
        // The device is slow: nothing is answered and the link is not writable, so every frame stays queued.
        b.device->setLink(nullptr);
        QCOMPARE(b.flows->pollTelemetry(), 15);
        for (int i = 0; i < 100; ++i)
            QCOMPARE(b.flows->pollTelemetry(), 0);
        QCOMPARE(DeviceProbe::protocol(*b.device)->queueSize(), 15);
        // Once a request has gone out it may be asked for again.
        DeviceProbe::protocol(*b.device)->dropFirst();
        QCOMPARE(b.flows->pollTelemetry(), 1);
        QCOMPARE(DeviceProbe::protocol(*b.device)->queue().last(), proto::UNPProtocol::telemetryFrame(0x0A));
    }

    void workflowsFillTheWindow() {
        Bench b(0, 0, 0);
        b.link->linkState = Connection::Connected;
        b.device->setWindow(1);
        b.flows->writeSystem();
        QVERIFY(b.device->isAnswerPending());
        b.flows->writeFuel();
        QCOMPARE(b.link->written.size(), 1);
        QCOMPARE(b.heads(), (QStringList{"6:110100", "6:080100"}));
        b.link->deliverNow(QByteArray::fromHex("a5a506000600118100000100") + QByteArray(2, '\0'));
        QCOMPARE(b.heads(), (QStringList{"6:110100", "6:080100"}));
        QCOMPARE(b.link->written.size(), 2);
        // A wider window puts a request on the line while others are owed.
        b.device->setWindow(Device::DefaultWindow);
        b.flows->writeSystem();
        QCOMPARE(b.link->written.size(), 3);
    }
};

QTEST_GUILESS_MAIN(tst_DeviceWorkflows)
#include "tst_deviceworkflows.moc"
