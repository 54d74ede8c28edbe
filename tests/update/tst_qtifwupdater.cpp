#include "update/QTIFWUpdater.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

// Each case runs a stand-in maintenance tool: a small shell script written into the test's own folder.
class tst_QTIFWUpdater : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(m_dir->isValid());
    }

    void outcome_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("signal"); // error, warning or complete
        // expected text, or its beginning when it ends with "...", or the components "name/version/size,..."
        QTest::addColumn<QString>("text");

        const auto row = [](const char *name, const QString &script, const char *signal,
                            const QString &text) {
            QTest::newRow(name) << script << QString(signal) << text;
        };
        const QString noUpdates = QStringLiteral("There are currently no updates available.");
        row("no updates, exit 0", "printf '" + noUpdates + "'", "warning", noUpdates);
        row("no updates, exit 1", "printf '" + noUpdates + "'; exit 1", "warning", noUpdates);
        row("no updates on stderr, exit 1", "printf '" + noUpdates + "' >&2; exit 1", "warning", noUpdates);
        row("two components",
            "printf '<updates><update name=\"Tavrel\" version=\"1.0.0.31\" size=\"48213\"/>"
            "<update name=\"Docs\" version=\"2\" size=\"10\"/></updates>'",
            "complete", "Tavrel/1.0.0.31/48213,Docs/2/10");
        row("updates without update children", "printf '<updates/>'", "complete", QString());
        row("no updates inside XML is a warning", "printf '<updates><!-- no updates --></updates>'",
            "warning", "<updates><!-- no updates --></updates>");
        row("garbage answer", "printf 'hello'", "error", "Update information parsing error.\n...");
        row("XML without updates", "printf '<other/>'", "error", "Unrecognized response format");
        row("exit 1 without no updates", "printf 'bad' >&2; exit 1", "error",
            "Update checking tool returns error code 1\nbad");
        row("exit 3", "printf 'network down' >&2; exit 3", "error",
            "Update checking tool returns error code 3\nnetwork down");
        row("crash", "printf 'dying' >&2; kill -SEGV $$", "error",
            "Update checking tool finished unexpectedly.\ndying");
        row("hang is killed", "exec sleep 30", "error", "Updates checking timeout");
    }
    void outcome() {
        QFETCH(QString, script);
        QFETCH(QString, signal);
        QFETCH(QString, text);
        QTIFWUpdater updater;
        updater.setTimeout(300);
        updater.setWorkingDirectory(m_dir->path());
        updater.setMaintenanceToolName(writeTool(script));
        QSignalSpy errors(&updater, &QTIFWUpdater::errorOccurred);
        QSignalSpy warnings(&updater, &QTIFWUpdater::warningOccurred);
        QSignalSpy complete(&updater, &QTIFWUpdater::checkComplete);
        QVERIFY(updater.checkUpdates());
        QVERIFY(updater.isRunning());
        QTRY_COMPARE_WITH_TIMEOUT(errors.count() + warnings.count() + complete.count(), 1, 5000);
        QTRY_VERIFY(!updater.isRunning());
        QTest::qWait(50); // a killed tool's own end must not add a second report
        QCOMPARE(errors.count() + warnings.count() + complete.count(), 1);

        QSignalSpy *spy = signal == "error" ? &errors : signal == "warning" ? &warnings : &complete;
        QCOMPARE(spy->count(), 1);
        if (signal == "complete") {
            const auto list = spy->at(0).at(0).value<QList<ComponentInformation>>();
            QCOMPARE(updater.components(), list);
            QStringList described;
            for (const ComponentInformation &c : list)
                described << c.name + '/' + c.version + '/' + c.size;
            QCOMPARE(described.join(','), text);
        } else if (text.endsWith("...")) {
            QVERIFY2(spy->at(0).at(0).toString().startsWith(text.chopped(3)),
                     qPrintable(spy->at(0).at(0).toString()));
        } else {
            QCOMPARE(spy->at(0).at(0).toString(), text);
        }
    }

    void toolArguments_data() {
        QTest::addColumn<int>("proxy");
        QTest::addColumn<bool>("startUpdater");
        QTest::addColumn<QString>("arguments");
        QTest::newRow("no proxy checks silently") << 0 << false << "--checkupdates --no-proxy";
        QTest::newRow("proxy starts the updater") << 1 << false << "--start-updater --system-proxy";
        QTest::newRow("updater started detached") << 0 << true << "--updater --no-proxy";
    }
    void toolArguments() {
        QFETCH(int, proxy);
        QFETCH(bool, startUpdater);
        QFETCH(QString, arguments);
        QTIFWUpdater updater;
        updater.setProxyType(proxy);
        updater.setWorkingDirectory(m_dir->path());
        // A bare tool name is found in the working directory, where the tool also runs.
        writeTool(QStringLiteral("echo \"$@\" > args.tmp; mv args.tmp args.txt; printf 'no updates'"));
        updater.setMaintenanceToolName(QStringLiteral("tool.sh"));
        QVERIFY(startUpdater ? updater.startUpdater() : updater.checkUpdates());
        QTRY_VERIFY(QFile::exists(m_dir->filePath(QStringLiteral("args.txt"))));
        QCOMPARE(readFile(QStringLiteral("args.txt")), arguments + "\n");
        QTRY_VERIFY(!updater.isRunning());
    }

    void secondCheckRefusedAndKilledCheckSilent() {
        QTIFWUpdater updater;
        updater.setMaintenanceToolName(writeTool(QStringLiteral("exec sleep 30")));
        QSignalSpy errors(&updater, &QTIFWUpdater::errorOccurred);
        QVERIFY(updater.checkUpdates());
        QVERIFY(!updater.checkUpdates()); // one check at a time
        updater.killCheckProcess();
        QVERIFY(!updater.isRunning());
        QTest::qWait(50);
        QCOMPARE(errors.count(), 0);
    }

    void reportTextListsEachComponent() {
        QCOMPARE(
            QTIFWUpdater::reportText({{"Tavrel", "1.0.0.31", "48213"}}),
            QStringLiteral("Количество обновлений: 1\nДоступно обновление.\nНазвание приложения: Tavrel\n"
                           "Версия: 1.0.0.31\nРазмер: 48213\n\n"));
    }

    void networkSettingsReadOrParseErrorWithPlace() {
        const QString name = m_dir->filePath(QStringLiteral("network.xml"));
        QTIFWUpdater::NetworkSettings settings;
        QString message;
        writeFile(
            name,
            "<Network><ProxyType>2</ProxyType><Username>ivan</Username><Password>p</Password></Network>");
        QVERIFY(QTIFWUpdater::readNetworkSettings(name, settings, message));
        QCOMPARE(settings.proxyType, 2);
        QCOMPARE(settings.username, QStringLiteral("ivan"));
        writeFile(name, "<Network><ProxyType>");
        QVERIFY(!QTIFWUpdater::readNetworkSettings(name, settings, message));
        QVERIFY2(message.startsWith("XML file parsing error.\n") &&
                     message.contains("\nFile: " + QFileInfo(name).absoluteFilePath() + "\nLine 1:"),
                 qPrintable(message));
    }

private:
    static void writeFile(const QString &name, const QByteArray &bytes) {
        QFile f(name);
        if (f.open(QIODevice::WriteOnly))
            f.write(bytes);
    }
    QString writeTool(const QString &body) {
        const QString name = m_dir->filePath(QStringLiteral("tool.sh"));
        writeFile(name, "#!/bin/sh\n" + body.toUtf8() + "\n");
        QFile::setPermissions(name, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        return name;
    }
    QString readFile(const QString &name) {
        QFile f(m_dir->filePath(name));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

    QScopedPointer<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(tst_QTIFWUpdater)
#include "tst_qtifwupdater.moc"
