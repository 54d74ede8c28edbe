#include "AppSettings.h"

#include <QtTest>
#include <functional>

using Getter = std::function<QVariant(const AppSettings &)>;
using Setter = std::function<void(AppSettings &)>;
Q_DECLARE_METATYPE(Getter)
Q_DECLARE_METATYPE(Setter)

class tst_AppSettings : public QObject {
    Q_OBJECT

private slots:
    void freshStoreGivesDefaults_data();
    void freshStoreGivesDefaults();
    void setterWritesItsOwnKey_data();
    void setterWritesItsOwnKey();
    void logKeysAreIndependent();
    void serverDialogDefaultsReplaceAbsentValues_data();
    void serverDialogDefaultsReplaceAbsentValues();
    void recordReadsConnectionTypeAsTruthValue_data();
    void recordReadsConnectionTypeAsTruthValue();
    void recordRoundTripKeepsPasswordUntouched();
    void defaultStoreIsTheProgramsOwn();
    void telemetryPeriod_data();
    void telemetryPeriod();

private:
    QSettings *freshStore();
};

QSettings *tst_AppSettings::freshStore() {
    auto *s = new QSettings(QStringLiteral("TavrelTest"), QStringLiteral("appsettings"), this);
    s->clear();
    return s;
}

void tst_AppSettings::freshStoreGivesDefaults_data() {
    QTest::addColumn<Getter>("get");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("portName") << Getter([](const AppSettings &a) { return a.portName(); })
                              << QVariant(QString());
    QTest::newRow("skinName") << Getter([](const AppSettings &a) { return a.skinName(); }) << QVariant(0);
    QTest::newRow("telemetryTime") << Getter([](const AppSettings &a) { return a.telemetryTime(); })
                                   << QVariant(0);
    QTest::newRow("loginType") << Getter([](const AppSettings &a) { return a.loginType(); }) << QVariant(0);
    QTest::newRow("passWord") << Getter([](const AppSettings &a) { return a.passWord(); }) << QVariant(0);
    QTest::newRow("serverAddress") << Getter([](const AppSettings &a) { return a.serverAddress(); })
                                   << QVariant(QString());
    QTest::newRow("serverPort") << Getter([](const AppSettings &a) { return a.serverPort(); }) << QVariant(0);
    QTest::newRow("serialNumber") << Getter([](const AppSettings &a) { return a.serialNumber(); })
                                  << QVariant(QString());
    QTest::newRow("Timeout") << Getter([](const AppSettings &a) { return a.timeoutSeconds(); })
                             << QVariant(0);
    QTest::newRow("settings logSave")
        << Getter([](const AppSettings &a) { return a.settingsLogSave(); }) << QVariant(false);
    QTest::newRow("server logSave") << Getter([](const AppSettings &a) { return a.serverLogSave(); })
                                    << QVariant(false);
    QTest::newRow("login") << Getter([](const AppSettings &a) { return a.login(); }) << QVariant(QString());
    QTest::newRow("userPassword") << Getter([](const AppSettings &a) { return a.userPassword(); })
                                  << QVariant(QString());
    QTest::newRow("currentProxy") << Getter([](const AppSettings &a) { return a.currentProxy(); })
                                  << QVariant(0);
    QTest::newRow("proxyServerAddres")
        << Getter([](const AppSettings &a) { return a.proxyServerAddres(); }) << QVariant(QString());
    QTest::newRow("proxyPort") << Getter([](const AppSettings &a) { return a.proxyPort(); }) << QVariant(0);
    QTest::newRow("proxyLogin") << Getter([](const AppSettings &a) { return a.proxyLogin(); })
                                << QVariant(QString());
    QTest::newRow("proxyPassword") << Getter([](const AppSettings &a) { return a.proxyPassword(); })
                                   << QVariant(QString());
    QTest::newRow("log to file") << Getter([](const AppSettings &a) { return a.deviceLogToFile(); })
                                 << QVariant(false);
}

void tst_AppSettings::freshStoreGivesDefaults() {
    QFETCH(Getter, get);
    QFETCH(QVariant, expected);
    AppSettings settings(freshStore());
    QCOMPARE(get(settings), expected);
}

