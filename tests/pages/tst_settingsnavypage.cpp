#include "PageSession.h"
#include "SettingsNavyPage.h"

#include "Devices/NavigationConfiguration.h"

#include <QCheckBox>
#include <QSpinBox>
#include <QtTest>

class tst_SettingsNavyPage : public QObject {
    Q_OBJECT

private slots:
    void unitsAndRanges() {
        PageSession s;
        SettingsNavyPage page(&s.configuration);
        QVERIFY(page.deltaCourse->suffix().contains(QStringLiteral("°")));
        QVERIFY(page.deltaSpeed->suffix().contains(QStringLiteral("км/ч")));
        QVERIFY(page.driveTimeout->suffix().contains(QStringLiteral("с")));
        QVERIFY(page.deltaDistance->suffix().contains(QStringLiteral("м")));
        QCOMPARE(page.pwrNav->maximum(), 15);
        for (QSpinBox *box :
             {page.deltaCourse, page.deltaSpeed, page.driveTimeout, page.deltaDistance, page.faultSpeed})
            QCOMPARE(box->maximum(), 255);
    }

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

        PageSession s;
        NavigationConfigurationItem *item = s.configuration.navigation()->value();
        // Values arrive from the device: the page follows the decoded section.
        SettingsNavyPage page(&s.configuration);
        VantorConfiguration device;
        NavigationConfigurationItem *d = device.navigation()->value();
        d->setDeltaCourse(values[0]);
        d->setDeltaSpeed(values[1]);
        d->setDriveTimeout(values[2]);
        d->setDeltaDistance(values[3]);
        d->setFreezeNav(values[4]);
        d->setPwrNav(values[5]);
        d->setFaultSpeed(values[6]);
        s.configuration.navigation()->decode(device.navigation()->encodeAnswer(2));
        s.configuration.navigation()->decode(device.navigation()->encodeAnswer(3));

        const QVector<int> shown{page.deltaCourse->value(),        page.deltaSpeed->value(),
                                 page.driveTimeout->value(),       page.deltaDistance->value(),
                                 int(page.freezeNav->isChecked()), page.pwrNav->value(),
                                 page.faultSpeed->value()};
        QCOMPARE(shown, values);
        QVERIFY(!page.isModified());

        for (auto set :
             {&NavigationConfigurationItem::setDeltaCourse, &NavigationConfigurationItem::setDeltaSpeed,
              &NavigationConfigurationItem::setDriveTimeout, &NavigationConfigurationItem::setDeltaDistance,
              &NavigationConfigurationItem::setFaultSpeed})
            (item->*set)(77);
        item->setFreezeNav(!values[4]);
        item->setPwrNav(9);

        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), frames);
        QCOMPARE(int(item->faultSpeed()), values[6]);
        QCOMPARE(int(item->pwrNav()), values[5]);
    }
};

QTEST_MAIN(tst_SettingsNavyPage)
#include "tst_settingsnavypage.moc"
