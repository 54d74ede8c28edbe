#include "Devices/ConfigurationFile.h"
#include "tests/devices/ConfigurationSample.h"

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
        VantorConfiguration cfg;
        fillSample(cfg);

        const ConfigurationFile::SaveResult r = ConfigurationFile::save(path, cfg);

        QVERIFY2(r.ok(), qPrintable(r.errorString));
        QCOMPARE(QString::fromUtf8(readAll(path)), QString::fromUtf8(readAll(kGolden)));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{"out.json"});
    }

    void save_intoAMissingFolderCannotOpen() {
        QTemporaryDir dir;
        VantorConfiguration cfg;
        const ConfigurationFile::SaveResult r =
            ConfigurationFile::save(dir.filePath("no/such/dir/out.json"), cfg);
        QCOMPARE(r.status, ConfigurationFile::SaveResult::CannotOpen);
        QVERIFY(!r.errorString.isEmpty());
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
        QTest::addColumn<QByteArray>("content"); // empty: no file at all
        QTest::addColumn<int>("status");

        QTest::newRow("missing file") << QByteArray() << int(ConfigurationFile::LoadResult::CannotOpen);
        QTest::newRow("not JSON") << QByteArray("name = Vantor")
                                  << int(ConfigurationFile::LoadResult::ParseError);
        QTest::newRow("cut JSON") << QByteArray(R"({"name":"Vantor",)")
                                  << int(ConfigurationFile::LoadResult::ParseError);
        QTest::newRow("array instead of an object")
            << QByteArray("[1, 2]") << int(ConfigurationFile::LoadResult::ParseError);
        QTest::newRow("empty object loads") << QByteArray("{}") << int(ConfigurationFile::LoadResult::Ok);
    }

    void load_failures() {
        QFETCH(QByteArray, content);
        QFETCH(int, status);
        QTemporaryDir dir;
        const QString path = dir.filePath("in.json");
        if (!content.isEmpty())
            QVERIFY(writeAll(path, content));
        VantorConfiguration cfg;
        fillSample(cfg);
        const QByteArray before = ConfigurationFile::toJson(cfg);

        const ConfigurationFile::LoadResult r = ConfigurationFile::load(path, cfg);

        QCOMPARE(int(r.status), status);
        if (status == ConfigurationFile::LoadResult::Ok)
            return;
        QVERIFY(!r.errorString.isEmpty());
        QCOMPARE(ConfigurationFile::toJson(cfg), before); // a failed load changes nothing
    }
};

QTEST_GUILESS_MAIN(tst_ConfigurationFile)
#include "tst_configurationfile.moc"
