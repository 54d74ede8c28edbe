#include "protocol/Frame.h"

#include <QtTest>

using proto::Frame;

class tst_Frame : public QObject {
    Q_OBJECT
private slots:
    void build_data();
    void build();
    void oddLastByteIsNotCovered();
    void packetBuildSetsLength();
    void textFrame_data();
    void textFrame();
    void check_data();
    void check();
    void explain_data();
    void explain();
};

void tst_Frame::build_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QByteArray>("frame");

    QTest::newRow("navigation read, the worked example")
        << 6 << QByteArray::fromHex("83020000") << QByteArray::fromHex("a5a506000400830200008102");
    QTest::newRow("empty payload, configuration")
        << 6 << QByteArray() << QByteArray::fromHex("a5a5060000000600");
    QTest::newRow("empty payload, command") << 7 << QByteArray() << QByteArray::fromHex("a5a5070000000700");
    QTest::newRow("odd payload") << 6 << QByteArray::fromHex("8301000005")
                                 << QByteArray::fromHex("a5a50600050083010000058001");
    QTest::newRow("login with password") << 7 << QByteArray::fromHex("0101000078563412")
                                         << QByteArray::fromHex("a5a50700080001010000785634124245");
    QTest::newRow("clear memory") << 7 << QByteArray::fromHex("010300000100")
                                  << QByteArray::fromHex("a5a5070006000103000001000103");
}

void tst_Frame::build() {
    QFETCH(int, type);
    QFETCH(QByteArray, payload);
    QFETCH(QByteArray, frame);
    QCOMPARE(Frame::build(quint8(type), payload).toHex(), frame.toHex());
}

void tst_Frame::oddLastByteIsNotCovered() {
    const QByteArray a = Frame::build(6, QByteArray::fromHex("8301000005"));
    const QByteArray b = Frame::build(6, QByteArray::fromHex("83010000ff"));
    QCOMPARE(a.right(2).toHex(), b.right(2).toHex());
    QVERIFY(a != b);
    // The marker word is left out as well: only bytes from offset 2 count.
    QCOMPARE(Frame::checksum(QByteArray::fromHex("0000060004008302")),
             Frame::checksum(QByteArray::fromHex("ffff060004008302")));
}

void tst_Frame::packetBuildSetsLength() {
    proto::Packet packet;
    packet.type = 6;
    packet.length = 99;
    packet.payload = QByteArray::fromHex("83020000");
    Frame::build(packet);
    QCOMPARE(packet.length, quint16(4));
    QCOMPARE(packet.frame.toHex(), QByteArray("a5a506000400830200008102"));
}

void tst_Frame::textFrame_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("frame");

    QTest::newRow("IMEI padded with zeros")
        << QStringLiteral("863071014478127")
        << QByteArray::fromHex("a5a50800140038363330373130313434373831323700000000001538");
    QTest::newRow("longer text cut at 20")
        << QStringLiteral("12345678901234567890123")
        << QByteArray::fromHex("a5a50800140031323334353637383930313233343536373839301c00");
    QTest::newRow("character above 255 becomes 0")
        << QStringLiteral("1\u04102")
        << QByteArray::fromHex("a5a50800140031003200000000000000000000000000000000001f00");
}

void tst_Frame::textFrame() {
    QFETCH(QString, text);
    QFETCH(QByteArray, frame);
    const QByteArray built = Frame::textFrame(proto::ServerLoginPacketType, text);
    QCOMPARE(built.size(), Frame::TextFrameSize);
    QCOMPARE(built.toHex(), frame.toHex());
}

void tst_Frame::check_data() {
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("payload");

    const int accepted = int(Frame::ChunkKind::Accepted);
    const int shortChunk = int(Frame::ChunkKind::Short);
    const int firmware = int(Frame::ChunkKind::Firmware);
    const QByteArray status = QByteArray::fromHex("a5a5060006009181000001009081");

    QTest::newRow("exactly N+8 accepted") << status << accepted << 6 << QByteArray::fromHex("918100000100");
    QTest::newRow("N+7 dropped") << status.left(status.size() - 1) << shortChunk << 0 << QByteArray();
    QTest::newRow("N+20 accepted, surplus ignored")
        << status + QByteArray(12, '\x77') << accepted << 6 << QByteArray::fromHex("918100000100");
    QTest::newRow("markers and checksum not examined") << QByteArray::fromHex("0000070004008201000000000000")
                                                       << accepted << 7 << QByteArray::fromHex("82010000");
    QTest::newRow("header only") << QByteArray::fromHex("a5a5060000000600") << accepted << 6 << QByteArray();
    QTest::newRow("too short to hold a length")
        << QByteArray::fromHex("a5a50600") << shortChunk << 0 << QByteArray();
    QTest::newRow("loader packet claimed")
        << QByteArray::fromHex("550100000000000000910000") << firmware << 0 << QByteArray();
    QTest::newRow("loader packet with 0x9f at offset 9")
        << QByteArray::fromHex("5501000000000000009f") << firmware << 0 << QByteArray();
    QTest::newRow("0x55 without 0x9x at offset 9 read as a frame")
        << QByteArray::fromHex("55a5060002000000008100") << accepted << 6 << QByteArray::fromHex("0000");
    QTest::newRow("0x55 too short for offset 9")
        << QByteArray::fromHex("55010000ff00000000") << shortChunk << 0 << QByteArray();
}

void tst_Frame::check() {
    QFETCH(QByteArray, chunk);
    QFETCH(int, kind);
    QFETCH(int, type);
    QFETCH(QByteArray, payload);
    const Frame::Received r = Frame::check(chunk);
    QCOMPARE(int(r.kind), kind);
    QCOMPARE(int(r.type), type);
    QCOMPARE(r.payload.toHex(), payload.toHex());
    if (r.kind == Frame::ChunkKind::Accepted)
        QCOMPARE(int(r.length), payload.size());
}

void tst_Frame::explain_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("complete");
    QTest::addColumn<bool>("checksumOk");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("operation");
    QTest::addColumn<int>("parameter");

    QTest::newRow("worked example") << QByteArray::fromHex("a5a506000400830200008102") << true << true << 0x83
                                    << 2 << 0;
    QTest::newRow("bad checksum") << QByteArray::fromHex("a5a506000400830200008103") << true << false << 0x83
                                  << 2 << 0;
    QTest::newRow("status answer") << QByteArray::fromHex("a5a5060006009181000001009081") << true << true
                                   << 0x91 << 0x81 << 0;
    QTest::newRow("GSM read of SIM 2")
        << QByteArray::fromHex("a5a506000400840301008703") << true << true << 0x84 << 3 << 1;
    QTest::newRow("incomplete") << QByteArray::fromHex("a5a5060006009181") << false << false << -1 << -1
                                << -1;
    QTest::newRow("empty payload") << QByteArray::fromHex("a5a5070000000700") << true << true << -1 << -1
                                   << -1;
}

void tst_Frame::explain() {
    QFETCH(QByteArray, bytes);
    QFETCH(bool, complete);
    QFETCH(bool, checksumOk);
    QFETCH(int, code);
    QFETCH(int, operation);
    QFETCH(int, parameter);
    const Frame::Explanation e = Frame::explain(bytes);
    QCOMPARE(e.complete, complete);
    QCOMPARE(e.checksumOk, checksumOk);
    QCOMPARE(e.code, code);
    QCOMPARE(e.operation, operation);
    QCOMPARE(e.parameter, parameter);
}

QTEST_GUILESS_MAIN(tst_Frame)
#include "tst_frame.moc"
