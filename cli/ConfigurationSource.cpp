#include "cli/ConfigurationSource.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/VantorConfiguration.h"

#include <QFile>
#include <QJsonDocument>

bool ConfigurationSource::load(const QString &argument, ConfigurationSource *source, QString *error) {
    ConfigurationSource s;
    s.path = argument;
    if (argument == QLatin1String("device")) {
        *source = s;
        return true;
    }
    QFile file(argument);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("Не удалось открыть файл %1: %2").arg(argument, file.errorString());
        return false;
    }
    const QByteArray data = file.readAll();
    VantorConfiguration parsed;
    const kd::ConfigurationFile::LoadResult loaded = kd::ConfigurationFile::loadFromData(data, parsed);
    if (!loaded.ok()) {
        *error =
            QStringLiteral("Произошла ошибка при открытии файла %1: %2").arg(argument, loaded.errorString);
        return false;
    }
    const QJsonDocument doc = QJsonDocument::fromJson(data);
    if (doc.object().value(QStringLiteral("format")).toString() == QLatin1String("tavrel-snapshot")) {
        QString why;
        if (!kd::Snapshot::fromJson(data, &s.snapshot, &why)) {
            *error = QStringLiteral("Снимок %1 не загружен: %2").arg(argument, why);
            return false;
        }
        s.snapshot.filePath = argument;
        s.kind = Kind::Snapshot;
    } else {
        s.kind = Kind::File;
        s.root = doc.object();
    }
    *source = s;
    return true;
}

void ConfigurationSource::fill(VantorConfiguration &cfg) const {
    if (kind == Kind::File)
        cfg.read(root);
    else if (kind == Kind::Snapshot)
        snapshot.applyTo(cfg);
}
