#include "tests/update/BskBuilder.h"
#include "tests/support/FakeLink.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"
#include "update/UpdateCrc.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace UpdateChannel;

static QByteArray message(quint8 kind, int page, quint8 major = 3, quint16 middle = 9, quint8 build = 17,
                          quint16 hardware = 0x1203) {
    Message m;
    m.kind = kind;
    m.page = quint16(page);
    m.fwMajor = major;
    m.fwMiddle = middle;
    m.fwBuild = build;
    m.hardware = hardware;
    return encodeMessage(m);
}

class tst_DeviceUpdater : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        // Every page is logged; the transfer tests send hundreds.
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=false"));
        QVERIFY(m_dir.isValid());
        BskBuilder b;
        b.pages = 512;
        m_file = m_dir.filePath(QStringLiteral("full.bsk"));
        QVERIFY(BskBuilder::write(m_file, b.build()));
    }
    void init() {
        m_image = new FirmwareImage(this);
        QCOMPARE(m_image->load(m_file), FirmwareImage::Loaded);
        m_link = new FakeLink(this);
        m_updater = new DeviceUpdater(this);
        m_updater->setConnection(m_link);
        m_updater->setImage(m_image);
        m_updater->setInterval(0);
    }
    void cleanup() {
        delete m_updater;
        delete m_link;
        delete m_image;
    }

    void messageLayout() {
        // 55 kind hw(LE) middle(LE) build major pageLow marker|pageHigh crc(LE over bytes 1..9)
        const QByteArray m = message(PageRequested, 0x2F4, 3, 9, 17, 0x1203);
        QCOMPARE(m.left(10).toHex(), QByteArray("5502031209001103f492"));
        QCOMPARE(readU16(m, 10), UpdateCrc::compute(m.constData() + 1, 9));
    }

    void claims_data() {
        QTest::addColumn<QByteArray>("chunk");
        QTest::addColumn<bool>("inProgress");
        QTest::addColumn<bool>("claimed");
        QTest::newRow("request while idle") << message(PageRequested, 3) << false << true;
        QTest::newRow("UNP frame") << QByteArray::fromHex("a5a506000400818100000000") << true << false;
        QByteArray noMarker = message(PageRequested, 3);
        noMarker[9] = char(0x80);
        QTest::newRow("marker 8 in byte 9") << noMarker << true << false;
        QTest::newRow("short piece while idle") << message(PageRequested, 3).left(6) << false << false;
        QTest::newRow("short piece during an update") << message(PageRequested, 3).left(6) << true << true;
        QTest::newRow("ten bytes show the marker") << message(PageRequested, 3).left(10) << false << true;
    }
    void claims() {
        QFETCH(QByteArray, chunk);
        QFETCH(bool, inProgress);
        QFETCH(bool, claimed);
        QCOMPARE(!inProgress || m_updater->begin(), true);
        QCOMPARE(m_updater->offer(chunk), claimed);
    }

    void streamsFromRequestToLastPage_data() {
        QTest::addColumn<int>("requested");
        QTest::addColumn<int>("packets");
        QTest::newRow("page 500 streams 500..511") << 500 << 12;
        QTest::newRow("page 511 sends one") << 511 << 1;
        QTest::newRow("page 512 sends none") << 512 << 0;
    }
    void streamsFromRequestToLastPage() {
        QFETCH(int, requested);
        QFETCH(int, packets);
        QVERIFY(m_updater->begin());
        QSignalSpy asked(m_updater, &DeviceUpdater::pageRequested);
        QVERIFY(m_updater->offer(message(PageRequested, requested)));
        QCOMPARE(asked.count(), 1);
        QTRY_VERIFY(!m_updater->streaming());
        QCOMPARE(m_link->written.size(), packets);
        for (int i = 0; i < packets; ++i) {
            const QByteArray &p = m_link->written.at(i);
            const int page = requested + i;
            QCOMPARE(p.size(), 526);
            QCOMPARE(p.left(4), QByteArray("\x55\x03", 2) + char(page & 0xFF) + char(0x90 | (page >> 8)));
            QCOMPARE(p.mid(4, 520), BskBuilder::pageData(page));
            QCOMPARE(readU16(p, 524), UpdateCrc::compute(p.constData() + 1, 523));
        }
        QCOMPARE(m_updater->currentPage(), 512);
    }

    void startOnlyAfterGoodLoad() {
        // Requests before the start are logged, not served.
        QVERIFY(m_updater->offer(message(PageRequested, 510)));
        QVERIFY(m_updater->begin());
        QVERIFY(BskBuilder::write(m_dir.filePath(QStringLiteral("bad.bsk")), QByteArray("BOOT2")));
        QCOMPARE(m_image->load(m_dir.filePath(QStringLiteral("bad.bsk"))), FirmwareImage::NotFirmware);
        // A failed reload during an update stops the pages too.
        m_updater->offer(message(PageRequested, 510));
        QTest::qWait(5);
        QVERIFY(m_link->written.isEmpty());
        m_updater->stop();
        QVERIFY(!m_updater->begin());
        m_updater->setImage(nullptr);
        QVERIFY(!m_updater->begin());
    }

    void confirmations_data() {
        QTest::addColumn<int>("page");
        QTest::addColumn<bool>("inProgress");
        QTest::addColumn<bool>("complete");
        QTest::newRow("510 does not complete") << 510 << true << false;
        QTest::newRow("511 completes") << 511 << true << true;
        QTest::newRow("511 while idle does not complete") << 511 << false << false;
    }
    void confirmations() {
        QFETCH(int, page);
        QFETCH(bool, inProgress);
        QFETCH(bool, complete);
        QCOMPARE(!inProgress || m_updater->begin(), true);
        QSignalSpy done(m_updater, &DeviceUpdater::UpdateComplete);
        QVERIFY(m_updater->offer(message(PageConfirmed, page)));
        QCOMPARE(done.count(), complete ? 1 : 0);
        QCOMPARE(m_updater->inProgress(), inProgress && !complete);
    }

    void firstPageVersionMatch_data() {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<bool>("skipMatch");
        QTest::addColumn<bool>("sent");
        QTest::newRow("matching device") << message(PageRequested, 0) << false << true;
        QTest::newRow("build not listed") << message(PageRequested, 0, 3, 9, 16) << false << false;
        QTest::newRow("other middle part") << message(PageRequested, 0, 3, 8) << false << false;
        QTest::newRow("other major part") << message(PageRequested, 0, 4) << false << false;
        QTest::newRow("major 255 served without a match")
            << message(PageRequested, 0, 255, 1, 1) << false << true;
        QTest::newRow("major 254 still matched") << message(PageRequested, 0, 254) << false << false;
        QTest::newRow("skip flag serves a mismatch") << message(PageRequested, 0, 4, 1, 1) << true << true;
        QTest::newRow("unlisted hardware does not decide")
            << message(PageRequested, 0, 3, 9, 17, 0x9999) << false << true;
        QTest::newRow("later pages are not matched") << message(PageRequested, 1, 4, 1, 1) << false << true;
    }
    void firstPageVersionMatch() {
        QFETCH(QByteArray, request);
        QFETCH(bool, skipMatch);
        QFETCH(bool, sent);
        m_image->setSkipFirmwareVersionMatch(skipMatch);
        QVERIFY(m_updater->begin());
        QSignalSpy refused(m_updater, &DeviceUpdater::pageRefused);
        m_updater->offer(request);
        if (sent) {
            QTRY_VERIFY(!m_link->written.isEmpty());
            QCOMPARE(m_link->written.first().mid(2, 2), request.mid(8, 2));
        } else {
            // The device asks again and again; the refusal is reported once per update.
            QTRY_COMPARE(refused.count(), 1);
            m_updater->offer(request);
            QTest::qWait(5);
            QVERIFY(m_link->written.isEmpty());
        }
        QCOMPARE(refused.count(), sent ? 0 : 1);
        m_updater->stop();
    }

    void corruptedMessageSkipsRestOfChunk() {
        QVERIFY(m_updater->begin());
        QSignalSpy asked(m_updater, &DeviceUpdater::pageRequested);
        QSignalSpy corrupted(m_updater, &DeviceUpdater::messageCorrupted);
        QSignalSpy confirmed(m_updater, &DeviceUpdater::pageConfirmed);
        QByteArray bad = message(PageRequested, 500);
        bad[10] = char(bad.at(10) ^ 1);
        QVERIFY(m_updater->offer(bad + message(PageConfirmed, 7)));
        QCOMPARE(corrupted.count(), 1);
        QCOMPARE(asked.count() + confirmed.count(), 0);
        QVERIFY(m_updater->offer(message(PageRequested, 510)));
        QCOMPARE(asked.count(), 1);
        QTRY_COMPARE(m_link->written.size(), 2);
    }

    void messageSplitAcrossChunks_data() {
        QTest::addColumn<int>("firstPart");
        QTest::newRow("1 + 11") << 1;
        QTest::newRow("6 + 6") << 6;
        QTest::newRow("11 + 1") << 11;
    }
    void messageSplitAcrossChunks() {
        QFETCH(int, firstPart);
        QVERIFY(m_updater->begin());
        QSignalSpy asked(m_updater, &DeviceUpdater::pageRequested);
        const QByteArray m = message(PageRequested, 511);
        QVERIFY(m_updater->offer(m.left(firstPart)));
        QCOMPARE(asked.count(), 0);
        QVERIFY(m_updater->offer(m.mid(firstPart)));
        QCOMPARE(asked.count(), 1);
        QTRY_COMPARE(m_link->written.size(), 1);
        // The next UNP answer is not mistaken for the rest of a message.
        QVERIFY(!m_updater->offer(QByteArray::fromHex("a5a5060004008181")));
    }

    void frameAfterAPieceIsNotSwallowed() {
        QVERIFY(m_updater->begin());
        QSignalSpy asked(m_updater, &DeviceUpdater::pageRequested);
        QVERIFY(m_updater->offer(message(PageRequested, 7).left(5)));
        QVERIFY(!m_updater->offer(QByteArray::fromHex("a5a50600040081810000")));
        QVERIFY(m_updater->offer(message(PageConfirmed, 508) + message(PageError, 509) +
                                 message(PageRequested, 511)));
        QCOMPARE(asked.count(), 1);
        QCOMPARE(asked.at(0).at(0).toInt(), 511);
    }

    void logLinesCarryTheTime() {
        QByteArray bad = message(PageRequested, 1);
        bad[11] = char(bad.at(11) ^ 0x40);
        const QStringList lines{"<< номер страницы: 300", "<< Ошибка страницы: 300",
                                "Не сошлась CRC, пропускаем...."};
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=true"));
        s_lines.clear();
        const QtMessageHandler previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context, const QString &text) {
                if (qstrcmp(context.category, "tavrel.update") == 0)
                    s_lines << text;
            });
        m_updater->offer(message(PageError, 300));
        m_updater->offer(bad);
        qInstallMessageHandler(previous);
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=false"));
        QCOMPARE(s_lines.size(), lines.size());
        const QRegularExpression time(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d "));
        for (int i = 0; i < lines.size(); ++i) {
            QVERIFY2(time.match(s_lines.at(i)).hasMatch(), qPrintable(s_lines.at(i)));
            QCOMPARE(s_lines.at(i).mid(13), lines.at(i));
        }
    }

private:
    static QStringList s_lines;
    QTemporaryDir m_dir;
    QString m_file;
    FirmwareImage *m_image = nullptr;
    FakeLink *m_link = nullptr;
    DeviceUpdater *m_updater = nullptr;
};

QStringList tst_DeviceUpdater::s_lines;

QTEST_GUILESS_MAIN(tst_DeviceUpdater)
#include "tst_deviceupdater.moc"
