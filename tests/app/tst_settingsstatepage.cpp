#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/TelemetryRecords.h"
#include "Devices/VantorConfiguration.h"
#include "pages/SettingsStatePage.h"

#include <QPushButton>
#include <QtTest>

namespace {
// A telemetry answer as the device sends it: 82 kind 00 00, then the records.
QByteArray answer(int kind, const QList<QByteArray> &records) {
    return QByteArray::fromHex("82") + char(kind) + QByteArray(2, '\0') + records.join();
}
} // namespace

class tst_SettingsStatePage : public QObject {
    Q_OBJECT
private slots:
    // The texts themselves are TelemetryText's; these rows check that each record lands in its own label
    // (second SIM, second receiver, second server) with its icon, and the fields only the page formats, the
    // device's identity included; clearing leaves the identity alone.
    void telemetry_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>(
            "icon"); // icon label and its resource, "name=resource"; empty: none checked
        auto row = [](const char *name, const QByteArray &payload, const char *field, const char *text,
                      const char *icon = "") {
            QTest::newRow(name) << payload << QString::fromLatin1(field) << QString::fromUtf8(text)
                                << QString::fromLatin1(icon);
        };

        kd::SimStateRecord absent;
        absent.state = 8;
        row("second sim state",
            answer(kd::telemetry::SimStates, {kd::SimStateRecord().toBytes(), absent.toBytes()}), "simState1",
            "Сим отсутсвует");

        kd::GsmRegistrationRecord reg;
        reg.slotState = quint8(kd::SimSlotState::Active);
        reg.registration = 4;
        reg.signalLevel = 99;
        kd::GsmRegistrationRecord roaming;
        roaming.slotState = quint8(kd::SimSlotState::Inserted);
        roaming.registration = 5;
        roaming.operatorCode = 25099;
        const QByteArray gsm = answer(kd::telemetry::GsmRegistration, {reg.toBytes(), roaming.toBytes()});
        row("active sim icon", gsm, "simSlot0", "Активна", "simIcon0=:/images/sim_card_active.png");
        row("unknown signal level", gsm, "signal0", "-");
        row("second sim roaming", gsm, "registration1", "Роуминг", "simIcon1=:/images/sim_card_inserted.png");
        row("operator code", gsm, "operator1", "250 99");

        kd::NavReceiverRecord noFix;
        noFix.fixMode = 1;
        noFix.latDegrees = 55;
        kd::NavReceiverRecord fix;
        fix.fixMode = 3;
        fix.fixQuality = 2;
        fix.day = 1;
        fix.month = 2;
        fix.year = 26;
        fix.hours = 3;
        fix.minutes = 4;
        fix.seconds = 5;
        fix.satellites = 6;
        const QByteArray nav = answer(kd::telemetry::NavReceivers, {noFix.toBytes(), fix.toBytes()});
        row("no fix: latitude is a dash", nav, "latitude0", "-");
        row("second receiver fix time", nav, "fixTime1", "01.02.26 03:04:05");
        row("second receiver quality", nav, "fixQuality1", "Дифференциальный");
        row("second receiver button", nav, "fixButton1", "3D, 6 спутн.");

        kd::ServerStateRecord server;
        server.protocol = quint8(kd::ServerProtocol::WialonCombine);
        server.state = quint8(kd::ServerState::Connected);
        server.ip[0] = 10;
        server.ip[3] = 7;
        server.port = 20332;
        server.packetsSent = 9;
        server.packetsAcked = 8;
        const QByteArray servers = answer(kd::telemetry::Servers, {server.toBytes()});
        row("server connected", servers, "serverState0", "Подключен", "serverIcon0=:/images/cloud_plus.png");
        row("server address", servers, "serverAddress0", "10.0.0.7:20332");
        row("server packets acked of sent", servers, "serverPackets0", "8 / 9");
        row("second server still off", servers, "serverState1", "-", "serverIcon1=:/images/cloud_close.png");

        kd::DeviceStateRecord state;
        state.memoryUsed = 12;
        state.memoryTotal = 100;
        state.netAddr = 3;
        state.activityFlags = kd::DeviceStateRecord::Ignition;
        state.supplyVoltage = 12345;
        const QByteArray device = answer(kd::telemetry::DeviceState, {state.toBytes()});
        row("memory", device, "memory", "12 / 100");
        row("network address", device, "netAddr", "3");
        row("ignition on", device, "ignition", "Активен", "ignitionIcon=:/images/light_bulb.png");
        row("navigation off", device, "navigationActive", "Неактивен",
            "navigationActiveIcon=:/images/light_bulb_white.png");
        row("supply", device, "supplyVoltage", "12.35 В");

        kd::LogicInputRecord counter;
        counter.mode = quint16(kd::InputMode::UniversalCounter);
        counter.value = 52;
        row("second logic input",
            answer(kd::telemetry::LogicInputs, {kd::LogicInputRecord().toBytes(), counter.toBytes()}),
            "logic1", "Унив. счетчик, 52");

        kd::FuelSensorsRecord fuel;
        fuel.level[1] = 3247;
        fuel.onlineMask = 0x2;
        const QByteArray fuels = answer(kd::telemetry::FuelSensors, {fuel.toBytes()});
        row("fuel sensor online", fuels, "fuel1", "3247");
        row("fuel sensor silent", fuels, "fuel0", "-");

        kd::DeviceInfoConfiguration info;
        info.setName(QStringLiteral("Vantor micro"));
        info.setIMEI(QStringLiteral("863071014478127"));
        info.setDeviceGroup(1);
        info.setDeviceType(3);
        info.setDeviceMod(2);
        row("device name", info.encodeAnswer(kd::DeviceInfoConfiguration::KindText), "deviceName",
            "Vantor micro");
        row("imei", info.encodeAnswer(kd::DeviceInfoConfiguration::KindIdentity), "imei", "863071014478127");
        row("hardware", info.encodeAnswer(kd::DeviceInfoConfiguration::KindIdentity), "hardware",
            "1 / 3 / 2");
    }

    void telemetry() {
        QFETCH(QByteArray, payload);
        QFETCH(QString, field);
        QFETCH(QString, text);
        QFETCH(QString, icon);
        VantorConfiguration cfg;
        SettingsStatePage page(&cfg);
        const bool identity = quint8(payload[0]) == 0x81;
        if (identity) {
            cfg.deviceInfo()->decode(payload);
            page.showIdentity();
        } else {
            QVERIFY(cfg.controlInfo()->decode(payload));
            page.updateTelemetry(quint8(payload[1]) & 0x7F);
        }
        const bool button = field.startsWith(QLatin1String("fixButton")); // the n-th receiver's button
        const auto shown = [&] {
            return button ? page.fixButton(field.right(1).toInt())->text() : page.valueText(field);
        };
        QCOMPARE(shown(), text);
        if (!icon.isEmpty())
            QCOMPARE(page.iconResource(icon.section('=', 0, 0)), icon.section('=', 1));
        // The device gone: dashes everywhere but in its identity.
        page.clearTelemetry();
        QCOMPARE(shown(), identity ? text
                          : button ? QStringLiteral("Нет фиксации, 0 спутн.")
                                   : QStringLiteral("-"));
    }
};

QTEST_MAIN(tst_SettingsStatePage)
#include "tst_settingsstatepage.moc"
