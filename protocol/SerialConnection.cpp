#include "protocol/SerialConnection.h"

#include "protocol/TrafficLog.h"

#include <QFileInfo>
#include <QSerialPortInfo>

namespace {

const QString Unknown = QStringLiteral(" - ");

QString orUnknown(const QString &text) {
    return text.isEmpty() ? Unknown : text;
}

QString hexOrUnknown(bool has, quint16 value) {
    return has ? QString::number(value, 16) : Unknown;
}

// The port's own words for the common cases, the system's text for the rest.
QString openFailure(const QSerialPort &port) {
    if (QFileInfo(port.portName()).isDir())
        return QStringLiteral("это папка, а не порт");
    switch (port.error()) {
    case QSerialPort::DeviceNotFoundError:
        return QStringLiteral("нет такого порта");
    case QSerialPort::PermissionError:
        return port.errorString().contains(QLatin1String("lock"), Qt::CaseInsensitive)
                   ? QStringLiteral("порт занят другой программой")
                   : QStringLiteral("нет прав на доступ к порту");
    case QSerialPort::OpenError:
        return QStringLiteral("порт уже открыт");
    case QSerialPort::UnsupportedOperationError:
        return QStringLiteral("это не последовательный порт (%1)").arg(port.errorString());
    default:
        return port.errorString();
    }
}

} // namespace

SerialConnection::SerialConnection(QObject *parent)
    : Connection(parent)
    , m_port(new QSerialPort(this))
    , m_lister(&SerialConnection::systemPorts) {
    connect(m_port, &QSerialPort::readyRead, this, &Connection::readyRead);
    connect(m_port, &QSerialPort::bytesWritten, this, &Connection::bytesWritten);
    connect(m_port, &QSerialPort::errorOccurred, this, &SerialConnection::onPortError);
}

SerialConnection::SerialConnection(const QString &portName, QObject *parent)
    : SerialConnection(parent) {
    m_portName = portName;
}

SerialConnection::~SerialConnection() {
    // Closing during destruction must not reach the session through our signals.
    m_port->disconnect(this);
}

void SerialConnection::setPortLister(PortLister lister) {
    m_lister = std::move(lister);
}

QList<SerialPortDescription> SerialConnection::systemPorts() {
    QList<SerialPortDescription> ports;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts()) {
        SerialPortDescription d;
        d.portName = info.portName();
        d.description = info.description();
        d.manufacturer = info.manufacturer();
        d.hasVendorIdentifier = info.hasVendorIdentifier();
        d.vendorIdentifier = info.vendorIdentifier();
        d.hasProductIdentifier = info.hasProductIdentifier();
        d.productIdentifier = info.productIdentifier();
        ports.append(d);
    }
    return ports;
}

bool SerialConnection::isDevicePort(const SerialPortDescription &port) {
    return port.hasVendorIdentifier && port.vendorIdentifier == VendorIdentifier &&
           port.hasProductIdentifier && port.productIdentifier == ProductIdentifier;
}

SerialPortRecord SerialConnection::record(const SerialPortDescription &port) {
    SerialPortRecord r;
    r.portName = orUnknown(port.portName);
    r.description = orUnknown(port.description);
    r.manufacturer = orUnknown(port.manufacturer);
    r.productIdentifier = hexOrUnknown(port.hasProductIdentifier, port.productIdentifier);
    r.vendorIdentifier = hexOrUnknown(port.hasVendorIdentifier, port.vendorIdentifier);
    return r;
}

int SerialConnection::findDevices() {
    m_devices.clear();
    const QList<SerialPortDescription> ports = m_lister ? m_lister() : QList<SerialPortDescription>();
    for (const SerialPortDescription &port : ports) {
        if (!isDevicePort(port))
            continue;
        m_devices.append(record(port));
        m_portName = port.portName;
    }
    if (m_devices.size() > 1) {
        // Two trackers at once: writing to the wrong one could spoil its settings, so open neither.
        m_portName.clear();
        emit deviceOverflow();
    }
    return m_devices.size();
}

void SerialConnection::setPortName(const QString &portName) {
    m_portName = portName;
}

bool SerialConnection::open() {
    if (m_port->isOpen())
        return true;
    if (m_portName.isEmpty())
        return false;
    m_port->setPortName(m_portName);
    m_port->setBaudRate(BaudRate, QSerialPort::AllDirections);
    m_port->setDataBits(QSerialPort::Data8);
    m_port->setParity(QSerialPort::NoParity);
    m_port->setStopBits(QSerialPort::OneStop);
    m_port->setFlowControl(QSerialPort::NoFlowControl);
    // A failed open is reported only by the log line and the result, not as a link error.
    m_opening = true;
    const bool ok = m_port->open(QIODevice::ReadWrite);
    m_opening = false;
    m_openError = ok ? QString() : openFailure(*m_port);
    if (!ok) {
        proto::TrafficLog::write(QStringLiteral("Busy port"));
        return false;
    }
    // Answers to an earlier session that nobody read may still wait in the driver; one chunk is taken as
    // one frame, so a stale answer in front of the first real one would hide it.
    m_port->clear(QSerialPort::Input);
    emit connected();
    return true;
}

void SerialConnection::close() {
    if (!m_port->isOpen())
        return;
    m_port->close();
    emit disconnected();
}

bool SerialConnection::isOpen() const {
    return m_port->isOpen();
}

int SerialConnection::state() const {
    return m_port->isOpen() ? Connected : Closed;
}

qint64 SerialConnection::write(const QByteArray &bytes) {
    if (!m_port->isOpen())
        return -1;
    return m_port->write(bytes);
}

QByteArray SerialConnection::readAll() {
    return m_port->readAll();
}

void SerialConnection::onPortError(QSerialPort::SerialPortError portError) {
    // Pseudo-terminals and some USB drivers refuse the modem-line requests; the port still works.
    if (m_opening || portError == QSerialPort::NoError || portError == QSerialPort::UnsupportedOperationError)
        return;
    qCDebug(lcProtocol) << "serial port error" << portError << m_port->errorString();
    emit error(SerialError, int(portError));
    // A pulled cable shows as a resource error; a pseudo-terminal whose other end went away keeps the read
    // notifier firing with read errors. Either way the port is gone for good: close it rather than spin.
    const bool gone = portError == QSerialPort::ResourceError || portError == QSerialPort::ReadError;
    if (gone && m_port->isOpen()) {
        m_port->close();
        emit disconnected();
    }
}
