#include "ConfigurationSample.h"
#include "ControlInfoConfiguration.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QtTest>

using namespace kd;

namespace {
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

QJsonObject parse(const char *json) {
    return QJsonDocument::fromJson(QByteArray(json)).object();
}
} // namespace

class tst_VantorConfiguration : public QObject {
    Q_OBJECT

private slots:
    void construction_createsTheTenSectionsInOrder() {
        VantorConfiguration cfg;
        QStringList classes;
        for (QObject *child : cfg.children())
            classes << QString::fromLatin1(child->metaObject()->className());
        QCOMPARE(classes,
                 QStringList({"kd::DeviceInfoConfiguration", "kd::AgcConfiguration",
                              "kd::NavigationConfiguration", "kd::LogicConfiguration", "kd::GSMConfiguration",
                              "kd::FuelConfiguration", "kd::ServerConfiguration", "kd::SystemConfiguration",
                              "kd::OutputConfiguration", "kd::ControlInfoConfiguration"}));
        QCOMPARE(cfg.keys().size(), 10);
        QCOMPARE(cfg.agc()->count(), 3);
        QCOMPARE(cfg.gsm()->count(), 2);
        QCOMPARE(cfg.logic()->count(), 2);
        QCOMPARE(cfg.fuel()->count(), 8);
        QCOMPARE(cfg.servers()->count(), 1);
        QCOMPARE(cfg.controlInfo()->count(), 1);
        for (const QString &k : sectionKeys())
            QVERIFY2(!cfg.isFilled(k), qPrintable(k));
    }

    void configComplete_data() {
        QTest::addColumn<QStringList>("filled");
        QTest::addColumn<int>("emitted");

        QTest::newRow("the eight tested sections, system never read") << kEight << 1;
        QTest::newRow("outputs missing")
            << without(kEight, "OutConfiguration") + QStringList{"SystemConfiguration"} << 0;
        QTest::newRow("device information missing") << without(kEight, "mainDviceInfo") << 0;
        QTest::newRow("GSM missing") << without(kEight, "GSMConfiguration") << 0;
        QTest::newRow("telemetry does not stand in for a section")
            << without(kEight, "FuelConfiguration") + QStringList{"ControlInfo"} << 0;
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
        QCOMPARE(cfg.isFilled(QStringLiteral("mainDviceInfo")), !includeDeviceInfo);
        QVERIFY(!cfg.isFilled(QStringLiteral("agcConfiguration")));
        QSignalSpy spy(&cfg, &Configuration::configComplete);

        fill(cfg, without(kEight, "mainDviceInfo"));

        QTEST(int(spy.count()), "emitted");
    }

    void deviceAnswers_fillEverySectionAndComplete() {
        VantorConfiguration device;
        fillSample(device);
        device.outputs()->value()->setStates({1, 0, 1, 1});
        VantorConfiguration cfg;
        QSignalSpy spy(&cfg, &Configuration::configComplete);

        const QList<QByteArray> answers = {
            device.deviceInfo()->encodeAnswer(1), device.deviceInfo()->encodeAnswer(2),
            device.system()->encodeAnswer(),      device.navigation()->encodeAnswer(2),
            device.navigation()->encodeAnswer(3), device.gsm()->encodeAnswer(3),
            device.gsm()->encodeAnswer(4),        device.servers()->encodeAnswer(),
            device.agc()->encodeAnswer(),         device.logic()->encodeAnswer(),
            device.fuel()->encodeAnswer(),        device.outputs()->encodeAnswer()};
        for (const QByteArray &a : answers) {
            cfg.deviceInfo()->decode(a);
            cfg.system()->decode(a);
            cfg.navigation()->decode(a);
            cfg.gsm()->decode(a);
            cfg.servers()->decode(a);
            cfg.agc()->decode(a);
            cfg.logic()->decode(a);
            cfg.fuel()->decode(a);
            cfg.outputs()->decode(a);
        }
        QCOMPARE(spy.count(), 1);

        // Everything the device knows arrives, except the fuel averaging of elements 5..7 and the output
        // parameters, which the device never sends.
        QJsonObject expected;
        device.write(expected);
        QJsonObject actual;
        cfg.write(actual);
        const QJsonArray tanks = expected.value("fuel_tanks").toArray();
        QJsonArray sentTanks;
        for (int i = 0; i < tanks.size(); ++i)
            sentTanks.append(i < FuelConfiguration::Tanks ? tanks.at(i) : QJsonObject{{"averaging", 0}});
        expected.insert("fuel_tanks", sentTanks);
        expected.insert("out_parameters", QJsonArray{QJsonObject{{"highCondition", 0},
                                                                 {"lowCondition", 0},
                                                                 {"numberOfOutputs", 4},
                                                                 {"outNum", 0},
                                                                 {"replayCounter", 0}}});
        QCOMPARE(QJsonDocument(actual).toJson(), QJsonDocument(expected).toJson());
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
        QCOMPARE(root.value("adcs").toArray().at(2).toObject().value("id").toInt(), 2);
        QCOMPARE(root.value("dinputs").toArray().at(1).toObject().value("id").toInt(), 1);
        QCOMPARE(root.value("fuel_tanks").toArray().at(7).toObject().value("averaging").toInt(), 107);
    }