void tst_AppSettings::setterWritesItsOwnKey_data() {
    QTest::addColumn<Setter>("set");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("port") << Setter([](AppSettings &a) { a.setPortName(QStringLiteral("ttyACM0")); })
                          << "settings/portName" << QVariant(QStringLiteral("ttyACM0"));
    QTest::newRow("skin") << Setter([](AppSettings &a) { a.setSkinName(1); }) << "settings/skinName"
                          << QVariant(1);
    QTest::newRow("telemetry") << Setter([](AppSettings &a) { a.setTelemetryTime(6); })
                               << "settings/telemetryTime" << QVariant(6);
    QTest::newRow("type") << Setter([](AppSettings &a) { a.setLoginType(1); }) << "loginSettings/loginType"
                          << QVariant(1);
    QTest::newRow("password") << Setter([](AppSettings &a) { a.setPassWord(123456789); })
                              << "loginSettings/passWord" << QVariant(123456789);
    QTest::newRow("address") << Setter([](AppSettings &a) { a.setServerAddress(QStringLiteral("10.0.0.1")); })
                             << "loginSettings/serverAddress" << QVariant(QStringLiteral("10.0.0.1"));
    QTest::newRow("server port") << Setter([](AppSettings &a) { a.setServerPort(4000); })
                                 << "loginSettings/serverPort" << QVariant(4000);
    QTest::newRow("imei") << Setter(
                                 [](AppSettings &a) { a.setSerialNumber(QStringLiteral("863071014478127")); })
                          << "loginSettings/serialNumber" << QVariant(QStringLiteral("863071014478127"));
    QTest::newRow("timeout") << Setter([](AppSettings &a) { a.setTimeoutSeconds(20); })
                             << "loginSettings/Timeout" << QVariant(20);
    QTest::newRow("settings log") << Setter([](AppSettings &a) { a.setSettingsLogSave(true); })
                                  << "loginSetings/logSave" << QVariant(true);
    QTest::newRow("server log") << Setter([](AppSettings &a) { a.setServerLogSave(true); })
                                << "loginSettings/logSave" << QVariant(true);
    QTest::newRow("login") << Setter([](AppSettings &a) { a.setLogin(QStringLiteral("eng")); })
                           << "loginSettings/login" << QVariant(QStringLiteral("eng"));
    QTest::newRow("user password") << Setter([](AppSettings &a) { a.setUserPassword(QStringLiteral("pw")); })
                                   << "loginSettings/userPassword" << QVariant(QStringLiteral("pw"));
    QTest::newRow("proxy") << Setter([](AppSettings &a) { a.setCurrentProxy(2); })
                           << "loginSettings/currentProxy" << QVariant(2);
    QTest::newRow("proxy host") << Setter(
                                       [](AppSettings &a) { a.setProxyServerAddres(QStringLiteral("px")); })
                                << "loginSettings/proxyServerAddres" << QVariant(QStringLiteral("px"));
    QTest::newRow("proxy port") << Setter([](AppSettings &a) { a.setProxyPort(3128); })
                                << "loginSettings/proxyPort" << QVariant(3128);
    QTest::newRow("proxy login") << Setter([](AppSettings &a) { a.setProxyLogin(QStringLiteral("u")); })
                                 << "loginSettings/proxyLogin" << QVariant(QStringLiteral("u"));
    QTest::newRow("proxy password") << Setter([](AppSettings &a) { a.setProxyPassword(QStringLiteral("p")); })
                                    << "loginSettings/proxyPassword" << QVariant(QStringLiteral("p"));
}

void tst_AppSettings::setterWritesItsOwnKey() {
    QFETCH(Setter, set);
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QSettings *store = freshStore();
    AppSettings settings(store);
    set(settings);
    QCOMPARE(store->allKeys(), QStringList{key});
    QCOMPARE(store->value(key).toString(), value.toString());
}

void tst_AppSettings::logKeysAreIndependent() {
    AppSettings settings(freshStore());
    settings.setSettingsLogSave(true);
    QVERIFY(settings.settingsLogSave());
    QVERIFY(!settings.serverLogSave());
    QVERIFY(settings.deviceLogToFile());

    settings.setSettingsLogSave(false);
    settings.setServerLogSave(true);
    QVERIFY(!settings.settingsLogSave());
    QVERIFY(settings.serverLogSave());
    QVERIFY(settings.deviceLogToFile());
}

void tst_AppSettings::serverDialogDefaultsReplaceAbsentValues_data() {
    QTest::addColumn<QVariant>("address");
    QTest::addColumn<QVariant>("port");
    QTest::addColumn<QVariant>("timeout");
    QTest::addColumn<QString>("expectedAddress");
    QTest::addColumn<int>("expectedPort");
    QTest::addColumn<int>("expectedTimeout");
    QTest::newRow("absent") << QVariant() << QVariant() << QVariant() << "cfg.tavrel.ru" << 1256 << 15;
    QTest::newRow("empty and zero") << QVariant(QString()) << QVariant(0) << QVariant(0) << "cfg.tavrel.ru"
                                    << 1256 << 15;
    QTest::newRow("stored") << QVariant(QStringLiteral("192.168.1.5")) << QVariant(7000) << QVariant(30)
                            << "192.168.1.5" << 7000 << 30;
}

