#include "protocol/Device.h"

#include "protocol/Connection.h"
#include "protocol/Frame.h"
#include "protocol/StatusNotifier.h"
#include "protocol/TrafficLog.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"

#include <QTimer>

namespace {

// The session reports the power-cycle answer itself; the parser needs no box of its own.
class QuietNotifier : public StatusNotifier {
public:
    void notify(const QString &) override {}
};
QuietNotifier quietNotifier;

bool startsWithMarkers(const QByteArray &chunk) {
    return chunk.size() >= proto::Frame::MarkerSize && quint8(chunk.at(0)) == proto::Frame::Marker &&
           quint8(chunk.at(1)) == proto::Frame::Marker;
}

} // namespace

Device::Device(kd::Configuration *configuration, QObject *parent)
    : QObject(parent)
    , m_configuration(configuration)
    , m_protocol(new proto::UNPProtocol(configuration, this))
    , m_parser(new UNPParcer(configuration, this))
    , m_responseTimer(new QTimer(this)) {
    qRegisterMetaType<Connection *>();
    m_responseTimer->setInterval(DefaultResponseInterval);
    m_parser->setStatusNotifier(&quietNotifier);
    connect(m_parser, &UNPParcer::ConfigPackageDetected, this, &Device::sectionDecoded);
    connect(m_parser, &UNPParcer::ControlTelemetry, this, &Device::telemetryDecoded);
    connect(m_responseTimer, &QTimer::timeout, this, &Device::onResponseTimeout);
}

Device::~Device() {
    if (m_link)
        m_link->disconnect(this);
}

void Device::setLink(Connection *link) {
    if (link == m_link)
        return;
    if (m_link) {
        m_link->disconnect(this);
        m_link->close();
        if (m_link->parent() == this)
            m_link->deleteLater();
    }
    m_responseTimer->stop();
    m_partial.clear();
    m_retries = 0;
    m_link = link;
    if (link) {
        link->setParent(this);
        connect(link, &Connection::readyRead, this, &Device::onReadyRead);
        connect(link, &Connection::disconnected, this, [this] { m_responseTimer->stop(); });
    }
    emit linkChanged(link);
}

Connection *Device::link() const {
    return m_link;
}

proto::UNPProtocol *Device::protocol() const {
    return m_protocol;
}

UNPParcer *Device::parser() const {
    return m_parser;
}

kd::Configuration *Device::configuration() const {
    return m_configuration;
}

void Device::setConfiguration(kd::Configuration *configuration) {
    m_configuration = configuration;
    m_protocol->setConfiguration(configuration);
    m_parser->setConfiguration(configuration);
}

void Device::setResponseInterval(int ms) {
    m_responseTimer->setInterval(ms);
}

int Device::responseInterval() const {
    return m_responseTimer->interval();
}

void Device::resetRetries() {
    m_retries = 0;
}

void Device::stop() {
    m_responseTimer->stop();
    m_partial.clear();
}

bool Device::isAnswerPending() const {
    return m_responseTimer->isActive();
}

bool Device::isIdle() const {
    return m_protocol->queueSize() == 0 && !m_responseTimer->isActive();
}

void Device::setFirmwareHandler(std::function<bool(const QByteArray &)> handler) {
    m_firmwareHandler = std::move(handler);
}

void Device::setReassembly(bool on) {
    m_reassembly = on;
    m_partial.clear();
}

quint32 Device::lastPassword() const {
    return m_protocol->lastPassword();
}

void Device::enqueue(const QByteArray &frame) {
    m_protocol->enqueueBuilt(frame);
}

void Device::resolveConnectionLost() {
    m_lostPending = false;
}

void Device::sendNextCommand() {
    if (!m_protocol->peekNext()) {
        if (!m_responseTimer->isActive())
            emit idle();
        return;
    }
    if (!m_responseTimer->isActive() && m_link && m_link->state() == Connection::Connected)
        m_responseTimer->start();
    const QByteArray frame = m_protocol->current();
    proto::TrafficLog::write(QStringLiteral("Command ") + proto::TrafficLog::maskedHex(frame));
    if (!m_link)
        return; // stays queued until a link exists
    m_link->write(frame);
    m_protocol->dropFirst();
    emit frameSent(frame);
}

void Device::onReadyRead() {
    m_responseTimer->stop();
    if (!m_link)
        return;
    const QByteArray chunk = m_link->readAll();
    if (chunk.isEmpty())
        return;
    proto::TrafficLog::write(QStringLiteral("From device: ") + QString::fromLatin1(chunk.toHex()) +
                             QStringLiteral(": ") + QString::number(chunk.size()));
    emit chunkReceived(chunk);
    if (m_firmwareHandler && m_firmwareHandler(chunk))
        return;
    if (proto::Frame::isFirmwareChunk(chunk))
        return; // the loader's page channel never reaches the parser, claimed or not
    handleChunk(chunk);
}

// A frame split over two reads is joined only when the second read cannot be a frame start of its own:
// a chunk that begins with the markers always stands alone, so every chunk the one-chunk-one-frame rule
// accepts is accepted unchanged, and a held head never swallows a fresh answer.
void Device::handleChunk(const QByteArray &received) {
    QByteArray chunk = received;
    if (!m_partial.isEmpty()) {
        if (!startsWithMarkers(chunk))
            chunk.prepend(m_partial);
        m_partial.clear();
    }
    const proto::Frame::Received packet = proto::Frame::check(chunk);
    if (packet.kind != proto::Frame::ChunkKind::Accepted) {
        // The timer is already stopped: a short answer is not retried, the queue waits for the next event.
        if (m_reassembly && startsWithMarkers(chunk))
            m_partial = chunk;
        emit chunkDropped(chunk);
        return;
    }
    m_parser->parse(packet.type, packet.payload);
    emit answerAccepted(packet.type, packet.payload);
    // The boot loader asks for its first page right behind the device's answer to the switch into update
    // mode, often in the same read. That request is the one thing behind a frame that is not ignored.
    const QByteArray behind = chunk.mid(proto::Frame::Overhead + packet.length);
    if (m_firmwareHandler && proto::Frame::isFirmwareChunk(behind))
        m_firmwareHandler(behind);
    m_retries = 0;
    if (m_lostPending) {
        m_lostPending = false;
        emit connectionRestored();
    }
    // Cuts as many leading characters as frames are queued; the count itself is never printed.
    proto::TrafficLog::write(QStringLiteral("Queue size: ").mid(m_protocol->queueSize()));
    sendNextCommand();
}

void Device::onResponseTimeout() {
    if (!m_link || !m_link->isOpen()) {
        m_responseTimer->stop();
        if (m_link)
            emit linkDown();
        return;
    }
    if (m_retries < m_retryLimit) {
        ++m_retries;
    } else if (m_retries == m_retryLimit) {
        sendNextCommand();
        raiseConnectionLost();
        ++m_retries;
    }
    proto::TrafficLog::write(QStringLiteral("Повторная отправка, попытка номер: ") +
                             QString::number(m_retries));
    sendNextCommand();
}

void Device::raiseConnectionLost() {
    if (m_lostPending)
        return;
    m_lostPending = true;
    emit connectionLost();
}
