#include "tests/support/LogCapture.h"
#include "tests/support/SectionsFixture.h"

#include "protocol/Frame.h"
#include "protocol/StatusNotifier.h"
#include "protocol/UNPParcer.h"
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

// The protocol both ways: the frames each request queues, and what the parser makes of each answer.
namespace {

kd::Configuration *oneSimGsm(QObject *owner) {
    auto *cfg = new kd::Configuration(owner);
    cfg->registerItem(QLatin1String(kd::keys::Gsm), new kd::GSMConfiguration(1, cfg));
    return cfg;
}

// A box shown to the user is recorded among the signals, in order, as "box"; its text is kept apart.
class RecordingNotifier : public StatusNotifier {
public:
    QStringList *emitted = nullptr;
    QStringList texts;
    void notify(const QString &text) override {
        *emitted << QStringLiteral("box");
        texts << text;
    }
};

// Every parser signal as one text, in emission order.
void recordSignals(UNPParcer &parser, QStringList *out) {
    const auto on = [&parser, out](auto signal, const char *name) {
        QObject::connect(&parser, signal, [out, name] { *out << QLatin1String(name); });
    };
    on(&UNPParcer::PasswordChange, "PasswordChange");
    on(&UNPParcer::PasswordError, "PasswordError");
    on(&UNPParcer::PasswordComplete, "PasswordComplete");
    on(&UNPParcer::DeviceBlocked, "DeviceBlocked");
    on(&UNPParcer::DeviceInfoAcquired, "DeviceInfoAcquired");
    on(&UNPParcer::OnFirmwareUpdateEnter, "OnFirmwareUpdateEnter");
    QObject::connect(&parser, &UNPParcer::ControlTelemetry,
                     [out](int t) { *out << QStringLiteral("ControlTelemetry(%1)").arg(t); });
    QObject::connect(&parser, &UNPParcer::ConfigPackageDetected,
                     [out](int t) { *out << QStringLiteral("ConfigPackageDetected(%1)").arg(t); });
}

QStringList listOf(const char *joined) {
    return QString::fromUtf8(joined).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}

} // namespace

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
        ROW("sendText: IMEI padded with zeros", sendText(8, QStringLiteral("863071014478127")),
            "a5a50800140038363330373130313434373831323700000000001538");
        ROW("sendText: longer text cut at 20", sendText(8, QStringLiteral("12345678901234567890123")),
            "a5a50800140031323334353637383930313233343536373839301c00");
        ROW("sendText: character above 255 becomes 0", sendText(8, QStringLiteral("1\u04102")),
            "a5a50800140031003200000000000000000000000000000000001f00");
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

    void dispatch_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QStringList>("signalsEmitted");
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<bool>("exactLog"); // false: section decoders may add lines of their own
        QTest::addColumn<bool>("sections"); // false: a configuration without any section

        // Signals and log lines are '|'-separated; the log of a command packet opens with "Команды".
        // Type 0: the payload is a whole packet (type, length, payload) for the packet entry.
        const auto row = [](const char *name, int type, const char *payload, int zeros, const char *emitted,
                            const char *log, bool exact = true, bool sections = true) {
            QTest::newRow(name) << type << QByteArray::fromHex(payload) + QByteArray(zeros, '\0')
                                << listOf(emitted) << listOf(log) << exact << sections;
        };
        const char *unknownAnswer = "....Неизвестный тип ответа";
        row("status 1 executed", 6, "118100000100", 0, "", "....Команду выполнил");
        row("status 2 not supported", 6, "118100000200", 0, "", "....Команда не поддерживается");
        row("status 3 in a section answer asks for the password, decodes nothing", 6, "918100000300", 0,
            "PasswordChange", "Нужна авторизация, введите пароль....");
        row("status 4 wrong password", 6, "028100000400", 0, "PasswordError",
            "....Введен неправильный пароль");
        row("status 5 blocked", 6, "108100000500", 0, "DeviceBlocked", "...Прибор заблокирован");
        row("status 6 is a box, then blocked", 6, "018100000600", 0, "box|DeviceBlocked", "");
        row("status 7 unknown packet type", 6, "118100000700", 0, "", "....Неизвестный тип пакета");
        row("status 8 has no meaning of its own", 6, "118100000800", 0, "", unknownAnswer);
        row("status 9 execution error", 6, "118100000900", 0, "",
            "....Ошибка исполнения команды EXECUTE_ERROR");
        row("status 0 unknown", 6, "118100000000", 0, "", unknownAnswer);
        row("status 0x0100 unknown (little-endian)", 6, "118100000001", 0, "", unknownAnswer);
        row("status answer without its status bytes reads 0", 6, "1181", 0, "", unknownAnswer);
        row("write echo 0x03 ignored", 6, "03020000", 0, "", "");
        row("write echo 0x11 ignored", 6, "11010000", 0, "", "");
        row("unknown code ignored", 6, "8f010000", 0, "", "");
        row("empty payload ignored", 6, "", 0, "", "");
        row("telemetry answer in a configuration packet ignored", 6, "820e0000", 38, "", "");
        row("packet type 8 ignored", 8, "018100000300", 0, "", "");

        row("device info 0x81", 6, "81010000", 60, "DeviceInfoAcquired|ConfigPackageDetected(129)", "",
            false);
        row("navigation 0x83", 6, "8302000001020304050600", 0, "ConfigPackageDetected(131)", "", false);
        row("GSM 0x84", 6, "84040000", 18, "ConfigPackageDetected(132)", "", false);
        row("fuel 0x88", 6, "88010000", 26, "ConfigPackageDetected(136)", "", false);
        row("analog 0x8C", 6, "8c020000", 30, "ConfigPackageDetected(140)", "", false);
        row("logic 0x8D", 6, "8d0200000100", 0, "ConfigPackageDetected(141)", "", false);
        row("outputs 0x8E", 6, "8e0100000100", 0, "ConfigPackageDetected(142)", "", false);
        row("servers 0x90", 6, "90010000", 38, "ConfigPackageDetected(144)", "", false);
        row("system 0x91", 6, "9101000001020304", 0, "ConfigPackageDetected(145)", "", false);

        row("login answer, wrong password", 7, "018100000400", 0, "PasswordError",
            "Команды|Ввод пароля|....Введен неправильный пароль");
        row("login answer, accepted", 7, "018100000100", 0, "PasswordComplete",
            "Команды|Ввод пароля|....Команду выполнил|Введен верный пароль");
        row("login answer, operation without status bit", 7, "010100000100", 0, "PasswordComplete",
            "Команды|Ввод пароля|....Команду выполнил|Введен верный пароль");
        row("login answer, authorisation needed", 7, "018100000300", 0, "PasswordChange",
            "Команды|Ввод пароля|Нужна авторизация, введите пароль....");
        row("firmware-update mode confirmed", 7, "01820000", 0, "OnFirmwareUpdateEnter", "Команды");
        row("mode answer, other operation ignored", 7, "01030000", 0, "", "Команды");
        row("command code 3 ignored", 7, "03010000", 0, "", "Команды");
        row("telemetry notice 1", 7, "82010000", 0, "ControlTelemetry(1)", "Команды|....телеметрия прибора");
        row("telemetry 5 only logged", 7, "82050000", 0, "", "Команды|....телеметрия????");
        row("telemetry 8 only logged", 7, "82080000", 0, "", "Команды|....телеметрия????");
        row("telemetry 9 announced, nothing stored", 7, "82090000", 8, "ControlTelemetry(9)", "Команды");
        row("telemetry clock 11", 7, "820b0000010203040506", 0, "ControlTelemetry(11)", "Команды", false);
        row("telemetry 0x8E read as 14", 7, "828e0000", 38, "ControlTelemetry(14)", "Команды", false);
        row("telemetry 22 of 7 bytes dropped", 7, "82160000", 7, "", "Команды", false);
        row("telemetry 24 decoded", 7, "82180000", 36, "ControlTelemetry(24)",
            "Команды|....телеметрия сим карты GSM REG");
        row("telemetry 25 ignored", 7, "82190000", 0, "", "Команды");
        row("telemetry sub-code 0 ignored", 7, "82000000", 0, "", "Команды");
        row("no section: system answer decodes nothing", 6, "9101000001020304", 0, "", "", false, false);
        row("no section: telemetry clock decodes nothing", 7, "820b0000010203040506", 0, "", "Команды", false,
            false);
        // Announced length 5: the status is the single byte 01; the 01 behind it belongs to no payload.
        row("packet entry cuts surplus bytes", 0, "06000500118100000101", 0, "", "....Команду выполнил");
        // Fewer bytes than announced never read beyond the array.
        row("packet entry, fewer bytes than announced", 0, "0600ff00118100", 0, "",
            "....Неизвестный тип ответа");
    }

    void dispatch() {
        QFETCH(int, type);
        QFETCH(QByteArray, payload);
        QFETCH(QStringList, signalsEmitted);
        QFETCH(QStringList, log);
        QFETCH(bool, exactLog);
        QFETCH(bool, sections);

        QObject owner;
        UNPParcer parser(sections ? makeConfiguration(&owner) : new kd::Configuration(&owner));
        QStringList emitted;
        RecordingNotifier notifier;
        notifier.emitted = &emitted;
        parser.setStatusNotifier(&notifier);
        recordSignals(parser, &emitted);
        LogCapture capture;
        if (type == 0)
            parser.parse(payload);
        else
            parser.parse(quint8(type), payload);
        for (const QString &text : notifier.texts)
            QVERIFY(text.startsWith(QStringLiteral("Для сброса настроек необходимо отключить питание")) &&
                    text.contains(QStringLiteral("\nВозможно, Вы просто выдернули и вставили кабель USB")));

        QCOMPARE(emitted, signalsEmitted);
        QCOMPARE(capture.unstamped, 0);
        if (exactLog) {
            QCOMPARE(capture.lines, log);
            return;
        }
        int at = 0; // the wanted lines appear in order, decoder lines may lie between
        for (const QString &line : capture.lines)
            at += at < log.size() && line == log.at(at);
        QVERIFY2(at == log.size(), qPrintable(capture.lines.join(QLatin1Char('|'))));
    }

    void sectionDecodedIntoTheConfiguration() {
        QObject owner;
        kd::Configuration *cfg = makeConfiguration(&owner);
        auto *system = section<kd::SystemConfiguration>(cfg, kd::keys::System);
        UNPParcer parser(cfg);
        QSignalSpy filled(system, &kd::IConfigurationItem::DeviceInfoFilled);
        parser.parse(proto::ConfigPacketType, system->encodeAnswer());
        QCOMPARE(filled.count(), 1);
    }
};

QTEST_GUILESS_MAIN(tst_UNPProtocol)
#include "tst_unpprotocol.moc"
