#include "Devices/ConfigurationFile.h"
#include "Devices/ConfigurationOverrides.h"
#include "tests/support/ConfigurationSample.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using kd::ConfigurationFile;

namespace {
const QString kGolden = QStringLiteral(TAVREL_TEST_DATA "/devices/sample-configuration.json");

QByteArray readAll(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool writeAll(const QString &path, const QByteArray &data) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(data) == data.size();
}
} // namespace

class tst_ConfigurationFile : public QObject {
    Q_OBJECT

private slots:
    void save_replacesAnExistingFileWithTheIndentedDocument() {
        QTemporaryDir dir;
        const QString path = dir.filePath("out.json");
        QVERIFY(writeAll(path, QByteArray(100000, 'x')));
        // What a save killed midway leaves behind goes; a save still running and the user's files stay
        // (QSaveFile's six random letters mix cases).
        for (const char *name : {"out.json.AbCdEf", "out.json.XyZabc", "out.json.backup", "out.json.bak"})
            QVERIFY(writeAll(dir.filePath(name), "{"));
        for (const char *name : {"out.json.AbCdEf", "out.json.backup"}) {
            QFile old(dir.filePath(name));
            QVERIFY(old.open(QIODevice::ReadWrite) &&
                    old.setFileTime(QDateTime::currentDateTime().addSecs(-3600),
                                    QFileDevice::FileModificationTime));
        }
        VantorConfiguration cfg;
        fillSample(cfg);

        const ConfigurationFile::SaveResult r = ConfigurationFile::save(path, cfg);

        QVERIFY2(r.ok(), qPrintable(r.errorString));
        QCOMPARE(QString::fromUtf8(readAll(path)), QString::fromUtf8(readAll(kGolden)));
        QStringList left = QDir(dir.path()).entryList(QDir::Files);
        left.sort();
        QCOMPARE(left, (QStringList{"out.json", "out.json.XyZabc", "out.json.backup", "out.json.bak"}));
    }

    // A save that cannot start says why in the user's words, naming the place.
    void save_cannotOpenSaysWhy_data() {
        QTest::addColumn<QString>("target"); // under the temporary folder
        QTest::addColumn<QString>("reason"); // %1: the temporary folder
        QTest::newRow("missing folder") << "no/such/out.json"
                                        << "папка %1/no/such не существует";
        QTest::newRow("a folder as the file") << "sub"
                                              << "%1/sub это папка, а не файл";
        QTest::newRow("a file as the folder") << "plain/out.json"
                                              << "%1/plain не папка";
    }

