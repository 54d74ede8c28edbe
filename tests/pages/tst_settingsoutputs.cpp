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

    void roundTrip_data() {
        QTest::addColumn<QVector<int>>("parameters"); // outNum high low replay
        QTest::addColumn<QString>("parametersFrame");
        QTest::newRow("lowest") << QVector<int>{0, 0, 0, 0} << hexFrame(7, "0e020000 00 00 00 00");
        QTest::newRow("highest") << QVector<int>{255, 255, 255, 255} << hexFrame(7, "0e020000 ff ff ff ff");
        QTest::newRow("mixed") << QVector<int>{2, 10, 3, 5} << hexFrame(7, "0e020000 02 0a 03 05");
    }
    void roundTrip() {
        QFETCH(QVector<int>, parameters);
        QFETCH(QString, parametersFrame);

        PageSession s;
        OutputConfigurationItem *item = s.configuration.outputs()->value();
        item->setOutNum(parameters[0]);
        item->setHighCondition(parameters[1]);
        item->setLowCondition(parameters[2]);
        item->setReplayCounter(parameters[3]);
        SettingsOutputs page(&s.configuration);
        decodeOutputs(s, {0, 1});
        QCOMPARE(page.outNum->value(), parameters[0]);
        QCOMPARE(page.highCondition->value(), parameters[1]);
        QCOMPARE(page.lowCondition->value(), parameters[2]);
        QCOMPARE(page.replayCounter->value(), parameters[3]);

        item->setOutNum(9);
        item->setReplayCounter(9);
        page.output(0)->stateBox()->setChecked(true);
        QVERIFY(page.isModified());
        page.applyToDevice(s.workflows);

        // The parameters, then every output switched to its shown state by number.
        QCOMPARE(s.queued(), (QStringList{parametersFrame, hexFrame(6, "0e010000 01 00"),
                                          hexFrame(6, "0e010100 01 00")}));
        QCOMPARE(item->states(), (QVector<quint8>{1, 1}));
        QCOMPARE(int(item->outNum()), parameters[0]);
        QVERIFY(!page.isModified());
    }
};

QTEST_MAIN(tst_SettingsOutputs)
#include "tst_settingsoutputs.moc"
