#include "pages/SettingsOutputs.h"
#include "pages/Widgetoutputs.h"
#include "tests/pages/PageSession.h"

#include "Devices/OutputConfiguration.h"

// The outputs page and its Widgetoutputs rows.
class tst_SettingsOutputs : public QObject {
    Q_OBJECT

private:
    static void decodeOutputs(PageSession &s, const QVector<quint8> &states) {
        VantorConfiguration device;
        device.outputs()->value()->setNumberOfOutputs(quint8(states.size()));
        device.outputs()->value()->setStates(states);
        s.configuration.outputs()->decode(device.outputs()->encodeAnswer());
    }

private slots:
    void enabledOnlyWithReportedOutputs_data() {
        QTest::addColumn<QVector<quint8>>("states");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("no outputs") << QVector<quint8>{} << false;
        QTest::newRow("one output") << QVector<quint8>{1} << true;
        QTest::newRow("three outputs") << QVector<quint8>{0, 1, 0} << true;
    }
    void enabledOnlyWithReportedOutputs() {
        QFETCH(QVector<quint8>, states);
        QFETCH(bool, enabled);
        PageSession s;
        SettingsOutputs page(&s.configuration);
        QVERIFY(!page.isEnabled());
        decodeOutputs(s, states);
        QCOMPARE(page.isEnabled(), enabled);
        QCOMPARE(page.outputCount(), states.size());
        for (int i = 0; i < states.size(); ++i)
            QCOMPARE(page.output(i)->state(), states.at(i));
        QVERIFY(!page.isModified());
    }

    // The device never reports the parameters: they go out only once the user has set one of them.
    void roundTrip_data() {
        QTest::addColumn<QVector<int>>("parameters"); // outNum high low replay; empty: left alone
        QTest::addColumn<QStringList>("frames");
        const QStringList states{hexFrame(6, "0e010000 01 00"), hexFrame(6, "0e010100 01 00")};
        QTest::newRow("parameters untouched: only the states") << QVector<int>{} << states;
        QTest::newRow("lowest") << QVector<int>{0, 0, 0, 1}
                                << QStringList{hexFrame(7, "0e020000 00 00 00 01")} + states;
        QTest::newRow("highest") << QVector<int>{255, 255, 255, 255}
                                 << QStringList{hexFrame(7, "0e020000 ff ff ff ff")} + states;
        QTest::newRow("mixed") << QVector<int>{2, 10, 3, 5}
                               << QStringList{hexFrame(7, "0e020000 02 0a 03 05")} + states;
    }
    void roundTrip() {
        QFETCH(QVector<int>, parameters);
        QFETCH(QStringList, frames);

        PageSession s;
        OutputConfigurationItem *item = s.configuration.outputs()->value();
        SettingsOutputs page(&s.configuration);
        decodeOutputs(s, {0, 1});
        QVERIFY(!page.parametersSet());
        if (!parameters.isEmpty()) {
            page.outNum->setValue(parameters[0]);
            page.highCondition->setValue(parameters[1]);
            page.lowCondition->setValue(parameters[2]);
            page.replayCounter->setValue(parameters[3]);
        }
        page.output(0)->stateBox()->setChecked(true);
        QVERIFY(page.isModified());
        page.applyToDevice(s.workflows);

        // The parameters when set, then every output switched to its shown state by number.
        QCOMPARE(s.queued(), frames);
        QCOMPARE(item->states(), (QVector<quint8>{1, 1}));
        QCOMPARE(int(item->outNum()), parameters.value(0));
        QVERIFY(!page.isModified());
        QVERIFY(!page.parametersSet());
    }
};

QTEST_MAIN(tst_SettingsOutputs)
#include "tst_settingsoutputs.moc"
