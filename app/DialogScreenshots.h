#pragma once

#include <QString>
#include <functional>

class QWidget;
class VantorConfiguration;

// For the screenshot walk: the write confirmation, the history and the comparison, shown one after the
// other over the window with the device's values as just read against the same settings after a trip
// through the configuration file. `shoot(dialog, name)` takes each picture; `done` follows the last.
void showConfigurationDialogs(QWidget *window, const VantorConfiguration &device,
                              const std::function<void(QWidget *, const QString &)> &shoot,
                              const std::function<void()> &done);
