#include "AppSettings.h"
#include "SettinsDialog.h"
#include "Skin.h"
#include "loginSettings.h"

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

class tst_SettinsDialog : public QObject {
    Q_OBJECT

private slots:
    void init();
    void freshStoreShowsDefaults();
    void listsHaveTheirRowsInOrder_data();
    void listsHaveTheirRowsInOrder();
    void themeRowShownAgreesWithSkinApplied_data();
    void themeRowShownAgreesWithSkinApplied();
    void storedConnectionTypeIsATruthValue_data();
    void storedConnectionTypeIsATruthValue();
    void imeiEditRefusesWhatIsNotAnImei_data();
    void imeiEditRefusesWhatIsNotAnImei();
    void applyStoresEveryFieldAndSignals();
    void applyWithSameThemeDoesNotReportSkinChange();
    void cancelStoresNothing();
    void logOptionIsIndependentOfServerDialog_data();
    void logOptionIsIndependentOfServerDialog();
    void portListPutsDevicePortsFirst_data();
    void portListPutsDevicePortsFirst();
    void listTextsAreNotCut_data();
    void listTextsAreNotCut();

private:
    QSettings *m_raw = nullptr;
};

void tst_SettinsDialog::init() {
    delete m_raw;
    m_raw = new QSettings(QStringLiteral("TavrelTest"), QStringLiteral("settinsdialog"), this);
    m_raw->clear();
}

void tst_SettinsDialog::freshStoreShowsDefaults() {
    AppSettings store(m_raw);
    SettinsDialog dialog(nullptr, &store);
    QCOMPARE(dialog.themeBox()->currentIndex(), 0);
    QCOMPARE(dialog.telemetryBox()->currentIndex(), 0);
    QCOMPARE(dialog.connectionTypeBox()->currentIndex(), 0);
    QVERIFY(!dialog.logSaveBox()->isChecked());
    QVERIFY(dialog.findChild<QLineEdit *>(QStringLiteral("serverAddressEdit"))->text().isEmpty());
    QVERIFY(dialog.imeiEdit()->text().isEmpty());
    QCOMPARE(dialog.settings().baudRate, 115200);
    QCOMPARE(dialog.settings().dataBits, QSerialPort::Data8);
    QCOMPARE(dialog.settings().parity, QSerialPort::NoParity);
    QCOMPARE(dialog.settings().stopBits, QSerialPort::OneStop);
    QCOMPARE(dialog.settings().flowControl, QSerialPort::NoFlowControl);
}

void tst_SettinsDialog::listsHaveTheirRowsInOrder_data() {
    QTest::addColumn<QString>("box");
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("telemetry") << "telemetryBox"
                               << QStringList{QStringLiteral("Непрерывно"), QStringLiteral("5 сек"),
                                              QStringLiteral("4 сек"),      QStringLiteral("3 сек"),
                                              QStringLiteral("2 сек"),      QStringLiteral("1 сек"),
                                              QStringLiteral("<Нет>")};
    QTest::newRow("theme") << "themeBox"
                           << QStringList{QStringLiteral("Светлая тема"), QStringLiteral("Темная тема")};
    QTest::newRow("connection") << "connectionTypeBox"
                                << QStringList{QStringLiteral("Локальное соединение (USB)"),
                                               QStringLiteral("Удаленное соединение (TCP)")};
}

void tst_SettinsDialog::listsHaveTheirRowsInOrder() {
    QFETCH(QString, box);
    QFETCH(QStringList, rows);
    AppSettings store(m_raw);
    SettinsDialog dialog(nullptr, &store);
    auto *combo = dialog.findChild<QComboBox *>(box);
    QVERIFY(combo);
    QStringList shown;
    for (int i = 0; i < combo->count(); ++i)
        shown << combo->itemText(i);
    QCOMPARE(shown, rows);
}

void tst_SettinsDialog::themeRowShownAgreesWithSkinApplied_data() {
    QTest::addColumn<int>("stored");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("sheet");
    QTest::newRow("0") << 0 << "Светлая тема"
                       << ":/css/style.css";
    QTest::newRow("1") << 1 << "Темная тема"
                       << ":/css/styleBlack.css";
    QTest::newRow("2 shows nothing") << 2 << QString() << QString();
}

