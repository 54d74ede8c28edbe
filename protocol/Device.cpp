#include "protocol/Device.h"

#include "protocol/Connection.h"
#include "protocol/Frame.h"
#include "protocol/StatusNotifier.h"
#include "protocol/TrafficLog.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"

#include <QTimer>

#include <utility>

namespace {

// The session reports the power-cycle answer itself; the parser needs no box of its own.
class QuietNotifier : public StatusNotifier {
public:
    void notify(const QString &) override {}
};
QuietNotifier quietNotifier;

constexpr quint8 StatusBit = 0x80;
// Requests answered or given up whose late or repeated answers are still recognised.
constexpr int RecentKept = 64;

bool awaitsAnswer(const QByteArray &frame) {
    const quint8 type = quint8(frame.at(proto::Frame::TypeOffset));
    return frame.size() >= proto::Frame::PayloadOffset + proto::Frame::HeadSize &&
           (type == proto::ConfigPacketType || type == proto::CommandPacketType);
}

quint8 payloadByte(const QByteArray &frame, int offset) {
    return quint8(frame.at(proto::Frame::PayloadOffset + offset));
}

} // namespace

Device::Device(kd::Configuration *configuration, QObject *parent)
    : QObject(parent)
    , m_configuration(configuration)
    , m_protocol(new proto::UNPProtocol(configuration, this))
    , m_parser(new UNPParcer(configuration, this))
    , m_responseTimer(new QTimer(this))
    , m_stallTimer(new QTimer(this)) {
    qRegisterMetaType<Connection *>();
    m_responseTimer->setInterval(DefaultResponseInterval);
    m_parser->setStatusNotifier(&quietNotifier);
    connect(m_parser, &UNPParcer::ConfigPackageDetected, this, &Device::sectionDecoded);
    connect(m_parser, &UNPParcer::ControlTelemetry, this, &Device::telemetryDecoded);
    m_stallTimer->setSingleShot(true);
    m_stallTimer->setInterval(DefaultStallInterval);
    connect(m_stallTimer, &QTimer::timeout, this, &Device::onStall);
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
    stop();
    m_retries = 0;
    m_link = link;
    if (link) {
        link->setParent(this);
        connect(link, &Connection::readyRead, this, &Device::onReadyRead);
        connect(link, &Connection::disconnected, this, [this] { stop(); });
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

void Device::setWindow(int requests) {
    m_window = qMax(1, requests);
}

void Device::setStallInterval(int ms) {
    m_stallTimer->setInterval(ms);
}

void Device::resetRetries() {
    m_retries = 0;
}

void Device::stop() {
    m_responseTimer->stop();
    m_stallTimer->stop();
    m_outstanding.clear();
    m_recent.clear();
    m_parked.clear();
    m_deframer.clear();
}

bool Device::isAnswerPending() const {
    return !m_outstanding.isEmpty();
}

bool Device::isIdle() const {
    return m_protocol->queueSize() == 0 && m_outstanding.isEmpty();
}

void Device::setFirmwareHandler(std::function<bool(const QByteArray &)> handler) {
    m_firmwareHandler = std::move(handler);
}

void Device::setReassembly(bool on) {
    m_deframer.setJoining(on);
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

// Fills the window. A frame is awaited only on a connected link; on one still connecting it is written
// unwatched, one per call.
void Device::sendNextCommand() {
    for (;;) {
        const bool watched = m_link && m_link->state() == Connection::Connected;
        if (watched && m_outstanding.size() >= m_window)
            return;
        if (!m_protocol->peekNext()) {
            // Only an answer ends a round: after a time-out the timer runs on, and the owner's quiet spell
            // decides when to ask again, so a silent device does not use up a job's rounds at once.
            if (m_outstanding.isEmpty() && !m_responseTimer->isActive())
                emit idle();
            return;
        }
        if (!m_responseTimer->isActive() && watched)
            m_responseTimer->start();
        const QByteArray frame = m_protocol->current();
        if (!m_link) {
            proto::TrafficLog::write(QStringLiteral("Command ") + proto::TrafficLog::maskedHex(frame));
            return; // stays queued until a link exists
        }
        writeFrame(frame);
        m_protocol->dropFirst();
        if (watched && awaitsAnswer(frame))
            m_outstanding << Request{frame,
                                     payloadByte(frame, proto::Frame::CodeOffset),
                                     payloadByte(frame, proto::Frame::OperationOffset),
                                     payloadByte(frame, proto::Frame::ParameterOffset),
                                     0,
                                     m_lostPending};
        if (!watched)
            return;
    }
}

void Device::writeFrame(const QByteArray &frame) {
    proto::TrafficLog::write(QStringLiteral("Command ") + proto::TrafficLog::maskedHex(frame));
    m_link->write(frame);
    emit frameSent(frame);
}

void Device::onReadyRead() {
    if (!m_link)
        return;
    const QByteArray chunk = m_link->readAll();
    if (chunk.isEmpty())
        return;
    proto::TrafficLog::write(QStringLiteral("From device: ") + QString::fromLatin1(chunk.toHex()) +
                             QStringLiteral(": ") + QString::number(chunk.size()));
    emit chunkReceived(chunk);
    if (m_firmwareHandler && m_firmwareHandler(chunk)) {
        // The boot loader owns the line: the requests before it get no answers.
        m_responseTimer->stop();
        m_outstanding.clear();
        return;
    }
    const QList<proto::StreamDeframer::Item> items = m_deframer.feed(chunk);
    int nonsense = m_deframer.droppedHeads();
    bool framed = false;
    for (const proto::StreamDeframer::Item &item : items) {
        if (item.firmware) {
            // The loader's page channel never reaches the parser. Its first request comes right behind the
            // device's answer to the switch into update mode, often in the same read; unclaimed, a loader
            // message answers no request.
            const bool offered = item.bytes == chunk;
            if (offered || !m_firmwareHandler || !m_firmwareHandler(item.bytes))
                ++nonsense;
            continue;
        }
        framed = true;
        handleFrame(item);
    }
    if (!framed) {
        emit chunkDropped(chunk);
        if (m_deframer.buffered() > 0)
            m_stallTimer->start(); // the rest of a frame may still come
        else if (nonsense == 0)
            nonsense = 1;
    }
    for (int i = 0; i < nonsense; ++i)
        onNonsense();
    if (!framed)
        return;
    if (m_deframer.buffered() > 0)
        m_stallTimer->start();
    else
        m_stallTimer->stop();
    sendNextCommand();
}

int Device::find(const QList<Request> &requests, const QByteArray &payload) {
    if (payload.size() <= proto::Frame::OperationOffset)
        return -1;
    const quint8 code = quint8(payload.at(proto::Frame::CodeOffset)) & ~StatusBit;
    const quint8 operation = quint8(payload.at(proto::Frame::OperationOffset)) & ~StatusBit;
    const int parameter = payload.size() > proto::Frame::ParameterOffset
                              ? quint8(payload.at(proto::Frame::ParameterOffset))
                              : -1;
    int found = -1;
    for (int i = 0; i < requests.size(); ++i) {
        const Request &r = requests.at(i);
        if ((r.code & ~StatusBit) != code || (r.operation & ~StatusBit) != operation)
            continue;
        if (r.parameter == parameter)
            return i;
        if (found < 0)
            found = i; // a data answer carries no index of its own
    }
    return found;
}

void Device::handleFrame(const proto::StreamDeframer::Item &frame) {
    m_parser->parse(frame.type, frame.payload);
    emit answerAccepted(frame.type, frame.payload);
    bool answered = false;
    const int index = find(m_outstanding, frame.payload);
    if (index >= 0) {
        answered = true;
        remember(m_outstanding.takeAt(index));
        // The next oldest request gets a full interval from now.
        m_responseTimer->stop();
        if (!m_outstanding.isEmpty())
            m_responseTimer->start();
    } else if (const int late = find(m_recent, frame.payload); late >= 0) {
        // An answer after its time-out, or a second one to a request asked again: not nonsense, and it
        // shows that the device is there.
        answered = true;
        m_recent.removeAt(late);
        if (m_outstanding.isEmpty())
            m_responseTimer->stop();
    } else {
        onNonsense();
    }
    if (answered) {
        m_retries = 0;
        // Nonsense counts only in a row: an answer that makes sense between breaks the run.
        for (Request &r : m_outstanding)
            r.nonsense = 0;
        if (m_lostPending) {
            m_lostPending = false;
            resendParked();
            emit connectionRestored();
        }
    }
    // Cuts as many leading characters as frames are queued; the count itself is never printed.
    proto::TrafficLog::write(QStringLiteral("Queue size: ").mid(m_protocol->queueSize()));
}

// Nonsense is silence for the oldest request: it is asked again at once, and after the third nonsense
// answer in a row given up. The retry counter and the response timer run on as if nothing had come.
void Device::onNonsense() {
    if (m_outstanding.isEmpty() || !m_link)
        return;
    Request &oldest = m_outstanding.first();
    if (++oldest.nonsense >= NonsenseLimit) {
        abandonOldest(true);
        sendNextCommand();
        return;
    }
    writeFrame(oldest.frame);
}

void Device::onStall() {
    if (m_deframer.buffered() == 0)
        return;
    m_deframer.clear();
    onNonsense();
}

// One entry per request kind: the polls repeat the same fifteen requests, and they must not push an
// older request's late answer (identity, a section) out of the list.
void Device::remember(const Request &request) {
    for (int i = m_recent.size() - 1; i >= 0; --i) {
        const Request &r = m_recent.at(i);
        if (r.code == request.code && r.operation == request.operation && r.parameter == request.parameter)
            m_recent.removeAt(i);
    }
    m_recent << request;
    if (m_recent.size() > RecentKept)
        m_recent.removeFirst();
}

// The device answers again: what it was asked in vain while silent, and is not on the line now, is asked
// again.
void Device::resendParked() {
    const QList<Request> parked = std::exchange(m_parked, {});
    for (Request r : parked) {
        if (find(m_outstanding, r.frame.mid(proto::Frame::PayloadOffset)) >= 0)
            continue;
        writeFrame(r.frame);
        r.intoSilence = false;
        m_outstanding << r;
    }
    if (!m_outstanding.isEmpty() && !m_responseTimer->isActive())
        m_responseTimer->start();
}

void Device::abandonOldest(bool nonsense) {
    const Request r = m_outstanding.takeFirst();
    proto::TrafficLog::write(QStringLiteral("Запрос без ответа: ") + proto::TrafficLog::maskedHex(r.frame));
    remember(r);
    emit requestAbandoned(r.code, r.operation, r.parameter, nonsense);
}

void Device::onResponseTimeout() {
    if (!m_link || !m_link->isOpen()) {
        m_responseTimer->stop();
        m_outstanding.clear();
        if (m_link)
            emit linkDown();
        return;
    }
    if (!m_outstanding.isEmpty() && m_outstanding.first().intoSilence && !m_lostPending) {
        // Written while the device was silent, and it has answered since: most likely never heard, so it is
        // asked once more instead of being given up.
        Request again = m_outstanding.takeFirst();
        again.intoSilence = false;
        writeFrame(again.frame);
        m_outstanding << again;
    } else if (!m_outstanding.isEmpty()) {
        if (m_lostPending) {
            Request parked = m_outstanding.first();
            parked.nonsense = 0;
            if (find(m_parked, parked.frame.mid(proto::Frame::PayloadOffset)) < 0 &&
                m_parked.size() < m_window)
                m_parked << parked;
        }
        abandonOldest(false);
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
