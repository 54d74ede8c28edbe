#include "pages/SettingsAnalogInPage.h"

#include "Devices/AgcConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/DeviceWorkflows.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSpinBox>

SettingsAnalogInPage::SettingsAnalogInPage(VantorConfiguration *configuration, QWidget *parent)
    : SettingsPageBase(configuration, QStringLiteral("Аналоговые входы"), parent) {
    auto *group = new QGroupBox(QStringLiteral("Аналоговые входы"), this);
    auto *grid = new QGridLayout(group);
    const QStringList rows = {QStringLiteral("Вход используется"), QStringLiteral("Нижний порог:"),
                              QStringLiteral("Верхний порог:"), QStringLiteral("Чувствительность:"),
                              QStringLiteral("Усреднение:")};
    for (int row = 0; row < rows.size(); ++row)
        grid->addWidget(new QLabel(rows.at(row), group), row + 1, 0);
    for (int i = 0; i < Channels; ++i) {
        Channel c{checkBox(QString()), spinBox(0, 65535), spinBox(0, 65535), spinBox(0, 65535),
                  spinBox(0, 65535)};
        grid->addWidget(new QLabel(QStringLiteral("Вход %1").arg(i + 1), group), 0, i + 1, Qt::AlignHCenter);
        grid->addWidget(c.enabled, 1, i + 1, Qt::AlignHCenter);
        grid->addWidget(c.thresholdLow, 2, i + 1);
        grid->addWidget(c.thresholdHigh, 3, i + 1);
        grid->addWidget(c.sensitivity, 4, i + 1);
        grid->addWidget(c.averaging, 5, i + 1);
        m_channels.append(c);
    }
    body()->addWidget(group);

    followSection(kd::keys::Agc);
    refresh();
}

void SettingsAnalogInPage::showSection() {
    const kd::AgcConfiguration *section = configuration() ? configuration()->agc() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < m_channels.size(); ++i) {
        const AgcConfigurationItem *item = section->element(i);
        const Channel &c = m_channels.at(i);
        if (!item)
            continue;
        c.enabled->setChecked(item->enabled() & 1);
        c.thresholdLow->setValue(item->thresholdLow());
        c.thresholdHigh->setValue(item->thresholdHigh());
        c.sensitivity->setValue(item->sensitivity());
        c.averaging->setValue(item->averaging());
    }
}

void SettingsAnalogInPage::storeToSection() {
    const kd::AgcConfiguration *section = configuration() ? configuration()->agc() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < m_channels.size(); ++i) {
        AgcConfigurationItem *item = section->element(i);
        if (!item)
            continue;
        const Channel &c = m_channels.at(i);
        item->setEnabled(c.enabled->isChecked() ? 1 : 0);
        item->setThresholdLow(uint16_t(c.thresholdLow->value()));
        item->setThresholdHigh(uint16_t(c.thresholdHigh->value()));
        item->setSensitivity(uint16_t(c.sensitivity->value()));
        item->setAveraging(uint16_t(c.averaging->value()));
    }
}

void SettingsAnalogInPage::writeSection(DeviceWorkflows &workflows) {
    workflows.writeAnalogInputs();
}