void tst_AppSettings::serverDialogDefaultsReplaceAbsentValues() {
    QFETCH(QVariant, address);
    QFETCH(QVariant, port);
    QFETCH(QVariant, timeout);
    QSettings *store = freshStore();
    if (address.isValid())
        store->setValue(QStringLiteral("loginSettings/serverAddress"), address);
    if (port.isValid())
        store->setValue(QStringLiteral("loginSettings/serverPort"), port);
    if (timeout.isValid())
        store->setValue(QStringLiteral("loginSettings/Timeout"), timeout);
    AppSettings settings(store);
    QTEST(settings.serverAddressOrDefault(), "expectedAddress");
    QTEST(settings.serverPortOrDefault(), "expectedPort");
    QTEST(settings.timeoutSecondsOrDefault(), "expectedTimeout");
}

void tst_AppSettings::recordReadsConnectionTypeAsTruthValue_data() {
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<int>("expected");
    QTest::newRow("absent") << QVariant() << 0;
    QTest::newRow("0") << QVariant(0) << 0;
    QTest::newRow("1") << QVariant(1) << 1;
    QTest::newRow("2 is true") << QVariant(2) << 1;
    QTest::newRow("text true") << QVariant(QStringLiteral("true")) << 1;
}

void tst_AppSettings::recordReadsConnectionTypeAsTruthValue() {
    QFETCH(QVariant, stored);
    QSettings *store = freshStore();
    if (stored.isValid())
        store->setValue(QStringLiteral("loginSettings/loginType"), stored);
    QTEST(AppSettings(store).record().loginType, "expected");
}

void tst_AppSettings::recordRoundTripKeepsPasswordUntouched() {
    QSettings *store = freshStore();
    store->setValue(QStringLiteral("loginSettings/passWord"), 555);
    AppSettings settings(store);
    AppSettings::Record r = settings.record();
    QCOMPARE(r.passWord, 555);
    QCOMPARE(r.baudRate, 115200);
    r.passWord = 1;
    r.skinName = 1;
    r.telemetryTime = 5;
    r.proxyServerAddres = QStringLiteral("proxy.local");
    r.logSave = true;
    settings.writeRecord(r);
    QCOMPARE(settings.passWord(), 555);
    const AppSettings::Record back = settings.record();
    QCOMPARE(back.skinName, 1);
    QCOMPARE(back.telemetryTime, 5);
    QCOMPARE(back.proxyServerAddres, QStringLiteral("proxy.local"));
    QVERIFY(back.logSave);
    QVERIFY(!settings.serverLogSave());
}

void tst_AppSettings::defaultStoreIsTheProgramsOwn() {
    {
        AppSettings settings;
        settings.setSerialNumber(QStringLiteral("12345"));
        settings.sync();
    }
    QSettings raw(QStringLiteral("Tavrel"), QStringLiteral("Tavrel_micro_cfg"));
    QCOMPARE(raw.value(QStringLiteral("loginSettings/serialNumber")).toString(), QStringLiteral("12345"));
    raw.clear();
}

void tst_AppSettings::telemetryPeriod_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("row");
    QTest::addColumn<quint32>("expected");
    for (int row : {-1, 0, 1, 6, 7, 100})
        QTest::addRow("local row %d", row) << int(AppSettings::LocalConnection) << row << 1000u;
    const quint32 remote[] = {0, 1000, 2000, 3000, 4000, 5000, 50};
    for (int row = 0; row < 7; ++row)
        QTest::addRow("remote row %d", row) << int(AppSettings::RemoteConnection) << row << remote[row];
    QTest::newRow("remote row 7") << int(AppSettings::RemoteConnection) << 7 << 0u;
    QTest::newRow("remote row -1") << int(AppSettings::RemoteConnection) << -1 << 0u;
    QTest::newRow("remote row 1000") << int(AppSettings::RemoteConnection) << 1000 << 0u;
}

void tst_AppSettings::telemetryPeriod() {
    QFETCH(int, type);
    QFETCH(int, row);
    QTEST(AppSettings::telemetryPeriod(type, row), "expected");
}

QTEST_GUILESS_MAIN(tst_AppSettings)
#include "tst_appsettings.moc"
