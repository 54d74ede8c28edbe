#include "pages/SettingsDiscretInPage.h"
#include "tests/pages/PageSession.h"

#include "Devices/LogicConfiguration.h"

class tst_SettingsDiscretInPage : public QObject {
    Q_OBJECT

private slots:
    void roundTrip_data() {
        QTest::addColumn<int>("func0");
        QTest::addColumn<int>("func1");
        QTest::addColumn<QString>("shown0");
        QTest::addColumn<QString>("shown1");
        QTest::addColumn<QStringList>("frames");
        QTest::newRow("off and logic")
            << 0 << 1 << "Отключен"
            << "Логический" << QStringList{hexFrame(6, "0d020000 00 00"), hexFrame(6, "0d020100 01 00")};
        QTest::newRow("universal counter and frequency")
            << 5 << 2 << "Унив. счетчик"
            << "Частотомер" << QStringList{hexFrame(6, "0d020000 05 00"), hexFrame(6, "0d020100 02 00")};
        // A function this program does not name is shown by its code and sent back unchanged.
        QTest::newRow("unknown code kept")
            << 255 << 4 << "Код 255"
            << "Счетчик DFM" << QStringList{hexFrame(6, "0d020000 ff 00"), hexFrame(6, "0d020100 04 00")};
    }
    void roundTrip() {
        QFETCH(int, func0);
        QFETCH(int, func1);
        QFETCH(QString, shown0);
        QFETCH(QString, shown1);
        QFETCH(QStringList, frames);

        PageSession s;
        SettingsDiscretInPage page(&s.configuration);
        VantorConfiguration device;
        device.logic()->element(0)->setFunc(func0);
        device.logic()->element(1)->setFunc(func1);
        s.configuration.logic()->decode(device.logic()->encodeAnswer());

        QCOMPARE(page.function(0)->currentText(), shown0);
        QCOMPARE(page.function(1)->currentText(), shown1);
        QVERIFY(!page.isModified());

        s.configuration.logic()->element(0)->setFunc(3);
        s.configuration.logic()->element(1)->setFunc(3);
        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), frames);
    }
};

QTEST_MAIN(tst_SettingsDiscretInPage)
#include "tst_settingsdiscretinpage.moc"
