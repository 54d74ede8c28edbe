#include "pages/DeviceTextValidator.h"
#include "pages/GSMSubnetsEditor.h"
#include "pages/GsmProfileDialog.h"
#include "pages/GsmProfileStore.h"
#include "pages/PreferredNetworkStore.h"
#include "pages/RoamingTimetable.h"
#include "pages/RoamingTimetableGrid.h"
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
#include "pages/roumingShedulerDialog.h"
#include "support/TelemetryHistory.h"
#include "tests/pages/PageSession.h"
#include "tests/support/SectionFields.h"

#include "Devices/FuelConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/SectionKeys.h"
#include "Devices/SectionTable.h"
#include "Devices/ServerConfiguration.h"
#include "Devices/SystemConfiguration.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QTableWidget>
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

// The pages of one section each: what the device sent is shown, and applying sends what is shown; the
// behaviour every page shares, exercised through the system page; what the GSM page is made of (the
// profile store, the rule for the texts it sends, the roaming timetable, the preferred-network editor);
// the telemetry charts.
class tst_SectionPages : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    const QString m_file = m_dir.filePath(QStringLiteral("GSMprofileList.json"));

    // A fresh file holding profiles named A, B, C (apn = the name in lower case).
    void fill(GsmProfileStore &store) {
        QFile::remove(m_file);
        for (const QString n : {"A", "B", "C"})
            QCOMPARE(store.add({n, n.toLower(), "u", "p"}), GsmProfileStore::AddResult::Added);
    }
    static QStringList names(const GsmProfileStore &store) {
        QStringList out;
        for (const GsmProfile &p : store.profiles())
            out << p.name;
        return out;
    }
    static bool writeFile(const QString &path, const QByteArray &bytes) {
        QFile f(path);
        return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
    }
    QByteArray fileBytes() const {
        QFile f(m_file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    // Every page gets fresh profile and network files.
    std::unique_ptr<SettingsGSMPage> makePage(PageSession &s, ScriptedAsker &asker) {
        std::unique_ptr<SettingsGSMPage> page(
            static_cast<SettingsGSMPage *>(make<SettingsGSMPage>()(&s.configuration)));
        page->setAsker(asker.asker());
        page->setNotifier(asker.notifier());
        return page;
    }

    static QStringList listed(const SettingsGSMPage &page) {
        QStringList out;
        for (int i = 0; i < page.profileList()->count(); ++i)
            out << page.profileList()->item(i)->text();
        return out;
    }

    static void mouse(QWidget *w, QEvent::Type type, const QPoint &pos) {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent e(type, pos, w->mapToGlobal(pos), button, held, Qt::NoModifier);
        QApplication::sendEvent(w, &e);
    }

    static QStringList codes(const QVector<MobileOperator> &ops) {
        QStringList out;
        for (const MobileOperator &op : ops)
            out << op.code();
        return out;
    }

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
            "255 255 65535 / 254 254 65534 / 253 253 65533 / 252 252 65532 / 251 251 65531 / 250 250 / "
            "249 249 / 248 248");
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
        const QList<QSpinBox *> boxes{page.outNum, page.highCondition, page.lowCondition, page.replayCounter};
        for (int i = 0; i < parameters.size(); ++i)
            boxes[i]->setValue(parameters[i]);
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
        // modified, its property, the marker's text and whether the marker shows
        const auto state = [&] {
            return QStringList{QString::number(page.isModified()), page.property("modified").toString(),
                               page.modifiedMarker(), QString::number(marker->isVisibleTo(&page))};
        };
        QCOMPARE(state(), (QStringList{"0", "false", "", "0"}));

        page.parkingMin->setValue(7);
        page.gsens->setValue(9);
        QCOMPARE(state(), (QStringList{"1", "true", "*", "1"}));
        QCOMPARE(spy.count(), 1);

        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), QStringList{hexFrame(6, "11010000 07 00 09 00")});
        QCOMPARE(state(), (QStringList{"0", "false", "", "0"}));
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

        QCOMPARE((QList<int>{page.parkingMin->value(), page.pwrMode->value(), page.gsens->value(),
                             int(page.lowSpeed->isChecked())}),
                 (QList<int>{42, 0, 15, 1}));
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
    // The page's own rule: a SIM whose roaming is forbidden has no timetable to edit.
    void scheduleOnlyWhereRoamingIsAllowed() {
        PageSession s;
        ScriptedAsker asker;
        auto page = makePage(s, asker);
        VantorConfiguration device;
        device.gsm()->element(0)->setForbidden(1);
        s.configuration.gsm()->decode(device.gsm()->encodeAnswer(4));
        QVERIFY(!page->sim(0).schedule->isEnabled());
        QVERIFY(page->sim(1).schedule->isEnabled());
    }

    // Text the device cannot take (e.g. from a configuration file) is never sent cut to zero bytes.
    void unsendableText_isRefusedAndTheLeaveIsStopped_data() {
        QTest::addColumn<int>("sim");
        QTest::addColumn<QString>("field");
        QTest::newRow("Cyrillic access point, SIM 1") << 0 << "Точка доступа SIM 1";
        QTest::newRow("Cyrillic password, SIM 2") << 1 << "Пароль SIM 2";
    }
    void unsendableText_isRefusedAndTheLeaveIsStopped() {
        QFETCH(int, sim);
        QFETCH(QString, field);
        PageSession s;
        ScriptedAsker asker;
        if (sim == 0)
            s.configuration.gsm()->element(0)->setApn(QStringLiteral("интернет"));
        else
            s.configuration.gsm()->element(1)->setApnPassword(QStringLiteral("пароль"));
        auto page = makePage(s, asker);
        page->sim(0).user->setText(QStringLiteral("edited"));

        QVERIFY(!page->applyToDevice(s.workflows));
        QVERIFY(!page->confirmLeave(&s.workflows));

        QVERIFY(s.queued().isEmpty());
        QCOMPARE(asker.asked.size(), 3); // refused apply, the question, refused apply
        QVERIFY(asker.asked.at(0).startsWith(QStringLiteral("GSM|Поле «") + field + QStringLiteral("»")));
        QVERIFY(page->isModified());
        QCOMPARE(s.configuration.gsm()->element(0)->apnUser(), QString());
    }

    void profileButtons_data() {
        QTest::addColumn<QString>("action"); // "+name" adds a profile, "-row" deletes one
        QTest::addColumn<bool>("answer");
        QTest::addColumn<QString>("asked");
        QTest::addColumn<QStringList>("profiles"); // name:apn
        const QString exists = QStringLiteral("Управление профилем|Профиль существует, перезаписать?");
        const QString remove = QStringLiteral("Управление профилем|Вы точно хотите удалить профиль B ?");
        const QStringList abc{"A:a", "B:b", "C:c"};
        QTest::newRow("add new") << "+D" << true << QString() << abc + QStringList{"D:new"};
        QTest::newRow("add dash refused")
            << "+-" << true << QStringLiteral("Управление профилем|Недопустимое имя профиля") << abc;
        QTest::newRow("add existing, Yes overwrites")
            << "+B" << true << exists << QStringList{"A:a", "B:new", "C:c"};
        QTest::newRow("add existing, No keeps") << "+B" << false << exists << abc;
        QTest::newRow("delete, Yes") << "-1" << true << remove << QStringList{"A:a", "C:c"};
        QTest::newRow("delete, No") << "-1" << false << remove << abc;
        QTest::newRow("delete with nothing selected") << "--1" << true << QString() << abc;
    }
    void profileButtons() {
        QFETCH(QString, action);
        QFETCH(bool, answer);
        QFETCH(QString, asked);
        QFETCH(QStringList, profiles);
        PageSession s;
        ScriptedAsker asker;
        auto page = makePage(s, asker);
        for (const QString n : {"A", "B", "C"})
            page->addProfile({n, n.toLower(), "", ""});
        asker.answer = answer;
        QSignalSpy rows(page->profileList(), &QListWidget::currentRowChanged);

        if (action.startsWith(QLatin1Char('+')))
            page->addProfile({action.mid(1), "new", "nu", "np"});
        else
            page->deleteProfile(action.mid(1).toInt());

        QCOMPARE(asker.asked, asked.isEmpty() ? QStringList() : QStringList{asked});
        QStringList stored;
        for (const GsmProfile &p : page->profiles().profiles())
            stored << p.name + QLatin1Char(':') + p.apn;
        QCOMPARE(stored, profiles);
        QCOMPARE(listed(*page), names(page->profiles()));
        // Refilling the list is no choice of the user: no SIM field changed.
        QCOMPARE(rows.count(), 0);
        QVERIFY(!page->isModified());
    }

    void profilesOfTheFile_areListedAndChoosingOneFillsTheTargetSim() {
        const QString file = m_dir.filePath(QStringLiteral("start.json"));
        GsmProfileStore store(file);
        store.add({"Home", "home.apn", "hu", "hp"});
        store.add({"Work", "work.apn", "wu", "wp"});
        PageSession s;
        SettingsGSMPage page(&s.configuration, nullptr, file,
                             m_dir.filePath(QStringLiteral("start-nets.json")));
        QCOMPARE(listed(page), (QStringList{"Home", "Work"}));
        QCOMPARE(page.profileList()->currentRow(), -1);
        QVERIFY(!page.isModified());

        page.profileTarget()->setCurrentIndex(1);
        page.profileList()->setCurrentRow(1);
        QCOMPARE((QStringList{page.sim(1).apn->text(), page.sim(1).user->text(), page.sim(1).password->text(),
                              page.sim(0).apn->text()}),
                 (QStringList{"work.apn", "wu", "wp", ""}));
        QVERIFY(page.isModified());
    }

    void profileDialog_typedValuesMakeTheProfile() {
        GsmProfileDialog dialog;
        typeText(dialog.nameEdit(), QStringLiteral("Дом"));
        typeText(dialog.apnEdit(), QStringLiteral("inтernet")); // the Cyrillic т is refused
        typeText(dialog.userEdit(), QStringLiteral("u"));
        typeText(dialog.passwordEdit(), QStringLiteral("p"));
        QCOMPARE(dialog.profile(), (GsmProfile{QStringLiteral("Дом"), "inernet", "u", "p"}));
    }
    // "+name" adds a profile, a number deletes the profile of that row; the file always holds the list.
    void addAndRemove_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<bool>("done");
        QTest::addColumn<QStringList>("names");
        const QStringList abc{"A", "B", "C"};
        QTest::newRow("new name appended") << "+D" << true << abc + QStringList{"D"};
        QTest::newRow("single dash refused") << "+-" << false << abc;
        QTest::newRow("double dash accepted") << "+--" << true << abc + QStringList{"--"};
        QTest::newRow("existing name left alone") << "+B" << false << abc;
        QTest::newRow("remove first") << "0" << true << QStringList{"B", "C"};
        QTest::newRow("remove middle keeps order") << "1" << true << QStringList{"A", "C"};
        QTest::newRow("remove last") << "2" << true << QStringList{"A", "B"};
        QTest::newRow("remove with nothing selected") << "-1" << false << abc;
        QTest::newRow("remove past the end") << "3" << false << abc;
    }
    void addAndRemove() {
        QFETCH(QString, action);
        QFETCH(bool, done);
        QFETCH(QStringList, names);
        GsmProfileStore store(m_file);
        fill(store);
        const QByteArray before = fileBytes();
        if (action.startsWith(QLatin1Char('+'))) {
            const auto result = store.add({action.mid(1), "apn", "user", "secret"});
            QCOMPARE(result, action == "+-" ? GsmProfileStore::AddResult::InvalidName
                             : done         ? GsmProfileStore::AddResult::Added
                                            : GsmProfileStore::AddResult::Exists);
        } else {
            QCOMPARE(store.remove(action.toInt()), done);
        }
        QCOMPARE(tst_SectionPages::names(store), names);
        GsmProfileStore again(m_file);
        again.load();
        QCOMPARE(tst_SectionPages::names(again), names);
        if (!done)
            QCOMPARE(fileBytes(), before);
    }

    void overwrite_replacesValuesInPlace() {
        GsmProfileStore store(m_file);
        fill(store);
        QVERIFY(store.overwrite({"B", "new.apn", "u2", "p2"}));
        QVERIFY(!store.overwrite({"Z", "z", "z", "z"}));
        GsmProfileStore loaded(m_file);
        loaded.load();
        QCOMPARE(names(loaded), (QStringList{"A", "B", "C"}));
        QCOMPARE(loaded.profiles().at(1), (GsmProfile{"B", "new.apn", "u2", "p2"}));
    }

    void fileLayout_isIndentedWithTheFourKeys() {
        GsmProfileStore store(m_file);
        fill(store);
        const QByteArray bytes = fileBytes();
        QVERIFY(bytes.contains("\n    \"Profiles\""));
        QCOMPARE(QJsonDocument::fromJson(bytes).object().value("Profiles").toArray().at(0).toObject(),
                 (QJsonObject{{"profileName", "A"}, {"apn", "a"}, {"apn_name", "u"}, {"apn_password", "p"}}));
    }

    void load_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("missing file") << QByteArray() << QStringList();
        QTest::newRow("not json") << QByteArray("{ broken") << QStringList();
        QTest::newRow("no Profiles key")
            << QByteArray(R"({"profiles": [{"profileName": "x"}]})") << QStringList();
        QTest::newRow("order kept") << QByteArray(R"({"Profiles": [{"profileName": "Z"}, {"profileName": "A"},
                                                   {"profileName": "M", "apn": "m"}]})")
                                    << QStringList{"Z", "A", "M"};
    }
    void load() {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, names);
        GsmProfileStore store(m_file);
        fill(store);
        QFile::remove(m_file);
        QVERIFY(content.isEmpty() || writeFile(m_file, content));
        store.load();
        QCOMPARE(tst_SectionPages::names(store), names);
    }

    void unwritableFile_keepsListInMemory() {
        GsmProfileStore store(m_dir.filePath(QStringLiteral("no/such/folder/GSMprofileList.json")));
        QCOMPARE(store.add({"A", "a", "", ""}), GsmProfileStore::AddResult::Added);
        QVERIFY(!store.save());
        QCOMPARE(names(store), QStringList{"A"});
    }
    void validate_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("empty") << QString() << true;
        QTest::newRow("access point") << "internet.mts.ru" << true;
        QTest::newRow("32 characters") << QString(32, QLatin1Char('a')) << true;
        QTest::newRow("33 characters") << QString(33, QLatin1Char('a')) << false;
        QTest::newRow("Latin-1 letters") << QStringLiteral("café ß") << true;
        QTest::newRow("Latin-1 top 0xFF") << QString(QChar(0xFF)) << true;
        QTest::newRow("Cyrillic") << QStringLiteral("интернет") << false;
        QTest::newRow("one Cyrillic among Latin") << QStringLiteral("internеt") << false; // Cyrillic е
        QTest::newRow("tab") << "a\tb" << false;
        QTest::newRow("zero byte") << QString(QChar(0)) << false;
        QTest::newRow("DEL") << QString(QChar(0x7F)) << false;
        QTest::newRow("C1 control") << QString(QChar(0x85)) << false;
        QTest::newRow("no-break space") << QString(QChar(0xA0)) << true;
        QTest::newRow("euro sign") << QStringLiteral("€") << false;
    }
    void validate() {
        QFETCH(QString, text);
        QFETCH(bool, accepted);
        DeviceTextValidator v;
        int pos = 0;
        QCOMPARE(v.validate(text, pos) == QValidator::Acceptable, accepted);
        QCOMPARE(DeviceTextValidator::isSendable(text), accepted);
    }

    void typingCyrillic_leavesEditUnchanged() {
        QLineEdit edit;
        DeviceTextValidator::install(&edit);
        typeText(&edit, QStringLiteral("apn"));
        typeText(&edit, QStringLiteral("ж"));
        QCOMPARE(edit.text(), QStringLiteral("apn"));
        QCOMPARE(edit.maxLength(), 32);
    }
    void slotToWordsAndBack_data() {
        QTest::addColumn<int>("day");
        QTest::addColumn<int>("slot");
        QTest::addColumn<quint64>("low");
        QTest::addColumn<quint64>("high");
        QTest::newRow("Monday 00:00") << 0 << 0 << quint64(1) << quint64(0);
        QTest::newRow("Monday 22:30") << 0 << 15 << (quint64(1) << 15) << quint64(0);
        QTest::newRow("Tuesday 00:00") << 1 << 0 << (quint64(1) << 16) << quint64(0);
        QTest::newRow("Thursday 22:30, top of low word") << 3 << 15 << (quint64(1) << 63) << quint64(0);
        QTest::newRow("Friday 00:00, bottom of high word") << 4 << 0 << quint64(0) << quint64(1);
        QTest::newRow("Sunday 22:30, last day bit 111") << 6 << 15 << quint64(0) << (quint64(1) << 47);
        QTest::newRow("day -1 ignored") << -1 << 0 << quint64(0) << quint64(0);
        QTest::newRow("day 7 ignored") << 7 << 0 << quint64(0) << quint64(0);
        QTest::newRow("slot -1 ignored") << 0 << -1 << quint64(0) << quint64(0);
        QTest::newRow("slot 16 ignored") << 0 << 16 << quint64(0) << quint64(0);
    }
    void slotToWordsAndBack() {
        QFETCH(int, day);
        QFETCH(int, slot);
        QFETCH(quint64, low);
        QFETCH(quint64, high);
        RoamingTimetable t;
        t.setSlot(day, slot, true);
        QCOMPARE(t.low(), low);
        QCOMPARE(t.high(), high);
        const bool inGrid = low | high;
        QCOMPARE(t.slot(day, slot), inGrid);
        QCOMPARE(RoamingTimetable::bitIndex(day, slot), inGrid ? day * 16 + slot : -1);

        const RoamingTimetable back(low, high);
        for (int d = 0; d < RoamingTimetable::Days; ++d) {
            for (int s = 0; s < RoamingTimetable::SlotsPerDay; ++s)
                QCOMPARE(back.slot(d, s), d == day && s == slot);
        }
    }

    void slotStart() {
        QCOMPARE((QStringList{RoamingTimetable::slotStart(0), RoamingTimetable::slotStart(5),
                              RoamingTimetable::slotStart(15), RoamingTimetable::slotStart(16)}),
                 (QStringList{"00:00", "07:30", "22:30", "24:00"}));
    }

    void setAll_keepsBitsOfNoDay_data() {
        QTest::addColumn<quint64>("highBefore");
        QTest::addColumn<bool>("on");
        QTest::addColumn<quint64>("low");
        QTest::addColumn<quint64>("high");
        QTest::newRow("all on, reserved clear")
            << quint64(0) << true << ~quint64(0) << quint64(0x0000FFFFFFFFFFFF);
        QTest::newRow("all off, reserved set")
            << ~quint64(0) << false << quint64(0) << quint64(0xFFFF000000000000);
        QTest::newRow("all on, reserved partly set")
            << quint64(0x8001000000000000) << true << ~quint64(0) << quint64(0x8001FFFFFFFFFFFF);
    }
    void setAll_keepsBitsOfNoDay() {
        QFETCH(quint64, highBefore);
        QFETCH(bool, on);
        QFETCH(quint64, low);
        QFETCH(quint64, high);
        RoamingTimetable t(on ? 0 : ~quint64(0), highBefore);
        t.setAll(on);
        QCOMPARE(t.low(), low);
        QCOMPARE(t.high(), high);
    }

    void cellAt_mapsEveryCellBack() {
        RoamingTimetableGrid grid;
        for (int d = 0; d < RoamingTimetable::Days; ++d) {
            for (int s = 0; s < RoamingTimetable::SlotsPerDay; ++s)
                QCOMPARE(grid.cellAt(grid.cellRect(d, s).center()), qMakePair(d, s));
        }
        QCOMPARE(grid.cellAt(QPoint(0, 0)), qMakePair(-1, -1));
        const QRect last = grid.cellRect(6, 15);
        QCOMPARE(grid.cellAt(last.bottomRight() + QPoint(2, 2)), qMakePair(-1, -1));
    }

    void pressAndDrag_data() {
        QTest::addColumn<quint64>("lowBefore");
        QTest::addColumn<quint64>("lowAfter");
        QTest::newRow("drag over empty cells sets them") << quint64(0) << quint64(0x1E);
        QTest::newRow("drag from a set cell clears") << quint64(0xFF) << quint64(0xE1);
        // The first cell decides: set cells met later stay set.
        QTest::newRow("mixed row painted on") << quint64(0x08) << quint64(0x1E);
    }
    void pressAndDrag() {
        QFETCH(quint64, lowBefore);
        QFETCH(quint64, lowAfter);
        RoamingTimetableGrid grid;
        grid.setTimetable(RoamingTimetable(lowBefore, 0));
        QSignalSpy spy(&grid, &RoamingTimetableGrid::timetableChanged);

        // Monday, slots 1 to 4, passing slot 2 twice.
        mouse(&grid, QEvent::MouseButtonPress, grid.cellRect(0, 1).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 2).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 2).topLeft() + QPoint(1, 1));
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 3).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 4).center());
        mouse(&grid, QEvent::MouseButtonRelease, grid.cellRect(0, 4).center());
        mouse(&grid, QEvent::MouseMove, grid.cellRect(0, 5).center()); // after release: no painting

        QCOMPARE(grid.timetable().low(), lowAfter);
        QCOMPARE(grid.timetable().high(), quint64(0));
        QVERIFY(spy.count() >= 1);
    }

    void dialog_clearAndMarkAllKeepReservedBits() {
        roumingShedulerDialog dialog(RoamingTimetable(0x5, 0xF000000000000000), 1);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Расписание роуминга SIM 2")); // the SIM counts from 1
        const auto click = [&](const QString &text) {
            for (QPushButton *b : dialog.findChildren<QPushButton *>()) {
                if (b->text() == text)
                    b->click();
            }
        };
        click(QStringLiteral("Очистить"));
        QCOMPARE(dialog.timetable(), RoamingTimetable(0, 0xF000000000000000));
        click(QStringLiteral("Отметить все"));
        QCOMPARE(dialog.timetable(), RoamingTimetable(~quint64(0), 0xF000FFFFFFFFFFFF));
    }

    // Each slot's start is written centred over its column; the last one ("22:30") is wider than a
    // column and must still lie inside the widget.
    void slotLabels_fitInsideTheWidget() {
        RoamingTimetableGrid grid;
        const int last = RoamingTimetable::SlotsPerDay - 1;
        for (int slot : {0, last}) {
            const QRect cell = grid.cellRect(0, slot);
            const int half =
                (grid.fontMetrics().horizontalAdvance(RoamingTimetable::slotStart(slot)) + 1) / 2;
            const int centre = cell.left() + cell.width() / 2;
            QVERIFY2(centre + half <= grid.sizeHint().width(),
                     qPrintable(QStringLiteral("%1 > %2").arg(centre + half).arg(grid.sizeHint().width())));
            QVERIFY(centre - half >= 0);
        }
    }
    void filter_data() {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("codes");
        const char *const builtIn[][2] = {{"МТС", "25001"},   {"МегаФон", "25002"}, {"Yota", "25011"},
                                          {"Tele2", "25020"}, {"Мотив", "25035"},   {"Ростелеком", "25039"},
                                          {"Билайн", "25099"}};
        for (const auto &row : builtIn)
            QTest::newRow(row[0]) << QString::fromUtf8(row[0]) << QStringList{QString::fromLatin1(row[1])};
        QTest::newRow("lower-case name part") << "мега" << QStringList{"25002"};
        QTest::newRow("code prefix") << "2509" << QStringList{"25099"};
        QTest::newRow("code with dash") << "250-20" << QStringList{"25020"};
        QTest::newRow("no match") << "Vodafone" << QStringList();
    }
    void filter() {
        QFETCH(QString, query);
        QFETCH(QStringList, codes);
        QCOMPARE(tst_SectionPages::codes(MobileOperatorList::filter(query)), codes);
        QCOMPARE(MobileOperatorList::filter(QString()).size(), MobileOperatorList::russian().size());
    }

    void editor_searchAddMoveRemove() {
        GSMSubnetsEditor editor({{QStringLiteral("МТС"), 250, QStringLiteral("01")}}, 0);
        // The clear button fades in with an animation that would outlive this test without an event loop.
        editor.searchEdit()->setClearButtonEnabled(false);
        editor.searchEdit()->setText(QStringLiteral("билайн"));
        QCOMPARE(codes(editor.shownOperators()), QStringList{"25099"});
        editor.addShown(0);
        editor.addShown(0); // already listed
        editor.addManual(257, QStringLiteral("02"), QStringLiteral("A1"));
        editor.addManual(250, QStringLiteral("7"), QString()); // MNC too short
        QCOMPARE(codes(editor.networks()), (QStringList{"25001", "25099", "25702"}));
        editor.move(2, -1);
        QCOMPARE(codes(editor.networks()), (QStringList{"25001", "25702", "25099"}));
        editor.move(0, -1); // already first
        editor.removeAt(0);
        QCOMPARE(codes(editor.networks()), (QStringList{"25702", "25099"}));
    }

    // The operator table is the editor's main tool: several rows at once and whole names and headings.
    void editor_tableShowsSeveralWholeRows() {
        GSMSubnetsEditor editor({}, 0);
        editor.searchEdit()->setClearButtonEnabled(false);
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
        auto *table = editor.findChild<QTableWidget *>();
        QVERIFY(table);
        QVERIFY(table->rowCount() >= 6);
        QVERIFY2(table->viewport()->height() >= 6 * table->rowHeight(0),
                 qPrintable(QString::number(table->viewport()->height())));
        const QFontMetrics metrics = table->fontMetrics();
        for (int column = 0; column < table->columnCount(); ++column) {
            int widest = metrics.horizontalAdvance(table->horizontalHeaderItem(column)->text());
            for (int row = 0; row < table->rowCount(); ++row)
                widest = qMax(widest, metrics.horizontalAdvance(table->item(row, column)->text()));
            QVERIFY2(table->columnWidth(column) >= widest, qPrintable(QString::number(column)));
        }
    }

    void store_keepsEachSimsListInOrderAndReadsABrokenFileAsEmpty() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("nets.json"));
        PreferredNetworkStore store(file);
        store.setNetworks(0, {{QStringLiteral("Билайн"), 250, QStringLiteral("99")},
                              {QStringLiteral("МТС"), 250, QStringLiteral("01")}});
        store.setNetworks(1, {{QStringLiteral("Tele2"), 250, QStringLiteral("20")}});
        QVERIFY(store.save());
        PreferredNetworkStore loaded(file);
        loaded.load();
        QCOMPARE(loaded.networks(0), store.networks(0));
        QCOMPARE(loaded.networks(1), store.networks(1));
        QVERIFY(loaded.networks(2).isEmpty());

        QVERIFY(writeFile(file, "[1, 2"));
        loaded.load();
        QVERIFY(loaded.networks(0).isEmpty());
        QVERIFY(loaded.networks(1).isEmpty());
    }
};

QTEST_MAIN(tst_SectionPages)
#include "tst_sectionpages.moc"
