#include "Devices/AgcConfiguration.h"
#include "Devices/FuelConfiguration.h"
#include "Devices/LogicConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"
#include "pages/ServersWidget.h"
#include "pages/SettingsAnalogInPage.h"
#include "pages/SettingsDiscretInPage.h"
#include "pages/SettingsFuelLevelPage.h"
#include "pages/SettingsNavyPage.h"
#include "pages/SettingsOutputs.h"
#include "pages/SettingsTransmittDataToServer.h"
#include "pages/SystemPage.h"
#include "pages/Widgetoutputs.h"
#include "tests/pages/PageSession.h"

namespace {

void decodeOutputs(PageSession &s, const QVector<quint8> &states) {
    VantorConfiguration device;
    device.outputs()->value()->setNumberOfOutputs(quint8(states.size()));
    device.outputs()->value()->setStates(states);
    s.configuration.outputs()->decode(device.outputs()->encodeAnswer());
}

QString serverFrame(int enable, const QByteArray &address, quint32 port, int proto) {
    QByteArray body(1, char(enable));
    body += address.leftJustified(32, '\0', true);
    for (int i = 0; i < 4; ++i)
        body += char((port >> (8 * i)) & 0xFF);
    body += char(proto);
    return QStringLiteral("6:10010000") + QString::fromLatin1(body.toHex());
}

} // namespace

