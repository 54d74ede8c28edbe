#include "pages/SettingsGSMPage.h"

#include "pages/GSMSubnetsEditor.h"
#include "pages/GsmProfileDialog.h"
#include "pages/roumingShedulerDialog.h"

#include "Devices/GSMConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/DeviceWorkflows.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
const QString ProfileBoxTitle = QStringLiteral("Управление профилем");
}

SettingsGSMPage::SettingsGSMPage(VantorConfiguration *configuration, QWidget *parent,
                                 const QString &profilePath, const QString &networksPath)
    : SettingsPageBase(configuration, QStringLiteral("GSM"), parent)
    , m_timetables(SimCount)
    , m_profiles(profilePath)
    , m_networks(networksPath)
    , m_profileList(new QListWidget(this))
    , m_profileTarget(new QComboBox(this)) {
    auto *sims = new QHBoxLayout;
    for (int i = 0; i < SimCount; ++i) {
        auto *group = new QGroupBox(QStringLiteral("SIM %1").arg(i + 1), this);
        auto *schedule = new QPushButton(QStringLiteral("Расписание роуминга..."), group);
        Sim sim{deviceTextEdit(),  deviceTextEdit(),
                deviceTextEdit(),  checkBox(QStringLiteral("Роуминг запрещен")),
                new QLabel(group), schedule};
        sim.password->setEchoMode(QLineEdit::PasswordEchoOnEdit);
        connect(schedule, &QPushButton::clicked, this, [this, i] { editTimetable(i); });
        connect(sim.forbidden, &QCheckBox::toggled, schedule, &QPushButton::setDisabled);
        auto *networks = new QPushButton(QStringLiteral("Предпочтительные сети..."), group);
        connect(networks, &QPushButton::clicked, this, [this, i] { editNetworks(i); });

        auto *form = new QFormLayout(group);
        form->addRow(QStringLiteral("Точка доступа:"), sim.apn);
        form->addRow(QStringLiteral("Пользователь:"), sim.user);
        form->addRow(QStringLiteral("Пароль:"), sim.password);
        form->addRow(sim.forbidden);
        form->addRow(schedule, sim.timetableSummary);
        form->addRow(networks);
        sims->addWidget(group);
        m_sims.append(sim);
    }
    body()->addLayout(sims);

    auto *profileBox = new QGroupBox(ProfileBoxTitle, this);
    auto *add = new QPushButton(QStringLiteral("Добавить профиль"), profileBox);
    auto *remove = new QPushButton(QStringLiteral("Удалить профиль"), profileBox);
    connect(add, &QPushButton::clicked, this, &SettingsGSMPage::runAddDialog);
    connect(remove, &QPushButton::clicked, this, [this] { deleteProfile(m_profileList->currentRow()); });
    for (int i = 0; i < SimCount; ++i)
        m_profileTarget->addItem(QStringLiteral("SIM %1").arg(i + 1));
    connect(m_profileList, &QListWidget::currentRowChanged, this, &SettingsGSMPage::applyProfile);
    connect(m_profileList, &QListWidget::itemClicked, this,
            [this](QListWidgetItem *item) { applyProfile(m_profileList->row(item)); });
    auto *buttons = new QVBoxLayout;
    auto *target = new QFormLayout;
    target->addRow(QStringLiteral("Заполнить:"), m_profileTarget);
    buttons->addLayout(target);
    buttons->addWidget(add);
    buttons->addWidget(remove);
    buttons->addStretch();
    auto *profileLayout = new QHBoxLayout(profileBox);
    profileLayout->addWidget(m_profileList, 1);
    profileLayout->addLayout(buttons);
    body()->addWidget(profileBox);

    m_profiles.load();
    refillProfiles();
    m_networks.load();

    followSection(kd::keys::Gsm);
    refresh();
}

void SettingsGSMPage::showSection() {
    const kd::GSMConfiguration *section = configuration() ? configuration()->gsm() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < SimCount; ++i) {
        const GSMConfigurationItem *item = section->element(i);
        if (!item)
            continue;
        const Sim &sim = m_sims.at(i);
        sim.apn->setText(item->apn());
        sim.user->setText(item->apnUser());
        sim.password->setText(item->apnPassword());
        sim.forbidden->setChecked(item->forbidden() & 1);
        m_timetables[i] = RoamingTimetable(item->timetableLow(), item->timetableHi());
        updateTimetableSummary(i);
    }
}

