#include "app/AppSettings.h"
#include "app/DeviceLog.h"
#include "app/PasswordDialog.h"
#include "app/SettinsDialog.h"
#include "app/Skin.h"
#include "app/loginDialog.h"
#include "app/loginSettings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QTemporaryDir>
#include <QtTest>

using Ports = QList<SerialPortDescription>;
Q_DECLARE_METATYPE(Ports)

Q_LOGGING_CATEGORY(lcDiagnostics, "tavrel.test.diagnostics")

namespace {

QString items(const QComboBox *box) {
    QStringList texts;
    for (int i = 0; i < box->count(); ++i)
        texts << box->itemText(i);
    return texts.join(QLatin1Char('|'));
}

SerialPortDescription port(const char *name, const char *maker, int vid, int pid) {
    SerialPortDescription d;
    d.portName = QLatin1String(name);
    d.manufacturer = QLatin1String(maker);
    d.hasVendorIdentifier = vid >= 0;
    d.vendorIdentifier = quint16(vid);
    d.hasProductIdentifier = pid >= 0;
    d.productIdentifier = quint16(pid);
    return d;
}

} // namespace

// The program's stored settings, the dialogs that edit them (each test on a store of its own) and the log
// file they switch on.
class tst_SettingsDialogs : public QObject {
    Q_OBJECT

private slots:
    void init() {
        delete m_raw;
        m_raw = new QSettings(QStringLiteral("TavrelTest"), QStringLiteral("settingsdialogs"), this);
        m_raw->clear();
    }

    void cleanup() {
        qInstallMessageHandler(nullptr);
        DeviceLog::setFileEnabled(false);
        DeviceLog::setDirectory(QString());
        QFile::remove(logFile());
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

    void loginImeiTakesOnlySixteenDigits_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        QTest::newRow("17 digits") << QStringLiteral("12345678901234567")
                                   << QStringLiteral("1234567890123456");
        QTest::newRow("letter refused") << QStringLiteral("8630a7") << QStringLiteral("86307");
        QTest::newRow("sign and blank refused") << QStringLiteral("-1 2") << QStringLiteral("12");
    }

    void loginImeiTakesOnlySixteenDigits() {
        QFETCH(QString, typed);
        AppSettings store(m_raw);
        store.setLoginType(AppSettings::RemoteConnection);
        loginDialog dialog(nullptr, &store);
        QTest::keyClicks(dialog.imeiEdit(), typed);
        QTEST(dialog.imei(), "kept");
    }

    void loginHintDependsOnStoredServer_data() {
        QTest::addColumn<QVariant>("address");
        QTest::addColumn<QVariant>("port");
        QTest::addColumn<QString>("hint");
        const QString check = QStringLiteral("Проверьте настройки сервера удаленного конфигурирования");
        QTest::newRow("nothing stored") << QVariant() << QVariant() << check;
        QTest::newRow("no port") << QVariant(QStringLiteral("cfg.example")) << QVariant() << check;
        QTest::newRow("both") << QVariant(QStringLiteral("cfg.example")) << QVariant(1256)
                              << "Для удаленного управления прибором необходимо перевести прибор на сервер "
                                 "конфигурирования: cfg.example:1256";
    }

    void loginHintDependsOnStoredServer() {
        QFETCH(QVariant, address);
        QFETCH(QVariant, port);
        if (address.isValid())
            m_raw->setValue(QStringLiteral("loginSettings/serverAddress"), address);
        if (port.isValid())
            m_raw->setValue(QStringLiteral("loginSettings/serverPort"), port);
        AppSettings store(m_raw);
        loginDialog dialog(nullptr, &store);
        QTEST(dialog.findChild<QLabel *>(QStringLiteral("hintLabel"))->text(), "hint");
    }

    void loginReadsStoredChoice() {
        AppSettings store(m_raw);
        store.setLoginType(AppSettings::RemoteConnection);
        store.setPassWord(777);
        store.setSerialNumber(QStringLiteral("863071014478127"));
        loginDialog dialog(nullptr, &store);
        QCOMPARE(
            QStringLiteral("%1 %2 %3").arg(dialog.connectionType()).arg(dialog.password()).arg(dialog.imei()),
            QStringLiteral("1 777 863071014478127"));
        dialog.localButton()->setChecked(true);
        QVERIFY(!dialog.imeiEdit()->isEnabled());
    }

