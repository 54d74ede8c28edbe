#include "FaultInjector.h"

#include <QtTest>

using Fault = FaultInjector::Fault;

namespace {
QByteArray answer(int n) {
    return QByteArray(12, char(n));
}
} // namespace

class tst_FaultInjector : public QObject {
    Q_OBJECT
private slots:
    void faultForAnswerNumber_data();
    void faultForAnswerNumber();
    void everyThirdSilentDropsOnlyThose();
    void everySecondTruncatedIsCutToHalf();
    void garbageKeepsLengthButNotBytes();
    void splitSendsTwoPiecesThatJoin();
    void hangUpFollowsTheNthAnswer();
    void silentLastAnswerStillHangsUp();
    void lineTime_data();
    void lineTime();
    void baudHoldsAnswerUntilItsLastByteLeft();
    void latencyDelaysEachAnswer();
    void requestTakesItsLineTimeBeforeTheAnswer();
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
    QTest::newRow("every answer silent") << 1 << 0 << 0 << 1 << Fault::Silent;
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
    FaultInjector f(s);
    QCOMPARE(f.faultFor(n), fault);
}

void tst_FaultInjector::everyThirdSilentDropsOnlyThose() {
    FaultInjector::Settings s;
    s.silentEvery = 3;
    FaultInjector f(s);
    QSignalSpy writes(&f, &FaultInjector::write);
    for (int n = 1; n <= 7; ++n)
        f.sendAnswer(answer(n));
    QCOMPARE(writes.count(), 5);
    QList<int> seen;
    for (const QList<QVariant> &w : writes)
        seen.append(w.at(0).toByteArray().at(0));
    QCOMPARE(seen, (QList<int>{1, 2, 4, 5, 7}));
    QCOMPARE(f.answersSent(), 7);
}

void tst_FaultInjector::everySecondTruncatedIsCutToHalf() {
    FaultInjector::Settings s;
    s.truncateEvery = 2;
    FaultInjector f(s);
    QSignalSpy writes(&f, &FaultInjector::write);
    for (int n = 1; n <= 4; ++n)
        f.sendAnswer(answer(n));
    QCOMPARE(writes.count(), 4);
    QCOMPARE(writes.at(0).at(0).toByteArray(), answer(1));
    QCOMPARE(writes.at(1).at(0).toByteArray(), answer(2).left(6));
    QCOMPARE(writes.at(2).at(0).toByteArray(), answer(3));
    QCOMPARE(writes.at(3).at(0).toByteArray(), answer(4).left(6));
    QCOMPARE(FaultInjector::truncated(QByteArray(1, 'x')), QByteArray(1, 'x'));
}

void tst_FaultInjector::garbageKeepsLengthButNotBytes() {
    FaultInjector::Settings s;
    s.garbageEvery = 1;
    FaultInjector f(s);
    QSignalSpy writes(&f, &FaultInjector::write);
    const QByteArray frame = QByteArray::fromHex("a5a50600040081010000800100");
    f.sendAnswer(frame);
    f.sendAnswer(frame);
    QCOMPARE(writes.count(), 2);
    const QByteArray first = writes.at(0).at(0).toByteArray();
    QCOMPARE(first.size(), frame.size());
    QVERIFY(first != frame);
    QVERIFY(writes.at(1).at(0).toByteArray() != first);

    FaultInjector again(s); // the same garbage every run
    QSignalSpy againWrites(&again, &FaultInjector::write);
    again.sendAnswer(frame);
    QCOMPARE(againWrites.at(0).at(0).toByteArray(), first);
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
    const QByteArray a = writes.at(0).at(0).toByteArray();
    const QByteArray b = writes.at(1).at(0).toByteArray();
    QVERIFY(!a.isEmpty() && !b.isEmpty());
    QCOMPARE(a + b, frame);
}

void tst_FaultInjector::hangUpFollowsTheNthAnswer() {
    FaultInjector::Settings s;
    s.hangupAfter = 2;
    FaultInjector f(s);
    QStringList events;
    connect(&f, &FaultInjector::write, this,
            [&](const QByteArray &b) { events << QStringLiteral("write %1").arg(int(b.at(0))); });
    connect(&f, &FaultInjector::hangUp, this, [&] { events << QStringLiteral("hang up"); });
    f.sendAnswer(answer(1));
    QCOMPARE(events, QStringList{"write 1"});
    f.sendAnswer(answer(2));
    QCOMPARE(events, (QStringList{"write 1", "write 2", "hang up"}));
}

void tst_FaultInjector::silentLastAnswerStillHangsUp() {
    FaultInjector::Settings s;
    s.hangupAfter = 1;
    s.silentEvery = 1;
    FaultInjector f(s);
    QSignalSpy writes(&f, &FaultInjector::write);
    QSignalSpy hangUps(&f, &FaultInjector::hangUp);
    f.sendAnswer(answer(1));
    QCOMPARE(writes.count(), 0);
    QCOMPARE(hangUps.count(), 1);
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
    FaultInjector f(s);
    qint64 now = 0;
    f.setClock([&now] { return now; });
    QSignalSpy writes(&f, &FaultInjector::write);
    f.sendAnswer(QByteArray(1152, 'a')); // 100 ms on the line
    f.sendAnswer(QByteArray(1152, 'b')); // queued behind it: 200 ms
    QCOMPARE(writes.count(), 0);
    now = 100000;
    QTRY_COMPARE(writes.count(), 1);
    QCOMPARE(writes.at(0).at(0).toByteArray().at(0), 'a');
    QTest::qWait(150); // the timer fires, but on our clock the second one is still on the line
    QCOMPARE(writes.count(), 1);
    now = 200000;
    QTRY_COMPARE(writes.count(), 2);
    QCOMPARE(writes.at(1).at(0).toByteArray().at(0), 'b');
}

void tst_FaultInjector::latencyDelaysEachAnswer() {
    FaultInjector::Settings s;
    s.latencyMs = 30;
    FaultInjector f(s);
    qint64 now = 1000000;
    f.setClock([&now] { return now; });
    QSignalSpy writes(&f, &FaultInjector::write);
    f.sendAnswer(answer(1));
    QCOMPARE(writes.count(), 0);
    now = 1030000;
    QTRY_COMPARE(writes.count(), 1);
}

void tst_FaultInjector::requestTakesItsLineTimeBeforeTheAnswer() {
    FaultInjector::Settings s;
    s.baud = 9600;
    FaultInjector f(s);
    qint64 now = 0;
    f.setClock([&now] { return now; });
    QSignalSpy writes(&f, &FaultInjector::write);
    f.sendAnswer(QByteArray(96, 'a'), 96); // 100 ms to hear the request, 100 ms to say the answer
    now = 199000;
    QTest::qWait(20);
    QCOMPARE(writes.count(), 0);
    now = 200000;
    QTRY_COMPARE(writes.count(), 1);
}

void tst_FaultInjector::rawBytesAreNeitherSpoiltNorCounted() {
    FaultInjector::Settings s;
    s.silentEvery = 1;
    s.hangupAfter = 1;
    FaultInjector f(s);
    QSignalSpy writes(&f, &FaultInjector::write);
    QSignalSpy hangUps(&f, &FaultInjector::hangUp);
    f.sendRaw(QByteArray("U page request"));
    QCOMPARE(writes.count(), 1);
    QCOMPARE(writes.at(0).at(0).toByteArray(), QByteArray("U page request"));
    QCOMPARE(f.answersSent(), 0);
    QCOMPARE(hangUps.count(), 0);
}

QTEST_GUILESS_MAIN(tst_FaultInjector)
#include "tst_faultinjector.moc"
