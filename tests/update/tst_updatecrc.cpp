#include "update/UpdateCrc.h"

#include <QRandomGenerator>
#include <QtTest>

// The boot loader's arithmetic, bit by bit: message bits shift into the register, nothing is appended.
static quint16 bitwiseReference(const QByteArray &data) {
    quint16 reg = 0;
    for (char c : data) {
        for (int bit = 7; bit >= 0; --bit) {
            const bool top = reg & 0x8000;
            reg = quint16((reg << 1) | ((quint8(c) >> bit) & 1));
            if (top)
                reg ^= 0x1021;
        }
    }
    return reg;
}

class tst_UpdateCrc : public QObject {
    Q_OBJECT
private slots:
    void knownVectors_data() {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<quint16>("crc");
        QTest::newRow("empty range gives the start value") << QByteArray() << quint16(0);
        // 0x010000: the 1 leaves bit 15 on the 17th shift and the generator is folded in once.
        QTest::newRow("bit leaves the register") << QByteArray::fromHex("010000") << quint16(0x1021);
        // Not the XMODEM value 0x31C3 of "123456789": no sixteen zero bits are appended.
        QTest::newRow("123456789 differs from XMODEM") << QByteArray("123456789") << quint16(0xBEEF);
        QTest::newRow("two zero bytes appended give XMODEM")
            << QByteArray("123456789").append(2, '\0') << quint16(0x31C3);
    }
    void knownVectors() {
        QFETCH(QByteArray, data);
        QFETCH(quint16, crc);
        QCOMPARE(UpdateCrc::compute(data.constData(), data.size()), crc);
        QCOMPARE(bitwiseReference(data), crc);
    }

    void tableMatchesBitwiseOnRandomData() {
        QRandomGenerator rng(2654435761u);
        for (int size : {1, 2, 3, 9, 16, 523, 4096}) {
            for (int round = 0; round < 50; ++round) {
                QByteArray data(size, '\0');
                for (char &c : data)
                    c = char(rng.bounded(256));
                QCOMPARE(UpdateCrc::compute(data.constData(), data.size()), bitwiseReference(data));
            }
        }
    }

    void rangeOverloadCutsAtTheEnd() {
        const QByteArray bytes = QByteArray::fromHex("55020312090011030094");
        QCOMPARE(UpdateCrc::compute(bytes, 1, 9), bitwiseReference(bytes.mid(1, 9)));
        QCOMPARE(UpdateCrc::compute(bytes, 5, 100), bitwiseReference(bytes.mid(5)));
        QCOMPARE(UpdateCrc::compute(bytes, 20, 4), quint16(0));
    }
};

QTEST_APPLESS_MAIN(tst_UpdateCrc)
#include "tst_updatecrc.moc"
