#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

class QSettings;
class VantorConfiguration;

// The support report: one zip archive with what a support engineer asks for first. Members:
// "identity.json" (the device's identity), "configuration.json" (the configuration as read, in the
// configuration file format), "telemetry.txt" and "telemetry-raw.txt" (the last telemetry round, worded
// and as records), "exchange.log" (this run's exchange log, passwords masked as in the log itself),
// "about.txt" (program, version, Qt and platform) and "settings.json" (the application settings
// without any password). GUI-free, so the window and the terminal tool write the same report.
class SupportBundle {
public:
    struct Member {
        QString name;
        QByteArray data;
    };

    // Gathers the members. Settings whose key names a password are left out, and every such value,
    // every string in `secrets` and the device password's frame bytes are replaced by asterisks in
    // every member, so no password reaches the archive whatever the log or the device text holds.
    static QVector<Member> collect(const VantorConfiguration &cfg, const QString &program,
                                   QSettings &settings, const QStringList &secrets);
    // Writes the archive atomically (the old file stays until the new one is complete).
    static bool write(const QString &path, const QVector<Member> &members, QString *error);

    // Whether a settings key holds a password ("loginSettings/passWord", ".../proxyPassword", ...).
    static bool isPasswordKey(const QString &key);
};
