#pragma once

#include "pages/SettingsPageBase.h"

#include <QVector>

class QGroupBox;
class QSpinBox;
class QVBoxLayout;
class Widgetoutputs;

// "Управление выходами": the output parameters and the state of each output the device reported.
// The device reports only the states, never the parameters, so the page says so and sends the
// parameters only once the user has set one of them; applying then switches every output to its shown
// state, one single-output command per output. The page is usable only while the device reports at
// least one output.
class SettingsOutputs : public SettingsPageBase {
    Q_OBJECT
public:
    // Head of the output-parameters command: the outputs code, sent as a command packet.
    static constexpr quint8 ParametersCode = 0x0E;
    static constexpr quint8 ParametersOperation = 0x02;

    explicit SettingsOutputs(VantorConfiguration *configuration, QWidget *parent = nullptr);

    void storeToSection() override;

    static const char *const ParametersNote;

    // The user has set a parameter since the last write: the next apply sends them.
    bool parametersSet() const { return m_parametersSet; }

    int outputCount() const { return m_outputs.size(); }
    Widgetoutputs *output(int index) const { return m_outputs.value(index); }

    QSpinBox *outNum;
    QSpinBox *highCondition;
    QSpinBox *lowCondition;
    QSpinBox *replayCounter;

public slots:
    // Enabled only when the section reports at least one output.
    void updateEnabled();

protected:
    void showSection() override;
    void writeSection(DeviceWorkflows &workflows) override;

private:
    void rebuildOutputs(int count);

    QGroupBox *m_statesGroup;
    QVBoxLayout *m_statesLayout;
    QVector<Widgetoutputs *> m_outputs;
    bool m_parametersSet = false;
};