void SettingsGSMPage::storeToSection() {
    const kd::GSMConfiguration *section = configuration() ? configuration()->gsm() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < SimCount; ++i) {
        GSMConfigurationItem *item = section->element(i);
        if (!item)
            continue;
        const Sim &sim = m_sims.at(i);
        item->setApn(sim.apn->text());
        item->setApnUser(sim.user->text());
        item->setApnPassword(sim.password->text());
        item->setForbidden(sim.forbidden->isChecked() ? 1 : 0);
        item->setTimetableLow(m_timetables.at(i).low());
        item->setTimetableHi(m_timetables.at(i).high());
    }
}

QString SettingsGSMPage::inputProblem() const {
    for (int i = 0; i < m_sims.size(); ++i) {
        const Sim &sim = m_sims.at(i);
        const QString suffix = QStringLiteral(" SIM %1").arg(i + 1);
        for (const auto &field : {qMakePair(QStringLiteral("Точка доступа"), sim.apn),
                                  qMakePair(QStringLiteral("Пользователь"), sim.user),
                                  qMakePair(QStringLiteral("Пароль"), sim.password)}) {
            const QString problem = textProblem(field.first + suffix, field.second->text());
            if (!problem.isEmpty())
                return problem;
        }
    }
    return QString();
}

void SettingsGSMPage::writeSection(DeviceWorkflows &workflows) {
    workflows.writeGsm();
}

void SettingsGSMPage::setTimetable(int sim, const RoamingTimetable &timetable) {
    if (sim < 0 || sim >= SimCount || m_timetables.at(sim) == timetable)
        return;
    m_timetables[sim] = timetable;
    updateTimetableSummary(sim);
    markModified();
}

void SettingsGSMPage::updateTimetableSummary(int sim) {
    const RoamingTimetable &t = m_timetables.at(sim);
    int allowed = 0;
    for (int day = 0; day < RoamingTimetable::Days; ++day) {
        for (int slot = 0; slot < RoamingTimetable::SlotsPerDay; ++slot)
            allowed += t.slot(day, slot) ? 1 : 0;
    }
    m_sims.at(sim).timetableSummary->setText(
        QStringLiteral("разрешено интервалов: %1 из %2")
            .arg(allowed)
            .arg(RoamingTimetable::Days * RoamingTimetable::SlotsPerDay));
}

void SettingsGSMPage::editTimetable(int sim) {
    roumingShedulerDialog dialog(m_timetables.at(sim), sim, this);
    if (dialog.exec() == QDialog::Accepted)
        setTimetable(sim, dialog.timetable());
}

void SettingsGSMPage::editNetworks(int sim) {
    GSMSubnetsEditor editor(m_networks.networks(sim), sim, this);
    if (editor.exec() != QDialog::Accepted)
        return;
    m_networks.setNetworks(sim, editor.networks());
    m_networks.save();
}

void SettingsGSMPage::refillProfiles() {
    const QSignalBlocker blocker(m_profileList);
    m_profileList->clear();
    for (const GsmProfile &p : m_profiles.profiles())
        m_profileList->addItem(p.name);
}

void SettingsGSMPage::runAddDialog() {
    GsmProfileDialog dialog(this);
    const Sim &sim = m_sims.at(m_profileTarget->currentIndex());
    dialog.setProfile({QString(), sim.apn->text(), sim.user->text(), sim.password->text()});
    if (dialog.exec() == QDialog::Accepted)
        addProfile(dialog.profile());
}

void SettingsGSMPage::addProfile(const GsmProfile &profile) {
    switch (m_profiles.add(profile)) {
    case GsmProfileStore::AddResult::InvalidName:
        notify(ProfileBoxTitle, QStringLiteral("Недопустимое имя профиля"));
        return;
    case GsmProfileStore::AddResult::Exists:
        if (!ask(ProfileBoxTitle, QStringLiteral("Профиль существует, перезаписать?")))
            return;
        m_profiles.overwrite(profile);
        break;
    case GsmProfileStore::AddResult::Added:
        break;
    }
    refillProfiles();
}

void SettingsGSMPage::deleteProfile(int index) {
    if (index < 0 || index >= m_profiles.count())
        return;
    const QString name = m_profileList->item(index) ? m_profileList->item(index)->text()
                                                    : m_profiles.profiles().at(index).name;
    if (!ask(ProfileBoxTitle, QStringLiteral("Вы точно хотите удалить профиль %1 ?").arg(name)))
        return;
    m_profiles.remove(index);
    refillProfiles();
}

void SettingsGSMPage::applyProfile(int index) {
    if (index < 0 || index >= m_profiles.count())
        return;
    const GsmProfile &p = m_profiles.profiles().at(index);
    const Sim &sim = m_sims.at(qBound(0, m_profileTarget->currentIndex(), SimCount - 1));
    // Filling the fields is a user edit: the page becomes modified through the edits' signals.
    sim.apn->setText(p.apn);
    sim.user->setText(p.user);
    sim.password->setText(p.password);
}
