#pragma once

#include <QString>
#include <QStringList>

class QJsonObject;

namespace kd {

// What a configuration file would do to a device if it were written as the reader makes it. The reader
// itself stays lenient (files in the field load as they always did); this check names, before a write,
// every value that would not arrive as the file says.
struct ConfigurationFileCheck {
    bool empty = false; // the file holds none of the configuration's values
    QStringList problems; // "SystemParameters.gsens: в файле 300, читается как 44, в прибор уйдет 12"

    bool ok() const { return !empty && problems.isEmpty(); }
    static ConfigurationFileCheck check(const QJsonObject &root);
    // The reasons as lines for the user, the empty file first.
    QStringList lines() const;
};

} // namespace kd
