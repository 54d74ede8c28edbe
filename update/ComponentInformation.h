#pragma once

#include <QList>
#include <QMetaType>
#include <QString>

// One available update of the configurator, as the maintenance tool lists it.
struct ComponentInformation {
    QString name;
    QString version;
    QString size; // as the tool gives it

    bool operator==(const ComponentInformation &o) const {
        return name == o.name && version == o.version && size == o.size;
    }
};

Q_DECLARE_METATYPE(ComponentInformation)
Q_DECLARE_METATYPE(QList<ComponentInformation>)
