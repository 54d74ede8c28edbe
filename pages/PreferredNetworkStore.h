#pragma once

#include "pages/MobileOperatorList.h"

#include <QString>
#include <QVector>

// The preferred networks of each SIM card. The device has no field for them, so the list lives
// only on this computer, beside the GSM profiles: "<current directory>/GSMsubnetsList.json",
// {"sims": [[{"name", "mcc", "mnc"}, ...], [...]]}, one array per SIM in SIM order.
class PreferredNetworkStore {
public:
    static constexpr int SimCount = 2;

    static QString defaultPath();

    explicit PreferredNetworkStore(const QString &path = defaultPath());

    QString path() const { return m_path; }
    QVector<MobileOperator> networks(int sim) const;
    void setNetworks(int sim, const QVector<MobileOperator> &networks);

    // A missing or broken file gives empty lists.
    void load();
    bool save() const;

private:
    QString m_path;
    QVector<MobileOperator> m_sims[SimCount];
};
