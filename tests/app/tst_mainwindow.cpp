#include "Devices/ConfigurationDiff.h"
#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/SnapshotStore.h"
#include "Devices/SystemConfiguration.h"
#include "Devices/TelemetryRecords.h"
#include "Devices/VantorConfiguration.h"
#include "app/AppSettings.h"
#include "app/AutoConnect.h"
#include "app/ConnectionWaitDlg.h"
#include "app/MainWindow.h"
#include "app/Prompter.h"
#include "app/SettinsDialog.h"
#include "app/WaitMessageDlg.h"
#include "pages/ProgramUpdatePage.h"
#include "pages/SettingsPageBase.h"
#include "pages/SettingsStatePage.h"
#include "pages/SystemPage.h"
#include "protocol/Device.h"
#include "protocol/Frame.h"
#include "protocol/SerialConnection.h"
#include "protocol/SessionController.h"
#include "protocol/StreamDeframer.h"
#include "tests/support/DevsimProcess.h"
#include "tests/support/FakeLink.h"
#include "tests/update/BskBuilder.h"
#include "update/ComponentInformation.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"
#include "update/QTIFWUpdater.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Answers every question from a script and records what the window said, each call as "kind|title|text".
class ScriptedPrompter : public Prompter {
public:
    bool question(QWidget *, const QString &title, const QString &text) override {
        say("question", title, text);
        return !answers.isEmpty() && answers.takeFirst();
    }
    void information(QWidget *, const QString &t, const QString &x) override { say("information", t, x); }
    void warning(QWidget *, const QString &t, const QString &x) override { say("warning", t, x); }
    void critical(QWidget *, const QString &t, const QString &x) override { say("critical", t, x); }
    QString openFileName(QWidget *, const QString &title, const QString &, const QString &filter) override {
        return fileName("open", title, filter);
    }
    QString saveFileName(QWidget *, const QString &title, const QString &, const QString &filter) override {
        return fileName("save", title, filter);
    }
    // The write confirmation: a question whose text is the question, the summary and the changes, one a
    // line; `keepDeviceValues` is the user's choice.
    bool writePreview(QWidget *parent, const QString &title, const QString &text,
                      kd::WritePreview *preview) override {
        preview->keepDeviceValues = keepDeviceValues;
        const kd::ConfigurationDiff diff = preview->diff();
        return question(parent, title, (QStringList{text, diff.summary()} + diff.humanLines()).join('\n'));
    }
    // The leaving question: the next scripted answer, Отмена when `cancel` is set.
    Answer questionWithCancel(QWidget *parent, const QString &title, const QString &text) override {
        const bool yes = question(parent, title, text);
        return cancel ? Answer::Cancel : yes ? Answer::Yes : Answer::No;
    }
    bool password(QWidget *, quint32 *value) override {
        say("password", QString(), QString());
        if (passwords.isEmpty())
            return false;
        *value = passwords.takeFirst();
        return true;
    }

    void say(const char *kind, const QString &title, const QString &text) {
        calls << QLatin1String(kind) + QLatin1Char('|') + title + QLatin1Char('|') + text;
    }
    QString fileName(const char *kind, const QString &title, const QString &filter) {
        say(kind, title, filter);
        return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
    }
    QStringList of(const QString &kind) const {
        QStringList out;
        for (const QString &c :
             calls.filter(QRegularExpression(QLatin1Char('^') + kind + QLatin1String("\\|"))))
            out << c.section(QLatin1Char('|'), 2);
        return out;
    }
    // The text of the i-th call; -1: the last.
    QString text(int i) const {
        return calls.value(i < 0 ? calls.size() + i : i).section(QLatin1Char('|'), 2);
    }

    QList<bool> answers;
    QStringList fileNames;
    QList<quint32> passwords;
    bool cancel = false;
    bool keepDeviceValues = false;
    QStringList calls;
};

// A serial link that keeps every frame the window writes (several requests may go out in one write),
// for counting what went to the device.
class RecordingSerial : public SerialConnection {
public:
    using SerialConnection::SerialConnection;
    qint64 write(const QByteArray &bytes) override {
        for (const proto::StreamDeframer::Item &item : proto::StreamDeframer().feed(bytes))
            written.append(item.bytes);
        return SerialConnection::write(bytes);
    }
    // The frames whose payload starts with the bytes `hex`.
    int count(const char *hex) const {
        const QByteArray head = QByteArray::fromHex(hex);
        int n = 0;
        for (const QByteArray &f : written)
            n += f.mid(proto::Frame::PayloadOffset, head.size()) == head ? 1 : 0;
        return n;
    }
    QList<QByteArray> written;
};

// A field of a settings page: "label:<form label>" (the label's buddy) or "check:<n>" (the n-th check box
// of the page, in the order the page builds them).
QWidget *pageField(QWidget *page, const QString &locator) {
    const QString kind = locator.section(QLatin1Char(':'), 0, 0);
    const QString arg = locator.section(QLatin1Char(':'), 1);
    if (kind == QLatin1String("check"))
        return page->findChildren<QCheckBox *>().value(arg.toInt());
    for (QLabel *label : page->findChildren<QLabel *>()) {
        if (label->text() == arg && label->buddy())
            return label->buddy();
    }
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

// Sets a field as the user would: a text field by key presses.
void setFieldValue(QWidget *w, const QString &value) {
    if (auto *spin = qobject_cast<QSpinBox *>(w)) {
        spin->setValue(value.toInt());
    } else if (auto *spin = qobject_cast<QDoubleSpinBox *>(w)) {
        spin->setValue(value.toDouble());
    } else if (auto *edit = qobject_cast<QLineEdit *>(w)) {
        edit->selectAll();
        for (const QChar c : value)
            QTest::keyClick(edit, char(c.unicode()));
    } else if (auto *box = qobject_cast<QComboBox *>(w)) {
        box->setCurrentIndex(box->findText(value));
    } else if (auto *box = qobject_cast<QCheckBox *>(w)) {
        box->setChecked(value == QLatin1String("1"));
    }
}

// Shows a page (and, on the data-transfer row, one of its tabs) and finds a field on it.
QWidget *shownField(MainWindow *w, int row, int tab, const QString &field) {
    w->showPage(row);
    if (tab >= 0)
        w->findChild<QTabWidget *>(QStringLiteral("dataTransferTabs"))->setCurrentIndex(tab);
    SettingsPageBase *page = w->settingsPage(row);
    return page ? pageField(page, field) : nullptr;
}

bool enabled(MainWindow &w, const char *button) {
    return w.findChild<QPushButton *>(QLatin1String(button))->isEnabled();
}

// A telemetry answer as the device sends it: 82 kind 00 00, then the records.
QByteArray answer(int kind, const QList<QByteArray> &records) {
    return QByteArray::fromHex("82") + char(kind) + QByteArray(2, '\0') + records.join();
}
const QString Connected = QStringLiteral("Подключен прибор: Fake tracker");
const QString NoDevice = QStringLiteral("Нет подключенных приборов");
const QString Tracker = QStringLiteral("Подключен прибор: Vantor micro");
using State = SessionController::State;
const QString Unsaved =
    QStringLiteral("question|Подтверждение изменений|Есть несохраненные параметры, записать в прибор?");
const char *const Parking = "label:Время до перехода в режим стоянки:";
const QString LinkWarning = QStringLiteral("warning|Ошибка подключения|");
// What the last fake link wrote, kept when the window drops it; static, as a link may outlive the test.
QStringList lastHeads;

} // namespace

