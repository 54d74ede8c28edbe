#include "tests/support/FakeLink.h"
#include "tests/support/LogCapture.h"
#include "tests/update/BskBuilder.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"
#include "update/UpdateCrc.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace UpdateChannel;
using Chunks = QList<QByteArray>;

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

// The boot loader's arithmetic, bit by bit: message bits shift into the register, nothing is appended.
static quint16 bitwiseCrc(const QByteArray &data) {
    quint16 reg = 0;
    for (char c : data) {
        for (int bit = 7; bit >= 0; --bit) {
            const bool top = reg & 0x8000;
            reg = quint16((reg << 1) | ((quint8(c) >> bit) & 1));
            if (top)
                reg ^= 0x1021;
        }
    }
    return reg;
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

    void crc_data() {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<quint16>("crc");
        QTest::newRow("empty range gives the start value") << QByteArray() << quint16(0);
        // 0x010000: the 1 leaves bit 15 on the 17th shift and the generator is folded in once.
        QTest::newRow("bit leaves the register") << QByteArray::fromHex("010000") << quint16(0x1021);
        // Not the XMODEM value 0x31C3 of "123456789": no sixteen zero bits are appended.
        QTest::newRow("123456789 differs from XMODEM") << QByteArray("123456789") << quint16(0xBEEF);
        QTest::newRow("two zero bytes appended give XMODEM")
            << QByteArray("123456789").append(2, '\0') << quint16(0x31C3);
    }
    void crc() {
        QFETCH(QByteArray, data);
        QFETCH(quint16, crc);
        QCOMPARE(UpdateCrc::compute(data.constData(), data.size()), crc);
        QCOMPARE(bitwiseCrc(data), crc);
    }
    // The table against the bit-by-bit register on random data, and the range overload cut at the end.
    void crcTableAndRange() {
        QRandomGenerator rng(2654435761u);
        for (int size : {1, 2, 3, 9, 16, 523, 4096}) {
            QByteArray random(size, '\0');
            for (int round = 0; round < 50; ++round) {
                for (char &c : random)
                    c = char(rng.bounded(256));
                QCOMPARE(UpdateCrc::compute(random.constData(), random.size()), bitwiseCrc(random));
            }
        }
        const QByteArray bytes = QByteArray::fromHex("55020312090011030094");
        QCOMPARE(UpdateCrc::compute(bytes, 1, 9), bitwiseCrc(bytes.mid(1, 9)));
        QCOMPARE(UpdateCrc::compute(bytes, 5, 100), bitwiseCrc(bytes.mid(5)));
        QCOMPARE(UpdateCrc::compute(bytes, 20, 4), quint16(0));
    }

    void messageLayout() {
        // 55 kind hw(LE) middle(LE) build major pageLow marker|pageHigh crc(LE over bytes 1..9)
        const QByteArray m = message(PageRequested, 0x2F4, 3, 9, 17, 0x1203);
        QCOMPARE(m.left(10).toHex(), QByteArray("5502031209001103f492"));
        QCOMPARE(readU16(m, 10), UpdateCrc::compute(m.constData() + 1, 9));
    }

    // Chunks offered in turn: which ones the updater claims (1) or leaves to the UNP parser (0), the
    // messages it saw and the page packets it streamed (always up to the last page).
    void offers_data() {
        QTest::addColumn<bool>("inProgress");
        QTest::addColumn<Chunks>("chunks");
        QTest::addColumn<QString>("claimed");
        QTest::addColumn<QString>("events");
        QTest::addColumn<int>("packets");
        const auto row = [](const char *name, bool inProgress, const Chunks &chunks, const char *claimed,
                            const char *events, int packets) {
            QTest::newRow(name) << inProgress << chunks << QString(claimed) << QString(events) << packets;
        };
        const QByteArray unp = QByteArray::fromHex("a5a506000400818100000000");
        const QByteArray req511 = message(PageRequested, 511);
        QByteArray noMarker = message(PageRequested, 3);
        noMarker[9] = char(0x80);
        QByteArray badCrc = message(PageRequested, 500);
        badCrc[10] = char(badCrc.at(10) ^ 1);
        row("page 500 streams 500..511", true, {message(PageRequested, 500)}, "1", "req:500", 12);
        row("page 511 sends one", true, {req511}, "1", "req:511", 1);
        row("page 512 sends none", true, {message(PageRequested, 512)}, "1", "req:512", 0);
        row("request while idle logged, not served", false, {message(PageRequested, 3)}, "1", "req:3", 0);
        row("UNP frame", true, {unp}, "0", "", 0);
        row("marker 8 in byte 9", true, {noMarker}, "0", "", 0);
        row("short piece while idle", false, {req511.left(6)}, "0", "", 0);
        row("short piece during an update", true, {req511.left(6)}, "1", "", 0);
        row("ten bytes show the marker", false, {req511.left(10)}, "1", "", 0);
        row("510 does not complete", true, {message(PageConfirmed, 510)}, "1", "conf:510", 0);
        row("511 completes", true, {message(PageConfirmed, 511)}, "1", "conf:511 complete", 0);
        row("511 while idle does not complete", false, {message(PageConfirmed, 511)}, "1", "conf:511", 0);
        row("corrupted message skips the rest of its chunk", true,
            {badCrc + message(PageConfirmed, 7), message(PageRequested, 510)}, "11", "corrupt req:510", 2);
        row("message split 1 + 11, then a UNP answer", true, {req511.left(1), req511.mid(1), unp.left(8)},
            "110", "req:511", 1);
        row("message split 6 + 6", true, {req511.left(6), req511.mid(6), unp.left(8)}, "110", "req:511", 1);
        row("message split 11 + 1", true, {req511.left(11), req511.mid(11), unp.left(8)}, "110", "req:511",
            1);
        row("frame after a piece is not swallowed", true,
            {message(PageRequested, 7).left(5), unp.left(10),
             message(PageConfirmed, 508) + message(PageError, 509) + req511},
            "101", "conf:508 err:509 req:511", 1);
    }
    void offers() {
        QFETCH(bool, inProgress);
        QFETCH(Chunks, chunks);
        QFETCH(QString, claimed);
        QFETCH(QString, events);
        QFETCH(int, packets);
        QCOMPARE(!inProgress || m_updater->begin(), true);
        QStringList seen;
        const auto record = [&](auto signal, const char *name) {
            connect(m_updater, signal, this,
                    [&seen, name](int page) { seen << name + QString::number(page); });
        };
        record(&DeviceUpdater::pageRequested, "req:");
        record(&DeviceUpdater::pageConfirmed, "conf:");
        record(&DeviceUpdater::pageError, "err:");
        connect(m_updater, &DeviceUpdater::messageCorrupted, this, [&] { seen << "corrupt"; });
        connect(m_updater, &DeviceUpdater::UpdateComplete, this, [&] { seen << "complete"; });
        QString got;
        for (const QByteArray &chunk : chunks)
            got += m_updater->offer(chunk) ? '1' : '0';
        QCOMPARE(got, claimed);
        QCOMPARE(seen.join(' '), events);
        QCOMPARE(m_updater->inProgress(), inProgress && !events.contains("complete"));
        QTRY_VERIFY(!m_updater->streaming());
        QCOMPARE(m_link->written.size(), packets);
        for (int i = 0; i < packets; ++i) {
            const QByteArray &p = m_link->written.at(i);
            const int page = 512 - packets + i;
            QCOMPARE(p.size(), 526);
            QCOMPARE(p.left(4), QByteArray("\x55\x03", 2) + char(page & 0xFF) + char(0x90 | (page >> 8)));
            QCOMPARE(p.mid(4, 520), BskBuilder::pageData(page));
            QCOMPARE(readU16(p, 524), UpdateCrc::compute(p.constData() + 1, 523));
        }
        QCOMPARE(m_updater->currentPage(), inProgress && events.contains("req") ? 512 : 0);
    }

    void startOnlyAfterGoodLoad() {
        QVERIFY(m_updater->begin());
        QVERIFY(BskBuilder::write(m_dir.filePath(QStringLiteral("bad.bsk")), QByteArray("BOOT2")));
        QCOMPARE(m_image->load(m_dir.filePath(QStringLiteral("bad.bsk"))), FirmwareImage::NotFirmware);
        // A failed reload during an update stops the pages too.
        QSignalSpy refused(m_updater, &DeviceUpdater::pageRefused);
        m_updater->offer(message(PageRequested, 510));
        QTRY_COMPARE(refused.count(), 1);
        QVERIFY(m_link->written.isEmpty());
        m_updater->stop();
        QVERIFY(!m_updater->begin());
        m_updater->setImage(nullptr);
        QVERIFY(!m_updater->begin());
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

    void logLinesCarryTheTime() {
        QByteArray bad = message(PageRequested, 1);
        bad[11] = char(bad.at(11) ^ 0x40);
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=true"));
        {
            LogCapture capture("tavrel.update", QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d (.*)$"));
            m_updater->offer(message(PageError, 300));
            m_updater->offer(bad);
            QCOMPARE(capture.unstamped, 0);
            QCOMPARE(capture.lines, (QStringList{"<< номер страницы: 300", "<< Ошибка страницы: 300",
                                                 "Не сошлась CRC, пропускаем...."}));
        }
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=false"));
    }

private:
    QTemporaryDir m_dir;
    QString m_file;
    FirmwareImage *m_image = nullptr;
    FakeLink *m_link = nullptr;
    DeviceUpdater *m_updater = nullptr;
};

QTEST_GUILESS_MAIN(tst_DeviceUpdater)
#include "tst_deviceupdater.moc"
