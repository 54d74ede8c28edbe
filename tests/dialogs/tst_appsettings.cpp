#include "app/AppSettings.h"

#include <QtTest>

class tst_AppSettings : public QObject {
    Q_OBJECT

private slots:
    void logKeysAreIndependentAndEitherLogsToFile() {
        QSettings store(QStringLiteral("TavrelTest"), QStringLiteral("appsettings"));
        store.clear();
        AppSettings settings(&store);
        QVERIFY(!settings.deviceLogToFile());
        QVERIFY(settings.verifyWrites()); // on until the user switches it off
        settings.setSettingsLogSave(true);
        QVERIFY(!settings.serverLogSave());
        QVERIFY(settings.deviceLogToFile());
        settings.setSettingsLogSave(false);
        settings.setServerLogSave(true);
        QVERIFY(!settings.settingsLogSave());
        QVERIFY(settings.deviceLogToFile());
        // The settings dialog's key keeps its historical spelling.
        QCOMPARE(store.allKeys(), (QStringList{QStringLiteral("loginSetings/logSave"),
                                               QStringLiteral("loginSettings/logSave")}));
    }

    void defaultStoreIsTheProgramsOwn() {
        {
            AppSettings settings;
            settings.setSerialNumber(QStringLiteral("12345"));
            settings.sync();
        }
        QSettings raw(QStringLiteral("Tavrel"), QStringLiteral("Tavrel_micro_cfg"));
        QCOMPARE(raw.value(QStringLiteral("loginSettings/serialNumber")).toString(), QStringLiteral("12345"));
        raw.clear();
    }

    void telemetryPeriod_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("row");
        QTest::addColumn<quint32>("expected");
        for (int row : {-1, 0, 1, 6, 7, 100})
            QTest::addRow("local row %d", row) << int(AppSettings::LocalConnection) << row << 1000u;
        const quint32 remote[] = {0, 1000, 2000, 3000, 4000, 5000, 50};
        for (int row = 0; row < 7; ++row)
            QTest::addRow("remote row %d", row) << int(AppSettings::RemoteConnection) << row << remote[row];
        for (int row : {-1, 7, 1000})
            QTest::addRow("remote row %d", row) << int(AppSettings::RemoteConnection) << row << 0u;
    }

    void telemetryPeriod() {
        QFETCH(int, type);
        QFETCH(int, row);
        QTEST(AppSettings::telemetryPeriod(type, row), "expected");
    }
};

QTEST_GUILESS_MAIN(tst_AppSettings)
#include "tst_appsettings.moc"
