#include "cli/DeviceCommand.h"

#include "protocol/Device.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"

#include <QTextStream>

namespace {

constexpr quint8 StatusBit = 0x80;
constexpr quint8 KindMask = 0x7F;

quint16 statusOf(const QByteArray &payload) {
    if (payload.size() < 6)
        return 0;
    return quint16(quint8(payload.at(4)) | (quint8(payload.at(5)) << 8));
}

// The parser runs its status handler, and so raises the password and blocked signals, only for
// configuration answers and the login answer. Command answers (telemetry, reset, memory clearing)
// carry the same statuses unreported.
bool parserReportsStatus(quint8 type, quint8 code, quint8 kind) {
    return type != proto::CommandPacketType || (code == proto::code::Mode && kind == proto::op::Login);
}

QString statusFailure(quint16 status) {
    QString text = UNPParcer::statusText(status);
    while (text.startsWith(QLatin1Char('.')))
        text.remove(0, 1);
    return text.isEmpty() ? QStringLiteral("ответ %1").arg(status) : text;
}

} // namespace

DeviceCommand::DeviceCommand(Device *device, const Options &options, QTextStream &out, QTextStream &err,
                             QObject *parent)
    : QObject(parent)
    , m_device(device)
    , m_options(options)
    , m_out(out)
    , m_err(err) {
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(options.quietMs);
    connect(&m_quiet, &QTimer::timeout, this, &DeviceCommand::onQuiet);
    m_stall.setSingleShot(true);
    m_stall.setInterval(options.stallMs);
    connect(&m_stall, &QTimer::timeout, this, &DeviceCommand::onStall);
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &DeviceCommand::onDeadline);
}

DeviceCommand::~DeviceCommand() = default;

void DeviceCommand::start() {
    UNPParcer *parser = m_device->parser();
    parser->setStatusNotifier(this);
    connect(parser, &UNPParcer::PasswordChange, this, &DeviceCommand::onPasswordChange);
    connect(parser, &UNPParcer::PasswordError, this, &DeviceCommand::onPasswordError);
    connect(parser, &UNPParcer::PasswordComplete, this, &DeviceCommand::onPasswordComplete);
    connect(parser, &UNPParcer::DeviceBlocked, this, &DeviceCommand::onDeviceBlocked);
    connect(m_device, &Device::chunkDropped, this, &DeviceCommand::onChunkDropped);
    connect(m_device, &Device::idle, this, &DeviceCommand::onIdle);
    buildRequests();
    if (m_options.deadlineMs > 0)
        m_deadline.start(m_options.deadlineMs);
    if (m_expectations.isEmpty()) {
        checkComplete();
        return;
    }
    sendMissing();
}

void DeviceCommand::addRequest(const std::function<void(AbstarctProtocol *)> &enqueue,
                               const QVector<Expectation> &answers) {
    Request request;
    request.enqueue = enqueue;
    for (const Expectation &e : answers) {
        request.expectations << m_expectations.size();
        m_expectations << e;
    }
    m_requests << request;
}

DeviceCommand::Expectation DeviceCommand::dataAnswer(quint8 code, quint8 kind, const QString &label,
                                                     quint8 type) {
    Expectation e;
    e.type = type;
    e.code = code;
    e.operation = kind;
    e.label = label;
    return e;
}

DeviceCommand::Expectation DeviceCommand::statusAnswer(quint8 code, quint8 operation, int parameter,
                                                       const QString &label, quint8 type) {
    Expectation e = dataAnswer(code, operation, label, type);
    e.parameter = parameter;
    e.status = true;
    return e;
}

void DeviceCommand::sendMissing() {
    if (m_finished)
        return;
    proto::UNPProtocol *protocol = m_device->protocol();
    protocol->clearQueue();
    for (const Request &request : qAsConst(m_requests)) {
        for (int index : request.expectations) {
            if (m_expectations.at(index).state == Expectation::Pending) {
                request.enqueue(protocol);
                break;
            }
        }
    }
    m_quiet.start();
    // Never from inside the session's answer step: it sends the next frame itself right after.
    QTimer::singleShot(0, this, [this] {
        if (!m_finished && !m_device->isAnswerPending())
            m_device->sendNextCommand();
    });
}

