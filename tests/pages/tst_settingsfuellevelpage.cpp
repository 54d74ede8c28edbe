#include "pages/SettingsFuelLevelPage.h"
#include "tests/pages/PageSession.h"

#include "Devices/FuelConfiguration.h"

class tst_SettingsFuelLevelPage : public QObject {
    Q_OBJECT

private slots:
    void roundTrip_data() {
        QTest::addColumn<int>("addrBase");
        QTest::addColumn<int>("tankBase");
        QTest::addColumn<int>("averagingBase");
        QTest::addColumn<int>("step"); // added per element index, so that every element is told apart
        QTest::addColumn<QString>("frame");
        QTest::newRow("lowest") << 0 << 0 << 0 << 0
                                << hexFrame(6, "08010000 0000 0000 0000 0000 0000 0000 0000 0000"
                                               " 0000 0000 0000 0000 0000");
        QTest::newRow("highest") << 255 << 255 << 65535 << -1
                                 << hexFrame(6, "08010000 ffff fefe fdfd fcfc fbfb fafa f9f9 f8f8"
                                                " ffff feff fdff fcff fbff");
        QTest::newRow("mixed") << 100 << 4 << 1000 << -1
                               << hexFrame(6, "08010000 6404 6303 6202 6101 6000 5fff 5efe 5dfd"
                                              " e803 e703 e603 e503 e403");
    }
    void roundTrip() {
        QFETCH(int, addrBase);
        QFETCH(int, tankBase);
        QFETCH(int, averagingBase);
        QFETCH(int, step);
        QFETCH(QString, frame);

        PageSession s;
        SettingsFuelLevelPage page(&s.configuration);
        VantorConfiguration device;
        for (int i = 0; i < 8; ++i) {
            FuelConfigurationItem *d = device.fuel()->element(i);
            d->setAddr(quint8(addrBase + step * i));
            d->setTank_num(quint8(tankBase + step * i));
            d->setAveraging(quint16(averagingBase + step * i));
        }
        s.configuration.fuel()->decode(device.fuel()->encodeAnswer());
        QVERIFY(!page.isModified());
        for (int i = 0; i < 8; ++i) {
            QCOMPARE(page.address(i)->value(), int(quint8(addrBase + step * i)));
            QCOMPARE(page.tank(i)->value(), int(quint8(tankBase + step * i)));
        }
        for (int t = 0; t < 5; ++t)
            QCOMPARE(page.averaging(t)->value(), int(quint16(averagingBase + step * t)));

        for (int i = 0; i < 8; ++i) {
            s.configuration.fuel()->element(i)->setAddr(42);
            s.configuration.fuel()->element(i)->setTank_num(42);
        }
        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), QStringList{frame});
    }

    // The three sensors without a tank of their own keep the averaging the file gave them.
    void averagingOfSensorsFiveToSeven_isKeptButNotShown() {
        PageSession s;
        for (int i = 5; i < 8; ++i)
            s.configuration.fuel()->element(i)->setAveraging(quint16(500 + i));
        SettingsFuelLevelPage page(&s.configuration);
        page.averaging(4)->setValue(444);
        page.address(7)->setValue(7);
        page.applyToDevice(s.workflows);
        for (int i = 5; i < 8; ++i)
            QCOMPARE(s.configuration.fuel()->element(i)->averaging(), quint16(500 + i));
        QCOMPARE(s.configuration.fuel()->element(4)->averaging(), quint16(444));
        QCOMPARE(s.queued().size(), 1);
        QVERIFY(s.queued().first().endsWith(QStringLiteral("bc01")));
    }
};

QTEST_MAIN(tst_SettingsFuelLevelPage)
#include "tst_settingsfuellevelpage.moc"
