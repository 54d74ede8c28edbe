#include "Devices/ConfigurationFile.h"

#include "Devices/VantorConfiguration.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace kd {

ConfigurationFile::LoadResult ConfigurationFile::load(const QString &path, VantorConfiguration &cfg) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        LoadResult r;
        r.status = LoadResult::CannotOpen;
        r.errorString = file.errorString();
        return r;
    }
    return loadFromData(file.readAll(), cfg);
}

ConfigurationFile::LoadResult ConfigurationFile::loadFromData(const QByteArray &data,
                                                              VantorConfiguration &cfg) {
    LoadResult r;
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError) {
        r.status = LoadResult::ParseError;
        r.errorString = error.errorString();
        return r;
    }
    if (!doc.isObject()) {
        r.status = LoadResult::ParseError;
        r.errorString = QStringLiteral("the document is not a JSON object");
        return r;
    }
    cfg.read(doc.object());
    return r;
}

QByteArray ConfigurationFile::toJson(const VantorConfiguration &cfg) {
    QJsonObject root;
    cfg.write(root);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

ConfigurationFile::SaveResult ConfigurationFile::save(const QString &path, const VantorConfiguration &cfg) {
    SaveResult r;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        r.status = SaveResult::CannotOpen;
        r.errorString = file.errorString();
        return r;
    }
    const QByteArray text = toJson(cfg);
    if (file.write(text) != text.size() || !file.commit()) {
        r.status = SaveResult::WriteFailed;
        r.errorString = file.errorString();
    }
    return r;
}

} // namespace kd
