#include "LogCapture.h"
#include "SectionsFixture.h"

#include "protocol/Frame.h"
#include "protocol/StatusNotifier.h"
#include "protocol/UNPParcer.h"

#include <QtTest>

namespace {

class RecordingNotifier : public StatusNotifier {
public:
    QStringList texts;
    void notify(const QString &text) override { texts << text; }
};

// Every parser signal as one text, in emission order.
QStringList *recordSignals(UNPParcer &parser, QStringList *out) {
    QObject::connect(&parser, &UNPParcer::PasswordChange,
                     [out] { *out << QStringLiteral("PasswordChange"); });
    QObject::connect(&parser, &UNPParcer::PasswordError, [out] { *out << QStringLiteral("PasswordError"); });
    QObject::connect(&parser, &UNPParcer::PasswordComplete,
                     [out] { *out << QStringLiteral("PasswordComplete"); });
    QObject::connect(&parser, &UNPParcer::DeviceBlocked, [out] { *out << QStringLiteral("DeviceBlocked"); });
    QObject::connect(&parser, &UNPParcer::ControlTelemetry,
                     [out](int t) { *out << QStringLiteral("ControlTelemetry(%1)").arg(t); });
    QObject::connect(&parser, &UNPParcer::ConfigPackageDetected,
                     [out](int t) { *out << QStringLiteral("ConfigPackageDetected(%1)").arg(t); });
    QObject::connect(&parser, &UNPParcer::DeviceInfoAcquired,
                     [out] { *out << QStringLiteral("DeviceInfoAcquired"); });
    QObject::connect(&parser, &UNPParcer::OnFirmwareUpdateEnter,
                     [out] { *out << QStringLiteral("OnFirmwareUpdateEnter"); });
    return out;
}

// True when `wanted` appears in `lines` in order (other lines may lie between).
bool inOrder(const QStringList &lines, const QStringList &wanted) {
    int at = 0;
    for (const QString &line : lines) {
        if (at < wanted.size() && line == wanted.at(at))
            ++at;
    }
    return at == wanted.size();
}

const QString Executed = QStringLiteral("....Команду выполнил");

} // namespace

class tst_UNPParcer : public QObject {
    Q_OBJECT
private slots:
    void dispatch_data();
    void dispatch();
    void powerCycleStatusGoesThroughTheNotifier();
    void packetEntryCutsSurplusBytes();
    void sectionDecodedIntoTheConfiguration();
    void missingSectionDecodesNothing();
};

