#include "pages/ProgramUpdatePage.h"
#include "tests/update/BskBuilder.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

class tst_ProgramUpdatePage : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(m_dir->isValid());
        m_good = m_dir->filePath(QStringLiteral("good.bsk"));
        m_bad = m_dir->filePath(QStringLiteral("bad.bsk"));
        BskBuilder b;
        b.builds = {17, 18};
        QVERIFY(BskBuilder::write(m_good, b.build()));
        QVERIFY(BskBuilder::write(m_bad, b.build().left(25)));
    }

    // The start button with no image loaded asks for a file; a failed load after a good one leaves no image
    // to start with.
    void startAsksForAFile_data() {
        QTest::addColumn<QStringList>("loaded"); // before the click: good or bad
        QTest::addColumn<QString>("chosen");     // good, bad or empty
        QTest::addColumn<bool>("started");
        QTest::addColumn<QStringList>("progress");
        QTest::newRow("dialog cancelled") << QStringList() << QString() << false << QStringList();
        QTest::newRow("bad file chosen") << QStringList() << "bad" << false << QStringList();
        QTest::newRow("good file chosen")
            << QStringList() << "good" << true
            << QStringList{"Файл обновления загружен, ожидание старта обновления.",
                           "Загрузка обновления в прибор."};
        QTest::newRow("failed load after a good one, dialog cancelled")
            << QStringList{"good", "bad"} << QString() << false << QStringList();
    }
    void startAsksForAFile() {
        QFETCH(QStringList, loaded);
        QFETCH(QString, chosen);
        QFETCH(bool, started);
        QFETCH(QStringList, progress);
        ProgramUpdatePage page;
        page.setMessageBoxesEnabled(false);
        QSignalSpy failed(&page, &ProgramUpdatePage::loadFailed);
        for (const QString &file : loaded)
            QCOMPARE(page.loadFile(file == "good" ? m_good : m_bad), file == "good" ? 0 : 3);
        QVERIFY(!page.startEnabled());
        int asked = 0;
        page.setFileChooser([&] {
            ++asked;
            return chosen == "good" ? m_good : chosen == "bad" ? m_bad : QString();
        });
        QSignalSpy start(&page, &ProgramUpdatePage::startUpdate);
        page.on_startButton_clicked();
        if (loaded.isEmpty())
            QCOMPARE(asked, 1);
        QCOMPARE(start.count(), started ? 1 : 0);
        QCOMPARE(page.progressLines(), progress);
        QCOMPARE(page.updater()->inProgress(), started);
        QVERIFY(!page.startEnabled());
        QCOMPARE(failed.count(), loaded.count("bad") + (chosen == "bad" ? 1 : 0));
        for (const QList<QVariant> &box : failed) {
            QCOMPARE(box.at(0).toString(), QStringLiteral("Ошибка обновления"));
            QCOMPARE(box.at(1).toString(),
                     "Не удалось загрузить прошивку '" + m_bad + "'\nПричина: Файл не является прошивкой");
        }
    }

    // A loaded image enables the start; the device's answer to the transfer ends it one way or the other.
    void transfer_data() {
        QTest::addColumn<int>("build"); // the device's firmware build
        QTest::addColumn<QStringList>("progress");
        QTest::newRow("last page confirmed")
            << 17
            << QStringList{"Загрузка обновления в прибор.", "Подготовка прибора.",
                           "Ожидание перезагрузки прибора."};
        QTest::newRow("image not for this device")
            << 16
            << QStringList{"Загрузка обновления в прибор.",
                           "Прошивка не предназначена для этого прибора, обновление не начато."};
    }
    void transfer() {
        QFETCH(int, build);
        QFETCH(QStringList, progress);
        ProgramUpdatePage page;
        page.setMessageBoxesEnabled(false);
        QVERIFY(!page.startEnabled());
        QCOMPARE(page.loadFile(m_good), 0);
        QCOMPARE(page.versionLines(), (QStringList{"3.9.17", "3.9.18", "1.2.0.3"}));
        QCOMPARE(page.progressLines(), QStringList{"Файл обновления загружен, ожидание старта обновления."});
        QVERIFY(page.startEnabled());
        page.startButton->click();
        QVERIFY(page.updater()->inProgress());
        QVERIFY(!page.startEnabled());
        QSignalSpy sent(page.updater(), &DeviceUpdater::pageSent);
        UpdateChannel::Message m;
        m.kind = build == 17 ? UpdateChannel::PageConfirmed : UpdateChannel::PageRequested;
        m.page = build == 17 ? 511 : 0;
        m.fwMajor = 3;
        m.fwMiddle = 9;
        m.fwBuild = quint8(build);
        QVERIFY(page.updater()->offer(UpdateChannel::encodeMessage(m)));
        QTRY_COMPARE(page.progressLines(), progress);
        QVERIFY(sent.isEmpty());
        QCOMPARE(page.updater()->inProgress(), build != 17);
        page.appendProgress(QStringLiteral("Обновление завершено."));
        page.finishUpdate();
        QVERIFY(page.startEnabled());
        QCOMPARE(page.progressLines().last(), QStringLiteral("Обновление завершено."));
    }

private:
    QScopedPointer<QTemporaryDir> m_dir;
    QString m_good;
    QString m_bad;
};

QTEST_MAIN(tst_ProgramUpdatePage)
#include "tst_programupdatepage.moc"
