#pragma once

#include "pages/SettingsPageBase.h"

class QCheckBox;
class QSpinBox;

// "Системные параметры": the system section.
class SystemPage : public SettingsPageBase {
    Q_OBJECT
public:
    explicit SystemPage(VantorConfiguration *configuration, QWidget *parent = nullptr);

    void storeToSection() override;

    QSpinBox *parkingMin;
    QSpinBox *pwrMode;
    QSpinBox *gsens;
    QCheckBox *lowSpeed;
    QCheckBox *outCtrl;

protected:
    void showSection() override;
    void writeSection(DeviceWorkflows &workflows) override;
};
