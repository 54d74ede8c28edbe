#pragma once

#include <QString>

namespace kd {

// Why a file could not be written, in Russian: the reasons a user can act on (a missing folder,
// no right to write there, a full disk) found from the path itself, the system's own text otherwise.
QString writeErrorText(const QString &path, const QString &systemText);

} // namespace kd
