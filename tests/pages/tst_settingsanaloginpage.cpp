#include "pages/SettingsAnalogInPage.h"
#include "tests/pages/PageSession.h"

#include "Devices/AgcConfiguration.h"

class tst_SettingsAnalogInPage : public QObject {
    Q_OBJECT

private slots:
    void roundTrip_data() {
        QTest::addColumn<int>("enabled");
        QTest::addColumn<int>("low");
        QTest::addColumn<int>("high");
        QTest::addColumn<int>("sensitivity");
        QTest::addColumn<int>("averaging");
        QTest::addColumn<QString>("record"); // the ten bytes after the head, per channel
        QTest::newRow("lowest") << 0 << 0 << 0 << 0 << 0 << "00 00 0000 0000 0000 0000";
        QTest::newRow("highest") << 1 << 65535 << 65535 << 65535 << 65535 << "01 00 ffff ffff ffff ffff";
        QTest::newRow("mixed") << 1 << 0x1234 << 0x0100 << 2 << 300 << "01 00 3412 0001 0200 2c01";
    }
    void roundTrip() {
        QFETCH(int, enabled);
        QFETCH(int, low);
        QFETCH(int, high);
        QFETCH(int, sensitivity);
        QFETCH(int, averaging);
        QFETCH(QString, record);

        PageSession s;
        SettingsAnalogInPage page(&s.configuration);
        VantorConfiguration device;
        for (int ch = 0; ch < 3; ++ch) {
            AgcConfigurationItem *d = device.agc()->element(ch);
            d->setEnabled(enabled);
            // Every channel differs from the others so that a swapped channel shows.
            d->setThresholdLow(quint16(low ^ ch));
            d->setThresholdHigh(quint16(high ^ ch));
            d->setSensitivity(quint16(sensitivity ^ ch));
            d->setAveraging(quint16(averaging ^ ch));
        }
        s.configuration.agc()->decode(device.agc()->encodeAnswer());
        QVERIFY(!page.isModified());

        QStringList expected;
        for (int ch = 0; ch < 3; ++ch) {
            const auto &c = page.channel(ch);
            QCOMPARE(int(c.enabled->isChecked()), enabled);
            QCOMPARE(c.thresholdLow->value(), low ^ ch);
            QCOMPARE(c.thresholdHigh->value(), high ^ ch);
            QCOMPARE(c.sensitivity->value(), sensitivity ^ ch);
            QCOMPARE(c.averaging->value(), averaging ^ ch);
            s.configuration.agc()->element(ch)->setThresholdHigh(4321);
            s.configuration.agc()->element(ch)->setEnabled(!enabled);
            expected << hexFrame(6, qPrintable(QStringLiteral("0c02%1 00").arg(ch, 2, 16, QLatin1Char('0')) +
                                               QString::fromLatin1(device.agc()->encode(ch).mid(4).toHex())));
        }
        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), expected);
        QVERIFY(s.queued().first().endsWith(record.remove(QLatin1Char(' '))));
    }
};

QTEST_MAIN(tst_SettingsAnalogInPage)
#include "tst_settingsanaloginpage.moc"
