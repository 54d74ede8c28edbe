#include "tests/support/SectionsFixture.h"

#include "protocol/UNPProtocol.h"

#include <QtTest>

#include <functional>

using proto::UNPProtocol;
using Op = std::function<void(UNPProtocol &)>;
Q_DECLARE_METATYPE(Op)

// One row per request: the call and the frames it queues. "prefix+N" is a frame starting with `prefix`
// followed by N body bytes from the section's encoder and the two checksum bytes.
#define ROW(name, call, ...)                                                                                 \
    QTest::newRow(name) << Op([](UNPProtocol &p) { p.call; }) << QStringList {                               \
        __VA_ARGS__                                                                                          \
    }

static kd::Configuration *oneSimGsm(QObject *owner) {
    auto *cfg = new kd::Configuration(owner);
    cfg->registerItem(QLatin1String(kd::keys::Gsm), new kd::GSMConfiguration(1, cfg));
    return cfg;
}

class tst_UNPProtocol : public QObject {
    Q_OBJECT
private slots:
    void requestFrames_data() {
        QTest::addColumn<Op>("op");
        QTest::addColumn<QStringList>("frames");
        ROW("readNavigation: block 3 first", readNavigation(), "a5a506000400830300008103",
            "a5a506000400830200008102");
        ROW("readNavigationBlock2", readNavigationBlock2(), "a5a506000400830200008102");
        ROW("readNavigationBlock3", readNavigationBlock3(), "a5a506000400830300008103");
        ROW("readFuel", readFuel(), "a5a506000400880100008a01");
        ROW("readCode9", readCode9(), "a5a506000400890100008b01");
        ROW("readAnalogInputs", readAnalogInputs(), "a5a5060004008c0200008e02");
        ROW("readLogicInputs", readLogicInputs(), "a5a5060004008d0200008f02");
        ROW("readOutputs", readOutputs(), "a5a5060004008e0100008c01");
        ROW("readDeviceInfo(1)", readDeviceInfo(1), "a5a506000400810100008301");
        ROW("readDeviceInfo(2)", readDeviceInfo(2), "a5a506000400810200008302");
        ROW("readServers", readServers(), "a5a506000400900100009201");
        ROW("readGsm: block 3 of SIM 1, then block 4", readGsm(), "a5a506000400840300008603",
            "a5a506000400840400008604");
        ROW("readGsmBlock3(1)", readGsmBlock3(1), "a5a506000400840301008703");
        ROW("readGsmBlock4", readGsmBlock4(), "a5a506000400840400008604");
        ROW("readSystem", readSystem(), "a5a506000400910100009301");
        ROW("telemetry requests", readTelemetryDeviceState(); p.readTelemetry09(); p.readTelemetryClock();
            p.readTelemetry0C(); p.readTelemetryNavReceivers(); p.readTelemetryServers();
            p.readTelemetryNavSummary(); p.readTelemetryAnalogInputs(); p.readTelemetryLogicInputs();
            p.readTelemetryFuel(); p.readTelemetry14(); p.readTelemetryState21(); p.readTelemetryState22();
            p.readTelemetrySim();
            p.readTelemetryGsmRegistration(), "a5a507000400820a0000810a", "a5a507000400820900008109",
            "a5a507000400820b0000810b", "a5a507000400820c0000810c", "a5a507000400820e0000810e",
            "a5a507000400820f0000810f", "a5a507000400821000008110", "a5a507000400821100008111",
            "a5a507000400821200008112", "a5a507000400821300008113", "a5a507000400821400008114",
            "a5a507000400821500008115", "a5a507000400821600008116", "a5a507000400821700008117",
            "a5a507000400821800008118");
        ROW("enterFirmwareUpdate", enterFirmwareUpdate(), "a5a507000400010200000202");
        ROW("login", login(0x12345678), "a5a50700080001010000785634124245");
        ROW("changePassword", changePassword(0x0A0B0C0D), "a5a506000800020100000d0c0b0a0a07");
        ROW("resetSettings: argument 0", resetSettings(), "a5a5070006000103000000000003");
        ROW("clearMemory: argument 1", clearMemory(), "a5a5070006000103000001000103");
        ROW("writeNavigation: block 3 first", writeNavigation(), "a5a50600080003030000+4",
            "a5a506000a0003020000+6");
        ROW("writeGsm: (3,0) (3,1) (4,0) (4,1)", writeGsm(), "a5a50600640004030000+96",
            "a5a50600640004030100+96", "a5a50600160004040000+18", "a5a50600160004040100+18");
        ROW("writeFuel", writeFuel(), "a5a506001e0008010000+26");
        ROW("writeCode9: no body", writeCode9(), "a5a506000400090100000b01");
        ROW("writeAnalogInput(2)", writeAnalogInput(2), "a5a506000e000c020200+10");
        ROW("writeLogicInput(1)", writeLogicInput(1), "a5a5060006000d020100+2");
        ROW("setOutputs: command packet", setOutputs(), "a5a50700080002090000+4");
        ROW("writeServer(0)", writeServer(0), "a5a506002a0010010000+38");
        ROW("sendText", sendText(8, QStringLiteral("863071014478127")),
            "a5a50800140038363330373130313434373831323700000000001538");
        ROW("writeSystem", writeSystem(), "a5a50600080011010000+4");
        ROW("setOutput(1, 2)", setOutput(1, 2), "a5a5060006000e01020001000d01");
        ROW("writeOutputParameters: caller's head, command packet", writeOutputParameters(0x0E, 0x05),
            "a5a5070008000e050000+4");
        // Writes of a section that is not there, or of an element beyond the section's, send nothing.
        ROW("writes without sections", setConfiguration(nullptr); p.writeNavigation(); p.writeGsm();
            p.writeFuel(); p.writeSystem(); p.writeAnalogInput(0); p.setOutputs());
        ROW("writes of elements out of range", writeAnalogInput(3); p.writeAnalogInput(-1);
            p.writeLogicInput(2); p.writeServer(1));
        ROW("writeGsm, one SIM: its two blocks, no empty ones for the second",
            setConfiguration(oneSimGsm(&p));
            p.writeGsm(), "a5a50600640004030000+96", "a5a50600160004040000+18");
    }

