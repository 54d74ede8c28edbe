#include "../update/BskBuilder.h"
#include "AgcConfiguration.h"
#include "AppSettings.h"
#include "ComponentInformation.h"
#include "Connection.h"
#include "ConnectionWaitDlg.h"
#include "Device.h"
#include "DeviceInfoConfiguration.h"
#include "DeviceUpdater.h"
#include "FirmwareImage.h"
#include "Frame.h"
#include "GSMConfiguration.h"
#include "LogicConfiguration.h"
#include "MainWindow.h"
#include "OutputConfiguration.h"
#include "ProgramUpdatePage.h"
#include "Prompter.h"
#include "QTIFWUpdater.h"
#include "SerialConnection.h"
#include "ServerConfiguration.h"
#include "SettingsGSMPage.h"
#include "SettingsPageBase.h"
#include "SettingsStatePage.h"
#include "SystemConfiguration.h"
#include "SystemPage.h"
#include "UNPProtocol.h"
#include "VantorConfiguration.h"
#include "WaitMessageDlg.h"
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QTabWidget>

#include <QAction>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Answers every question from a script and records what the window said.
class ScriptedPrompter : public Prompter {
public:
    struct Call {
        QString kind;
        QString title;
        QString text;
    };

    bool question(QWidget *, const QString &title, const QString &text) override {
        calls.append({QStringLiteral("question"), title, text});
        return answers.isEmpty() ? false : answers.takeFirst();
    }
    void information(QWidget *, const QString &title, const QString &text) override {
        calls.append({QStringLiteral("information"), title, text});
    }
    void warning(QWidget *, const QString &title, const QString &text) override {
        calls.append({QStringLiteral("warning"), title, text});
    }
    void critical(QWidget *, const QString &title, const QString &text) override {
        calls.append({QStringLiteral("critical"), title, text});
    }
    QString openFileName(QWidget *, const QString &title, const QString &, const QString &filter) override {
        calls.append({QStringLiteral("open"), title, filter});
        return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
    }
    QString saveFileName(QWidget *, const QString &title, const QString &, const QString &filter) override {
        calls.append({QStringLiteral("save"), title, filter});
        return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
    }
    bool password(QWidget *, quint32 *value) override {
        calls.append({QStringLiteral("password"), QString(), QString()});
        *value = passwordValue;
        return true;
    }

    bool said(const QString &kind, const QString &text) const {
        for (const Call &c : calls) {
            if (c.kind == kind && c.text == text)
                return true;
        }
        return false;
    }
    QStringList texts() const {
        QStringList out;
        for (const Call &c : calls)
            out << c.kind + QLatin1Char(':') + c.text;
        return out;
    }

    QList<bool> answers;
    QStringList fileNames;
    quint32 passwordValue = 0;
    QList<Call> calls;
};

// A link that records what is written and answers like a device that accepts every command.
class FakeLink : public Connection {
public:
    using Connection::Connection;

    bool open() override {
        m_open = true;
        emit connected();
        return true;
    }
    void close() override { m_open = false; }
    bool isOpen() const override { return m_open; }
    int state() const override { return m_open ? Connected : Closed; }
    qint64 write(const QByteArray &bytes) override {
        written.append(bytes);
        const QByteArray answer = silent ? QByteArray() : answerFor(bytes);
        if (!answer.isEmpty())
            QTimer::singleShot(0, this, [this, answer] { deliver(answer); });
        return bytes.size();
    }
    QByteArray readAll() override {
        const QByteArray bytes = m_in;
        m_in.clear();
        return bytes;
    }
    void deliver(const QByteArray &bytes) {
        m_in += bytes;
        emit readyRead();
    }
    void deliverPayload(quint8 type, const QByteArray &payload) {
        deliver(proto::Frame::build(type, payload));
    }
    void raise(int group, int code) { emit error(group, code); }

    // The write requests (type 6, code without bit 7) as "code op param" triples.
    QStringList writeHeads() const {
        QStringList heads;
        for (const QByteArray &f : written) {
            if (f.size() < 10 || quint8(f[2]) != proto::ConfigPacketType || (quint8(f[6]) & 0x80))
                continue;
            heads << QString::fromLatin1(f.mid(6, 3).toHex(' '));
        }
        return heads;
    }

    bool silent = false;
    QList<QByteArray> written;
    kd::DeviceInfoConfiguration identity;

private:
    QByteArray answerFor(const QByteArray &frame) {
        if (frame.size() < 10)
            return QByteArray();
        const quint8 type = quint8(frame[2]);
        const QByteArray head = frame.mid(6, 4);
        if (type == proto::ConfigPacketType && quint8(head[0]) == 0x81)
            return proto::Frame::build(type, identity.encodeAnswer(quint8(head[1])));
        QByteArray status = head;
        status[1] = char(quint8(head[1]) | 0x80);
        status.append('\x01').append('\x00');
        return proto::Frame::build(type, status);
    }

    QByteArray m_in;
    bool m_open = false;
};

const char *const DeviceName = "Fake tracker";

// A field of a settings page: "label:<form label>" (the label's buddy), "spin:<n>" or "check:<n>"
// (the n-th spin or check box of the page, in the order the page builds them).
QWidget *pageField(QWidget *page, const QString &locator) {
    const QString kind = locator.section(QLatin1Char(':'), 0, 0);
    const QString arg = locator.section(QLatin1Char(':'), 1);
    if (kind == QLatin1String("label")) {
        for (QLabel *label : page->findChildren<QLabel *>()) {
            if (label->text() == arg && label->buddy())
                return label->buddy();
        }
        return nullptr;
    }
    if (kind == QLatin1String("spin"))
        return page->findChildren<QSpinBox *>().value(arg.toInt());
    if (kind == QLatin1String("check"))
        return page->findChildren<QCheckBox *>().value(arg.toInt());
    return nullptr;
}

QString fieldValue(QWidget *w) {
    if (auto *spin = qobject_cast<QSpinBox *>(w))
        return QString::number(spin->value());
    if (auto *spin = qobject_cast<QDoubleSpinBox *>(w))
        return QString::number(qint64(spin->value()));
    if (auto *edit = qobject_cast<QLineEdit *>(w))
        return edit->text();
    if (auto *box = qobject_cast<QComboBox *>(w))
        return box->currentText();
    if (auto *box = qobject_cast<QCheckBox *>(w))
        return box->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    return QStringLiteral("<no field>");
}

// Key presses as a keyboard gives them, letters outside ASCII included.
void typeText(QWidget *w, const QString &text) {
    for (const QChar c : text) {
        if (c.unicode() < 0x80) {
            QTest::keyClick(w, char(c.unicode()));
        } else {
            QTest::sendKeyEvent(QTest::Press, w, Qt::Key_unknown, QString(c), Qt::NoModifier);
            QTest::sendKeyEvent(QTest::Release, w, Qt::Key_unknown, QString(c), Qt::NoModifier);
        }
    }
}

void setFieldValue(QWidget *w, const QString &value) {
    if (auto *spin = qobject_cast<QSpinBox *>(w))
        spin->setValue(value.toInt());
    else if (auto *spin = qobject_cast<QDoubleSpinBox *>(w))
        spin->setValue(value.toDouble());
    else if (auto *edit = qobject_cast<QLineEdit *>(w)) {
        edit->selectAll();
        typeText(edit, value);
    } else if (auto *box = qobject_cast<QComboBox *>(w))
        box->setCurrentIndex(box->findText(value));
    else if (auto *box = qobject_cast<QCheckBox *>(w))
        box->setChecked(value == QLatin1String("1"));
}

