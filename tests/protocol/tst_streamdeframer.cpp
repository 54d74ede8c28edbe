#include "protocol/Frame.h"
#include "protocol/StreamDeframer.h"

#include <QtTest>

using proto::Frame;
using proto::StreamDeframer;
using Policy = StreamDeframer::Policy;

namespace {

QByteArray hex(const char *h) {
    return QByteArray::fromHex(h);
}

// A status answer "executed" and a system read: 14 and 12 bytes.
const QByteArray Executed = hex("a5a5060006001181000001009181");
const QByteArray Identity = Frame::build(6, hex("81010000"));
const QByteArray Telemetry = Frame::build(7, hex("820e0000"));
const QByteArray LoaderRequest = hex("550203120900110300901d1c");

QByteArray badChecksum(QByteArray frame) {
    frame[frame.size() - 1] = char(frame.at(frame.size() - 1) ^ 0x01);
    return frame;
}

// "type:payload" for a frame, "fw:bytes" for a boot-loader message.
QStringList render(const QList<StreamDeframer::Item> &items) {
    QStringList out;
    for (const StreamDeframer::Item &i : items)
        out << (i.firmware ? QStringLiteral("fw:") + i.bytes.toHex()
                           : QStringLiteral("%1:%2").arg(i.type).arg(QString::fromLatin1(i.payload.toHex())));
    return out;
}

} // namespace

class tst_StreamDeframer : public QObject {
    Q_OBJECT
private slots:
    void reads_data() {
        QTest::addColumn<int>("policy");
        QTest::addColumn<QList<QByteArray>>("reads");
        QTest::addColumn<QList<int>>("times"); // ms of each read (stale limit 100 ms when given)
        QTest::addColumn<QStringList>("items");
        QTest::addColumn<int>("buffered");
        using L = QList<QByteArray>;
        using T = QList<int>;
        const int lenient = int(Policy::Lenient);
        const int checked = int(Policy::Checked);
        const QString exec = QStringLiteral("6:118100000100");
        const QString ident = QStringLiteral("6:81010000");
        const QString tele = QStringLiteral("7:820e0000");

        QTest::newRow("two frames in one read")
            << lenient << L{Executed + Identity} << T{} << QStringList{exec, ident} << 0;
        QTest::newRow("one frame in three reads")
            << lenient << L{Executed.left(3), Executed.mid(3, 5), Executed.mid(8)} << T{} << QStringList{exec}
            << 0;
        QTest::newRow("garbage before a frame")
            << lenient << L{hex("0102030405ff") + Identity} << T{} << QStringList{ident} << 0;
        QTest::newRow("announced length does not fit, a good frame behind in the same read")
            << lenient << L{hex("a5a506004000831122") + Identity} << T{} << QStringList{ident} << 0;
        QTest::newRow("announced length does not fit, a good frame in the next read")
            << lenient << L{hex("a5a5060001008300"), Identity} << T{} << QStringList{ident} << 0;
        QTest::newRow("length past the bound is not waited for")
            << lenient << L{hex("a5a50600ff7f8302") + Identity.left(5), Identity.mid(5)} << T{}
            << QStringList{ident} << 0;
        QTest::newRow("boot-loader message behind a frame, a frame behind that")
            << lenient << L{Executed + LoaderRequest + Identity} << T{}
            << QStringList{exec, QStringLiteral("fw:") + QString::fromLatin1(LoaderRequest.toHex()), ident}
            << 0;
        QTest::newRow("frame, then the head of the next one held")
            << lenient << L{Executed + Identity.left(7), Identity.mid(7)} << T{} << QStringList{exec, ident}
            << 0;
        QTest::newRow("a bad checksum behind a frame is no frame")
            << lenient << L{Executed + badChecksum(Identity) + Telemetry} << T{} << QStringList{exec, tele}
            << 0;
        QTest::newRow("surplus behind a frame dropped, a lone marker kept")
            << lenient << L{Executed + hex("00ffa5")} << T{} << QStringList{exec} << 1;
        QTest::newRow("a read starting with the markers drops a held head")
            << lenient << L{Executed.chopped(1), Identity} << T{} << QStringList{ident} << 0;
        // The first frame of a read stands as it is; garbage with a fitting length is taken.
        QTest::newRow("first frame of a read unexamined")
            << lenient << L{hex("0000070004008201000000000000")} << T{} << QStringList{"7:82010000"} << 0;

        QTest::newRow("device: two requests")
            << checked << L{Identity + Telemetry} << T{} << QStringList{ident, tele} << 0;
        QTest::newRow("device: noise before a request skipped")
            << checked << L{hex("00ffa5") + Identity} << T{} << QStringList{ident} << 0;
        QTest::newRow("device: bad checksum dropped, next kept")
            << checked << L{badChecksum(Identity) + Telemetry} << T{} << QStringList{tele} << 0;
        QTest::newRow("device: implausible length resynchronises")
            << checked << L{hex("a5a50600ffff") + Identity} << T{} << QStringList{ident} << 0;
        QTest::newRow("device: stale head forgotten after a gap")
            << checked << L{Identity.left(5), QByteArray(), Telemetry} << T{0, 500, 510} << QStringList{tele}
            << 0;
        L bytes;
        T times;
        for (int i = 0; i < Identity.size(); ++i) {
            bytes << Identity.mid(i, 1);
            times << i * 90;
        }
        QTest::newRow("device: slow but steady bytes kept")
            << checked << bytes << times << QStringList{ident} << 0;
        for (int cut = 1; cut < Telemetry.size(); ++cut) {
            for (int policy : {lenient, checked})
                QTest::addRow("split after %d (%s)", cut, policy == lenient ? "lenient" : "checked")
                    << policy << L{Telemetry.left(cut), Telemetry.mid(cut)} << T{} << QStringList{tele} << 0;
        }
    }

    void reads() {
        QFETCH(int, policy);
        QFETCH(QList<QByteArray>, reads);
        QFETCH(QList<int>, times);
        QFETCH(QStringList, items);
        QFETCH(int, buffered);
        StreamDeframer deframer(Policy(policy), 512, times.isEmpty() ? 0 : 100);
        QList<StreamDeframer::Item> out;
        for (int i = 0; i < reads.size(); ++i)
            out += deframer.feed(reads.at(i), times.value(i));
        QCOMPARE(render(out), items);
        QCOMPARE(deframer.buffered(), buffered);
    }
};

QTEST_GUILESS_MAIN(tst_StreamDeframer)
#include "tst_streamdeframer.moc"
