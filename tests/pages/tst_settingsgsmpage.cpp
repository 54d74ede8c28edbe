#include "pages/DeviceTextValidator.h"
#include "pages/GsmProfileDialog.h"
#include "pages/GsmProfileStore.h"
#include "pages/SettingsGSMPage.h"
#include "tests/pages/PageSession.h"

#include "Devices/GSMConfiguration.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>

#include <memory>

Q_DECLARE_METATYPE(GsmProfileStore::AddResult)

// The GSM page, its profile store and the rule for the texts it sends.
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
        QCOMPARE(page.sim(1).apn->text(), QStringLiteral("work.apn"));
        QCOMPARE(page.sim(1).user->text(), QStringLiteral("wu"));
        QCOMPARE(page.sim(1).password->text(), QStringLiteral("wp"));
        QCOMPARE(page.sim(0).apn->text(), QString());
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
    void defaultPath_isInTheCurrentDirectory() {
        QCOMPARE(GsmProfileStore::defaultPath(),
                 QDir::currentPath() + QStringLiteral("/GSMprofileList.json"));
    }

    void add_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<GsmProfileStore::AddResult>("result");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("new name appended")
            << "D" << GsmProfileStore::AddResult::Added << QStringList{"A", "B", "C", "D"};
        QTest::newRow("single dash refused")
            << "-" << GsmProfileStore::AddResult::InvalidName << QStringList{"A", "B", "C"};
        QTest::newRow("double dash accepted")
            << "--" << GsmProfileStore::AddResult::Added << QStringList{"A", "B", "C", "--"};
        QTest::newRow("existing name left alone")
            << "B" << GsmProfileStore::AddResult::Exists << QStringList{"A", "B", "C"};
    }
    void add() {
        QFETCH(QString, name);
        QFETCH(GsmProfileStore::AddResult, result);
        QFETCH(QStringList, names);
        GsmProfileStore store(m_file);
        fill(store);
        const QByteArray before = fileBytes();
        QCOMPARE(store.add({name, "apn", "user", "secret"}), result);
        QCOMPARE(tst_SettingsGSMPage::names(store), names);
        QCOMPARE(reloaded(), names);
        if (result != GsmProfileStore::AddResult::Added)
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

    void remove_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("first") << 0 << QStringList{"B", "C"};
        QTest::newRow("middle keeps order") << 1 << QStringList{"A", "C"};
        QTest::newRow("last") << 2 << QStringList{"A", "B"};
        QTest::newRow("nothing selected") << -1 << QStringList{"A", "B", "C"};
        QTest::newRow("past the end") << 3 << QStringList{"A", "B", "C"};
    }
    void remove() {
        QFETCH(int, index);
        QFETCH(QStringList, names);
        GsmProfileStore store(m_file);
        fill(store);
        QCOMPARE(store.remove(index), names.size() == 2);
        QCOMPARE(reloaded(), names);
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
};

QTEST_MAIN(tst_SettingsGSMPage)
#include "tst_settingsgsmpage.moc"