    // The login dialog and the server dialog store their own keys when accepted and nothing otherwise.
    void acceptStoresTheDialogsKeysRejectNone_data() {
        QTest::addColumn<bool>("server");
        QTest::addColumn<bool>("accept");
        QTest::addColumn<QStringList>("stored");
        QTest::newRow("login accepted")
            << false << true
            << QStringList{"loginSettings/loginType=1", "loginSettings/passWord=1234",
                           "loginSettings/serialNumber=863071014478127"};
        QTest::newRow("login rejected") << false << false << QStringList();
        QTest::newRow("server accepted")
            << true << true
            << QStringList{"loginSettings/Timeout=33", "loginSettings/logSave=true",
                           "loginSettings/serverAddress=srv.example", "loginSettings/serverPort=7001"};
        QTest::newRow("server rejected") << true << false << QStringList();
    }

    void acceptStoresTheDialogsKeysRejectNone() {
        QFETCH(bool, server);
        QFETCH(bool, accept);
        AppSettings store(m_raw);
        std::unique_ptr<QDialog> dialog;
        if (server) {
            auto *d = new loginSettings(nullptr, &store);
            dialog.reset(d);
            QSignalSpy done(d, &loginSettings::loginServiceDelited);
            d->addressEdit()->setText(QStringLiteral("srv.example"));
            d->portEdit()->setText(QStringLiteral("7001"));
            d->timeoutBox()->setValue(33);
            d->logSaveBox()->setChecked(true);
            accept ? d->accept() : d->reject();
            QCOMPARE(done.count(), 1);
        } else {
            auto *d = new loginDialog(nullptr, &store);
            dialog.reset(d);
            QCOMPARE(d->connectionType(), int(AppSettings::LocalConnection));
            d->remoteButton()->setChecked(true);
            QTest::keyClicks(d->imeiEdit(), QStringLiteral("863071014478127"));
            QTest::keyClicks(d->passwordEdit(), QStringLiteral("12x34"));
            accept ? d->accept() : d->reject();
        }
        QStringList written;
        for (const QString &key : m_raw->allKeys())
            written << key + QLatin1Char('=') + m_raw->value(key).toString();
        written.sort();
        QTEST(written, "stored");
    }

    // The server dialog fills absent or zero server values with its defaults and stores nothing for it. Its
    // log option and the settings dialog's are two keys, either of which copies the device log to a file.
    void serverDialogShowsDefaultsForAbsentValues() {
        AppSettings store(m_raw);
        QVERIFY(!store.deviceLogToFile() && store.verifyWrites()); // writes are verified unless switched off
        store.setSettingsLogSave(true);
        QVERIFY(store.deviceLogToFile());
        const auto shown = [&] {
            loginSettings d(nullptr, &store);
            return QStringLiteral("%1 %2 %3 %4")
                .arg(d.addressEdit()->text(), d.portEdit()->text())
                .arg(d.timeoutBox()->value())
                .arg(d.logSaveBox()->isChecked());
        };
        QCOMPARE(shown(), QStringLiteral("cfg.tavrel.ru 1256 15 0"));
        QCOMPARE(m_raw->allKeys(), QStringList{QStringLiteral("loginSetings/logSave")});
        store.setServerAddress(QStringLiteral("1.2.3.4"));
        store.setServerLogSave(true);
        store.setServerPort(0);
        store.setTimeoutSeconds(0);
        QCOMPARE(shown(), QStringLiteral("1.2.3.4 1256 15 1"));
        store.setServerPort(5000);
        store.setTimeoutSeconds(40);
        QCOMPARE(shown(), QStringLiteral("1.2.3.4 5000 40 1"));
    }

