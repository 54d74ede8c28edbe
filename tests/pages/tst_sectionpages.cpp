#include "pages/ServersWidget.h"
#include "pages/SettingsAnalogInPage.h"
#include "pages/SettingsDiscretInPage.h"
#include "pages/SettingsFuelLevelPage.h"
#include "pages/SettingsGSMPage.h"
#include "pages/SettingsNavyPage.h"
#include "pages/SettingsOutputs.h"
#include "pages/SettingsTransmittDataToServer.h"
#include "pages/SystemPage.h"
#include "pages/TelemetryChartsPage.h"
#include "pages/Widgetoutputs.h"
#include "support/TelemetryHistory.h"
#include "tests/pages/PageSession.h"
#include "tests/support/SectionFields.h"

#include "Devices/FuelConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/SectionTable.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"

#include <QLabel>
#include <QTemporaryDir>
#include <QtCharts/QChart>
#include <QtCharts/QDateTimeAxis>
#include <QtCharts/QLineSeries>

#include <cmath>
#include <functional>
#include <memory>

using namespace QtCharts;
using PageMaker = std::function<SettingsPageBase *(VantorConfiguration *)>;
Q_DECLARE_METATYPE(PageMaker)

namespace {

template <class Page>
PageMaker make() {
    return [](VantorConfiguration *cfg) { return new Page(cfg); };
}

// The GSM page with profile and network files of its own.
template <>
PageMaker make<SettingsGSMPage>() {
    return [](VantorConfiguration *cfg) {
        static QTemporaryDir dir;
        static int pages = 0;
        ++pages;
        return new SettingsGSMPage(cfg, nullptr, dir.filePath(QStringLiteral("profiles%1.json").arg(pages)),
                                   dir.filePath(QStringLiteral("networks%1.json").arg(pages)));
    };
}

// The device's answers to every read of section `key` holding `values`, decoded into the session.
void answerReads(PageSession &s, const QString &key, const QString &values) {
    VantorConfiguration device;
    setFields(device, key, values);
    const kd::Section *section = kd::sectionByKey(key);
    for (const kd::SectionRequest &read : section->reads)
        section->decode(&s.configuration, section->encodeAnswer(&device, read.operation()));
}

void decodeOutputs(PageSession &s, const QVector<quint8> &states) {
    VantorConfiguration device;
    device.outputs()->value()->setNumberOfOutputs(quint8(states.size()));
    device.outputs()->value()->setStates(states);
    s.configuration.outputs()->decode(device.outputs()->encodeAnswer());
}

constexpr qint64 Start = 1700000000000; // ms since the epoch
constexpr int Minutes = 20;

int column(const QString &key) {
    const QVector<TelemetrySeries::Column> &columns = TelemetrySeries::columns();
    for (int i = 0; i < columns.size(); ++i) {
        if (columns[i].key == key)
            return i;
    }
    return -1;
}

// One round a second: the supply voltage rises by 1 mV a round, everything else unknown.
void addRounds(TelemetryHistory &history, int from, int count) {
    QVector<double> values(TelemetrySeries::columns().size(), NAN);
    for (int s = from; s < from + count; ++s) {
        values[column("supply_v")] = 12.0 + s / 1000.0;
        history.add(Start + qint64(s) * 1000, values);
    }
}

qint64 shownFrom(const TelemetryChartsPage &page, TelemetrySeries::Group group) {
    const auto axes = page.chart(group)->axes(Qt::Horizontal);
    return qobject_cast<QDateTimeAxis *>(axes.value(0))->min().toMSecsSinceEpoch();
}
} // namespace

