#pragma once

#include "pages/GsmProfileStore.h"
#include "pages/PreferredNetworkStore.h"
#include "pages/RoamingTimetable.h"
#include "pages/SettingsPageBase.h"

#include <QVector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

// "GSM": access point, user, password and roaming rules of both SIM cards, plus the GSM profiles kept
// on this computer ("Управление профилем") and the preferred networks of each SIM (also kept here only).
class SettingsGSMPage : public SettingsPageBase {
    Q_OBJECT
public:
    static constexpr int SimCount = 2;

    struct Sim {
        QLineEdit *apn;
        QLineEdit *user;
        QLineEdit *password;
        QCheckBox *forbidden;
        QLabel *timetableSummary;
        QPushButton *schedule; // usable only while roaming is allowed
    };

    explicit SettingsGSMPage(VantorConfiguration *configuration, QWidget *parent = nullptr,
                             const QString &profilePath = GsmProfileStore::defaultPath(),
                             const QString &networksPath = PreferredNetworkStore::defaultPath());

    void storeToSection() override;

    const Sim &sim(int index) const { return m_sims.at(index); }
    RoamingTimetable timetable(int sim) const { return m_timetables.value(sim); }
    // A user edit of a SIM's timetable (what the schedule dialog does on OK).
    void setTimetable(int sim, const RoamingTimetable &timetable);

    const GsmProfileStore &profiles() const { return m_profiles; }
    QListWidget *profileList() const { return m_profileList; }
    // The SIM that a chosen profile fills (0 or 1).
    QComboBox *profileTarget() const { return m_profileTarget; }

    // The add and delete rules of the profile box; the questions go through the page's asker.
    void addProfile(const GsmProfile &profile);
    void deleteProfile(int index);
    // Fills the target SIM's access point, user and password from profile `index`.
    void applyProfile(int index);

    const PreferredNetworkStore &preferredNetworks() const { return m_networks; }

protected:
    void showSection() override;
    QString inputProblem() const override;
    void writeSection(DeviceWorkflows &workflows) override;

private:
    void refillProfiles();
    void updateTimetableSummary(int sim);
    void editTimetable(int sim);
    void editNetworks(int sim);
    void runAddDialog();

    QVector<Sim> m_sims;
    QVector<RoamingTimetable> m_timetables;
    GsmProfileStore m_profiles;
    PreferredNetworkStore m_networks;
    QListWidget *m_profileList;
    QComboBox *m_profileTarget;
};
