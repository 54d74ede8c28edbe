#include "Devices/TelemetryRecords.h"

#include <QtTest>

using namespace kd;

namespace {
// Bytes 1, 8, 15, ... so that every field of a record gets a distinct value.
QByteArray counting(int size) {
    QByteArray b;
    for (int i = 0; i < size; ++i)
        b.append(char(i * 7 + 1));
    return b;
}

template <class R>
void addRecord(const char *name) {
    const QByteArray bytes = counting(R::Size);
    QTest::newRow(name) << bytes << R::fromBytes(bytes).toBytes() << R::fromBytes(bytes.left(3)).toBytes();
}
} // namespace

class tst_TelemetryRecords : public QObject {
    Q_OBJECT

private slots:
    void everyFieldSurvivesARoundTrip_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("full");  // the whole record decoded and encoded again
        QTest::addColumn<QByteArray>("short"); // its first three bytes decoded and encoded again
        addRecord<DeviceStateRecord>("kind 10 device state");
        addRecord<ClockRecord>("kind 11 clock");
        addRecord<NavReceiverRecord>("kind 14 navigation receiver");
        addRecord<ServerStateRecord>("kind 15 server state");
        addRecord<NavSummaryRecord>("kind 16 navigation summary");
        addRecord<AnalogInputRecord>("kind 17 analog input");
        addRecord<LogicInputRecord>("kind 18 logic input");
        addRecord<FuelSensorsRecord>("kind 19 fuel sensors");
        addRecord<StateWordsRecord>("kind 21 state words");
        addRecord<SimStateRecord>("kind 23 SIM state");
        addRecord<GsmRegistrationRecord>("kind 24 GSM registration");
    }

    void everyFieldSurvivesARoundTrip() {
        QFETCH(QByteArray, bytes);
        // Every byte is mapped to a field: a field left out, overlapping or misplaced changes the bytes.
        QTEST(bytes, "full");
        // Missing bytes read as zero, and the record keeps its size.
        QTEST(bytes.left(3) + QByteArray(bytes.size() - 3, '\0'), "short");
    }

    void navReceiver_fieldsFromAHexVector() {
        // 23.11.26 14:05:09, quality 2, 3D; 55° 45.12345' N, 37° 37.00001' W; PDOP 1.50 HDOP 0.90 VDOP 1.20;
        // 9 of 14 satellites; 61.5 km/h; course 270.0; altitude -12.3 m; receiver powered, antenna ok
        const NavReceiverRecord r = NavReceiverRecord::fromBytes(
            QByteArray::fromHex("17 0b 1a 0e 05 09 02 03 37 00 25 01 59 da 44 00 21 75 38 00"
                                "96 00 5a 00 78 00 09 0e 67 02 8c 0a 85 ff ff ff 03 00"));
        QCOMPARE(
            QList<int>({r.day,
                        r.month,
                        r.year,
                        r.hours,
                        r.minutes,
                        r.seconds,
                        r.fixQuality,
                        r.latDegrees,
                        r.latFlags & NavReceiverRecord::HemisphereBit,
                        r.lonDegrees,
                        r.lonFlags & NavReceiverRecord::HemisphereBit,
                        r.pdop,
                        r.hdop,
                        r.vdop,
                        r.satellites,
                        r.satellitesInView,
                        r.speed,
                        r.course,
                        r.altitude,
                        r.receiverFlags}),
            QList<int>({23, 11, 26, 14, 5, 9, 2, 55, 0, 37, 1, 150, 90, 120, 9, 14, 615, 2700, -123, 3}));
        QCOMPARE(r.latMinutes, 4512345u);
        QCOMPARE(r.lonMinutes, 3700001u);
        QVERIFY(r.hasFix());
    }

    void deviceState_temperaturesAreSigned() {
        DeviceStateRecord r;
        r.supplyVoltage = 12600;
        r.boardTemperature = -25;
        r.batteryTemperature = 41;
        const QByteArray b = r.toBytes();
        QCOMPARE(b.left(8).toHex(' '), QByteArray("38 31 00 00 e7 ff 29 00"));
        QCOMPARE(DeviceStateRecord::fromBytes(b).boardTemperature, qint16(-25));
    }
};

QTEST_GUILESS_MAIN(tst_TelemetryRecords)
#include "tst_telemetryrecords.moc"
