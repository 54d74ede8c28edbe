#include "pages/SettingsStatePage.h"

#include "Devices/ControlInfoConfiguration.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/TelemetryText.h"
#include "Devices/VantorConfiguration.h"

#include <QDateTime>
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

using namespace TelemetryText;

namespace {
const int IconSize = 20;

QString simIcon(int slotState) {
    if (slotState == int(kd::SimSlotState::Active))
        return QStringLiteral(":/images/sim_card_active.png");
    if (slotState == int(kd::SimSlotState::Inserted))
        return QStringLiteral(":/images/sim_card_inserted.png");
    return QStringLiteral(":/images/sim_card.png");
}

QString serverIcon(int state) {
    if (state == int(kd::ServerState::Connected))
        return QStringLiteral(":/images/cloud_plus.png");
    if (state == int(kd::ServerState::Connecting))
        return QStringLiteral(":/images/cloud_up_white.png");
    return QStringLiteral(":/images/cloud_close.png");
}

QString bulbIcon(bool active) {
    return active ? QStringLiteral(":/images/light_bulb.png")
                  : QStringLiteral(":/images/light_bulb_white.png");
}

QString clockSource(quint16 source) {
    switch (source) {
    case kd::ClockRecord::Navigation:
        return QStringLiteral("Навигация");
    case kd::ClockRecord::Network:
        return QStringLiteral("Сеть GSM");
    default:
        return QStringLiteral("Не синхронизированы");
    }
}
} // namespace

