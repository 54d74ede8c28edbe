#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

// The virtual tracker's side of a link: it only moves bytes between the device logic and the outside world.
class SimLink : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // Opens the link; false with a reason when it cannot.
    virtual bool start(QString *error) = 0;
    // The first line the program prints: where the configurator finds the device.
    virtual QString address() const = 0;
    virtual void write(const QByteArray &bytes) = 0;
    // Closes the peer's connection on purpose (the fault "hang up after N answers").
    virtual void hangUp() = 0;
    // Called on the way out: remove whatever the link put into the file system.
    virtual void shutdown() {}

signals:
    void received(const QByteArray &bytes);
    // A peer session began or ended (tcp client); device-side buffers are reset at these points.
    void peerChanged();
    // The link cannot carry on (pty closed on purpose): the program ends.
    void finished();
};
