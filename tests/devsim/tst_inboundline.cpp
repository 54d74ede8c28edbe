#include "tools/devsim/InboundLine.h"

#include <QtTest>

namespace {
// Bytes numbered across all writes, so that order and loss show in what arrives.
QByteArray numbered(int from, int count) {
    QByteArray bytes(count, '\0');
    for (int i = 0; i < count; ++i)
        bytes[i] = char(from + i);
    return bytes;
}

QByteArray joined(const QSignalSpy &spy) {
    QByteArray all;
    for (const QList<QVariant> &args : spy)
        all += args.at(0).toByteArray();
    return all;
}
} // namespace

class tst_InboundLine : public QObject {
    Q_OBJECT
private slots:
    void bytesArriveAtLineRate_data();
    void bytesArriveAtLineRate();
    void clearForgetsBytesOnTheLine();
};

void tst_InboundLine::bytesArriveAtLineRate_data() {
    QTest::addColumn<int>("baud");
    QTest::addColumn<QVector<qint64>>("writeTimes"); // microseconds
    QTest::addColumn<QVector<int>>("writeSizes");
    QTest::addColumn<qint64>("at");
    QTest::addColumn<int>("arrived");

    const QVector<qint64> once{0};
    const QVector<int> page{526};
    QTest::newRow("unpaced: all at once") << 0 << once << page << qint64(0) << 526;
    QTest::newRow("first byte not before its stop bit") << 115200 << once << page << qint64(86) << 0;
    QTest::newRow("first byte after 87 us") << 115200 << once << page << qint64(87) << 1;
    QTest::newRow("page one microsecond short") << 115200 << once << page << qint64(45659) << 525;
    QTest::newRow("page after 45.66 ms") << 115200 << once << page << qint64(45660) << 526;
    QTest::newRow("page at 9600 after 547.9 ms") << 9600 << once << page << qint64(547917) << 526;
    QTest::newRow("second write queues behind the first")
        << 115200 << QVector<qint64>{0, 0} << QVector<int>{10, 10} << qint64(1736) << 19;
    QTest::newRow("both writes in after 20 byte times")
        << 115200 << QVector<qint64>{0, 0} << QVector<int>{10, 10} << qint64(1737) << 20;
    QTest::newRow("write during a page waits for its end")
        << 115200 << QVector<qint64>{0, 10000} << QVector<int>{526, 10} << qint64(46527) << 535;
    QTest::newRow("write during a page, all in")
        << 115200 << QVector<qint64>{0, 10000} << QVector<int>{526, 10} << qint64(46528) << 536;
    QTest::newRow("idle line, second byte 87 us after its write")
        << 115200 << QVector<qint64>{0, 5000} << QVector<int>{1, 1} << qint64(5087) << 2;
    QTest::newRow("write just as the line falls idle")
        << 115200 << QVector<qint64>{0, 869} << QVector<int>{10, 10} << qint64(1738) << 20;
}

void tst_InboundLine::bytesArriveAtLineRate() {
    QFETCH(int, baud);
    QFETCH(QVector<qint64>, writeTimes);
    QFETCH(QVector<int>, writeSizes);
    QFETCH(qint64, at);
    QFETCH(int, arrived);

    InboundLine line(baud);
    qint64 now = 0;
    line.setClock([&now] { return now; });
    QSignalSpy spy(&line, &InboundLine::arrived);
    QByteArray written;
    for (int i = 0; i < writeTimes.size(); ++i) {
        now = writeTimes.at(i);
        const QByteArray bytes = numbered(written.size(), writeSizes.at(i));
        written += bytes;
        line.feed(bytes);
    }
    now = at;
    line.deliverArrived();
    QCOMPARE(joined(spy), written.left(arrived));
    QCOMPARE(line.pending(), written.size() - arrived);
}

void tst_InboundLine::clearForgetsBytesOnTheLine() {
    InboundLine line(9600);
    qint64 now = 0;
    line.setClock([&now] { return now; });
    QSignalSpy spy(&line, &InboundLine::arrived);
    line.feed(numbered(0, 100));
    line.clear();
    QVERIFY(line.idle());
    now = 1000000;
    line.feed(numbered(100, 1));
    QTest::qWait(5);
    QCOMPARE(joined(spy), QByteArray());
    now = 1001042;
    QTRY_COMPARE(joined(spy), numbered(100, 1)); // a fresh run from the write, nothing of the old one
    QVERIFY(line.idle());
}

QTEST_GUILESS_MAIN(tst_InboundLine)
#include "tst_inboundline.moc"