const char *const ReadSections[] = {"SystemConfiguration", "NavConfiguration", "GSMConfiguration",
                                    "ServerConfiguration", "agcConfiguration", "LogicConfiguration",
                                    "FuelConfiguration",   "OutConfiguration"};

} // namespace

class tst_MainWindow : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void form_data();
    void form();
    void deviceOnlyCommands_areDisabledWithAReason();
    void startUp_rejectedDialogEndsWithoutWindow();
    void startUp_acceptedDialogShowsWindow();
    void telemetryPeriod_data();
    void telemetryPeriod();
    void connected_identifiesDevice();
    void twoDevices_areRefusedWithAWarning();
    void reconnect_closesLinkAndIdentifiesAgain();
    void linkError_data();
    void linkError();
    void connectionLost_afterFourSilentTimeouts_cancelReportsBrokenLink();
    void connectionLost_answerClosesWaitDialog();
    void readAll_no_sendsNothing();
    void writeAll_yes_sendsSectionsInOrder();
    void writeAll_no_sendsNothing();
    void deviceBlocked_showsMessageAndDropsQueue();
    void passwordRequest_sendsLogin();
    void outputsPage_data();
    void outputsPage();
    void createNew_data();
    void createNew();
    void saveThenOpen_restoresConfiguration();
    void openFile_data();
    void openFile();
    void saveFile_failureIsReportedAndNothingWritten();
    void leavingModifiedPage_asksToWrite();
    void readAll_withModifiedPage_writesPageBeforeReading();
    void close_withModifiedPage_writesPageThenCloses();
    void fastPolling_keepsQueueBounded();
    void passwordRequest_triesStartUpPasswordFirst();
    void programUpdateCheck_data();
    void programUpdateCheck();
    void firmwareUpdate_entersLoaderAndComesBack();
    void readAll_yes_fillsEverySectionFromVirtualDevice();
    void remote_throughServer_identifiesThenReportsServerGone();
    void virtualDevice_pageShowsReadValueAndKeepsAppliedEdit_data();
    void virtualDevice_pageShowsReadValueAndKeepsAppliedEdit();
    void typing_badValueIsRefused_data();
    void typing_badValueIsRefused();
    void leavingModifiedPage_yes_writesThatSection_data();
    void leavingModifiedPage_yes_writesThatSection();

private:
    MainWindow *makeWindow(bool connect = true, int responseMs = 10000);
    FakeLink *identifiedWindow(MainWindow **window);

    std::shared_ptr<ScriptedPrompter> m_prompter;
    QPointer<FakeLink> m_link;
    QTemporaryDir m_dir;
};

void tst_MainWindow::initTestCase() {
    // The traffic log is not what these tests look at.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_MainWindow::init() {
    QSettings(QString::fromLatin1(AppSettings::Organisation), QString::fromLatin1(AppSettings::Application))
        .clear();
    m_prompter = std::make_shared<ScriptedPrompter>();
}

void tst_MainWindow::cleanup() {
    m_prompter.reset();
}

MainWindow *tst_MainWindow::makeWindow(bool connect, int responseMs) {
    MainWindow::Options options;
    options.prompter = m_prompter;
    options.updateCheckAtStart = false;
    options.connectAtStart = connect;
    options.responseIntervalMs = responseMs;
    options.gsmProfilePath = m_dir.filePath(QStringLiteral("profiles.json"));
    options.gsmNetworksPath = m_dir.filePath(QStringLiteral("networks.json"));
    options.linkFactory = [this](int) {
        auto *link = new FakeLink;
        link->identity.setName(QString::fromLatin1(DeviceName));
        link->identity.setIMEI(QStringLiteral("863071014478127"));
        link->identity.setVersion(918);
        m_link = link;
        return link;
    };
    return new MainWindow(options);
}

FakeLink *tst_MainWindow::identifiedWindow(MainWindow **window) {
    *window = makeWindow();
    [&] {
        QTRY_VERIFY((*window)->connectionStateButton()->text().endsWith(QString::fromLatin1(DeviceName)));
    }();
    if (QTest::currentTestFailed())
        return nullptr;
    [&] { QTRY_VERIFY((*window)->device()->isIdle()); }();
    return m_link;
}

void tst_MainWindow::form_data() {
    QTest::addColumn<QString>("object");
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QString>("value");
    QTest::newRow("title") << "MainWindow" << QByteArray("windowTitle") << "Конфигуратор";
    QTest::newRow("apply") << "applyButton" << QByteArray("text")
                           << "Загрузить настройки текущей страницы в прибор";
    QTest::newRow("read") << "readButton" << QByteArray("text") << "Считать";
    QTest::newRow("read tip") << "readButton" << QByteArray("toolTip") << "Считать всю конфигурацию прибора";
    QTest::newRow("write") << "writeButton" << QByteArray("text") << "Загрузить";
    QTest::newRow("write tip") << "writeButton" << QByteArray("toolTip")
                               << "Загрузить всю конфигурацию в прибор";
    QTest::newRow("placeholder title") << "placeholderTitle" << QByteArray("text") << "Подключение к прибору";
    QTest::newRow("placeholder text")
        << "placeholderText" << QByteArray("text") << "Не обнаружены устройства для настройки и управления";
    QTest::newRow("placeholder state") << "placeholderState" << QByteArray("text") << "Прибор не подключен";
    QTest::newRow("connect") << "connectButton" << QByteArray("text") << "Подключить";
    QTest::newRow("state button") << "connectionStateButton" << QByteArray("text")
                                  << "Нет подключенных приборов";
    QTest::newRow("type tip") << "connectionTypeButton" << QByteArray("toolTip")
                              << "Тип соединения с прибором: USB соединение";
    QTest::newRow("file menu") << "menuFile" << QByteArray("title") << "Файл";
    QTest::newRow("create") << "action_CreateNewCfg" << QByteArray("text") << "Создать конфигурацию";
    QTest::newRow("open") << "action_OpenCfgFromFile" << QByteArray("text") << "Открыть из файла";
    QTest::newRow("save") << "action_SaveCfgToFile" << QByteArray("text") << "Сохранить в файл";
    QTest::newRow("exit") << "action_Exit" << QByteArray("text") << "Выход";
    QTest::newRow("read all") << "action_ReadCfg" << QByteArray("text")
                              << "Прочитать конфигурацию из прибора";
    QTest::newRow("write all") << "action_WriteCfg" << QByteArray("text")
                               << "Сохранить конфигурацию в прибор";
    QTest::newRow("clear") << "action_ClearMemory" << QByteArray("text") << "Очистить память";
    QTest::newRow("reset") << "action_ResetSettings" << QByteArray("text")
                           << "Сбросить настройки на заводские";
    QTest::newRow("reconnect") << "action_Reconnect" << QByteArray("text") << "Переподключить";
    QTest::newRow("firmware") << "action_UpdateFirmware" << QByteArray("text") << "Обновить прошивку";
    QTest::newRow("settings") << "actionSettings" << QByteArray("text") << "Настройки";
    QTest::newRow("remote") << "action_RemoteControl" << QByteArray("text") << "Удаленное управление";
    QTest::newRow("local") << "action_LocalControl" << QByteArray("text") << "Локальное управление";
    QTest::newRow("check all") << "action_CheckUpdates" << QByteArray("text")
                               << "Проверить наличие обновлений";
    QTest::newRow("check program") << "action_CheckProgramUpdates" << QByteArray("text")
                                   << "Проверить обновления программы";
    QTest::newRow("check device") << "action_CheckDeviceUpdates" << QByteArray("text")
                                  << "Проверить обновления устройства";
    QTest::newRow("update device") << "action_UpdateDevice" << QByteArray("text") << "Обновить прибор";
    QTest::newRow("version") << "action_SoftwareVersion" << QByteArray("text") << "Версия ПО";
    QTest::newRow("about") << "action_About" << QByteArray("text") << "О программе";
}

