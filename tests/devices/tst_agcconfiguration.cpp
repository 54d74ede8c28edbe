#include "Devices/AgcConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::AgcConfiguration;

namespace {
// enabled low high sensitivity averaging of each channel
QString describe(const AgcConfiguration &s) {
    QStringList parts;
    for (int i = 0; i < s.count(); ++i) {
        const AgcConfigurationItem *e = s.element(i);
        parts << QStringLiteral("%1 %2 %3 %4 %5")
                     .arg(e->enabled())
                     .arg(e->thresholdLow())
                     .arg(e->thresholdHigh())
                     .arg(e->sensitivity())
                     .arg(e->averaging());
    }
    return parts.join(QLatin1String(" / "));
}

QStringList ownSignals(const QMetaObject &mo) {
    QStringList own;
    for (int i = mo.methodOffset(); i < mo.methodCount(); ++i) {
        if (mo.method(i).methodType() == QMetaMethod::Signal)
            own << QString::fromLatin1(mo.method(i).methodSignature());
    }
    return own;
}
} // namespace

class tst_AgcConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("expected");

        const QByteArray head = QByteArray::fromHex("8c 02 00 00");
        const QByteArray r0 = QByteArray::fromHex("01 00 e8 03 d0 07 0a 00 05 00");
        const QByteArray r1 = QByteArray::fromHex("fe 00 01 00 02 00 03 00 04 00");
        const QByteArray r2 = QByteArray::fromHex("03 ff ff ff 00 80 01 01 00 00");
        const QString old = QStringLiteral("1 9 9 9 9 / 1 9 9 9 9 / 1 9 9 9 9");

        QTest::newRow("three records set three channels")
            << head + r0 + r1 + r2 << "1 1000 2000 10 5 / 0 1 2 3 4 / 1 65535 32768 257 0";
        QTest::newRow("25 bytes set channels 0 and 1 only")
            << head + r0 + r1 + r2.left(1) << "1 1000 2000 10 5 / 0 1 2 3 4 / 1 9 9 9 9";
        QTest::newRow("a fourth record is skipped")
            << head + r0 + r1 + r2 + r0 << "1 1000 2000 10 5 / 0 1 2 3 4 / 1 65535 32768 257 0";
        QTest::newRow("another kind changes nothing") << QByteArray::fromHex("8c 01 00 00") + r0 << old;
        QTest::newRow("status answer changes nothing") << QByteArray::fromHex("8c 82 00 00") + r0 << old;
    }

    void decode() {
        QFETCH(QByteArray, payload);
        AgcConfiguration s(3);
        for (int i = 0; i < 3; ++i) {
            s.element(i)->setEnabled(1);
            s.element(i)->setThresholdLow(9);
            s.element(i)->setThresholdHigh(9);
            s.element(i)->setSensitivity(9);
            s.element(i)->setAveraging(9);
        }
        s.decode(payload);
        QTEST(describe(s), "expected");
    }

    void decode_logsAndAnnouncesEveryChannel() {
        AgcConfiguration s(3);
        for (const char *n : {"0", "1"})
            QTest::ignoreMessage(
                QtDebugMsg,
                QRegularExpression(QStringLiteral("^\\d+ Прочитано 8c 02 00 00 Конфигурация ADC\\[%1$")
                                       .arg(QLatin1String(n))));
        QSignalSpy filled(&s, &AgcConfiguration::DeviceInfoFilled);
        QSignalSpy channelFilled(&s, &AgcConfiguration::DeviceInfoChanged);
        s.decode(QByteArray::fromHex("8c 02 00 00") + QByteArray(20, '\0'));
        QCOMPARE(filled.count(), 1);
        QCOMPARE(channelFilled.count(), 2);
        QCOMPARE(channelFilled.at(1).at(0).toUInt(), 1u);
    }

    // The four value signals and the filled signal come first, in the order connections by index rely on.
    void signals_keepTheirOrder() {
        QCOMPARE(ownSignals(AgcConfigurationItem::staticMetaObject),
                 QStringList({"thresholdLowChanged(uint16_t)", "thresholdHighChanged(uint16_t)",
                              "sensitivityChanged(uint16_t)", "averagingChanged(uint16_t)",
                              "DeviceInfoFilled()", "enabledChanged(uchar)"}));
        QCOMPARE(ownSignals(AgcConfiguration::staticMetaObject),
                 QStringList({"agcChannelHighThresholdChanged(uint32_t,uint32_t)",
                              "agcChannelLowThresholdChanged(uint32_t,uint32_t)",
                              "agcChannelAveragingChanged(uint32_t,uint32_t)",
                              "agcChannelSensitivityChanged(uint32_t,uint32_t)",
                              "DeviceInfoChanged(uint32_t)", "agcChannelEnabledChanged(uint32_t,uint32_t)"}));
    }

    void elementSignals_areReemittedWithTheChannel_data() {
        QTest::addColumn<int>("channel");
        QTest::addColumn<QByteArray>("elementSignal");
        QTest::addColumn<QByteArray>("sectionSignal");
        QTest::newRow("high threshold of the third channel")
            << 2 << QByteArray("thresholdHighChanged")
            << QByteArray(SIGNAL(agcChannelHighThresholdChanged(uint32_t, uint32_t)));
        QTest::newRow("low threshold of the first channel")
            << 0 << QByteArray("thresholdLowChanged")
            << QByteArray(SIGNAL(agcChannelLowThresholdChanged(uint32_t, uint32_t)));
        QTest::newRow("averaging of the second channel")
            << 1 << QByteArray("averagingChanged")
            << QByteArray(SIGNAL(agcChannelAveragingChanged(uint32_t, uint32_t)));
        QTest::newRow("sensitivity of the third channel")
            << 2 << QByteArray("sensitivityChanged")
            << QByteArray(SIGNAL(agcChannelSensitivityChanged(uint32_t, uint32_t)));
    }

    void elementSignals_areReemittedWithTheChannel() {
        QFETCH(int, channel);
        QFETCH(QByteArray, elementSignal);
        QFETCH(QByteArray, sectionSignal);
        AgcConfiguration s(3);
        QSignalSpy spy(&s, sectionSignal.constData());
        // Emitted directly, as a page's widget mapping may do, not only through the setters.
        QVERIFY(QMetaObject::invokeMethod(s.element(channel), elementSignal.constData(),
                                          Q_ARG(uint16_t, uint16_t(65535))));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0), QVariantList({uint(channel), 65535u}));
    }

    void encode_masksEnabledToItsLowestBit() {
        AgcConfiguration s(3);
        AgcConfigurationItem *e = s.element(2);
        e->setEnabled(2);
        e->setThresholdLow(1000);
        e->setThresholdHigh(2000);
        e->setSensitivity(10);
        e->setAveraging(5);
        QCOMPARE(s.encode(2).toHex(' '), QByteArray("0c 02 02 00 00 00 e8 03 d0 07 0a 00 05 00"));
        e->setEnabled(1);
        QCOMPARE(s.encode(2).toHex(' '), QByteArray("0c 02 02 00 01 00 e8 03 d0 07 0a 00 05 00"));
        QVERIFY(s.encode(3).isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_AgcConfiguration)
#include "tst_agcconfiguration.moc"
