#include "tests/support/LogCapture.h"
#include "tests/support/SectionsFixture.h"

#include "protocol/Frame.h"
#include "protocol/StatusNotifier.h"
#include "protocol/UNPParcer.h"

#include <QtTest>

namespace {

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

class tst_UNPParcer : public QObject {
    Q_OBJECT
private slots:
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

QTEST_GUILESS_MAIN(tst_UNPParcer)
#include "tst_unpparcer.moc"
