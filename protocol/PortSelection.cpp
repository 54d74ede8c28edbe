#include "protocol/PortSelection.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

QRegularExpression wildcard(const QString &pattern) {
    return QRegularExpression(QRegularExpression::wildcardToRegularExpression(pattern));
}

// The existing entries of a folder that match the pattern's last part; only that part may hold wildcards.
QStringList matchingPaths(const QString &pattern) {
    const QFileInfo info(pattern);
    const QDir dir = info.dir();
    QStringList found;
    // Pseudo-terminals and links to them are system files, not plain ones.
    const QStringList names =
        dir.entryList({info.fileName()}, QDir::Files | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names) {
        const QString path = dir.filePath(name);
        // A link left behind by a device that went away names nothing.
        if (QFileInfo::exists(path))
            found << path;
    }
    return found;
}

} // namespace

PortSelection PortSelection::parse(const QString &text) {
    PortSelection selection;
    if (text.trimmed() == QLatin1String("all"))
        return selection;
    for (const QString &entry : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString trimmed = entry.trimmed();
        if (!trimmed.isEmpty() && !selection.m_entries.contains(trimmed))
            selection.m_entries << trimmed;
    }
    return selection;
}

bool PortSelection::isPattern(const QString &entry) {
    return entry.contains(QLatin1Char('*')) || entry.contains(QLatin1Char('?')) ||
           entry.contains(QLatin1Char('['));
}

bool PortSelection::needsSystemPorts() const {
    for (const QString &entry : m_entries) {
        if (!entry.contains(QLatin1Char('/')))
            return true;
    }
    return isAll();
}

QStringList PortSelection::present(const QList<SerialPortDescription> &systemPorts) const {
    QStringList ports;
    if (isAll()) {
        for (const SerialPortDescription &port : systemPorts) {
            if (SerialConnection::isDevicePort(port))
                ports << port.portName;
        }
    }
    for (const QString &entry : m_entries) {
        if (entry.contains(QLatin1Char('/'))) {
            if (isPattern(entry))
                ports << matchingPaths(entry);
            else if (QFileInfo::exists(entry))
                ports << entry;
            continue;
        }
        const QRegularExpression name = wildcard(entry);
        for (const SerialPortDescription &port : systemPorts) {
            if (isPattern(entry) ? name.match(port.portName).hasMatch() : port.portName == entry)
                ports << port.portName;
        }
    }
    ports.sort();
    ports.removeDuplicates();
    return ports;
}

QStringList PortSelection::present() const {
    return present(SerialConnection::systemPorts());
}