    void save_cannotOpenSaysWhy() {
        QFETCH(QString, target);
        QFETCH(QString, reason);
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("sub"));
        QFile plain(dir.filePath("plain"));
        QVERIFY(plain.open(QIODevice::WriteOnly));
        plain.close();
        VantorConfiguration cfg;
        const ConfigurationFile::SaveResult r = ConfigurationFile::save(dir.filePath(target), cfg);
        QCOMPARE(r.status, ConfigurationFile::SaveResult::CannotOpen);
        QCOMPARE(r.errorString, reason.arg(dir.path()));
    }

    void load_goldenFileRestoresAllButTheDeliberateLosses() {
        VantorConfiguration cfg;
        cfg.deviceInfo()->setIMEI(QStringLiteral("000000000000000"));
        cfg.navigation()->value()->setFaultSpeed(33);

        const ConfigurationFile::LoadResult r = ConfigurationFile::load(kGolden, cfg);

        QVERIFY2(r.ok(), qPrintable(r.errorString));
        VantorConfiguration expected;
        fillSample(expected);
        expected.deviceInfo()->setIMEI(QStringLiteral("000000000000000"));
        expected.navigation()->value()->setFaultSpeed(33);
        for (int i = 0; i < 2; ++i) {
            expected.gsm()->element(i)->setForbidden(0);
            expected.gsm()->element(i)->setTimetableHi(0);
            expected.gsm()->element(i)->setTimetableLow(0);
        }
        QCOMPARE(QString::fromUtf8(ConfigurationFile::toJson(cfg)),
                 QString::fromUtf8(ConfigurationFile::toJson(expected)));
    }

    void load_failures_data() {
        QTest::addColumn<QByteArray>("content"); // empty: no file at all; "/": a folder in its place
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error"); // the start of the error text; a parse error's in full
        const int parse = ConfigurationFile::LoadResult::ParseError;

        QTest::newRow("missing file") << QByteArray() << int(ConfigurationFile::LoadResult::CannotOpen) << "";
        QTest::newRow("folder") << QByteArray("/") << int(ConfigurationFile::LoadResult::CannotOpen)
                                << "это папка";
        // Positions count characters, not bytes, from 1, up to where the parser stopped.
        QTest::newRow("not JSON") << QByteArray("name = Vantor") << parse
                                  << "строка 1, столбец 2: недопустимое значение";
        QTest::newRow("cut JSON") << QByteArray("{\"имя\":\"Vantor\",\n  ") << parse
                                  << "строка 2, столбец 3: объект не закрыт";
        QTest::newRow("array instead of an object")
            << QByteArray("[1, 2]") << parse << "строка 1, столбец 1: документ не объект JSON";
        QTest::newRow("empty object loads")
            << QByteArray("{}") << int(ConfigurationFile::LoadResult::Ok) << "";
    }

    void load_failures() {
        QFETCH(QByteArray, content);
        QFETCH(int, status);
        QFETCH(QString, error);
        QTemporaryDir dir;
        const QString path = dir.filePath("in.json");
        if (content == "/")
            QVERIFY(QDir(dir.path()).mkdir("in.json"));
        else if (!content.isEmpty())
            QVERIFY(writeAll(path, content));
        VantorConfiguration cfg;
        fillSample(cfg);
        const QByteArray before = ConfigurationFile::toJson(cfg);

        const ConfigurationFile::LoadResult r = ConfigurationFile::load(path, cfg);

        QCOMPARE(int(r.status), status);
        if (status == ConfigurationFile::LoadResult::Ok)
            return;
        QVERIFY(r.errorString.startsWith(error) && !r.errorString.isEmpty());
        if (status == ConfigurationFile::LoadResult::ParseError)
            QCOMPARE(r.errorString, error);
        QCOMPARE(ConfigurationFile::toJson(cfg), before); // a failed load changes nothing
    }

    // Each row: a spreadsheet, then the template of OverrideTemplate with IMEI 1's row put in (compact JSON),
    // or "!" and the reason when the table or a value is refused.
    void overrides_data() {
        QTest::addColumn<QByteArray>("csv");
        QTest::addColumn<QString>("expected");
        QTest::newRow("nested keys, dotted root key, IMEI column anywhere")
            << QByteArray("Server[1].server,IMEI,gsm[0].gprs 1.apn,hardver.serial\n"
                          "srv.example.ru,1,internet.mts.ru,77\n2.2.2.2,2,x,1\n")
            << R"({"Server":[{"server":"a"},{"server":"srv.example.ru"}],"SystemParameters":{"gsens":5},)"
               R"("gsm":[{"gprs 1":{"apn":"internet.mts.ru","apn_name":""}}],"hardver":1,"hardver.serial":77})";
        QTest::newRow("semicolons, quotes, BOM, CRLF, an empty cell keeps the template's value")
            << QByteArray("\xEF\xBB\xBFimei;SystemParameters.gsens;gsm[0].gprs 1.apn_name\r\n"
                          "1;;\"a;\"\"b\"\"\"\r\n")
            << R"({"Server":[{"server":"a"},{"server":"b"}],"SystemParameters":{"gsens":5},)"
               R"("gsm":[{"gprs 1":{"apn":"","apn_name":"a;\"b\""}}],"hardver":1,"hardver.serial":5})";
        QTest::newRow("text where the template has a number")
            << QByteArray("IMEI,SystemParameters.gsens\n1,abc\n")
            << "!SystemParameters.gsens: \"abc\" не подходит, в шаблоне здесь число";
        QTest::newRow("an element the template lacks")
            << QByteArray("IMEI,Server[5].server\n1,x\n") << "!Server[5].server: в шаблоне нет элемента [5]";
        QTest::newRow("a key the template lacks") << QByteArray("IMEI,navigation.x\n1,x\n")
                                                  << "!navigation.x: в шаблоне нет ключа \"navigation.x\"";
        QTest::newRow("no IMEI column") << QByteArray("a,b\n1,2\n") << "!в первой строке нет столбца IMEI";
        QTest::newRow("short row") << QByteArray("IMEI,a\n\n1\n") << "!строка 3: 1 столбцов вместо 2";
        QTest::newRow("IMEI twice") << QByteArray("IMEI,a\n1,2\n1,3\n") << "!строка 3: IMEI 1 уже был";
    }

    void overrides() {
        QFETCH(QByteArray, csv);
        QFETCH(QString, expected);
        const QJsonObject templateRoot =
            QJsonDocument::fromJson(R"({"hardver.serial": 5, "hardver": 1, "SystemParameters": {"gsens": 5},
                "gsm": [{"gprs 1": {"apn": "", "apn_name": ""}}], "Server": [{"server": "a"}, {"server": "b"}]})")
                .object();
        kd::ConfigurationOverrides overrides;
        QString error;
        QJsonObject root = templateRoot;
        const bool parsed = kd::ConfigurationOverrides::parse(csv, &overrides, &error);
        if (parsed && overrides.apply(QStringLiteral("1"), &root, &error)) {
            QCOMPARE(QString::fromUtf8(QJsonDocument(root).toJson(QJsonDocument::Compact)), expected);
            QVERIFY(overrides.check(templateRoot, &error));
            QVERIFY(!overrides.contains("3"));
        } else {
            QCOMPARE("!" + error, expected);
            // A bad value is found by the check of the whole table before any device is touched.
            QVERIFY(!parsed || !overrides.check(templateRoot, &error));
        }
    }
};

QTEST_GUILESS_MAIN(tst_ConfigurationFile)
#include "tst_configurationfile.moc"
