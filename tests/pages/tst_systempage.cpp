#include "PageSession.h"
#include "SystemPage.h"

#include "Devices/SystemConfiguration.h"

#include <QCheckBox>
#include <QSpinBox>
#include <QtTest>

class tst_SystemPage : public QObject {
    Q_OBJECT

private slots:
    void ranges() {
        PageSession s;
        SystemPage page(&s.configuration);
        QCOMPARE(page.parkingMin->maximum(), 255);
        QCOMPARE(page.pwrMode->maximum(), 255);
        QCOMPARE(page.gsens->maximum(), 15);
        QVERIFY(page.parkingMin->suffix().contains(QStringLiteral("мин")));
        QCOMPARE(page.title(), QStringLiteral("Системные параметры"));
    }

    void roundTrip_data() {
        QTest::addColumn<int>("parking");
        QTest::addColumn<int>("pwr");
        QTest::addColumn<int>("gsens");
        QTest::addColumn<int>("lowSpeed");
        QTest::addColumn<int>("outCtrl");
        QTest::addColumn<QString>("frame");
        QTest::newRow("lowest") << 0 << 0 << 0 << 0 << 0 << hexFrame(6, "11010000 00 00 00 00");
        QTest::newRow("highest") << 255 << 255 << 15 << 1 << 1 << hexFrame(6, "11010000 ff ff 3f 00");
        QTest::newRow("mixed") << 30 << 2 << 7 << 0 << 1 << hexFrame(6, "11010000 1e 02 27 00");
    }
    void roundTrip() {
        QFETCH(int, parking);
        QFETCH(int, pwr);
        QFETCH(int, gsens);
        QFETCH(int, lowSpeed);
        QFETCH(int, outCtrl);
        QFETCH(QString, frame);

        PageSession s;
        SystemConfigurationItem *item = s.configuration.system()->value();
        item->setParkingMin(parking);
        item->setPwrMode(pwr);
        item->setGsens(gsens);
        item->setLowSpeed(lowSpeed);
        item->setOutCtrl(outCtrl);
        SystemPage page(&s.configuration);
        QCOMPARE(page.parkingMin->value(), parking);
        QCOMPARE(page.pwrMode->value(), pwr);
        QCOMPARE(page.gsens->value(), gsens);
        QCOMPARE(int(page.lowSpeed->isChecked()), lowSpeed);
        QCOMPARE(int(page.outCtrl->isChecked()), outCtrl);
        QVERIFY(!page.isModified());

        // Scramble the model behind the page's back; storing puts the shown values back.
        item->setParkingMin(quint8(parking ^ 0x55));
        item->setPwrMode(quint8(pwr ^ 0x55));
        item->setGsens(quint8(gsens ^ 0x05));
        item->setLowSpeed(quint8(!lowSpeed));
        item->setOutCtrl(quint8(!outCtrl));
        page.applyToDevice(s.workflows);

        QCOMPARE(int(item->parkingMin()), parking);
        QCOMPARE(int(item->pwrMode()), pwr);
        QCOMPARE(int(item->gsens()), gsens);
        QCOMPARE(int(item->lowSpeed()), lowSpeed);
        QCOMPARE(int(item->OutCtrl()), outCtrl);
        QCOMPARE(s.queued(), QStringList{frame});
    }
};

QTEST_MAIN(tst_SystemPage)
#include "tst_systempage.moc"