// The pages of one section each: what the device sent is shown, and applying sends what is shown; and
// the behaviour every page shares, exercised through the system page; the telemetry charts.
class tst_SectionPages : public QObject {
    Q_OBJECT

private slots:
    // Every field goes through the page's widgets: shown on the read, taken back into the model on
    // apply (which was scrambled behind the page's back) and sent as the section's own writes.
    void roundTrip_data() {
        QTest::addColumn<PageMaker>("page");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("values");
        const auto row = [](const char *name, const PageMaker &page, const char *key, const QString &values) {
            QTest::addRow("%s: %s", key, name) << page << QString::fromLatin1(key) << values;
        };
        using namespace kd::keys;
        row("lowest", make<SystemPage>(), System, "0 0 0 0 0");
        row("highest", make<SystemPage>(), System, "255 255 15 1 1");
        row("mixed", make<SystemPage>(), System, "30 2 7 0 1");
        row("lowest", make<SettingsNavyPage>(), Navigation, "0 0 0 0 0 0 0");
        row("highest", make<SettingsNavyPage>(), Navigation, "255 255 255 255 1 15 255");
        row("mixed", make<SettingsNavyPage>(), Navigation, "15 10 120 200 1 4 5");
        row("off and logic", make<SettingsDiscretInPage>(), Logic, "0 / 1");
        row("universal counter and frequency", make<SettingsDiscretInPage>(), Logic, "5 / 2");
        // A function this program does not name is sent back unchanged.
        row("unknown code kept", make<SettingsDiscretInPage>(), Logic, "255 / 4");
        // Every channel differs from the others, so that a swapped channel shows.
        row("lowest", make<SettingsAnalogInPage>(), Agc, "0 0 0 0 0 / 0 1 1 1 1 / 0 2 2 2 2");
        row("highest", make<SettingsAnalogInPage>(), Agc,
            "1 65535 65535 65535 65535 / 1 65534 65534 65534 65534 / 1 65533 65533 65533 65533");
        row("mixed", make<SettingsAnalogInPage>(), Agc,
            "1 4660 256 2 300 / 1 4661 257 3 301 / 1 4662 258 0 302");
        row("lowest", make<SettingsFuelLevelPage>(), Fuel,
            "0 0 0 / 0 0 0 / 0 0 0 / 0 0 0 / 0 0 0 / 0 0 / 0 0 / 0 0");
        row("highest", make<SettingsFuelLevelPage>(), Fuel,
            "255 255 65535 / 254 254 65534 / 253 253 65533 / 252 252 65532 / 251 251 65531 / 250 250 / 249 "
            "249 / "
            "248 248");
        row("mixed", make<SettingsFuelLevelPage>(), Fuel,
            "100 4 1000 / 99 3 999 / 98 2 998 / 97 1 997 / 96 0 996 / 95 255 / 94 254 / 93 253");
        row("lowest", make<SettingsTransmittDataToServer>(), Server, "0  0 0");
        row("highest", make<SettingsTransmittDataToServer>(), Server,
            "1 a.very-long-server-name.example1 4294967295 1");
        row("usual", make<SettingsTransmittDataToServer>(), Server, "1 192.168.10.5 20332 0");
        row("unknown protocol kept", make<SettingsTransmittDataToServer>(), Server, "1 srv 1 7");
        // SIM 2 differs, so that a swapped SIM shows.
        const QString ones(32, QLatin1Char('f')), noon = QStringLiteral("0000000000001234");
        row("empty", make<SettingsGSMPage>(), Gsm,
            "   0 " + QString(32, QLatin1Char('0')) + " / second   0 0000000000000000" + noon);
        row("full fields", make<SettingsGSMPage>(), Gsm,
            QString(32, QLatin1Char('a')) + ' ' + QString(32, QLatin1Char('u')) + ' ' +
                QString(32, QLatin1Char('p')) + " 1 " + ones + " / second " + QString(32, QLatin1Char('u')) +
                ' ' + QString(32, QLatin1Char('p')) + " 0 ffffffffffffffff" + noon);
        row("usual", make<SettingsGSMPage>(), Gsm,
            "internet.tele2.ru   0 800000000000000100ff00ff00ff00ff / second   0 8000000000000001" + noon);
    }

