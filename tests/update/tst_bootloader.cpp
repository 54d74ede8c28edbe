#include "tests/update/BskBuilder.h"
#include "tests/support/FakeLink.h"
#include "tools/devsim/BootLoader.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

// The virtual device's boot loader against the configurator's transfer, in one process: bytes cross the
// fake link on later turns of the event loop, as they would over a serial line.
class tst_BootLoader : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        // Every page is logged; the transfer tests send thousands.
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=false"));
        QVERIFY(m_dir.isValid());
        BskBuilder b;
        b.pages = 300; // slots beyond the file's pages are sent as they stand (zero)
        m_file = m_dir.filePath(QStringLiteral("fw.bsk"));
        QVERIFY(BskBuilder::write(m_file, b.build()));
    }

    void fullTransferDeliversEveryPage_data() {
        QTest::addColumn<int>("corruptEvery");
        QTest::addColumn<int>("damageEvery"); // damage every Nth page packet on the way to the device
        QTest::newRow("clean line") << 0 << 0;
        QTest::newRow("device messages and page packets damaged") << 5 << 33;
    }
    void fullTransferDeliversEveryPage() {
        QFETCH(int, corruptEvery);
        QFETCH(int, damageEvery);
        FirmwareImage image;
        QCOMPARE(image.load(m_file), FirmwareImage::Loaded);
        FakeLink link;
        DeviceUpdater updater;
        updater.setConnection(&link);
        updater.setImage(&image);
        updater.setInterval(0);
        BootLoader::Options options;
        options.corruptEvery = corruptEvery;
        options.retryMs = 20;
        BootLoader loader(options);
        int packets = 0;
        connect(&link, &FakeLink::wrote, &loader, [&](const QByteArray &bytes) {
            QByteArray b = bytes;
            if (damageEvery > 0 && ++packets % damageEvery == 0)
                b[100] = char(b.at(100) ^ 0xFF);
            QTimer::singleShot(0, &loader, [&loader, b] { loader.receive(b); });
        });
        connect(&loader, &BootLoader::send, &updater, [&](const QByteArray &bytes) {
            QTimer::singleShot(0, &updater, [&updater, bytes] { QVERIFY(updater.offer(bytes)); });
        });
        QSignalSpy complete(&updater, &DeviceUpdater::UpdateComplete);
        QSignalSpy finished(&loader, &BootLoader::finished);
        QSignalSpy corrupted(&updater, &DeviceUpdater::messageCorrupted);
        QSignalSpy pageErrors(&updater, &DeviceUpdater::pageError);
        QVERIFY(updater.begin());
        loader.start();
        QVERIFY(loader.active());
        QTRY_COMPARE_WITH_TIMEOUT(complete.count(), 1, 20000);
        QCOMPARE(finished.count(), 1);
        QVERIFY(!loader.active());
        QCOMPARE(loader.expectedPage(), 512);
        for (int n = 0; n < 512; ++n)
            QCOMPARE(loader.receivedPage(n), n < 300 ? BskBuilder::pageData(n) : QByteArray(520, '\0'));
        QCOMPARE(corrupted.count() > 0, corruptEvery > 0);
        QCOMPARE(pageErrors.count() > 0, damageEvery > 0);
    }

private:
    QTemporaryDir m_dir;
    QString m_file;
};

QTEST_GUILESS_MAIN(tst_BootLoader)
#include "tst_bootloader.moc"
