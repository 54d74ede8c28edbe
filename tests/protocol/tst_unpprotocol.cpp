#include "SectionsFixture.h"

#include "protocol/UNPProtocol.h"

#include <QtTest>

#include <functional>
#include <map>

using proto::UNPProtocol;

Q_DECLARE_METATYPE(std::function<void(UNPProtocol &)>)

namespace {

using Op = std::function<void(UNPProtocol &)>;

// "full hex" must match exactly; "prefix+N" is a frame whose first bytes are `prefix`, followed by N
// body bytes taken from the section and the two checksum bytes.
bool matches(const QByteArray &frame, const QString &expected, QString *why) {
    const QStringList parts = expected.split(QLatin1Char('+'));
    const QByteArray prefix = QByteArray::fromHex(parts.at(0).toLatin1());
    if (parts.size() == 1) {
        *why = QStringLiteral("got %1").arg(QString::fromLatin1(frame.toHex()));
        return frame == prefix;
    }
    const int body = parts.at(1).toInt();
    *why = QStringLiteral("got %1").arg(QString::fromLatin1(frame.toHex()));
    return frame.startsWith(prefix) && frame.size() == prefix.size() + body + 2;
}

} // namespace

class tst_UNPProtocol : public QObject {
    Q_OBJECT
private slots:
    void requestFrames_data();
    void requestFrames();
    void writesCarryTheSectionEncoders();
    void writesWithoutConfigurationSendNothing();
    void writeOfMissingElementSendsNothing();
    void queueOperations();
    void enqueueFrameFirstGoesToTheHead();
    void sendTextIsBuiltApartFromTheCurrentPacket();
    void changePasswordKeepsTheLastValue();
};

