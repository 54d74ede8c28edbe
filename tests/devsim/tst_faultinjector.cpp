#include "tools/devsim/FaultInjector.h"

#include <QtTest>

using Fault = FaultInjector::Fault;

namespace {
QByteArray answer(int n) {
    return QByteArray(12, char(n));
}

QByteArrayList written(const QSignalSpy &spy) {
    QByteArrayList all;
    for (const QList<QVariant> &w : spy)
        all.append(w.at(0).toByteArray());
    return all;
}
} // namespace

class tst_FaultInjector : public QObject {
    Q_OBJECT
private slots:
    void faultForAnswerNumber_data();
    void faultForAnswerNumber();
    void everyNthAnswerIsSpoilt();
    void garbageKeepsLengthAndRepeatsEveryRun();
    void splitSendsTwoPiecesThatJoin();
    void hangUpFollowsTheNthAnswerEvenWhenSilent();
    void lineTime_data();
    void lineTime();
    void baudHoldsAnswerUntilItsLastByteLeft();
    void rawBytesAreNeitherSpoiltNorCounted();
};

void tst_FaultInjector::faultForAnswerNumber_data() {
    QTest::addColumn<int>("silent");
    QTest::addColumn<int>("truncate");
    QTest::addColumn<int>("garbage");
    QTest::addColumn<int>("n");
    QTest::addColumn<Fault>("fault");
    QTest::newRow("nothing set") << 0 << 0 << 0 << 6 << Fault::None;
    QTest::newRow("silent 3, answer 3") << 3 << 0 << 0 << 3 << Fault::Silent;
    QTest::newRow("silent 3, answer 4") << 3 << 0 << 0 << 4 << Fault::None;
    QTest::newRow("truncate 2, answer 4") << 0 << 2 << 0 << 4 << Fault::Truncated;
    QTest::newRow("garbage 5, answer 10") << 0 << 0 << 5 << 10 << Fault::Garbage;
    QTest::newRow("silent beats garbage") << 2 << 0 << 2 << 2 << Fault::Silent;
    QTest::newRow("garbage beats cut") << 0 << 3 << 3 << 3 << Fault::Garbage;
}

void tst_FaultInjector::faultForAnswerNumber() {
    QFETCH(int, silent);
    QFETCH(int, truncate);
    QFETCH(int, garbage);
    QFETCH(int, n);
    QFETCH(Fault, fault);
    FaultInjector::Settings s;
    s.silentEvery = silent;
    s.truncateEvery = truncate;
    s.garbageEvery = garbage;
    QCOMPARE(FaultInjector(s).faultFor(n), fault);
}

void tst_FaultInjector::everyNthAnswerIsSpoilt() {
    FaultInjector::Settings s;
    s.silentEvery = 3;
    s.truncateEvery = 2;
    FaultInjector f(s);
    QSignalSpy writes(&f, &FaultInjector::write);
    for (int n = 1; n <= 7; ++n)
        f.sendAnswer(answer(n));
    // 3 and 6 silent (silence beats the cut at 6), 2 and 4 cut to half.
    QCOMPARE(written(writes),
             (QByteArrayList{answer(1), answer(2).left(6), answer(4).left(6), answer(5), answer(7)}));
    QCOMPARE(f.answersSent(), 7);
    QCOMPARE(FaultInjector::truncated(QByteArray(1, 'x')), QByteArray(1, 'x'));
}

void tst_FaultInjector::garbageKeepsLengthAndRepeatsEveryRun() {
    FaultInjector::Settings s;
    s.garbageEvery = 1;
    const QByteArray frame = QByteArray::fromHex("a5a50600040081010000800100");
    FaultInjector f(s), again(s);
    QSignalSpy writes(&f, &FaultInjector::write), againWrites(&again, &FaultInjector::write);
    f.sendAnswer(frame);
    f.sendAnswer(frame);
    again.sendAnswer(frame);
    const QByteArray first = written(writes).value(0);
    QCOMPARE(first.size(), frame.size());
    QVERIFY(first != frame);
    QVERIFY(written(writes).value(1) != first);
    QCOMPARE(written(againWrites).value(0), first);
}

