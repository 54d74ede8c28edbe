#include "cli/FirmwareCommands.h"
#include "protocol/SessionController.h"
#include "tests/support/FakeLink.h"
#include "tests/update/BskBuilder.h"
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

    // The virtual device's boot loader against the command, in one process: bytes cross the fake link on
    // later turns of the event loop, as they would over a serial line.
    void flash_data() {
        QTest::addColumn<bool>("loaderAnswers");
        QTest::addColumn<int>("deviceBuild");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<int>("responseMs");   // the session's wait for the switch's own answer
        QTest::addColumn<int>("corruptEvery"); // the loader damages every Nth message of its own
        QTest::addColumn<int>("damageEvery");  // every Nth page packet is damaged on the way to the loader
        QTest::newRow("whole image confirmed") << true << 17 << 0 << 60000 << 0 << 0;
        QTest::newRow("device messages and page packets damaged") << true << 17 << 0 << 60000 << 5 << 33;
        QTest::newRow("device never asks") << false << 17 << 1 << 60000 << 0 << 0;
        QTest::newRow("image not for this device") << true << 99 << 1 << 60000 << 0 << 0;
        // The switch is never answered (the stand-in loader sends none) and the transfer outlasts four
        // session waits: the loader's traffic is no silence.
        QTest::newRow("transfer outlasts the session's wait") << true << 17 << 0 << 20 << 0 << 0;
    }
    void flash() {
        QFETCH(bool, loaderAnswers);
        QFETCH(int, deviceBuild);
        QFETCH(int, exitCode);
        QFETCH(int, responseMs);
        QFETCH(int, corruptEvery);
        QFETCH(int, damageEvery);
        BskBuilder b;
        b.pages = 40; // slots beyond the file's pages are sent as they stand (zero)
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
        options.corruptEvery = corruptEvery;
        BootLoader loader(options);
        int unpFrames = 0;
        int packets = 0;
        connect(link, &FakeLink::wrote, &loader, [&](const QByteArray &bytes) {
            if (bytes.startsWith("\xA5\xA5")) {
                ++unpFrames;
                if (loaderAnswers)
                    QTimer::singleShot(0, &loader, &BootLoader::start);
                return;
            }
            QByteArray b = bytes;
            if (damageEvery > 0 && ++packets % damageEvery == 0)
                b[100] = char(b.at(100) ^ 0xFF);
            QTimer::singleShot(0, &loader, [&loader, b] { loader.receive(b); });
        });
        connect(&loader, &BootLoader::send, link,
                [link](const QByteArray &bytes) { link->deliverLater(bytes); });

        QString errText;
        QTextStream err(&errText);
        FlashCommand command(&session, name, 600, err);
        command.setQuietTimeoutMs(200);
        command.setPageInterval(responseMs < 1000 ? 1 : 0);
        command.setProgressBar(false);
        QSignalSpy finished(&command, &FlashCommand::finished);
        QSignalSpy corrupted(command.updater(), &DeviceUpdater::messageCorrupted);
        QSignalSpy pageErrors(command.updater(), &DeviceUpdater::pageError);
        command.start();
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QCOMPARE(finished.at(0).at(0).toInt(), exitCode);
        QCOMPARE(unpFrames, 1);
        if (exitCode == 0) {
            QVERIFY(!loader.active());
            QCOMPARE(loader.expectedPage(), 512);
            for (int n = 0; n < 512; ++n)
                QCOMPARE(loader.receivedPage(n), n < 40 ? BskBuilder::pageData(n) : QByteArray(520, '\0'));
            QVERIFY2(errText.endsWith("Обновление завершено.\n"), qPrintable(errText));
            QCOMPARE(lost.count(), 0);
        }
        QVERIFY(!errText.isEmpty());
        QCOMPARE(corrupted.count() > 0, corruptEvery > 0);
        QCOMPARE(pageErrors.count() > 0, damageEvery > 0);
    }

private:
    QScopedPointer<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(tst_FirmwareCommands)
#include "tst_firmwarecommands.moc"
