#include "BskBuilder.h"
#include "update/FirmwareImage.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

class tst_FirmwareImage : public QObject {
    Q_OBJECT
private slots:
    void init() { QVERIFY(m_dir.isValid()); }

    void load_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("listsRead"); // the checks passed as far as the version lists
        QTest::addColumn<int>("pagesStored");

        BskBuilder b;
        QTest::newRow("two pages load") << b.build() << 0 << true << 2;
        BskBuilder noPages;
        noPages.pages = 0;
        QTest::newRow("no pages load with an empty store") << noPages.build() << 0 << true << 0;
        BskBuilder s20;
        s20.builds = QVector<quint16>(20, 17);
        s20.hardware.clear();
        QTest::newRow("20 builds no hardware accepted") << s20.build() << 0 << true << 2;
        BskBuilder s21 = s20;
        s21.builds.append(18);
        QTest::newRow("21 builds is not firmware") << s21.build() << 3 << false << 0;

        // No lists: the size test is against S + 281 = 281 bytes, whatever the page count.
        BskBuilder bare;
        bare.builds.clear();
        bare.hardware.clear();
        const QByteArray bareFile = bare.build();
        QTest::newRow("size exactly S+281 rejected before the lists")
            << bareFile.left(281) << 3 << false << 0;
        // One byte more passes the size test; the skip to the first page then fails.
        QTest::newRow("size S+282 passes the size test") << bareFile.left(282) << 3 << true << 0;

        BskBuilder wrongMagic;
        wrongMagic.magic = QByteArray("BOOT2FILX\0", 10);
        QTest::newRow("BOOT2FILX is not BOOT2FILE") << wrongMagic.build() << 4 << false << 0;
        BskBuilder noZero;
        noZero.magic = QByteArray("BOOT2FILE!", 10);
        QTest::newRow("tenth magic byte compared") << noZero.build() << 4 << false << 0;
        QTest::newRow("25-byte header") << b.build().left(25) << 3 << false << 0;
        QTest::newRow("empty file") << QByteArray() << 3 << false << 0;
        // Bad magic in a short file: the length check comes first.
        QTest::newRow("short file with bad magic") << wrongMagic.build().left(20) << 3 << false << 0;
        BskBuilder page512;
        page512.pageSize = 512;
        QTest::newRow("page size 512") << page512.build() << 3 << false << 0;

        // 128 hardware entries end the file at 282 bytes, right after the lists.
        BskBuilder longLists;
        longLists.builds.clear();
        longLists.hardware = QVector<quint16>(128, 0x1203);
        QTest::newRow("checksum word missing is code 5") << longLists.head().left(282) << 5 << true << 0;
        QTest::newRow("checksum word half present is code 5") << longLists.head().left(283) << 5 << true << 0;
        BskBuilder cutLists;
        cutLists.builds.clear();
        cutLists.hardware = QVector<quint16>(200, 0x1203);
        QTest::newRow("hardware entry cut short") << cutLists.head().left(301) << 3 << true << 0;
        BskBuilder crcValue;
        crcValue.crc = 0x0000;
        QTest::newRow("checksum value is not compared") << crcValue.build() << 0 << true << 2;

