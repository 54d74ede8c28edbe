#include "tests/support/LogCapture.h"
#include "tests/update/BskBuilder.h"
#include "update/FirmwareImage.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

static BskBuilder make(int pages, int builds = 1, int hardware = 1, int written = -1) {
    BskBuilder b;
    b.pages = pages;
    b.builds = QVector<quint16>(builds, 17);
    b.hardware = QVector<quint16>(hardware, 0x1203);
    b.pagesWritten = written;
    return b;
}

class tst_FirmwareImage : public QObject {
    Q_OBJECT
private slots:
    void init() { QVERIFY(m_dir.isValid()); }

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
        QLoggingCategory::setFilterRules(QString());
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

private:
    QString write(const QByteArray &bytes) {
        const QString name = m_dir.filePath(QStringLiteral("image.bsk"));
        return BskBuilder::write(name, bytes) ? name : QString();
    }

    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(tst_FirmwareImage)
#include "tst_firmwareimage.moc"