    void requestFrames() {
        QFETCH(Op, op);
        QFETCH(QStringList, frames);
        QObject owner;
        UNPProtocol protocol(makeConfiguration(&owner, 3, 2, 1));
        op(protocol);
        QCOMPARE(protocol.queueSize(), frames.size());
        for (int i = 0; i < frames.size(); ++i) {
            const QByteArray got = protocol.queue().at(i);
            const QStringList parts = frames.at(i).split(QLatin1Char('+'));
            const QByteArray prefix = QByteArray::fromHex(parts.at(0).toLatin1());
            const int size = parts.size() == 1 ? prefix.size() : prefix.size() + parts.at(1).toInt() + 2;
            QVERIFY2(got.startsWith(prefix) && got.size() == size, got.toHex().constData());
            QVERIFY(proto::Frame::explain(got).checksumOk);
        }
    }

    void writesCarryTheSectionEncoders() {
        QObject owner;
        kd::Configuration *cfg = makeConfiguration(&owner);
        auto *system = section<kd::SystemConfiguration>(cfg, kd::keys::System);
        system->value()->setParkingMin(5);
        auto *out = section<kd::OutputConfiguration>(cfg, kd::keys::Output);
        out->value()->setStates({1, 0, 1, 1});
        out->value()->setOutNum(3);
        UNPProtocol protocol(cfg);
        protocol.writeSystem();
        protocol.setOutputs();
        protocol.writeOutputParameters(0x0E, 0x05);
        protocol.writeServer(0);
        const auto body = [&](int i) {
            return protocol.queue().at(i).mid(proto::Frame::PayloadOffset).chopped(2);
        };
        QCOMPARE(body(0), system->encode());
        QCOMPARE(body(1).toHex(), QByteArray("0209000001000101"));
        QCOMPARE(body(2), out->encodeParameters(0x0E, 0x05));
        QCOMPARE(body(3), section<kd::ServerConfiguration>(cfg, kd::keys::Server)->encode(0));
    }

    void queueOperations() {
        const QByteArray system = QByteArray::fromHex("a5a506000400910100009301");
        const QByteArray fuel = QByteArray::fromHex("a5a506000400880100008a01");
        UNPProtocol protocol;
        QVERIFY(!protocol.peekNext());
        protocol.readSystem();
        protocol.readFuel();
        QVERIFY(protocol.peekNext());
        QCOMPARE(protocol.current(), system);
        QCOMPARE(protocol.queueSize(), 2); // peeking leaves the frame queued
        // The current packet (the fuel read) once more, now at the head.
        protocol.enqueueFrameFirst();
        QCOMPARE(protocol.queue(), (QList<QByteArray>{fuel, system, fuel}));
        // A text frame is built apart from the current packet.
        protocol.sendText(proto::ServerLoginPacketType, QStringLiteral("1"));
        QCOMPARE(protocol.packet().frame, fuel);
        protocol.dropFirst();
        QVERIFY(protocol.peekNext());
        QCOMPARE(protocol.current(), system);
        protocol.clearQueue();
        protocol.dropFirst();
        QCOMPARE(protocol.queueSize(), 0);
        QVERIFY(!protocol.peekNext());

        protocol.changePassword(1111);
        protocol.changePassword(2222);
        protocol.login(3333);
        QCOMPARE(protocol.lastPassword(), 2222u);
    }
};

QTEST_GUILESS_MAIN(tst_UNPProtocol)
#include "tst_unpprotocol.moc"
