#include "Devices/AgcConfiguration.h"
#include "Devices/ConfigurationFields.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/SectionTable.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/configuration.h"
#include "tests/support/ConfigurationSample.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QSignalSpy>
#include <QtTest>

using namespace kd;

namespace {
const char kChildSwitch[] = "--lookup-child";

// Runs in a child process: registers a device-info section and looks `key` up as class `as`.
int lookupChild(const QString &key, const QString &as) {
    Configuration cfg;
    DeviceInfoConfiguration info(1, &cfg);
    cfg.registerItem(QString::fromLatin1(keys::MainDeviceInfo), &info);
    const bool found = as == QLatin1String("gsm") ? typed_item<GSMConfiguration>(&cfg, key) != nullptr
                                                  : typed_item<DeviceInfoConfiguration>(&cfg, key) != nullptr;
    fprintf(stdout, found ? "found\n" : "null\n");
    return 0;
}

void fill(VantorConfiguration &cfg, const QStringList &keys) {
    for (const QString &k : keys)
        emit cfg.item(k)->DeviceInfoFilled();
}

const QStringList kEight = {"mainDviceInfo",       "agcConfiguration", "NavConfiguration",
                            "LogicConfiguration",  "GSMConfiguration", "FuelConfiguration",
                            "ServerConfiguration", "OutConfiguration"};

QStringList without(QStringList keys, const QString &key) {
    keys.removeAll(key);
    return keys;
}
} // namespace

class tst_Configuration : public QObject {
    Q_OBJECT

private slots:
    void sectionTable_keepsTheTenKeysAndTheirCodes() {
        QCOMPARE(sectionKeys(),
                 QStringList({"mainDviceInfo", "GSMConfiguration", "agcConfiguration", "NavConfiguration",
                              "LogicConfiguration", "FuelConfiguration", "ServerConfiguration",
                              "SystemConfiguration", "OutConfiguration", "ControlInfo"}));
        QCOMPARE(sectionByKey(QStringLiteral("agcConfiguration"))->logLabel, "ADC configuration");
        QVERIFY(!sectionByKey(QStringLiteral("mainDeviceInfo")));
        QCOMPARE(sectionByAnswerCode(0x8C)->key, keys::Agc);
        QCOMPARE(sectionByRequestCode(0x0C)->key, keys::Agc);
        QCOMPARE(sectionByRequestCode(0x8C)->key, keys::Agc);
        QCOMPARE(sectionByAnswerCode(0x82, 7)->key, keys::ControlInfo);
        QVERIFY(!sectionByAnswerCode(0x82)); // a type-6 0x82 is no section
        QVERIFY(!sectionByRequestCode(0x02));
    }

