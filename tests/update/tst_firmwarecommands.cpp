#include "cli/FirmwareCommands.h"
#include "protocol/SessionController.h"
#include "tests/update/BskBuilder.h"
#include "tests/support/FakeLink.h"
#include "tools/devsim/BootLoader.h"
#include "update/DeviceUpdater.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextStream>
#include <QtTest>

class tst_FirmwareCommands : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        // Every page and frame is logged; the flash cases send hundreds.
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=false\ndefault.debug=false"));
    }
    void init() {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(m_dir->isValid());
    }

    void fwInfo_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err");
        BskBuilder b;
        b.pages = 3;
        b.builds = {17, 18};
        b.hardware = {0x1203, 0x1300};
        QTest::newRow("image") << b.build() << 0
                               << "pages 3\nbuild 3.9.17\nbuild 3.9.18\nhardware 1.2.0.3\nhardware 1.3.0.0\n"
                               << QString();
        const QString reason = QStringLiteral("Не удалось загрузить прошивку '%1'\nПричина: ");
        QTest::newRow("short file") << b.build().left(25) << 13 << QString()
                                    << reason + "Файл не является прошивкой\n";
        BskBuilder magic;
        magic.magic = "BOOT2FILX";
        QTest::newRow("other magic") << magic.build() << 14 << QString()
                                     << reason + "Файл не является прошивкой BOOT2FILE\n";
    }
    void fwInfo() {
        QFETCH(QByteArray, file);
        QFETCH(int, exitCode);
        QFETCH(QString, out);
        QFETCH(QString, err);
        const QString name = m_dir->filePath(QStringLiteral("f.bsk"));
        QVERIFY(BskBuilder::write(name, file));
        QString outText;
        QString errText;
        QTextStream outStream(&outText);
        QTextStream errStream(&errText);
        QCOMPARE(fwInfoCommand(name, outStream, errStream), exitCode);
        QCOMPARE(outText, out);
        QCOMPARE(errText, err.contains("%1") ? err.arg(name) : err);
    }

    void flash_data() {
        QTest::addColumn<bool>("loaderAnswers");
        QTest::addColumn<int>("deviceBuild");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<int>("responseMs"); // the session's wait for the switch's own answer
        QTest::newRow("whole image confirmed") << true << 17 << 0 << 60000;
        QTest::newRow("device never asks") << false << 17 << 1 << 60000;
        QTest::newRow("image not for this device") << true << 99 << 1 << 60000;
        // The switch is never answered (the stand-in loader sends none) and the transfer outlasts four
        // session waits: the loader's traffic is no silence.
        QTest::newRow("transfer outlasts the session's wait") << true << 17 << 0 << 20;
    }
    void flash() {
        QFETCH(bool, loaderAnswers);
        QFETCH(int, deviceBuild);
        QFETCH(int, exitCode);
        QFETCH(int, responseMs);
        BskBuilder b;
        b.pages = 40;
        const QString name = m_dir->filePath(QStringLiteral("f.bsk"));
        QVERIFY(BskBuilder::write(name, b.build()));

        SessionController session(nullptr);
        QSignalSpy lost(&session, &SessionController::connectionLost);
        auto *link = new FakeLink;
        session.setLinkFactory([link](const SessionController::Settings &) { return link; });
        SessionController::Settings settings;
        settings.identify = false;
        settings.responseIntervalMs = responseMs;
        settings.jobRounds = 1;
        session.connectDevice(settings);
        BootLoader::Options options;
        options.fwBuild = quint8(deviceBuild);
        options.retryMs = 50;
        BootLoader loader(options);
        int unpFrames = 0;
        connect(link, &FakeLink::wrote, &loader, [&](const QByteArray &bytes) {
            if (bytes.startsWith("\xA5\xA5")) {
                ++unpFrames;
                if (loaderAnswers)
                    QTimer::singleShot(0, &loader, &BootLoader::start);
                return;
            }
            QTimer::singleShot(0, &loader, [&loader, bytes] { loader.receive(bytes); });
        });
        connect(&loader, &BootLoader::send, link, [link](const QByteArray &bytes) {
            link->deliverLater(bytes);
        });

        QString errText;
        QTextStream err(&errText);
        FlashCommand command(&session, name, 600, err);
        command.setQuietTimeoutMs(200);
        command.setPageInterval(responseMs < 1000 ? 1 : 0);
        command.setProgressBar(false);
        QSignalSpy finished(&command, &FlashCommand::finished);
        command.start();
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QCOMPARE(finished.at(0).at(0).toInt(), exitCode);
        QCOMPARE(unpFrames, 1);
        if (exitCode == 0) {
            QVERIFY(!loader.active());
            QCOMPARE(loader.receivedPage(39), BskBuilder::pageData(39));
            QVERIFY2(errText.endsWith("Обновление завершено.\n"), qPrintable(errText));
            QCOMPARE(lost.count(), 0);
        }
        QVERIFY(!errText.isEmpty());
    }

private:
    QScopedPointer<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(tst_FirmwareCommands)
#include "tst_firmwarecommands.moc"