    void readBack_losesIMEIFaultSpeedAndRoaming() {
        VantorConfiguration saved;
        fillSample(saved);
        QJsonObject root;
        saved.write(root);

        VantorConfiguration loaded;
        loaded.deviceInfo()->setIMEI(QStringLiteral("111"));
        loaded.navigation()->value()->setFaultSpeed(77);
        loaded.gsm()->element(0)->setTimetableHi(5);
        loaded.read(root);

        QCOMPARE(loaded.deviceInfo()->IMEI(), QStringLiteral("111"));
        QCOMPARE(int(loaded.navigation()->value()->faultSpeed()), 77);
        for (int i = 0; i < 2; ++i) {
            const GSMConfigurationItem *g = loaded.gsm()->element(i);
            QCOMPARE(g->apn(), saved.gsm()->element(i)->apn());
            QCOMPARE(g->apnPassword(), saved.gsm()->element(i)->apnPassword());
            QCOMPARE(int(g->forbidden()), 0);
            QCOMPARE(g->timetableHi(), 0u);
            QCOMPARE(g->timetableLow(), 0u);
        }
        // Everything else comes back.
        saved.deviceInfo()->setIMEI(QStringLiteral("111"));
        saved.navigation()->value()->setFaultSpeed(77);
        for (int i = 0; i < 2; ++i) {
            saved.gsm()->element(i)->setForbidden(0);
            saved.gsm()->element(i)->setTimetableHi(0);
            saved.gsm()->element(i)->setTimetableLow(0);
        }
        QJsonObject again;
        loaded.write(again);
        QJsonObject expected;
        saved.write(expected);
        QCOMPARE(QJsonDocument(again).toJson(), QJsonDocument(expected).toJson());
    }

    void read_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("field");
        QTest::addColumn<qint64>("value");