SettingsStatePage::SettingsStatePage(VantorConfiguration *configuration, QWidget *parent)
    : QWidget(parent)
    , m_configuration(configuration) {
    setObjectName(QStringLiteral("SettingsStatePage"));
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto *scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    outer->addWidget(scroll);
    auto *content = new QWidget(scroll);
    scroll->setWidget(content);
    auto *columns = new QGridLayout(content);

    auto group = [content](const QString &title) {
        auto *box = new QGroupBox(title, content);
        return box;
    };

    // Identity and the device's own state.
    auto *identityBox = group(QStringLiteral("Прибор"));
    auto *identity = new QFormLayout(identityBox);
    addValue(identity, QStringLiteral("Название"), QStringLiteral("deviceName"));
    addValue(identity, QStringLiteral("IMEI"), QStringLiteral("imei"));
    addValue(identity, QStringLiteral("Серийный номер"), QStringLiteral("serialNumber"));
    addValue(identity, QStringLiteral("Версия ПО"), QStringLiteral("softwareVersion"));
    addValue(identity, QStringLiteral("Группа / тип / модификация"), QStringLiteral("hardware"));
    addValue(identity, QStringLiteral("Время прибора"), QStringLiteral("clock"));
    addValue(identity, QStringLiteral("Синхронизация часов"), QStringLiteral("clockSource"));
    columns->addWidget(identityBox, 0, 0);

    auto *stateBox = group(QStringLiteral("Состояние"));
    auto *state = new QFormLayout(stateBox);
    addValue(state, QStringLiteral("Питание"), QStringLiteral("supplyVoltage"));
    addValue(state, QStringLiteral("Резервная батарея"), QStringLiteral("batteryVoltage"));
    addValue(state, QStringLiteral("Температура платы / батареи"), QStringLiteral("temperatures"));
    addValue(state, QStringLiteral("Использованная память"), QStringLiteral("memory"));
    addValue(state, QStringLiteral("Записи отправлены / сохранены"), QStringLiteral("records"));
    addValue(state, QStringLiteral("Сетевой адрес"), QStringLiteral("netAddr"));
    addIconValue(state, QStringLiteral("Навигация"), QStringLiteral("navigationActive"));
    addIconValue(state, QStringLiteral("GSM"), QStringLiteral("gsmActive"));
    addIconValue(state, QStringLiteral("Зажигание"), QStringLiteral("ignition"));
    addValue(state, QStringLiteral("Время работы"), QStringLiteral("uptime"));
    addValue(state, QStringLiteral("Перезапуски"), QStringLiteral("resetCount"));
    columns->addWidget(stateBox, 0, 1);

    // Navigation receivers, one column each.
    auto *navBox = group(QStringLiteral("Навигация"));
    auto *nav = new QGridLayout(navBox);
    const QStringList navRows = {QString(),
                                 QStringLiteral("Режим"),
                                 QStringLiteral("Дата и время"),
                                 QStringLiteral("Широта"),
                                 QStringLiteral("Долгота"),
                                 QStringLiteral("Скорость"),
                                 QStringLiteral("Курс"),
                                 QStringLiteral("Качество"),
                                 QStringLiteral("HDOP / VDOP / PDOP")};
    const QStringList navNames = {QString(),
                                  QStringLiteral("fixLabel"),
                                  QStringLiteral("fixTime"),
                                  QStringLiteral("latitude"),
                                  QStringLiteral("longitude"),
                                  QStringLiteral("speed"),
                                  QStringLiteral("course"),
                                  QStringLiteral("fixQuality"),
                                  QStringLiteral("dilution")};
    for (int row = 1; row < navRows.size(); ++row)
        nav->addWidget(new QLabel(navRows.at(row), navBox), row, 0);
    for (int r = 0; r < Receivers; ++r) {
        auto *button = new QPushButton(navBox);
        button->setObjectName(QStringLiteral("fixButton%1").arg(r));
        button->setFlat(true);
        button->setIconSize(QSize(IconSize, IconSize));
        m_fixButtons[r] = button;
        nav->addWidget(button, 0, r + 1);
        for (int row = 1; row < navNames.size(); ++row)
            addGridValue(nav, row, r + 1, navNames.at(row) + QString::number(r));
    }
    auto *summary = new QFormLayout();
    addValue(summary, QStringLiteral("Используемый приемник"), QStringLiteral("activeReceiver"));
    addValue(summary, QStringLiteral("Пробег"), QStringLiteral("odometer"));
    nav->addLayout(summary, navRows.size(), 0, 1, Receivers + 1);
    columns->addWidget(navBox, 1, 0, 1, 2);

    // SIM cards and registration.
    auto *gsmBox = group(QStringLiteral("GSM"));
    auto *gsm = new QGridLayout(gsmBox);
    const QStringList gsmRows = {QStringLiteral("Слот"), QStringLiteral("Состояние SIM"),
                                 QStringLiteral("Регистрация"), QStringLiteral("Уровень сигнала"),
                                 QStringLiteral("Оператор")};
    const QStringList gsmNames = {QStringLiteral("simSlot"), QStringLiteral("simState"),
                                  QStringLiteral("registration"), QStringLiteral("signal"),
                                  QStringLiteral("operator")};
    for (int row = 0; row < gsmRows.size(); ++row)
        gsm->addWidget(new QLabel(gsmRows.at(row), gsmBox), row + 1, 0);
    for (int s = 0; s < Sims; ++s) {
        auto *title = new QLabel(QStringLiteral("SIM %1").arg(s + 1), gsmBox);
        gsm->addWidget(title, 0, 2 * s + 1, 1, 2);
        auto *icon = new QLabel(gsmBox);
        icon->setObjectName(QStringLiteral("simIcon%1").arg(s));
        m_icons.insert(icon->objectName(), icon);
        gsm->addWidget(icon, 1, 2 * s + 1);
        for (int row = 0; row < gsmNames.size(); ++row)
            addGridValue(gsm, row + 1, 2 * s + 2, gsmNames.at(row) + QString::number(s));
    }
    columns->addWidget(gsmBox, 3, 0);

    // Server connections.
    auto *serverBox = group(QStringLiteral("Серверы"));
    auto *servers = new QGridLayout(serverBox);
    const QStringList serverRows = {QStringLiteral("Состояние"), QStringLiteral("Протокол"),
                                    QStringLiteral("Адрес"), QStringLiteral("Пакеты подтв. / отпр."),
                                    QStringLiteral("Записей в очереди")};
    const QStringList serverNames = {QStringLiteral("serverState"), QStringLiteral("serverProtocol"),
                                     QStringLiteral("serverAddress"), QStringLiteral("serverPackets"),
                                     QStringLiteral("serverQueued")};
    for (int row = 0; row < serverRows.size(); ++row)
        servers->addWidget(new QLabel(serverRows.at(row), serverBox), row, 0);
    for (int s = 0; s < Servers; ++s) {
        auto *icon = new QLabel(serverBox);
        icon->setObjectName(QStringLiteral("serverIcon%1").arg(s));
        m_icons.insert(icon->objectName(), icon);
        servers->addWidget(icon, 0, 2 * s + 1);
        for (int row = 0; row < serverNames.size(); ++row)
            addGridValue(servers, row, 2 * s + 2, serverNames.at(row) + QString::number(s));
    }
    columns->addWidget(serverBox, 2, 0, 1, 2);

    // Inputs and fuel sensors.
    auto *inputBox = group(QStringLiteral("Входы"));
    auto *inputs = new QFormLayout(inputBox);
    for (int i = 0; i < AnalogInputs; ++i)
        addValue(inputs, QStringLiteral("Аналоговый вход %1").arg(i + 1), QStringLiteral("analog%1").arg(i));
    for (int i = 0; i < LogicInputs; ++i) {
        addValue(inputs, QStringLiteral("Логический вход %1").arg(i + 1), QStringLiteral("logic%1").arg(i));
        addValue(inputs, QStringLiteral("Импульсы входа %1").arg(i + 1),
                 QStringLiteral("logicCounter%1").arg(i));
    }
    columns->addWidget(inputBox, 3, 1);

    auto *fuelBox = group(QStringLiteral("Топливо"));
    auto *fuel = new QFormLayout(fuelBox);
    for (int i = 0; i < FuelSensors; ++i)
        addValue(fuel, QStringLiteral("Датчик %1").arg(i + 1), QStringLiteral("fuel%1").arg(i));
    addValue(fuel, QStringLiteral("Ошибки / опросы"), QStringLiteral("fuelPolls"));
    columns->addWidget(fuelBox, 4, 0);
    columns->setRowStretch(5, 1);

    clearTelemetry();
    showIdentity();
}