void tst_UNPProtocol::requestFrames_data() {
    QTest::addColumn<Op>("op");
    QTest::addColumn<QStringList>("frames");

    const auto row = [](const char *name, Op op, const QStringList &frames) {
        QTest::newRow(name) << op << frames;
    };
    row("readNavigation: block 3 first", [](UNPProtocol &p) { p.readNavigation(); },
        {"a5a506000400830300008103", "a5a506000400830200008102"});
    row("readNavigationBlock2", [](UNPProtocol &p) { p.readNavigationBlock2(); },
        {"a5a506000400830200008102"});
    row("readNavigationBlock3", [](UNPProtocol &p) { p.readNavigationBlock3(); },
        {"a5a506000400830300008103"});
    row("readFuel", [](UNPProtocol &p) { p.readFuel(); }, {"a5a506000400880100008a01"});
    row("readCode9", [](UNPProtocol &p) { p.readCode9(); }, {"a5a506000400890100008b01"});
    row("readAnalogInputs", [](UNPProtocol &p) { p.readAnalogInputs(); }, {"a5a5060004008c0200008e02"});
    row("readLogicInputs", [](UNPProtocol &p) { p.readLogicInputs(); }, {"a5a5060004008d0200008f02"});
    row("readOutputs", [](UNPProtocol &p) { p.readOutputs(); }, {"a5a5060004008e0100008c01"});
    row("readDeviceInfo(1)", [](UNPProtocol &p) { p.readDeviceInfo(1); }, {"a5a506000400810100008301"});
    row("readDeviceInfo(2)", [](UNPProtocol &p) { p.readDeviceInfo(2); }, {"a5a506000400810200008302"});
    row("readServers", [](UNPProtocol &p) { p.readServers(); }, {"a5a506000400900100009201"});
    row("readGsm: block 3 of SIM 1, then block 4", [](UNPProtocol &p) { p.readGsm(); },
        {"a5a506000400840300008603", "a5a506000400840400008604"});
    row("readGsmBlock3(1)", [](UNPProtocol &p) { p.readGsmBlock3(1); }, {"a5a506000400840301008703"});
    row("readGsmBlock4", [](UNPProtocol &p) { p.readGsmBlock4(); }, {"a5a506000400840400008604"});
    row("readSystem", [](UNPProtocol &p) { p.readSystem(); }, {"a5a506000400910100009301"});
    row("readTelemetryDeviceState", [](UNPProtocol &p) { p.readTelemetryDeviceState(); },
        {"a5a507000400820a0000810a"});
    row("readTelemetry09", [](UNPProtocol &p) { p.readTelemetry09(); }, {"a5a507000400820900008109"});
    row("readTelemetryClock", [](UNPProtocol &p) { p.readTelemetryClock(); }, {"a5a507000400820b0000810b"});
    row("readTelemetry0C", [](UNPProtocol &p) { p.readTelemetry0C(); }, {"a5a507000400820c0000810c"});
    row("readTelemetryNavReceivers", [](UNPProtocol &p) { p.readTelemetryNavReceivers(); },
        {"a5a507000400820e0000810e"});
    row("readTelemetryServers", [](UNPProtocol &p) { p.readTelemetryServers(); },
        {"a5a507000400820f0000810f"});
    row("readTelemetryNavSummary", [](UNPProtocol &p) { p.readTelemetryNavSummary(); },
        {"a5a507000400821000008110"});
    row("readTelemetryAnalogInputs", [](UNPProtocol &p) { p.readTelemetryAnalogInputs(); },
        {"a5a507000400821100008111"});
    row("readTelemetryLogicInputs", [](UNPProtocol &p) { p.readTelemetryLogicInputs(); },
        {"a5a507000400821200008112"});
    row("readTelemetryFuel", [](UNPProtocol &p) { p.readTelemetryFuel(); }, {"a5a507000400821300008113"});
    row("readTelemetry14", [](UNPProtocol &p) { p.readTelemetry14(); }, {"a5a507000400821400008114"});
    row("readTelemetryState21", [](UNPProtocol &p) { p.readTelemetryState21(); },
        {"a5a507000400821500008115"});
    row("readTelemetryState22", [](UNPProtocol &p) { p.readTelemetryState22(); },
        {"a5a507000400821600008116"});
    row("readTelemetrySim", [](UNPProtocol &p) { p.readTelemetrySim(); }, {"a5a507000400821700008117"});
    row("readTelemetryGsmRegistration", [](UNPProtocol &p) { p.readTelemetryGsmRegistration(); },
        {"a5a507000400821800008118"});
    row("enterFirmwareUpdate", [](UNPProtocol &p) { p.enterFirmwareUpdate(); }, {"a5a507000400010200000202"});
    row("login", [](UNPProtocol &p) { p.login(0x12345678); }, {"a5a50700080001010000785634124245"});
    row("changePassword", [](UNPProtocol &p) { p.changePassword(0x0A0B0C0D); },
        {"a5a506000800020100000d0c0b0a0a07"});
    row("resetSettings: argument 0", [](UNPProtocol &p) { p.resetSettings(); },
        {"a5a5070006000103000000000003"});
    row("clearMemory: argument 1", [](UNPProtocol &p) { p.clearMemory(); }, {"a5a5070006000103000001000103"});
    row("writeNavigation: block 3 first", [](UNPProtocol &p) { p.writeNavigation(); },
        {"a5a50600080003030000+4", "a5a506000a0003020000+6"});
    row("writeGsm: (3,0) (3,1) (4,0) (4,1)", [](UNPProtocol &p) { p.writeGsm(); },
        {"a5a50600640004030000+96", "a5a50600640004030100+96", "a5a50600160004040000+18",
         "a5a50600160004040100+18"});
    row("writeFuel", [](UNPProtocol &p) { p.writeFuel(); }, {"a5a506001e0008010000+26"});
    row("writeCode9: no body", [](UNPProtocol &p) { p.writeCode9(); }, {"a5a506000400090100000b01"});
    row("writeAnalogInput(2)", [](UNPProtocol &p) { p.writeAnalogInput(2); }, {"a5a506000e000c020200+10"});
    row("writeLogicInput(1)", [](UNPProtocol &p) { p.writeLogicInput(1); }, {"a5a5060006000d020100+2"});
    row("setOutputs: command packet", [](UNPProtocol &p) { p.setOutputs(); }, {"a5a50700080002090000+4"});
    row("writeServer(0)", [](UNPProtocol &p) { p.writeServer(0); }, {"a5a506002a0010010000+38"});
    row("sendText", [](UNPProtocol &p) { p.sendText(8, QStringLiteral("863071014478127")); },
        {"a5a50800140038363330373130313434373831323700000000001538"});
    row("writeSystem", [](UNPProtocol &p) { p.writeSystem(); }, {"a5a50600080011010000+4"});
    row("setOutput(1, 2)", [](UNPProtocol &p) { p.setOutput(1, 2); }, {"a5a5060006000e01020001000d01"});
    row("writeOutputParameters: caller's head, command packet",
        [](UNPProtocol &p) { p.writeOutputParameters(0x0E, 0x05); }, {"a5a5070008000e050000+4"});
}

void tst_UNPProtocol::requestFrames() {
    QFETCH(Op, op);
    QFETCH(QStringList, frames);
    QObject owner;
    UNPProtocol protocol(makeConfiguration(&owner));
    op(protocol);
    QCOMPARE(protocol.queueSize(), frames.size());
    for (int i = 0; i < frames.size(); ++i) {
        QString why;
        QVERIFY2(matches(protocol.queue().at(i), frames.at(i), &why), qPrintable(why));
        const proto::Frame::Explanation e = proto::Frame::explain(protocol.queue().at(i));
        QVERIFY(e.checksumOk);
    }
}

