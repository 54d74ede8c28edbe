#include "app/AppSettings.h"
#include "app/SettinsDialog.h"
#include "app/Skin.h"
#include "app/loginSettings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QtTest>

using Ports = QList<SerialPortDescription>;
Q_DECLARE_METATYPE(Ports)

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

class tst_SettinsDialog : public QObject {
    Q_OBJECT

private slots:
    void init() {
        delete m_raw;
        m_raw = new QSettings(QStringLiteral("TavrelTest"), QStringLiteral("settinsdialog"), this);
        m_raw->clear();
    }

    // The server dialog fills absent server values with its defaults; this dialog shows what is stored.
    void freshStoreLeavesServerFieldsEmptyWhileServerDialogShowsDefaults() {
        AppSettings store(m_raw);
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

        loginSettings serverDialog(nullptr, &store);
        QCOMPARE(serverDialog.addressEdit()->text(), QStringLiteral("cfg.tavrel.ru"));
        QCOMPARE(serverDialog.portEdit()->text(), QStringLiteral("1256"));
        QCOMPARE(serverDialog.timeoutBox()->value(), 15);
        QVERIFY(m_raw->allKeys().isEmpty());
    }

    void storedThemeAndConnectionTypePickTheirRows_data() {
        QTest::addColumn<int>("skin");
        QTest::addColumn<int>("loginType");
        QTest::addColumn<QString>("theme");
        QTest::addColumn<int>("connectionRow");
        QTest::newRow("light, local") << 0 << 0 << "Светлая тема" << 0;
        QTest::newRow("dark, remote") << 1 << 1 << "Темная тема" << 1;
        QTest::newRow("skin 2 shows no theme, type 5 is remote") << 2 << 5 << QString() << 1;
    }

    void storedThemeAndConnectionTypePickTheirRows() {
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

    void applyStoresEveryFieldAndSignals() {
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
        QCOMPARE(AppSettings::telemetryPeriod(dialog.settings().loginType, dialog.settings().telemetryTime),
                 50u);
    }

    void cancelStoresNothing() {
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

    void logOptionIsIndependentOfServerDialog_data() {
        QTest::addColumn<bool>("setInSettingsDialog");
        QTest::newRow("on in settings dialog") << true;
        QTest::newRow("on in server dialog") << false;
    }

    void logOptionIsIndependentOfServerDialog() {
        QFETCH(bool, setInSettingsDialog);
        AppSettings store(m_raw);
        if (setInSettingsDialog) {
            SettinsDialog dialog(nullptr, &store);
            dialog.logSaveBox()->setChecked(true);
            dialog.apply();
        } else {
            loginSettings dialog(nullptr, &store);
            dialog.logSaveBox()->setChecked(true);
            dialog.accept();
        }
        SettinsDialog settingsDialog(nullptr, &store);
        loginSettings serverDialog(nullptr, &store);
        QCOMPARE(settingsDialog.logSaveBox()->isChecked(), setInSettingsDialog);
        QCOMPARE(serverDialog.logSaveBox()->isChecked(), !setInSettingsDialog);
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
            const int room =
                box->style()
                    ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box)
                    .width();
            for (int i = 0; i < box->count(); ++i) {
                const int needed = box->fontMetrics().horizontalAdvance(box->itemText(i));
                QVERIFY2(room >= needed, qPrintable(box->itemText(i)));
            }
        }
        qApp->setStyleSheet(QString());
    }

private:
    QSettings *m_raw = nullptr;
};

QTEST_MAIN(tst_SettinsDialog)
#include "tst_settinsdialog.moc"
