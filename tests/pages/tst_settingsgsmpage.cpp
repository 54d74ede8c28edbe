#include "pages/DeviceTextValidator.h"
#include "pages/GSMSubnetsEditor.h"
#include "pages/GsmProfileDialog.h"
#include "pages/GsmProfileStore.h"
#include "pages/PreferredNetworkStore.h"
#include "pages/RoamingTimetable.h"
#include "pages/RoamingTimetableGrid.h"
#include "pages/SettingsGSMPage.h"
#include "pages/roumingShedulerDialog.h"
#include "tests/pages/PageSession.h"

#include "Devices/GSMConfiguration.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>

#include <memory>

// The GSM page and what it is made of: the profile store, the rule for the texts it sends, the roaming
// timetable with its grid and dialog, the preferred-network editor and the file of its lists.
class tst_SettingsGSMPage : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_files = 0;
    const QString m_file = m_dir.filePath(QStringLiteral("GSMprofileList.json"));

    // A fresh file holding profiles named A, B, C (apn = the name in lower case).
    void fill(GsmProfileStore &store) {
        QFile::remove(m_file);
        for (const QString n : {"A", "B", "C"})
            QCOMPARE(store.add({n, n.toLower(), "u", "p"}), GsmProfileStore::AddResult::Added);
    }
    static QStringList names(const GsmProfileStore &store) {
        QStringList out;
        for (const GsmProfile &p : store.profiles())
            out << p.name;
        return out;
    }
    QStringList reloaded() const {
        GsmProfileStore store(m_file);
        store.load();
        return names(store);
    }
    QByteArray fileBytes() const {
        QFile f(m_file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    // Every page gets fresh profile and network files.
    std::unique_ptr<SettingsGSMPage> makePage(PageSession &s, ScriptedAsker &asker) {
        ++m_files;
        auto page = std::make_unique<SettingsGSMPage>(
            &s.configuration, nullptr, m_dir.filePath(QStringLiteral("profiles%1.json").arg(m_files)),
            m_dir.filePath(QStringLiteral("networks%1.json").arg(m_files)));
        page->setAsker(asker.asker());
        page->setNotifier(asker.notifier());
        return page;
    }

    static QStringList listed(const SettingsGSMPage &page) {
        QStringList out;
        for (int i = 0; i < page.profileList()->count(); ++i)
            out << page.profileList()->item(i)->text();
        return out;
    }

    static void mouse(QWidget *w, QEvent::Type type, const QPoint &pos) {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent e(type, pos, w->mapToGlobal(pos), button, held, Qt::NoModifier);
        QApplication::sendEvent(w, &e);
    }

    static QStringList codes(const QVector<MobileOperator> &ops) {
        QStringList out;
        for (const MobileOperator &op : ops)
            out << op.code();
        return out;
    }

private slots:
    // The page's own rule: a SIM whose roaming is forbidden has no timetable to edit.
    void scheduleOnlyWhereRoamingIsAllowed() {
        PageSession s;
        ScriptedAsker asker;
        auto page = makePage(s, asker);
        VantorConfiguration device;
        device.gsm()->element(0)->setForbidden(1);
        s.configuration.gsm()->decode(device.gsm()->encodeAnswer(4));
        QVERIFY(!page->sim(0).schedule->isEnabled());
        QVERIFY(page->sim(1).schedule->isEnabled());
    }

    // Text the device cannot take (e.g. from a configuration file) is never sent cut to zero bytes.
    void unsendableText_isRefusedAndTheLeaveIsStopped_data() {
        QTest::addColumn<int>("sim");
        QTest::addColumn<QString>("field");
        QTest::newRow("Cyrillic access point, SIM 1") << 0 << "Точка доступа SIM 1";
        QTest::newRow("Cyrillic password, SIM 2") << 1 << "Пароль SIM 2";
    }
    void unsendableText_isRefusedAndTheLeaveIsStopped() {
        QFETCH(int, sim);
        QFETCH(QString, field);
        PageSession s;
        ScriptedAsker asker;
        if (sim == 0)
            s.configuration.gsm()->element(0)->setApn(QStringLiteral("интернет"));
        else
            s.configuration.gsm()->element(1)->setApnPassword(QStringLiteral("пароль"));
        auto page = makePage(s, asker);
        page->sim(0).user->setText(QStringLiteral("edited"));

        QVERIFY(!page->applyToDevice(s.workflows));
        QVERIFY(!page->confirmLeave(&s.workflows));

        QVERIFY(s.queued().isEmpty());
        QCOMPARE(asker.asked.size(), 3); // refused apply, the question, refused apply
        QVERIFY(asker.asked.at(0).startsWith(QStringLiteral("GSM|Поле «") + field + QStringLiteral("»")));
        QVERIFY(page->isModified());
        QCOMPARE(s.configuration.gsm()->element(0)->apnUser(), QString());
    }

    void profileButtons_data() {
        QTest::addColumn<QString>("action"); // "+name" adds a profile, "-row" deletes one
        QTest::addColumn<bool>("answer");
        QTest::addColumn<QString>("asked");
        QTest::addColumn<QStringList>("profiles"); // name:apn
        const QString exists = QStringLiteral("Управление профилем|Профиль существует, перезаписать?");
        const QString remove = QStringLiteral("Управление профилем|Вы точно хотите удалить профиль B ?");
        const QStringList abc{"A:a", "B:b", "C:c"};
        QTest::newRow("add new") << "+D" << true << QString() << abc + QStringList{"D:new"};
        QTest::newRow("add dash refused")
            << "+-" << true << QStringLiteral("Управление профилем|Недопустимое имя профиля") << abc;
        QTest::newRow("add existing, Yes overwrites")
            << "+B" << true << exists << QStringList{"A:a", "B:new", "C:c"};
        QTest::newRow("add existing, No keeps") << "+B" << false << exists << abc;
        QTest::newRow("delete, Yes") << "-1" << true << remove << QStringList{"A:a", "C:c"};
        QTest::newRow("delete, No") << "-1" << false << remove << abc;
        QTest::newRow("delete with nothing selected") << "--1" << true << QString() << abc;
    }
    void profileButtons() {
        QFETCH(QString, action);
        QFETCH(bool, answer);
        QFETCH(QString, asked);
        QFETCH(QStringList, profiles);
        PageSession s;
        ScriptedAsker asker;
        auto page = makePage(s, asker);
        for (const QString n : {"A", "B", "C"})
            page->addProfile({n, n.toLower(), "", ""});
        asker.answer = answer;
        QSignalSpy rows(page->profileList(), &QListWidget::currentRowChanged);

        if (action.startsWith(QLatin1Char('+')))
            page->addProfile({action.mid(1), "new", "nu", "np"});
        else
            page->deleteProfile(action.mid(1).toInt());

        QCOMPARE(asker.asked, asked.isEmpty() ? QStringList() : QStringList{asked});
        QStringList stored, names;
        for (const GsmProfile &p : page->profiles().profiles()) {
            stored << p.name + QLatin1Char(':') + p.apn;
            names << p.name;
        }
        QCOMPARE(stored, profiles);
        QCOMPARE(listed(*page), names);
        // Refilling the list is no choice of the user: no SIM field changed.
        QCOMPARE(rows.count(), 0);
        QVERIFY(!page->isModified());
    }

    void profilesOfTheFile_areListedAndChoosingOneFillsTheTargetSim() {
        const QString file = m_dir.filePath(QStringLiteral("start.json"));
        GsmProfileStore store(file);
        store.add({"Home", "home.apn", "hu", "hp"});
        store.add({"Work", "work.apn", "wu", "wp"});
        PageSession s;
        SettingsGSMPage page(&s.configuration, nullptr, file,
                             m_dir.filePath(QStringLiteral("start-nets.json")));
        QCOMPARE(listed(page), (QStringList{"Home", "Work"}));
        QCOMPARE(page.profileList()->currentRow(), -1);
        QVERIFY(!page.isModified());

        page.profileTarget()->setCurrentIndex(1);
        page.profileList()->setCurrentRow(1);
        QCOMPARE((QStringList{page.sim(1).apn->text(), page.sim(1).user->text(), page.sim(1).password->text(),
                              page.sim(0).apn->text()}),
                 (QStringList{"work.apn", "wu", "wp", ""}));
        QVERIFY(page.isModified());
    }

    void profileDialog_typedValuesMakeTheProfile() {
        GsmProfileDialog dialog;
        typeText(dialog.nameEdit(), QStringLiteral("Дом"));
        typeText(dialog.apnEdit(), QStringLiteral("inтernet")); // the Cyrillic т is refused
        typeText(dialog.userEdit(), QStringLiteral("u"));
        typeText(dialog.passwordEdit(), QStringLiteral("p"));
        QCOMPARE(dialog.profile(), (GsmProfile{QStringLiteral("Дом"), "inernet", "u", "p"}));
    }
    // "+name" adds a profile, a number deletes the profile of that row; the file always holds the list.
    void addAndRemove_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<bool>("done");
        QTest::addColumn<QStringList>("names");
        const QStringList abc{"A", "B", "C"};
        QTest::newRow("new name appended") << "+D" << true << abc + QStringList{"D"};
        QTest::newRow("single dash refused") << "+-" << false << abc;
        QTest::newRow("double dash accepted") << "+--" << true << abc + QStringList{"--"};
        QTest::newRow("existing name left alone") << "+B" << false << abc;
        QTest::newRow("remove first") << "0" << true << QStringList{"B", "C"};
        QTest::newRow("remove middle keeps order") << "1" << true << QStringList{"A", "C"};
        QTest::newRow("remove last") << "2" << true << QStringList{"A", "B"};
        QTest::newRow("remove with nothing selected") << "-1" << false << abc;
        QTest::newRow("remove past the end") << "3" << false << abc;
    }
    void addAndRemove() {
        QFETCH(QString, action);
        QFETCH(bool, done);
        QFETCH(QStringList, names);
        GsmProfileStore store(m_file);
        fill(store);
        const QByteArray before = fileBytes();
        if (action.startsWith(QLatin1Char('+'))) {
            const auto result = store.add({action.mid(1), "apn", "user", "secret"});
            QCOMPARE(result, action == "+-" ? GsmProfileStore::AddResult::InvalidName
                             : done         ? GsmProfileStore::AddResult::Added
                                            : GsmProfileStore::AddResult::Exists);
        } else {
            QCOMPARE(store.remove(action.toInt()), done);
        }
        QCOMPARE(tst_SettingsGSMPage::names(store), names);
        QCOMPARE(reloaded(), names);
        if (!done)
            QCOMPARE(fileBytes(), before);
    }

    void overwrite_replacesValuesInPlace() {
        GsmProfileStore store(m_file);
        fill(store);
        QVERIFY(store.overwrite({"B", "new.apn", "u2", "p2"}));
        QVERIFY(!store.overwrite({"Z", "z", "z", "z"}));
        GsmProfileStore loaded(m_file);
        loaded.load();
        QCOMPARE(names(loaded), (QStringList{"A", "B", "C"}));
        QCOMPARE(loaded.profiles().at(1), (GsmProfile{"B", "new.apn", "u2", "p2"}));
    }

    void fileLayout_isIndentedWithTheFourKeys() {
        GsmProfileStore store(m_file);
        fill(store);
        const QByteArray bytes = fileBytes();
        QVERIFY(bytes.contains("\n    \"Profiles\""));
        QCOMPARE(QJsonDocument::fromJson(bytes).object().value("Profiles").toArray().at(0).toObject(),
                 (QJsonObject{{"profileName", "A"}, {"apn", "a"}, {"apn_name", "u"}, {"apn_password", "p"}}));
    }

    void load_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("missing file") << QByteArray() << QStringList();
        QTest::newRow("not json") << QByteArray("{ broken") << QStringList();
        QTest::newRow("no Profiles key")
            << QByteArray(R"({"profiles": [{"profileName": "x"}]})") << QStringList();
        QTest::newRow("order kept") << QByteArray(R"({"Profiles": [{"profileName": "Z"}, {"profileName": "A"},
                                                   {"profileName": "M", "apn": "m"}]})")
                                    << QStringList{"Z", "A", "M"};
    }
    void load() {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, names);
        GsmProfileStore store(m_file);
        fill(store);
        QFile::remove(m_file);
        if (!content.isEmpty()) {
            QFile f(m_file);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(content);
        }
        store.load();
        QCOMPARE(tst_SettingsGSMPage::names(store), names);
    }

    void unwritableFile_keepsListInMemory() {
        GsmProfileStore store(m_dir.filePath(QStringLiteral("no/such/folder/GSMprofileList.json")));
        QCOMPARE(store.add({"A", "a", "", ""}), GsmProfileStore::AddResult::Added);
        QVERIFY(!store.save());
        QCOMPARE(names(store), QStringList{"A"});
    }
    void validate_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("empty") << QString() << true;
        QTest::newRow("access point") << "internet.mts.ru" << true;
        QTest::newRow("32 characters") << QString(32, QLatin1Char('a')) << true;
        QTest::newRow("33 characters") << QString(33, QLatin1Char('a')) << false;
        QTest::newRow("Latin-1 letters") << QStringLiteral("café ß") << true;
        QTest::newRow("Latin-1 top 0xFF") << QString(QChar(0xFF)) << true;
        QTest::newRow("Cyrillic") << QStringLiteral("интернет") << false;
        QTest::newRow("one Cyrillic among Latin") << QStringLiteral("internеt") << false; // Cyrillic е
        QTest::newRow("tab") << "a\tb" << false;
        QTest::newRow("zero byte") << QString(QChar(0)) << false;
        QTest::newRow("DEL") << QString(QChar(0x7F)) << false;
        QTest::newRow("C1 control") << QString(QChar(0x85)) << false;
        QTest::newRow("no-break space") << QString(QChar(0xA0)) << true;
        QTest::newRow("euro sign") << QStringLiteral("€") << false;
    }
    void validate() {
        QFETCH(QString, text);
        QFETCH(bool, accepted);
        DeviceTextValidator v;
        int pos = 0;
        QCOMPARE(v.validate(text, pos) == QValidator::Acceptable, accepted);
        QCOMPARE(DeviceTextValidator::isSendable(text), accepted);
    }

    void typingCyrillic_leavesEditUnchanged() {
        QLineEdit edit;
        DeviceTextValidator::install(&edit);
        typeText(&edit, QStringLiteral("apn"));
        typeText(&edit, QStringLiteral("ж"));
        QCOMPARE(edit.text(), QStringLiteral("apn"));
        QCOMPARE(edit.maxLength(), 32);
    }
    void slotToWordsAndBack_data() {
        QTest::addColumn<int>("day");
        QTest::addColumn<int>("slot");
        QTest::addColumn<quint64>("low");
        QTest::addColumn<quint64>("high");
        QTest::newRow("Monday 00:00") << 0 << 0 << quint64(1) << quint64(0);
        QTest::newRow("Monday 22:30") << 0 << 15 << (quint64(1) << 15) << quint64(0);
        QTest::newRow("Tuesday 00:00") << 1 << 0 << (quint64(1) << 16) << quint64(0);
        QTest::newRow("Thursday 22:30, top of low word") << 3 << 15 << (quint64(1) << 63) << quint64(0);
        QTest::newRow("Friday 00:00, bottom of high word") << 4 << 0 << quint64(0) << quint64(1);
        QTest::newRow("Sunday 22:30, last day bit 111") << 6 << 15 << quint64(0) << (quint64(1) << 47);
        QTest::newRow("day -1 ignored") << -1 << 0 << quint64(0) << quint64(0);
        QTest::newRow("day 7 ignored") << 7 << 0 << quint64(0) << quint64(0);
        QTest::newRow("slot -1 ignored") << 0 << -1 << quint64(0) << quint64(0);
        QTest::newRow("slot 16 ignored") << 0 << 16 << quint64(0) << quint64(0);
    }
    void slotToWordsAndBack() {
        QFETCH(int, day);
        QFETCH(int, slot);
        QFETCH(quint64, low);
        QFETCH(quint64, high);
        RoamingTimetable t;
        t.setSlot(day, slot, true);
        QCOMPARE(t.low(), low);
        QCOMPARE(t.high(), high);
        const bool inGrid = low | high;
        QCOMPARE(t.slot(day, slot), inGrid);
        QCOMPARE(RoamingTimetable::bitIndex(day, slot), inGrid ? day * 16 + slot : -1);

        const RoamingTimetable back(low, high);
        for (int d = 0; d < RoamingTimetable::Days; ++d) {
            for (int s = 0; s < RoamingTimetable::SlotsPerDay; ++s)
                QCOMPARE(back.slot(d, s), d == day && s == slot);
        }
    }

    void slotStart() {
        QCOMPARE((QStringList{RoamingTimetable::slotStart(0), RoamingTimetable::slotStart(5),
                              RoamingTimetable::slotStart(15), RoamingTimetable::slotStart(16)}),
                 (QStringList{"00:00", "07:30", "22:30", "24:00"}));
    }

    void setAll_keepsBitsOfNoDay_data() {
        QTest::addColumn<quint64>("highBefore");
        QTest::addColumn<bool>("on");
        QTest::addColumn<quint64>("low");
        QTest::addColumn<quint64>("high");
        QTest::newRow("all on, reserved clear")
            << quint64(0) << true << ~quint64(0) << quint64(0x0000FFFFFFFFFFFF);
        QTest::newRow("all off, reserved set")
            << ~quint64(0) << false << quint64(0) << quint64(0xFFFF000000000000);
        QTest::newRow("all on, reserved partly set")
            << quint64(0x8001000000000000) << true << ~quint64(0) << quint64(0x8001FFFFFFFFFFFF);
    }
    void setAll_keepsBitsOfNoDay() {
        QFETCH(quint64, highBefore);
        QFETCH(bool, on);
        QFETCH(quint64, low);
        QFETCH(quint64, high);
        RoamingTimetable t(on ? 0 : ~quint64(0), highBefore);
        t.setAll(on);
        QCOMPARE(t.low(), low);
        QCOMPARE(t.high(), high);
    }

    void cellAt_mapsEveryCellBack() {
        RoamingTimetableGrid grid;
        for (int d = 0; d < RoamingTimetable::Days; ++d) {
            for (int s = 0; s < RoamingTimetable::SlotsPerDay; ++s)
                QCOMPARE(grid.cellAt(grid.cellRect(d, s).center()), qMakePair(d, s));
        }
        QCOMPARE(grid.cellAt(QPoint(0, 0)), qMakePair(-1, -1));
        const QRect last = grid.cellRect(6, 15);
        QCOMPARE(grid.cellAt(last.bottomRight() + QPoint(2, 2)), qMakePair(-1, -1));
    }

    void pressAndDrag_data() {
        QTest::addColumn<quint64>("lowBefore");
        QTest::addColumn<quint64>("lowAfter");
        QTest::newRow("drag over empty cells sets them") << quint64(0) << quint64(0x1E);
        QTest::newRow("drag from a set cell clears") << quint64(0xFF) << quint64(0xE1);
        // The first cell decides: set cells met later stay set.
        QTest::newRow("mixed row painted on") << quint64(0x08) << quint64(0x1E);
    }
    void pressAndDrag() {
        QFETCH(quint64, lowBefore);
        QFETCH(quint64, lowAfter);
        RoamingTimetableGrid grid;
        grid.setTimetable(RoamingTimetable(lowBefore, 0));
        QSignalSpy spy(&grid, &RoamingTimetableGrid::timetableChanged);

        // Monday, slots 1 to 4, passing slot 2 twice.
        mouse(&grid, QEvent::MouseButtonPress, grid.cellRect(0, 1).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 2).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 2).topLeft() + QPoint(1, 1));
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 3).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 4).center());
        mouse(&grid, QEvent::MouseButtonRelease, grid.cellRect(0, 4).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 5).center()); // after release: no painting

        QCOMPARE(grid.timetable().low(), lowAfter);
        QCOMPARE(grid.timetable().high(), quint64(0));
        QVERIFY(spy.count() >= 1);
    }

    void dialog_clearAndMarkAllKeepReservedBits() {
        roumingShedulerDialog dialog(RoamingTimetable(0x5, 0xF000000000000000), 1);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Расписание роуминга SIM 2")); // the SIM counts from 1
        QPushButton *all = nullptr, *none = nullptr;
        for (QPushButton *b : dialog.findChildren<QPushButton *>()) {
            if (b->text() == QStringLiteral("Отметить все"))
                all = b;
            if (b->text() == QStringLiteral("Очистить"))
                none = b;
        }
        QVERIFY(all && none);
        none->click();
        QCOMPARE(dialog.timetable(), RoamingTimetable(0, 0xF000000000000000));
        all->click();
        QCOMPARE(dialog.timetable(), RoamingTimetable(~quint64(0), 0xF000FFFFFFFFFFFF));
    }

    // Each slot's start is written centred over its column; the last one ("22:30") is wider than a
    // column and must still lie inside the widget.
    void slotLabels_fitInsideTheWidget() {
        RoamingTimetableGrid grid;
        const int last = RoamingTimetable::SlotsPerDay - 1;
        for (int slot : {0, last}) {
            const QRect cell = grid.cellRect(0, slot);
            const int half =
                (grid.fontMetrics().horizontalAdvance(RoamingTimetable::slotStart(slot)) + 1) / 2;
            const int centre = cell.left() + cell.width() / 2;
            QVERIFY2(centre + half <= grid.sizeHint().width(),
                     qPrintable(QStringLiteral("%1 > %2").arg(centre + half).arg(grid.sizeHint().width())));
            QVERIFY(centre - half >= 0);
        }
    }
    void filter_data() {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("codes");
        const char *const builtIn[][2] = {{"МТС", "25001"},   {"МегаФон", "25002"}, {"Yota", "25011"},
                                          {"Tele2", "25020"}, {"Мотив", "25035"},   {"Ростелеком", "25039"},
                                          {"Билайн", "25099"}};
        for (const auto &row : builtIn)
            QTest::newRow(row[0]) << QString::fromUtf8(row[0]) << QStringList{QString::fromLatin1(row[1])};
        QTest::newRow("lower-case name part") << "мега" << QStringList{"25002"};
        QTest::newRow("code prefix") << "2509" << QStringList{"25099"};
        QTest::newRow("code with dash") << "250-20" << QStringList{"25020"};
        QTest::newRow("no match") << "Vodafone" << QStringList();
    }
    void filter() {
        QFETCH(QString, query);
        QFETCH(QStringList, codes);
        QCOMPARE(tst_SettingsGSMPage::codes(MobileOperatorList::filter(query)), codes);
        QCOMPARE(MobileOperatorList::filter(QString()).size(), MobileOperatorList::russian().size());
    }

    void editor_searchAddMoveRemove() {
        GSMSubnetsEditor editor({{QStringLiteral("МТС"), 250, QStringLiteral("01")}}, 0);
        // The clear button fades in with an animation that would outlive this test without an event loop.
        editor.searchEdit()->setClearButtonEnabled(false);
        editor.searchEdit()->setText(QStringLiteral("билайн"));
        QCOMPARE(codes(editor.shownOperators()), QStringList{"25099"});
        editor.addShown(0);
        editor.addShown(0); // already listed
        editor.addManual(257, QStringLiteral("02"), QStringLiteral("A1"));
        editor.addManual(250, QStringLiteral("7"), QString()); // MNC too short
        QCOMPARE(codes(editor.networks()), (QStringList{"25001", "25099", "25702"}));
        editor.move(2, -1);
        QCOMPARE(codes(editor.networks()), (QStringList{"25001", "25702", "25099"}));
        editor.move(0, -1); // already first
        editor.removeAt(0);
        QCOMPARE(codes(editor.networks()), (QStringList{"25702", "25099"}));
    }

    // The operator table is the editor's main tool: several rows at once and whole names and headings.
    void editor_tableShowsSeveralWholeRows() {
        GSMSubnetsEditor editor({}, 0);
        editor.searchEdit()->setClearButtonEnabled(false);
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
        auto *table = editor.findChild<QTableWidget *>();
        QVERIFY(table);
        QVERIFY(table->rowCount() >= 6);
        QVERIFY2(table->viewport()->height() >= 6 * table->rowHeight(0),
                 qPrintable(QString::number(table->viewport()->height())));
        for (int column = 0; column < table->columnCount(); ++column) {
            int widest = table->fontMetrics().horizontalAdvance(table->horizontalHeaderItem(column)->text());
            for (int row = 0; row < table->rowCount(); ++row)
                widest =
                    qMax(widest, table->fontMetrics().horizontalAdvance(table->item(row, column)->text()));
            QVERIFY2(table->columnWidth(column) >= widest, qPrintable(QString::number(column)));
        }
    }

    void store_keepsEachSimsListInOrderAndReadsABrokenFileAsEmpty() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("nets.json"));
        PreferredNetworkStore store(file);
        store.setNetworks(0, {{QStringLiteral("Билайн"), 250, QStringLiteral("99")},
                              {QStringLiteral("МТС"), 250, QStringLiteral("01")}});
        store.setNetworks(1, {{QStringLiteral("Tele2"), 250, QStringLiteral("20")}});
        QVERIFY(store.save());
        PreferredNetworkStore loaded(file);
        loaded.load();
        QCOMPARE(loaded.networks(0), store.networks(0));
        QCOMPARE(loaded.networks(1), store.networks(1));
        QVERIFY(loaded.networks(2).isEmpty());

        QFile f(file);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("[1, 2");
        f.close();
        loaded.load();
        QVERIFY(loaded.networks(0).isEmpty());
        QVERIFY(loaded.networks(1).isEmpty());
    }
};

QTEST_MAIN(tst_SettingsGSMPage)
#include "tst_settingsgsmpage.moc"