    // Unlike the server dialog, this dialog shows what is stored; the server dialog's log option is not its.
    void settingsFreshStoreLeavesServerFieldsEmpty() {
        AppSettings store(m_raw);
        store.setServerLogSave(true);
        QVERIFY(store.deviceLogToFile());
        SettinsDialog dialog(nullptr, &store);
        QCOMPARE(items(dialog.telemetryBox()),
                 QStringLiteral("Непрерывно|5 сек|4 сек|3 сек|2 сек|1 сек|<Нет>"));
        QCOMPARE(items(dialog.themeBox()), QStringLiteral("Светлая тема|Темная тема"));
        QCOMPARE(items(dialog.connectionTypeBox()),
                 QStringLiteral("Локальное соединение (USB)|Удаленное соединение (TCP)"));
        for (QComboBox *box : {dialog.themeBox(), dialog.telemetryBox(), dialog.connectionTypeBox()})
            QCOMPARE(box->currentIndex(), 0);
        QVERIFY(!dialog.logSaveBox()->isChecked());
        QVERIFY(dialog.findChild<QLineEdit *>(QStringLiteral("serverAddressEdit"))->text().isEmpty());
        QCOMPARE(dialog.findChild<QSpinBox *>(QStringLiteral("serverPortBox"))->value(), 0);
        QCOMPARE(dialog.findChild<QSpinBox *>(QStringLiteral("timeoutBox"))->value(), 0);
        QVERIFY(dialog.imeiEdit()->text().isEmpty());
        QCOMPARE(dialog.settings().baudRate, 115200);
    }

    void settingsStoredThemeAndConnectionTypePickTheirRows_data() {
        QTest::addColumn<int>("skin");
        QTest::addColumn<int>("loginType");
        QTest::addColumn<QString>("theme");
        QTest::addColumn<int>("connectionRow");
        QTest::newRow("light, local") << 0 << 0 << "Светлая тема" << 0;
        QTest::newRow("dark, remote") << 1 << 1 << "Темная тема" << 1;
        QTest::newRow("skin 2 shows no theme, type 5 is remote") << 2 << 5 << QString() << 1;
    }

    void settingsStoredThemeAndConnectionTypePickTheirRows() {
        QFETCH(int, skin);
        QFETCH(int, loginType);
        AppSettings store(m_raw);
        store.setSkinName(skin);
        store.setLoginType(loginType);
        SettinsDialog dialog(nullptr, &store);
        QSignalSpy skinChanged(&dialog, &SettinsDialog::skinChanged);
        QTEST(dialog.themeBox()->currentText(), "theme");
        QTEST(dialog.connectionTypeBox()->currentIndex(), "connectionRow");

        // Applying without touching the list keeps even an unknown stored value and reports no change.
        dialog.apply();
        QCOMPARE(store.skinName(), skin);
        QCOMPARE(skinChanged.count(), 0);
    }

    void settingsApplyStoresEveryFieldAndSignals() {
        AppSettings store(m_raw);
        store.setPassWord(4321);
        SettinsDialog dialog(nullptr, &store);
        QSignalSpy applied(&dialog, &SettinsDialog::settingsApplied);
        QSignalSpy skin(&dialog, &SettinsDialog::skinChanged);

        dialog.themeBox()->setCurrentIndex(SettinsDialog::DarkThemeRow);
        dialog.telemetryBox()->setCurrentIndex(6);
        dialog.connectionTypeBox()->setCurrentIndex(1);
        dialog.findChild<QLineEdit *>(QStringLiteral("serverAddressEdit"))
            ->setText(QStringLiteral(" 10.1.1.1 "));
        dialog.findChild<QSpinBox *>(QStringLiteral("serverPortBox"))->setValue(9000);
        dialog.findChild<QSpinBox *>(QStringLiteral("timeoutBox"))->setValue(25);
        dialog.findChild<QLineEdit *>(QStringLiteral("proxyAddressEdit"))->setText(QStringLiteral("proxy"));
        dialog.findChild<QComboBox *>(QStringLiteral("proxyTypeBox"))->setCurrentIndex(2);
        // The validator keeps the digits of an IMEI and refuses the rest.
        QTest::keyClicks(dialog.imeiEdit(), QStringLiteral("863071014478127x"));
        dialog.logSaveBox()->setChecked(true);

        dialog.findChild<QPushButton *>(QStringLiteral("applyButton"))->click();

        QCOMPARE(applied.count(), 1);
        QCOMPARE(skin.count(), 1);
        QCOMPARE(skin.at(0).at(0).toInt(), 1);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        for (const QString entry :
             {"settings/skinName=1", "settings/telemetryTime=6", "loginSettings/loginType=1",
              "loginSettings/serverAddress=10.1.1.1", "loginSettings/serverPort=9000",
              "loginSettings/Timeout=25", "loginSettings/serialNumber=863071014478127",
              "loginSettings/proxyServerAddres=proxy", "loginSettings/currentProxy=2",
              "loginSetings/logSave=true", "loginSettings/passWord=4321"})
            QCOMPARE(m_raw->value(entry.section(QLatin1Char('='), 0, 0)).toString(),
                     entry.section(QLatin1Char('='), 1));
        QVERIFY(!m_raw->contains(QStringLiteral("loginSettings/logSave")));
    }