void tst_MainWindow::form() {
    QFETCH(QString, object);
    QFETCH(QByteArray, property);
    QFETCH(QString, value);
    std::unique_ptr<MainWindow> w(makeWindow(false));
    QObject *o = object == QLatin1String("MainWindow") ? w.get() : w->findChild<QObject *>(object);
    QVERIFY2(o, qPrintable(object));
    QCOMPARE(o->property(property.constData()).toString(), value);
}

void tst_MainWindow::deviceOnlyCommands_areDisabledWithAReason() {
    std::unique_ptr<MainWindow> w(makeWindow(false));
    const QStringList entries{"Прибор",          "Системные параметры", "Навигация",
                              "Передача данных", "Аналоговые входы",    "Логические входы",
                              "Топливо",         "Управление выходами", "Обновление прошивки"};
    auto *list = w->findChild<QListWidget *>(QStringLiteral("listWidget"));
    QCOMPARE(list->count(), entries.size());
    for (int i = 0; i < entries.size(); ++i)
        QCOMPARE(list->item(i)->text(), entries.at(i));
    for (const char *name : {"action_Reboot", "action_ReadStatistics"}) {
        auto *a = w->findChild<QAction *>(QLatin1String(name));
        QVERIFY(a->isVisible());
        QVERIFY(!a->isEnabled());
        QCOMPARE(a->toolTip(), QStringLiteral("Прибор не поддерживает эту команду"));
    }
    // A menu hides its actions' tool tips unless told otherwise.
    QVERIFY(w->findChild<QMenu *>(QStringLiteral("menuDevice"))->toolTipsVisible());
    // No device has reported outputs yet.
    QVERIFY(!(list->item(MainWindow::OutputsPage)->flags() & Qt::ItemIsEnabled));
}

void tst_MainWindow::startUp_rejectedDialogEndsWithoutWindow() {
    bool asked = false;
    MainWindow::Options options;
    options.prompter = m_prompter;
    options.updateCheckAtStart = false;
    options.connectAtStart = false;
    const int code = MainWindow::run(options, [&](QDialog *dialog) {
        asked = dialog != nullptr;
        return int(QDialog::Rejected);
    });
    QVERIFY(asked);
    QCOMPARE(code, 0);
    for (QWidget *w : QApplication::topLevelWidgets())
        QVERIFY(!qobject_cast<MainWindow *>(w));
}

void tst_MainWindow::startUp_acceptedDialogShowsWindow() {
    bool shown = false;
    MainWindow::Options options;
    options.prompter = m_prompter;
    options.updateCheckAtStart = false;
    options.connectAtStart = false;
    const int code = MainWindow::run(options, [&](QDialog *) {
        QTimer::singleShot(0, qApp, [&] {
            for (QWidget *w : QApplication::topLevelWidgets())
                shown = shown || (qobject_cast<MainWindow *>(w) && w->isVisible());
            qApp->quit();
        });
        return int(QDialog::Accepted);
    });
    QCOMPARE(code, 0);
    QVERIFY(shown);
}

void tst_MainWindow::telemetryPeriod_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("row");
    QTest::addColumn<quint32>("period");
    QTest::newRow("usb, row 0") << 0 << 0 << 1000u;
    QTest::newRow("usb ignores the row") << 0 << 6 << 1000u;
    QTest::newRow("remote, continuous row never polls") << 1 << 0 << 0u;
    QTest::newRow("remote, 5 s row polls every second") << 1 << 1 << 1000u;
    QTest::newRow("remote, 1 s row") << 1 << 5 << 5000u;
    QTest::newRow("remote, none row polls every 50 ms") << 1 << 6 << 50u;
    QTest::newRow("remote, unknown row") << 1 << 9 << 0u;
}

void tst_MainWindow::telemetryPeriod() {
    QFETCH(int, type);
    QFETCH(int, row);
    QFETCH(quint32, period);
    {
        AppSettings settings;
        settings.setLoginType(type);
        settings.setTelemetryTime(row);
        settings.setSerialNumber(QStringLiteral("863071014478127"));
    }
    std::unique_ptr<MainWindow> w(makeWindow(false));
    QCOMPARE(w->connectionType(), type);
    QCOMPARE(w->telemetryPeriod(), period);
    QCOMPARE(w->telemetryTimer()->isActive(), false);
}

void tst_MainWindow::connected_identifiesDevice() {
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    QCOMPARE(w->connectionStateButton()->text(), QStringLiteral("Подключен прибор: Fake tracker"));
    QVERIFY(w->isIdentified());
    // The first request is the device information, kind 1.
    QCOMPARE(link->written.first().mid(6, 2).toHex(), QByteArray("8101"));
    QCOMPARE(w->statePage()->valueText(QStringLiteral("imei")), QStringLiteral("863071014478127"));
    QVERIFY(w->telemetryTimer()->isActive());
    QCOMPARE(w->connectionTypeButton()->property("connected").toBool(), true);
}

void tst_MainWindow::twoDevices_areRefusedWithAWarning() {
    MainWindow::Options options;
    options.prompter = m_prompter;
    options.updateCheckAtStart = false;
    options.gsmProfilePath = m_dir.filePath(QStringLiteral("profiles.json"));
    options.gsmNetworksPath = m_dir.filePath(QStringLiteral("networks.json"));
    options.linkFactory = [](int) {
        auto *serial = new SerialConnection;
        serial->setPortLister([] {
            SerialPortDescription port;
            port.hasVendorIdentifier = port.hasProductIdentifier = true;
            port.vendorIdentifier = SerialConnection::VendorIdentifier;
            port.productIdentifier = SerialConnection::ProductIdentifier;
            port.portName = QStringLiteral("ttyACM0");
            SerialPortDescription other = port;
            other.portName = QStringLiteral("ttyACM1");
            return QList<SerialPortDescription>{port, other};
        });
        return serial;
    };
    std::unique_ptr<MainWindow> w(new MainWindow(options));
    QTRY_COMPARE(m_prompter->calls.size(), 1);
    QCOMPARE(m_prompter->calls.first().title, QStringLiteral("Ошибка подключения"));
    QCOMPARE(m_prompter->calls.first().text,
             QStringLiteral("Подключено более одного прибора, отключите лишние \n для избежания ошибок"));
    QVERIFY(!w->telemetryTimer()->isActive());
    QVERIFY(!w->device()->link()->isOpen());
    QCOMPARE(w->connectionStateButton()->text(), QStringLiteral("Нет подключенных приборов"));
}

void tst_MainWindow::reconnect_closesLinkAndIdentifiesAgain() {
    MainWindow *raw = nullptr;
    FakeLink *first = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(first);
    QPointer<FakeLink> old = first;
    auto *action = w->findChild<QAction *>(QStringLiteral("action_Reconnect"));
    QVERIFY(action->isEnabled());
    action->trigger();
    QVERIFY(m_link && m_link != old);
    QTRY_VERIFY(old.isNull() || !old->isOpen());
    QTRY_COMPARE(w->connectionStateButton()->text(), QStringLiteral("Подключен прибор: Fake tracker"));
    QCOMPARE(m_link->written.first().mid(6, 2).toHex(), QByteArray("8101"));
}

