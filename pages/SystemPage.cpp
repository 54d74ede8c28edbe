#include "pages/SystemPage.h"

#include "Devices/SystemConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/DeviceWorkflows.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QSpinBox>

SystemPage::SystemPage(VantorConfiguration *configuration, QWidget *parent)
    : SettingsPageBase(configuration, QStringLiteral("Системные параметры"), parent)
    , parkingMin(spinBox(0, 255, QStringLiteral("мин")))
    , pwrMode(spinBox(0, 255))
    , gsens(spinBox(0, 15))
    , lowSpeed(checkBox(QStringLiteral("Режим низкой скорости")))
    , outCtrl(checkBox(QStringLiteral("Управление выходом"))) {
    auto *group = new QGroupBox(QStringLiteral("Системные параметры"), this);
    auto *form = new QFormLayout(group);
    form->addRow(QStringLiteral("Время до перехода в режим стоянки:"), parkingMin);
    form->addRow(QStringLiteral("Режим питания:"), pwrMode);
    form->addRow(QStringLiteral("Чувствительность акселерометра (0..15):"), gsens);
    form->addRow(lowSpeed);
    form->addRow(outCtrl);
    body()->addWidget(group);

    followSection(kd::keys::System);
    refresh();
}

void SystemPage::showSection() {
    const auto *section = configuration() ? configuration()->system() : nullptr;
    const SystemConfigurationItem *item = section ? section->value() : nullptr;
    if (!item)
        return;
    parkingMin->setValue(item->parkingMin());
    pwrMode->setValue(item->pwrMode());
    gsens->setValue(item->gsens() & 0x0F);
    lowSpeed->setChecked(item->lowSpeed() & 1);
    outCtrl->setChecked(item->OutCtrl() & 1);
}

void SystemPage::storeToSection() {
    const auto *section = configuration() ? configuration()->system() : nullptr;
    SystemConfigurationItem *item = section ? section->value() : nullptr;
    if (!item)
        return;
    item->setParkingMin(quint8(parkingMin->value()));
    item->setPwrMode(quint8(pwrMode->value()));
    item->setGsens(quint8(gsens->value()));
    item->setLowSpeed(lowSpeed->isChecked() ? 1 : 0);
    item->setOutCtrl(outCtrl->isChecked() ? 1 : 0);
}

void SystemPage::writeSection(DeviceWorkflows &workflows) {
    workflows.writeSystem();
}
