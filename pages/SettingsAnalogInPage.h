#pragma once

#include "pages/SettingsPageBase.h"

#include <QVector>

class QCheckBox;
class QSpinBox;

// "Аналоговые входы": the three analog channels.
class SettingsAnalogInPage : public SettingsPageBase {
    Q_OBJECT
public:
    struct Channel {
        QCheckBox *enabled;
        QSpinBox *thresholdLow;
        QSpinBox *thresholdHigh;
        QSpinBox *sensitivity;
        QSpinBox *averaging;
    };
    static constexpr int Channels = 3;

    explicit SettingsAnalogInPage(VantorConfiguration *configuration, QWidget *parent = nullptr);

    void storeToSection() override;

    const Channel &channel(int index) const { return m_channels.at(index); }

protected:
    void showSection() override;
    void writeSection(DeviceWorkflows &workflows) override;

private:
    QVector<Channel> m_channels;
};
