#include "RequestAssembler.h"

#include <protocol/Frame.h>

#include <QtTest>

using proto::Frame;

namespace {
const QByteArray identity = QByteArray::fromHex("81010000");
const QByteArray telemetry = QByteArray::fromHex("820e0000");

QByteArray frameOf(quint8 type, const QByteArray &payload) {
    return Frame::build(type, payload);
}
} // namespace

class tst_RequestAssembler : public QObject {
    Q_OBJECT
private slots:
    void wholeFrameInOneChunk();
    void frameSplitAtEveryByte_data();
    void frameSplitAtEveryByte();
    void twoFramesInOneChunk();
    void noiseBeforeFrameIsSkipped();
    void badChecksumDiscardedNextFrameAccepted();
    void implausibleLengthResynchronises();
    void staleHeadForgottenAfterGap();
    void slowButSteadyBytesAreKept();
};

void tst_RequestAssembler::wholeFrameInOneChunk() {
    RequestAssembler a;
    const auto requests = a.feed(frameOf(6, identity), 0);
    QCOMPARE(requests.size(), 1);
    QCOMPARE(int(requests.first().type), 6);
    QCOMPARE(requests.first().payload, identity);
    QCOMPARE(a.buffered(), 0);
    QCOMPARE(a.discarded(), 0);
}

void tst_RequestAssembler::frameSplitAtEveryByte_data() {
    QTest::addColumn<int>("cut");
    const int size = frameOf(7, telemetry).size();
    for (int cut = 1; cut < size; ++cut)
        QTest::addRow("cut after %d", cut) << cut;
}

void tst_RequestAssembler::frameSplitAtEveryByte() {
    QFETCH(int, cut);
    const QByteArray frame = frameOf(7, telemetry);
    RequestAssembler a;
    QVERIFY(a.feed(frame.left(cut), 0).isEmpty());
    const auto requests = a.feed(frame.mid(cut), 5);
    QCOMPARE(requests.size(), 1);
    QCOMPARE(int(requests.first().type), 7);
    QCOMPARE(requests.first().payload, telemetry);
}

void tst_RequestAssembler::twoFramesInOneChunk() {
    RequestAssembler a;
    const auto requests = a.feed(frameOf(6, identity) + frameOf(7, telemetry), 0);
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.at(0).payload, identity);
    QCOMPARE(requests.at(1).payload, telemetry);
}

void tst_RequestAssembler::noiseBeforeFrameIsSkipped() {
    RequestAssembler a;
    const auto requests = a.feed(QByteArray::fromHex("00ffa5") + frameOf(6, identity), 0);
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.first().payload, identity);
    QVERIFY(a.discarded() > 0);
}

void tst_RequestAssembler::badChecksumDiscardedNextFrameAccepted() {
    QByteArray bad = frameOf(6, identity);
    bad[bad.size() - 1] = char(bad.at(bad.size() - 1) ^ 0x01);
    RequestAssembler a;
    const auto requests = a.feed(bad + frameOf(7, telemetry), 0);
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.first().payload, telemetry);
}

void tst_RequestAssembler::implausibleLengthResynchronises() {
    RequestAssembler a;
    // Markers followed by a length of 0xFFFF: not a frame the device could take.
    const auto requests = a.feed(QByteArray::fromHex("a5a50600ffff") + frameOf(6, identity), 0);
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.first().payload, identity);
}

void tst_RequestAssembler::staleHeadForgottenAfterGap() {
    const QByteArray frame = frameOf(6, identity);
    RequestAssembler a(100);
    QVERIFY(a.feed(frame.left(5), 0).isEmpty());
    QCOMPARE(a.buffered(), 5);
    // The rest of that frame never came; much later the line speaks again.
    QVERIFY(a.feed(QByteArray(), 500).isEmpty());
    QCOMPARE(a.buffered(), 0);
    const auto requests = a.feed(frameOf(7, telemetry), 510);
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.first().payload, telemetry);
}

void tst_RequestAssembler::slowButSteadyBytesAreKept() {
    const QByteArray frame = frameOf(6, identity);
    RequestAssembler a(100);
    QList<RequestAssembler::Request> requests;
    for (int i = 0; i < frame.size(); ++i)
        requests += a.feed(frame.mid(i, 1), i * 90);
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.first().payload, identity);
}

QTEST_GUILESS_MAIN(tst_RequestAssembler)
#include "tst_requestassembler.moc"