void tst_UNPParcer::dispatch_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QStringList>("signalsEmitted");
    QTest::addColumn<QStringList>("log");
    QTest::addColumn<bool>("exactLog"); // false: section decoders may add lines of their own

    const QString commands = QStringLiteral("Команды");
    const QString login = QStringLiteral("Ввод пароля");
    const auto hex = [](const char *h) { return QByteArray::fromHex(h); };

    QTest::newRow("status 1 executed")
        << 6 << hex("118100000100") << QStringList() << QStringList{Executed} << true;
    QTest::newRow("status 2 not supported")
        << 6 << hex("118100000200") << QStringList() << QStringList{"....Команда не поддерживается"} << true;
    QTest::newRow("status 3 in a section answer asks for the password, decodes nothing")
        << 6 << hex("918100000300") << QStringList{"PasswordChange"}
        << QStringList{"Нужна авторизация, введите пароль...."} << true;
    QTest::newRow("status 4 wrong password") << 6 << hex("028100000400") << QStringList{"PasswordError"}
                                             << QStringList{"....Введен неправильный пароль"} << true;
    QTest::newRow("status 5 blocked") << 6 << hex("108100000500") << QStringList{"DeviceBlocked"}
                                      << QStringList{"...Прибор заблокирован"} << true;
    QTest::newRow("status 6 is a box, then blocked")
        << 6 << hex("018100000600") << QStringList{"DeviceBlocked"} << QStringList() << true;
    QTest::newRow("status 7 unknown packet type")
        << 6 << hex("118100000700") << QStringList() << QStringList{"....Неизвестный тип пакета"} << true;
    QTest::newRow("status 8 has no meaning of its own")
        << 6 << hex("118100000800") << QStringList() << QStringList{"....Неизвестный тип ответа"} << true;
    QTest::newRow("status 9 execution error")
        << 6 << hex("118100000900") << QStringList()
        << QStringList{"....Ошибка исполнения команды EXECUTE_ERROR"} << true;
    QTest::newRow("status 0 unknown")
        << 6 << hex("118100000000") << QStringList() << QStringList{"....Неизвестный тип ответа"} << true;
    QTest::newRow("status 0x0100 unknown (little-endian)")
        << 6 << hex("118100000001") << QStringList() << QStringList{"....Неизвестный тип ответа"} << true;
    QTest::newRow("status answer without its status bytes reads 0")
        << 6 << hex("1181") << QStringList() << QStringList{"....Неизвестный тип ответа"} << true;
    QTest::newRow("write echo 0x03 ignored")
        << 6 << hex("03020000") << QStringList() << QStringList() << true;
    QTest::newRow("unknown code ignored") << 6 << hex("8f010000") << QStringList() << QStringList() << true;
    QTest::newRow("empty payload ignored") << 6 << QByteArray() << QStringList() << QStringList() << true;

    QTest::newRow("device info 0x81")
        << 6 << hex("81010000") + QByteArray(60, '\0')
        << QStringList{"DeviceInfoAcquired", "ConfigPackageDetected(129)"} << QStringList() << false;
    QTest::newRow("navigation 0x83") << 6 << hex("8302000001020304050600")
                                     << QStringList{"ConfigPackageDetected(131)"} << QStringList() << false;
    QTest::newRow("GSM 0x84") << 6 << hex("84040000") + QByteArray(18, '\0')
                              << QStringList{"ConfigPackageDetected(132)"} << QStringList() << false;
    QTest::newRow("fuel 0x88") << 6 << hex("88010000") + QByteArray(26, '\0')
                               << QStringList{"ConfigPackageDetected(136)"} << QStringList() << false;
    QTest::newRow("analog 0x8C") << 6 << hex("8c020000") + QByteArray(30, '\0')
                                 << QStringList{"ConfigPackageDetected(140)"} << QStringList() << false;
    QTest::newRow("logic 0x8D") << 6 << hex("8d0200000100") << QStringList{"ConfigPackageDetected(141)"}
                                << QStringList() << false;
    QTest::newRow("outputs 0x8E") << 6 << hex("8e0100000100") << QStringList{"ConfigPackageDetected(142)"}
                                  << QStringList() << false;
    QTest::newRow("servers 0x90") << 6 << hex("90010000") + QByteArray(38, '\0')
                                  << QStringList{"ConfigPackageDetected(144)"} << QStringList() << false;
    QTest::newRow("system 0x91") << 6 << hex("9101000001020304") << QStringList{"ConfigPackageDetected(145)"}
                                 << QStringList() << false;

    QTest::newRow("login answer, wrong password")
        << 7 << hex("018100000400") << QStringList{"PasswordError"}
        << QStringList{commands, login, "....Введен неправильный пароль"} << true;
    QTest::newRow("login answer, accepted")
        << 7 << hex("018100000100") << QStringList{"PasswordComplete"}
        << QStringList{commands, login, Executed, "Введен верный пароль"} << true;
    QTest::newRow("login answer, operation without status bit")
        << 7 << hex("010100000100") << QStringList{"PasswordComplete"}
        << QStringList{commands, login, Executed, "Введен верный пароль"} << true;
    QTest::newRow("firmware-update mode confirmed")
        << 7 << hex("01820000") << QStringList{"OnFirmwareUpdateEnter"} << QStringList{commands} << true;
    QTest::newRow("mode answer, other operation ignored")
        << 7 << hex("01030000") << QStringList() << QStringList{commands} << true;
    QTest::newRow("telemetry notice 1") << 7 << hex("82010000") << QStringList{"ControlTelemetry(1)"}
                                        << QStringList{commands, "....телеметрия прибора"} << true;
    QTest::newRow("telemetry 5 only logged")
        << 7 << hex("82050000") << QStringList() << QStringList{commands, "....телеметрия????"} << true;
    QTest::newRow("telemetry clock 11")
        << 7 << hex("820b0000010203040506") << QStringList{"ControlTelemetry(11)"} << QStringList{commands}
        << false;
    QTest::newRow("telemetry 0x8E read as 14")
        << 7 << hex("828e0000") + QByteArray(38, '\0') << QStringList{"ControlTelemetry(14)"}
        << QStringList{commands} << false;
    QTest::newRow("telemetry 22 of 7 bytes dropped")
        << 7 << hex("82160000") + QByteArray(7, '\0') << QStringList() << QStringList{commands} << false;
    QTest::newRow("telemetry 8 only logged")
        << 7 << hex("82080000") << QStringList() << QStringList{commands, "....телеметрия????"} << true;
    QTest::newRow("telemetry 9 announced, nothing stored")
        << 7 << hex("82090000") + QByteArray(8, '\0') << QStringList{"ControlTelemetry(9)"}
        << QStringList{commands} << true;
    QTest::newRow("telemetry 24 decoded")
        << 7 << hex("82180000") + QByteArray(36, '\0') << QStringList{"ControlTelemetry(24)"}
        << QStringList{commands, "....телеметрия сим карты GSM REG"} << true;
    QTest::newRow("telemetry sub-code 0 ignored")
        << 7 << hex("82000000") << QStringList() << QStringList{commands} << true;
    QTest::newRow("login answer, authorisation needed")
        << 7 << hex("018100000300") << QStringList{"PasswordChange"}
        << QStringList{commands, login, "Нужна авторизация, введите пароль...."} << true;
    QTest::newRow("write echo 0x11 ignored")
        << 6 << hex("11010000") << QStringList() << QStringList() << true;
    QTest::newRow("telemetry answer in a configuration packet ignored")
        << 6 << hex("820e0000") + QByteArray(38, '\0') << QStringList() << QStringList() << true;
    QTest::newRow("telemetry 25 ignored")
        << 7 << hex("82190000") << QStringList() << QStringList{commands} << true;
    QTest::newRow("command code 3 ignored")
        << 7 << hex("03010000") << QStringList() << QStringList{commands} << true;
    QTest::newRow("packet type 8 ignored")
        << 8 << hex("018100000300") << QStringList() << QStringList() << true;
}

