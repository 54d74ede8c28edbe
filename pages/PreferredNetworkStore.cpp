#include "pages/PreferredNetworkStore.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

QString PreferredNetworkStore::defaultPath() {
    return QDir::currentPath() + QStringLiteral("/GSMsubnetsList.json");
}

PreferredNetworkStore::PreferredNetworkStore(const QString &path)
    : m_path(path) {}

QVector<MobileOperator> PreferredNetworkStore::networks(int sim) const {
    return sim >= 0 && sim < SimCount ? m_sims[sim] : QVector<MobileOperator>();
}

void PreferredNetworkStore::setNetworks(int sim, const QVector<MobileOperator> &networks) {
    if (sim >= 0 && sim < SimCount)
        m_sims[sim] = networks;
}

void PreferredNetworkStore::load() {
    for (auto &list : m_sims)
        list.clear();
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonArray sims =
        QJsonDocument::fromJson(file.readAll()).object().value(QStringLiteral("sims")).toArray();
    for (int sim = 0; sim < SimCount && sim < sims.size(); ++sim) {
        for (const QJsonValue &v : sims.at(sim).toArray()) {
            const QJsonObject o = v.toObject();
            MobileOperator op{o.value(QStringLiteral("name")).toString(),
                              o.value(QStringLiteral("mcc")).toInt(),
                              o.value(QStringLiteral("mnc")).toString()};
            if (op.mcc > 0 && !op.mnc.isEmpty())
                m_sims[sim].append(op);
        }
    }
}

bool PreferredNetworkStore::save() const {
    QJsonArray sims;
    for (const auto &list : m_sims) {
        QJsonArray entries;
        for (const MobileOperator &op : list) {
            QJsonObject o;
            o.insert(QStringLiteral("name"), op.name);
            o.insert(QStringLiteral("mcc"), op.mcc);
            o.insert(QStringLiteral("mnc"), op.mnc);
            entries.append(o);
        }
        sims.append(entries);
    }
    QJsonObject root;
    root.insert(QStringLiteral("sims"), sims);
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QJsonDocument(root).toJson(QJsonDocument::Indented));
    return file.commit();
}
