#include "BskBuilder.h"
#include "FakeLink.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"
#include "update/UpdateCrc.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace UpdateChannel;

namespace {

QByteArray message(quint8 kind, int page, quint8 major = 3, quint16 middle = 9, quint8 build = 17,
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

} // namespace

class tst_DeviceUpdater : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        // Every page is logged; the transfer tests send thousands.
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
        QTest::newRow("request") << message(PageRequested, 3) << false << true;
        QTest::newRow("confirmation") << message(PageConfirmed, 3) << true << true;
        QTest::newRow("UNP frame") << QByteArray::fromHex("a5a506000400818100000000") << true << false;
        QByteArray noMarker = message(PageRequested, 3);
        noMarker[9] = char(0x80);
        QTest::newRow("marker 8 in byte 9") << noMarker << true << false;
        QTest::newRow("empty chunk") << QByteArray() << true << false;
        QTest::newRow("short piece while idle") << message(PageRequested, 3).left(6) << false << false;
        QTest::newRow("short piece during an update") << message(PageRequested, 3).left(6) << true << true;
        QTest::newRow("ten bytes show the marker") << message(PageRequested, 3).left(10) << false << true;
        QTest::newRow("short piece not starting with 55") << QByteArray::fromHex("a5a5") << true << false;
    }
    void claims() {
        QFETCH(QByteArray, chunk);
        QFETCH(bool, inProgress);
        QFETCH(bool, claimed);
        if (inProgress)
            QVERIFY(m_updater->begin());
        QCOMPARE(m_updater->offer(chunk), claimed);
    }

    void streamsFromRequestToLastPage_data() {
        QTest::addColumn<int>("requested");
        QTest::addColumn<int>("packets");
        QTest::newRow("page 500 streams 500..511") << 500 << 12;
        QTest::newRow("page 511 sends one") << 511 << 1;
        QTest::newRow("page 0 streams all 512") << 0 << 512;
        QTest::newRow("page 512 sends none") << 512 << 0;
        QTest::newRow("page 4095 sends none") << 4095 << 0;
    }
    void streamsFromRequestToLastPage() {
        QFETCH(int, requested);
        QFETCH(int, packets);
        QVERIFY(m_updater->begin());
        QSignalSpy sent(m_updater, &DeviceUpdater::pageSent);
        QSignalSpy asked(m_updater, &DeviceUpdater::pageRequested);
        QVERIFY(m_updater->offer(message(PageRequested, requested)));
        QCOMPARE(asked.count(), 1);
        QCOMPARE(asked.at(0).at(0).toInt(), requested);
        QTRY_VERIFY(!m_updater->streaming());
        QCOMPARE(m_link->written.size(), packets);
        QCOMPARE(sent.count(), packets);
        for (int i = 0; i < packets; ++i) {
            const QByteArray &p = m_link->written.at(i);
            const int page = requested + i;
            QCOMPARE(p.size(), 526);
            QCOMPARE(quint8(p.at(0)), quint8(0x55));
            QCOMPARE(quint8(p.at(1)), quint8(3));
            QCOMPARE(quint8(p.at(2)), quint8(page & 0xFF));
            QCOMPARE(quint8(p.at(3)), quint8(0x90 | (page >> 8)));
            QCOMPARE(p.mid(4, 520), page < 512 ? BskBuilder::pageData(page) : QByteArray());
            QCOMPARE(readU16(p, 524), UpdateCrc::compute(p.constData() + 1, 523));
        }
        QCOMPARE(m_updater->currentPage(), 512);
    }

    void requestsOnlyLoggedWhenNotInProgress() {
        QSignalSpy asked(m_updater, &DeviceUpdater::pageRequested);
        QVERIFY(m_updater->offer(message(PageRequested, 510)));
        QCOMPARE(asked.count(), 1);
        QVERIFY(!m_updater->streaming());
        QCoreApplication::processEvents();
        QVERIFY(m_link->written.isEmpty());
    }

    void beginNeedsSuccessfulLoad() {
        QVERIFY(BskBuilder::write(m_dir.filePath(QStringLiteral("bad.bsk")), QByteArray("BOOT2")));
        QCOMPARE(m_image->load(m_dir.filePath(QStringLiteral("bad.bsk"))), FirmwareImage::NotFirmware);
        QVERIFY(!m_updater->begin());
        m_updater->setImage(nullptr);
        QVERIFY(!m_updater->begin());
    }

    void failedReloadStopsServingPages() {
        QVERIFY(m_updater->begin());
        QVERIFY(BskBuilder::write(m_dir.filePath(QStringLiteral("bad.bsk")), QByteArray("BOOT2")));
        m_image->load(m_dir.filePath(QStringLiteral("bad.bsk")));
        m_updater->offer(message(PageRequested, 510));
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        QVERIFY(m_link->written.isEmpty());
        m_updater->stop();
    }

    void confirmations_data() {
        QTest::addColumn<int>("page");
        QTest::addColumn<bool>("inProgress");
        QTest::addColumn<bool>("complete");
        QTest::newRow("510 does not complete") << 510 << true << false;
        QTest::newRow("511 completes") << 511 << true << true;
        QTest::newRow("511 while idle does not complete") << 511 << false << false;
        QTest::newRow("0 does not complete") << 0 << true << false;
    }
    void confirmations() {
        QFETCH(int, page);
        QFETCH(bool, inProgress);
        QFETCH(bool, complete);
        if (inProgress)
            QVERIFY(m_updater->begin());
        QSignalSpy done(m_updater, &DeviceUpdater::UpdateComplete);
        QSignalSpy confirmed(m_updater, &DeviceUpdater::pageConfirmed);
        QSignalSpy lines(m_updater, &DeviceUpdater::progressLine);
        QVERIFY(m_updater->offer(message(PageConfirmed, page)));
        QCOMPARE(confirmed.count(), 1);
        QCOMPARE(confirmed.at(0).at(0).toInt(), page);
        QCOMPARE(done.count(), complete ? 1 : 0);
        if (complete) {
            QCOMPARE(lines.count(), 2);
            QCOMPARE(lines.at(0).at(0).toString(), QStringLiteral("Подготовка прибора."));
            QCOMPARE(lines.at(1).at(0).toString(), QStringLiteral("Ожидание перезагрузки прибора."));
            QVERIFY(!m_updater->inProgress());
        }
    }

    void firstPageVersionMatch_data() {
        QTest::addColumn<int>("page");
        QTest::addColumn<int>("major");
        QTest::addColumn<int>("middle");
        QTest::addColumn<int>("build");
        QTest::addColumn<int>("hardware");
        QTest::addColumn<bool>("skipMatch");
        QTest::addColumn<bool>("sent");
        QTest::newRow("matching device") << 0 << 3 << 9 << 17 << 0x1203 << false << true;
        QTest::newRow("build not listed") << 0 << 3 << 9 << 16 << 0x1203 << false << false;
        QTest::newRow("other middle part") << 0 << 3 << 8 << 17 << 0x1203 << false << false;
        QTest::newRow("other major part") << 0 << 4 << 9 << 17 << 0x1203 << false << false;
        QTest::newRow("major 255 served without a match") << 0 << 255 << 1 << 1 << 0x1203 << false << true;
        QTest::newRow("major 254 still matched") << 0 << 254 << 9 << 17 << 0x1203 << false << false;
        QTest::newRow("skip flag serves a mismatch") << 0 << 4 << 1 << 1 << 0x1203 << true << true;
        QTest::newRow("unlisted hardware does not decide") << 0 << 3 << 9 << 17 << 0x9999 << false << true;
        QTest::newRow("later pages are not matched") << 1 << 4 << 1 << 1 << 0x1203 << false << true;
    }
    void firstPageVersionMatch() {
        QFETCH(int, page);
        QFETCH(int, major);
        QFETCH(int, middle);
        QFETCH(int, build);
        QFETCH(int, hardware);
        QFETCH(bool, skipMatch);
        QFETCH(bool, sent);
        m_image->setSkipFirmwareVersionMatch(skipMatch);
        QVERIFY(m_updater->begin());
        QSignalSpy refused(m_updater, &DeviceUpdater::pageRefused);
        m_updater->offer(
            message(PageRequested, page, quint8(major), quint16(middle), quint8(build), quint16(hardware)));
        if (sent) {
            QTRY_VERIFY(!m_link->written.isEmpty());
            QCOMPARE(m_link->written.first().mid(2, 2), message(PageRequested, page).mid(8, 2));
            QCOMPARE(refused.count(), 0);
        } else {
            QTRY_COMPARE(refused.count(), 1);
            QTest::qWait(5);
            QVERIFY(m_link->written.isEmpty());
            QCOMPARE(m_updater->currentPage(), 0);
        }
        m_updater->stop();
    }

    void refusalReportedOncePerUpdate() {
        QVERIFY(m_updater->begin());
        QSignalSpy refused(m_updater, &DeviceUpdater::pageRefused);
        for (int i = 0; i < 3; ++i) {
            m_updater->offer(message(PageRequested, 0, 3, 9, 16));
            QTest::qWait(5);
        }
        QCOMPARE(refused.count(), 1);
        QVERIFY(m_link->written.isEmpty());
        m_updater->stop();
        QVERIFY(m_updater->begin());
        m_updater->offer(message(PageRequested, 0, 3, 9, 16));
        QTRY_COMPARE(refused.count(), 2);
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
        QCOMPARE(asked.count(), 0);
        QCOMPARE(confirmed.count(), 0);
        QVERIFY(m_updater->offer(message(PageRequested, 510)));
        QCOMPARE(asked.count(), 1);
        QTRY_COMPARE(m_link->written.size(), 2);
    }

    void anyDamagedByteIsDetected_data() {
        QTest::addColumn<int>("byte");
        for (int i = 1; i <= 11; ++i)
            QTest::newRow(qPrintable(QStringLiteral("byte %1").arg(i))) << i;
    }
    void anyDamagedByteIsDetected() {
        QFETCH(int, byte);
        QByteArray m = message(PageError, 5);
        // In byte 9 only a page bit changes: the marker decides whether the chunk is ours at all.
        m[byte] = char(m.at(byte) ^ (byte == 9 ? 0x01 : 0x10));
        QSignalSpy corrupted(m_updater, &DeviceUpdater::messageCorrupted);
        QSignalSpy errors(m_updater, &DeviceUpdater::pageError);
        QVERIFY(m_updater->offer(m));
        QCOMPARE(corrupted.count(), 1);
        QCOMPARE(errors.count(), 0);
    }

    void messageSplitAcrossChunks_data() {
        QTest::addColumn<int>("firstPart");
        QTest::newRow("1 + 11") << 1;
        QTest::newRow("6 + 6") << 6;
        QTest::newRow("10 + 2") << 10;
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
        QCOMPARE(asked.at(0).at(0).toInt(), 511);
        QTRY_COMPARE(m_link->written.size(), 1);
        // The next UNP answer is not mistaken for the rest of a message.
        QVERIFY(!m_updater->offer(QByteArray::fromHex("a5a5060004008181")));
    }

    void frameAfterAPieceIsNotSwallowed() {
        QVERIFY(m_updater->begin());
        QSignalSpy asked(m_updater, &DeviceUpdater::pageRequested);
        QVERIFY(m_updater->offer(message(PageRequested, 7).left(5)));
        QVERIFY(!m_updater->offer(QByteArray::fromHex("a5a50600040081810000")));
        QVERIFY(m_updater->offer(message(PageRequested, 511)));
        QCOMPARE(asked.count(), 1);
        QCOMPARE(asked.at(0).at(0).toInt(), 511);
    }

    void severalMessagesInOneChunk() {
        QVERIFY(m_updater->begin());
        QSignalSpy confirmed(m_updater, &DeviceUpdater::pageConfirmed);
        QSignalSpy errors(m_updater, &DeviceUpdater::pageError);
        QSignalSpy asked(m_updater, &DeviceUpdater::pageRequested);
        QVERIFY(m_updater->offer(message(PageConfirmed, 508) + message(PageError, 509) +
                                 message(PageRequested, 509)));
        QCOMPARE(confirmed.count(), 1);
        QCOMPARE(errors.count(), 1);
        QCOMPARE(errors.at(0).at(0).toInt(), 509);
        QCOMPARE(asked.count(), 1);
        QTRY_COMPARE(m_link->written.size(), 3);
    }

    void newRequestRestartsTheStream() {
        QVERIFY(m_updater->begin());
        m_updater->setInterval(1000); // ticks by hand below
        QVERIFY(m_updater->offer(message(PageRequested, 500)));
        QCOMPARE(m_updater->currentPage(), 500);
        QVERIFY(m_updater->offer(message(PageRequested, 505)));
        QCOMPARE(m_updater->currentPage(), 505);
        QVERIFY(m_updater->streaming());
        m_updater->setInterval(0);
        QVERIFY(m_updater->offer(message(PageRequested, 505)));
        QTRY_VERIFY(!m_updater->streaming());
        QCOMPARE(m_link->written.size(), 7);
        QCOMPARE(quint8(m_link->written.first().at(2)), quint8(505 & 0xFF));
    }

    void logLines_data() {
        QTest::addColumn<QByteArray>("chunk");
        QTest::addColumn<QStringList>("lines"); // each after the time "hh:mm:ss.zzz "
        QTest::newRow("page error") << message(PageError, 300)
                                    << QStringList{"<< номер страницы: 300", "<< Ошибка страницы: 300"};
        QTest::newRow("confirmation") << message(PageConfirmed, 12)
                                      << QStringList{"<< номер страницы: 12", "<< Подтверждена страница: 12"};
        QTest::newRow("unknown kind")
            << message(7, 1) << QStringList{"<< номер страницы: 1", "<< неизвестное сообщение: 7"};
        QByteArray bad = message(PageRequested, 1);
        bad[11] = char(bad.at(11) ^ 0x40);
        QTest::newRow("bad checksum") << bad << QStringList{"Не сошлась CRC, пропускаем...."};
    }
    void logLines() {
        QFETCH(QByteArray, chunk);
        QFETCH(QStringList, lines);
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=true"));
        s_lines.clear();
        const QtMessageHandler previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context, const QString &text) {
                if (qstrcmp(context.category, "tavrel.update") == 0)
                    s_lines << text;
            });
        m_updater->offer(chunk);
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