    void settingsCancelStoresNothing() {
        AppSettings store(m_raw);
        SettinsDialog dialog(nullptr, &store);
        QSignalSpy applied(&dialog, &SettinsDialog::settingsApplied);
        dialog.themeBox()->setCurrentIndex(1);
        dialog.findChild<QPushButton *>(QStringLiteral("pushButton"))->click();
        QCOMPARE(applied.count(), 0);
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QVERIFY(m_raw->allKeys().isEmpty());
        QCOMPARE(dialog.themeBox()->currentIndex(), 0);
    }

    // "shown" reads: the list, the selected port, the manufacturer shown for it; "applied" the port stored
    // by "Применить" (empty: detection by the USB identifiers at every connect).
    void portListPutsDevicePortsFirst_data() {
        QTest::addColumn<Ports>("ports");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("inUse");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("applied");
        const QString automatic = QStringLiteral("Автоопределение (USB)|");
        QTest::newRow("nothing stored: automatic, device after other port")
            << Ports{port("ttyS0", "", -1, -1), port("ttyACM0", "Tavrel", 0x2226, 0x0013)} << QString()
            << QString() << automatic + "ttyACM0|ttyS0|Другой > Автоопределение (USB) ( - )" << QString();
        QTest::newRow("product 0x0014 is not the device")
            << Ports{port("ttyACM1", "Tavrel", 0x2226, 0x0014), port("ttyACM0", "", 0x2226, 0x0013)}
            << QStringLiteral("ttyACM0") << QString() << automatic + "ttyACM0|ttyACM1|Другой > ttyACM0 ( - )"
            << QStringLiteral("ttyACM0");
        QTest::newRow("stored port selected")
            << Ports{port("ttyACM0", "Tavrel", 0x2226, 0x0013), port("ttyUSB3", "FTDI", 1, 2)}
            << QStringLiteral("ttyUSB3") << QString() << automatic + "ttyACM0|ttyUSB3|Другой > ttyUSB3 (FTDI)"
            << QStringLiteral("ttyUSB3");
        QTest::newRow("stored port unplugged stays")
            << Ports{port("ttyACM0", "Tavrel", 0x2226, 0x0013)} << QStringLiteral("/dev/pts/7") << QString()
            << automatic + "ttyACM0|/dev/pts/7|Другой > /dev/pts/7 ( - )" << QStringLiteral("/dev/pts/7");
        QTest::newRow("port in use listed, not chosen")
            << Ports{port("ttyACM0", "Tavrel", 0x2226, 0x0013)} << QString() << QStringLiteral("/dev/pts/3")
            << automatic + "ttyACM0|/dev/pts/3|Другой > Автоопределение (USB) ( - )" << QString();
    }

    void portListPutsDevicePortsFirst() {
        QFETCH(Ports, ports);
        QFETCH(QString, stored);
        QFETCH(QString, inUse);
        AppSettings store(m_raw);
        store.setPortName(stored);
        SettinsDialog dialog(nullptr, &store);
        dialog.setPortLister([ports] { return ports; });
        dialog.setPortInUse(inUse);
        QTEST(QStringLiteral("%1 > %2 (%3)")
                  .arg(items(dialog.portBox()), dialog.portBox()->currentText(),
                       dialog.manufacturerLabel()->text()),
              "shown");
        dialog.apply();
        QTEST(store.portName(), "applied");
    }

    void listTextsAreNotCut_data() {
        QTest::addColumn<int>("skin");
        QTest::newRow("light") << int(Skin::Light);
        QTest::newRow("dark") << int(Skin::Dark);
    }

