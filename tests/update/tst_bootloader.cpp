#include "BootLoader.h"
#include "BskBuilder.h"
#include "FakeLink.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace UpdateChannel;

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

    void fullTransfer_data() {
        QTest::addColumn<int>("corruptEvery");
        QTest::addColumn<int>("damageEvery"); // damage every Nth page packet on the way to the device
        QTest::newRow("clean line") << 0 << 0;
        QTest::newRow("every 7th device message damaged") << 7 << 0;
        QTest::newRow("every 50th page packet damaged") << 0 << 50;
        QTest::newRow("both") << 5 << 33;
    }
    void fullTransfer() {
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

    void mismatchedDeviceGetsNoFirstPage() {
        FirmwareImage image;
        QCOMPARE(image.load(m_file), FirmwareImage::Loaded);
        FakeLink link;
        DeviceUpdater updater;
        updater.setConnection(&link);
        updater.setImage(&image);
        updater.setInterval(0);
        BootLoader::Options options;
        options.fwBuild = 99; // not among the image's builds
        BootLoader loader(options);
        connect(&loader, &BootLoader::send, &updater, &DeviceUpdater::offer);
        QSignalSpy refused(&updater, &DeviceUpdater::pageRefused);
        QVERIFY(updater.begin());
        loader.start();
        QTRY_COMPARE(refused.count(), 1);
        QTest::qWait(10);
        QVERIFY(link.written.isEmpty());
        QCOMPARE(loader.expectedPage(), 0);
        updater.stop();
    }

    void loaderMessages_data() {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QList<int>>(
            "kinds"); // kinds of the messages sent in answer, after the first request
        QTest::addColumn<QList<int>>("pages");
        const QByteArray p0 = encodePagePacket(0, BskBuilder::pageData(0));
        const QByteArray p1 = encodePagePacket(1, BskBuilder::pageData(1));
        QByteArray bad = p0;
        bad[300] = char(bad.at(300) ^ 1);
        QTest::newRow("good page confirmed") << p0 << QList<int>{1} << QList<int>{0};
        QTest::newRow("two pages in one chunk") << p0 + p1 << QList<int>{1, 1} << QList<int>{0, 1};
        QTest::newRow("damaged page reported and asked again") << bad << QList<int>{4, 2} << QList<int>{0, 0};
        QTest::newRow("gap asks for the missing page once")
            << p1 + encodePagePacket(2, QByteArray()) << QList<int>{2} << QList<int>{0};
        QTest::newRow("noise before a page skipped")
            << QByteArray("zz") + p0 << QList<int>{1} << QList<int>{0};
        QTest::newRow("half a page waits") << p0.left(300) << QList<int>{} << QList<int>{};
    }
    void loaderMessages() {
        QFETCH(QByteArray, input);
        QFETCH(QList<int>, kinds);
        QFETCH(QList<int>, pages);
        BootLoader::Options options;
        options.retryMs = 60000;
        BootLoader loader(options);
        QSignalSpy sent(&loader, &BootLoader::send);
        loader.start();
        QCOMPARE(sent.count(), 1);
        const QByteArray first = sent.takeFirst().at(0).toByteArray();
        QVERIFY(messageCrcValid(first));
        const Message request = decodeMessage(first);
        QCOMPARE(int(request.kind), int(PageRequested));
        QCOMPARE(request.hardware, quint16(0x1203));
        QCOMPARE(request.fwMajor, quint8(3));
        QCOMPARE(request.fwMiddle, quint16(9));
        QCOMPARE(request.fwBuild, quint8(17));
        QCOMPARE(request.page, quint16(0));
        loader.receive(input);
        QCOMPARE(sent.count(), kinds.size());
        for (int i = 0; i < kinds.size(); ++i) {
            const QByteArray m = sent.at(i).at(0).toByteArray();
            QVERIFY(messageCrcValid(m));
            QCOMPARE(int(decodeMessage(m).kind), kinds.at(i));
            QCOMPARE(int(decodeMessage(m).page), pages.at(i));
        }
    }

    void corruptEveryDamagesOwnMessages() {
        BootLoader::Options options;
        options.corruptEvery = 2;
        options.retryMs = 60000;
        BootLoader loader(options);
        QSignalSpy sent(&loader, &BootLoader::send);
        loader.start();
        for (int n = 0; n < 3; ++n)
            loader.receive(encodePagePacket(quint16(n), QByteArray()));
        QCOMPARE(sent.count(), 4);
        QList<bool> valid;
        for (const QList<QVariant> &args : sent)
            valid.append(messageCrcValid(args.at(0).toByteArray()));
        QCOMPARE(valid, (QList<bool>{true, false, true, false}));
    }

private:
    QTemporaryDir m_dir;
    QString m_file;
};

QTEST_GUILESS_MAIN(tst_BootLoader)
#include "tst_bootloader.moc"
