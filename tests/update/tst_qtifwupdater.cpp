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
        QTest::addColumn<QString>("text");   // expected text, or its beginning when it ends with "..."
        QTest::addColumn<int>("components");

        const QString noUpdates = QStringLiteral("There are currently no updates available.");
        QTest::newRow("no updates, exit 0") << "printf '" + noUpdates + "'"
                                            << "warning" << noUpdates << 0;
        QTest::newRow("no updates, exit 1") << "printf '" + noUpdates + "'; exit 1"
                                            << "warning" << noUpdates << 0;
        QTest::newRow("no updates on stderr, exit 1") << "printf '" + noUpdates + "' >&2; exit 1"
                                                      << "warning" << noUpdates << 0;
        const QString two =
            QStringLiteral("<updates><update name=\"Tavrel\" version=\"1.0.0.31\" size=\"48213\"/>"
                           "<update name=\"Docs\" version=\"2\" size=\"10\"/></updates>");
        QTest::newRow("two components") << "printf '" + two + "'"
                                        << "complete" << QString() << 2;
        QTest::newRow("updates without update children")
            << QStringLiteral("printf '<updates/>'") << "complete" << QString() << 0;
        QTest::newRow("no updates inside XML is a warning")
            << QStringLiteral("printf '<updates><!-- no updates --></updates>'") << "warning"
            << "<updates><!-- no updates --></updates>" << 0;
        QTest::newRow("garbage answer") << QStringLiteral("printf 'hello'") << "error"
                                        << "Update information parsing error.\n..." << 0;
        QTest::newRow("XML without updates") << QStringLiteral("printf '<other/>'") << "error"
                                             << "Unrecognized response format" << 0;
        QTest::newRow("exit 1 without no updates") << QStringLiteral("printf 'bad' >&2; exit 1") << "error"
                                                   << "Update checking tool returns error code 1\nbad" << 0;
        QTest::newRow("exit 3") << QStringLiteral("printf 'network down' >&2; exit 3") << "error"
                                << "Update checking tool returns error code 3\nnetwork down" << 0;
        QTest::newRow("crash") << QStringLiteral("printf 'dying' >&2; kill -SEGV $$") << "error"
                               << "Update checking tool finished unexpectedly.\ndying" << 0;
        QTest::newRow("hang is killed") << QStringLiteral("exec sleep 30") << "error"
                                        << "Updates checking timeout" << 0;
    }
    void outcome() {
        QFETCH(QString, script);
        QFETCH(QString, signal);
        QFETCH(QString, text);
        QFETCH(int, components);
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
            QCOMPARE(list.size(), components);
            QCOMPARE(updater.components(), list);
            if (components == 2) {
                QCOMPARE(list.at(0), (ComponentInformation{"Tavrel", "1.0.0.31", "48213"}));
                QCOMPARE(list.at(1), (ComponentInformation{"Docs", "2", "10"}));
            }
        } else if (text.endsWith("...")) {
            QVERIFY2(spy->at(0).at(0).toString().startsWith(text.chopped(3)),
                     qPrintable(spy->at(0).at(0).toString()));
        } else {
            QCOMPARE(spy->at(0).at(0).toString(), text);
        }
    }

    void argumentsByProxyType_data() {
        QTest::addColumn<int>("proxy");
        QTest::addColumn<QString>("arguments");
        QTest::newRow("no proxy checks silently") << 0 << "--checkupdates --no-proxy";
        QTest::newRow("proxy starts the updater") << 1 << "--start-updater --system-proxy";
        QTest::newRow("any other proxy type") << 7 << "--start-updater --system-proxy";
    }
    void argumentsByProxyType() {
        QFETCH(int, proxy);
        QFETCH(QString, arguments);
        QTIFWUpdater updater;
        updater.setProxyType(proxy);
        updater.setWorkingDirectory(m_dir->path());
        // A bare tool name is found in the working directory, where the tool also runs.
        writeTool(QStringLiteral("echo \"$@\" > args.txt; printf 'no updates'"));
        updater.setMaintenanceToolName(QStringLiteral("tool.sh"));
        QSignalSpy warnings(&updater, &QTIFWUpdater::warningOccurred);
        QVERIFY(updater.checkUpdates());
        QVERIFY(warnings.wait(5000));
        QCOMPARE(readFile(QStringLiteral("args.txt")), arguments + "\n");
    }

    void secondCheckRefusedWhileRunning() {
        QTIFWUpdater updater;
        updater.setMaintenanceToolName(writeTool(QStringLiteral("exec sleep 30")));
        QSignalSpy errors(&updater, &QTIFWUpdater::errorOccurred);
        QVERIFY(updater.checkUpdates());
        QVERIFY(!updater.checkUpdates());
        updater.killCheckProcess();
        QVERIFY(!updater.isRunning());
        QTest::qWait(50);
        QCOMPARE(errors.count(), 0);
    }

    void missingToolIsOneError() {
        QTIFWUpdater updater;
        updater.setMaintenanceToolName(m_dir->filePath(QStringLiteral("absent-tool")));
        QSignalSpy errors(&updater, &QTIFWUpdater::errorOccurred);
        QVERIFY(updater.checkUpdates());
        QTRY_COMPARE(errors.count(), 1);
        QVERIFY(errors.at(0).at(0).toString().startsWith("Update checking tool finished unexpectedly.\n"));
        QVERIFY(!updater.isRunning());
    }

    void startUpdaterDetached() {
        QTIFWUpdater updater;
        updater.setWorkingDirectory(m_dir->path());
        updater.setMaintenanceToolName(writeTool(QStringLiteral("echo \"$@\" > updater-args.tmp; "
                                                                "mv updater-args.tmp updater-args.txt")));
        QVERIFY(updater.startUpdater());
        QTRY_VERIFY(QFile::exists(m_dir->filePath(QStringLiteral("updater-args.txt"))));
        QCOMPARE(readFile(QStringLiteral("updater-args.txt")), QStringLiteral("--updater --no-proxy\n"));
    }

    void reportText_data() {
        QTest::addColumn<QList<ComponentInformation>>("components");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << QList<ComponentInformation>() << "Количество обновлений: 0\n";
        QTest::newRow("one")
            << QList<ComponentInformation>{{"Tavrel", "1.0.0.31", "48213"}}
            << "Количество обновлений: 1\nДоступно обновление.\nНазвание приложения: Tavrel\n"
               "Версия: 1.0.0.31\nРазмер: 48213\n\n";
    }
    void reportText() {
        QFETCH(QList<ComponentInformation>, components);
        QFETCH(QString, text);
        QCOMPARE(QTIFWUpdater::reportText(components), text);
    }

    void networkSettings_data() {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<int>("proxy");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("error"); // beginning of the message
        QTest::newRow("proxy with credentials")
            << QByteArray("<Network><ProxyType>2</ProxyType><Username>ivan</Username>"
                          "<Password>p</Password></Network>")
            << true << 2 << "ivan" << QString();
        QTest::newRow("no proxy") << QByteArray("<Network><ProxyType>0</ProxyType></Network>") << true << 0
                                  << QString() << QString();
        QTest::newRow("broken XML") << QByteArray("<Network><ProxyType>") << false << 0 << QString()
                                    << "XML file parsing error.\n";
    }
    void networkSettings() {
        QFETCH(QByteArray, xml);
        QFETCH(bool, ok);
        QFETCH(int, proxy);
        QFETCH(QString, user);
        QFETCH(QString, error);
        const QString name = m_dir->filePath(QStringLiteral("network.xml"));
        QFile f(name);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(xml);
        f.close();
        QTIFWUpdater::NetworkSettings settings;
        QString message;
        QCOMPARE(QTIFWUpdater::readNetworkSettings(name, settings, message), ok);
        if (ok) {
            QCOMPARE(settings.proxyType, proxy);
            QCOMPARE(settings.username, user);
        } else {
            QVERIFY2(message.startsWith(error), qPrintable(message));
            QVERIFY2(message.contains("\nFile: " + QFileInfo(name).absoluteFilePath() + "\nLine 1:"),
                     qPrintable(message));
        }
    }

    void missingNetworkSettingsFails() {
        QTIFWUpdater::NetworkSettings settings;
        QString message;
        QVERIFY(!QTIFWUpdater::readNetworkSettings(m_dir->filePath(QStringLiteral("network.xml")), settings,
                                                   message));
        QVERIFY(!message.isEmpty());
    }

private:
    QString writeTool(const QString &body) {
        const QString name = m_dir->filePath(QStringLiteral("tool.sh"));
        QFile f(name);
        if (!f.open(QIODevice::WriteOnly))
            return QString();
        f.write("#!/bin/sh\n" + body.toUtf8() + "\n");
        f.close();
        f.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
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