void tst_SettinsDialog::themeRowShownAgreesWithSkinApplied() {
    QFETCH(int, stored);
    QFETCH(QString, shown);
    AppSettings store(m_raw);
    store.setSkinName(stored);
    SettinsDialog dialog(nullptr, &store);
    QCOMPARE(dialog.themeBox()->currentText(), shown);
    QTEST(Skin::resourceFor(stored), "sheet");

    // Applying without touching the list keeps an unknown stored value as it was.
    dialog.apply();
    QCOMPARE(store.skinName(), stored);
}

void tst_SettinsDialog::storedConnectionTypeIsATruthValue_data() {
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("row");
    QTest::newRow("0 local") << 0 << 0;
    QTest::newRow("1 remote") << 1 << 1;
    QTest::newRow("5 remote") << 5 << 1;
}

void tst_SettinsDialog::storedConnectionTypeIsATruthValue() {
    QFETCH(int, stored);
    AppSettings store(m_raw);
    store.setLoginType(stored);
    SettinsDialog dialog(nullptr, &store);
    QTEST(dialog.connectionTypeBox()->currentIndex(), "row");
}

void tst_SettinsDialog::imeiEditRefusesWhatIsNotAnImei_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    QTest::newRow("15 digits") << "863071014478127"
                               << "863071014478127";
    QTest::newRow("17 digits") << "12345678901234567"
                               << "1234567890123456";
    QTest::newRow("letters") << "86a30x7"
                             << "86307";
}

void tst_SettinsDialog::imeiEditRefusesWhatIsNotAnImei() {
    QFETCH(QString, typed);
    AppSettings store(m_raw);
    SettinsDialog dialog(nullptr, &store);
    QTest::keyClicks(dialog.imeiEdit(), typed);
    QTEST(dialog.imeiEdit()->text(), "kept");
}

void tst_SettinsDialog::applyStoresEveryFieldAndSignals() {
    AppSettings store(m_raw);
    store.setPassWord(4321);
    SettinsDialog dialog(nullptr, &store);
    QSignalSpy applied(&dialog, &SettinsDialog::settingsApplied);
    QSignalSpy skin(&dialog, &SettinsDialog::skinChanged);

    dialog.themeBox()->setCurrentIndex(SettinsDialog::DarkThemeRow);
    dialog.telemetryBox()->setCurrentIndex(6);
    dialog.connectionTypeBox()->setCurrentIndex(1);
    dialog.findChild<QLineEdit *>(QStringLiteral("serverAddressEdit"))->setText(QStringLiteral(" 10.1.1.1 "));
    dialog.findChild<QSpinBox *>(QStringLiteral("serverPortBox"))->setValue(9000);
    dialog.findChild<QSpinBox *>(QStringLiteral("timeoutBox"))->setValue(25);
    dialog.findChild<QLineEdit *>(QStringLiteral("proxyAddressEdit"))->setText(QStringLiteral("proxy"));
    dialog.findChild<QComboBox *>(QStringLiteral("proxyTypeBox"))->setCurrentIndex(2);
    QTest::keyClicks(dialog.imeiEdit(), QStringLiteral("863071014478127"));
    dialog.logSaveBox()->setChecked(true);

    dialog.findChild<QPushButton *>(QStringLiteral("applyButton"))->click();

    QCOMPARE(applied.count(), 1);
    QCOMPARE(skin.count(), 1);
    QCOMPARE(skin.at(0).at(0).toInt(), 1);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(m_raw->value(QStringLiteral("settings/skinName")).toInt(), 1);
    QCOMPARE(m_raw->value(QStringLiteral("settings/telemetryTime")).toInt(), 6);
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/loginType")).toInt(), 1);
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/serverAddress")).toString(),
             QStringLiteral("10.1.1.1"));
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/serverPort")).toInt(), 9000);
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/Timeout")).toInt(), 25);
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/serialNumber")).toString(),
             QStringLiteral("863071014478127"));
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/proxyServerAddres")).toString(),
             QStringLiteral("proxy"));
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/currentProxy")).toInt(), 2);
    QCOMPARE(m_raw->value(QStringLiteral("loginSetings/logSave")).toBool(), true);
    QVERIFY(!m_raw->contains(QStringLiteral("loginSettings/logSave")));
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/passWord")).toInt(), 4321);
    QCOMPARE(AppSettings::telemetryPeriod(dialog.settings().loginType, dialog.settings().telemetryTime), 50u);
}

void tst_SettinsDialog::applyWithSameThemeDoesNotReportSkinChange() {
    AppSettings store(m_raw);
    store.setSkinName(1);
    SettinsDialog dialog(nullptr, &store);
    QSignalSpy applied(&dialog, &SettinsDialog::settingsApplied);
    QSignalSpy skin(&dialog, &SettinsDialog::skinChanged);
    dialog.telemetryBox()->setCurrentIndex(3);
    dialog.apply();
    QCOMPARE(applied.count(), 1);
    QCOMPARE(skin.count(), 0);
}

