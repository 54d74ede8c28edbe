#include "AgcConfiguration.h"
#include "DeviceInfoConfiguration.h"
#include "GSMConfiguration.h"
#include "SystemConfiguration.h"
#include "configuration.h"

#include <QDateTime>
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

QStringList g_messages;
void capture(QtMsgType, const QMessageLogContext &, const QString &text) {
    g_messages << text;
}
} // namespace

class tst_Configuration : public QObject {
    Q_OBJECT

private slots:
    void sectionTable_keepsTheTenKeysInOrder() {
        QCOMPARE(sectionKeys(),
                 QStringList({"mainDviceInfo", "GSMConfiguration", "agcConfiguration", "NavConfiguration",
                              "LogicConfiguration", "FuelConfiguration", "ServerConfiguration",
                              "SystemConfiguration", "OutConfiguration", "ControlInfo"}));
        QCOMPARE(sectionDisplayName(QStringLiteral("agcConfiguration")), QStringLiteral("ADC configuration"));
        QCOMPARE(sectionDisplayName(QStringLiteral("ControlInfo")), QStringLiteral("Device current state"));
        QCOMPARE(sectionDisplayName(QStringLiteral("OutConfiguration")),
                 QStringLiteral("Outputs configuration"));
        QCOMPARE(sectionDisplayName(QStringLiteral("mainDeviceInfo")), QString());
    }

    void lookupByKey_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("found");
        QTest::newRow("mainDviceInfo as spelled") << "mainDviceInfo" << true;
        QTest::newRow("the missing e restored finds nothing") << "mainDeviceInfo" << false;
        QTest::newRow("keys are case sensitive") << "maindviceinfo" << false;
        QTest::newRow("empty key") << "" << false;
    }

    void lookupByKey() {
        QFETCH(QString, key);
        Configuration cfg;
        auto *info = new DeviceInfoConfiguration(1, &cfg);
        cfg.registerItem(QString::fromLatin1(keys::MainDeviceInfo), info);

        QTEST(cfg.item(key) != nullptr, "found");
        QTEST(typed_item<DeviceInfoConfiguration>(&cfg, key) != nullptr, "found");
    }

    void typedLookup_inAChildProcess_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("as");
        QTest::addColumn<bool>("aborts");
        QTest::addColumn<QString>("output");
        QTest::newRow("wrong class stops the program") << "mainDviceInfo"
                                                       << "gsm" << true << "";
        QTest::newRow("right class is found") << "mainDviceInfo"
                                              << "info" << false << "found";
        QTest::newRow("absent key gives null, whatever the class") << "GSMConfiguration"
                                                                   << "gsm" << false << "null";
    }

    void typedLookup_inAChildProcess() {
        QFETCH(QString, key);
        QFETCH(QString, as);
        QFETCH(bool, aborts);
        QFETCH(QString, output);
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(kChildSwitch), key, as});
        QVERIFY(child.waitForFinished(20000));
        const QString err = QString::fromLocal8Bit(child.readAllStandardError());

        if (aborts) {
            QCOMPARE(child.exitStatus(), QProcess::CrashExit);
            QVERIFY2(err.contains(QLatin1String("ASSERT: \"typed_item\" in file Devices/configuration")),
                     qPrintable(err));
            QVERIFY2(err.contains(QLatin1String("kd::GSMConfiguration")), qPrintable(err));
        } else {
            QCOMPARE(child.exitStatus(), QProcess::NormalExit);
            QCOMPARE(child.exitCode(), 0);
            QCOMPARE(QString::fromLatin1(child.readAllStandardOutput()).trimmed(), output);
        }
    }

    void sectionWithCountZero_hasNoElements() {
        SystemConfiguration s(0);
        QCOMPARE(s.count(), 0);
        QCOMPARE(s.element(0), nullptr);
        QCOMPARE(s.value(), nullptr);
        QVERIFY(s.encode().isEmpty());
        QVERIFY(s.children().isEmpty());
    }

    void elements_areCreatedInOrderAndParented() {
        AgcConfiguration s(3);
        QCOMPARE(s.count(), 3);
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(s.element(i)->parent(), &s);
            QCOMPARE(s.indexOf(s.element(i)), i);
        }
        QCOMPARE(s.element(3), nullptr);
        QCOMPARE(s.element(-1), nullptr);
        QCOMPARE(s.children().size(), 3);
    }

    void destroyedValue_readsAsNullEverywhere() {
        Configuration cfg;
        auto *sys = new SystemConfiguration(1, &cfg);
        cfg.registerItem(QString::fromLatin1(keys::System), sys);
        QVERIFY(typed_item<SystemConfiguration>(&cfg, QString::fromLatin1(keys::System)));

        delete sys->value();

        QCOMPARE(sys->value(), nullptr);
        QCOMPARE(sys->element(0), nullptr);
        QCOMPARE(typed_item<SystemConfiguration>(&cfg, QString::fromLatin1(keys::System)), nullptr);
        QVERIFY(sys->encode().isEmpty());
        sys->decode(QByteArray::fromHex("91 01 00 00 01 02 03 00"));

        delete sys;
        QCOMPARE(cfg.item(QString::fromLatin1(keys::System)), nullptr);
    }

    void elementChange_isAnnouncedBySection() {
        AgcConfiguration s(2);
        QSignalSpy spy(&s, &IConfigurationItem::changed);
        s.element(1)->setAveraging(3);
        s.element(1)->setAveraging(3); // same value: no change
        QCOMPARE(spy.count(), 1);
    }

    void trafficLog_startsWithTheUnixSeconds() {
        g_messages.clear();
        const qint64 before = QDateTime::currentSecsSinceEpoch();
        const QtMessageHandler previous = qInstallMessageHandler(capture);
        trafficLog(QStringLiteral("Прочитано что-то"));
        qInstallMessageHandler(previous);
        const qint64 after = QDateTime::currentSecsSinceEpoch();

        QCOMPARE(g_messages.size(), 1);
        const QString line = g_messages.first();
        const int blank = line.indexOf(QLatin1Char(' '));
        QVERIFY(blank > 0);
        const qint64 stamp = line.left(blank).toLongLong();
        QVERIFY(stamp >= before && stamp <= after);
        QCOMPARE(line.mid(blank + 1), QStringLiteral("Прочитано что-то"));
    }
};

int main(int argc, char **argv) {
    if (argc == 4 && qstrcmp(argv[1], kChildSwitch) == 0) {
        QCoreApplication app(argc, argv);
        return lookupChild(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    }
    QCoreApplication app(argc, argv);
    tst_Configuration test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_configuration.moc"