QLabel *SettingsStatePage::addValue(QFormLayout *form, const QString &title, const QString &name) {
    auto *label = new QLabel(form->parentWidget());
    label->setObjectName(name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_values.insert(name, label);
    form->addRow(title, label);
    return label;
}

QLabel *SettingsStatePage::addIconValue(QFormLayout *form, const QString &title, const QString &name) {
    auto *row = new QWidget(form->parentWidget());
    row->setAttribute(Qt::WA_TranslucentBackground);
    row->setStyleSheet(QStringLiteral("background: transparent;"));
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *icon = new QLabel(row);
    icon->setObjectName(name + QStringLiteral("Icon"));
    m_icons.insert(icon->objectName(), icon);
    auto *label = new QLabel(row);
    label->setObjectName(name);
    m_values.insert(name, label);
    layout->addWidget(icon);
    layout->addWidget(label, 1);
    form->addRow(title, row);
    return label;
}

QLabel *SettingsStatePage::addGridValue(QGridLayout *grid, int row, int column, const QString &name) {
    auto *label = new QLabel(grid->parentWidget());
    label->setObjectName(name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_values.insert(name, label);
    grid->addWidget(label, row, column);
    return label;
}

QString SettingsStatePage::valueText(const QString &name) const {
    const QLabel *label = m_values.value(name);
    return label ? label->text() : QString();
}

QString SettingsStatePage::iconResource(const QString &name) const {
    const QLabel *label = m_icons.value(name);
    return label ? label->property("iconResource").toString() : QString();
}

QPushButton *SettingsStatePage::fixButton(int receiver) const {
    return (receiver >= 0 && receiver < Receivers) ? m_fixButtons[receiver] : nullptr;
}

void SettingsStatePage::setValue(const QString &name, const QString &text) {
    if (QLabel *label = m_values.value(name))
        label->setText(text);
}

QPixmap SettingsStatePage::statePixmap(const QString &resource, const QWidget *on) {
    QPixmap pixmap = QIcon(resource).pixmap(IconSize, IconSize);
    if (!on || !resource.contains(QLatin1String("_white")))
        return pixmap;
    QColor text = on->palette().color(on->foregroundRole());
    if (text.lightness() >= 128)
        return pixmap;
    text.setAlpha(150);
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), text);
    return pixmap;
}