void tst_MainWindow::linkError_data() {
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("disconnected");
    QTest::addColumn<bool>("linkDropped");
    QTest::newRow("server closed the connection") << 0 << 1 << "Отключен от сервера" << true << true;
    QTest::newRow("network refused: no box") << 0 << 0 << "" << true << false;
    QTest::newRow("serial device not found") << 1 << 1 << "Прибор отключен" << true << false;
    QTest::newRow("serial cable pulled") << 1 << 9 << "Прибор был отключен" << true << false;
    QTest::newRow("serial port not open") << 1 << 13 << "Порт закрыт" << true << false;
    QTest::newRow("serial unsupported operation is not fatal") << 1 << 10 << "" << false << false;
}

void tst_MainWindow::linkError() {
    QFETCH(int, group);
    QFETCH(int, code);
    QFETCH(QString, text);
    QFETCH(bool, disconnected);
    QFETCH(bool, linkDropped);
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    m_prompter->calls.clear();
    link->raise(group, code);
    if (text.isEmpty()) {
        QVERIFY2(m_prompter->calls.isEmpty(), qPrintable(m_prompter->texts().join('|')));
    } else {
        QCOMPARE(m_prompter->calls.size(), 1);
        QCOMPARE(m_prompter->calls.first().title, QStringLiteral("Ошибка подключения"));
        QCOMPARE(m_prompter->calls.first().text, text);
    }
    QCOMPARE(w->connectionStateButton()->text() == QStringLiteral("Нет подключенных приборов"), disconnected);
    QCOMPARE(w->telemetryTimer()->isActive(), !disconnected);
    QCOMPARE(w->connectionTypeButton()->property("connected").toBool(), !disconnected);
    QTRY_COMPARE(w->device()->link() == nullptr, linkDropped);
}

void tst_MainWindow::connectionLost_afterFourSilentTimeouts_cancelReportsBrokenLink() {
    std::unique_ptr<MainWindow> w(makeWindow(false, 20));
    QMetaObject::invokeMethod(w.get(), "reconnect");
    QVERIFY(m_link);
    m_link->silent = true;
    QSignalSpy lost(w->device(), &Device::connectionLost);
    m_link->deliver(QByteArray()); // nothing; the identity request waits unanswered
    QTRY_VERIFY(w->waitDialog());
    QCOMPARE(lost.count(), 1);
    QVERIFY(w->device()->retryCount() >= 3);
    // More silence never opens a second dialog.
    QTest::qWait(120);
    QCOMPARE(w->findChildren<ConnectionWaitDlg *>().size(), 1);

    m_prompter->calls.clear();
    w->waitDialog()->reject();
    QVERIFY(!w->waitDialog());
    QVERIFY(m_prompter->said(QStringLiteral("information"), QStringLiteral("Соединение разорвано")));
    QCOMPARE(m_prompter->calls.first().title, QCoreApplication::applicationName());
    QVERIFY(!m_link->isOpen());
    QCOMPARE(w->connectionStateButton()->text(), QStringLiteral("Нет подключенных приборов"));
}

void tst_MainWindow::connectionLost_answerClosesWaitDialog() {
    std::unique_ptr<MainWindow> w(makeWindow(false, 20));
    QMetaObject::invokeMethod(w.get(), "reconnect");
    QVERIFY(m_link);
    m_link->silent = true;
    QTRY_VERIFY(w->waitDialog());
    m_link->deliverPayload(proto::ConfigPacketType, m_link->identity.encodeAnswer(2));
    QTRY_VERIFY(!w->waitDialog());
    QVERIFY(!m_prompter->said(QStringLiteral("information"), QStringLiteral("Соединение разорвано")));
    QCOMPARE(w->connectionStateButton()->text(), QStringLiteral("Подключен прибор: Fake tracker"));
}

void tst_MainWindow::readAll_no_sendsNothing() {
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    w->telemetryTimer()->stop();
    const int before = link->written.size();
    m_prompter->answers = {false};
    w->readAll();
    QCOMPARE(m_prompter->calls.last().title, QStringLiteral("Считывание конфигурации"));
    QCOMPARE(m_prompter->calls.last().text,
             QStringLiteral("Считать все настройки из прибора? \nНесохраненные параметры будут утрачены"));
    QTest::qWait(20);
    QCOMPARE(link->written.size(), before);
    QCOMPARE(w->device()->protocol()->queueSize(), 0);
}

void tst_MainWindow::writeAll_yes_sendsSectionsInOrder() {
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    w->telemetryTimer()->stop();
    link->written.clear();
    m_prompter->answers = {true};
    w->writeAll();
    QCOMPARE(m_prompter->calls.last().title, QStringLiteral("Сохранение конфигурации"));
    QCOMPARE(m_prompter->calls.last().text,
             QStringLiteral("Перезаписать все настройки прибора? \nДействие заменит текущие настройки"));

    QStringList expected{"03 03 00", "03 02 00", "04 03 00", "04 03 01",
                         "04 04 00", "04 04 01", "08 01 00", "11 01 00"};
    VantorConfiguration *cfg = w->configuration();
    for (int i = 0; i < cfg->agc()->count(); ++i)
        expected << QStringLiteral("0c 02 %1").arg(i, 2, 16, QLatin1Char('0'));
    for (int i = 0; i < cfg->logic()->count(); ++i)
        expected << QStringLiteral("0d 02 %1").arg(i, 2, 16, QLatin1Char('0'));
    for (int i = 0; i < cfg->servers()->count(); ++i)
        expected << QStringLiteral("10 01 %1").arg(i, 2, 16, QLatin1Char('0'));
    QTRY_COMPARE(link->writeHeads().size(), expected.size());
    QCOMPARE(link->writeHeads(), expected);
}

void tst_MainWindow::writeAll_no_sendsNothing() {
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    w->telemetryTimer()->stop();
    const int before = link->written.size();
    m_prompter->answers = {false};
    w->writeAll();
    QTest::qWait(20);
    QCOMPARE(link->written.size(), before);
}

void tst_MainWindow::deviceBlocked_showsMessageAndDropsQueue() {
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    w->telemetryTimer()->stop();
    link->silent = true;
    m_prompter->answers = {true};
    w->readAll();
    QVERIFY(w->device()->protocol()->queueSize() > 0);
    link->deliverPayload(proto::ConfigPacketType, QByteArray::fromHex("91810000 0500"));
    QVERIFY(m_prompter->said(
        QStringLiteral("warning"),
        QStringLiteral("Прибор заблокирован, повторите попытку позже. \nИзменения не применены.")));
    QCOMPARE(w->device()->protocol()->queueSize(), 0);
}

void tst_MainWindow::passwordRequest_sendsLogin() {
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    w->telemetryTimer()->stop();
    m_prompter->passwordValue = 123456789;
    link->deliverPayload(proto::ConfigPacketType, QByteArray::fromHex("91810000 0300"));
    QCOMPARE(m_prompter->calls.last().kind, QStringLiteral("password"));
    const QByteArray login =
        proto::Frame::build(proto::CommandPacketType, QByteArray::fromHex("01010000 15cd5b07"));
    QTRY_VERIFY(link->written.contains(login));
}

void tst_MainWindow::outputsPage_data() {
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("two outputs") << QByteArray::fromHex("8e010000 0000 0100") << true;
    QTest::newRow("no outputs") << QByteArray::fromHex("8e010000") << false;
}

