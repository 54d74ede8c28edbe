#include "Devices/ControlInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "support/SupportBundle.h"
#include "support/TelemetryCsvWriter.h"
#include "support/TelemetryHistory.h"
#include "support/TelemetryReport.h"
#include "support/TelemetryRoundTracker.h"
#include "support/TelemetrySeries.h"

#include <KZip>
#include <QDateTime>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

namespace {

// Splits one CSV line, honouring quoted cells with doubled quotes.
QStringList csvCells(const QString &line) {
    QStringList cells{QString()};
    bool quoted = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (quoted && c == QLatin1Char('"') && i + 1 < line.size() && line[i + 1] == QLatin1Char('"'))
            cells.last() += line[++i];
        else if (c == QLatin1Char('"'))
            quoted = !quoted;
        else if (c == QLatin1Char(',') && !quoted)
            cells << QString();
        else
            cells.last() += c;
    }
    return cells;
}

using Points = QVector<QPointF>;

// The lines of one group: its title and the indented lines up to the next title.
QStringList group(const QStringList &lines, const QString &title) {
    int i = lines.indexOf(title);
    if (i < 0)
        return {};
    QStringList out{title};
    while (++i < lines.size() && lines.at(i).startsWith(' '))
        out << lines.at(i);
    return out;
}

} // namespace

class tst_Support : public QObject {
    Q_OBJECT

private slots:
    void ring_data() {
        QTest::addColumn<int>("capacity");
        QTest::addColumn<Points>("appended"); // x: time in ms, y: value
        QTest::addColumn<Points>("kept");
        QTest::newRow("one point a second")
            << 4 << Points{{1000, 1}, {2000, 2}, {3000, 3}} << Points{{1000, 1}, {2000, 2}, {3000, 3}};
        QTest::newRow("same second: the newest wins")
            << 4 << Points{{1000, 1}, {1500, 2}, {1999, 3}, {2000, 4}} << Points{{1999, 3}, {2000, 4}};
        QTest::newRow("full: the oldest make room")
            << 3 << Points{{1000, 1}, {2000, 2}, {3000, 3}, {4000, 4}, {5000, 5}}
            << Points{{3000, 3}, {4000, 4}, {5000, 5}};
    }

    void ring() {
        QFETCH(int, capacity);
        QFETCH(Points, appended);
        QFETCH(Points, kept);
        TelemetryHistory history(2, capacity, 1000);
        for (const QPointF &p : appended)
            history.add(qint64(p.x()), {p.y(), std::nan("")});
        QCOMPARE(history.series(0).range(0, 10000), kept);
        QCOMPARE(history.series(1).size(), 0);
        QCOMPARE(history.firstTime(), qint64(kept.first().x()));
        QCOMPARE(history.series(0).range(qint64(kept.last().x()), 10000), Points{kept.last()});
    }

    void rounds_data() {
        QTest::addColumn<QString>("events"); // a kind that arrived, or "p" for the next poll
        QTest::addColumn<int>("rounds");
        QTest::newRow("the last kind closes each round") << "10 14 24 p 10 24 p" << 2;
        QTest::newRow("the last kind lost: the next poll closes") << "10 14 p 10 24" << 2;
        QTest::newRow("polls without answers are no rounds") << "p p 10 p p" << 1;
    }

    void rounds() {
        QFETCH(QString, events);
        QFETCH(int, rounds);
        TelemetryRoundTracker tracker(kd::telemetry::GsmRegistration);
        QSignalSpy complete(&tracker, &TelemetryRoundTracker::roundComplete);
        for (const QString &e : events.split(QLatin1Char(' ')))
            e == QLatin1String("p") ? tracker.pollStarted() : tracker.kindArrived(e.toInt());
        QCOMPARE(complete.count(), rounds);
    }

