#include "PageSession.h"
#include "SettingsGSMPage.h"

#include "Devices/GSMConfiguration.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

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

    static QString text32(const QByteArray &text) {
        return QString::fromLatin1(text.leftJustified(32, '\0').toHex());
    }

private slots:
    void roundTrip_data() {
        QTest::addColumn<QString>("apn");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("forbidden");
        QTest::addColumn<quint64>("low");
        QTest::addColumn<quint64>("high");
        QTest::newRow("empty") << QString() << QString() << QString() << 0 << quint64(0) << quint64(0);
        QTest::newRow("full fields") << QString(32, QLatin1Char('a')) << QString(32, QLatin1Char('u'))
                                     << QString(32, QLatin1Char('p')) << 1 << ~quint64(0) << ~quint64(0);
        QTest::newRow("usual") << "internet.tele2.ru"
                               << ""
                               << "" << 0 << quint64(0x00FF00FF00FF00FF) << quint64(0x8000000000000001);
    }
    void roundTrip() {
        QFETCH(QString, apn);
        QFETCH(QString, user);
        QFETCH(QString, password);
        QFETCH(int, forbidden);
        QFETCH(quint64, low);
        QFETCH(quint64, high);

        PageSession s;
        ScriptedAsker asker;
        auto page = makePage(s, asker);
        VantorConfiguration device;
        for (int sim = 0; sim < 2; ++sim) {
            GSMConfigurationItem *d = device.gsm()->element(sim);
            // SIM 2 differs so that a swapped SIM shows.
            d->setApn(sim ? QStringLiteral("second") : apn);
            d->setApnUser(user);
            d->setApnPassword(password);
            d->setForbidden(sim ? 0 : forbidden);
            d->setTimetableLow(sim ? 0x1234 : low);
            d->setTimetableHi(high);
        }
        s.configuration.gsm()->decode(device.gsm()->encodeAnswer(3));
        s.configuration.gsm()->decode(device.gsm()->encodeAnswer(4));

        QCOMPARE(page->sim(0).apn->text(), apn);
        QCOMPARE(page->sim(1).apn->text(), QStringLiteral("second"));
        QCOMPARE(page->sim(0).user->text(), user);
        QCOMPARE(page->sim(0).password->text(), password);
        QCOMPARE(int(page->sim(0).forbidden->isChecked()), forbidden);
        QCOMPARE(page->sim(0).schedule->isEnabled(), !forbidden);
        QVERIFY(page->sim(1).schedule->isEnabled());
        QCOMPARE(page->timetable(0), RoamingTimetable(low, high));
        QCOMPARE(page->timetable(1), RoamingTimetable(0x1234, high));
        QVERIFY(!page->isModified());

        for (int sim = 0; sim < 2; ++sim) {
            s.configuration.gsm()->element(sim)->setApn(QStringLiteral("x"));
            s.configuration.gsm()->element(sim)->setTimetableLow(7);
        }
        page->applyToDevice(s.workflows);

        const QStringList frames = s.queued();
        QCOMPARE(frames.size(), 4);
        QCOMPARE(frames.at(0), QStringLiteral("6:04030000") + text32(apn.toLatin1()) +
                                   text32(user.toLatin1()) + text32(password.toLatin1()));
        QVERIFY(frames.at(1).startsWith(QStringLiteral("6:04030100") + text32("second")));
        QByteArray roaming(2, '\0');
        roaming[0] = char(forbidden);
        for (int i = 0; i < 8; ++i)
            roaming += char((low >> (8 * i)) & 0xFF);
        for (int i = 0; i < 8; ++i)
            roaming += char((high >> (8 * i)) & 0xFF);
        QCOMPARE(frames.at(2), QStringLiteral("6:04040000") + QString::fromLatin1(roaming.toHex()));
        QVERIFY(frames.at(3).startsWith(QStringLiteral("6:04040100")));
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

    void editedTimetable_marksModifiedAndReachesTheModel() {
        PageSession s;
        ScriptedAsker asker;
        auto page = makePage(s, asker);
        RoamingTimetable t;
        t.setSlot(4, 0, true);
        page->setTimetable(1, t);
        QVERIFY(page->isModified());
        page->storeToSection();
        QCOMPARE(s.configuration.gsm()->element(1)->timetableHi(), quint64(1));
        QCOMPARE(s.configuration.gsm()->element(1)->timetableLow(), quint64(0));
        QCOMPARE(s.configuration.gsm()->element(0)->timetableHi(), quint64(0));
    }

    void addProfile_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("answer");
        QTest::addColumn<QStringList>("asked");
        QTest::addColumn<QStringList>("listed");
        QTest::addColumn<QString>("apnOfB");
        QTest::newRow("new") << "C" << true << QStringList() << QStringList{"A", "B", "C"} << "b";
        QTest::newRow("dash refused")
            << "-" << true << QStringList{"Управление профилем|Недопустимое имя профиля"}
            << QStringList{"A", "B"} << "b";
        QTest::newRow("two dashes") << "--" << true << QStringList() << QStringList{"A", "B", "--"} << "b";
        QTest::newRow("existing, overwrite")
            << "B" << true << QStringList{"Управление профилем|Профиль существует, перезаписать?"}
            << QStringList{"A", "B"} << "new";
        QTest::newRow("existing, keep")
            << "B" << false << QStringList{"Управление профилем|Профиль существует, перезаписать?"}
            << QStringList{"A", "B"} << "b";
    }
    void addProfile() {
        QFETCH(QString, name);
        QFETCH(bool, answer);
        QFETCH(QStringList, asked);
        QFETCH(QStringList, listed);
        QFETCH(QString, apnOfB);

        PageSession s;
        ScriptedAsker asker;
        auto page = makePage(s, asker);
        page->addProfile({"A", "a", "a", "a"});
        page->addProfile({"B", "b", "b", "b"});
        asker.answer = answer;
        QSignalSpy rows(page->profileList(), &QListWidget::currentRowChanged);

        page->addProfile({name, "new", "nu", "np"});

        QCOMPARE(asker.asked, asked);
        QCOMPARE(tst_SettingsGSMPage::listed(*page), listed);
        QCOMPARE(page->profiles().profiles().at(1).apn, apnOfB);
        // Refilling the list is no choice of the user: no SIM field changed.
        QCOMPARE(rows.count(), 0);
        QVERIFY(!page->isModified());
    }

    void deleteProfile_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("answer");
        QTest::addColumn<QStringList>("asked");
        QTest::addColumn<QStringList>("listed");
        QTest::newRow("yes") << 1 << true
                             << QStringList{"Управление профилем|Вы точно хотите удалить профиль B ?"}
                             << QStringList{"A", "C"};
        QTest::newRow("no") << 1 << false
                            << QStringList{"Управление профилем|Вы точно хотите удалить профиль B ?"}
                            << QStringList{"A", "B", "C"};
        QTest::newRow("nothing selected") << -1 << true << QStringList() << QStringList{"A", "B", "C"};
    }
    void deleteProfile() {
        QFETCH(int, index);
        QFETCH(bool, answer);
        QFETCH(QStringList, asked);
        QFETCH(QStringList, listed);

        PageSession s;
        ScriptedAsker asker;
        auto page = makePage(s, asker);
        for (const char *n : {"A", "B", "C"})
            page->addProfile({n, "x", "", ""});
        asker.answer = answer;
        page->deleteProfile(index);
        QCOMPARE(asker.asked, asked);
        QCOMPARE(tst_SettingsGSMPage::listed(*page), listed);
    }

    void choosingAProfile_fillsTheTargetSim() {
        PageSession s;
        ScriptedAsker asker;
        auto page = makePage(s, asker);
        page->addProfile({"Home", "home.apn", "hu", "hp"});
        page->addProfile({"Work", "work.apn", "wu", "wp"});
        page->sim(0).apn->setText(QStringLiteral("untouched"));
        page->revert();
        page->profileTarget()->setCurrentIndex(1);

        page->profileList()->setCurrentRow(1);

        QCOMPARE(page->sim(1).apn->text(), QStringLiteral("work.apn"));
        QCOMPARE(page->sim(1).user->text(), QStringLiteral("wu"));
        QCOMPARE(page->sim(1).password->text(), QStringLiteral("wp"));
        QCOMPARE(page->sim(0).apn->text(), QString());
        QVERIFY(page->isModified());
    }

    void profilesOfTheFile_areListedAtStart() {
        const QString file = m_dir.filePath(QStringLiteral("start.json"));
        {
            GsmProfileStore store(file);
            store.add({"First", "1", "", ""});
            store.add({"Second", "2", "", ""});
        }
        PageSession s;
        SettingsGSMPage page(&s.configuration, nullptr, file,
                             m_dir.filePath(QStringLiteral("start-nets.json")));
        QCOMPARE(listed(page), (QStringList{"First", "Second"}));
        QCOMPARE(page.profileList()->currentRow(), -1);
        QVERIFY(!page.isModified());
    }
};

QTEST_MAIN(tst_SettingsGSMPage)
#include "tst_settingsgsmpage.moc"
