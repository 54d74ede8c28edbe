#include "FakeLink.h"
#include "SectionsFixture.h"

#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/UNPProtocol.h"

#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(std::function<void(DeviceWorkflows &)>)

namespace {

using Flow = std::function<void(DeviceWorkflows &)>;

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

    Bench(int analog, int logic, int servers)
        : device(new Device(makeConfiguration(&owner, analog, logic, servers), &owner))
        , flows(new DeviceWorkflows(device, &owner)) {
        device->setResponseInterval(3600 * 1000);
        link->linkState = Connection::Connecting; // sent frames arm no timer
        device->setLink(link);
    }
    // Frames in the order they would reach the device: the one already written, then the queue.
    QStringList heads() const {
        QStringList out;
        for (const QByteArray &f : link->written)
            out << headOf(f);
        for (const QByteArray &f : device->protocol()->queue())
            out << headOf(f);
        return out;
    }
};

} // namespace

class tst_DeviceWorkflows : public QObject {
    Q_OBJECT
private slots:
    void frameOrder_data();
    void frameOrder();
    void readAllAndWriteAllDropWhatWaits();
    void pollTelemetryNeverGrowsTheQueue();
    void changePasswordIsRemembered();
    void workflowWhileAnAnswerIsOwedOnlyQueues();
};

