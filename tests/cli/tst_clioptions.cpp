#include "cli/CliOptions.h"
#include "cli/PortList.h"
#include "cli/TrafficLogFile.h"

#include <QtTest>

class tst_CliOptions : public QObject {
    Q_OBJECT

private slots:
    void parse_validLines_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("command");
        QTest::addColumn<QString>("check"); // field=value pairs joined by ';'
        using C = CliOptions::Command;
        // The deadline defaults per command unless --timeout gives one.
        QTest::newRow("options after the command")
            << QStringList{"info", "--json", "--port", "/dev/pts/3"} << int(C::Info)
            << "port=/dev/pts/3;json=1;deadline=15000;device=1";
        QTest::newRow("inline values") << QStringList{"--timeout=2.5", "--password=0", "reset"}
                                       << int(C::Reset) << "timeout=2500;deadline=2500;password=0";
        QTest::newRow("largest password")
            << QStringList{"--password", "4294967295", "info"} << int(C::Info) << "password=4294967295";
        QTest::newRow("remote with ipv6-like host")
            << QStringList{"--remote", "::1:7000", "--imei", "86307", "info"} << int(C::Info)
            << "host=::1;remotePort=7000;imei=86307";
        QTest::newRow("read output") << QStringList{"read", "--output", "a.json"} << int(C::Read)
                                     << "file=a.json;deadline=60000";
        QTest::newRow("flash") << QStringList{"flash", "f.bsk"} << int(C::Flash)
                               << "file=f.bsk;deadline=120000;device=1";
        QTest::newRow("decode joins its arguments")
            << QStringList{"decode", "a5", "a5"} << int(C::Decode) << "hex=a5 a5;device=0";
        QTest::newRow("hex after double dash")
            << QStringList{"decode", "--", "-a5"} << int(C::Decode) << "hex=-a5";
        QTest::newRow("set-password")
            << QStringList{"set-password", "77"} << int(C::SetPassword) << "newPassword=77";
        QTest::newRow("watch raw") << QStringList{"telemetry", "--watch", "--raw"} << int(C::Telemetry)
                                   << "watch=1;raw=1;device=1";
        QTest::newRow("ports") << QStringList{"ports"} << int(C::Ports) << "device=0";
        QTest::newRow("fwinfo") << QStringList{"fwinfo", "f.bsk"} << int(C::FwInfo) << "device=0";
        QTest::newRow("password file") << QStringList{"--password-file", "p.txt", "info"} << int(C::Info)
                                       << "passwordFile=p.txt;password=none";
        QTest::newRow("write safely")
            << QStringList{"write", "a.json", "--dry-run", "--keep-device-values", "--force"} << int(C::Write)
            << "file=a.json;flags=1101;device=1";
        QTest::newRow("restore") << QStringList{"restore", "s.json", "--no-verify"} << int(C::Restore)
                                 << "file=s.json;flags=0010;device=1";
        QTest::newRow("diff of files")
            << QStringList{"diff", "a.json", "b.json"} << int(C::Diff) << "diff=a.json b.json;device=0";
        QTest::newRow("diff with the device")
            << QStringList{"diff", "s.json", "device"} << int(C::Diff) << "diff=s.json device;device=1";
        QTest::newRow("history") << QStringList{"history", "86307"} << int(C::History)
                                 << "imei=86307;device=0";
        QTest::newRow("help wins") << QStringList{"flush", "--help"} << int(C::Help) << QString();
    }

    void parse_validLines() {
        QFETCH(QStringList, args);
        QFETCH(int, command);
        QFETCH(QString, check);
        CliOptions o;
        const QString error = o.parse(args);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QCOMPARE(int(o.command), command);
        const QHash<QString, QString> actual{
            {"port", o.port},
            {"json", QString::number(o.json)},
            {"timeout", QString::number(o.timeoutMs)},
            {"deadline", QString::number(o.deadlineMs())},
            {"device", QString::number(o.needsDevice())},
            {"password", o.hasPassword ? QString::number(o.password) : QStringLiteral("none")},
            {"host", o.remoteHost},
            {"remotePort", QString::number(o.remotePort)},
            {"imei", o.imei + o.imeiArgument},
            {"diff", o.diffA + ' ' + o.diffB},
            {"flags", QString("%1%2%3%4").arg(o.dryRun).arg(o.keepDeviceValues).arg(o.noVerify).arg(o.force)},
            {"file", o.file},
            {"hex", o.decodeHex},
            {"newPassword", QString::number(o.newPassword)},
            {"watch", QString::number(o.watch)},
            {"raw", QString::number(o.raw)},
            {"passwordFile", o.passwordFile},
        };
        for (const QString &pair : check.split(';', Qt::SkipEmptyParts)) {
            const int eq = pair.indexOf('=');
            QCOMPARE(actual.value(pair.left(eq)), pair.mid(eq + 1));
        }
    }

    // Three 31-byte lines fit under a 100-byte limit: the fourth starts a new file, the older one becomes
    // ".1".
    void trafficLog_rotatesAtItsSizeLimit() {
        QTemporaryDir dir;
        const QString path = dir.filePath("exchange.log");
        QString error;
        QVERIFY(TrafficLogFile::install(path, &error, 100));
        for (char c = 'a'; c <= 'j'; ++c)
            qDebug("%s", QByteArray(30, c).constData());
        TrafficLogFile::uninstall();
        auto text = [](const QString &name) {
            QFile f(name);
            return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("none");
        };
        QCOMPARE(text(path), QByteArray(30, 'j') + '\n');
        QCOMPARE(text(path + ".1"),
                 QByteArray(30, 'g') + '\n' + QByteArray(30, 'h') + '\n' + QByteArray(30, 'i') + '\n');
        QCOMPARE(QDir(dir.path()).count(), 4u); // ".", "..", the log and one older part
    }

    // The blanks of a port that does not report a field are SerialConnection::record's.
    void portList_oneTabSeparatedLinePerPort() {
        SerialPortDescription port;
        port.portName = QStringLiteral("ttyACM0");
        port.description = QStringLiteral("Vantor micro");
        port.hasVendorIdentifier = true;
        port.vendorIdentifier = 0x2226;
        port.hasProductIdentifier = true;
        port.productIdentifier = 0x0013;
        QCOMPARE(portRecordLine(SerialConnection::record(port)),
                 QStringLiteral("ttyACM0\tVantor micro\t - \t13\t2226"));
    }
};

QTEST_GUILESS_MAIN(tst_CliOptions)
#include "tst_clioptions.moc"