    void roundTrip() {
        QFETCH(PageMaker, page);
        QFETCH(QString, key);
        QFETCH(QString, values);
        PageSession s;
        std::unique_ptr<SettingsPageBase> shown(page(&s.configuration));
        answerReads(s, key, values);
        QCOMPARE(fieldsOf(s.configuration, key), values);
        QVERIFY(!shown->isModified());

        scrambleFields(s.configuration, key);
        QVERIFY(fieldsOf(s.configuration, key) != values);
        shown->applyToDevice(s.workflows);

        QCOMPARE(fieldsOf(s.configuration, key), values);
        QStringList sent;
        for (const kd::SectionRequest &r : kd::writeRequests(key, &s.configuration))
            sent << QString::number(r.type) + QLatin1Char(':') + QString::fromLatin1(r.payload.toHex());
        QCOMPARE(s.queued(), sent);
    }

    // The texts the pages show for codes: a code without a name is shown by its number.
    void namesOfCodes() {
        PageSession s;
        SettingsDiscretInPage logic(&s.configuration);
        SettingsTransmittDataToServer servers(&s.configuration);
        const QStringList functions{"0 / 1",      "Отключен", "Логический", "5 / 2",      "Унив. счетчик",
                                    "Частотомер", "255 / 4",  "Код 255",    "Счетчик DFM"};
        for (int i = 0; i < functions.size(); i += 3) {
            answerReads(s, kd::keys::Logic, functions.at(i));
            QCOMPARE(logic.function(0)->currentText(), functions.at(i + 1));
            QCOMPARE(logic.function(1)->currentText(), functions.at(i + 2));
        }
        for (const auto &[proto, name] :
             {std::pair{"0", "TAVREL UNP"}, {"1", "WIALON COMBINE"}, {"7", "Протокол 7"}}) {
            answerReads(s, kd::keys::Server, QStringLiteral("1 srv 1 ") + proto);
            QCOMPARE(servers.server(0)->protocol->currentText(), QString::fromUtf8(name));
        }
    }

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

    // The page draws the last span of the rings, stops following while paused, and a switched-off or a
    // never-reported series draws nothing.
    void telemetryCharts_followPausesAndSwitches() {
        TelemetryHistory history(TelemetrySeries::columns().size());
        addRounds(history, 0, Minutes * 60);
        TelemetryChartsPage page(&history);
        page.show();
        QLineSeries *supply = page.series("supply_v");
        QVERIFY(supply);

        const qint64 last = Start + qint64(Minutes * 60 - 1) * 1000;
        QCOMPARE(page.spanMinutes(), TelemetryChartsPage::DefaultSpanMinutes);
        QCOMPARE(page.shownUntil(), last);
        QCOMPARE(supply->count(), TelemetryChartsPage::DefaultSpanMinutes * 60 + 1);
        QCOMPARE(supply->at(supply->count() - 1), QPointF(last, 12.0 + (Minutes * 60 - 1) / 1000.0));
        QCOMPARE(shownFrom(page, TelemetrySeries::Group::Voltage), last - 10 * 60 * 1000);

        page.setSpanMinutes(1);
        page.refresh();
        QCOMPARE(supply->count(), 61);

        page.setPaused(true);
        addRounds(history, Minutes * 60, 5);
        page.refresh();
        QCOMPARE(page.shownUntil(), last);
        page.setPaused(false);
        QCOMPARE(page.shownUntil(), last + 5000);

        QCOMPARE(page.series("battery_v")->count(), 0);

        page.setSeriesVisible("supply_v", false);
        page.refresh();
        QCOMPARE(supply->count(), 0);
        page.setSeriesVisible("supply_v", true);
        page.refresh();
        QCOMPARE(supply->count(), 61);
    }
};

QTEST_MAIN(tst_SectionPages)
#include "tst_sectionpages.moc"
