#pragma once

#include "protocol/SerialConnection.h"

#include <QStringList>

// One line of `ports`: the fields of the port record in their own order (name, description, manufacturer,
// product identifier, vendor identifier), separated by tabs so that scripts can cut them apart.
inline QString portRecordLine(const SerialPortRecord &r) {
    return QStringList{r.portName, r.description, r.manufacturer, r.productIdentifier, r.vendorIdentifier}
        .join(QLatin1Char('\t'));
}
