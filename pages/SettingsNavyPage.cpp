#include "pages/SettingsNavyPage.h"

#include "Devices/NavigationConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/DeviceWorkflows.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QSpinBox>

SettingsNavyPage::SettingsNavyPage(VantorConfiguration *configuration, QWidget *parent)
    : SettingsPageBase(configuration, QStringLiteral("Навигация"), parent)
    , deltaCourse(spinBox(0, 255, QStringLiteral("°")))
    , deltaSpeed(spinBox(0, 255, QStringLiteral("км/ч")))
    , driveTimeout(spinBox(0, 255, QStringLiteral("с")))
    , deltaDistance(spinBox(0, 255, QStringLiteral("м")))
    , freezeNav(checkBox(QStringLiteral("Замораживать координаты на стоянке")))
    , pwrNav(spinBox(0, 15))
    , faultSpeed(spinBox(0, 255, QStringLiteral("км/ч"))) {
    auto *motion = new QGroupBox(QStringLiteral("Параметры в движении"), this);
    auto *motionForm = new QFormLayout(motion);
    motionForm->addRow(QStringLiteral("Изменение курса:"), deltaCourse);
    motionForm->addRow(QStringLiteral("Изменение скорости:"), deltaSpeed);
    motionForm->addRow(QStringLiteral("Период записи в движении:"), driveTimeout);
    motionForm->addRow(QStringLiteral("Пройденное расстояние:"), deltaDistance);

    auto *parking = new QGroupBox(QStringLiteral("Параметры на стоянке"), this);
    auto *parkingForm = new QFormLayout(parking);
    parkingForm->addRow(freezeNav);
    parkingForm->addRow(QStringLiteral("Режим питания навигации (0..15):"), pwrNav);
    parkingForm->addRow(QStringLiteral("Порог ложной скорости:"), faultSpeed);

    body()->addWidget(motion);
    body()->addWidget(parking);

    followSection(kd::keys::Navigation);
    refresh();
}

void SettingsNavyPage::showSection() {
    const auto *section = configuration() ? configuration()->navigation() : nullptr;
    const NavigationConfigurationItem *item = section ? section->value() : nullptr;
    if (!item)
        return;
    deltaCourse->setValue(item->deltaCourse());
    deltaSpeed->setValue(item->deltaSpeed());
    driveTimeout->setValue(item->driveTimeout());
    deltaDistance->setValue(item->deltaDistance());
    freezeNav->setChecked(item->freezeNav() & 1);
    pwrNav->setValue(item->pwrNav() & 0x0F);
    faultSpeed->setValue(item->faultSpeed());
}

void SettingsNavyPage::storeToSection() {
    const auto *section = configuration() ? configuration()->navigation() : nullptr;
    NavigationConfigurationItem *item = section ? section->value() : nullptr;
    if (!item)
        return;
    item->setDeltaCourse(quint8(deltaCourse->value()));
    item->setDeltaSpeed(quint8(deltaSpeed->value()));
    item->setDriveTimeout(quint8(driveTimeout->value()));
    item->setDeltaDistance(quint8(deltaDistance->value()));
    item->setFreezeNav(freezeNav->isChecked() ? 1 : 0);
    item->setPwrNav(quint8(pwrNav->value()));
    item->setFaultSpeed(quint8(faultSpeed->value()));
}

void SettingsNavyPage::writeSection(DeviceWorkflows &workflows) {
    workflows.writeNavigation();
}
