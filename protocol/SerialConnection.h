#pragma once

#include "protocol/Connection.h"

#include <QList>
#include <QSerialPort>
#include <QString>

#include <functional>

// What the system tells about one serial port; filled from QSerialPortInfo, or by tests.
struct SerialPortDescription {
    QString portName;
    QString description;
    QString manufacturer;
    bool hasVendorIdentifier = false;
    quint16 vendorIdentifier = 0;
    bool hasProductIdentifier = false;
    quint16 productIdentifier = 0;
};

// One recognised device port as shown to the user: unknown or empty fields read " - ".
struct SerialPortRecord {
    QString portName;
    QString description;
    QString manufacturer;
    QString productIdentifier;
    QString vendorIdentifier;
};

// The USB link: the tracker shows up as a virtual serial port, recognised by its USB identifiers.
class SerialConnection : public Connection {
    Q_OBJECT
public:
    static constexpr quint16 VendorIdentifier = 0x2226;
    static constexpr quint16 ProductIdentifier = 0x0013;
    static constexpr qint32 BaudRate = 115200;

    using PortLister = std::function<QList<SerialPortDescription>()>;

    explicit SerialConnection(QObject *parent = nullptr);
    // An explicit port (a device path, or a pseudo-terminal of the virtual device) skips recognition.
    explicit SerialConnection(const QString &portName, QObject *parent = nullptr);
    ~SerialConnection() override;

    // Replaces the system's port enumeration (tests).
    void setPortLister(PortLister lister);
    static QList<SerialPortDescription> systemPorts();
    static bool isDevicePort(const SerialPortDescription &port);
    static SerialPortRecord record(const SerialPortDescription &port);

    // Scans the ports, keeps the records of the device ports and remembers the last one's name; with
    // more than one device the name is forgotten and deviceOverflow() emitted. Returns the number found.
    int findDevices();
    QList<SerialPortRecord> devices() const { return m_devices; }
    QString portName() const { return m_portName; }
    void setPortName(const QString &portName);
    // Why the last open() failed, in the user's words or the system's; empty after a good one.
    QString openErrorReason() const { return m_openError; }

    // Opens the remembered port (read-write, 115200 8N1, no flow control) and emits connected().
    bool open() override;
    void close() override;
    bool isOpen() const override;
    int state() const override;
    qint64 write(const QByteArray &bytes) override;
    QByteArray readAll() override;

private:
    void onPortError(QSerialPort::SerialPortError portError);

    QSerialPort *m_port;
    PortLister m_lister;
    QList<SerialPortRecord> m_devices;
    QString m_portName;
    bool m_opening = false;
    QString m_openError;
};
