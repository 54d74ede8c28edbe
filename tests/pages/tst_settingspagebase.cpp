#include "PageSession.h"
#include "SystemPage.h"

#include "Devices/SystemConfiguration.h"

#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

// The behaviour every page shares, exercised through the system page.
class tst_SettingsPageBase : public QObject {
    Q_OBJECT

private:
    static void setDeviceSystem(PageSession &s, quint8 parking, quint8 pwr, quint8 gsens) {
        VantorConfiguration device;
        device.system()->value()->setParkingMin(parking);
        device.system()->value()->setPwrMode(pwr);
        device.system()->value()->setGsens(gsens);
        s.configuration.system()->decode(device.system()->encodeAnswer());
    }

private slots:
    void userEdit_marksPageModified() {
        PageSession s;
        SystemPage page(&s.configuration);
        QSignalSpy spy(&page, &SettingsPageBase::modifiedChanged);
        QCOMPARE(page.property("modified").toBool(), false);
        QCOMPARE(page.modifiedMarker(), QString());
        QVERIFY(!page.findChild<QLabel *>(QStringLiteral("modifiedMarker"))->isVisibleTo(&page));

        page.parkingMin->setValue(7);
        page.gsens->setValue(3);

        QVERIFY(page.isModified());
        QCOMPARE(page.property("modified").toBool(), true);
        QCOMPARE(page.modifiedMarker(), QStringLiteral("*"));
        QVERIFY(page.findChild<QLabel *>(QStringLiteral("modifiedMarker"))->isVisibleTo(&page));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toBool(), true);
    }

    void sectionDecoded_refreshesWithoutModifying_data() {
        QTest::addColumn<bool>("editedBefore");
        QTest::newRow("clean page") << false;
        QTest::newRow("page with edits") << true;
    }
    void sectionDecoded_refreshesWithoutModifying() {
        QFETCH(bool, editedBefore);
        PageSession s;
        SystemPage page(&s.configuration);
        if (editedBefore)
            page.pwrMode->setValue(99);

        setDeviceSystem(s, 42, 3, 15);

        QCOMPARE(page.parkingMin->value(), 42);
        QCOMPARE(page.pwrMode->value(), 3);
        QCOMPARE(page.gsens->value(), 15);
        QVERIFY(!page.isModified());
        QCOMPARE(page.property("modified").toBool(), false);
    }

    // The window loads every page straight after building it and after a file was opened.
    void loadFromSection_showsModelWithoutMarking() {
        PageSession s;
        SystemPage page(&s.configuration);
        page.pwrMode->setValue(1);
        s.configuration.system()->value()->setParkingMin(90);
        s.configuration.system()->value()->setLowSpeed(1);
        QSignalSpy spy(&page, &SettingsPageBase::modifiedChanged);

        page.loadFromSection();

        QCOMPARE(page.parkingMin->value(), 90);
        QCOMPARE(page.pwrMode->value(), 0);
        QVERIFY(page.lowSpeed->isChecked());
        QVERIFY(!page.isModified());
        QCOMPARE(spy.count(), 1);
        page.loadFromSection();
        QCOMPARE(spy.count(), 1);
    }

    void modelChangedWithoutDecode_leavesEditsAlone() {
        PageSession s;
        SystemPage page(&s.configuration);
        page.parkingMin->setValue(12);
        s.configuration.system()->value()->setParkingMin(200);
        QCOMPARE(page.parkingMin->value(), 12);
        QVERIFY(page.isModified());
    }

    void revert_showsModelValuesAgain() {
        PageSession s;
        s.configuration.system()->value()->setPwrMode(5);
        SystemPage page(&s.configuration);
        page.pwrMode->setValue(77);
        page.lowSpeed->setChecked(true);

        page.revert();

        QCOMPARE(page.pwrMode->value(), 5);
        QCOMPARE(page.lowSpeed->isChecked(), false);
        QVERIFY(!page.isModified());
        QCOMPARE(s.configuration.system()->value()->pwrMode(), quint8(5));
    }

    void confirmLeave_data() {
        QTest::addColumn<bool>("edit");
        QTest::addColumn<bool>("answer");
        QTest::addColumn<int>("questions");
        QTest::addColumn<QStringList>("frames");
        QTest::addColumn<int>("parkingShown");
        QTest::addColumn<int>("parkingInModel");

        QTest::newRow("no edits: nothing asked, nothing sent")
            << false << true << 0 << QStringList() << 10 << 10;
        QTest::newRow("Yes: the section is written")
            << true << true << 1 << QStringList{hexFrame(6, "11010000 21 00 00 00")} << 33 << 33;
        QTest::newRow("No: the edits are dropped") << true << false << 1 << QStringList() << 10 << 10;
    }
    void confirmLeave() {
        QFETCH(bool, edit);
        QFETCH(bool, answer);
        QFETCH(int, questions);
        QFETCH(QStringList, frames);
        QFETCH(int, parkingShown);
        QFETCH(int, parkingInModel);

        PageSession s;
        s.configuration.system()->value()->setParkingMin(10);
        SystemPage page(&s.configuration);
        ScriptedAsker asker;
        asker.answer = answer;
        page.setAsker(asker.asker());
        if (edit)
            page.parkingMin->setValue(33);

        QVERIFY(page.confirmLeave(&s.workflows));

        QCOMPARE(asker.asked.size(), questions);
        if (questions)
            QCOMPARE(asker.asked.first(),
                     QStringLiteral("Подтверждение изменений|Есть несохраненные параметры, "
                                    "записать в прибор?"));
        QCOMPARE(s.queued(), frames);
        QCOMPARE(page.parkingMin->value(), parkingShown);
        QCOMPARE(int(s.configuration.system()->value()->parkingMin()), parkingInModel);
        QVERIFY(!page.isModified());
    }

    void confirmLeaveYes_withoutSession_storesIntoModelOnly() {
        PageSession s;
        SystemPage page(&s.configuration);
        ScriptedAsker asker;
        page.setAsker(asker.asker());
        page.outCtrl->setChecked(true);

        QVERIFY(page.confirmLeave(nullptr));

        QCOMPARE(s.configuration.system()->value()->OutCtrl(), quint8(1));
        QVERIFY(!page.isModified());
    }

    void applyToDevice_storesWritesAndClearsMark() {
        PageSession s;
        SystemPage page(&s.configuration);
        page.gsens->setValue(9);
        QSignalSpy spy(&page, &SettingsPageBase::modifiedChanged);

        page.applyToDevice(s.workflows);

        QCOMPARE(s.queued(), QStringList{hexFrame(6, "11010000 00 00 09 00")});
        QVERIFY(!page.isModified());
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toBool(), false);
    }
};

QTEST_MAIN(tst_SettingsPageBase)
#include "tst_settingspagebase.moc"
