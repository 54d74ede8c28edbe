#include "Devices/AgcConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/SectionTable.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/configuration.h"

#include <QProcess>
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
        QTest::newRow("wrong class stops the program") << "mainDviceInfo"
                                                       << "gsm"
                                                       << "";
        QTest::newRow("right class is found") << "mainDviceInfo"
                                              << "info"
                                              << "found";
        QTest::newRow("absent key gives null, whatever the class") << "GSMConfiguration"
                                                                   << "gsm"
                                                                   << "null";
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
