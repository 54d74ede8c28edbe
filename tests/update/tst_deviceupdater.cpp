#include "cli/FirmwareCommands.h"
#include "protocol/SessionController.h"
#include "tests/support/FakeLink.h"
#include "tests/support/LogCapture.h"
#include "tests/update/BskBuilder.h"
#include "tools/devsim/BootLoader.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"
#include "update/UpdateCrc.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextStream>
#include <QtTest>

using namespace UpdateChannel;
using Chunks = QList<QByteArray>;

// Every page and frame is logged; the transfers send hundreds.
static const QString Quiet = QStringLiteral("tavrel.update.debug=false\ndefault.debug=false");

static BskBuilder make(int pages, int builds = 1, int hardware = 1, int written = -1) {
    BskBuilder b;
    b.pages = pages;
    b.builds = QVector<quint16>(builds, 17);
    b.hardware = QVector<quint16>(hardware, 0x1203);
    b.pagesWritten = written;
    return b;
}

static QByteArray message(quint8 kind, int page, quint8 major = 3, quint16 middle = 9, quint8 build = 17,
                          quint16 hardware = 0x1203) {
    return encodeMessage(Message{kind, hardware, middle, build, major, quint16(page)});
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
        QLoggingCategory::setFilterRules(Quiet);
        QVERIFY(m_dir.isValid());
        m_file = m_dir.filePath(QStringLiteral("full.bsk"));
        QVERIFY(BskBuilder::write(m_file, make(512).build()));
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
            QCoreApplication::processEvents(); // its stream's next turn
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
        QLoggingCategory::setFilterRules(Quiet);
    }

    void load_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("listsRead"); // the checks passed as far as the version lists
        QTest::addColumn<int>("pagesStored");
        QTest::addColumn<QStringList>("log"); // the diagnostics, when given; "%1" stands for the file name
        const auto row = [](const char *name, const QByteArray &file, int code, bool listsRead,
                            int pagesStored, const QStringList &log = {}) {
            QTest::newRow(name) << file << code << listsRead << pagesStored << log;
        };
        const QByteArray good = make(2).build();
        BskBuilder filx, tenth, page512, crc;
        filx.magic = QByteArray("BOOT2FILX\0", 10);
        tenth.magic = "BOOT2FILE!";
        page512.pageSize = 512;
        crc.crc = 0;
        row("two pages load", good, 0, true, 2);
        row("no pages load with an empty store", make(0).build(), 0, true, 0);
        row("20 builds no hardware accepted", make(2, 20, 0).build(), 0, true, 2);
        row("21 builds is not firmware", make(2, 21, 0).build(), 3, false, 0);
        // No lists: the size test is against S + 281 = 281 bytes, whatever the page count.
        row("size exactly S+281 rejected before the lists", make(2, 0, 0).build().left(281), 3, false, 0);
        // One byte more passes the size test; the skip to the first page then fails.
        row("size S+282 passes the size test", make(2, 0, 0).build().left(282), 3, true, 0);
        row("BOOT2FILX is not BOOT2FILE", filx.build(), 4, false, 0, {"Открыт файл %1"});
        row("tenth magic byte compared", tenth.build(), 4, false, 0);
        row("25-byte header", good.left(25), 3, false, 0);
        // Bad magic in a short file: the length check comes first.
        row("short file with bad magic", filx.build().left(20), 3, false, 0);
        row("page size 512", page512.build(), 3, false, 0);
        // 128 hardware entries end the file at 282 bytes, right after the lists.
        row("checksum word missing is code 5", make(2, 0, 128).head().left(282), 5, true, 0);
        row("checksum value is not compared", crc.build(), 0, true, 2);
        row("short last page keeps the complete ones", make(3).build().left(520 * 3 + 519), 3, true, 2);
        row("missing pages", make(5, 1, 1, 3).build(), 3, true, 3);
        // 26 header bytes, one build, one hardware version and the checksum word: 32, so 488 are skipped.
        row("second page missing", make(2, 1, 1, 1).build(), 3, true, 1,
            {"Открыт файл %1", "Читаем страницы: 2", "Хвост: 488", "Страница: 1 из 2", "Неполная страница"});
        row("page count above 1024 refused", make(1025, 1, 1, 1).build(), 3, true, 0);
        row("1024 pages fill the store", make(1024).build(), 0, true, 1024);
        // 300 hardware entries end beyond offset 520: the skip would go backwards.
        row("negative skip to the first page", make(2, 0, 300).build() + QByteArray(2000, '\0'), 3, true, 0);
    }
    void load() {
        QFETCH(QByteArray, file);
        QFETCH(int, code);
        QFETCH(bool, listsRead);
        QFETCH(int, pagesStored);
        QFETCH(QStringList, log);
        FirmwareImage image;
        QSignalSpy cleared(&image, &FirmwareImage::versionsCleared);
        const QString name = write(file);
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=true"));
        LogCapture capture("tavrel.update", QStringLiteral("^(.*)$"));
        QCOMPARE(int(image.load(name)), code);
        QLoggingCategory::setFilterRules(Quiet);
        if (!log.isEmpty())
            QCOMPARE(capture.lines, log.replaceInStrings(QStringLiteral("%1"), name));
        QCOMPARE(image.isLoaded(), code == 0);
        QCOMPARE(cleared.count(), listsRead ? 1 : 0);
        for (int n = 0; n < pagesStored; ++n)
            QCOMPARE(image.page(n), BskBuilder::pageData(n));
        if (pagesStored < 1024)
            QCOMPARE(image.page(pagesStored), QByteArray(520, '\0'));
        if (code == 0)
            QCOMPARE(image.pageCount(), pagesStored);
    }

    void reloadResetsSkipFlagsAndLists() {
        BskBuilder b;
        b.builds = {17, 18};
        b.hardware = {0x1203, 0xF00A};
        FirmwareImage image;
        image.setSkipFirmwareVersionMatch(true);
        image.setSkipHardwareVersionLookup(true);
        QSignalSpy lines(&image, &FirmwareImage::versionLineAdded);
        QCOMPARE(image.load(write(b.build())), FirmwareImage::Loaded);
        QCOMPARE(image.versionLines(), (QStringList{"3.9.17", "3.9.18", "1.2.0.3", "15.0.0.10"}));
        QCOMPARE(lines.count(), 4);
        QVERIFY(!image.skipFirmwareVersionMatch());
        QVERIFY(!image.skipHardwareVersionLookup());
        // A failed load after a good one leaves no image, and its lists replace the old ones.
        b.builds = {40};
        b.hardware.clear();
        b.pagesWritten = 1;
        QCOMPARE(image.load(write(b.build())), FirmwareImage::NotFirmware);
        QVERIFY(!image.isLoaded());
        QCOMPARE(image.builds(), QVector<quint16>{40});
        QVERIFY(image.hardwareVersions().isEmpty());
        QCOMPARE(image.load(QString()), FirmwareImage::NoFileName);
        QCOMPARE(image.load(m_dir.filePath(QStringLiteral("absent.bsk"))), FirmwareImage::CannotOpen);
    }

    void failureTextsNameFileAndReason() {
        const QStringList reasons{"Не указано имя файла", "Не удалось открыть файл",
                                  "Файл не является прошивкой", "Файл не является прошивкой BOOT2FILE",
                                  "Файл поврежден, или некорректна CRC"};
        for (int code = 1; code <= 5; ++code)
            QCOMPARE(FirmwareImage::failureText(QStringLiteral("a.bsk"), code),
                     "Не удалось загрузить прошивку 'a.bsk'\nПричина: " + reasons.at(code - 1));
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
        const QString name = write(file);
        QString outText, errText;
        QTextStream outStream(&outText), errStream(&errText);
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
        const QString name = write(b.build());

        SessionController session(nullptr);
        QSignalSpy lost(&session, &SessionController::connectionLost);
        auto *link = new FakeLink;
        session.setLinkFactory([link](const SessionController::Settings &) { return link; });
        SessionController::Settings settings;
        settings.identify = false;
        settings.responseIntervalMs = responseMs;
        settings.jobRounds = 1;
        session.connectDevice(settings);
        // Hardware 1.2.0.3, firmware 3.9.deviceBuild, asking again after 50 ms of silence.
        BootLoader loader({0x1203, 3, 9, quint8(deviceBuild), corruptEvery, 50});
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
    QString write(const QByteArray &bytes) {
        const QString name = m_dir.filePath(QStringLiteral("image.bsk"));
        return BskBuilder::write(name, bytes) ? name : QString();
    }

    QTemporaryDir m_dir;
    QString m_file;
    FirmwareImage *m_image = nullptr;
    FakeLink *m_link = nullptr;
    DeviceUpdater *m_updater = nullptr;
};

QTEST_GUILESS_MAIN(tst_DeviceUpdater)
#include "tst_deviceupdater.moc"
