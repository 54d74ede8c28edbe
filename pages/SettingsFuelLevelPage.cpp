#include "pages/SettingsFuelLevelPage.h"

#include "Devices/FuelConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/DeviceWorkflows.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSpinBox>

SettingsFuelLevelPage::SettingsFuelLevelPage(VantorConfiguration *configuration, QWidget *parent)
    : SettingsPageBase(configuration, QStringLiteral("Топливо"), parent) {
    auto *sensors = new QGroupBox(QStringLiteral("Датчики уровня топлива"), this);
    auto *grid = new QGridLayout(sensors);
    grid->addWidget(new QLabel(QStringLiteral("Датчик"), sensors), 0, 0);
    grid->addWidget(new QLabel(QStringLiteral("Сетевой адрес"), sensors), 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("Номер бака"), sensors), 0, 2);
    for (int i = 0; i < Sensors; ++i) {
        m_addresses.append(spinBox(0, 255));
        m_tanks.append(spinBox(0, 255));
        grid->addWidget(new QLabel(QString::number(i + 1), sensors), i + 1, 0);
        grid->addWidget(m_addresses.last(), i + 1, 1);
        grid->addWidget(m_tanks.last(), i + 1, 2);
    }

    auto *tanks = new QGroupBox(QStringLiteral("Усреднение по бакам"), this);
    auto *form = new QFormLayout(tanks);
    for (int t = 0; t < Tanks; ++t) {
        m_averaging.append(spinBox(0, 65535));
        form->addRow(QStringLiteral("Бак %1:").arg(t + 1), m_averaging.last());
    }

    body()->addWidget(sensors);
    body()->addWidget(tanks);

    followSection(kd::keys::Fuel);
    refresh();
}

void SettingsFuelLevelPage::showSection() {
    const kd::FuelConfiguration *section = configuration() ? configuration()->fuel() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < Sensors; ++i) {
        const FuelConfigurationItem *item = section->element(i);
        if (!item)
            continue;
        m_addresses.at(i)->setValue(item->addr());
        m_tanks.at(i)->setValue(item->tank_num());
        if (i < Tanks)
            m_averaging.at(i)->setValue(item->averaging());
    }
}

void SettingsFuelLevelPage::storeToSection() {
    const kd::FuelConfiguration *section = configuration() ? configuration()->fuel() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < Sensors; ++i) {
        FuelConfigurationItem *item = section->element(i);
        if (!item)
            continue;
        item->setAddr(quint8(m_addresses.at(i)->value()));
        item->setTank_num(quint8(m_tanks.at(i)->value()));
        if (i < Tanks)
            item->setAveraging(quint16(m_averaging.at(i)->value()));
    }
}

void SettingsFuelLevelPage::writeSection(DeviceWorkflows &workflows) {
    workflows.writeFuel();
}
