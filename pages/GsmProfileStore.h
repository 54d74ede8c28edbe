#pragma once

#include <QString>
#include <QVector>

// One named set of mobile-data access settings kept on the computer.
struct GsmProfile {
    QString name;
    QString apn;
    QString user;
    QString password;

    bool operator==(const GsmProfile &o) const {
        return name == o.name && apn == o.apn && user == o.user && password == o.password;
    }
};

// The GSM profiles file: {"Profiles": [{"profileName", "apn", "apn_name", "apn_password"}, ...]},
// indented, in list order. Every change is written back at once (atomically); a file that cannot be
// written is skipped without a word and the list in memory stays as edited.
class GsmProfileStore {
public:
    enum class AddResult { Added, InvalidName, Exists };

    // The current directory followed by "/GSMprofileList.json".
    static QString defaultPath();

    explicit GsmProfileStore(const QString &path = defaultPath());

    QString path() const { return m_path; }
    const QVector<GsmProfile> &profiles() const { return m_profiles; }
    int count() const { return m_profiles.size(); }
    int indexOf(const QString &name) const;

    // A missing, unreadable or broken file gives an empty list.
    void load();
    bool save() const;

    // Appends a new profile and saves. A name of exactly "-" is refused; an existing name is left
    // alone (the caller asks, then calls overwrite()).
    AddResult add(const GsmProfile &profile);
    // Replaces the three values of the profile with the same name, keeping its position, and saves.
    bool overwrite(const GsmProfile &profile);
    // Removes the profile at index if 0 <= index < count(), and saves.
    bool remove(int index);

    static bool isValidName(const QString &name) { return name != QLatin1String("-"); }

private:
    QString m_path;
    QVector<GsmProfile> m_profiles;
};