    // Under either style sheet every entry of every list fits the text field of its box.
    void listTextsAreNotCut() {
        QFETCH(int, skin);
        QVERIFY(applySkin(qApp, skin));
        AppSettings store(m_raw);
        SettinsDialog dialog(nullptr, &store);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        for (QComboBox *box : dialog.findChildren<QComboBox *>()) {
            QStyleOptionComboBox option;
            option.initFrom(box);
            option.editable = box->isEditable();
            const QRect field =
                box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box);
            for (int i = 0; i < box->count(); ++i)
                QVERIFY2(field.width() >= box->fontMetrics().horizontalAdvance(box->itemText(i)),
                         qPrintable(box->itemText(i)));
        }
        qApp->setStyleSheet(QString());
    }

    void logFilePathNamesTheDay() {
        const QDate day(2027, 1, 1);
        QVERIFY(DeviceLog::filePath(day).endsWith(
            QStringLiteral("/Tavrel/Tavrel_micro_cfg/logs/device-20270101.log")));
        DeviceLog::setDirectory(m_dir.path());
        QCOMPARE(DeviceLog::filePath(day), m_dir.path() + QStringLiteral("/device-20270101.log"));
    }

    // Only the traffic category goes to the file, and only while the copy is on.
    void logFileTakesTrafficLinesOnlyWhileOn() {
        DeviceLog::setDirectory(m_dir.filePath(QStringLiteral("logs")));
        DeviceLog::install(true);
        qDebug("1700000000 a5a5060004000100 ответ");
        qCDebug(lcDiagnostics, "diagnostics");
        DeviceLog::setFileEnabled(false);
        qDebug("second line");
        DeviceLog::setFileEnabled(true);
        qDebug("third line");
        DeviceLog::install(false);
        QVERIFY(!DeviceLog::fileEnabled());
        qDebug("fourth line");
        qInstallMessageHandler(nullptr);
        QCOMPARE(fileText(), QStringLiteral("1700000000 a5a5060004000100 ответ\nthird line\n"));
    }

    // Opens empty, not as nine masked blanks; typed digits are masked once the field is left; Ok accepts
    // with the password.
    void passwordEditIsMaskedSensitiveInput() {
        PasswordDialog dialog;
        QLineEdit *edit = dialog.passwordEdit();
        QVERIFY(edit->inputMethodHints() & Qt::ImhSensitiveData);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        edit->setFocus();
        QCOMPARE(edit->displayText().trimmed(), QString());
        QTest::keyClicks(edit, QStringLiteral("1234"));
        QCOMPARE(edit->displayText().trimmed(), QStringLiteral("1234"));
        auto *buttons = dialog.findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
        buttons->setFocus();
        QCOMPARE(edit->echoMode(), QLineEdit::PasswordEchoOnEdit);
        QVERIFY(!edit->displayText().contains(QLatin1Char('1')));
        buttons->button(QDialogButtonBox::Ok)->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.password(), 1234);
    }

    void passwordEveryEditConverts_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<qint32>("password");
        QTest::newRow("nine digits") << "123456789" << 123456789;
        QTest::newRow("short") << "42" << 42;
        QTest::newRow("leading zeros") << "000000007" << 7;
        QTest::newRow("ten digits, tenth refused") << "1234567890" << 123456789;
        QTest::newRow("letters refused") << "ab" << 0;
    }

    void passwordEveryEditConverts() {
        QFETCH(QString, typed);
        PasswordDialog dialog;
        QTest::keyClicks(dialog.passwordEdit(), QStringLiteral("5"));
        QCOMPARE(dialog.password(), 5);
        dialog.passwordEdit()->clear();
        QCOMPARE(dialog.password(), 0);
        dialog.passwordEdit()->setFocus();
        QTest::keyClicks(dialog.passwordEdit(), typed);
        QTEST(dialog.password(), "password");
    }

private:
    QString logFile() const {
        return m_dir.filePath(QStringLiteral("logs/") + QFileInfo(DeviceLog::filePath()).fileName());
    }

    QString fileText() const {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    QSettings *m_raw = nullptr;
    QTemporaryDir m_dir;
};

QTEST_MAIN(tst_SettingsDialogs)
#include "tst_settingsdialogs.moc"
