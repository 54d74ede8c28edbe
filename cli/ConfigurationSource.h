#pragma once

#include "Devices/Snapshot.h"

#include <QJsonObject>
#include <QString>

class VantorConfiguration;

// One side of a comparison, or what a write sends: a configuration file, a snapshot (told apart by its
// content), or the connected device ("device").
struct ConfigurationSource {
    enum class Kind { Device, File, Snapshot };

    Kind kind = Kind::Device;
    QString path;
    QJsonObject root; // a file's document
    kd::Snapshot snapshot;

    // False with a one-line reason when the file cannot be opened or is neither a configuration
    // document nor a whole snapshot.
    static bool load(const QString &argument, ConfigurationSource *source, QString *error);
    // The values into `cfg`: a file as the configuration reader makes it, a snapshot whole.
    void fill(VantorConfiguration &cfg) const;
};
