#include "Devices/AgcConfiguration.h"
#include "Devices/ConfigurationDiff.h"
#include "Devices/ConfigurationFields.h"
#include "Devices/ConfigurationFile.h"
#include "Devices/ConfigurationFileCheck.h"
#include "Devices/ConfigurationOverrides.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/SectionTable.h"
#include "Devices/SnapshotStore.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/configuration.h"
#include "tests/support/ConfigurationSample.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
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

const QString kGolden = QStringLiteral(TAVREL_TEST_DATA "/devices/sample-configuration.json");

QByteArray readAll(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool writeAll(const QString &path, const QByteArray &data) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(data) == data.size();
}

QJsonObject fileOf(const VantorConfiguration &cfg) {
    QJsonObject root;
    cfg.write(root);
    return root;
}

QStringList paths(const QVector<const ConfigField *> &fields) {
    QStringList out;
    for (const ConfigField *f : fields)
        out << f->path;
    return out;
}
} // namespace

// The model: the container and its lookups, the whole-device configuration, the configuration file
// (saving, loading, its check, the overrides table), the differences a write would make and the
// snapshots kept of them.
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
        const QJsonObject root = fileOf(cfg);

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
    void save_replacesAnExistingFileWithTheIndentedDocument() {
        QTemporaryDir dir;
        const QString path = dir.filePath("out.json");
        QVERIFY(writeAll(path, QByteArray(100000, 'x')));
        // What a save killed midway leaves behind goes; a save still running and the user's files stay
        // (QSaveFile's six random letters mix cases).
        for (const char *name : {"out.json.AbCdEf", "out.json.XyZabc", "out.json.backup", "out.json.bak"})
            QVERIFY(writeAll(dir.filePath(name), "{"));
        for (const char *name : {"out.json.AbCdEf", "out.json.backup"}) {
            QFile old(dir.filePath(name));
            QVERIFY(old.open(QIODevice::ReadWrite) &&
                    old.setFileTime(QDateTime::currentDateTime().addSecs(-3600),
                                    QFileDevice::FileModificationTime));
        }
        VantorConfiguration cfg;
        fillSample(cfg);

        const ConfigurationFile::SaveResult r = ConfigurationFile::save(path, cfg);

        QVERIFY2(r.ok(), qPrintable(r.errorString));
        QCOMPARE(QString::fromUtf8(readAll(path)), QString::fromUtf8(readAll(kGolden)));
        QStringList left = QDir(dir.path()).entryList(QDir::Files);
        left.sort();
        QCOMPARE(left, (QStringList{"out.json", "out.json.XyZabc", "out.json.backup", "out.json.bak"}));
    }

    // A save that cannot start says why in the user's words, naming the place.
    void save_cannotOpenSaysWhy_data() {
        QTest::addColumn<QString>("target"); // under the temporary folder
        QTest::addColumn<QString>("reason"); // %1: the temporary folder
        QTest::newRow("missing folder")
            << QString("no/such/out.json") << QString("папка %1/no/such не существует");
        QTest::newRow("a folder as the file") << QString("sub") << QString("%1/sub это папка, а не файл");
        QTest::newRow("a file as the folder") << QString("plain/out.json") << QString("%1/plain не папка");
    }

    void save_cannotOpenSaysWhy() {
        QFETCH(QString, target);
        QFETCH(QString, reason);
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("sub"));
        QVERIFY(writeAll(dir.filePath("plain"), {}));
        VantorConfiguration cfg;
        const ConfigurationFile::SaveResult r = ConfigurationFile::save(dir.filePath(target), cfg);
        QCOMPARE(r.status, ConfigurationFile::SaveResult::CannotOpen);
        QCOMPARE(r.errorString, reason.arg(dir.path()));
    }

    void load_goldenFileRestoresAllButTheDeliberateLosses() {
        VantorConfiguration cfg;
        cfg.deviceInfo()->setIMEI(QStringLiteral("000000000000000"));
        cfg.navigation()->value()->setFaultSpeed(33);

        const ConfigurationFile::LoadResult r = ConfigurationFile::load(kGolden, cfg);

        QVERIFY2(r.ok(), qPrintable(r.errorString));
        VantorConfiguration expected;
        fillSample(expected);
        expected.deviceInfo()->setIMEI(QStringLiteral("000000000000000"));
        expected.navigation()->value()->setFaultSpeed(33);
        for (int i = 0; i < 2; ++i) {
            expected.gsm()->element(i)->setForbidden(0);
            expected.gsm()->element(i)->setTimetableHi(0);
            expected.gsm()->element(i)->setTimetableLow(0);
        }
        QCOMPARE(QString::fromUtf8(ConfigurationFile::toJson(cfg)),
                 QString::fromUtf8(ConfigurationFile::toJson(expected)));
    }

    void load_failures_data() {
        QTest::addColumn<QByteArray>("content"); // empty: no file at all; "/": a folder in its place
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error"); // the start of the error text; a parse error's in full
        const int parse = ConfigurationFile::LoadResult::ParseError;

        QTest::newRow("missing file") << QByteArray() << int(ConfigurationFile::LoadResult::CannotOpen) << "";
        QTest::newRow("folder") << QByteArray("/") << int(ConfigurationFile::LoadResult::CannotOpen)
                                << "это папка";
        // Positions count characters, not bytes, from 1, up to where the parser stopped.
        QTest::newRow("not JSON") << QByteArray("name = Vantor") << parse
                                  << "строка 1, столбец 2: недопустимое значение";
        QTest::newRow("cut JSON") << QByteArray("{\"имя\":\"Vantor\",\n  ") << parse
                                  << "строка 2, столбец 3: объект не закрыт";
        QTest::newRow("array instead of an object")
            << QByteArray("[1, 2]") << parse << "строка 1, столбец 1: документ не объект JSON";
        QTest::newRow("empty object loads")
            << QByteArray("{}") << int(ConfigurationFile::LoadResult::Ok) << "";
    }

    void load_failures() {
        QFETCH(QByteArray, content);
        QFETCH(int, status);
        QFETCH(QString, error);
        QTemporaryDir dir;
        const QString path = dir.filePath("in.json");
        if (content == "/")
            QVERIFY(QDir(dir.path()).mkdir("in.json"));
        else if (!content.isEmpty())
            QVERIFY(writeAll(path, content));
        VantorConfiguration cfg;
        fillSample(cfg);
        const QByteArray before = ConfigurationFile::toJson(cfg);

        const ConfigurationFile::LoadResult r = ConfigurationFile::load(path, cfg);

        QCOMPARE(int(r.status), status);
        if (status == ConfigurationFile::LoadResult::Ok)
            return;
        QVERIFY(r.errorString.startsWith(error) && !r.errorString.isEmpty());
        if (status == ConfigurationFile::LoadResult::ParseError)
            QCOMPARE(r.errorString, error);
        QCOMPARE(ConfigurationFile::toJson(cfg), before); // a failed load changes nothing
    }

    // Each row: a spreadsheet, then the template of OverrideTemplate with IMEI 1's row put in (compact JSON),
    // or "!" and the reason when the table or a value is refused.
    void overrides_data() {
        QTest::addColumn<QByteArray>("csv");
        QTest::addColumn<QString>("expected");
        QTest::newRow("nested keys, dotted root key, IMEI column anywhere")
            << QByteArray("Server[1].server,IMEI,gsm[0].gprs 1.apn,hardver.serial\n"
                          "srv.example.ru,1,internet.mts.ru,77\n2.2.2.2,2,x,1\n")
            << R"({"Server":[{"server":"a"},{"server":"srv.example.ru"}],"SystemParameters":{"gsens":5},)"
               R"("gsm":[{"gprs 1":{"apn":"internet.mts.ru","apn_name":""}}],"hardver":1,"hardver.serial":77})";
        QTest::newRow("semicolons, quotes, BOM, CRLF, an empty cell keeps the template's value")
            << QByteArray("\xEF\xBB\xBFimei;SystemParameters.gsens;gsm[0].gprs 1.apn_name\r\n"
                          "1;;\"a;\"\"b\"\"\"\r\n")
            << R"({"Server":[{"server":"a"},{"server":"b"}],"SystemParameters":{"gsens":5},)"
               R"("gsm":[{"gprs 1":{"apn":"","apn_name":)"
               "\"a;\\\"b\\\"\""
               R"(}}],"hardver":1,"hardver.serial":5})";
        QTest::newRow("text where the template has a number")
            << QByteArray("IMEI,SystemParameters.gsens\n1,abc\n")
            << "!SystemParameters.gsens: \"abc\" не подходит, в шаблоне здесь число";
        QTest::newRow("an element the template lacks")
            << QByteArray("IMEI,Server[5].server\n1,x\n") << "!Server[5].server: в шаблоне нет элемента [5]";
        QTest::newRow("a key the template lacks") << QByteArray("IMEI,navigation.x\n1,x\n")
                                                  << "!navigation.x: в шаблоне нет ключа \"navigation.x\"";
        QTest::newRow("no IMEI column") << QByteArray("a,b\n1,2\n") << "!в первой строке нет столбца IMEI";
        QTest::newRow("short row") << QByteArray("IMEI,a\n\n1\n") << "!строка 3: 1 столбцов вместо 2";
        QTest::newRow("IMEI twice") << QByteArray("IMEI,a\n1,2\n1,3\n") << "!строка 3: IMEI 1 уже был";
    }

    void overrides() {
        QFETCH(QByteArray, csv);
        QFETCH(QString, expected);
        const QJsonObject templateRoot =
            QJsonDocument::fromJson(R"({"hardver.serial": 5, "hardver": 1, "SystemParameters": {"gsens": 5},
                "gsm": [{"gprs 1": {"apn": "", "apn_name": ""}}], "Server": [{"server": "a"}, {"server": "b"}]})")
                .object();
        ConfigurationOverrides overrides;
        QString error;
        QJsonObject root = templateRoot;
        const bool parsed = ConfigurationOverrides::parse(csv, &overrides, &error);
        if (parsed && overrides.apply(QStringLiteral("1"), &root, &error)) {
            QCOMPARE(QString::fromUtf8(QJsonDocument(root).toJson(QJsonDocument::Compact)), expected);
            QVERIFY(overrides.check(templateRoot, &error));
            QVERIFY(!overrides.contains("3"));
        } else {
            QCOMPARE("!" + error, expected);
            // A bad value is found by the check of the whole table before any device is touched.
            QVERIFY(!parsed || !overrides.check(templateRoot, &error));
        }
    }
    // One field set on each side; the line is what the user reads, empty when the device would hold the
    // same value (masked to the field, text as the wire carries it).
    void fieldChange_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QVariant>("before");
        QTest::addColumn<QVariant>("after");
        QTest::addColumn<QString>("human");
        QTest::addColumn<QString>("plain");
        const auto row = [](const char *name, const char *path, const QVariant &before, const QVariant &after,
                            const QString &human = {}, const QString &plain = {}) {
            QTest::newRow(name) << QString::fromLatin1(path) << before << after << human << plain;
        };
        row("roaming", "gsm[1].roaming.forbidden", 1ULL, 0ULL, "SIM 2: роуминг: запрещен → разрешен",
            "gsm[1].roaming.forbidden: 1 -> 0");
        row("unit", "navigation.faultSpeed", 3ULL, 0ULL, "Навигация: Порог ложной скорости: 3 км/ч → 0 км/ч",
            "navigation.faultSpeed: 3 -> 0");
        row("text", "Server[0].server", "a.ru", "", "Сервер 1: Адрес сервера: «a.ru» → (пусто)",
            "Server[0].server: \"a.ru\" -> \"\"");
        row("timetable count", "gsm[0].roaming.timetable", "ff", "0",
            "SIM 1: расписание роуминга: 8 из 112 интервалов → 0 из 112 интервалов",
            "gsm[0].roaming.timetable: 0x000000000000000000000000000000ff -> "
            "0x00000000000000000000000000000000");
        row("timetable same count", "gsm[0].roaming.timetable", "1", "2",
            "SIM 1: расписание роуминга: 1 из 112 интервалов (0x00000000000000000000000000000001) → 1 из 112 "
            "интервалов (0x00000000000000000000000000000002)",
            "gsm[0].roaming.timetable: 0x00000000000000000000000000000001 -> "
            "0x00000000000000000000000000000002");
        row("masked to 4 bits", "SystemParameters.gsens", 16ULL, 0ULL);
        row("flag bit", "adcs[2].enabled", 3ULL, 1ULL);
        row("unsendable tail", "gsm[0].gprs.apn", "internet", "internetЖx");
        row("beyond 32", "gsm[1].gprs.apn_password", QString(32, 'p'), QString(40, 'p'));
    }
    void fieldChange() {
        QFETCH(QString, path);
        QFETCH(QVariant, before);
        QFETCH(QVariant, after);
        const ConfigField *f = findField(path);
        QVERIFY(f);
        VantorConfiguration a, b;
        f->assign(a, before);
        f->assign(b, after);

        const ConfigurationDiff d = ConfigurationDiff::compare(a, b);

        QFETCH(QString, human);
        QFETCH(QString, plain);
        QCOMPARE(d.humanLines().join('\n'), human);
        QCOMPARE(d.plainLines().join('\n'), plain);
        QCOMPARE(d.unchanged + d.changes.size(), writableFields().size());
    }

    // Saved and loaded again, the file loses the roaming and "faultSpeed"; the check names exactly those,
    // and keeping the device's values for them makes the write change nothing.
    void roundTripKeepsTheDeviceValuesOnRequest() {
        VantorConfiguration device;
        fillSample(device);
        const QJsonObject root = fileOf(device);
        VantorConfiguration loaded;
        loaded.read(root);

        const ConfigurationDiff before = ConfigurationDiff::compare(device, loaded);
        const QVector<const ConfigField *> lacking = fieldsNotInFile(root);
        WritePreview preview{&device, &loaded, writeAllSections(), lacking, QString(), true};
        VantorConfiguration written;
        preview.apply(written);

        QCOMPARE(before.plainLines(),
                 QStringList({"navigation.faultSpeed: 150 -> 0", "gsm[0].roaming.forbidden: 1 -> 0",
                              "gsm[0].roaming.timetable: 0x00000000000003e800000000000007d0 -> "
                              "0x00000000000000000000000000000000",
                              "gsm[1].roaming.forbidden: 1 -> 0",
                              "gsm[1].roaming.timetable: 0x00000000000003e900000000000007d1 -> "
                              "0x00000000000000000000000000000000"}));
        QCOMPARE(paths(lacking),
                 QStringList({"navigation.faultSpeed", "gsm[0].roaming.forbidden", "gsm[0].roaming.timetable",
                              "gsm[1].roaming.forbidden", "gsm[1].roaming.timetable"}));
        QCOMPARE(identityNotInFile(root), QStringList{"IMEI"});
        QVERIFY(preview.diff().isEmpty());
        QVERIFY(ConfigurationDiff::compare(device, written).isEmpty());
        QCOMPARE(mismatchLines(before).at(0),
                 "Навигация: Порог ложной скорости: записано 150 км/ч, в приборе 0 км/ч");
        QCOMPARE(fieldsNotInFile(QJsonObject()).size(), writableFields().size());
    }

    void otherModel() {
        VantorConfiguration device;
        fillSample(device);
        QJsonObject root = fileOf(device);
        QCOMPARE(otherModelWarning(root, device), QString());
        QCOMPARE(otherModelWarning(QJsonObject(), device), QString());
        root.insert("hardver.devmod", 5);
        QCOMPARE(otherModelWarning(root, device),
                 "Файл сохранен с прибора другой модели (группа 1, тип 3, модификация 5), подключен прибор: "
                 "группа 1, тип 3, модификация 2");
    }

    void fileCheck_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QStringList>("lines");
        const auto row = [](const char *name, const QByteArray &json, const QString &line = {}) {
            QTest::newRow(name) << json << (line.isEmpty() ? QStringList() : QStringList{line});
        };
        const QString none = "в файле нет ни одного параметра конфигурации";
        row("empty", "{}", none);
        row("identity only", R"({"name":"x","hardver.devtype":3})", none);
        row("fine", R"({"SystemParameters":{"gsens":15,"lowSpeed":1}})");
        row("masked", R"({"SystemParameters":{"gsens":300}})",
            "SystemParameters.gsens: в файле 300 (вне диапазона, читается как 44), в прибор уйдет 12");
        row("negative port", R"({"Server":[{"port":-5}]})",
            "Server[0].port: в файле -5 (вне диапазона), в прибор уйдет 4294967291");
        row("fraction", R"({"navigation":{"deltaSpeed":2.5}})",
            "navigation.deltaSpeed: в файле 2.5 (вне диапазона), в прибор уйдет 2");
        row("string for a number", R"({"adcs":[{},{"averaging":"10"}]})",
            "adcs[1].averaging: в файле \"10\" (не число), в прибор уйдет 0");
        row("long text", R"({"gsm":[{"gprs 1":{"apn":"abcdefghijklmnopqrstuvwxyz0123456789"}}]})",
            "gsm[0].gprs.apn: в файле \"abcdefghijklmnopqrstuvwxyz0123456789\" (длиннее 32 символов), "
            "в прибор уйдет \"abcdefghijklmnopqrstuvwxyz012345\"");
        row("cyrillic", R"({"gsm":[{},{"gprs 2":{"apn_name":"юзер"}}]})",
            "gsm[1].gprs.apn_name: в файле \"юзер\" (символы, которые прибор не принимает), "
            "в прибор уйдет \"\"");
        row("number for text", R"({"Server":[{"server":7}]})",
            "Server[0].server: в файле 7 (не текст), в прибор уйдет \"\"");
    }
    void fileCheck() {
        QFETCH(QByteArray, json);
        QFETCH(QStringList, lines);
        const ConfigurationFileCheck c =
            ConfigurationFileCheck::check(QJsonDocument::fromJson(json).object());
        QCOMPARE(c.lines(), lines);
        QCOMPARE(c.ok(), lines.isEmpty());
    }

    // Every field comes back, the roaming and the identity included; a damaged or foreign file is skipped
    // whole; only the newest Kept stay.
    void snapshots() {
        QTemporaryDir dir;
        SnapshotStore store(dir.path());
        VantorConfiguration device;
        fillSample(device);
        VantorConfiguration other;
        Snapshot s =
            Snapshot::capture(device, Snapshot::changesOf(ConfigurationDiff::compare(device, other)));
        s.programVersion = "1.2.3";
        const QString path = store.save(s);
        QVERIFY(!path.isEmpty());

        const QString folder = QFileInfo(path).absolutePath();
        QVERIFY(writeAll(folder + "/20000101-000000000.json", s.toJson().left(200)));
        QJsonObject lacking = QJsonDocument::fromJson(s.toJson()).object();
        QJsonObject values = lacking.value("values").toObject();
        values.remove("navigation.faultSpeed");
        lacking.insert("values", values);
        QVERIFY(writeAll(folder + "/20000102-000000000.json", QJsonDocument(lacking).toJson()));

        QStringList damaged;
        const QVector<Snapshot> list = store.list("863071014478127", &damaged);
        QCOMPARE(list.size(), 1);
        QCOMPARE(damaged.size(), 2);
        QVERIFY2(damaged.at(0).endsWith("нет значения navigation.faultSpeed"), qPrintable(damaged.at(0)));
        QCOMPARE(list.at(0).programVersion, QString("1.2.3"));
        QCOMPARE(list.at(0).writtenLines().size(), ConfigurationDiff::compare(device, other).changes.size());
        QVERIFY(list.at(0).writtenLines().contains("SIM 1: роуминг: запрещен → разрешен"));

        // A write that did not go through is marked; one of an older program, without the mark, is not.
        Snapshot unfinished = list.at(0);
        unfinished.complete = false;
        QVERIFY(store.rewrite(unfinished));
        QVERIFY(store.list("863071014478127").at(0).summary().endsWith(", запись не завершена"));
        QJsonObject older = QJsonDocument::fromJson(s.toJson()).object();
        older.remove("complete");
        QVERIFY(Snapshot::fromJson(QJsonDocument(older).toJson(), &unfinished, nullptr) &&
                unfinished.complete);

        VantorConfiguration restored;
        list.at(0).applyTo(restored);
        for (const ConfigField &f : configurationFields())
            QVERIFY2(f.rawValue(restored) == f.rawValue(device), qPrintable(f.path));
        // One of only the sections read: it needs and restores those alone, the tracker's folder still
        // named by its identity.
        Snapshot partial;
        QVERIFY(
            Snapshot::fromJson(Snapshot::capture(device, {}, {keys::System}).toJson(), &partial, nullptr));
        QCOMPARE(partial.imei, list.at(0).imei);
        VantorConfiguration mixed;
        partial.applyTo(mixed);
        for (const ConfigField &f : configurationFields())
            QVERIFY2(f.rawValue(mixed) == f.rawValue(f.section == keys::System ? device : other),
                     qPrintable(f.path));

        for (int i = 0; i < SnapshotStore::Kept + 2; ++i) {
            Snapshot more = s;
            more.time = more.time.addSecs(i + 1);
            QVERIFY(!store.save(more).isEmpty());
        }
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), SnapshotStore::Kept);
        QVERIFY(!QFile::exists(path));
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
