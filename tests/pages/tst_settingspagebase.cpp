#include "pages/SystemPage.h"
#include "tests/pages/PageSession.h"

#include "Devices/SystemConfiguration.h"

#include <QLabel>

// The behaviour every page shares, exercised through the system page.
class tst_SettingsPageBase : public QObject {
    Q_OBJECT

private slots:
    void userEdit_marksModifiedAndApplyWritesAndClearsIt() {
        PageSession s;
        SystemPage page(&s.configuration);
        QSignalSpy spy(&page, &SettingsPageBase::modifiedChanged);
        auto *marker = page.findChild<QLabel *>(QStringLiteral("modifiedMarker"));
        QCOMPARE(page.modifiedMarker(), QString());
        QVERIFY(!marker->isVisibleTo(&page));

        page.parkingMin->setValue(7);
        page.gsens->setValue(9);
        QVERIFY(page.isModified());
        QCOMPARE(page.property("modified").toBool(), true);
        QCOMPARE(page.modifiedMarker(), QStringLiteral("*"));
        QVERIFY(marker->isVisibleTo(&page));
        QCOMPARE(spy.count(), 1);

        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), QStringList{hexFrame(6, "11010000 07 00 09 00")});
        QVERIFY(!page.isModified());
        QVERIFY(!marker->isVisibleTo(&page));
        QCOMPARE(spy.count(), 2);
        QCOMPARE(spy.at(1).at(0).toBool(), false);
    }

    // The window also loads every page straight after building it and after a file was opened.
    void refresh_showsModelWithoutMarking_data() {
        QTest::addColumn<bool>("editedBefore");
        QTest::addColumn<bool>("decoded"); // else loadFromSection
        QTest::newRow("decoded, clean page") << false << true;
        QTest::newRow("decoded, page with edits") << true << true;
        QTest::newRow("loaded, page with edits") << true << false;
    }
    void refresh_showsModelWithoutMarking() {
        QFETCH(bool, editedBefore);
        QFETCH(bool, decoded);
        PageSession s;
        SystemPage page(&s.configuration);
        if (editedBefore)
            page.pwrMode->setValue(99);
        QSignalSpy spy(&page, &SettingsPageBase::modifiedChanged);
        VantorConfiguration device;
        SystemConfigurationItem *d = decoded ? device.system()->value() : s.configuration.system()->value();
        d->setParkingMin(42);
        d->setGsens(15);
        d->setLowSpeed(1);
        if (decoded)
            s.configuration.system()->decode(device.system()->encodeAnswer());
        else
            page.loadFromSection();
        page.loadFromSection();

        QCOMPARE(page.parkingMin->value(), 42);
        QCOMPARE(page.pwrMode->value(), 0);
        QCOMPARE(page.gsens->value(), 15);
        QVERIFY(page.lowSpeed->isChecked());
        QVERIFY(!page.isModified());
        QCOMPARE(spy.count(), int(editedBefore));
    }

    void modelChangedWithoutDecode_leavesEditsAlone() {
        PageSession s;
        SystemPage page(&s.configuration);
        page.parkingMin->setValue(12);
        s.configuration.system()->value()->setParkingMin(200);
        QCOMPARE(page.parkingMin->value(), 12);
        QVERIFY(page.isModified());
    }

    // answer: the leaving question's Да, Нет or Отмена; values: the page holds values of a device or file.
    void confirmLeave_data() {
        using A = SettingsPageBase::LeaveAnswer;
        QTest::addColumn<bool>("edit");
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("session");
        QTest::addColumn<bool>("values");
        QTest::addColumn<bool>("leaves");
        QTest::addColumn<QStringList>("frames");
        QTest::addColumn<int>("parking"); // shown and in the model afterwards
        QTest::newRow("no edits: nothing asked, nothing sent")
            << false << int(A::Write) << true << true << true << QStringList() << 10;
        QTest::newRow("Да: the section is written") << true << int(A::Write) << true << true << true
                                                    << QStringList{hexFrame(6, "11010000 21 00 00 00")} << 33;
        QTest::newRow("Да without a session: stored in the model only")
            << true << int(A::Write) << false << true << true << QStringList() << 33;
        QTest::newRow("Нет: the edits are dropped")
            << true << int(A::Drop) << true << true << true << QStringList() << 10;
        QTest::newRow("Отмена: stays with the edits")
            << true << int(A::Stay) << true << true << false << QStringList() << 10;
        QTest::newRow("no values: stored unasked, nothing can be sent")
            << true << int(A::Write) << true << false << true << QStringList() << 33;
    }
    void confirmLeave() {
        QFETCH(bool, edit);
        QFETCH(int, answer);
        QFETCH(bool, session);
        QFETCH(bool, values);
        QFETCH(bool, leaves);
        QFETCH(QStringList, frames);
        QFETCH(int, parking);
        PageSession s;
        s.configuration.system()->value()->setParkingMin(10);
        SystemPage page(&s.configuration);
        page.setHoldsValues(values);
        QStringList asked;
        page.setLeaveAsker([&](QWidget *, const QString &title, const QString &text) {
            asked << title + QLatin1Char('|') + text;
            return SettingsPageBase::LeaveAnswer(answer);
        });
        if (edit)
            page.parkingMin->setValue(33);

        QCOMPARE(page.confirmLeave(session ? &s.workflows : nullptr), leaves);

        const QString question = QStringLiteral("Подтверждение изменений|Есть несохраненные параметры, "
                                                "записать в прибор?");
        QCOMPARE(asked, edit && values ? QStringList{question} : QStringList());
        QCOMPARE(s.queued(), frames);
        QCOMPARE(int(s.configuration.system()->value()->parkingMin()), parking);
        QCOMPARE(page.isModified(), !leaves);
        QVERIFY(!page.applyToDevice(s.workflows) || values);
        QCOMPARE(page.findChild<QLabel *>(QStringLiteral("noValuesNote"))->isVisibleTo(&page), !values);
    }
};

QTEST_MAIN(tst_SettingsPageBase)
#include "tst_settingspagebase.moc"
