#include "pages/GsmProfileDialog.h"
#include "pages/SettingsGSMPage.h"
#include "tests/pages/PageSession.h"

#include "Devices/GSMConfiguration.h"

#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>

#include <memory>

class tst_SettingsGSMPage : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_files = 0;

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
};

QTEST_MAIN(tst_SettingsGSMPage)
#include "tst_settingsgsmpage.moc"