void DeviceCommand::resetExpectations() {
    for (Expectation &e : m_expectations) {
        e.state = Expectation::Pending;
        e.failure.clear();
    }
    m_completing = false;
}

void DeviceCommand::onPacket(quint8 type, const QByteArray &payload) {
    if (m_finished)
        return;
    m_stall.stop();
    if (m_quiet.isActive())
        m_quiet.start();
    matchAnswer(type, payload);
}

void DeviceCommand::matchAnswer(quint8 type, const QByteArray &payload) {
    if (payload.size() < 2)
        return;
    const quint8 code = quint8(payload.at(0));
    const quint8 operation = quint8(payload.at(1));
    const int parameter = payload.size() > 2 ? quint8(payload.at(2)) : 0;
    const bool isStatus = operation & StatusBit;
    const quint8 kind = operation & KindMask;

    auto find = [&](bool exactParameter) -> int {
        for (int i = 0; i < m_expectations.size(); ++i) {
            const Expectation &e = m_expectations.at(i);
            if (e.state != Expectation::Pending || e.operation != kind)
                continue;
            if (!isStatus && e.type != type)
                continue;
            if (isStatus) {
                // A status settles a write, or refuses a read; the device may echo the code with or
                // without the read bit.
                if ((code & KindMask) != (e.code & KindMask))
                    continue;
                if (e.status && exactParameter && e.parameter >= 0 && e.parameter != parameter)
                    continue;
            } else if (e.status || code != e.code) {
                continue;
            }
            return i;
        }
        return -1;
    };
    int index = find(true);
    if (index < 0 && isStatus)
        index = find(false);
    if (index < 0)
        return;

    Expectation &e = m_expectations[index];
    if (isStatus) {
        const quint16 status = statusOf(payload);
        switch (status) {
        case UNPParcer::Executed:
            if (!e.status)
                return; // an acknowledgement is no data
            e.state = Expectation::Done;
            break;
        case UNPParcer::PowerCycleNeeded:
            // The reset is taken; the device only applies it after its power has been cut.
            if (!parserReportsStatus(type, code, kind))
                notify(UNPParcer::powerCycleText());
            e.state = Expectation::Done;
            break;
        case UNPParcer::AuthorisationNeeded:
            if (!parserReportsStatus(type, code, kind))
                onPasswordChange();
            return;
        case UNPParcer::WrongPassword:
            if (!parserReportsStatus(type, code, kind))
                onPasswordError();
            return;
        case UNPParcer::Blocked:
            if (!parserReportsStatus(type, code, kind))
                onDeviceBlocked();
            return;
        default:
            e.state = Expectation::Failed;
            e.failure = statusFailure(status);
            break;
        }
    } else {
        e.state = Expectation::Done;
    }
    m_quiet.start();
    checkComplete();
}

void DeviceCommand::checkComplete() {
    if (m_finished || m_completing)
        return;
    for (const Expectation &e : qAsConst(m_expectations)) {
        if (e.state == Expectation::Pending)
            return;
    }
    m_completing = true;
    m_quiet.stop();
    // Let the session finish its answer step first.
    QTimer::singleShot(0, this, [this] {
        if (!m_finished)
            complete();
    });
}

bool DeviceCommand::allDone() const {
    for (const Expectation &e : m_expectations) {
        if (e.state != Expectation::Done)
            return false;
    }
    return true;
}

QString DeviceCommand::missingAnswers() const {
    QStringList silent;
    QStringList refused;
    for (const Expectation &e : m_expectations) {
        if (e.state == Expectation::Pending && !silent.contains(e.label))
            silent << e.label;
        else if (e.state == Expectation::Failed)
            refused << QStringLiteral("%1 (%2)").arg(e.label, e.failure);
    }
    QStringList parts;
    if (!silent.isEmpty())
        parts << QStringLiteral("нет ответа: %1").arg(silent.join(QStringLiteral(", ")));
    if (!refused.isEmpty())
        parts << QStringLiteral("отказ: %1").arg(refused.join(QStringLiteral(", ")));
    return parts.join(QStringLiteral("; "));
}