        BskBuilder shortPage;
        shortPage.pages = 3;
        QTest::newRow("short last page keeps the complete ones")
            << shortPage.build().left(520 * 3 + 519) << 3 << true << 2;
        BskBuilder missingPages;
        missingPages.pages = 5;
        missingPages.pagesWritten = 3;
        QTest::newRow("missing pages") << missingPages.build() << 3 << true << 3;
        BskBuilder tooMany;
        tooMany.pages = 1025;
        tooMany.pagesWritten = 1;
        QTest::newRow("page count above 1024 refused") << tooMany.build() << 3 << true << 0;
        BskBuilder fullStore;
        fullStore.pages = 1024;
        QTest::newRow("1024 pages fill the store") << fullStore.build() << 0 << true << 1024;
        // 300 hardware entries end beyond offset 520: the skip would go backwards.
        BskBuilder backwards;
        backwards.builds.clear();
        backwards.hardware = QVector<quint16>(300, 0x1203);
        QTest::newRow("lists past the header block")
            << backwards.build() + QByteArray(2000, '\0') << 3 << true << 0;
        BskBuilder tail;
        QTest::newRow("bytes after the last page ignored")
            << tail.build() + QByteArray(100, 'z') << 0 << true << 2;
    }
    void load() {
        QFETCH(QByteArray, file);
        QFETCH(int, code);
        QFETCH(bool, listsRead);
        QFETCH(int, pagesStored);
        const QString name = m_dir.filePath(QStringLiteral("image.bsk"));
        QVERIFY(BskBuilder::write(name, file));
        FirmwareImage image;
        QSignalSpy cleared(&image, &FirmwareImage::versionsCleared);
        QCOMPARE(int(image.load(name)), code);
        QCOMPARE(image.isLoaded(), code == 0);
        QCOMPARE(cleared.count(), listsRead ? 1 : 0);
        for (int n = 0; n < pagesStored; ++n)
            QCOMPARE(image.page(n), BskBuilder::pageData(n));
        if (pagesStored < 1024)
            QCOMPARE(image.page(pagesStored), QByteArray(520, '\0'));
        if (code == 0)
            QCOMPARE(image.pageCount(), pagesStored);
    }

    void emptyNameAndMissingFile() {
        FirmwareImage image;
        QCOMPARE(image.load(QString()), FirmwareImage::NoFileName);
        QCOMPARE(image.load(m_dir.filePath(QStringLiteral("absent.bsk"))), FirmwareImage::CannotOpen);
        QVERIFY(!image.isLoaded());
    }

    void versionTextsAndFields() {
        BskBuilder b;
        b.builds = {17, 18};
        b.hardware = {0x1203, 0xF00A};
        b.kept = 0x42;
        b.versionNumber = 1234;
        const QString name = m_dir.filePath(QStringLiteral("v.bsk"));
        QVERIFY(BskBuilder::write(name, b.build()));
        FirmwareImage image;
        QSignalSpy lines(&image, &FirmwareImage::versionLineAdded);
        QSignalSpy accepted(&image, &FirmwareImage::fileNameAccepted);
        QCOMPARE(image.load(name), FirmwareImage::Loaded);
        const QStringList expected{"3.9.17", "3.9.18", "1.2.0.3", "15.0.0.10"};
        QCOMPARE(image.versionLines(), expected);
        QCOMPARE(lines.count(), 4);
        QCOMPARE(lines.at(3).at(0).toString(), QStringLiteral("15.0.0.10"));
        QCOMPARE(accepted.count(), 1);
        QCOMPARE(image.fileName(), name);
        QCOMPARE(image.builds(), (QVector<quint16>{17, 18}));
        QCOMPARE(image.hardwareVersions(), (QVector<quint16>{0x1203, 0xF00A}));
        QCOMPARE(image.major(), quint8(3));
        QCOMPARE(image.middle(), quint16(9));
        QCOMPARE(image.keptByte(), quint8(0x42));
        QCOMPARE(image.versionNumber(), quint16(1234));
    }

    void successfulLoadClearsSkipFlags() {
        const QString name = m_dir.filePath(QStringLiteral("f.bsk"));
        QVERIFY(BskBuilder::write(name, BskBuilder().build()));
        FirmwareImage image;
        image.setSkipFirmwareVersionMatch(true);
        image.setSkipHardwareVersionLookup(true);
        QCOMPARE(image.load(name), FirmwareImage::Loaded);
        QVERIFY(!image.skipFirmwareVersionMatch());
        QVERIFY(!image.skipHardwareVersionLookup());
    }

    void failedLoadAfterSuccessIsNotLoaded() {
        const QString good = m_dir.filePath(QStringLiteral("good.bsk"));
        const QString bad = m_dir.filePath(QStringLiteral("bad.bsk"));
        QVERIFY(BskBuilder::write(good, BskBuilder().build()));
        QVERIFY(BskBuilder::write(bad, BskBuilder().build().left(25)));
        FirmwareImage image;
        QCOMPARE(image.load(good), FirmwareImage::Loaded);
        QCOMPARE(image.load(bad), FirmwareImage::NotFirmware);
        QVERIFY(!image.isLoaded());
        // The lists are emptied at the start of each load that gets that far.
        BskBuilder other;
        other.builds = {40};
        other.hardware.clear();
        other.pages = 3;
        other.pagesWritten = 1;
        QVERIFY(BskBuilder::write(bad, other.build()));
        QCOMPARE(image.load(bad), FirmwareImage::NotFirmware);
        QCOMPARE(image.builds(), QVector<quint16>{40});
        QVERIFY(image.hardwareVersions().isEmpty());
    }

    void failureTexts_data() {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("reason");
        QTest::newRow("1") << 1 << QStringLiteral("Не указано имя файла");
        QTest::newRow("2") << 2 << QStringLiteral("Не удалось открыть файл");
        QTest::newRow("3") << 3 << QStringLiteral("Файл не является прошивкой");
        QTest::newRow("4") << 4 << QStringLiteral("Файл не является прошивкой BOOT2FILE");
        QTest::newRow("5") << 5 << QStringLiteral("Файл поврежден, или некорректна CRC");
        QTest::newRow("0 has none") << 0 << QString();
    }
    void failureTexts() {
        QFETCH(int, code);
        QFETCH(QString, reason);
        QCOMPARE(FirmwareImage::reasonText(code), reason);
        QCOMPARE(FirmwareImage::failureText(QStringLiteral("a.bsk"), code),
                 QStringLiteral("Не удалось загрузить прошивку 'a.bsk'\nПричина: ") + reason);
    }

    void logLines_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("lines"); // "%1" stands for the file name
        BskBuilder two;
        // 26 header bytes, one build, one hardware version and the checksum word: 32, so 488 are skipped.
        QTest::newRow("two pages") << two.build()
                                   << QStringList{"Открыт файл %1", "Читаем страницы: 2", "Хвост: 488",
                                                  "Страница: 1 из 2", "Страница: 2 из 2"};
        BskBuilder cut;
        cut.pages = 2;
        cut.pagesWritten = 1;
        QTest::newRow("second page missing")
            << cut.build()
            << QStringList{"Открыт файл %1", "Читаем страницы: 2", "Хвост: 488", "Страница: 1 из 2",
                           "Неполная страница"};
        BskBuilder magic;
        magic.magic = QByteArray("BOOT2FILX\0", 10);
        QTest::newRow("not BOOT2FILE") << magic.build() << QStringList{"Открыт файл %1"};
    }
    void logLines() {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, lines);
        const QString name = m_dir.filePath(QStringLiteral("log.bsk"));
        QVERIFY(BskBuilder::write(name, file));
        QLoggingCategory::setFilterRules(QStringLiteral("tavrel.update.debug=true"));
        s_lines.clear();
        const QtMessageHandler previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context, const QString &text) {
                if (qstrcmp(context.category, "tavrel.update") == 0)
                    s_lines << text;
            });
        FirmwareImage image;
        image.load(name);
        qInstallMessageHandler(previous);
        QLoggingCategory::setFilterRules(QString());
        for (QString &line : lines)
            line = line.arg(name);
        QCOMPARE(s_lines, lines);
    }

private:
    static QStringList s_lines;
    QTemporaryDir m_dir;
};

QStringList tst_FirmwareImage::s_lines;

QTEST_GUILESS_MAIN(tst_FirmwareImage)
#include "tst_firmwareimage.moc"