void SettingsStatePage::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if ((event->type() != QEvent::StyleChange && event->type() != QEvent::PaletteChange) || m_redrawPending)
        return;
    // The children take the new colours in the same round of events: draw once they all have.
    m_redrawPending = true;
    QTimer::singleShot(0, this, [this] {
        m_redrawPending = false;
        redrawIcons();
    });
}

void SettingsStatePage::redrawIcons() {
    for (QLabel *label : qAsConst(m_icons)) {
        const QString resource = label->property("iconResource").toString();
        if (!resource.isEmpty())
            label->setPixmap(statePixmap(resource, label));
    }
    for (QPushButton *button : m_fixButtons) {
        const QString resource = button->property("iconResource").toString();
        if (!resource.isEmpty())
            button->setIcon(QIcon(statePixmap(resource, button)));
    }
}

void SettingsStatePage::setIcon(const QString &name, const QString &resource) {
    QLabel *label = m_icons.value(name);
    // Telemetry arrives up to twenty times a second; the picture changes only with the state.
    if (!label || label->property("iconResource").toString() == resource)
        return;
    label->setPixmap(statePixmap(resource, label));
    label->setProperty("iconResource", resource);
}

void SettingsStatePage::setFixIcon(int receiver, bool fix) {
    QPushButton *button = m_fixButtons[receiver];
    const QString resource =
        fix ? QStringLiteral(":/images/satellite.png") : QStringLiteral(":/images/satellite_white.png");
    if (button->property("iconResource").toString() == resource)
        return;
    button->setIcon(QIcon(statePixmap(resource, button)));
    button->setProperty("iconResource", resource);
}

kd::ControlInfoConfiguration *SettingsStatePage::controlInfo() const {
    return kd::typed_item<kd::ControlInfoConfiguration>(m_configuration,
                                                        QString::fromLatin1(kd::keys::ControlInfo));
}

void SettingsStatePage::showIdentity() {
    auto *info = kd::typed_item<kd::DeviceInfoConfiguration>(m_configuration,
                                                             QString::fromLatin1(kd::keys::MainDeviceInfo));
    if (!info)
        return;
    setValue(QStringLiteral("deviceName"), info->name());
    setValue(QStringLiteral("imei"), info->IMEI());
    setValue(QStringLiteral("serialNumber"), QString::number(info->SerialNumber()));
    setValue(QStringLiteral("softwareVersion"), QString::number(info->Version()));
    setValue(QStringLiteral("hardware"), QStringLiteral("%1 / %2 / %3")
                                             .arg(info->DeviceGroup())
                                             .arg(info->DeviceType())
                                             .arg(info->DeviceMod()));
}

void SettingsStatePage::updateTelemetry(int kind) {
    switch (kind) {
    case kd::telemetry::DeviceState:
        showDeviceState();
        break;
    case kd::telemetry::Clock:
        showClock();
        break;
    case kd::telemetry::NavReceivers:
        showReceivers();
        break;
    case kd::telemetry::Servers:
        showServers();
        break;
    case kd::telemetry::NavSummary:
        showNavSummary();
        break;
    case kd::telemetry::AnalogInputs:
        showAnalogInputs();
        break;
    case kd::telemetry::LogicInputs:
        showLogicInputs();
        break;
    case kd::telemetry::FuelSensors:
        showFuel();
        break;
    case kd::telemetry::SimStates:
        showSimStates();
        break;
    case kd::telemetry::GsmRegistration:
        showRegistration();
        break;
    default:
        break;
    }
}

void SettingsStatePage::updateAll() {
    showIdentity();
    showDeviceState();
    showClock();
    showReceivers();
    showServers();
    showNavSummary();
    showAnalogInputs();
    showLogicInputs();
    showFuel();
    showSimStates();
    showRegistration();
}