void tst_UNPParcer::dispatch() {
    QFETCH(int, type);
    QFETCH(QByteArray, payload);
    QFETCH(QStringList, signalsEmitted);
    QFETCH(QStringList, log);
    QFETCH(bool, exactLog);

    QObject owner;
    UNPParcer parser(makeConfiguration(&owner));
    RecordingNotifier notifier;
    parser.setStatusNotifier(&notifier);
    QStringList emitted;
    recordSignals(parser, &emitted);
    LogCapture capture;
    parser.parse(quint8(type), payload);

    QCOMPARE(emitted, signalsEmitted);
    if (exactLog)
        QCOMPARE(capture.lines, log);
    else
        QVERIFY2(inOrder(capture.lines, log), qPrintable(capture.lines.join(QLatin1Char('|'))));
    QCOMPARE(capture.unstamped, 0);
}

void tst_UNPParcer::powerCycleStatusGoesThroughTheNotifier() {
    UNPParcer parser;
    RecordingNotifier notifier;
    parser.setStatusNotifier(&notifier);
    QStringList emitted;
    recordSignals(parser, &emitted);
    parser.handleStatus(UNPParcer::PowerCycleNeeded);
    QCOMPARE(notifier.texts.size(), 1);
    QVERIFY(notifier.texts.first().startsWith(
        QStringLiteral("Для сброса настроек необходимо отключить питание")));
    QVERIFY(notifier.texts.first().contains(
        QStringLiteral("\nВозможно, Вы просто выдернули и вставили кабель USB")));
    QCOMPARE(emitted, QStringList{"DeviceBlocked"}); // only after the box
}

void tst_UNPParcer::packetEntryCutsSurplusBytes() {
    UNPParcer parser;
    LogCapture capture;
    // Announced length 5: the status is the single byte 01; the 01 behind it belongs to no payload.
    parser.parse(QByteArray::fromHex("06000500118100000101"));
    QCOMPARE(capture.take(), QStringList{Executed});
    // Fewer bytes than announced never read beyond the array.
    parser.parse(QByteArray::fromHex("0600ff00118100"));
    QCOMPARE(capture.take(), QStringList{"....Неизвестный тип ответа"});
}

void tst_UNPParcer::sectionDecodedIntoTheConfiguration() {
    QObject owner;
    kd::Configuration *cfg = makeConfiguration(&owner);
    auto *system = section<kd::SystemConfiguration>(cfg, kd::keys::System);
    UNPParcer parser(cfg);
    QSignalSpy filled(system, &kd::IConfigurationItem::DeviceInfoFilled);
    parser.parse(proto::ConfigPacketType, system->encodeAnswer());
    QCOMPARE(filled.count(), 1);
}

void tst_UNPParcer::missingSectionDecodesNothing() {
    kd::Configuration cfg;
    UNPParcer parser(&cfg);
    QStringList emitted;
    recordSignals(parser, &emitted);
    parser.parse(proto::ConfigPacketType, QByteArray::fromHex("9101000001020304"));
    parser.parse(proto::CommandPacketType, QByteArray::fromHex("820b0000010203040506"));
    QVERIFY(emitted.isEmpty());
}

QTEST_GUILESS_MAIN(tst_UNPParcer)
#include "tst_unpparcer.moc"