void tst_UNPProtocol::writesCarryTheSectionEncoders() {
    QObject owner;
    kd::Configuration *cfg = makeConfiguration(&owner);
    section<kd::SystemConfiguration>(cfg, kd::keys::System)->value()->setParkingMin(5);
    auto *out = section<kd::OutputConfiguration>(cfg, kd::keys::Output);
    out->value()->setStates({1, 0, 1, 1});
    out->value()->setOutNum(3);
    UNPProtocol protocol(cfg);
    protocol.writeSystem();
    protocol.setOutputs();
    protocol.writeOutputParameters(0x0E, 0x05);
    protocol.writeServer(0);
    const auto payload = [&](int i) { return protocol.queue().at(i).mid(proto::Frame::PayloadOffset); };
    QCOMPARE(payload(0).chopped(2), section<kd::SystemConfiguration>(cfg, kd::keys::System)->encode());
    QCOMPARE(payload(1).chopped(2).toHex(), QByteArray("0209000001000101"));
    QCOMPARE(payload(2).chopped(2), out->encodeParameters(0x0E, 0x05));
    QCOMPARE(payload(3).chopped(2), section<kd::ServerConfiguration>(cfg, kd::keys::Server)->encode(0));
}

void tst_UNPProtocol::writesWithoutConfigurationSendNothing() {
    UNPProtocol protocol;
    protocol.writeNavigation();
    protocol.writeGsm();
    protocol.writeFuel();
    protocol.writeSystem();
    protocol.writeAnalogInput(0);
    protocol.setOutputs();
    QCOMPARE(protocol.queueSize(), 0);
    protocol.readSystem();
    QCOMPARE(protocol.queueSize(), 1);
}

void tst_UNPProtocol::writeOfMissingElementSendsNothing() {
    QObject owner;
    UNPProtocol protocol(makeConfiguration(&owner, 3, 2, 1));
    protocol.writeAnalogInput(3);
    protocol.writeAnalogInput(-1);
    protocol.writeLogicInput(2);
    protocol.writeServer(1);
    QCOMPARE(protocol.queueSize(), 0);

    // A GSM section with one SIM writes that SIM's two blocks and no empty packets for the second.
    auto *oneSim = new kd::Configuration(&owner);
    oneSim->registerItem(QLatin1String(kd::keys::Gsm), new kd::GSMConfiguration(1, oneSim));
    protocol.setConfiguration(oneSim);
    protocol.writeGsm();
    QCOMPARE(protocol.queueSize(), 2);
    QCOMPARE(protocol.queue().at(0).mid(proto::Frame::PayloadOffset, 3).toHex(), QByteArray("040300"));
    QCOMPARE(protocol.queue().at(1).mid(proto::Frame::PayloadOffset, 3).toHex(), QByteArray("040400"));
}

void tst_UNPProtocol::queueOperations() {
    UNPProtocol protocol;
    QVERIFY(!protocol.peekNext());
    protocol.readSystem();
    protocol.readFuel();
    QVERIFY(protocol.peekNext());
    QCOMPARE(protocol.current().toHex(), QByteArray("a5a506000400910100009301"));
    QCOMPARE(protocol.queueSize(), 2); // peeking leaves the frame queued
    protocol.dropFirst();
    QVERIFY(protocol.peekNext());
    QCOMPARE(protocol.current().toHex(), QByteArray("a5a506000400880100008a01"));
    protocol.clearQueue();
    QCOMPARE(protocol.queueSize(), 0);
    protocol.dropFirst();
    QCOMPARE(protocol.queueSize(), 0);
    QVERIFY(!protocol.peekNext());
}

void tst_UNPProtocol::enqueueFrameFirstGoesToTheHead() {
    UNPProtocol protocol;
    protocol.readSystem();
    protocol.readFuel();
    QCOMPARE(protocol.packet().frame.toHex(), QByteArray("a5a506000400880100008a01"));
    protocol.enqueueFrameFirst(); // the current packet (the fuel read) once more, now at the head
    QCOMPARE(protocol.queueSize(), 3);
    QCOMPARE(protocol.queue().at(0).toHex(), QByteArray("a5a506000400880100008a01"));
    QCOMPARE(protocol.queue().at(1).toHex(), QByteArray("a5a506000400910100009301"));
}

void tst_UNPProtocol::sendTextIsBuiltApartFromTheCurrentPacket() {
    UNPProtocol protocol;
    protocol.readSystem();
    protocol.sendText(proto::ServerLoginPacketType, QStringLiteral("1"));
    QCOMPARE(protocol.packet().frame.toHex(), QByteArray("a5a506000400910100009301"));
    QCOMPARE(protocol.queue().last().size(), proto::Frame::TextFrameSize);
}

void tst_UNPProtocol::changePasswordKeepsTheLastValue() {
    UNPProtocol protocol;
    QCOMPARE(protocol.lastPassword(), 0u);
    protocol.changePassword(1111);
    protocol.changePassword(2222);
    QCOMPARE(protocol.lastPassword(), 2222u);
    protocol.login(3333);
    QCOMPARE(protocol.lastPassword(), 2222u);
}

QTEST_GUILESS_MAIN(tst_UNPProtocol)
#include "tst_unpprotocol.moc"
