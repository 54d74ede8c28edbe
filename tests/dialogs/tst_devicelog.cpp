#include "DeviceLog.h"

#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

Q_LOGGING_CATEGORY(lcDiagnostics, "tavrel.test.diagnostics")

class tst_DeviceLog : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void filePathNamesTheDay_data();
    void filePathNamesTheDay();
    void trafficLinesGoToTheFileOnlyWhenOn_data();
    void trafficLinesGoToTheFileOnlyWhenOn();
    void turningTheOptionOffStopsTheCopy();

private:
    QString fileText() const;
    QTemporaryDir m_dir;
};

void tst_DeviceLog::initTestCase() {
    QVERIFY(m_dir.isValid());
}

void tst_DeviceLog::cleanup() {
    qInstallMessageHandler(nullptr);
    DeviceLog::setFileEnabled(false);
    DeviceLog::setDirectory(QString());
    QFile::remove(m_dir.filePath(QStringLiteral("logs/") + QFileInfo(DeviceLog::filePath()).fileName()));
}

QString tst_DeviceLog::fileText() const {
    QFile file(m_dir.filePath(QStringLiteral("logs/") + QFileInfo(DeviceLog::filePath()).fileName()));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

void tst_DeviceLog::filePathNamesTheDay_data() {
    QTest::addColumn<QDate>("day");
    QTest::addColumn<QString>("name");
    QTest::newRow("new year") << QDate(2027, 1, 1) << "device-20270101.log";
    QTest::newRow("end of year") << QDate(2026, 12, 31) << "device-20261231.log";
}

void tst_DeviceLog::filePathNamesTheDay() {
    QFETCH(QDate, day);
    QFETCH(QString, name);
    QVERIFY(DeviceLog::filePath(day).endsWith(QStringLiteral("/Tavrel/Tavrel_micro_cfg/logs/") + name));
    DeviceLog::setDirectory(m_dir.path());
    QCOMPARE(DeviceLog::filePath(day), m_dir.path() + QLatin1Char('/') + name);
}

void tst_DeviceLog::trafficLinesGoToTheFileOnlyWhenOn_data() {
    QTest::addColumn<bool>("toFile");
    QTest::addColumn<bool>("trafficCategory");
    QTest::addColumn<bool>("expectedInFile");
    QTest::newRow("on, traffic") << true << true << true;
    QTest::newRow("on, diagnostics") << true << false << false;
    QTest::newRow("off, traffic") << false << true << false;
    QTest::newRow("off, diagnostics") << false << false << false;
}

void tst_DeviceLog::trafficLinesGoToTheFileOnlyWhenOn() {
    QFETCH(bool, toFile);
    QFETCH(bool, trafficCategory);
    QFETCH(bool, expectedInFile);
    DeviceLog::setDirectory(m_dir.filePath(QStringLiteral("logs")));
    DeviceLog::install(toFile);
    QCOMPARE(DeviceLog::fileEnabled(), toFile);

    const QString line = QStringLiteral("1700000000 a5a5060004000100 ответ");
    if (trafficCategory)
        qDebug().noquote() << line;
    else
        qCDebug(lcDiagnostics).noquote() << line;
    qInstallMessageHandler(nullptr);

    QCOMPARE(fileText().contains(line), expectedInFile);
}

void tst_DeviceLog::turningTheOptionOffStopsTheCopy() {
    DeviceLog::setDirectory(m_dir.filePath(QStringLiteral("logs")));
    DeviceLog::install(true);
    qDebug("first line");
    DeviceLog::setFileEnabled(false);
    qDebug("second line");
    DeviceLog::setFileEnabled(true);
    qDebug("third line");
    qInstallMessageHandler(nullptr);

    QCOMPARE(fileText(), QStringLiteral("first line\nthird line\n"));
}

QTEST_GUILESS_MAIN(tst_DeviceLog)
#include "tst_devicelog.moc"