void tst_MainWindow::outputsPage() {
    QFETCH(QByteArray, answer);
    QFETCH(bool, enabled);
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    link->deliverPayload(proto::ConfigPacketType, answer);
    auto *list = w->findChild<QListWidget *>(QStringLiteral("listWidget"));
    QCOMPARE(bool(list->item(MainWindow::OutputsPage)->flags() & Qt::ItemIsEnabled), enabled);
}

void tst_MainWindow::createNew_data() {
    QTest::addColumn<bool>("yes");
    QTest::addColumn<int>("gsens");
    QTest::addColumn<QString>("lastMessage");
    QTest::newRow("yes: defaults") << true << 0
                                   << "Предыдущая загруженная конфигурация будет заменена.  Продолжить?";
    QTest::newRow("no: kept") << false << 7 << "Ничего не делаем";
}

void tst_MainWindow::createNew() {
    QFETCH(bool, yes);
    QFETCH(int, gsens);
    QFETCH(QString, lastMessage);
    std::unique_ptr<MainWindow> w(makeWindow(false));
    w->configuration()->system()->value()->setGsens(7);
    m_prompter->answers = {yes};
    w->on_action_CreateNewCfg_triggered();
    QCOMPARE(m_prompter->calls.first().text,
             QStringLiteral("Предыдущая загруженная конфигурация будет заменена.  Продолжить?"));
    QCOMPARE(m_prompter->calls.last().text, lastMessage);
    QCOMPARE(int(w->configuration()->system()->value()->gsens()), gsens);
}

void tst_MainWindow::saveThenOpen_restoresConfiguration() {
    std::unique_ptr<MainWindow> w(makeWindow(false));
    const QString path = m_dir.filePath(QStringLiteral("saved.json"));
    w->configuration()->system()->value()->setGsens(9);
    m_prompter->fileNames = QStringList{path};
    w->on_action_SaveCfgToFile_triggered();
    QCOMPARE(m_prompter->calls.last().title, QStringLiteral("Save Json File"));
    QCOMPARE(m_prompter->calls.last().text, QStringLiteral("JSON (*.json)"));
    QVERIFY(QFile::exists(path));

    w->configuration()->system()->value()->setGsens(2);
    m_prompter->fileNames = QStringList{path};
    w->on_action_OpenCfgFromFile_triggered();
    QVERIFY(
        m_prompter->said(QStringLiteral("information"), QStringLiteral("Конфигурация успешно загружена")));
    QCOMPARE(int(w->configuration()->system()->value()->gsens()), 9);
    auto *page = qobject_cast<SystemPage *>(w->settingsPage(MainWindow::SystemPage));
    QCOMPARE(page->gsens->value(), 9);
}

void tst_MainWindow::openFile_data() {
    QTest::addColumn<QByteArray>("content"); // empty: the file does not exist
    QTest::addColumn<QString>("message");
    QTest::newRow("missing file") << QByteArray() << "Не удалось открыть файл конфигурации";
    QTest::newRow("not json") << QByteArray("{ \"SystemParameters\": ")
                              << "Произошла ошибка при открытии файла";
    QTest::newRow("json but not an object") << QByteArray("[1, 2]") << "Произошла ошибка при открытии файла";
    QTest::newRow("masked values") << QByteArray("{\"SystemParameters\": {\"gsens\": 300}}")
                                   << "Конфигурация успешно загружена";
}

