#pragma once

#include <QString>

// Shows a status text that the user must acknowledge (the device asking for a power cycle). The window
// gives a message box, the terminal tool a line on stderr; the protocol layer never touches widgets.
class StatusNotifier {
public:
    virtual ~StatusNotifier() = default;
    virtual void notify(const QString &text) = 0;
};