        QTest::newRow("gsens 300 is stored as 44")
            << QByteArray(R"({"SystemParameters":{"gsens":300}})") << "gsens" << qint64(44);
        QTest::newRow("roaming without the blank restores forbidden")
            << QByteArray(R"({"gsm":[{"roaming1":{"forbidden":257,"timetableHi":7,"timetableLow":9}}]})")
            << "forbidden" << qint64(1);
        QTest::newRow("roaming without the blank restores the high word")
            << QByteArray(R"({"gsm":[{"roaming1":{"forbidden":1,"timetableHi":7,"timetableLow":9}}]})")
            << "timetableHi" << qint64(7);
        QTest::newRow("timetableLow is read although never written")
            << QByteArray(R"({"gsm":[{"roaming1":{"timetableLow":-2}}]})") << "timetableLow" << qint64(-2);
        QTest::newRow("roaming with the blank is not found")
            << QByteArray(R"({"gsm":[{"roaming 1":{"forbidden":1,"timetableHi":7}}]})") << "timetableHi"
            << qint64(0);
        QTest::newRow("navigation values are masked to 8 bits")
            << QByteArray(R"({"navigation":{"deltaCourse":513}})") << "deltaCourse" << qint64(1);
        QTest::newRow("faultSpeed in the file is ignored")
            << QByteArray(R"({"navigation":{"faultSpeed":50}})") << "faultSpeed" << qint64(99);
        QTest::newRow("fuel averaging is masked to 16 bits")
            << QByteArray(R"({"fuel_tanks":[{"averaging":65537}]})") << "fuelAveraging0" << qint64(1);
        QTest::newRow("fuel address is masked to 8 bits")
            << QByteArray(R"({"fuel_sensors":[{},{"addr":258}]})") << "fuelAddr1" << qint64(2);
        QTest::newRow("elements are taken by position, not by id")
            << QByteArray(R"({"adcs":[{"id":2,"averaging":4}]})") << "adcAveraging0" << qint64(4);
        QTest::newRow("array elements beyond the section are ignored")
            << QByteArray(R"({"dinputs":[{"func":1},{"func":2},{"func":3}]})") << "func1" << qint64(2);
        QTest::newRow("software version above 2^31")
            << QByteArray(R"({"softver":4000000000})") << "Version" << qint64(4000000000);
        QTest::newRow("a string where a number belongs reads as 0")
            << QByteArray(R"({"softver":"918"})") << "Version" << qint64(0);
        QTest::newRow("a number beyond 64 bits reads as 0")
            << QByteArray(R"({"gsm":[{"roaming1":{"timetableHi":1e300}}]})") << "timetableHi" << qint64(0);
        QTest::newRow("server port") << QByteArray(R"({"Server":[{"port":21070,"server":"a.b"}]})") << "port"
                                     << qint64(21070);
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
            {"deltaCourse", cfg.navigation()->value()->deltaCourse()},
            {"faultSpeed", cfg.navigation()->value()->faultSpeed()},
            {"fuelAveraging0", cfg.fuel()->element(0)->averaging()},
            {"fuelAddr1", cfg.fuel()->element(1)->addr()},
            {"adcAveraging0", cfg.agc()->element(0)->averaging()},
            {"func1", cfg.logic()->element(1)->func()},
            {"Version", cfg.deviceInfo()->Version()},
            {"port", cfg.servers()->value()->port()},
        };
        QVERIFY(values.contains(field));
        QTEST(values.value(field), "value");
    }

    void read_emptyRootSetsEveryFieldToZero() {
        VantorConfiguration cfg;
        fillSample(cfg);
        cfg.read(QJsonObject());

        QJsonObject root;
        cfg.write(root);
        // Only what the reader never touches survives.
        QCOMPARE(root.value("IMEI").toString(), QStringLiteral("863071014478127"));
        QCOMPARE(root.value("navigation").toObject().value("faultSpeed").toInt(), 150);
        QCOMPARE(root.value("name").toString(), QString());
        QCOMPARE(root.value("softver").toInt(), 0);
        QCOMPARE(root.value("Server").toArray().at(0).toObject().value("server").toString(), QString());
        QCOMPARE(root.value("fuel_tanks").toArray().at(7).toObject().value("averaging").toInt(), 0);
        QCOMPARE(root.value("out_parameters").toArray().at(0).toObject().value("outNum").toInt(), 0);
        QCOMPARE(
            root.value("gsm").toArray().at(1).toObject().value("gprs 2").toObject().value("apn").toString(),
            QString());
        QCOMPARE(root.value("adcs").toArray().at(2).toObject().value("high_level_threshold").toInt(), 0);
        QCOMPARE(root.value("SystemParameters").toObject().value("pwrMode").toInt(), 0);
    }

    void read_doesNotTouchTelemetry() {
        VantorConfiguration cfg;
        QVERIFY(cfg.controlInfo()->setRecord(11, 0, QByteArray::fromHex("01 02 03 04 05 06")));
        cfg.read(parse(R"({"ControlInfo":{}})"));
        QVERIFY(cfg.controlInfo()->clock().has_value());
        QCOMPARE(cfg.controlInfo()->clock()->unixTime, 0x04030201u);
    }
};

QTEST_GUILESS_MAIN(tst_VantorConfiguration)
#include "tst_vantorconfiguration.moc"
