#include "pages/SettingsDiscretInPage.h"

#include "Devices/LogicConfiguration.h"
#include "Devices/TelemetryRecords.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/DeviceWorkflows.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>

namespace {
using kd::InputMode;

struct Function {
    InputMode mode;
    const char *name;
};

// The function byte of a logic input uses the same codes as the input modes of the telemetry.
const Function Functions[] = {
    {InputMode::Off, "Отключен"},           {InputMode::Logic, "Логический"},
    {InputMode::Frequency, "Частотомер"},   {InputMode::CounterUss, "Счетчик УСС"},
    {InputMode::CounterDfm, "Счетчик DFM"}, {InputMode::UniversalCounter, "Унив. счетчик"},
};

// A code the page does not know (a newer firmware) is shown as such, so that it survives a store.
void selectFunction(QComboBox *box, quint8 func) {
    int index = box->findData(int(func));
    if (index < 0) {
        box->addItem(QStringLiteral("Код %1").arg(func), int(func));
        index = box->count() - 1;
    }
    box->setCurrentIndex(index);
}
} // namespace

QStringList SettingsDiscretInPage::functionNames() {
    QStringList names;
    for (const Function &f : Functions)
        names << QString::fromUtf8(f.name);
    return names;
}

SettingsDiscretInPage::SettingsDiscretInPage(VantorConfiguration *configuration, QWidget *parent)
    : SettingsPageBase(configuration, QStringLiteral("Логические входы"), parent) {
    auto *group = new QGroupBox(QStringLiteral("Логические входы"), this);
    auto *form = new QFormLayout(group);
    for (int i = 0; i < Inputs; ++i) {
        auto *box = comboBox({});
        for (const Function &f : Functions)
            box->addItem(QString::fromUtf8(f.name), int(f.mode));
        form->addRow(QStringLiteral("Функция входа %1:").arg(i + 1), box);
        m_functions.append(box);
    }
    body()->addWidget(group);

    followSection(kd::keys::Logic);
    refresh();
}

void SettingsDiscretInPage::showSection() {
    const kd::LogicConfiguration *section = configuration() ? configuration()->logic() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < m_functions.size(); ++i) {
        if (const LogicConfigurationItem *item = section->element(i))
            selectFunction(m_functions.at(i), item->func());
    }
}

void SettingsDiscretInPage::storeToSection() {
    const kd::LogicConfiguration *section = configuration() ? configuration()->logic() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < m_functions.size(); ++i) {
        if (LogicConfigurationItem *item = section->element(i))
            item->setFunc(quint8(m_functions.at(i)->currentData().toInt()));
    }
}

void SettingsDiscretInPage::writeSection(DeviceWorkflows &workflows) {
    workflows.writeLogicInputs();
}
