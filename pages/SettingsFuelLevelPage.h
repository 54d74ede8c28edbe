#pragma once

#include "pages/SettingsPageBase.h"

#include <QVector>

class QSpinBox;

// "Топливо": the bus address and tank of the eight fuel sensors, and the averaging of the five tanks.
// Elements 5..7 also hold an averaging value in the model; the device has no tank for it, so the page
// neither shows nor changes it (the configuration file keeps it).
class SettingsFuelLevelPage : public SettingsPageBase {
    Q_OBJECT
public:
    static constexpr int Sensors = 8;
    static constexpr int Tanks = 5;

    explicit SettingsFuelLevelPage(VantorConfiguration *configuration, QWidget *parent = nullptr);

    void storeToSection() override;

    QSpinBox *address(int sensor) const { return m_addresses.at(sensor); }
    QSpinBox *tank(int sensor) const { return m_tanks.at(sensor); }
    QSpinBox *averaging(int tank) const { return m_averaging.at(tank); }

protected:
    void showSection() override;
    void writeSection(DeviceWorkflows &workflows) override;

private:
    QVector<QSpinBox *> m_addresses;
    QVector<QSpinBox *> m_tanks;
    QVector<QSpinBox *> m_averaging;
};