void tst_DeviceWorkflows::frameOrder_data() {
    QTest::addColumn<Flow>("flow");
    QTest::addColumn<int>("analog");
    QTest::addColumn<int>("logic");
    QTest::addColumn<int>("servers");
    QTest::addColumn<QStringList>("heads");

    const QStringList readAll{"6:91 01 00", "6:83 02 00", "6:83 03 00", "6:84 03 00", "6:84 04 00",
                              "6:90 01 00", "6:8c 02 00", "6:8d 02 00", "6:88 01 00", "6:8e 01 00"};
    QTest::newRow("read all") << Flow([](DeviceWorkflows &w) { w.readAll(); }) << 3 << 2 << 1 << readAll;
    QTest::newRow("read all with empty lists still reads every section")
        << Flow([](DeviceWorkflows &w) { w.readAll(); }) << 0 << 0 << 0 << readAll;

    const QStringList writeFixed{"6:03 03 00", "6:03 02 00", "6:04 03 00", "6:04 03 01",
                                 "6:04 04 00", "6:04 04 01", "6:08 01 00", "6:11 01 00"};
    QTest::newRow("write all") << Flow([](DeviceWorkflows &w) {
        w.writeAll();
    }) << 3 << 2 << 2 << writeFixed + QStringList{"6:0c 02 00", "6:0c 02 01", "6:0c 02 02", "6:0d 02 00",
                                                  "6:0d 02 01", "6:10 01 00", "6:10 01 01"};
    QTest::newRow("write all without lists writes only the fixed sections")
        << Flow([](DeviceWorkflows &w) { w.writeAll(); }) << 0 << 0 << 0 << writeFixed;

    QTest::newRow("identity") << Flow([](DeviceWorkflows &w) { w.readIdentity(); }) << 3 << 2 << 1
                              << QStringList{"6:81 01 00", "6:81 02 00"};
    QTest::newRow("clear memory") << Flow([](DeviceWorkflows &w) { w.clearMemory(); }) << 3 << 2 << 1
                                  << QStringList{"7:01 03 00"};
    QTest::newRow("reset settings") << Flow([](DeviceWorkflows &w) { w.resetSettings(); }) << 3 << 2 << 1
                                    << QStringList{"7:01 03 00"};
    QTest::newRow("login") << Flow([](DeviceWorkflows &w) { w.login(1); }) << 3 << 2 << 1
                           << QStringList{"7:01 01 00"};
    QTest::newRow("firmware-update mode") << Flow([](DeviceWorkflows &w) { w.enterFirmwareUpdate(); }) << 3
                                          << 2 << 1 << QStringList{"7:01 02 00"};
    QTest::newRow("apply system") << Flow([](DeviceWorkflows &w) { w.writeSystem(); }) << 3 << 2 << 1
                                  << QStringList{"6:11 01 00"};
    QTest::newRow("apply navigation") << Flow([](DeviceWorkflows &w) { w.writeNavigation(); }) << 3 << 2 << 1
                                      << QStringList{"6:03 03 00", "6:03 02 00"};
    QTest::newRow("apply GSM") << Flow([](DeviceWorkflows &w) { w.writeGsm(); }) << 3 << 2 << 1
                               << QStringList{"6:04 03 00", "6:04 03 01", "6:04 04 00", "6:04 04 01"};
    QTest::newRow("apply servers") << Flow([](DeviceWorkflows &w) { w.writeServers(); }) << 3 << 2 << 3
                                   << QStringList{"6:10 01 00", "6:10 01 01", "6:10 01 02"};
    QTest::newRow("apply analog inputs") << Flow([](DeviceWorkflows &w) { w.writeAnalogInputs(); }) << 2 << 2
                                         << 1 << QStringList{"6:0c 02 00", "6:0c 02 01"};
    QTest::newRow("apply logic inputs") << Flow([](DeviceWorkflows &w) { w.writeLogicInputs(); }) << 3 << 2
                                        << 1 << QStringList{"6:0d 02 00", "6:0d 02 01"};
    QTest::newRow("apply fuel") << Flow([](DeviceWorkflows &w) { w.writeFuel(); }) << 3 << 2 << 1
                                << QStringList{"6:08 01 00"};
    QTest::newRow("apply output parameters")
        << Flow([](DeviceWorkflows &w) { w.writeOutputParameters(0x0E, 0x05); }) << 3 << 2 << 1
        << QStringList{"7:0e 05 00"};
    QTest::newRow("set outputs") << Flow([](DeviceWorkflows &w) { w.setOutputs(); }) << 3 << 2 << 1
                                 << QStringList{"7:02 09 00"};
    QTest::newRow("set one output") << Flow([](DeviceWorkflows &w) { w.setOutput(1, 3); }) << 3 << 2 << 1
                                    << QStringList{"6:0e 01 03"};
    QTest::newRow("telemetry poll") << Flow([](DeviceWorkflows &w) {
        w.pollTelemetry();
    }) << 3 << 2 << 1 << QStringList{"7:82 0a 00", "7:82 09 00", "7:82 0b 00", "7:82 0c 00", "7:82 0e 00",
                                     "7:82 0f 00", "7:82 10 00", "7:82 11 00", "7:82 12 00", "7:82 13 00",
                                     "7:82 14 00", "7:82 15 00", "7:82 16 00", "7:82 17 00", "7:82 18 00"};
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
    Bench b(3, 2, 1);
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
    Bench b(3, 2, 1);
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

void tst_DeviceWorkflows::changePasswordIsRemembered() {
    Bench b(3, 2, 1);
    b.flows->changePassword(4321);
    QCOMPARE(b.device->lastPassword(), 4321u);
    QCOMPARE(b.heads(), QStringList{"6:02 01 00"});
}

QTEST_GUILESS_MAIN(tst_DeviceWorkflows)
#include "tst_deviceworkflows.moc"

void tst_DeviceWorkflows::workflowWhileAnAnswerIsOwedOnlyQueues() {
    Bench b(0, 0, 0);
    b.link->linkState = Connection::Connected;
    b.flows->writeSystem();
    QCOMPARE(b.link->written.size(), 1);
    QVERIFY(b.device->isAnswerPending());

    b.flows->writeFuel();
    QCOMPARE(b.link->written.size(), 1);
    QCOMPARE(b.heads(), (QStringList{"6:11 01 00", "6:08 01 00"}));

    b.link->deliverNow(QByteArray::fromHex("a5a506000600118100000100") + QByteArray(2, '\0'));
    QCOMPARE(b.link->written.size(), 2);
    QCOMPARE(headOf(b.link->written.last()), QStringLiteral("6:08 01 00"));
}
