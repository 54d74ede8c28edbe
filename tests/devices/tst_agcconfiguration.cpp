#include "AgcConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::AgcConfiguration;

namespace {
QString describe(const AgcConfigurationItem *e) {
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(e->enabled())
        .arg(e->thresholdLow())
        .arg(e->thresholdHigh())
        .arg(e->sensitivity())
        .arg(e->averaging());
}

const QString kOld = QStringLiteral("1 9 9 9 9");
} // namespace

class tst_AgcConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QStringList>("expected");

        const QByteArray head = QByteArray::fromHex("8c 02 00 00");
        const QByteArray r0 = QByteArray::fromHex("01 00 e8 03 d0 07 0a 00 05 00");
        const QByteArray r1 = QByteArray::fromHex("fe 00 01 00 02 00 03 00 04 00");
        const QByteArray r2 = QByteArray::fromHex("03 ff ff ff 00 80 01 01 00 00");

        QTest::newRow("three records set three channels")
            << head + r0 + r1 + r2 << QStringList{"1 1000 2000 10 5", "0 1 2 3 4", "1 65535 32768 257 0"};
        QTest::newRow("25 bytes set channels 0 and 1 only")
            << head + r0 + r1 + r2.left(1) << QStringList{"1 1000 2000 10 5", "0 1 2 3 4", kOld};
        QTest::newRow("a fourth record is skipped")
            << head + r0 + r1 + r2 + r0
            << QStringList{"1 1000 2000 10 5", "0 1 2 3 4", "1 65535 32768 257 0"};
        QTest::newRow("another kind changes nothing")
            << QByteArray::fromHex("8c 01 00 00") + r0 << QStringList{kOld, kOld, kOld};
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("8c 82 00 00") + r0 << QStringList{kOld, kOld, kOld};
    }

    void decode() {
        QFETCH(QByteArray, payload);
        QFETCH(QStringList, expected);
        AgcConfiguration s(3);
        for (int i = 0; i < 3; ++i) {
            s.element(i)->setEnabled(1);
            s.element(i)->setThresholdLow(9);
            s.element(i)->setThresholdHigh(9);
            s.element(i)->setSensitivity(9);
            s.element(i)->setAveraging(9);
        }

        s.decode(payload);

        for (int i = 0; i < 3; ++i)
            QCOMPARE(describe(s.element(i)), expected.at(i));
    }

    void decode_logsEveryChannel() {
        AgcConfiguration s(3);
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression("^\\d+ Прочитано 8c 02 00 00 Конфигурация ADC\\[0$"));
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression("^\\d+ Прочитано 8c 02 00 00 Конфигурация ADC\\[1$"));
        QSignalSpy filled(&s, &AgcConfiguration::DeviceInfoFilled);
        QSignalSpy channelFilled(&s, &AgcConfiguration::DeviceInfoChanged);

        s.decode(QByteArray::fromHex("8c 02 00 00") + QByteArray(20, '\0'));

        QCOMPARE(filled.count(), 1);
        QCOMPARE(channelFilled.count(), 2);
        QCOMPARE(channelFilled.at(1).at(0).toUInt(), 1u);
    }

    // The four value signals and the filled signal come first, in the order connections by index rely on.
    void signals_keepTheirOrder_data() {
        QTest::addColumn<bool>("section");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("channel") << false
                                 << QStringList{"thresholdLowChanged(uint16_t)",
                                                "thresholdHighChanged(uint16_t)",
                                                "sensitivityChanged(uint16_t)",
                                                "averagingChanged(uint16_t)",
                                                "DeviceInfoFilled()",
                                                "enabledChanged(uchar)"};
        QTest::newRow("section") << true
                                 << QStringList{"agcChannelHighThresholdChanged(uint32_t,uint32_t)",
                                                "agcChannelLowThresholdChanged(uint32_t,uint32_t)",
                                                "agcChannelAveragingChanged(uint32_t,uint32_t)",
                                                "agcChannelSensitivityChanged(uint32_t,uint32_t)",
                                                "DeviceInfoChanged(uint32_t)",
                                                "agcChannelEnabledChanged(uint32_t,uint32_t)"};
    }

    void signals_keepTheirOrder() {
        QFETCH(bool, section);
        QFETCH(QStringList, expected);
        const QMetaObject &mo =
            section ? AgcConfiguration::staticMetaObject : AgcConfigurationItem::staticMetaObject;
        QStringList own;
        for (int i = mo.methodOffset(); i < mo.methodCount(); ++i) {
            if (mo.method(i).methodType() == QMetaMethod::Signal)
                own << QString::fromLatin1(mo.method(i).methodSignature());
        }
        QCOMPARE(own, expected);
    }

    void elementSignals_areReemittedWithTheChannel_data() {
        QTest::addColumn<int>("channel");
        QTest::addColumn<QByteArray>("elementSignal");
        QTest::addColumn<QByteArray>("sectionSignal");
        QTest::addColumn<int>("value");
        QTest::newRow("high threshold of the third channel")
            << 2 << QByteArray("thresholdHighChanged")
            << QByteArray(SIGNAL(agcChannelHighThresholdChanged(uint32_t, uint32_t))) << 1234;
        QTest::newRow("low threshold of the first channel")
            << 0 << QByteArray("thresholdLowChanged")
            << QByteArray(SIGNAL(agcChannelLowThresholdChanged(uint32_t, uint32_t))) << 17;
        QTest::newRow("averaging of the second channel")
            << 1 << QByteArray("averagingChanged")
            << QByteArray(SIGNAL(agcChannelAveragingChanged(uint32_t, uint32_t))) << 65535;
        QTest::newRow("sensitivity of the third channel")
            << 2 << QByteArray("sensitivityChanged")
            << QByteArray(SIGNAL(agcChannelSensitivityChanged(uint32_t, uint32_t))) << 3;
    }

    void elementSignals_areReemittedWithTheChannel() {
        QFETCH(int, channel);
        QFETCH(QByteArray, elementSignal);
        QFETCH(QByteArray, sectionSignal);
        QFETCH(int, value);
        AgcConfiguration s(3);
        QSignalSpy spy(&s, sectionSignal.constData());
        // Emitted directly, as a page's widget mapping may do, not only through the setters.
        QVERIFY(QMetaObject::invokeMethod(s.element(channel), elementSignal.constData(),
                                          Q_ARG(uint16_t, uint16_t(value))));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toUInt(), uint(channel));
        QCOMPARE(spy.at(0).at(1).toUInt(), uint(value));
    }

    void encode_data() {
        QTest::addColumn<int>("channel");
        QTest::addColumn<int>("enabled");
        QTest::addColumn<QByteArray>("expected");

        QTest::newRow("channel 1 enabled")
            << 1 << 1 << QByteArray::fromHex("0c 02 01 00 01 00 e8 03 d0 07 0a 00 05 00");
        QTest::newRow("enabled 2 is written as 0")
            << 2 << 2 << QByteArray::fromHex("0c 02 02 00 00 00 e8 03 d0 07 0a 00 05 00");
        QTest::newRow("channel outside the section") << 3 << 1 << QByteArray();
    }

    void encode() {
        QFETCH(int, channel);
        QFETCH(int, enabled);
        QFETCH(QByteArray, expected);
        AgcConfiguration s(3);
        if (AgcConfigurationItem *e = s.element(channel)) {
            e->setEnabled(quint8(enabled));
            e->setThresholdLow(1000);
            e->setThresholdHigh(2000);
            e->setSensitivity(10);
            e->setAveraging(5);
        }

        QCOMPARE(s.encode(channel).toHex(' '), expected.toHex(' '));
    }
};

QTEST_GUILESS_MAIN(tst_AgcConfiguration)
#include "tst_agcconfiguration.moc"