void tst_MainWindow::openFile() {
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    std::unique_ptr<MainWindow> w(makeWindow(false));
    const QString path = m_dir.filePath(QStringLiteral("open-%1.json").arg(QTest::currentDataTag()));
    if (!content.isEmpty()) {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    w->configuration()->system()->value()->setGsens(5);
    m_prompter->fileNames = QStringList{path};
    w->on_action_OpenCfgFromFile_triggered();
    QCOMPARE(m_prompter->calls.first().title, QStringLiteral("Open Json File"));
    QCOMPARE(m_prompter->calls.last().text, message);
    const bool loaded = message == QStringLiteral("Конфигурация успешно загружена");
    QCOMPARE(int(w->configuration()->system()->value()->gsens()), loaded ? 44 : 5);
}

void tst_MainWindow::saveFile_failureIsReportedAndNothingWritten() {
    std::unique_ptr<MainWindow> w(makeWindow(false));
    const QString path = m_dir.filePath(QStringLiteral("no-such-folder/cfg.json"));
    m_prompter->fileNames = QStringList{path};
    w->on_action_SaveCfgToFile_triggered();
    QCOMPARE(m_prompter->calls.last().kind, QStringLiteral("critical"));
    QVERIFY(
        m_prompter->calls.last().text.startsWith(QStringLiteral("Не удалось сохранить файл конфигурации")));
    QVERIFY(!QFile::exists(path));

    // Cancelling the dialog writes nothing and says nothing.
    m_prompter->calls.clear();
    w->on_action_SaveCfgToFile_triggered();
    QCOMPARE(m_prompter->calls.size(), 1);
}

void tst_MainWindow::leavingModifiedPage_asksToWrite() {
    std::unique_ptr<MainWindow> w(makeWindow(false));
    auto *list = w->findChild<QListWidget *>(QStringLiteral("listWidget"));
    list->setCurrentRow(MainWindow::SystemPage);
    auto *page = qobject_cast<SystemPage *>(w->settingsPage(MainWindow::SystemPage));
    page->gsens->setValue(page->gsens->value() == 3 ? 4 : 3);
    QVERIFY(page->isModified());
    m_prompter->answers = {false};
    list->setCurrentRow(MainWindow::NavigationPage);
    QCOMPARE(m_prompter->calls.size(), 1);
    QCOMPARE(m_prompter->calls.first().title, QString::fromUtf8(SettingsPageBase::UnsavedTitle));
    QCOMPARE(m_prompter->calls.first().text, QString::fromUtf8(SettingsPageBase::UnsavedQuestion));
    QVERIFY(!page->isModified());
    QCOMPARE(list->currentRow(), int(MainWindow::NavigationPage));
}

void tst_MainWindow::readAll_withModifiedPage_writesPageBeforeReading() {
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    w->telemetryTimer()->stop();
    w->showPage(MainWindow::DataTransferPage);
    auto *tabs = w->findChild<QTabWidget *>(QStringLiteral("dataTransferTabs"));
    tabs->setCurrentIndex(1);
    auto *gsm = qobject_cast<SettingsGSMPage *>(w->settingsPage(MainWindow::DataTransferPage));
    QVERIFY(gsm);
    gsm->sim(0).apn->setText(QStringLiteral("internet.example"));
    QVERIFY(gsm->isModified());
    link->written.clear();

    m_prompter->answers = {true, true}; // write the page, then read everything
    w->readAll();
    QCOMPARE(m_prompter->calls.size(), 2);
    QCOMPARE(m_prompter->calls.at(0).text, QString::fromUtf8(SettingsPageBase::UnsavedQuestion));
    QTRY_VERIFY(link->written.size() >= 4 + 10);
    QTRY_VERIFY(w->device()->isIdle());
    QCOMPARE(link->writeHeads(), QStringList({"04 03 00", "04 03 01", "04 04 00", "04 04 01"}));
    // Every GSM write left before the first read request.
    const QByteArray lastWrite = link->written.at(3);
    QCOMPARE(lastWrite.mid(6, 3).toHex(' '), QByteArray("04 04 01"));
    QCOMPARE(quint8(link->written.at(4)[6]), quint8(0x91));
    QCOMPARE(w->configuration()->gsm()->element(0)->apn(), QStringLiteral("internet.example"));
}

void tst_MainWindow::close_withModifiedPage_writesPageThenCloses() {
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    w->show();
    w->showPage(MainWindow::SystemPage);
    auto *page = qobject_cast<SystemPage *>(w->settingsPage(MainWindow::SystemPage));
    page->gsens->setValue(page->gsens->value() == 3 ? 4 : 3);
    link->written.clear();
    m_prompter->answers = {true};
    w->close();
    QCOMPARE(m_prompter->calls.size(), 1);
    QCOMPARE(m_prompter->calls.first().text, QString::fromUtf8(SettingsPageBase::UnsavedQuestion));
    QTRY_VERIFY(!w->isVisible());
    QCOMPARE(link->writeHeads(), QStringList({"11 01 00"}));
    QVERIFY(!link->isOpen());
    QVERIFY(!w->telemetryTimer()->isActive());
}

void tst_MainWindow::fastPolling_keepsQueueBounded() {
    {
        AppSettings settings;
        settings.setLoginType(MainWindow::RemoteConnection);
        settings.setTelemetryTime(6); // "<Нет>": every 50 ms
        settings.setSerialNumber(QStringLiteral("863071014478127"));
    }
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    QCOMPARE(w->telemetryPeriod(), 50u);
    // The device stops answering: requests pile up only until every telemetry request is waiting once.
    link->silent = true;
    int largest = 0;
    connect(w->device()->protocol(), &proto::UNPProtocol::queueChanged, this,
            [&largest](int size) { largest = qMax(largest, size); });
    QTest::qWait(600);
    QVERIFY(largest > 0);
    QVERIFY2(largest <= 15, qPrintable(QString::number(largest)));
}

void tst_MainWindow::passwordRequest_triesStartUpPasswordFirst() {
    AppSettings().setPassWord(4321);
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    w->telemetryTimer()->stop();
    m_prompter->passwordValue = 77;
    const QByteArray askAgain = QByteArray::fromHex("91810000 0300");
    link->deliverPayload(proto::ConfigPacketType, askAgain);
    QVERIFY(!m_prompter->said(QStringLiteral("password"), QString()));
    QTRY_VERIFY(link->written.contains(
        proto::Frame::build(proto::CommandPacketType, QByteArray::fromHex("01010000 e1100000"))));
    // Refused again: now the user is asked.
    link->deliverPayload(proto::ConfigPacketType, askAgain);
    QVERIFY(m_prompter->said(QStringLiteral("password"), QString()));
    QTRY_VERIFY(link->written.contains(
        proto::Frame::build(proto::CommandPacketType, QByteArray::fromHex("01010000 4d000000"))));
}

void tst_MainWindow::programUpdateCheck_data() {
    QTest::addColumn<int>("outcome"); // 0 error, 1 no updates, 2 updates found
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    const QString app = QStringLiteral("Tavrel_micro_cfg");
    QTest::newRow("tool failed")
        << 0 << "warning" << app
        << "Ошибка проверки обновлений программы конфигуратора\nОшибка: Updates checking timeout";
    QTest::newRow("no updates") << 1 << "information" << app << "Нет доступных обновлений конфигуратора";
    QTest::newRow("one update") << 2 << "question"
                                << "Результат проверки обновлений"
                                << "Количество обновлений: 1\nДоступно обновление.\nНазвание приложения: "
                                   "tavrel-cfg\nВерсия: 1.0.1\nРазмер: 12 MB\n\n";
}

void tst_MainWindow::programUpdateCheck() {
    QFETCH(int, outcome);
    QFETCH(QString, kind);
    QFETCH(QString, title);
    QFETCH(QString, text);
    std::unique_ptr<MainWindow> w(makeWindow(false));
    auto *checker = w->findChild<QTIFWUpdater *>();
    QVERIFY(checker);
    if (outcome == 0)
        emit checker->errorOccurred(QStringLiteral("Updates checking timeout"));
    else if (outcome == 1)
        emit checker->warningOccurred(QStringLiteral("There are currently no updates available."));
    else
        emit checker->checkComplete({ComponentInformation{QStringLiteral("tavrel-cfg"),
                                                          QStringLiteral("1.0.1"), QStringLiteral("12 MB")}});
    QCOMPARE(m_prompter->calls.size(), 1);
    QCOMPARE(m_prompter->calls.first().kind, kind);
    QCOMPARE(m_prompter->calls.first().title, title);
    QCOMPARE(m_prompter->calls.first().text, text);
}

void tst_MainWindow::firmwareUpdate_entersLoaderAndComesBack() {
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    const QString file = m_dir.filePath(QStringLiteral("firmware.bsk"));
    QVERIFY(BskBuilder::write(file, BskBuilder().build()));
    ProgramUpdatePage *page = w->firmwarePage();
    QCOMPARE(page->loadFile(file), int(FirmwareImage::Loaded));
    w->showPage(MainWindow::FirmwarePage);
    QVERIFY(w->telemetryTimer()->isActive());
    link->written.clear();

    page->on_startButton_clicked();
    const QByteArray enter = proto::Frame::build(proto::CommandPacketType, QByteArray::fromHex("01020000"));
    QTRY_VERIFY(link->written.contains(enter));
    QVERIFY(!w->telemetryTimer()->isActive());
    QVERIFY(page->updater()->inProgress());
    auto *read = w->findChild<QPushButton *>(QStringLiteral("readButton"));
    auto *list = w->findChild<QListWidget *>(QStringLiteral("listWidget"));
    QVERIFY(!read->isEnabled());
    QVERIFY(!list->isEnabled());

    emit page->updater()->UpdateComplete();
    QVERIFY(read->isEnabled());
    QVERIFY(list->isEnabled());
    auto *wait = w->findChild<WaitMessageDlg *>();
    QVERIFY(wait);
    wait->accept();
    QVERIFY(page->progressLines().contains(QStringLiteral("Обновление завершено.")));
}

void tst_MainWindow::readAll_yes_fillsEverySectionFromVirtualDevice() {
    const QString devsim = QStringLiteral(TAVREL_BINARY_DIR "/tools/devsim/tavrel-devsim");
    QVERIFY2(QFileInfo(devsim).isExecutable(), qPrintable(devsim));
    QProcess sim;
    sim.start(devsim, {QStringLiteral("--pty")});
    QVERIFY(sim.waitForStarted());
    QVERIFY(sim.waitForReadyRead(5000));
    const QString pty = QString::fromLocal8Bit(sim.readLine()).trimmed();
    QVERIFY(pty.startsWith(QLatin1String("/dev/")));

    MainWindow::Options options;
    options.prompter = m_prompter;
    options.updateCheckAtStart = false;
    options.portName = pty;
    options.gsmProfilePath = m_dir.filePath(QStringLiteral("profiles.json"));
    options.gsmNetworksPath = m_dir.filePath(QStringLiteral("networks.json"));
    {
        std::unique_ptr<MainWindow> w(new MainWindow(options));
        QTRY_COMPARE_WITH_TIMEOUT(w->connectionStateButton()->text(),
                                  QStringLiteral("Подключен прибор: Vantor micro"), 5000);
        m_prompter->answers = {true};
        w->readAll();
        const QStringList keys{"SystemConfiguration", "NavConfiguration", "GSMConfiguration",
                               "ServerConfiguration", "agcConfiguration", "LogicConfiguration",
                               "FuelConfiguration",   "OutConfiguration"};
        for (const QString &key : keys)
            QTRY_VERIFY2_WITH_TIMEOUT(w->configuration()->isFilled(key), qPrintable(key), 10000);
        QVERIFY2(!m_prompter->said(QStringLiteral("warning"), QString()),
                 qPrintable(m_prompter->texts().join('|')));
    }
    sim.terminate();
    QVERIFY(sim.waitForFinished(5000));
}

void tst_MainWindow::remote_throughServer_identifiesThenReportsServerGone() {
    const QString devsim = QStringLiteral(TAVREL_BINARY_DIR "/tools/devsim/tavrel-devsim");
    QProcess sim;
    sim.start(devsim, {QStringLiteral("--tcp"), QStringLiteral("0"), QStringLiteral("--imei"),
                       QStringLiteral("863071014478127")});
    QVERIFY(sim.waitForStarted());
    QVERIFY(sim.waitForReadyRead(5000));
    const QString endpoint = QString::fromLocal8Bit(sim.readLine()).trimmed();
    QCOMPARE(endpoint.section(':', 0, 0), QStringLiteral("127.0.0.1"));
    {
        AppSettings settings;
        settings.setLoginType(MainWindow::RemoteConnection);
        settings.setServerAddress(QStringLiteral("127.0.0.1"));
        settings.setServerPort(endpoint.section(':', 1).toInt());
        settings.setSerialNumber(QStringLiteral("863071014478127"));
    }
    MainWindow::Options options;
    options.prompter = m_prompter;
    options.updateCheckAtStart = false;
    options.gsmProfilePath = m_dir.filePath(QStringLiteral("profiles.json"));
    options.gsmNetworksPath = m_dir.filePath(QStringLiteral("networks.json"));
    std::unique_ptr<MainWindow> w(new MainWindow(options));
    QCOMPARE(w->connectionType(), int(MainWindow::RemoteConnection));
    QTRY_COMPARE_WITH_TIMEOUT(w->connectionStateButton()->text(),
                              QStringLiteral("Подключен прибор: Vantor micro"), 5000);
    QVERIFY(!w->waitDialog());
    QCOMPARE(w->connectionTypeButton()->toolTip(),
             QStringLiteral("Тип соединения с прибором: Интернет соединение"));

    sim.terminate();
    QVERIFY(sim.waitForFinished(5000));
    QTRY_VERIFY_WITH_TIMEOUT(
        m_prompter->said(QStringLiteral("warning"), QStringLiteral("Отключен от сервера")), 5000);
    QCOMPARE(w->connectionStateButton()->text(), QStringLiteral("Нет подключенных приборов"));
}

void tst_MainWindow::virtualDevice_pageShowsReadValueAndKeepsAppliedEdit_data() {
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("deviceValue");
    QTest::addColumn<QString>("edited");
    const int none = -1;
    QTest::newRow("system parking time")
        << int(MainWindow::SystemPage) << none << "label:Время до перехода в режим стоянки:"
        << "5"
        << "42";
    QTest::newRow("system accelerometer")
        << int(MainWindow::SystemPage) << none << "label:Чувствительность акселерометра (0..15):"
        << "7"
        << "15";
    QTest::newRow("navigation course") << int(MainWindow::NavigationPage) << none << "label:Изменение курса:"
                                       << "15"
                                       << "33";
    QTest::newRow("navigation power on parking")
        << int(MainWindow::NavigationPage) << none << "label:Режим питания навигации (0..15):"
        << "2"
        << "15";
    QTest::newRow("server address") << int(MainWindow::DataTransferPage) << 0 << "label:Адрес сервера:"
                                    << "gps.tavrel.ru"
                                    << "probe.example.org";
    QTest::newRow("server port") << int(MainWindow::DataTransferPage) << 0 << "label:Порт:"
                                 << "20629"
                                 << "4000000000";
    QTest::newRow("gsm access point") << int(MainWindow::DataTransferPage) << 1 << "label:Точка доступа:"
                                      << "internet.mts.ru"
                                      << "m2m.example-apn.with.32.chars.xx";
    QTest::newRow("analog low threshold") << int(MainWindow::AnalogPage) << none << "spin:0"
                                          << "9000"
                                          << "65535";
    QTest::newRow("analog channel 3 in use") << int(MainWindow::AnalogPage) << none << "check:2"
                                             << "0"
                                             << "1";
    QTest::newRow("logic input function") << int(MainWindow::LogicPage) << none << "label:Функция входа 1:"
                                          << "Логический"
                                          << "Частотомер";
    QTest::newRow("fuel sensor address") << int(MainWindow::FuelPage) << none << "spin:0"
                                         << "1"
                                         << "200";
    QTest::newRow("fuel tank averaging") << int(MainWindow::FuelPage) << none << "label:Бак 1:"
                                         << "10"
                                         << "777";
    QTest::newRow("output 1 state") << int(MainWindow::OutputsPage) << none << "check:0"
                                    << "0"
                                    << "1";
}

// As a user would: read everything from the virtual tracker, edit one field, write the page with the
// apply button, forget the configuration and read it all again.
void tst_MainWindow::virtualDevice_pageShowsReadValueAndKeepsAppliedEdit() {
    QFETCH(int, row);
    QFETCH(int, tab);
    QFETCH(QString, field);
    QFETCH(QString, deviceValue);
    QFETCH(QString, edited);

    const QString devsim = QStringLiteral(TAVREL_BINARY_DIR "/tools/devsim/tavrel-devsim");
    QVERIFY2(QFileInfo(devsim).isExecutable(), qPrintable(devsim));
    QProcess sim;
    sim.start(devsim, {QStringLiteral("--pty")});
    QVERIFY(sim.waitForStarted());
    QVERIFY(sim.waitForReadyRead(5000));
    const QString pty = QString::fromLocal8Bit(sim.readLine()).trimmed();
    QVERIFY(pty.startsWith(QLatin1String("/dev/")));

    MainWindow::Options options;
    options.prompter = m_prompter;
    options.updateCheckAtStart = false;
    options.portName = pty;
    options.gsmProfilePath = m_dir.filePath(QStringLiteral("profiles.json"));
    options.gsmNetworksPath = m_dir.filePath(QStringLiteral("networks.json"));
    {
        std::unique_ptr<MainWindow> w(new MainWindow(options));
        QTRY_COMPARE_WITH_TIMEOUT(w->connectionStateButton()->text(),
                                  QStringLiteral("Подключен прибор: Vantor micro"), 5000);
        auto readEverything = [&] {
            m_prompter->answers = {true};
            w->readAll();
            for (const char *key : ReadSections)
                QTRY_VERIFY2_WITH_TIMEOUT(w->configuration()->isFilled(QLatin1String(key)), key, 10000);
        };
        auto shownField = [&]() -> QWidget * {
            w->showPage(row);
            if (tab >= 0)
                w->findChild<QTabWidget *>(QStringLiteral("dataTransferTabs"))->setCurrentIndex(tab);
            SettingsPageBase *page = w->settingsPage(row);
            return page ? pageField(page, field) : nullptr;
        };
        auto *apply = w->findChild<QPushButton *>(QStringLiteral("applyButton"));
        QVERIFY(apply);

        readEverything();
        QWidget *input = shownField();
        QVERIFY2(input, qPrintable(field));
        QCOMPARE(fieldValue(input), deviceValue);
        QVERIFY(!w->settingsPage(row)->isModified());

        setFieldValue(input, edited);
        QCOMPARE(fieldValue(input), edited);
        QVERIFY(w->settingsPage(row)->isModified());
        QVERIFY(apply->isEnabled());
        apply->click();
        QVERIFY(!w->settingsPage(row)->isModified());
        QTRY_VERIFY_WITH_TIMEOUT(w->device()->protocol()->queue().isEmpty(), 5000);

        // Forget what the window holds, so that only the device can bring the edit back.
        m_prompter->answers = {true};
        w->on_action_CreateNewCfg_triggered();
        QVERIFY(fieldValue(pageField(w->settingsPage(row), field)) != edited);

        readEverything();
        input = shownField();
        QVERIFY(input);
        QCOMPARE(fieldValue(input), edited);
        QVERIFY(!w->settingsPage(row)->isModified());
        QVERIFY2(!m_prompter->said(QStringLiteral("warning"), QString()),
                 qPrintable(m_prompter->texts().join('|')));
    }
    sim.terminate();
    QVERIFY(sim.waitForFinished(5000));
}

void tst_MainWindow::typing_badValueIsRefused_data() {
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");
    const int none = -1;
    QTest::newRow("8-bit value stops at 255")
        << int(MainWindow::SystemPage) << none << "label:Время до перехода в режим стоянки:"
        << "300"
        << "30";
    QTest::newRow("4-bit value stops at 15")
        << int(MainWindow::SystemPage) << none << "label:Чувствительность акселерометра (0..15):"
        << "99"
        << "9";
    QTest::newRow("4-bit navigation power")
        << int(MainWindow::NavigationPage) << none << "label:Режим питания навигации (0..15):"
        << "16"
        << "1";
    QTest::newRow("16-bit value stops at 65535") << int(MainWindow::AnalogPage) << none << "spin:0"
                                                 << "70000"
                                                 << "7000";
    QTest::newRow("minus sign refused") << int(MainWindow::FuelPage) << none << "spin:0"
                                        << "-5"
                                        << "5";
    QTest::newRow("letters refused in a number")
        << int(MainWindow::OutputsPage) << none << "label:Число повторов:"
        << "1a2"
        << "12";
    QTest::newRow("cyrillic refused in access point")
        << int(MainWindow::DataTransferPage) << 1 << "label:Точка доступа:"
        << "inтернет.ru"
        << "in.ru";
    QTest::newRow("access point stops at 32 characters")
        << int(MainWindow::DataTransferPage) << 1 << "label:Точка доступа:" << QString(40, QLatin1Char('a'))
        << QString(32, QLatin1Char('a'));
    QTest::newRow("latin-1 letter accepted")
        << int(MainWindow::DataTransferPage) << 1 << "label:Пользователь:" << QStringLiteral("m\u00fcller")
        << QStringLiteral("m\u00fcller");
    QTest::newRow("euro sign refused in server address")
        << int(MainWindow::DataTransferPage) << 0 << "label:Адрес сервера:" << QStringLiteral("x\u20acy")
        << "xy";
}

void tst_MainWindow::typing_badValueIsRefused() {
    QFETCH(int, row);
    QFETCH(int, tab);
    QFETCH(QString, field);
    QFETCH(QString, typed);
    QFETCH(QString, shown);

    std::unique_ptr<MainWindow> w(makeWindow(false));
    // The outputs page takes input only once the device has reported its outputs.
    w->configuration()->outputs()->value()->setNumberOfOutputs(2);
    w->settingsPage(MainWindow::OutputsPage)->refresh();
    w->show();
    QVERIFY(QTest::qWaitForWindowExposed(w.get()));
    w->showPage(row);
    if (tab >= 0)
        w->findChild<QTabWidget *>(QStringLiteral("dataTransferTabs"))->setCurrentIndex(tab);
    SettingsPageBase *page = w->settingsPage(row);
    QVERIFY(page);
    QWidget *input = pageField(page, field);
    QVERIFY2(input, qPrintable(field));
    QVERIFY(input->isEnabled());
    if (auto *spin = qobject_cast<QAbstractSpinBox *>(input))
        spin->clear();
    else if (auto *edit = qobject_cast<QLineEdit *>(input))
        edit->clear();
    input->setFocus();
    typeText(input, typed);
    QCOMPARE(fieldValue(input), shown);
}

void tst_MainWindow::leavingModifiedPage_yes_writesThatSection_data() {
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("heads");
    const int none = -1;
    QTest::newRow("system") << int(MainWindow::SystemPage) << none
                            << "label:Время до перехода в режим стоянки:"
                            << "42" << QStringList{"11 01 00"};
    QTest::newRow("navigation") << int(MainWindow::NavigationPage) << none << "label:Изменение курса:"
                                << "33" << QStringList{"03 03 00", "03 02 00"};
    QTest::newRow("servers tab") << int(MainWindow::DataTransferPage) << 0 << "label:Порт:"
                                 << "4000" << QStringList{"10 01 00"};
    QTest::newRow("gsm tab") << int(MainWindow::DataTransferPage) << 1 << "label:Точка доступа:"
                             << "m2m.example" << QStringList{"04 03 00", "04 03 01", "04 04 00", "04 04 01"};
    QTest::newRow("analog inputs") << int(MainWindow::AnalogPage) << none << "spin:0"
                                   << "8123" << QStringList{"0c 02 00", "0c 02 01", "0c 02 02"};
    QTest::newRow("logic inputs") << int(MainWindow::LogicPage) << none << "label:Функция входа 1:"
                                  << "Частотомер" << QStringList{"0d 02 00", "0d 02 01"};
    QTest::newRow("fuel") << int(MainWindow::FuelPage) << none << "label:Бак 1:"
                          << "77" << QStringList{"08 01 00"};
}

// Yes to the unsaved-change question writes the page's own section, whether the page is left for
// another list entry or, on the data-transfer row, for the other tab.
void tst_MainWindow::leavingModifiedPage_yes_writesThatSection() {
    QFETCH(int, row);
    QFETCH(int, tab);
    QFETCH(QString, field);
    QFETCH(QString, value);
    QFETCH(QStringList, heads);
    MainWindow *raw = nullptr;
    FakeLink *link = identifiedWindow(&raw);
    std::unique_ptr<MainWindow> w(raw);
    QVERIFY(link);
    w->telemetryTimer()->stop();
    auto *tabs = w->findChild<QTabWidget *>(QStringLiteral("dataTransferTabs"));
    w->showPage(row);
    if (tab >= 0)
        tabs->setCurrentIndex(tab);
    SettingsPageBase *page = w->settingsPage(row);
    QVERIFY(page);
    QWidget *input = pageField(page, field);
    QVERIFY2(input, qPrintable(field));
    setFieldValue(input, value);
    QVERIFY(page->isModified());
    QTRY_VERIFY(w->device()->isIdle());
    link->written.clear();
    m_prompter->calls.clear();

    m_prompter->answers = {true};
    if (tab >= 0)
        tabs->setCurrentIndex(1 - tab);
    else
        w->showPage(MainWindow::DevicePage);
    QCOMPARE(m_prompter->calls.size(), 1);
    QCOMPARE(m_prompter->calls.first().title, QStringLiteral("Подтверждение изменений"));
    QCOMPARE(m_prompter->calls.first().text,
             QStringLiteral("Есть несохраненные параметры, записать в прибор?"));
    QVERIFY(!page->isModified());
    QCOMPARE(fieldValue(input), value);
    QTRY_COMPARE(link->writeHeads().size(), heads.size());
    QCOMPARE(link->writeHeads(), heads);
}

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
