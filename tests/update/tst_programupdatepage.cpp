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

    // Start with no image loaded asks for a file, and a failed load after a good one leaves no image to
    // start with; once started, the device's answer to the transfer ends it one way or the other.
    void start_data() {
        QTest::addColumn<QStringList>("loaded");   // before the start: good or bad
        QTest::addColumn<QString>("chosen");       // good, bad or empty
        QTest::addColumn<int>("build");            // the device's firmware build
        QTest::addColumn<QStringList>("progress"); // none: not started
        const QString upload = QStringLiteral("Загрузка обновления в прибор.");
        const QStringList none;
        QTest::newRow("dialog cancelled") << none << QString() << 17 << none;
        QTest::newRow("bad file chosen") << none << "bad" << 17 << none;
        QTest::newRow("failed load after a good one, dialog cancelled")
            << QStringList{"good", "bad"} << QString() << 17 << none;
        QTest::newRow("good file chosen, last page confirmed")
            << none << "good" << 17
            << QStringList{"Файл обновления загружен, ожидание старта обновления.", upload,
                           "Подготовка прибора.", "Ожидание перезагрузки прибора."};
        QTest::newRow("image loaded, not for this device")
            << QStringList{"good"} << QString() << 16
            << QStringList{upload, "Прошивка не предназначена для этого прибора, обновление не начато."};
    }
    void start() {
        QFETCH(QStringList, loaded);
        QFETCH(QString, chosen);
        QFETCH(int, build);
        QFETCH(QStringList, progress);
        const bool started = !progress.isEmpty();
        ProgramUpdatePage page;
        page.setMessageBoxesEnabled(false);
        QSignalSpy failed(&page, &ProgramUpdatePage::loadFailed);
        for (const QString &file : loaded)
            QCOMPARE(page.loadFile(file == "good" ? m_good : m_bad), file == "good" ? 0 : 3);
        QCOMPARE(page.startEnabled(), loaded.endsWith("good"));
        int asked = 0;
        page.setFileChooser([&] {
            ++asked;
            return chosen == "good" ? m_good : chosen == "bad" ? m_bad : QString();
        });
        QSignalSpy start(&page, &ProgramUpdatePage::startUpdate);
        page.startEnabled() ? page.startButton->click() : page.on_startButton_clicked();
        QCOMPARE(asked, loaded.isEmpty() ? 1 : 0);
        QCOMPARE(start.count(), started ? 1 : 0);
        QCOMPARE(page.updater()->inProgress(), started);
        QVERIFY(!page.startEnabled());
        QCOMPARE(failed.count(), loaded.count("bad") + (chosen == "bad" ? 1 : 0));
        for (const QList<QVariant> &box : failed)
            QCOMPARE(box, (QList<QVariant>{QStringLiteral("Ошибка обновления"),
                                           QString("Не удалось загрузить прошивку '" + m_bad +
                                                   "'\nПричина: Файл не является прошивкой")}));
        if (started) {
            QCOMPARE(page.versionLines(), (QStringList{"3.9.17", "3.9.18", "1.2.0.3"}));
            QSignalSpy sent(page.updater(), &DeviceUpdater::pageSent);
            // kind, hardware, middle, build, major and page
            const UpdateChannel::Message m{build == 17 ? UpdateChannel::PageConfirmed
                                                       : UpdateChannel::PageRequested,
                                           0,
                                           9,
                                           quint8(build),
                                           3,
                                           quint16(build == 17 ? 511 : 0)};
            QVERIFY(page.updater()->offer(UpdateChannel::encodeMessage(m)));
            QTRY_COMPARE(page.progressLines(), progress);
            QVERIFY(sent.isEmpty());
            QCOMPARE(page.updater()->inProgress(), build != 17);
            page.finishUpdate();
            QVERIFY(page.startEnabled());
        }
        QCOMPARE(page.progressLines(), progress);
    }

private:
    QScopedPointer<QTemporaryDir> m_dir;
    QString m_good;
    QString m_bad;
};

QTEST_MAIN(tst_ProgramUpdatePage)
#include "tst_programupdatepage.moc"