void DeviceCommand::onQuiet() {
    if (m_finished)
        return;
    if (m_loginSent) {
        m_loginSent = false;
        onPasswordChange();
        return;
    }
    sendMissing();
}

void DeviceCommand::onChunkDropped() {
    // A cut or garbled answer stops the session's response timer, so nothing would ever be sent again.
    // The wait covers the second half of an answer that arrived in two pieces.
    if (!m_finished)
        m_stall.start();
}

void DeviceCommand::onStall() {
    if (m_finished)
        return;
    // Go on with the round; whatever stays unanswered is asked for again when the round is over.
    if (m_device->protocol()->queueSize() > 0 && !m_device->isAnswerPending())
        m_device->sendNextCommand();
    else if (!m_device->isAnswerPending())
        sendMissing();
}

void DeviceCommand::onIdle() {
    if (m_finished || m_loginSent || !hasPending())
        return;
    // The round is over with answers missing: ask again at once instead of waiting for the quiet spell.
    QTimer::singleShot(0, this, [this] {
        if (!m_finished && !m_loginSent && hasPending() && m_device->isIdle())
            sendMissing();
    });
}

bool DeviceCommand::hasPending() const {
    for (const Expectation &e : m_expectations) {
        if (e.state == Expectation::Pending)
            return true;
    }
    return false;
}

void DeviceCommand::onDeadline() {
    if (m_finished)
        return;
    const QString missing = missingAnswers();
    const QString seconds = QString::number(m_options.deadlineMs / 1000.0, 'g', 4);
    fail(missing.isEmpty() ? QStringLiteral("прибор не ответил за %1 с").arg(seconds)
                           : QStringLiteral("прибор не ответил за %1 с, %2").arg(seconds, missing));
}

void DeviceCommand::onPasswordChange() {
    if (m_finished || m_loginSent)
        return;
    if (!m_options.hasPassword) {
        fail(QStringLiteral("прибор запрашивает пароль, укажите его параметром --password"));
        return;
    }
    if (m_logins >= 3) {
        fail(QStringLiteral("прибор не принимает пароль"));
        return;
    }
    ++m_logins;
    m_loginSent = true;
    proto::UNPProtocol *protocol = m_device->protocol();
    protocol->clearQueue();
    protocol->login(m_options.password);
    m_quiet.start();
    QTimer::singleShot(0, this, [this] {
        if (!m_finished && !m_device->isAnswerPending())
            m_device->sendNextCommand();
    });
}

void DeviceCommand::onPasswordError() {
    fail(QStringLiteral("неверный пароль"));
}

void DeviceCommand::onPasswordComplete() {
    if (m_finished)
        return;
    m_loginSent = false;
    // The request the device refused for want of a password is sent again with the rest.
    sendMissing();
}

void DeviceCommand::notify(const QString &text) {
    m_powerCycle = true;
    m_powerCycleText = text;
}

void DeviceCommand::restartDeadline() {
    if (m_options.deadlineMs > 0)
        m_deadline.start(m_options.deadlineMs);
}

void DeviceCommand::onDeviceBlocked() {
    if (m_powerCycle) {
        // The parser reports the power-cycle answer as a blocked device too; here it is the reset's answer.
        m_powerCycle = false;
        return;
    }
    fail(QStringLiteral("прибор заблокирован, повторите попытку позже"));
}

void DeviceCommand::onConnectionLost(const QString &text) {
    fail(text);
}

void DeviceCommand::cancel(int exitCode) {
    finish(exitCode);
}

void DeviceCommand::fail(const QString &message) {
    if (m_finished)
        return;
    m_err << QStringLiteral("tavrel-cli: ") << message << '\n';
    m_err.flush();
    finish(1);
}

void DeviceCommand::finish(int exitCode) {
    if (m_finished)
        return;
    m_finished = true;
    m_quiet.stop();
    m_stall.stop();
    m_deadline.stop();
    m_device->disconnect(this);
    m_device->protocol()->clearQueue();
    m_device->parser()->disconnect(this);
    m_device->parser()->setStatusNotifier(nullptr);
    m_out.flush();
    emit finished(exitCode);
}