class tst_MainWindow : public QObject {
    Q_OBJECT
private slots:
    void init() {
        // The traffic log is not what these tests look at.
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        QSettings(QString::fromLatin1(AppSettings::Organisation),
                  QString::fromLatin1(AppSettings::Application))
            .clear();
        m_prompter = std::make_shared<ScriptedPrompter>();
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_dir.path())); // the writes' snapshots stay out of $HOME
    }

    // Before any device answered, nothing that needs one can be started.
    void deviceCommands_followTheConnection() {
        auto w = makeWindow(false);
        // The device menu's commands stay in sight, saying why they are off (a menu hides its actions' tool
        // tips unless told otherwise).
        QVERIFY(w->findChild<QMenu *>(QStringLiteral("menuDevice"))->toolTipsVisible());
        for (const char *name : {"action_Reboot", "action_ReadStatistics", "action_ReadCfg",
                                 "action_WriteCfg", "action_ClearMemory", "action_ResetSettings"}) {
            auto *a = w->findChild<QAction *>(QLatin1String(name));
            QVERIFY2(a->isVisible() && !a->isEnabled() && !a->toolTip().isEmpty(), name);
        }
        QVERIFY(!enabled(*w, "readButton") && !enabled(*w, "writeButton"));
        const auto outputs = [&] {
            auto *list = w->findChild<QListWidget *>(QStringLiteral("listWidget"));
            return bool(list->item(MainWindow::OutputsPage)->flags() & Qt::ItemIsEnabled);
        };
        QVERIFY(!outputs());
        QCOMPARE(w->connectionStateButton()->text(), NoDevice);

        // Identified (the first request is the device information, kind 1), reading is on, but a page holds
        // no device values to apply until something is read; the outputs entry follows what the device
        // reports. Reconnecting identifies the device again on a new link.
        w = identified(false);
        QVERIFY(w);
        QCOMPARE(w->statePage()->valueText(QStringLiteral("imei")), QStringLiteral("863071014478127"));
        QCOMPARE(m_link->written.first().mid(6, 2).toHex(), QByteArray("8101"));
        w->telemetryTimer()->stop();
        w->show();
        w->showPage(MainWindow::SystemPage);
        QVERIFY(enabled(*w, "readButton") && !enabled(*w, "applyButton"));
        m_link->deliverPayload(proto::ConfigPacketType, QByteArray::fromHex("8e010000 0000 0100"));
        QVERIFY(outputs());
        m_link->deliverPayload(proto::ConfigPacketType, QByteArray::fromHex("8e010000"));
        QVERIFY(!outputs());

        QPointer<FakeLink> old = m_link;
        w->findChild<QAction *>(QStringLiteral("action_Reconnect"))->trigger();
        QTRY_VERIFY(m_link && m_link != old);
        QTRY_VERIFY(old.isNull() || !old->isOpen());
        QTRY_COMPARE(w->connectionStateButton()->text(), Connected);
        QCOMPARE(m_link->written.first().mid(6, 2).toHex(), QByteArray("8101"));
    }

    void startUp_data() {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("shown");
        QTest::newRow("rejected: program ends without a window") << int(QDialog::Rejected) << false;
        QTest::newRow("accepted: window shown") << int(QDialog::Accepted) << true;
    }

    void startUp() {
        QFETCH(int, answer);
        QFETCH(bool, shown);
        bool asked = false, visible = false;
        MainWindow::Options o = options();
        o.connectAtStart = false;
        // A window, if any, is looked at on the event loop's first turn, which then ends; without a loop the
        // look is dropped with the test.
        QObject scope;
        const int code = MainWindow::run(o, [&](QDialog *dialog) {
            asked = dialog != nullptr;
            QTimer::singleShot(0, &scope, [&] {
                for (QWidget *w : QApplication::topLevelWidgets())
                    visible = visible || (qobject_cast<MainWindow *>(w) && w->isVisible());
                qApp->quit();
            });
            return answer;
        });
        QVERIFY(asked);
        QCOMPARE(code, 0);
        QCOMPARE(visible, shown);
    }

    // A link error (or, with no device, the program's update check): the user's text, and whether the window
    // is without a device afterwards.
    void linkError_data() {
        QTest::addColumn<int>("group");
        QTest::addColumn<int>("code");
        QTest::addColumn<QStringList>("said");
        QTest::addColumn<bool>("disconnected");
        // One message box "kind|title|text" (none when empty); a link's warning when `kind` is empty.
        auto row = [](const char *name, int group, int code, const char *text, const char *kind = "") {
            const QString said = *kind ? QString::fromUtf8(kind) + QString::fromUtf8(text)
                                       : LinkWarning + QString::fromUtf8(text);
            QTest::newRow(name) << group << code << (*text ? QStringList{said} : QStringList())
                                << bool(*text);
        };
        row("server closed the connection", 0, 1, "Отключен от сервера");
        row("serial device not found", 1, 1, "Прибор отключен");
        row("serial cable pulled", 1, 9, "Прибор был отключен");
        row("serial port not open", 1, 13, "Порт закрыт");
        // The cable pulled during write all: what was sent may have been taken, it is not called failed.
        QTest::newRow("cable pulled during write all")
            << -5 << 9
            << QStringList{LinkWarning + "Прибор был отключен",
                           "warning|Tavrel_micro_cfg|Записано без подтверждения: навигация, GSM, датчики "
                           "топлива, "
                           "системные параметры, аналоговые входы, логические входы, серверы"}
            << true;
        row("serial unsupported operation is not fatal", 1, 10, "");
        // Two trackers on USB: the window refuses both, with a warning, instead of picking one.
        row("two devices", -1, 0,
            "Подключено более одного прибора, отключите лишние \n для избежания ошибок");
        // The device stops answering with the link open: one waiting box, whatever more silence comes; an
        // answer closes it, giving up reports the broken link.
        row("silent device, user gives up", -2, 0, "Соединение разорвано", "information|Tavrel_micro_cfg|");
        row("silent device, an answer brings it back", -2, 1, "");
        // The server hangs up while the tracker is awaited: its wait box goes with the link.
        row("server hangs up while identifying", -4, 1, "Отключен от сервера");
        // The program's own update check, with no device.
        row("update check failed", -3, 0,
            "Ошибка проверки обновлений программы конфигуратора\nОшибка: Updates checking timeout",
            "warning|Tavrel_micro_cfg|");
        row("no updates", -3, 1, "Нет доступных обновлений конфигуратора", "information|Tavrel_micro_cfg|");
        row("one update", -3, 2,
            "Количество обновлений: 1\nДоступно обновление.\nНазвание приложения: tavrel-cfg\n"
            "Версия: 1.0.1\nРазмер: 12 MB\n\n",
            "question|Результат проверки обновлений|");
    }

    void linkError() {
        QFETCH(int, group);
        QFETCH(int, code);
        QFETCH(bool, disconnected);
        std::unique_ptr<MainWindow> w;
        if (group == -1) {
            MainWindow::Options o = options();
            o.linkFactory = [](int) {
                auto *serial = new SerialConnection;
                serial->setPortLister([] {
                    SerialPortDescription port;
                    port.hasVendorIdentifier = port.hasProductIdentifier = true;
                    port.vendorIdentifier = SerialConnection::VendorIdentifier;
                    port.productIdentifier = SerialConnection::ProductIdentifier;
                    return QList<SerialPortDescription>{port, port};
                });
                return serial;
            };
            w.reset(new MainWindow(o));
            QTRY_VERIFY(!m_prompter->calls.isEmpty());
        } else if (group == -3) {
            w = makeWindow(false);
            auto *checker = w->findChild<QTIFWUpdater *>();
            QVERIFY(checker);
            if (code == 0)
                emit checker->errorOccurred(QStringLiteral("Updates checking timeout"));
            else if (code == 1)
                emit checker->warningOccurred(QStringLiteral("There are currently no updates available."));
            else
                emit checker->checkComplete({ComponentInformation{
                    QStringLiteral("tavrel-cfg"), QStringLiteral("1.0.1"), QStringLiteral("12 MB")}});
        } else if (group == -2 || group == -4) {
            if (group == -4) // the wait box is the server's
                AppSettings().setLoginType(MainWindow::RemoteConnection);
            w = makeWindow(false, group == -2 ? 20 : 10000);
            w->reconnect();
            QTRY_VERIFY(m_link);
            m_link->fault = FakeLink::Silent;
            QTRY_VERIFY(w->waitDialog()); // the identity request waits unanswered
            if (group == -4) {
                m_prompter->calls.clear();
                m_link->raise(0, code);
            } else {
                // The dialog stays alone while the unanswered requests go on.
                QTRY_VERIFY(m_link->written.size() >= 4);
                QCOMPARE(w->findChildren<ConnectionWaitDlg *>().size(), 1);
                m_prompter->calls.clear();
                if (code) {
                    m_link->fault = FakeLink::NoFault;
                    m_link->deliverPayload(proto::ConfigPacketType, m_link->identity.encodeAnswer(1));
                    QTRY_COMPARE(w->connectionStateButton()->text(), Connected);
                } else {
                    w->waitDialog()->reject();
                    QVERIFY(!m_link || !m_link->isOpen());
                }
            }
            QVERIFY(!w->waitDialog());
        } else {
            w = identified(false);
            QVERIFY(w);
            if (group == -5) {
                w->telemetryTimer()->stop();
                for (SettingsPageBase *page : w->settingsPages())
                    page->setHoldsValues(true);
                // The first frame is confirmed, the rest go out but stay unanswered.
                m_prompter->answers = {true};
                FakeLink *link = m_link;
                const int before = link->written.size();
                connect(link, &FakeLink::wrote, link, [link, before] {
                    if (link->written.size() > before + 1)
                        link->fault = FakeLink::Silent;
                });
                QSignalSpy progress(w->session(), &SessionController::jobProgress);
                w->writeAll();
                QTRY_VERIFY(!progress.isEmpty() && progress.last().first().toInt() > 0);
            }
            m_prompter->calls.clear();
            m_link->raise(group == -5 ? 1 : group, code);
            QTRY_VERIFY(m_prompter->calls.size() == 2 || group != -5);
        }
        QTEST(m_prompter->calls, "said");
        QCOMPARE(w->connectionStateButton()->text() == NoDevice, disconnected);
        QCOMPARE(w->telemetryTimer()->isActive(), !disconnected);
        QCOMPARE(enabled(*w, "readButton"), !disconnected);
        if (group >= 0)
            QCOMPARE(w->connectionTypeButton()->property("connected").toBool(), !disconnected);
    }

    // The window against the virtual tracker, off the happy path, one flow per row (short response time-outs
    // injected, no real waiting).
    void virtualTracker_data() {
        QTest::addColumn<QString>("flow");
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("message"); // the one warning the user gets; empty: none
        const QString wrong = QStringLiteral("....Введен неправильный пароль");
        QTest::newRow("password at start-up: one login, connected")
            << "startup-password" << QStringList{"--password", "1234"} << "";
        QTest::newRow("wrong then right password")
            << "wrong-password" << QStringList{"--password", "1234"} << wrong;
        QTest::newRow("hang-up during read-all and the tracker back on its link found by itself")
            << "hangup" << QStringList{"--hangup-after", "4"} << "*";
        QTest::newRow("blocked device")
            << "blocked" << QStringList{"--blocked"}
            << "Прибор заблокирован, повторите попытку позже. \nИзменения не применены.";
        QTest::newRow("a section that never answers")
            << "silent-section" << QStringList{"--silent-section", "NavConfiguration"}
            << "Не удалось считать: навигация";
        QTest::newRow("Применить while on --port keeps detection") << "apply-settings" << QStringList() << "";
        QTest::newRow("file round trip, then a field of each kind edited, applied and read back")
            << "pages" << QStringList{"--ignore-writes", "SystemConfiguration"} << "";
    }

    void virtualTracker() {
        QFETCH(QString, flow);
        QFETCH(QStringList, args);
        QFETCH(QString, message);
        const auto warnings = [this] { return m_prompter->of(QStringLiteral("warning")); };
        DevsimProcess sim;
        MainWindow::Options o = trackerOptions(sim, args);
        QVERIFY(!o.portName.isEmpty());
        if (flow == QLatin1String("startup-password"))
            AppSettings().setPassWord(1234);
        if (flow == QLatin1String("wrong-password"))
            m_prompter->passwords = {1111, 1234};
        MainWindow w(o);
        if (flow == QLatin1String("blocked")) {
            // Said once; no device command until the device is known; Подключить asks who it is again.
            QTRY_COMPARE_WITH_TIMEOUT(warnings(), QStringList{message}, 5000);
            QCOMPARE(w.connectionStateButton()->text(), NoDevice);
            QVERIFY(w.session()->state() == State::Ready && !enabled(w, "readButton"));
            m_prompter->answers = {true};
            w.readAll();
            QVERIFY(warnings().value(1).startsWith(QStringLiteral("Прибор не подключен")));
            w.findChild<QPushButton *>(QStringLiteral("connectButton"))->click();
            QTRY_COMPARE_WITH_TIMEOUT(warnings().size(), 3, 5000);
            QCOMPARE(warnings().last(), message);
            return;
        }
        QTRY_COMPARE_WITH_TIMEOUT(w.connectionStateButton()->text(), Tracker, 5000);
        QTRY_COMPARE(w.session()->state(), State::Ready);
        // Identity and telemetry follow the login.
        QTRY_VERIFY_WITH_TIMEOUT(!w.statePage()->valueText(QStringLiteral("imei")).isEmpty(), 5000);
        if (flow.endsWith(QLatin1String("password"))) {
            const bool wrongFirst = flow == QLatin1String("wrong-password");
            QCOMPARE(!m_prompter->of(QStringLiteral("password")).isEmpty(), wrongFirst);
            // Every request answered, none awaited: a login sent again would have been among them.
            QTRY_VERIFY(!w.session()->isJobRunning() && w.findChild<Device *>()->isIdle());
            QCOMPARE(m_serial->count("0101"), wrongFirst ? 2 : 1);
            QCOMPARE(warnings(), message.isEmpty() ? QStringList() : QStringList{message});
            QCOMPARE(w.session()->state(), State::Ready);
            return;
        }
        if (flow == QLatin1String("apply-settings")) {
            QTimer::singleShot(0, this, [] {
                for (QWidget *top : QApplication::topLevelWidgets()) {
                    if (auto *dialog = qobject_cast<SettinsDialog *>(top))
                        dialog->findChild<QPushButton *>(QStringLiteral("applyButton"))->click();
                }
            });
            w.on_actionSettings_triggered();
            // The next start without --port looks for the device by its USB identifiers again.
            QCOMPARE(AppSettings().portName(), QString());
            QCOMPARE(w.session()->state(), State::Ready);
            return;
        }
        if (flow == QLatin1String("pages")) {
            // As a user would, on a tracker that confirms system writes but ignores them. What was read is
            // saved to a file, forgotten and opened again; the file does not carry the roaming and the
            // false-speed threshold: the write confirmation says so and keeps the tracker's values on
            // request, a snapshot going into the history first.
            QVERIFY(readEverything(w));
            const QString file = m_dir.filePath(QStringLiteral("round-trip.json"));
            m_prompter->fileNames = QStringList{file, file};
            w.on_action_SaveCfgToFile_triggered();
            m_prompter->answers = {true};
            w.on_action_CreateNewCfg_triggered();
            w.on_action_OpenCfgFromFile_triggered();

            m_prompter->calls.clear();
            w.writeAll(); // not answered: nothing is written
            const QString shown = m_prompter->text(0);
            // "faultSpeed" is not read from the file and keeps the value the window had: only the roaming
            // changes.
            QVERIFY2(shown.contains(QStringLiteral("Изменится параметров: 2,")) &&
                         shown.contains(QStringLiteral("SIM 2: роуминг: запрещен → разрешен")),
                     qPrintable(QString(shown).replace(QLatin1Char('\n'), QLatin1Char('|'))));
            m_prompter->keepDeviceValues = true;
            m_prompter->answers = {true};
            m_prompter->calls.clear();
            w.findChild<QPushButton *>(QStringLiteral("writeButton"))->click();
            QVERIFY(m_prompter->text(0).contains(QStringLiteral("Отличий нет")));
            QTRY_COMPARE_WITH_TIMEOUT(w.session()->state(), State::Ready, 5000);
            const QVector<kd::Snapshot> history = kd::SnapshotStore().list(QStringLiteral("863071014478127"));
            QVERIFY(!history.isEmpty() && history.constFirst().written.isEmpty());

            // Then one field of each kind is edited, each on its page written with the apply button, the
            // configuration forgotten and read again: only the device can bring the edits back, and the
            // read-back after the apply names the system edit the tracker dropped. Every field of every page
            // is the section pages' table's, every section's way to the tracker and back the command-line
            // tool's.
            struct Edit {
                int row, tab; // tab: on the data-transfer row, else -1
                const char *field, *deviceValue, *edited, *readAgain;
            };
            const Edit edits[] = {
                {MainWindow::SystemPage, -1, Parking, "5", "42", "5"},
                {MainWindow::DataTransferPage, 0, "label:Адрес сервера:", "gps.tavrel.ru",
                 "probe.example.org", "probe.example.org"},
                {MainWindow::AnalogPage, -1, "check:2", "0", "1", "1"},
                {MainWindow::LogicPage, -1, "label:Функция входа 1:", "Логический", "Частотомер",
                 "Частотомер"},
                {MainWindow::FuelPage, -1, "label:Бак 1:", "10", "777", "777"},
                {MainWindow::OutputsPage, -1, "check:0", "0", "1", "1"},
            };
            QVERIFY(warnings().isEmpty()); // the tracker's own values came back
            for (const Edit &e : edits) {
                QWidget *input = shownField(&w, e.row, e.tab, QString::fromUtf8(e.field));
                QVERIFY2(input, e.field);
                QCOMPARE(fieldValue(input), QString::fromUtf8(e.deviceValue));
                setFieldValue(input, QString::fromUtf8(e.edited));
                apply(w);
                QTRY_COMPARE_WITH_TIMEOUT(w.session()->state(), State::Ready, 5000);
                QVERIFY(!w.settingsPage(e.row)->isModified());
            }
            QTRY_COMPARE(warnings().size(), 1);
            QVERIFY2(warnings().first().startsWith(QStringLiteral("Записано, но не подтверждено чтением:\n")),
                     qPrintable(warnings().first()));

            m_prompter->answers = {true};
            w.on_action_CreateNewCfg_triggered();
            for (const Edit &e : edits)
                QVERIFY2(fieldValue(pageField(w.settingsPage(e.row), QString::fromUtf8(e.field))) != e.edited,
                         e.field);
            QVERIFY(readEverything(w));
            for (const Edit &e : edits) {
                QCOMPARE(fieldValue(shownField(&w, e.row, e.tab, QString::fromUtf8(e.field))),
                         QString::fromUtf8(e.readAgain));
                QVERIFY(!w.settingsPage(e.row)->isModified());
            }
            QCOMPARE(warnings().size(), 1);
            return;
        }
        m_prompter->answers = {true};
        w.readAll();
        QTRY_VERIFY_WITH_TIMEOUT(w.session()->state() != State::Busy, 15000);
        if (message != QLatin1String("*")) {
            QCOMPARE(warnings(), QStringList{message});
            if (flow != QLatin1String("silent-section"))
                return;
            // A write the session refuses (another job runs) leaves no snapshot in the history.
            const auto history = [] { return kd::SnapshotStore().list(QStringLiteral("863071014478127")); };
            const QString before = history().value(0).filePath;
            QVERIFY(w.session()->readIdentity());
            m_prompter->answers = {true};
            w.writeAll();
            QCOMPARE(history().value(0).filePath, before);
            QTRY_COMPARE(w.session()->state(), State::Ready);
            // Write all leaves out the section that did not come and says so: its zeros never reach the
            // device, nor into the snapshot as the device's.
            m_prompter->answers = {true};
            w.writeAll();
            QVERIFY(history().value(0).filePath != before);
            QVERIFY(!history().constFirst().carries(QStringLiteral("NavConfiguration")));
            // The sections that came are the device's: the confirmation shows their changes.
            QVERIFY(m_prompter->text(-1).contains(QStringLiteral(
                "Не будут записаны (значения не считаны из прибора и не загружены из файла): навигация\n"
                "Отличий нет")));
            QTRY_VERIFY_WITH_TIMEOUT(m_serial->count("0801") > 0, 5000); // the fuel block
            QTRY_VERIFY_WITH_TIMEOUT(history().constFirst().complete, 5000);
            QCOMPARE(m_serial->count("0302") + m_serial->count("0303"), 0);
            QTRY_COMPARE_WITH_TIMEOUT(warnings().last(),
                                      QStringLiteral("Запись подтверждена прибором\n"
                                                     "Проверка чтением: не удалось считать: навигация"),
                                      5000);
            return;
        }
        // Hung up: the user hears of the link, then in one box of what was not read.
        QTRY_COMPARE_WITH_TIMEOUT(warnings().size(), 2, 5000);
        QCOMPARE(warnings().first(), QStringLiteral("Прибор был отключен"));
        QVERIFY2(warnings().last().startsWith(QStringLiteral("Не удалось считать: ")) &&
                     warnings().last().endsWith(QStringLiteral("выходы")),
                 qPrintable(warnings().last()));
        QCOMPARE(w.connectionStateButton()->text(), NoDevice);
        QVERIFY(!enabled(w, "readButton") && w.session()->state() == State::Lost);
        // Stopped and started on its link again, the tracker is found by itself once its port was seen gone.
        w.autoConnect()->watcher()->setInterval(50);
        sim.stop();
        QTRY_VERIFY(w.autoConnect()->watcher()->ports()->ports().isEmpty());
        DevsimProcess next;
        QVERIFY(next.start({QStringLiteral("--pty"), QStringLiteral("--link"), o.portName}));
        QTRY_COMPARE_WITH_TIMEOUT(w.connectionStateButton()->text(), Tracker, 5000);
        QTRY_COMPARE(w.session()->state(), State::Ready);
        // A factory reset: the window waits for the device and is back by itself, no box left open.
        QSignalSpy back(w.autoConnect()->watcher(), &ConnectionWatcher::waitingFinished);
        w.on_action_ResetSettings_triggered();
        QTRY_COMPARE_WITH_TIMEOUT(back.count(), 1, 5000);
        QVERIFY(back.first().first().toBool());
        QTRY_COMPARE(w.session()->state(), State::Ready);
        QVERIFY(!w.waitDialog());
        QCOMPARE(warnings().size(), 2);
    }

    // Read all, write all, "Создать конфигурацию" and "Открыть из файла" ask or report first: what the user
    // is told, what the configuration and the pages hold afterwards (until then no device values that may be
    // applied) and what goes to the device. No sends nothing; Yes to write all sends the sections (their
    // order is the workflows' own concern).
    void commandsAsk_data() {
        // "read", "write" (after a read), "write unread", "new", else the content of the file opened (empty:
        // none)
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("said"); // the last message "kind|title|text"
        QTest::addColumn<int>("gsens");
        QTest::addColumn<QString>("head"); // the first request written; empty: nothing
        auto row = [](const char *name, const char *command, bool yes, const QString &said, int gsens,
                      const char *head = "") {
            QTest::newRow(name) << QByteArray(command) << yes << said << gsens << QString::fromLatin1(head);
        };
        const QString read =
            QStringLiteral("question|Считывание конфигурации|Считать все настройки из прибора? "
                           "\nНесохраненные параметры будут утрачены");
        const QString write = QStringLiteral("question|Сохранение конфигурации|Перезаписать все настройки "
                                             "прибора? \nДействие заменит текущие настройки");
        const QString app = QStringLiteral("|Tavrel_micro_cfg|");
        row("read all, no", "read", false, read, 5);
        row("write all, no", "write", false, write, 5);
        row("write all, yes", "write", true, write, 5, "03 03 00");
        row("write all, nothing read: nothing to write", "write unread", true,
            "warning" + app + "Нет значений для записи: считайте конфигурацию из прибора или откройте файл.",
            5);
        row("new, yes: defaults", "new", true,
            "question" + app + "Предыдущая загруженная конфигурация будет заменена.  Продолжить?", 0);
        row("new, no: kept", "new", false, "information" + app + "Ничего не делаем", 5);
        row("missing file", "", true, "warning" + app + "Не удалось открыть файл конфигурации", 5);
        row("not json", "{ \"SystemParameters\": ", true,
            "warning" + app + "Произошла ошибка при открытии файла", 5);
        row("values masked to their width", "{\"SystemParameters\": {\"gsens\": 300}}", true,
            "information" + app + "Конфигурация успешно загружена", 44);
    }

    void commandsAsk() {
        QFETCH(QByteArray, command);
        QFETCH(bool, yes);
        QFETCH(int, gsens);
        QFETCH(QString, head);
        auto w = identified();
        QVERIFY(w);
        w->configuration()->system()->value()->setGsens(5);
        const bool read = command == "read" || command == "write";
        for (SettingsPageBase *page : w->settingsPages())
            page->setHoldsValues(read);
        m_link->written.clear();
        m_prompter->answers = {yes};
        if (command == "read") {
            w->readAll();
        } else if (command.startsWith("write")) {
            w->writeAll();
        } else if (command == "new") {
            w->on_action_CreateNewCfg_triggered();
        } else {
            const QString path = m_dir.filePath(QStringLiteral("open-%1.json").arg(QTest::currentDataTag()));
            QFile f(path);
            QVERIFY(command.isEmpty() ||
                    (f.open(QIODevice::WriteOnly) && f.write(command) == command.size()));
            f.close();
            m_prompter->fileNames = QStringList{path};
            w->on_action_OpenCfgFromFile_triggered();
            QVERIFY(m_prompter->calls.first().startsWith(QLatin1String("open|")));
        }
        QTEST(m_prompter->calls.last(), "said");
        QCOMPARE(int(w->configuration()->system()->value()->gsens()), gsens);
        QCOMPARE(w->settingsPage(MainWindow::SystemPage)->holdsValues(), read || gsens != 5);
        if (!head.isEmpty()) {
            QTRY_VERIFY(m_link->writeHeads().size() > 8);
            QCOMPARE(m_link->writeHeads().first(), head);
            return;
        }
        QCoreApplication::processEvents(); // a job the answer set off would show here or in the state
        QVERIFY(m_link->written.isEmpty());
        QCOMPARE(w->session()->state(), State::Ready);
    }

    // A failed save is reported and leaves no file; a cancelled one says nothing. A name typed without an
    // extension is saved as JSON; the folder becomes the current one.
    void saveThenOpen_restoresConfiguration() {
        auto w = makeWindow(false);
        const QString failing = m_dir.filePath(QStringLiteral("no-such-folder/cfg.json"));
        m_prompter->fileNames = QStringList{failing, QString()};
        w->on_action_SaveCfgToFile_triggered();
        QVERIFY(m_prompter->calls.last().startsWith(
            QStringLiteral("critical|Tavrel_micro_cfg|Не удалось сохранить файл конфигурации")));
        QVERIFY(!QFile::exists(failing));
        m_prompter->calls.clear();
        w->on_action_SaveCfgToFile_triggered();
        QCOMPARE(m_prompter->calls.size(), 1);

        const QString path = m_dir.filePath(QStringLiteral("saved.json"));
        w->configuration()->system()->value()->setGsens(9);
        m_prompter->fileNames = QStringList{m_dir.filePath(QStringLiteral("saved"))};
        w->on_action_SaveCfgToFile_triggered();
        QCOMPARE(m_prompter->text(-1), QStringLiteral("JSON (*.json)"));
        QVERIFY(QFile::exists(path));
        QCOMPARE(QDir::currentPath(), QDir(m_dir.path()).canonicalPath());
        QVERIFY(!w->settingsPage(MainWindow::SystemPage)->holdsValues());

        w->configuration()->system()->value()->setGsens(2);
        m_prompter->fileNames = QStringList{path};
        w->on_action_OpenCfgFromFile_triggered();
        QCOMPARE(int(w->configuration()->system()->value()->gsens()), 9);
        QCOMPARE(qobject_cast<SystemPage *>(w->settingsPage(MainWindow::SystemPage))->gsens->value(), 9);
    }

    void firmwareUpdate_entersLoaderAndComesBack() {
        auto w = identified(false);
        QVERIFY(w);
        const QString file = m_dir.filePath(QStringLiteral("firmware.bsk"));
        QVERIFY(BskBuilder::write(file, BskBuilder().build()));
        ProgramUpdatePage *page = w->firmwarePage();
        QCOMPARE(page->loadFile(file), int(FirmwareImage::Loaded));
        w->showPage(MainWindow::FirmwarePage);
        QVERIFY(w->telemetryTimer()->isActive());
        m_link->written.clear();

        page->on_startButton_clicked();
        QTRY_VERIFY(m_link->written.contains(proto::Frame::build(
            proto::CommandPacketType, QByteArray::fromHex("01020000")))); // enter the loader
        QVERIFY(!w->telemetryTimer()->isActive());
        auto *list = w->findChild<QListWidget *>(QStringLiteral("listWidget"));
        QVERIFY(!enabled(*w, "readButton") && !list->isEnabled());

        emit page->updater()->UpdateComplete();
        QVERIFY(enabled(*w, "readButton") && list->isEnabled());
        auto *wait = w->findChild<WaitMessageDlg *>();
        QVERIFY(wait);
        wait->accept();
        QVERIFY(page->progressLines().contains(QStringLiteral("Обновление завершено.")));
    }

    // The unsaved-change question comes up whether the page is left for another list entry, on the
    // data-transfer row for the other tab, by reading all or by closing: Yes writes the page's own section
    // (before anything else), No drops the edit, Отмена stays with it. Every page's own writes are the
    // section pages' table's; the question is asked for every page alike.
    void leavingModifiedPage_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("tab"); // on the data-transfer row, else -1
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QStringList>("heads"); // the write requests that follow the answer
        // "page": another entry or tab; "read": read all; "close"; "cancel"
        QTest::addColumn<QString>("leave");
        const QStringList gsm{"04 03 00", "04 03 01", "04 04 00", "04 04 01"};
        auto row = [](const char *name, int row, int tab, const char *field, const char *value, bool yes,
                      const QStringList &heads, const char *leave = "page") {
            QTest::newRow(name) << row << tab << QString::fromUtf8(field) << QString::fromUtf8(value) << yes
                                << heads << QString::fromLatin1(leave);
        };
        row("system", MainWindow::SystemPage, -1, Parking, "42", true, {"11 01 00"});
        row("system, no: edit dropped", MainWindow::SystemPage, -1, Parking, "42", false, {});
        row("servers tab", MainWindow::DataTransferPage, 0, "label:Порт:", "4000", true, {"10 01 00"});
        row("gsm tab", MainWindow::DataTransferPage, 1, "label:Точка доступа:", "m2m.example", true, gsm);
        row("gsm tab, no: edit dropped", MainWindow::DataTransferPage, 1,
            "label:Точка доступа:", "m2m.example", false, {});
        row("gsm tab, read all: written before reading", MainWindow::DataTransferPage, 1,
            "label:Точка доступа:", "internet.example", true, gsm, "read");
        row("system, window closed: written then closed", MainWindow::SystemPage, -1, Parking, "42", true,
            {"11 01 00"}, "close");
        row("system, Отмена: stays with the edit", MainWindow::SystemPage, -1, Parking, "42", false, {},
            "cancel");
        row("servers tab, Отмена: stays on the tab", MainWindow::DataTransferPage, 0, "label:Порт:", "4000",
            false, {}, "cancel");
    }

    void leavingModifiedPage() {
        QFETCH(int, row);
        QFETCH(int, tab);
        QFETCH(QString, field);
        QFETCH(QString, value);
        QFETCH(bool, yes);
        QFETCH(QStringList, heads);
        QFETCH(QString, leave);
        auto w = identified();
        QVERIFY(w);
        w->show();
        for (SettingsPageBase *page : w->settingsPages())
            page->setHoldsValues(true);
        QWidget *input = shownField(w.get(), row, tab, field);
        QVERIFY2(input, qPrintable(field));
        const QString before = fieldValue(input);
        setFieldValue(input, value);
        SettingsPageBase *page = w->settingsPage(row);
        QTRY_COMPARE(w->session()->state(), State::Ready);
        m_link->written.clear();
        m_prompter->calls.clear();

        m_prompter->answers = {yes, true};
        m_prompter->cancel = leave == QLatin1String("cancel");
        if (leave == QLatin1String("read"))
            w->readAll();
        else if (leave == QLatin1String("close"))
            w->close();
        else if (tab >= 0)
            w->findChild<QTabWidget *>(QStringLiteral("dataTransferTabs"))->setCurrentIndex(1 - tab);
        else
            w->showPage(MainWindow::DevicePage);
        QCOMPARE(m_prompter->calls.size(), leave == QLatin1String("read") ? 2 : 1);
        QCOMPARE(m_prompter->calls.first(), Unsaved);
        if (m_prompter->cancel) {
            QVERIFY(page->isModified());
            QCOMPARE(fieldValue(input), value);
            // Still on the page, or on the tab.
            QCOMPARE(tab >= 0 ? w->findChild<QTabWidget *>(QStringLiteral("dataTransferTabs"))->currentIndex()
                              : w->findChild<QListWidget *>(QStringLiteral("listWidget"))->currentRow(),
                     tab >= 0 ? tab : row);
            return;
        }
        QVERIFY(!page->isModified());
        QCOMPARE(fieldValue(input), yes ? value : before);
        const auto written = [this] { return m_link ? m_link->writeHeads() : lastHeads; };
        QTRY_VERIFY(written().size() >= heads.size() && !w->session()->isJobRunning()); // all answered
        QCOMPARE(written(), heads);
        if (leave == QLatin1String("read")) {
            QTRY_VERIFY(m_link->written.size() > heads.size());
            QCOMPARE(quint8(m_link->written.at(heads.size())[6]), quint8(0x91)); // the first read request
        }
        if (leave == QLatin1String("close")) {
            QTRY_VERIFY(!w->isVisible());
            QVERIFY(!m_link || !m_link->isOpen());
            QVERIFY(!w->telemetryTimer()->isActive());
        }
    }

    // The state page, on its own. The texts themselves are TelemetryText's; these rows check that each record
    // lands in its own label (second SIM, second receiver, second server) with its icon, and the fields only
    // the page formats, the device's identity included; clearing leaves the identity alone.
    void statePage_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("text");
        // An icon label and its resource, "name=resource"; empty: none checked.
        QTest::addColumn<QString>("icon");
        auto row = [](const char *name, const QByteArray &payload, const char *field, const char *text,
                      const char *icon = "") {
            QTest::newRow(name) << payload << QString::fromLatin1(field) << QString::fromUtf8(text)
                                << QString::fromLatin1(icon);
        };

        kd::SimStateRecord absent;
        absent.state = 8;
        row("second sim state",
            answer(kd::telemetry::SimStates, {kd::SimStateRecord().toBytes(), absent.toBytes()}), "simState1",
            "Сим отсутсвует");

        kd::GsmRegistrationRecord reg;
        reg.slotState = quint8(kd::SimSlotState::Active);
        reg.registration = 4;
        reg.signalLevel = 99;
        kd::GsmRegistrationRecord roaming;
        roaming.slotState = quint8(kd::SimSlotState::Inserted);
        roaming.registration = 5;
        roaming.operatorCode = 25099;
        const QByteArray gsm = answer(kd::telemetry::GsmRegistration, {reg.toBytes(), roaming.toBytes()});
        row("active sim icon", gsm, "simSlot0", "Активна", "simIcon0=:/images/sim_card_active.png");
        row("unknown signal level", gsm, "signal0", "-");
        row("second sim roaming", gsm, "registration1", "Роуминг", "simIcon1=:/images/sim_card_inserted.png");
        row("operator code", gsm, "operator1", "250 99");

        kd::NavReceiverRecord noFix;
        noFix.fixMode = 1;
        noFix.latDegrees = 55;
        kd::NavReceiverRecord fix;
        fix.fixMode = 3;
        fix.fixQuality = 2;
        fix.day = 1;
        fix.month = 2;
        fix.year = 26;
        fix.hours = 3;
        fix.minutes = 4;
        fix.seconds = 5;
        fix.satellites = 6;
        const QByteArray nav = answer(kd::telemetry::NavReceivers, {noFix.toBytes(), fix.toBytes()});
        row("no fix: latitude is a dash", nav, "latitude0", "-");
        row("second receiver fix time", nav, "fixTime1", "01.02.26 03:04:05");
        row("second receiver quality", nav, "fixQuality1", "Дифференциальный");
        row("second receiver button", nav, "fixButton1", "3D, 6 спутн.");

        kd::ServerStateRecord server;
        server.protocol = quint8(kd::ServerProtocol::WialonCombine);
        server.state = quint8(kd::ServerState::Connected);
        server.ip[0] = 10;
        server.ip[3] = 7;
        server.port = 20332;
        server.packetsSent = 9;
        server.packetsAcked = 8;
        const QByteArray servers = answer(kd::telemetry::Servers, {server.toBytes()});
        row("server connected", servers, "serverState0", "Подключен", "serverIcon0=:/images/cloud_plus.png");
        row("server address", servers, "serverAddress0", "10.0.0.7:20332");
        row("server packets acked of sent", servers, "serverPackets0", "8 / 9");
        row("second server still off", servers, "serverState1", "-", "serverIcon1=:/images/cloud_close.png");

        kd::DeviceStateRecord state;
        state.memoryUsed = 12;
        state.memoryTotal = 100;
        state.netAddr = 3;
        state.activityFlags = kd::DeviceStateRecord::Ignition;
        state.supplyVoltage = 12345;
        const QByteArray device = answer(kd::telemetry::DeviceState, {state.toBytes()});
        row("memory", device, "memory", "12 / 100");
        row("network address", device, "netAddr", "3");
        row("ignition on", device, "ignition", "Активен", "ignitionIcon=:/images/light_bulb.png");
        row("navigation off", device, "navigationActive", "Неактивен",
            "navigationActiveIcon=:/images/light_bulb_white.png");
        row("supply", device, "supplyVoltage", "12.35 В");

        kd::LogicInputRecord counter;
        counter.mode = quint16(kd::InputMode::UniversalCounter);
        counter.value = 52;
        row("second logic input",
            answer(kd::telemetry::LogicInputs, {kd::LogicInputRecord().toBytes(), counter.toBytes()}),
            "logic1", "Унив. счетчик, 52");

        kd::FuelSensorsRecord fuel;
        fuel.level[1] = 3247;
        fuel.onlineMask = 0x2;
        const QByteArray fuels = answer(kd::telemetry::FuelSensors, {fuel.toBytes()});
        row("fuel sensor online", fuels, "fuel1", "3247");
        row("fuel sensor silent", fuels, "fuel0", "-");

        kd::DeviceInfoConfiguration info;
        info.setName(QStringLiteral("Vantor micro"));
        info.setIMEI(QStringLiteral("863071014478127"));
        info.setDeviceGroup(1);
        info.setDeviceType(3);
        info.setDeviceMod(2);
        row("device name", info.encodeAnswer(kd::DeviceInfoConfiguration::KindText), "deviceName",
            "Vantor micro");
        row("imei", info.encodeAnswer(kd::DeviceInfoConfiguration::KindIdentity), "imei", "863071014478127");
        row("hardware", info.encodeAnswer(kd::DeviceInfoConfiguration::KindIdentity), "hardware",
            "1 / 3 / 2");
    }

    void statePage() {
        QFETCH(QByteArray, payload);
        QFETCH(QString, field);
        QFETCH(QString, text);
        QFETCH(QString, icon);
        VantorConfiguration cfg;
        SettingsStatePage page(&cfg);
        const bool identity = quint8(payload[0]) == 0x81;
        if (identity) {
            cfg.deviceInfo()->decode(payload);
            page.showIdentity();
        } else {
            QVERIFY(cfg.controlInfo()->decode(payload));
            page.updateTelemetry(quint8(payload[1]) & 0x7F);
        }
        const bool button = field.startsWith(QLatin1String("fixButton")); // the n-th receiver's button
        const auto shown = [&] {
            return button ? page.fixButton(field.right(1).toInt())->text() : page.valueText(field);
        };
        QCOMPARE(shown(), text);
        if (!icon.isEmpty())
            QCOMPARE(page.iconResource(icon.section('=', 0, 0)), icon.section('=', 1));
        // The device gone: dashes everywhere but in its identity.
        page.clearTelemetry();
        QCOMPARE(shown(), identity ? text
                          : button ? QStringLiteral("Нет фиксации, 0 спутн.")
                                   : QStringLiteral("-"));
    }

