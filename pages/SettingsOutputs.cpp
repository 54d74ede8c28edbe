#include "pages/SettingsOutputs.h"

#include "pages/Widgetoutputs.h"

#include "Devices/OutputConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/DeviceWorkflows.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

const char *const SettingsOutputs::ParametersNote =
    "Прибор не сообщает параметры выхода: они отправляются в прибор, только если их задать здесь.";

SettingsOutputs::SettingsOutputs(VantorConfiguration *configuration, QWidget *parent)
    : SettingsPageBase(configuration, QStringLiteral("Управление выходами"), parent)
    , outNum(spinBox(0, 255))
    , highCondition(spinBox(0, 255))
    , lowCondition(spinBox(0, 255))
    , replayCounter(spinBox(0, 255))
    , m_statesGroup(new QGroupBox(QStringLiteral("Состояние выходов"), this))
    , m_statesLayout(new QVBoxLayout(m_statesGroup)) {
    auto *parameters = new QGroupBox(QStringLiteral("Параметры выхода"), this);
    auto *form = new QFormLayout(parameters);
    auto *note = new QLabel(QString::fromUtf8(ParametersNote), parameters);
    note->setObjectName(QStringLiteral("parametersNote"));
    note->setWordWrap(true);
    form->addRow(note);
    form->addRow(QStringLiteral("Номер выхода:"), outNum);
    form->addRow(QStringLiteral("Условие включения:"), highCondition);
    form->addRow(QStringLiteral("Условие выключения:"), lowCondition);
    form->addRow(QStringLiteral("Число повторов:"), replayCounter);

    for (QSpinBox *box : {outNum, highCondition, lowCondition, replayCounter}) {
        connect(box, qOverload<int>(&QSpinBox::valueChanged), this, [this] {
            if (!isLoading())
                m_parametersSet = true;
        });
    }
    body()->addWidget(parameters);
    body()->addWidget(m_statesGroup);

    followSection(kd::keys::Output);
    refresh();
}

void SettingsOutputs::rebuildOutputs(int count) {
    if (count == m_outputs.size())
        return;
    while (m_outputs.size() > count)
        delete m_outputs.takeLast();
    while (m_outputs.size() < count) {
        auto *w = new Widgetoutputs(m_outputs.size(), m_statesGroup);
        connect(w, &Widgetoutputs::edited, this, &SettingsOutputs::markModified);
        m_statesLayout->addWidget(w);
        m_outputs.append(w);
    }
}

void SettingsOutputs::showSection() {
    const kd::OutputConfiguration *section = configuration() ? configuration()->outputs() : nullptr;
    const OutputConfigurationItem *item = section ? section->value() : nullptr;
    if (item) {
        outNum->setValue(item->outNum());
        highCondition->setValue(item->highCondition());
        lowCondition->setValue(item->lowCondition());
        replayCounter->setValue(item->replayCounter());
        rebuildOutputs(item->numberOfOutputs());
        const QVector<quint8> states = item->states();
        for (Widgetoutputs *w : qAsConst(m_outputs))
            w->setState(states.value(w->number()));
    }
    updateEnabled();
}

void SettingsOutputs::storeToSection() {
    const kd::OutputConfiguration *section = configuration() ? configuration()->outputs() : nullptr;
    OutputConfigurationItem *item = section ? section->value() : nullptr;
    if (!item)
        return;
    item->setOutNum(quint8(outNum->value()));
    item->setHighCondition(quint8(highCondition->value()));
    item->setLowCondition(quint8(lowCondition->value()));
    item->setReplayCounter(quint8(replayCounter->value()));
    for (const Widgetoutputs *w : qAsConst(m_outputs))
        item->setState(w->number(), w->state());
}

void SettingsOutputs::writeSection(DeviceWorkflows &workflows) {
    if (m_parametersSet)
        workflows.writeOutputParameters(ParametersCode, ParametersOperation);
    m_parametersSet = false;
    for (const Widgetoutputs *w : qAsConst(m_outputs))
        workflows.setOutput(w->state(), quint8(w->number()));
}

void SettingsOutputs::updateEnabled() {
    const kd::OutputConfiguration *section = configuration() ? configuration()->outputs() : nullptr;
    const OutputConfigurationItem *item = section ? section->value() : nullptr;
    setEnabled(item && item->numberOfOutputs() > 0);
}
