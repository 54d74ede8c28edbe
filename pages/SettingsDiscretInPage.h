#pragma once

#include "pages/SettingsPageBase.h"

#include <QVector>

class QComboBox;

// "Логические входы": the function of each of the two logic inputs.
class SettingsDiscretInPage : public SettingsPageBase {
    Q_OBJECT
public:
    static constexpr int Inputs = 2;

    explicit SettingsDiscretInPage(VantorConfiguration *configuration, QWidget *parent = nullptr);

    void storeToSection() override;

    QComboBox *function(int input) const { return m_functions.at(input); }
    // The offered functions, in the order of their codes 0..5.
    static QStringList functionNames();

protected:
    void showSection() override;
    void writeSection(DeviceWorkflows &workflows) override;

private:
    QVector<QComboBox *> m_functions;
};