void SettingsStatePage::clearTelemetry() {
    for (auto it = m_values.begin(); it != m_values.end(); ++it) {
        static const QStringList identity = {QStringLiteral("deviceName"), QStringLiteral("imei"),
                                             QStringLiteral("serialNumber"),
                                             QStringLiteral("softwareVersion"), QStringLiteral("hardware")};
        if (!identity.contains(it.key()))
            it.value()->setText(noFixValue());
    }
    for (int r = 0; r < Receivers; ++r) {
        m_fixButtons[r]->setText(TelemetryText::fixButton(0, 0));
        setFixIcon(r, false);
    }
    for (int s = 0; s < Sims; ++s)
        setIcon(QStringLiteral("simIcon%1").arg(s), simIcon(int(kd::SimSlotState::Absent)));
    for (const char *name : {"navigationActiveIcon", "gsmActiveIcon", "ignitionIcon"})
        setIcon(QLatin1String(name), bulbIcon(false));
    for (int s = 0; s < Servers; ++s)
        setIcon(QStringLiteral("serverIcon%1").arg(s), serverIcon(int(kd::ServerState::Disconnected)));
}

void SettingsStatePage::showDeviceState() {
    const auto *ci = controlInfo();
    const auto r = ci ? ci->deviceState() : std::nullopt;
    if (!r)
        return;
    setValue(QStringLiteral("supplyVoltage"), voltage(r->supplyVoltage));
    setValue(QStringLiteral("batteryVoltage"), voltage(r->batteryVoltage));
    setValue(QStringLiteral("temperatures"), temperatures(r->boardTemperature, r->batteryTemperature));
    setValue(QStringLiteral("memory"), spacedCounter(r->memoryUsed, r->memoryTotal));
    setValue(QStringLiteral("records"), counter(r->recordsSent, r->recordsStored));
    setValue(QStringLiteral("netAddr"), QString::number(r->netAddr));
    const struct {
        const char *name;
        quint32 flag;
    } flags[] = {{"navigationActive", kd::DeviceStateRecord::NavigationActive},
                 {"gsmActive", kd::DeviceStateRecord::GsmActive},
                 {"ignition", kd::DeviceStateRecord::Ignition}};
    for (const auto &f : flags) {
        const bool on = r->activityFlags & f.flag;
        setValue(QLatin1String(f.name), activity(on));
        setIcon(QLatin1String(f.name) + QStringLiteral("Icon"), bulbIcon(on));
    }
    setValue(QStringLiteral("uptime"), duration(r->uptime));
    setValue(QStringLiteral("resetCount"), QString::number(r->resetCount));
}

void SettingsStatePage::showClock() {
    const auto *ci = controlInfo();
    const auto r = ci ? ci->clock() : std::nullopt;
    if (!r)
        return;
    setValue(
        QStringLiteral("clock"),
        QDateTime::fromSecsSinceEpoch(r->unixTime, Qt::UTC).toString(QStringLiteral("dd.MM.yy hh:mm:ss")));
    setValue(QStringLiteral("clockSource"), clockSource(r->syncSource));
}

void SettingsStatePage::showReceivers() {
    const auto *ci = controlInfo();
    if (!ci)
        return;
    for (int i = 0; i < Receivers; ++i) {
        const auto r = ci->navReceiver(i);
        if (!r)
            continue;
        const QString n = QString::number(i);
        m_fixButtons[i]->setText(TelemetryText::fixButton(r->fixMode, r->satellites));
        setFixIcon(i, r->hasFix());
        setValue(QStringLiteral("fixLabel") + n, fixLabel(r->fixMode));
        setValue(QStringLiteral("fixTime") + n, fixDateTime(*r));
        setValue(QStringLiteral("latitude") + n, latitude(*r));
        setValue(QStringLiteral("longitude") + n, longitude(*r));
        setValue(QStringLiteral("speed") + n, speed(*r));
        setValue(QStringLiteral("course") + n, course(*r));
        setValue(QStringLiteral("fixQuality") + n, fixQuality(r->fixQuality));
        setValue(QStringLiteral("dilution") + n, dilution(*r));
    }
}

