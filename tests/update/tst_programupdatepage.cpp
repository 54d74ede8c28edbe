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

    void failedLoadAfterGoodImageDisablesStart() {
        ProgramUpdatePage page;
        page.setMessageBoxesEnabled(false);
        QCOMPARE(page.loadFile(m_good), 0);
        QSignalSpy failed(&page, &ProgramUpdatePage::loadFailed);
        QCOMPARE(page.loadFile(m_bad), 3);
        QCOMPARE(failed.count(), 1);
        QCOMPARE(failed.at(0).at(0).toString(), QStringLiteral("Ошибка обновления"));
        QCOMPARE(failed.at(0).at(1).toString(),
                 "Не удалось загрузить прошивку '" + m_bad + "'\nПричина: Файл не является прошивкой");
        QVERIFY(!page.startEnabled());
        page.setFileChooser([] { return QString(); });
        QSignalSpy start(&page, &ProgramUpdatePage::startUpdate);
        page.on_startButton_clicked();
        QCOMPARE(start.count(), 0);
        QVERIFY(!page.updater()->inProgress());
    }

    void startWithoutFileAsksForOne_data() {
        QTest::addColumn<QString>("chosen"); // good, bad or empty
        QTest::addColumn<bool>("started");
        QTest::addColumn<QStringList>("progress");
        QTest::newRow("dialog cancelled") << QString() << false << QStringList();
        QTest::newRow("bad file chosen") << "bad" << false << QStringList();
        QTest::newRow("good file chosen")
            << "good" << true
            << QStringList{"Файл обновления загружен, ожидание старта обновления.",
                           "Загрузка обновления в прибор."};
    }
    void startWithoutFileAsksForOne() {
        QFETCH(QString, chosen);
        QFETCH(bool, started);
        QFETCH(QStringList, progress);
        ProgramUpdatePage page;
        page.setMessageBoxesEnabled(false);
        int asked = 0;
        const QString file = chosen == "good" ? m_good : chosen == "bad" ? m_bad : QString();
        page.setFileChooser([&] {
            ++asked;
            return file;
        });
        QSignalSpy start(&page, &ProgramUpdatePage::startUpdate);
        page.on_startButton_clicked();
        QCOMPARE(asked, 1);
        QCOMPARE(start.count(), started ? 1 : 0);
        QCOMPARE(page.progressLines(), progress);
        QCOMPARE(page.updater()->inProgress(), started);
        QVERIFY(!page.startEnabled());
    }

    void loadEnablesStartUntilTheTransferEnds() {
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
        QSignalSpy done(page.updater(), &DeviceUpdater::UpdateComplete);
        UpdateChannel::Message m;
        m.kind = UpdateChannel::PageConfirmed;
        m.page = 511;
        QVERIFY(page.updater()->offer(UpdateChannel::encodeMessage(m)));
        QCOMPARE(done.count(), 1);
        QCOMPARE(page.progressLines(), (QStringList{"Загрузка обновления в прибор.", "Подготовка прибора.",
                                                    "Ожидание перезагрузки прибора."}));
        page.appendProgress(QStringLiteral("Обновление завершено."));
        page.finishUpdate();
        QVERIFY(page.startEnabled());
        QCOMPARE(page.progressLines().last(), QStringLiteral("Обновление завершено."));
    }

    void refusedImageIsReported() {
        ProgramUpdatePage page;
        page.setMessageBoxesEnabled(false);
        QCOMPARE(page.loadFile(m_good), 0);
        page.startButton->click();
        UpdateChannel::Message m;
        m.kind = UpdateChannel::PageRequested;
        m.fwMajor = 3;
        m.fwMiddle = 9;
        m.fwBuild = 16; // not among the image's builds
        QSignalSpy sent(page.updater(), &DeviceUpdater::pageSent);
        QVERIFY(page.updater()->offer(UpdateChannel::encodeMessage(m)));
        QTRY_COMPARE(page.progressLines().last(),
                     QStringLiteral("Прошивка не предназначена для этого прибора, обновление не начато."));
        QVERIFY(sent.isEmpty());
        page.finishUpdate();
    }

private:
    QScopedPointer<QTemporaryDir> m_dir;
    QString m_good;
    QString m_bad;
};

QTEST_MAIN(tst_ProgramUpdatePage)
#include "tst_programupdatepage.moc"
