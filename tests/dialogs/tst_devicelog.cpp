#include "app/DeviceLog.h"

#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

Q_LOGGING_CATEGORY(lcDiagnostics, "tavrel.test.diagnostics")

class tst_DeviceLog : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void cleanup() {
        qInstallMessageHandler(nullptr);
        DeviceLog::setFileEnabled(false);
        DeviceLog::setDirectory(QString());
        QFile::remove(logFile());
    }

    void filePathNamesTheDay() {
        const QDate day(2027, 1, 1);
        QVERIFY(DeviceLog::filePath(day).endsWith(
            QStringLiteral("/Tavrel/Tavrel_micro_cfg/logs/device-20270101.log")));
        DeviceLog::setDirectory(m_dir.path());
        QCOMPARE(DeviceLog::filePath(day), m_dir.path() + QStringLiteral("/device-20270101.log"));
    }

    void trafficLinesGoToTheFileOnlyWhenOn_data() {
        QTest::addColumn<bool>("toFile");
        QTest::addColumn<bool>("trafficCategory");
        QTest::addColumn<bool>("expectedInFile");
        QTest::newRow("on, traffic") << true << true << true;
        QTest::newRow("on, diagnostics") << true << false << false;
        QTest::newRow("off, traffic") << false << true << false;
    }

    void trafficLinesGoToTheFileOnlyWhenOn() {
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

    void turningTheOptionOffStopsTheCopy() {
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

private:
    QString logFile() const {
        return m_dir.filePath(QStringLiteral("logs/") + QFileInfo(DeviceLog::filePath()).fileName());
    }

    QString fileText() const {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(tst_DeviceLog)
#include "tst_devicelog.moc"