// The pages of one section each: what the device sent is shown, and applying sends what is shown.
class tst_SectionPages : public QObject {
    Q_OBJECT

private slots:
    void system_roundTrip_data() {
        QTest::addColumn<QVector<int>>("values"); // parking pwr gsens lowSpeed outCtrl
        QTest::addColumn<QString>("frame");
        QTest::newRow("lowest") << QVector<int>{0, 0, 0, 0, 0} << hexFrame(6, "11010000 00 00 00 00");
        QTest::newRow("highest") << QVector<int>{255, 255, 15, 1, 1} << hexFrame(6, "11010000 ff ff 3f 00");
        QTest::newRow("mixed") << QVector<int>{30, 2, 7, 0, 1} << hexFrame(6, "11010000 1e 02 27 00");
    }
    void system_roundTrip() {
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

    void navigation_roundTrip_data() {
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
    void navigation_roundTrip() {
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

    void logic_roundTrip_data() {
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
    void logic_roundTrip() {
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

    void analog_roundTrip_data() {
        QTest::addColumn<int>("enabled");
        QTest::addColumn<int>("low");
        QTest::addColumn<int>("high");
        QTest::addColumn<int>("sensitivity");
        QTest::addColumn<int>("averaging");
        QTest::addColumn<QString>("record"); // the ten bytes after the head, per channel
        QTest::newRow("lowest") << 0 << 0 << 0 << 0 << 0 << "00 00 0000 0000 0000 0000";
        QTest::newRow("highest") << 1 << 65535 << 65535 << 65535 << 65535 << "01 00 ffff ffff ffff ffff";
        QTest::newRow("mixed") << 1 << 0x1234 << 0x0100 << 2 << 300 << "01 00 3412 0001 0200 2c01";
    }
    void analog_roundTrip() {
        QFETCH(int, enabled);
        QFETCH(int, low);
        QFETCH(int, high);
        QFETCH(int, sensitivity);
        QFETCH(int, averaging);
        QFETCH(QString, record);

        PageSession s;
        SettingsAnalogInPage page(&s.configuration);
        VantorConfiguration device;
        for (int ch = 0; ch < 3; ++ch) {
            AgcConfigurationItem *d = device.agc()->element(ch);
            d->setEnabled(enabled);
            // Every channel differs from the others so that a swapped channel shows.
            d->setThresholdLow(quint16(low ^ ch));
            d->setThresholdHigh(quint16(high ^ ch));
            d->setSensitivity(quint16(sensitivity ^ ch));
            d->setAveraging(quint16(averaging ^ ch));
        }
        s.configuration.agc()->decode(device.agc()->encodeAnswer());
        QVERIFY(!page.isModified());

        QStringList expected;
        for (int ch = 0; ch < 3; ++ch) {
            const auto &c = page.channel(ch);
            QCOMPARE(int(c.enabled->isChecked()), enabled);
            QCOMPARE(c.thresholdLow->value(), low ^ ch);
            QCOMPARE(c.thresholdHigh->value(), high ^ ch);
            QCOMPARE(c.sensitivity->value(), sensitivity ^ ch);
            QCOMPARE(c.averaging->value(), averaging ^ ch);
            s.configuration.agc()->element(ch)->setThresholdHigh(4321);
            s.configuration.agc()->element(ch)->setEnabled(!enabled);
            expected << hexFrame(6, qPrintable(QStringLiteral("0c02%1 00").arg(ch, 2, 16, QLatin1Char('0')) +
                                               QString::fromLatin1(device.agc()->encode(ch).mid(4).toHex())));
        }
        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), expected);
        QVERIFY(s.queued().first().endsWith(record.remove(QLatin1Char(' '))));
    }

    void fuel_roundTrip_data() {
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
    void fuel_roundTrip() {
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
    void fuel_averagingOfSensorsFiveToSeven_isKeptButNotShown() {
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

    void outputs_enabledOnlyWithReportedOutputs_data() {
        QTest::addColumn<QVector<quint8>>("states");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("no outputs") << QVector<quint8>{} << false;
        QTest::newRow("one output") << QVector<quint8>{1} << true;
        QTest::newRow("three outputs") << QVector<quint8>{0, 1, 0} << true;
    }
    void outputs_enabledOnlyWithReportedOutputs() {
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
    void outputs_roundTrip_data() {
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
    void outputs_roundTrip() {
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

    void servers_roundTrip_data() {
        QTest::addColumn<int>("enable");
        QTest::addColumn<QString>("address");
        QTest::addColumn<quint32>("port");
        QTest::addColumn<int>("proto");
        QTest::addColumn<QString>("protoShown");
        QTest::newRow("lowest") << 0 << QString() << quint32(0) << 0 << "TAVREL UNP";
        QTest::newRow("highest") << 1 << QStringLiteral("a.very-long-server-name.example1")
                                 << quint32(4294967295U) << 1 << "WIALON COMBINE";
        QTest::newRow("usual") << 1 << QStringLiteral("192.168.10.5") << quint32(20332) << 0 << "TAVREL UNP";
        QTest::newRow("unknown protocol kept")
            << 1 << QStringLiteral("srv") << quint32(1) << 7 << "Протокол 7";
    }
    void servers_roundTrip() {
        QFETCH(int, enable);
        QFETCH(QString, address);
        QFETCH(quint32, port);
        QFETCH(int, proto);
        QFETCH(QString, protoShown);

        PageSession s;
        SettingsTransmittDataToServer page(&s.configuration);
        VantorConfiguration device;
        ServerConfigurationItem *d = device.servers()->value();
        d->setEnable(enable);
        d->setServer(address);
        d->setPort(port);
        d->setProto(proto);
        s.configuration.servers()->decode(device.servers()->encodeAnswer());

        ServersWidget *w = page.server(0);
        QCOMPARE(int(w->enable->isChecked()), enable);
        QCOMPARE(w->address->text(), address);
        QCOMPARE(quint32(w->port->value()), port);
        QCOMPARE(w->protocol->currentText(), protoShown);
        QVERIFY(!page.isModified());

        ServerConfigurationItem *item = s.configuration.servers()->value();
        item->setServer(QStringLiteral("changed"));
        item->setPort(5);
        item->setProto(3);
        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), QStringList{serverFrame(enable, address.toLatin1(), port, proto)});
    }

    void servers_cyrillicAddress_isNotSent() {
        PageSession s;
        s.configuration.servers()->value()->setServer(QStringLiteral("сервер.рф"));
        SettingsTransmittDataToServer page(&s.configuration);
        ScriptedAsker asker;
        page.setNotifier(asker.notifier());
        QVERIFY(!page.applyToDevice(s.workflows));
        QVERIFY(s.queued().isEmpty());
        QCOMPARE(asker.asked.size(), 1);
        QVERIFY(asker.asked.first().contains(QStringLiteral("Адрес сервера 1")));
    }
};

QTEST_MAIN(tst_SectionPages)
#include "tst_sectionpages.moc"
