#include "pages/GsmProfileStore.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace {
const QString ProfilesKey = QStringLiteral("Profiles");
const QString NameKey = QStringLiteral("profileName");
const QString ApnKey = QStringLiteral("apn");
const QString UserKey = QStringLiteral("apn_name");
const QString PasswordKey = QStringLiteral("apn_password");
} // namespace

QString GsmProfileStore::defaultPath() {
    return QDir::currentPath() + QStringLiteral("/GSMprofileList.json");
}

GsmProfileStore::GsmProfileStore(const QString &path)
    : m_path(path) {}

int GsmProfileStore::indexOf(const QString &name) const {
    for (int i = 0; i < m_profiles.size(); ++i) {
        if (m_profiles.at(i).name == name)
            return i;
    }
    return -1;
}

void GsmProfileStore::load() {
    m_profiles.clear();
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll());
    const QJsonArray list = doc.object().value(ProfilesKey).toArray();
    for (const QJsonValue &value : list) {
        const QJsonObject o = value.toObject();
        m_profiles.append({o.value(NameKey).toString(), o.value(ApnKey).toString(),
                           o.value(UserKey).toString(), o.value(PasswordKey).toString()});
    }
}

bool GsmProfileStore::save() const {
    QJsonArray list;
    for (const GsmProfile &p : m_profiles) {
        QJsonObject o;
        o.insert(NameKey, p.name);
        o.insert(ApnKey, p.apn);
        o.insert(UserKey, p.user);
        o.insert(PasswordKey, p.password);
        list.append(o);
    }
    QJsonObject root;
    root.insert(ProfilesKey, list);

    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QJsonDocument(root).toJson(QJsonDocument::Indented));
    return file.commit();
}

GsmProfileStore::AddResult GsmProfileStore::add(const GsmProfile &profile) {
    if (!isValidName(profile.name))
        return AddResult::InvalidName;
    if (indexOf(profile.name) >= 0)
        return AddResult::Exists;
    m_profiles.append(profile);
    save();
    return AddResult::Added;
}

bool GsmProfileStore::overwrite(const GsmProfile &profile) {
    const int index = indexOf(profile.name);
    if (index < 0)
        return false;
    m_profiles[index] = profile;
    save();
    return true;
}

bool GsmProfileStore::remove(int index) {
    if (index < 0 || index >= m_profiles.size())
        return false;
    m_profiles.removeAt(index);
    save();
    return true;
}
