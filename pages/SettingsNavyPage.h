#pragma once

#include "pages/SettingsPageBase.h"

class QCheckBox;
class QSpinBox;

// "Навигация": the motion and parking blocks of the navigation section.
class SettingsNavyPage : public SettingsPageBase {
    Q_OBJECT
public:
    explicit SettingsNavyPage(VantorConfiguration *configuration, QWidget *parent = nullptr);

    void storeToSection() override;

    QSpinBox *deltaCourse;
    QSpinBox *deltaSpeed;
    QSpinBox *driveTimeout;
    QSpinBox *deltaDistance;
    QCheckBox *freezeNav;
    QSpinBox *pwrNav;
    QSpinBox *faultSpeed;

protected:
    void showSection() override;
    void writeSection(DeviceWorkflows &workflows) override;
};
