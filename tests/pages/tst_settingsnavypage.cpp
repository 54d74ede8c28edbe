#include "pages/SettingsNavyPage.h"
#include "tests/pages/PageSession.h"

#include "Devices/NavigationConfiguration.h"

class tst_SettingsNavyPage : public QObject {
    Q_OBJECT

private slots:
    void roundTrip_data() {
        QTest::addColumn<QVector<int>>("values"); // course speed timeout distance freeze pwrNav fault
        QTest::addColumn<QStringList>("frames");
        QTest::newRow("lowest") << QVector<int>{0, 0, 0, 0, 0, 0, 0}
                                << QStringList{hexFrame(6, "03030000 00 00 00 00"),
                                               hexFrame(6, "03020000 00 00 00 00 0000")};
        QTest::newRow("highest") << QVector<int>{255, 255, 255, 255, 1, 15, 255}
                                 << QStringList{hexFrame(6, "03030000 01 0f ff 00"),
                                                hexFrame(6, "03020000 ff ff ff ff 0000")};
        QTest::newRow("mixed") << QVector<int>{15, 10, 120, 200, 1, 4, 5}
                               << QStringList{hexFrame(6, "03030000 01 04 05 00"),
                                              hexFrame(6, "03020000 0f 0a 78 c8 0000")};
    }
    void roundTrip() {
        QFETCH(QVector<int>, values);
        QFETCH(QStringList, frames);
        const auto set = [](NavigationConfigurationItem *d, const QVector<int> &v) {
            d->setDeltaCourse(v[0]);
            d->setDeltaSpeed(v[1]);
            d->setDriveTimeout(v[2]);
            d->setDeltaDistance(v[3]);
            d->setFreezeNav(v[4]);
            d->setPwrNav(v[5]);
            d->setFaultSpeed(v[6]);
        };
        PageSession s;
        SettingsNavyPage page(&s.configuration);
        VantorConfiguration device;
        set(device.navigation()->value(), values);
        s.configuration.navigation()->decode(device.navigation()->encodeAnswer(2));
        s.configuration.navigation()->decode(device.navigation()->encodeAnswer(3));
        QCOMPARE((QVector<int>{page.deltaCourse->value(), page.deltaSpeed->value(),
                               page.driveTimeout->value(), page.deltaDistance->value(),
                               page.freezeNav->isChecked(), page.pwrNav->value(), page.faultSpeed->value()}),
                 values);
        QVERIFY(!page.isModified());

        NavigationConfigurationItem *item = s.configuration.navigation()->value();
        set(item, {77, 77, 77, 77, !values[4], 9, 77});
        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), frames);
        QCOMPARE(int(item->faultSpeed()), values[6]);
        QCOMPARE(int(item->pwrNav()), values[5]);
    }
};

QTEST_MAIN(tst_SettingsNavyPage)
#include "tst_settingsnavypage.moc"