    void lookupByKey_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("found");
        QTest::newRow("mainDviceInfo as spelled") << "mainDviceInfo" << true;
        QTest::newRow("the missing e restored finds nothing") << "mainDeviceInfo" << false;
        QTest::newRow("keys are case sensitive") << "maindviceinfo" << false;
    }

    void lookupByKey() {
        QFETCH(QString, key);
        Configuration cfg;
        cfg.registerItem(QString::fromLatin1(keys::MainDeviceInfo), new DeviceInfoConfiguration(1, &cfg));
        QTEST(cfg.item(key) != nullptr, "found");
        QTEST(typed_item<DeviceInfoConfiguration>(&cfg, key) != nullptr, "found");
    }

    void typedLookup_inAChildProcess_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("as");
        QTest::addColumn<QString>("output"); // empty: the child aborts
        const auto row = [](const char *name, const char *key, const char *as, const char *output) {
            QTest::newRow(name) << QString(key) << QString(as) << QString(output);
        };
        row("wrong class stops the program", "mainDviceInfo", "gsm", "");
        row("right class is found", "mainDviceInfo", "info", "found");
        row("absent key gives null, whatever the class", "GSMConfiguration", "gsm", "null");
    }

    void typedLookup_inAChildProcess() {
        QFETCH(QString, key);
        QFETCH(QString, as);
        QFETCH(QString, output);
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(kChildSwitch), key, as});
        QVERIFY(child.waitForFinished(20000));
        const QString err = QString::fromLocal8Bit(child.readAllStandardError());
        if (output.isEmpty()) {
            QCOMPARE(child.exitStatus(), QProcess::CrashExit);
            QVERIFY2(err.contains(QLatin1String("ASSERT: \"typed_item\" in file Devices/configuration")),
                     qPrintable(err));
            QVERIFY2(err.contains(QLatin1String("kd::GSMConfiguration")), qPrintable(err));
        } else {
            QCOMPARE(child.exitStatus(), QProcess::NormalExit);
            QCOMPARE(QString::fromLatin1(child.readAllStandardOutput()).trimmed(), output);
        }
    }

    void sectionWithCountZero_hasNoElements() {
        SystemConfiguration s(0);
        QCOMPARE(s.count(), 0);
        QCOMPARE(s.element(0), nullptr);
        QCOMPARE(s.value(), nullptr);
        QVERIFY(s.encode().isEmpty());
        AgcConfiguration agc(0);
        QVERIFY(agc.encode(0).isEmpty());
        agc.decode(QByteArray::fromHex("8c 02 00 00 01 00 01 00 01 00 01 00 01 00"));
    }

    void destroyedValue_readsAsNullEverywhere() {
        Configuration cfg;
        auto *sys = new SystemConfiguration(1, &cfg);
        cfg.registerItem(QString::fromLatin1(keys::System), sys);
        delete sys->value();

        QCOMPARE(sys->value(), nullptr);
        QCOMPARE(typed_item<SystemConfiguration>(&cfg, QString::fromLatin1(keys::System)), nullptr);
        QVERIFY(sys->encode().isEmpty());
        sys->decode(QByteArray::fromHex("91 01 00 00 01 02 03 00"));
        delete sys;
        QCOMPARE(cfg.item(QString::fromLatin1(keys::System)), nullptr);
    }

    void elementChange_isAnnouncedBySectionOnce() {
        AgcConfiguration s(3);
        QCOMPARE(s.indexOf(s.element(2)), 2);
        QSignalSpy spy(&s, &IConfigurationItem::changed);
        s.element(1)->setAveraging(3);
        s.element(1)->setAveraging(3); // same value: no change
        QCOMPARE(spy.count(), 1);
    }

    void configComplete_data() {
        QTest::addColumn<QStringList>("filled");
        QTest::addColumn<int>("emitted");
        QTest::newRow("nothing read yet") << QStringList() << 0;
        QTest::newRow("the eight tested sections, system never read") << kEight << 1;
        for (const QString &k : kEight)
            QTest::addRow("%s missing", qPrintable(k))
                << without(kEight, k) + QStringList{"SystemConfiguration", "ControlInfo"} << 0;
        QTest::newRow("system after completion emits again")
            << kEight + QStringList{"SystemConfiguration"} << 2;
        QTest::newRow("every further read emits again")
            << kEight + QStringList{"agcConfiguration", "mainDviceInfo"} << 3;
    }

    void configComplete() {
        QFETCH(QStringList, filled);
        VantorConfiguration cfg;
        QSignalSpy spy(&cfg, &Configuration::configComplete);
        fill(cfg, filled);
        QTEST(int(spy.count()), "emitted");
    }

    void resetFilled_keepsDeviceInformationUnlessAsked_data() {
        QTest::addColumn<bool>("includeDeviceInfo");
        QTest::addColumn<int>("emitted");
        QTest::newRow("full read after a reset completes without device info") << false << 1;
        QTest::newRow("clearing device info too needs it again") << true << 0;
    }

    void resetFilled_keepsDeviceInformationUnlessAsked() {
        QFETCH(bool, includeDeviceInfo);
        VantorConfiguration cfg;
        fill(cfg, kEight);
        cfg.resetFilled(includeDeviceInfo);
        QSignalSpy spy(&cfg, &Configuration::configComplete);
        fill(cfg, without(kEight, "mainDviceInfo"));
        QTEST(int(spy.count()), "emitted");
    }

    void write_keepsOnlyTheLowTimetableWordUnderTheHighKey() {
        VantorConfiguration cfg;
        fillSample(cfg);
        QJsonObject root;
        cfg.write(root);

        const QJsonObject sim2 = root.value("gsm").toArray().at(1).toObject();
        QCOMPARE(sim2.keys(), QStringList({"gprs 2", "roaming 2"}));
        const QJsonObject roaming = sim2.value("roaming 2").toObject();
        QCOMPARE(roaming.keys(), QStringList({"forbidden", "timetableHi"}));
        QCOMPARE(roaming.value("timetableHi").toInt(), 2001);
        QVERIFY(!root.contains("ControlInfo"));
        QCOMPARE(root.value("fuel_tanks").toArray().at(7).toObject().value("averaging").toInt(), 107);
    }

    void read_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("field");
        QTest::addColumn<qint64>("value");

        const auto row = [](const char *name, const char *json, const char *field, qint64 value) {
            QTest::newRow(name) << QByteArray(json) << QString(field) << value;
        };
        row("gsens 300 is stored as 44", R"({"SystemParameters":{"gsens":300}})", "gsens", 44);
        row("roaming without the blank restores forbidden",
            R"({"gsm":[{"roaming1":{"forbidden":257,"timetableHi":7,"timetableLow":9}}]})", "forbidden", 1);
        row("roaming without the blank restores the high word",
            R"({"gsm":[{"roaming1":{"forbidden":1,"timetableHi":7,"timetableLow":9}}]})", "timetableHi", 7);
        row("timetableLow is read although never written", R"({"gsm":[{"roaming1":{"timetableLow":-2}}]})",
            "timetableLow", -2);
        row("roaming with the blank is not found",
            R"({"gsm":[{"roaming 1":{"forbidden":1,"timetableHi":7}}]})", "timetableHi", 0);
        row("faultSpeed in the file is ignored", R"({"navigation":{"faultSpeed":50}})", "faultSpeed", 99);
        row("fuel address is masked to 8 bits", R"({"fuel_sensors":[{},{"addr":258}]})", "fuelAddr1", 2);
        row("elements are taken by position, not by id", R"({"adcs":[{"id":2,"averaging":4}]})",
            "adcAveraging0", 4);
        row("software version above 2^31", R"({"softver":4000000000})", "Version", 4000000000);
        row("a string where a number belongs reads as 0", R"({"softver":"918"})", "Version", 0);
        row("a number beyond 64 bits reads as 0", R"({"gsm":[{"roaming1":{"timetableHi":1e300}}]})",
            "timetableHi", 0);
    }

    void read() {
        QFETCH(QByteArray, json);
        QFETCH(QString, field);
        VantorConfiguration cfg;
        cfg.navigation()->value()->setFaultSpeed(99);
        cfg.read(QJsonDocument::fromJson(json).object());

        const QHash<QString, qint64> values = {
            {"gsens", cfg.system()->value()->gsens()},
            {"forbidden", cfg.gsm()->element(0)->forbidden()},
            {"timetableHi", qint64(cfg.gsm()->element(0)->timetableHi())},
            {"timetableLow", qint64(cfg.gsm()->element(0)->timetableLow())},
            {"faultSpeed", cfg.navigation()->value()->faultSpeed()},
            {"fuelAddr1", cfg.fuel()->element(1)->addr()},
            {"adcAveraging0", cfg.agc()->element(0)->averaging()},
            {"Version", cfg.deviceInfo()->Version()},
        };
        QTEST(values.value(field, -1), "value");
    }

    void read_emptyRootSetsEveryFieldToZeroButIMEIAndFaultSpeed() {
        VantorConfiguration cfg;
        fillSample(cfg);
        QVERIFY(cfg.controlInfo()->setRecord(11, 0, QByteArray::fromHex("01 02 03 04 05 06")));
        cfg.read(QJsonObject());

        for (const ConfigField &f : configurationFields()) {
            const bool kept = f.path == "IMEI" || f.path == "navigation.faultSpeed";
            QVERIFY2(f.rawValue(cfg).toString().remove('0').isEmpty() != kept, qPrintable(f.path));
        }
        QCOMPARE(cfg.controlInfo()->clock()->unixTime, 0x04030201u); // telemetry is not configuration
    }
};

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    if (argc == 4 && qstrcmp(argv[1], kChildSwitch) == 0)
        return lookupChild(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    tst_Configuration test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_configuration.moc"
