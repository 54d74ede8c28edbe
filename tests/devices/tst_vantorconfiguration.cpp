#include "Devices/ControlInfoConfiguration.h"
#include "tests/support/ConfigurationSample.h"

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
} // namespace

class tst_VantorConfiguration : public QObject {
    Q_OBJECT

private slots:
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
        QTest::newRow("faultSpeed in the file is ignored")
            << QByteArray(R"({"navigation":{"faultSpeed":50}})") << "faultSpeed" << qint64(99);
        QTest::newRow("fuel address is masked to 8 bits")
            << QByteArray(R"({"fuel_sensors":[{},{"addr":258}]})") << "fuelAddr1" << qint64(2);
        QTest::newRow("elements are taken by position, not by id")
            << QByteArray(R"({"adcs":[{"id":2,"averaging":4}]})") << "adcAveraging0" << qint64(4);
        QTest::newRow("software version above 2^31")
            << QByteArray(R"({"softver":4000000000})") << "Version" << qint64(4000000000);
        QTest::newRow("a string where a number belongs reads as 0")
            << QByteArray(R"({"softver":"918"})") << "Version" << qint64(0);
        QTest::newRow("a number beyond 64 bits reads as 0")
            << QByteArray(R"({"gsm":[{"roaming1":{"timetableHi":1e300}}]})") << "timetableHi" << qint64(0);
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

        QJsonObject root;
        cfg.write(root);
        QCOMPARE(root.value("IMEI").toString(), QStringLiteral("863071014478127"));
        QCOMPARE(root.value("navigation").toObject().value("faultSpeed").toInt(), 150);
        QCOMPARE(root.value("name").toString(), QString());
        QCOMPARE(root.value("Server").toArray().at(0).toObject().value("server").toString(), QString());
        QCOMPARE(root.value("fuel_tanks").toArray().at(7).toObject().value("averaging").toInt(), 0);
        QCOMPARE(root.value("adcs").toArray().at(2).toObject().value("high_level_threshold").toInt(), 0);
        QCOMPARE(root.value("SystemParameters").toObject().value("pwrMode").toInt(), 0);
        QCOMPARE(cfg.controlInfo()->clock()->unixTime, 0x04030201u); // telemetry is not configuration
    }
};

QTEST_GUILESS_MAIN(tst_VantorConfiguration)
#include "tst_vantorconfiguration.moc"