void tst_SettinsDialog::cancelStoresNothing() {
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

void tst_SettinsDialog::logOptionIsIndependentOfServerDialog_data() {
    QTest::addColumn<bool>("setInSettingsDialog");
    QTest::newRow("on in settings dialog") << true;
    QTest::newRow("on in server dialog") << false;
}

void tst_SettinsDialog::logOptionIsIndependentOfServerDialog() {
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

using Ports = QList<SerialPortDescription>;
Q_DECLARE_METATYPE(Ports)

namespace {

SerialPortDescription port(const char *name, const char *maker, int vid, int pid) {
    SerialPortDescription d;
    d.portName = QLatin1String(name);
    d.description = QStringLiteral("USB serial");
    d.manufacturer = QLatin1String(maker);
    d.hasVendorIdentifier = vid >= 0;
    d.vendorIdentifier = quint16(vid);
    d.hasProductIdentifier = pid >= 0;
    d.productIdentifier = quint16(pid);
    return d;
}

} // namespace

void tst_SettinsDialog::portListPutsDevicePortsFirst_data() {
    QTest::addColumn<Ports>("ports");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QString>("manufacturer");
    const QString custom = QStringLiteral("Другой");
    QTest::newRow("device after other port")
        << Ports{port("ttyS0", "", -1, -1), port("ttyACM0", "Tavrel", 0x2226, 0x0013)} << QString()
        << QStringList{QStringLiteral("ttyACM0"), QStringLiteral("ttyS0"), custom} << "ttyACM0"
        << "Tavrel";
    QTest::newRow("product 0x0014 is not the device")
        << Ports{port("ttyACM1", "Tavrel", 0x2226, 0x0014), port("ttyACM0", "", 0x2226, 0x0013)} << QString()
        << QStringList{QStringLiteral("ttyACM0"), QStringLiteral("ttyACM1"), custom} << "ttyACM0"
        << " - ";
    QTest::newRow("stored port selected")
        << Ports{port("ttyACM0", "Tavrel", 0x2226, 0x0013), port("ttyUSB3", "FTDI", 1, 2)} << "ttyUSB3"
        << QStringList{QStringLiteral("ttyACM0"), QStringLiteral("ttyUSB3"), custom} << "ttyUSB3"
        << "FTDI";
    QTest::newRow("stored port unplugged stays")
        << Ports{port("ttyACM0", "Tavrel", 0x2226, 0x0013)} << "/dev/pts/7"
        << QStringList{QStringLiteral("ttyACM0"), QStringLiteral("/dev/pts/7"), custom} << "/dev/pts/7"
        << " - ";
}

void tst_SettinsDialog::portListPutsDevicePortsFirst() {
    QFETCH(Ports, ports);
    QFETCH(QString, stored);
    QFETCH(QStringList, listed);
    AppSettings store(m_raw);
    store.setPortName(stored);
    SettinsDialog dialog(nullptr, &store);
    dialog.setPortLister([ports] { return ports; });
    QStringList shown;
    for (int i = 0; i < dialog.portBox()->count(); ++i)
        shown << dialog.portBox()->itemText(i);
    QCOMPARE(shown, listed);
    QTEST(dialog.portBox()->currentText(), "selected");
    QTEST(dialog.manufacturerLabel()->text(), "manufacturer");
    dialog.apply();
    QTEST(dialog.settings().portName, "selected");
}

void tst_SettinsDialog::listTextsAreNotCut_data() {
    QTest::addColumn<int>("skin");
    QTest::newRow("light") << int(Skin::Light);
    QTest::newRow("dark") << int(Skin::Dark);
}

// Under either style sheet every entry of every list fits the text field of its box.
void tst_SettinsDialog::listTextsAreNotCut() {
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
        const int room = box->style()
                             ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box)
                             .width();
        for (int i = 0; i < box->count(); ++i) {
            const int needed = box->fontMetrics().horizontalAdvance(box->itemText(i));
            QVERIFY2(room >= needed,
                     qPrintable(QStringLiteral("%1: %2 < %3").arg(box->itemText(i)).arg(room).arg(needed)));
        }
    }
    qApp->setStyleSheet(QString());
}

QTEST_MAIN(tst_SettinsDialog)
#include "tst_settinsdialog.moc"