    void recording_parsesBackByKeys() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("rec.csv"));
        kd::ControlInfoConfiguration state;
        kd::DeviceStateRecord device;
        device.supplyVoltage = 12345;
        QVERIFY(state.setRecord(kd::telemetry::DeviceState, 0, device.toBytes()));
        const QDateTime start = QDateTime::fromSecsSinceEpoch(1800000000, Qt::OffsetFromUTC, 3 * 3600);

        TelemetryCsvWriter writer;
        QString error;
        QVERIFY2(writer.open(path, &error), qPrintable(error));
        QVERIFY(!QFile::exists(path)); // only a finished recording takes the name
        for (int round = 0; round < 30; ++round)
            QVERIFY(writer.writeRound(start.addSecs(round), TelemetrySeries::values(state)));
        QVERIFY(writer.close(&error));

        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QStringList lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2 + 30);
        const QStringList titles = csvCells(lines[0]), keys = csvCells(lines[1]);
        QCOMPARE(titles.mid(0, 2), (QStringList{QStringLiteral("Время"), QStringLiteral("Питание, В")}));
        QCOMPARE(keys.size(), TelemetrySeries::columns().size() + 1);
        const QStringList row = csvCells(lines[2 + 29]);
        QCOMPARE(row.size(), keys.size());
        QCOMPARE(QDateTime::fromString(row[keys.indexOf(QStringLiteral("time"))], Qt::ISODate),
                 start.addSecs(29));
        QCOMPARE(row[keys.indexOf(QStringLiteral("supply_v"))], QStringLiteral("12.35"));
        QCOMPARE(row[keys.indexOf(QStringLiteral("speed_kmh"))], QString()); // not reported: an empty cell
    }

    void bundle_holdsTheMembersAndNoPassword() {
        QTemporaryDir dir;
        QSettings settings(dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        settings.setValue(QStringLiteral("loginSettings/passWord"), 246813);
        settings.setValue(QStringLiteral("loginSettings/userPassword"), QStringLiteral("server-secret"));
        settings.setValue(QStringLiteral("loginSettings/proxyPassword"), QStringLiteral("proxy-secret"));
        settings.setValue(QStringLiteral("loginSettings/login"), QStringLiteral("engineer"));
        const QString sessionPassword = QStringLiteral("97531");
        // Text the log or the device may hold, passwords included, besides the masked frames.
        kd::trafficLog(QStringLiteral("login 246813 server-secret proxy-secret 97531 ") +
                       QString::fromLatin1(QByteArray::fromHex("1dc40300").toHex()));
        VantorConfiguration cfg;

        const QString path = dir.filePath(QStringLiteral("report.zip"));
        QString error;
        QVERIFY2(SupportBundle::write(
                     path,
                     SupportBundle::collect(cfg, QStringLiteral("tavrel-cfg"), settings, {sessionPassword}),
                     &error),
                 qPrintable(error));

        KZip zip(path);
        QVERIFY(zip.open(QIODevice::ReadOnly));
        const QStringList members = zip.directory()->entries();
        for (const char *name : {"identity.json", "configuration.json", "telemetry.txt", "telemetry-raw.txt",
                                 "exchange.log", "about.txt", "settings.json"})
            QVERIFY2(members.contains(QLatin1String(name)), name);
        for (const QString &name : members) {
            const QByteArray data = zip.directory()->file(name)->data();
            for (const char *secret : {"246813", "server-secret", "proxy-secret", "97531", "1dc40300"})
                QVERIFY2(!data.contains(secret), qPrintable(name + QLatin1Char(' ') + QLatin1String(secret)));
        }
        QVERIFY(zip.directory()->file(QStringLiteral("settings.json"))->data().contains("engineer"));
    }

    void navReceiver_data() {
        QTest::addColumn<QByteArray>("record");
        QTest::addColumn<QString>("expected"); // a pattern of the group's lines
        kd::NavReceiverRecord fix;
        fix.day = 5, fix.month = 3, fix.year = 24, fix.hours = 14, fix.minutes = 7, fix.seconds = 9;
        fix.fixQuality = 2, fix.fixMode = 3, fix.satellites = 9;
        fix.latDegrees = 55, fix.latFlags = kd::NavReceiverRecord::HemisphereBit, fix.latMinutes = 4512340;
        fix.lonDegrees = 7, fix.lonFlags = kd::NavReceiverRecord::HemisphereBit, fix.lonMinutes = 3712000;
        fix.hdop = 85, fix.vdop = 120, fix.pdop = 145, fix.speed = 523, fix.course = 1805;
        // The minutes' precision is the state page's choice.
        QTest::newRow("3D fix, south-western hemisphere")
            << fix.toBytes()
            << "Навигационный приемник 2\n  Фиксация: 3D, 9 спутн.\n  Режим: 3D режим\n"
               "  Дата и время: 05.03.24 14:07:09\n  Широта: -55° 45\\.12340*\n  Долгота: -07° 37\\.120*\n"
               "  Качество: Дифференциальный\n  HDOP / VDOP / PDOP: 0.85 / 1.20 / 1.45\n"
               "  Скорость: 52.3 км/ч\n  Курс: 180.5°";
        kd::NavReceiverRecord lost = fix;
        lost.fixMode = 1, lost.fixQuality = 0, lost.satellites = 2;
        QTest::newRow("no fix hides the stale position")
            << lost.toBytes()
            << "Навигационный приемник 2\n  Фиксация: Нет фиксации, 2 спутн.\n  Режим: Нет навигации\n"
               "  Дата и время: -\n  Широта: -\n  Долгота: -\n  Качество: Обычный\n"
               "  HDOP / VDOP / PDOP: 0.85 / 1.20 / 1.45\n  Скорость: -\n  Курс: -";
    }

    void navReceiver() {
        QFETCH(QByteArray, record);
        QFETCH(QString, expected);
        kd::ControlInfoConfiguration state;
        QVERIFY(state.setRecord(kd::telemetry::NavReceivers, 1, record));
        const QStringList lines = TelemetryReport::lines(state);
        const QString actual = group(lines, expected.section('\n', 0, 0)).join('\n');
        QVERIFY2(QRegularExpression('^' + expected + '$').match(actual).hasMatch(), qPrintable(actual));
        // Receivers that sent nothing are not shown.
        QVERIFY(!lines.contains("Навигационный приемник 1") && !lines.contains("Навигационный приемник 3"));
    }

    void simAndRegistration_keepTheirSpellings() {
        kd::ControlInfoConfiguration state;
        kd::SimStateRecord sim;
        sim.state = 0x0108; // the high byte is not part of the state
        QVERIFY(state.setRecord(kd::telemetry::SimStates, 0, sim.toBytes()));
        kd::GsmRegistrationRecord reg;
        reg.slotState = quint8(kd::SimSlotState::Absent);
        reg.registration = quint8(kd::GsmRegistration::Unknown);
        reg.signalLevel = 17;
        reg.operatorCode = 25001;
        QVERIFY(state.setRecord(kd::telemetry::GsmRegistration, 0, reg.toBytes()));
        QCOMPARE(group(TelemetryReport::lines(state), "SIM 1"),
                 QStringList({"SIM 1", "  Состояние: Сим отсутсвует", "  Слот: Сим отсутствует",
                              "  Регистрация: ", "  Уровень сигнала: 17", "  Оператор: 25001"}));
    }

    void rawLines_onlyReceivedRecordsByKindThenIndex() {
        kd::ControlInfoConfiguration state;
        QVERIFY(TelemetryReport::lines(state).isEmpty() && TelemetryReport::rawLines(state).isEmpty());
        QVERIFY(state.setRecord(kd::telemetry::GsmRegistration, 1, QByteArray(36, '\x01')));
        QVERIFY(state.setRecord(kd::telemetry::SimStates, 2, QByteArray::fromHex("0800")));
        QVERIFY(state.setRecord(kd::telemetry::DeviceState, 0, QByteArray(72, '\xAB')));
        QVERIFY(state.setRecord(kd::telemetry::SimStates, 0, QByteArray::fromHex("0100")));
        QVERIFY(state.setRecord(kd::telemetry::Clock, 0, QByteArray::fromHex("00e1f505")));
        const QStringList expected{
            "kind=10 index=0 " + QString("ab").repeated(72),
            "kind=11 index=0 00e1f5050000", // a short block is padded to the record size
            "kind=23 index=0 0100",
            "kind=23 index=2 0800",
            "kind=24 index=1 " + QString("01").repeated(36),
        };
        QCOMPARE(TelemetryReport::rawLines(state), expected);
    }
};

QTEST_GUILESS_MAIN(tst_Support)
#include "tst_support.moc"
