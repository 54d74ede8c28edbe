#include "pages/SystemPage.h"
#include "tests/pages/PageSession.h"

#include "Devices/SystemConfiguration.h"

class tst_SystemPage : public QObject {
    Q_OBJECT

private slots:
    void roundTrip_data() {
        QTest::addColumn<QVector<int>>("values"); // parking pwr gsens lowSpeed outCtrl
        QTest::addColumn<QString>("frame");
        QTest::newRow("lowest") << QVector<int>{0, 0, 0, 0, 0} << hexFrame(6, "11010000 00 00 00 00");
        QTest::newRow("highest") << QVector<int>{255, 255, 15, 1, 1} << hexFrame(6, "11010000 ff ff 3f 00");
        QTest::newRow("mixed") << QVector<int>{30, 2, 7, 0, 1} << hexFrame(6, "11010000 1e 02 27 00");
    }
    void roundTrip() {
        QFETCH(QVector<int>, values);
        QFETCH(QString, frame);
        PageSession s;
        SystemConfigurationItem *item = s.configuration.system()->value();
        const auto setModel = [item](const QVector<int> &v) {
            item->setParkingMin(v[0]);
            item->setPwrMode(v[1]);
            item->setGsens(v[2]);
            item->setLowSpeed(v[3]);
            item->setOutCtrl(v[4]);
        };
        setModel(values);
        SystemPage page(&s.configuration);
        QCOMPARE((QVector<int>{page.parkingMin->value(), page.pwrMode->value(), page.gsens->value(),
                               page.lowSpeed->isChecked(), page.outCtrl->isChecked()}),
                 values);
        QVERIFY(!page.isModified());

        // Scramble the model behind the page's back; storing puts the shown values back.
        setModel({values[0] ^ 0x55, values[1] ^ 0x55, values[2] ^ 0x05, !values[3], !values[4]});
        page.applyToDevice(s.workflows);
        QCOMPARE((QVector<int>{item->parkingMin(), item->pwrMode(), item->gsens(), item->lowSpeed(),
                               item->OutCtrl()}),
                 values);
        QCOMPARE(s.queued(), QStringList{frame});
    }
};

QTEST_MAIN(tst_SystemPage)
#include "tst_systempage.moc"