void SettingsStatePage::showServers() {
    const auto *ci = controlInfo();
    if (!ci)
        return;
    for (int i = 0; i < Servers; ++i) {
        const auto r = ci->serverState(i);
        if (!r)
            continue;
        const QString n = QString::number(i);
        setIcon(QStringLiteral("serverIcon") + n, serverIcon(r->state));
        setValue(QStringLiteral("serverState") + n, serverState(r->state));
        setValue(QStringLiteral("serverProtocol") + n, serverProtocol(r->protocol));
        setValue(QStringLiteral("serverAddress") + n, serverAddress(r->ip, r->port));
        setValue(QStringLiteral("serverPackets") + n, spacedCounter(r->packetsAcked, r->packetsSent));
        setValue(QStringLiteral("serverQueued") + n, QString::number(r->recordsQueued));
    }
}

void SettingsStatePage::showNavSummary() {
    const auto *ci = controlInfo();
    const auto r = ci ? ci->navSummary() : std::nullopt;
    if (!r)
        return;
    setValue(QStringLiteral("activeReceiver"), QString::number(r->activeReceiver + 1));
    setValue(QStringLiteral("odometer"), QStringLiteral("%1 км").arg(r->odometer / 1000.0, 0, 'f', 1));
}

void SettingsStatePage::showAnalogInputs() {
    const auto *ci = controlInfo();
    if (!ci)
        return;
    for (int i = 0; i < AnalogInputs; ++i) {
        if (const auto r = ci->analogInput(i)) {
            const QString text = r->mode == quint16(kd::InputMode::Off)
                                     ? inputMode(r->mode, 0)
                                     : inputMode(r->mode, r->averagedVoltage);
            setValue(QStringLiteral("analog%1").arg(i),
                     text + QStringLiteral(" (") + voltage(r->voltage) + QStringLiteral(")"));
        }
    }
}

void SettingsStatePage::showLogicInputs() {
    const auto *ci = controlInfo();
    if (!ci)
        return;
    for (int i = 0; i < LogicInputs; ++i) {
        if (const auto r = ci->logicInput(i)) {
            setValue(QStringLiteral("logic%1").arg(i), inputMode(r->mode, r->value));
            setValue(QStringLiteral("logicCounter%1").arg(i), QString::number(r->counter));
        }
    }
}

void SettingsStatePage::showFuel() {
    const auto *ci = controlInfo();
    const auto r = ci ? ci->fuelSensors() : std::nullopt;
    if (!r)
        return;
    for (int i = 0; i < FuelSensors; ++i)
        setValue(QStringLiteral("fuel%1").arg(i), r->online(i) ? QString::number(r->level[i]) : noFixValue());
    setValue(QStringLiteral("fuelPolls"), spacedCounter(r->errorCount, r->pollCount));
}

void SettingsStatePage::showSimStates() {
    const auto *ci = controlInfo();
    if (!ci)
        return;
    for (int i = 0; i < Sims; ++i) {
        if (const auto r = ci->simState(i))
            setValue(QStringLiteral("simState%1").arg(i), simState(r->code()));
    }
}

void SettingsStatePage::showRegistration() {
    const auto *ci = controlInfo();
    if (!ci)
        return;
    for (int i = 0; i < Sims; ++i) {
        const auto r = ci->gsmRegistration(i);
        if (!r)
            continue;
        const QString n = QString::number(i);
        setIcon(QStringLiteral("simIcon") + n, simIcon(r->slotState));
        setValue(QStringLiteral("simSlot") + n, simSlot(r->slotState));
        setValue(QStringLiteral("registration") + n, registration(r->registration));
        setValue(QStringLiteral("signal") + n,
                 r->signalLevel == 99 ? noFixValue() : QStringLiteral("%1 / 31").arg(r->signalLevel));
        setValue(QStringLiteral("operator") + n,
                 r->operatorCode ? QStringLiteral("%1 %2")
                                       .arg(r->operatorCode / 100)
                                       .arg(r->operatorCode % 100, 2, 10, QLatin1Char('0'))
                                 : noFixValue());
    }
}
