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

class tst_Frame : public QObject {
    Q_OBJECT
private slots:
    void build_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QByteArray>("frame");
        QTest::newRow("navigation read, the worked example")
            << 6 << hex("83020000") << hex("a5a506000400830200008102");
        QTest::newRow("empty payload, configuration") << 6 << QByteArray() << hex("a5a5060000000600");
        QTest::newRow("empty payload, command") << 7 << QByteArray() << hex("a5a5070000000700");
        // The odd last byte is not covered by the checksum.
        QTest::newRow("odd payload") << 6 << hex("8301000005") << hex("a5a50600050083010000058001");
        QTest::newRow("odd payload, other last byte")
            << 6 << hex("83010000ff") << hex("a5a50600050083010000ff8001");
        QTest::newRow("login with password")
            << 7 << hex("0101000078563412") << hex("a5a50700080001010000785634124245");
    }

    void build() {
        QFETCH(int, type);
        QFETCH(QByteArray, payload);
        QFETCH(QByteArray, frame);
        QCOMPARE(Frame::build(quint8(type), payload).toHex(), frame.toHex());
        proto::Packet packet{quint8(type), 0, 99, payload, {}};
        Frame::build(packet);
        QCOMPARE(int(packet.length), payload.size());
        QCOMPARE(packet.frame, frame);
        // The marker word is left out as well: only bytes from offset 2 count.
        QCOMPARE(Frame::checksum(QByteArray(2, char(0xFF)) + frame.mid(2)), Frame::checksum(frame));
    }

    void check_data() {
        QTest::addColumn<QByteArray>("chunk");
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("payload");

        const int accepted = int(Frame::ChunkKind::Accepted);
        const int shortChunk = int(Frame::ChunkKind::Short);
        const int firmware = int(Frame::ChunkKind::Firmware);
        const QByteArray status = hex("a5a5060006009181000001009081");
        const QByteArray statusPayload = hex("918100000100");

        QTest::newRow("exactly N+8 accepted") << status << accepted << 6 << statusPayload;
        QTest::newRow("N+7 dropped") << status.chopped(1) << shortChunk << 0 << QByteArray();
        QTest::newRow("N+20 accepted, surplus ignored")
            << status + QByteArray(12, 'w') << accepted << 6 << statusPayload;
        QTest::newRow("markers and checksum not examined")
            << hex("0000070004008201000000000000") << accepted << 7 << hex("82010000");
        QTest::newRow("header only") << hex("a5a5060000000600") << accepted << 6 << QByteArray();
        QTest::newRow("too short to hold a length") << hex("a5a50600") << shortChunk << 0 << QByteArray();
        QTest::newRow("loader packet claimed")
            << hex("550100000000000000910000") << firmware << 0 << QByteArray();
        QTest::newRow("loader packet with 0x9f at offset 9")
            << hex("5501000000000000009f") << firmware << 0 << QByteArray();
        QTest::newRow("0x55 without 0x9x at offset 9 read as a frame")
            << hex("55a5060002000000008100") << accepted << 6 << hex("0000");
        QTest::newRow("0x55 too short for offset 9")
            << hex("55010000ff00000000") << shortChunk << 0 << QByteArray();
    }

    void check() {
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
        // The stream deframer takes the same chunk, read on its own, the same way.
        const QList<StreamDeframer::Item> items = StreamDeframer().feed(chunk);
        QCOMPARE(items.isEmpty(), r.kind == Frame::ChunkKind::Short);
        if (!items.isEmpty()) {
            QCOMPARE(items.first().firmware, r.kind == Frame::ChunkKind::Firmware);
            QCOMPARE(int(items.first().type), type);
            QCOMPARE(items.first().payload.toHex(), payload.toHex());
        }
    }

    void deframer_data() {
        QTest::addColumn<int>("policy");
        QTest::addColumn<QList<QByteArray>>("reads");
        QTest::addColumn<QList<int>>("times"); // ms of each read (stale limit 100 ms when given)
        QTest::addColumn<QStringList>("items");
        QTest::addColumn<int>("buffered");
        using L = QList<QByteArray>;
        const int lenient = int(Policy::Lenient);
        const int checked = int(Policy::Checked);
        const auto row = [](const QString &name, int policy, const L &reads, const QStringList &items,
                            int buffered = 0, const QList<int> &times = {}) {
            QTest::newRow(qPrintable(name)) << policy << reads << times << items << buffered;
        };
        const QString exec = QStringLiteral("6:118100000100");
        const QString ident = QStringLiteral("6:81010000");
        const QString tele = QStringLiteral("7:820e0000");
        const QString loader = QStringLiteral("fw:") + QString::fromLatin1(LoaderRequest.toHex());

        row("two frames in one read", lenient, {Executed + Identity}, {exec, ident});
        row("one frame in three reads", lenient, {Executed.left(3), Executed.mid(3, 5), Executed.mid(8)},
            {exec});
        row("garbage before a frame", lenient, {hex("0102030405ff") + Identity}, {ident});
        row("announced length does not fit, a good frame behind in the same read", lenient,
            {hex("a5a506004000831122") + Identity}, {ident});
        row("announced length does not fit, a good frame in the next read", lenient,
            {hex("a5a5060001008300"), Identity}, {ident});
        row("length past the bound is not waited for", lenient,
            {hex("a5a50600ff7f8302") + Identity.left(5), Identity.mid(5)}, {ident});
        row("boot-loader message behind a frame, a frame behind that", lenient,
            {Executed + LoaderRequest + Identity}, {exec, loader, ident});
        row("frame, then the head of the next one held", lenient,
            {Executed + Identity.left(7), Identity.mid(7)}, {exec, ident});
        row("a bad checksum behind a frame is no frame", lenient,
            {Executed + badChecksum(Identity) + Telemetry}, {exec, tele});
        row("surplus behind a frame dropped, a lone marker kept", lenient, {Executed + hex("00ffa5")}, {exec},
            1);
        row("a read starting with the markers drops a held head", lenient, {Executed.chopped(1), Identity},
            {ident});
        // The first frame of a read stands as it is; garbage with a fitting length is taken.
        row("first frame of a read unexamined", lenient, {hex("0000070004008201000000000000")},
            {"7:82010000"});

        row("device: two requests", checked, {Identity + Telemetry}, {ident, tele});
        row("device: noise before a request skipped", checked, {hex("00ffa5") + Identity}, {ident});
        row("device: bad checksum dropped, next kept", checked, {badChecksum(Identity) + Telemetry}, {tele});
        row("device: implausible length resynchronises", checked, {hex("a5a50600ffff") + Identity}, {ident});
        row("device: stale head forgotten after a gap", checked, {Identity.left(5), QByteArray(), Telemetry},
            {tele}, 0, {0, 500, 510});
        L bytes;
        QList<int> times;
        for (int i = 0; i < Identity.size(); ++i) {
            bytes << Identity.mid(i, 1);
            times << i * 90;
        }
        row("device: slow but steady bytes kept", checked, bytes, {ident}, 0, times);
        for (int cut = 1; cut < Telemetry.size(); ++cut) {
            row(QStringLiteral("split after %1 (lenient)").arg(cut), lenient,
                {Telemetry.left(cut), Telemetry.mid(cut)}, {tele});
            row(QStringLiteral("split after %1 (checked)").arg(cut), checked,
                {Telemetry.left(cut), Telemetry.mid(cut)}, {tele});
        }
    }

    void deframer() {
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

QTEST_GUILESS_MAIN(tst_Frame)
#include "tst_frame.moc"
