#include "OutputConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::OutputConfiguration;

namespace {
QString states(const OutputConfigurationItem *e) {
    QStringList parts;
    for (quint8 s : e->states())
        parts << QString::number(s);
    return parts.join(QLatin1Char(' '));
}
} // namespace

class tst_OutputConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("numberOfOutputs");
        QTest::addColumn<QString>("states");

        QTest::newRow("7 data bytes give 3 outputs")
            << QByteArray::fromHex("8e 01 00 00 01 00 00 00 01 00 ff") << 3 << "1 0 1";
        QTest::newRow("no data, no outputs") << QByteArray::fromHex("8e 01 00 00") << 0 << "";
        QTest::newRow("second byte of each record is not a state")
            << QByteArray::fromHex("8e 01 00 00 00 01 02 03") << 2 << "0 2";
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("8e 81 00 00 01 00") << 7 << "5";
        QTest::newRow("another code changes nothing") << QByteArray::fromHex("8d 01 00 00 01 00") << 7 << "5";
    }

    void decode() {
        QFETCH(QByteArray, payload);
        OutputConfiguration s(1);
        s.value()->setNumberOfOutputs(7);
        s.value()->setStates({5});

        s.decode(payload);

        QTEST(int(s.value()->numberOfOutputs()), "numberOfOutputs");
        QTEST(states(s.value()), "states");
    }

    void numberOfOutputs_isMaskedTo8Bits() {
        OutputConfiguration s(1);
        s.decode(QByteArray::fromHex("8e 01 00 00") + QByteArray(2 * 257, '\1'));
        QCOMPARE(int(s.value()->numberOfOutputs()), 1);
        QCOMPARE(s.value()->states().size(), 257);
    }

    void encodeParameters_takesTheHeadFromTheCallerAndLeavesOutTheCount() {
        OutputConfiguration s(1);
        s.value()->setOutNum(2);
        s.value()->setHighCondition(100);
        s.value()->setLowCondition(10);
        s.value()->setReplayCounter(3);
        s.value()->setNumberOfOutputs(4);
        const QByteArray expected = QByteArray::fromHex("02 0a 00 00 02 64 0a 03");
        QCOMPARE(s.encodeParameters(0x02, 0x0a).toHex(' '), expected.toHex(' '));
        OutputConfiguration device(1);
        QVERIFY(device.decodeParameters(expected));
        QCOMPARE(int(device.value()->replayCounter()), 3);
    }

    void encodeStates_data() {
        QTest::addColumn<QString>("states");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("missing states are 0") << "1 0" << QByteArray::fromHex("01 00 00 00");
        QTest::newRow("states beyond four are dropped") << "1 1 0 1 1" << QByteArray::fromHex("01 01 00 01");
        QTest::newRow("no states") << "" << QByteArray::fromHex("00 00 00 00");
    }

    void encodeStates() {
        QFETCH(QString, states);
        QFETCH(QByteArray, expected);
        OutputConfiguration s(1);
        QVector<quint8> v;
        for (const QString &p : states.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            v << quint8(p.toInt());
        s.value()->setStates(v);

        QCOMPARE(s.encodeStates().toHex(' '), expected.toHex(' '));
    }

    void deviceSide_outputWritesChangeTheAnsweredStates_data() {
        QTest::addColumn<QByteArray>("write");
        QTest::addColumn<QString>("states");
        QTest::newRow("one output") << QByteArray::fromHex("0e 01 02 00 01 00") << "0 0 1 0";
        QTest::newRow("set outputs") << QByteArray::fromHex("02 09 00 00 01 01 00 01") << "1 1 0 1";
        QTest::newRow("one output beyond the list grows it")
            << QByteArray::fromHex("0e 01 05 00 01 00") << "0 0 0 0 0 1";
    }

    void deviceSide_outputWritesChangeTheAnsweredStates() {
        QFETCH(QByteArray, write);
        QFETCH(QString, states);
        OutputConfiguration device(1);
        device.value()->setStates({0, 0, 0, 0});

        QVERIFY(device.decodeWrite(write));

        OutputConfiguration reader(1);
        reader.decode(device.encodeAnswer());
        QCOMPARE(::states(reader.value()), states);
    }
};

QTEST_GUILESS_MAIN(tst_OutputConfiguration)
#include "tst_outputconfiguration.moc"