private:
    MainWindow::Options options() {
        MainWindow::Options options;
        options.prompter = m_prompter;
        options.updateCheckAtStart = false;
        options.gsmProfilePath = m_dir.filePath(QStringLiteral("profiles.json"));
        options.gsmNetworksPath = m_dir.filePath(QStringLiteral("networks.json"));
        return options;
    }

    std::unique_ptr<MainWindow> makeWindow(bool connect = true, int responseMs = 10000) {
        MainWindow::Options o = options();
        o.connectAtStart = connect;
        o.responseIntervalMs = responseMs;
        o.linkFactory = [this](int) {
            auto *link = new FakeLink;
            link->fault = FakeLink::NoFault;
            link->opened = false;
            link->announceOpen = true;
            link->keepWriteHeads = &lastHeads;
            link->identity.setName(QStringLiteral("Fake tracker"));
            link->identity.setIMEI(QStringLiteral("863071014478127"));
            link->identity.setVersion(918);
            m_link = link;
            return link;
        };
        return std::unique_ptr<MainWindow>(new MainWindow(o));
    }

    // Connected to a fake link that has answered; null on failure.
    std::unique_ptr<MainWindow> identified(bool stopTelemetry = true) {
        auto w = makeWindow();
        if (!QTest::qWaitFor([&] {
                return w->connectionStateButton()->text() == Connected &&
                       w->session()->state() == State::Ready;
            }))
            return nullptr;
        if (stopTelemetry)
            w->telemetryTimer()->stop();
        return w;
    }

    // Options for a window on a virtual tracker started with `args`, reached through a link named after
    // the test row; its serial link lands in m_serial. The port name is empty if the tracker did not start.
    MainWindow::Options trackerOptions(DevsimProcess &sim, const QStringList &args) {
        const QString link = m_dir.filePath(
            QStringLiteral("tracker-%1").arg(QTest::currentDataTag()).remove(QLatin1Char(' ')));
        MainWindow::Options o = options();
        o.responseIntervalMs = 300;
        if (sim.start(QStringList{QStringLiteral("--pty"), QStringLiteral("--link"), link} + args) &&
            sim.address().startsWith(QLatin1String("/dev/")))
            o.portName = link;
        o.linkFactory = [this, link](int) {
            m_serial = new RecordingSerial(link);
            return m_serial.data();
        };
        return o;
    }

    // The page's Применить, its question answered Yes.
    void apply(MainWindow &w) {
        m_prompter->answers = {true};
        w.findChild<QPushButton *>(QStringLiteral("applyButton"))->click();
    }

    // Read all, answered Yes; true once every section has come and the job has ended.
    bool readEverything(MainWindow &w) {
        QSignalSpy complete(w.configuration(), &kd::Configuration::configComplete);
        m_prompter->answers = {true};
        w.readAll();
        return QTest::qWaitFor([&] { return !complete.isEmpty() && w.session()->state() == State::Ready; },
                               10000);
    }

    std::shared_ptr<ScriptedPrompter> m_prompter;
    QPointer<FakeLink> m_link;
    QPointer<RecordingSerial> m_serial;
    QTemporaryDir m_dir;
};

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