void tst_FaultInjector::splitSendsTwoPiecesThatJoin() {
    FaultInjector::Settings s;
    s.split = true;
    s.splitPauseMs = 5;
    FaultInjector f(s);
    QSignalSpy writes(&f, &FaultInjector::write);
    const QByteArray frame = QByteArray::fromHex("a5a5060011008102000056616e746f72206d6963726f00fa04");
    f.sendAnswer(frame);
    QCOMPARE(writes.count(), 1); // the second piece waits for the pause
    QTRY_COMPARE(writes.count(), 2);
    const QByteArrayList pieces = written(writes);
    QVERIFY(!pieces.at(0).isEmpty() && !pieces.at(1).isEmpty());
    QCOMPARE(pieces.at(0) + pieces.at(1), frame);
}

void tst_FaultInjector::hangUpFollowsTheNthAnswerEvenWhenSilent() {
    FaultInjector::Settings s;
    s.hangupAfter = 2;
    s.silentEvery = 2;
    FaultInjector f(s);
    QStringList events;
    connect(&f, &FaultInjector::write, this,
            [&](const QByteArray &b) { events << QStringLiteral("write %1").arg(int(b.at(0))); });
    connect(&f, &FaultInjector::hangUp, this, [&] { events << QStringLiteral("hang up"); });
    f.sendAnswer(answer(1));
    QCOMPARE(events, QStringList{"write 1"});
    f.sendAnswer(answer(2));
    QCOMPARE(events, (QStringList{"write 1", "hang up"}));
}

void tst_FaultInjector::lineTime_data() {
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("baud");
    QTest::addColumn<int>("us");
    QTest::newRow("unpaced") << 1000 << 0 << 0;
    QTest::newRow("1152 bytes at 115200") << 1152 << 115200 << 100000;
    QTest::newRow("one byte rounds up") << 1 << 115200 << 87;
    QTest::newRow("960 bytes at 9600") << 960 << 9600 << 1000000;
    QTest::newRow("nothing") << 0 << 9600 << 0;
}

void tst_FaultInjector::lineTime() {
    QFETCH(int, bytes);
    QFETCH(int, baud);
    QFETCH(int, us);
    QCOMPARE(FaultInjector::lineTimeUs(bytes, baud), qint64(us));
}

void tst_FaultInjector::baudHoldsAnswerUntilItsLastByteLeft() {
    FaultInjector::Settings s;
    s.baud = 115200;
    s.latencyMs = 30;
    FaultInjector f(s);
    qint64 now = 0;
    f.setClock([&now] { return now; });
    QSignalSpy writes(&f, &FaultInjector::write);
    f.sendAnswer(QByteArray(1152, 'a')); // 30 ms latency, then 100 ms on the line
    f.sendAnswer(QByteArray(1152, 'b')); // queued behind it
    now = 129000;
    QTest::qWait(20);
    QCOMPARE(writes.count(), 0);
    now = 130000;
    QTRY_COMPARE(writes.count(), 1);
    QCOMPARE(written(writes).at(0).at(0), 'a');
    QTest::qWait(150); // the timer fires, but on our clock the second one is still on the line
    QCOMPARE(writes.count(), 1);
    now = 230000;
    QTRY_COMPARE(writes.count(), 2);
    QCOMPARE(written(writes).at(1).at(0), 'b');

    // A request takes its own line time before the device can answer: 96 bytes, 8334 us each way.
    f.sendAnswer(QByteArray(96, 'c'), 96);
    now = 230000 + 30000 + 2 * 8334 - 1;
    QTest::qWait(40);
    QCOMPARE(writes.count(), 2);
    now = 230000 + 30000 + 2 * 8334;
    QTRY_COMPARE(writes.count(), 3);
}

void tst_FaultInjector::rawBytesAreNeitherSpoiltNorCounted() {
    FaultInjector::Settings s;
    s.silentEvery = 1;
    s.hangupAfter = 1;
    FaultInjector f(s);
    QSignalSpy writes(&f, &FaultInjector::write);
    QSignalSpy hangUps(&f, &FaultInjector::hangUp);
    f.sendRaw(QByteArray("U page request"));
    QCOMPARE(written(writes), QByteArrayList{QByteArray("U page request")});
    QCOMPARE(f.answersSent(), 0);
    QCOMPARE(hangUps.count(), 0);
}

QTEST_GUILESS_MAIN(tst_FaultInjector)
#include "tst_faultinjector.moc"
