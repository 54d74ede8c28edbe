#pragma once

#include "protocol/SerialConnection.h"

#include <QList>
#include <QString>
#include <QStringList>

// Which serial ports hold trackers: "all" takes every port carrying the tracker's USB identifiers; a list
// names ports or patterns instead ("/dev/ttyACM0,/tmp/bench-*"), since a pseudo-terminal or an adapter
// without the tracker's identifiers can only be named. An entry with a slash is a path: present while it
// exists (a pattern's folder is read); one without is matched against the system's port names.
class PortSelection {
public:
    // "all" or an empty text: the recognised ports; otherwise entries separated by commas.
    static PortSelection parse(const QString &text);

    bool isAll() const { return m_entries.isEmpty(); }
    QStringList entries() const { return m_entries; }
    static bool isPattern(const QString &entry);
    // False when every entry is a path: the system's port list (slow on some systems) is not needed.
    bool needsSystemPorts() const;

    // The selected ports present now, each once, in sorted order.
    QStringList present(const QList<SerialPortDescription> &systemPorts) const;
    QStringList present() const;

private:
    QStringList m_entries;
};
