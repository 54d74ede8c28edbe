#include "tools/devsim/RequestAssembler.h"

#include "protocol/Frame.h"

#include <QtTest>

using proto::Frame;

namespace {
const QByteArray identity = QByteArray::fromHex("81010000");
const QByteArray telemetry = QByteArray::fromHex("820e0000");
const QByteArray identityFrame = Frame::build(6, identity);
const QByteArray telemetryFrame = Frame::build(7, telemetry);

QByteArray badChecksum(QByteArray frame) {
    frame[frame.size() - 1] = char(frame.at(frame.size() - 1) ^ 0x01);
    return frame;
}

QByteArrayList payloads(const QList<RequestAssembler::Request> &requests) {
    QByteArrayList all;
    for (const RequestAssembler::Request &r : requests)
        all.append(r.payload);
    return all;
}
} // namespace

class tst_RequestAssembler : public QObject {
    Q_OBJECT
private slots:
    void chunkYieldsRequests_data();
    void chunkYieldsRequests();
    void frameSplitAtEveryByte_data();
    void frameSplitAtEveryByte();
    void staleHeadForgottenAfterGap();
    void slowButSteadyBytesAreKept();
};

void tst_RequestAssembler::chunkYieldsRequests_data() {
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<QByteArrayList>("expected");
    QTest::newRow("whole frame") << identityFrame << QByteArrayList{identity};
    QTest::newRow("two frames") << identityFrame + telemetryFrame << QByteArrayList{identity, telemetry};
    QTest::newRow("noise before a frame skipped")
        << QByteArray::fromHex("00ffa5") + identityFrame << QByteArrayList{identity};
    QTest::newRow("bad checksum dropped, next frame kept")
        << badChecksum(identityFrame) + telemetryFrame << QByteArrayList{telemetry};
    // Markers followed by a length of 0xFFFF: not a frame the device could take.
    QTest::newRow("implausible length resynchronises")
        << QByteArray::fromHex("a5a50600ffff") + identityFrame << QByteArrayList{identity};
}

void tst_RequestAssembler::chunkYieldsRequests() {
    QFETCH(QByteArray, chunk);
    QFETCH(QByteArrayList, expected);
    RequestAssembler a;
    const auto requests = a.feed(chunk, 0);
    QCOMPARE(payloads(requests), expected);
    QCOMPARE(int(requests.last().type), expected.last() == identity ? 6 : 7);
    QCOMPARE(a.buffered(), 0);
    // Both requests frame to the same size: any byte beyond the wanted frames was discarded.
    QCOMPARE(a.discarded() > 0, chunk.size() != expected.size() * identityFrame.size());
}

void tst_RequestAssembler::frameSplitAtEveryByte_data() {
    QTest::addColumn<int>("cut");
    for (int cut = 1; cut < telemetryFrame.size(); ++cut)
        QTest::addRow("cut after %d", cut) << cut;
}

void tst_RequestAssembler::frameSplitAtEveryByte() {
    QFETCH(int, cut);
    RequestAssembler a;
    QVERIFY(a.feed(telemetryFrame.left(cut), 0).isEmpty());
    const auto requests = a.feed(telemetryFrame.mid(cut), 5);
    QCOMPARE(payloads(requests), QByteArrayList{telemetry});
    QCOMPARE(int(requests.first().type), 7);
}

void tst_RequestAssembler::staleHeadForgottenAfterGap() {
    RequestAssembler a(100);
    QVERIFY(a.feed(identityFrame.left(5), 0).isEmpty());
    QCOMPARE(a.buffered(), 5);
    // The rest of that frame never came; much later the line speaks again.
    QVERIFY(a.feed(QByteArray(), 500).isEmpty());
    QCOMPARE(a.buffered(), 0);
    QCOMPARE(payloads(a.feed(telemetryFrame, 510)), QByteArrayList{telemetry});
}

void tst_RequestAssembler::slowButSteadyBytesAreKept() {
    RequestAssembler a(100);
    QList<RequestAssembler::Request> requests;
    for (int i = 0; i < identityFrame.size(); ++i)
        requests += a.feed(identityFrame.mid(i, 1), i * 90);
    QCOMPARE(payloads(requests), QByteArrayList{identity});
}

QTEST_GUILESS_MAIN(tst_RequestAssembler)
#include "tst_requestassembler.moc"
