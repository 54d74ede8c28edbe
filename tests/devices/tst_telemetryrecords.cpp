#include "TelemetryRecords.h"

#include <QtTest>

using namespace kd;

namespace {
template <class R>
QByteArray roundTrip(const QByteArray &bytes) {
    return R::fromBytes(bytes).toBytes();
}

// Bytes 1, 2, 3, ... so that every field of a record gets a distinct value.
QByteArray counting(int size) {
    QByteArray b;
    for (int i = 0; i < size; ++i)
        b.append(char(i * 7 + 1));
    return b;
}
} // namespace

class tst_TelemetryRecords : public QObject {
    Q_OBJECT

private slots:
    void everyFieldSurvivesARoundTrip_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("size");
        for (int kind : {10, 11, 14, 15, 16, 17, 18, 19, 21, 23, 24})
            QTest::addRow("kind %d", kind) << kind;
    }

    void everyFieldSurvivesARoundTrip() {
        QFETCH(int, kind);
        QByteArray (*trip)(const QByteArray &) = nullptr;
        int size = 0;
        switch (kind) {
        case 10:
            trip = roundTrip<DeviceStateRecord>, size = DeviceStateRecord::Size;
            break;
        case 11:
            trip = roundTrip<ClockRecord>, size = ClockRecord::Size;
            break;
        case 14:
            trip = roundTrip<NavReceiverRecord>, size = NavReceiverRecord::Size;
            break;
        case 15:
            trip = roundTrip<ServerStateRecord>, size = ServerStateRecord::Size;
            break;
        case 16:
            trip = roundTrip<NavSummaryRecord>, size = NavSummaryRecord::Size;
            break;
        case 17:
            trip = roundTrip<AnalogInputRecord>, size = AnalogInputRecord::Size;
            break;
        case 18:
            trip = roundTrip<LogicInputRecord>, size = LogicInputRecord::Size;
            break;
        case 19:
            trip = roundTrip<FuelSensorsRecord>, size = FuelSensorsRecord::Size;
            break;
        case 21:
            trip = roundTrip<StateWordsRecord>, size = StateWordsRecord::Size;
            break;
        case 23:
            trip = roundTrip<SimStateRecord>, size = SimStateRecord::Size;
            break;
        default:
            trip = roundTrip<GsmRegistrationRecord>, size = GsmRegistrationRecord::Size;
            break;
        }
        // Every byte is mapped to a field: a field left out, overlapping or misplaced changes the bytes.
        const QByteArray bytes = counting(size);
        QCOMPARE(trip(bytes).toHex(' '), bytes.toHex(' '));
        // Missing bytes read as zero, and the record keeps its size.
        QCOMPARE(trip(bytes.left(3)).toHex(' '), (bytes.left(3) + QByteArray(size - 3, '\0')).toHex(' '));
    }

    void navReceiver_fieldsFromAHexVector() {
        // 23.11.26 14:05:09, quality 2, 3D; 55° 45.12345' N, 37° 37.00001' W; PDOP 1.50 HDOP 0.90 VDOP 1.20;
        // 9 of 14 satellites; 61.5 km/h; course 270.0; altitude -12.3 m; receiver powered, antenna ok
        const QByteArray b = QByteArray::fromHex("17 0b 1a 0e 05 09 02 03 37 00 25 01"
                                                 "59 da 44 00 21 75 38 00 96 00 5a 00 78 00 09 0e"
                                                 "67 02 8c 0a 85 ff ff ff 03 00");
        QCOMPARE(b.size(), NavReceiverRecord::Size);
        const NavReceiverRecord r = NavReceiverRecord::fromBytes(b);
        QCOMPARE(int(r.day), 23);
        QCOMPARE(int(r.month), 11);
        QCOMPARE(int(r.year), 26);
        QCOMPARE(int(r.hours), 14);
        QCOMPARE(int(r.minutes), 5);
        QCOMPARE(int(r.seconds), 9);
        QCOMPARE(int(r.fixQuality), 2);
        QVERIFY(r.hasFix());
        QCOMPARE(int(r.latDegrees), 55);
        QCOMPARE(r.latFlags & NavReceiverRecord::HemisphereBit, 0);
        QCOMPARE(int(r.lonDegrees), 37);
        QCOMPARE(r.lonFlags & NavReceiverRecord::HemisphereBit, 1);
        QCOMPARE(r.latMinutes, 4512345u);
        QCOMPARE(r.lonMinutes, 3700001u);
        QCOMPARE(int(r.pdop), 150);
        QCOMPARE(int(r.hdop), 90);
        QCOMPARE(int(r.vdop), 120);
        QCOMPARE(int(r.satellites), 9);
        QCOMPARE(int(r.satellitesInView), 14);
        QCOMPARE(int(r.speed), 615);
        QCOMPARE(int(r.course), 2700);
        QCOMPARE(r.altitude, -123);
        QCOMPARE(int(r.receiverFlags), 3);
    }

    void serverState_fieldsFromAHexVector() {
        const QByteArray b = QByteArray::fromHex("01 02 01 00 c0 a8 01 0a 4e 52 00 00"
                                                 "0a000000 09000000 03000000 00010000 80000000"
                                                 "02000000 01000000 00e1f505 3c000000");
        const ServerStateRecord r = ServerStateRecord::fromBytes(b);
        QCOMPARE(ServerProtocol(r.protocol), ServerProtocol::WialonCombine);
        QCOMPARE(ServerState(r.state), ServerState::Connected);
        QCOMPARE(QStringLiteral("%1.%2.%3.%4").arg(r.ip[0]).arg(r.ip[1]).arg(r.ip[2]).arg(r.ip[3]),
                 QStringLiteral("192.168.1.10"));
        QCOMPARE(int(r.port), 21070);
        QCOMPARE(r.packetsSent, 10u);
        QCOMPARE(r.packetsAcked, 9u);
        QCOMPARE(r.recordsQueued, 3u);
        QCOMPARE(r.bytesSent, 256u);
        QCOMPARE(r.bytesReceived, 128u);
        QCOMPARE(r.connectCount, 2u);
        QCOMPARE(r.errorCount, 1u);
        QCOMPARE(r.lastConnect, 100000000u);
        QCOMPARE(r.connectedTime, 60u);
    }

    void deviceState_signedTemperatures() {
        DeviceStateRecord r;
        r.supplyVoltage = 12600;
        r.boardTemperature = -25;
        r.batteryTemperature = 41;
        const QByteArray b = r.toBytes();
        QCOMPARE(b.left(8).toHex(' '), QByteArray("38 31 00 00 e7 ff 29 00"));
        QCOMPARE(DeviceStateRecord::fromBytes(b).boardTemperature, qint16(-25));
    }

    void gsmRegistration_andSimStateCodes() {
        const GsmRegistrationRecord g =
            GsmRegistrationRecord::fromBytes(QByteArray::fromHex("02 05 17 00 a9 61 00 00"));
        QCOMPARE(SimSlotState(g.slotState), SimSlotState::Active);
        QCOMPARE(GsmRegistration(g.registration), GsmRegistration::Roaming);
        QCOMPARE(int(g.signalLevel), 23);
        QCOMPARE(g.operatorCode, 25001u);
        QCOMPARE(SimState(SimStateRecord::fromBytes(QByteArray::fromHex("08 00")).code()), SimState::Absent);
    }

    void fuelSensors_onlineMask() {
        FuelSensorsRecord r;
        r.onlineMask = 0x0085;
        QVERIFY(r.online(0));
        QVERIFY(!r.online(1));
        QVERIFY(r.online(7));
        QVERIFY(!r.online(8));
    }
};

QTEST_GUILESS_MAIN(tst_TelemetryRecords)
#include "tst_telemetryrecords.moc"
