#include "protocol/SessionController.h"

#include "protocol/Connection.h"
#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/Frame.h"
#include "protocol/SerialConnection.h"
#include "protocol/TcpConnection.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"

#include "Devices/SectionKeys.h"
#include "Devices/SectionTable.h"

#include <QPointer>
#include <QTimer>

namespace {

constexpr quint8 StatusBit = 0x80;
constexpr quint8 OperationMask = 0x7F;
// A cut answer stops the response timer; this long without another chunk, the round goes on without it.
constexpr int StallMs = 250;

quint16 statusOf(const QByteArray &payload) {
    return UNPParcer::statusOf(payload).value_or(0);
}

QString statusLabel(quint16 status) {
    QString text = UNPParcer::statusText(status);
    while (text.startsWith(QLatin1Char('.')))
        text.remove(0, 1);
    return text.isEmpty() ? QStringLiteral("ответ %1").arg(status) : text;
}

bool isLoginAnswer(quint8 type, quint8 code, quint8 operation) {
    return type == proto::CommandPacketType && code == proto::code::Mode &&
           (operation & OperationMask) == proto::op::Login;
}

// What the user calls a request, and the section it belongs to.
struct Naming {
    QString label;
    QString key;
};

Naming nameRequest(JobResult::Kind kind, const kd::Configuration *cfg, quint8 type, quint8 code, quint8 op,
                   quint8 param) {
    if (type == proto::CommandPacketType && code == proto::code::Mode) {
        if (op == proto::op::ResetOrClear)
            return {kind == JobResult::Kind::Reset ? QStringLiteral("сброс настроек")
                                                   : QStringLiteral("очистка памяти"),
                    {}};
        if (op == proto::op::FirmwareUpdate)
            return {QStringLiteral("переход к обновлению прошивки"), {}};
    }
    if (type == proto::ConfigPacketType && code == proto::code::PasswordChange)
        return {QStringLiteral("смена пароля"), {}};
    if (type == proto::CommandPacketType && code == proto::code::OutputControl)
        return {QStringLiteral("состояние выходов"), QLatin1String(kd::keys::Output)};
    const kd::Section *section = kd::sectionByRequestCode(code, type);
    if (!section)
        return {QStringLiteral("запрос 0x%1/%2").arg(code, 2, 16, QLatin1Char('0')).arg(op), {}};
    const QString key = QLatin1String(section->key);
    for (const kd::SectionRequest &r : section->reads) {
        if (r.code() == code && r.operation() == op)
            return {r.label, key};
    }
    if (section->writes && cfg) {
        for (const kd::SectionRequest &r : section->writes(cfg)) {
            if (r.code() == code && r.operation() == op && r.parameter() == param)
                return {r.label, key};
        }
    }
    return {section->displayName, key};
}

} // namespace

struct SessionController::Private {
    struct Request {
        QByteArray frame;
        quint8 type = 0;
        quint8 code = 0;
        quint8 operation = 0;
        quint8 parameter = 0;
        bool expectsData = false;
        bool sent = false;
        bool settled = false;
        JobResult::Request result;
    };
    struct Job {
        JobResult::Kind kind = JobResult::Kind::Identity;
        bool background = false; // telemetry: the state stays Ready
        QVector<Request> requests;
        int rounds = 0;
        bool holding = false; // the switch into the loader is confirmed: the transfer runs until told
        QString powerCycleText;
    };

    SessionController *q;
    kd::Configuration *configuration;
    Device *device;
    DeviceWorkflows *workflows;
    std::function<Connection *(const Settings &)> factory;
    Settings settings;
    State state = State::Disconnected;
    LinkFailure failure;
    bool identified = false;
    bool everConnected = false;
    bool startupPasswordTried = false;
    bool passwordPending = false;
    int loginsInFlight = 0;
    bool lostBySilence = false;
    bool blockedSaid = false; // the block was reported and the device has answered nothing else since
    std::unique_ptr<Job> job;
    QTimer connectTimer;
    QTimer quietTimer;
    QTimer stallTimer;
    QTimer deadlineTimer;

    explicit Private(SessionController *owner, kd::Configuration *cfg)
        : q(owner)
        , configuration(cfg)
        , device(new Device(cfg, owner))
        , workflows(new DeviceWorkflows(device, owner)) {
        workflows->setAutoStart(false);
        connectTimer.setSingleShot(true);
        quietTimer.setSingleShot(true);
        stallTimer.setSingleShot(true);
        stallTimer.setInterval(StallMs);
        deadlineTimer.setSingleShot(true);
    }

    void setState(State s) {
        if (s == state)
            return;
        state = s;
        emit q->stateChanged(s);
    }

    // The state the session settles in while its link is up and answering.
    State workingState() const {
        if (!device->link())
            return State::Disconnected;
        if (passwordPending)
            return State::PasswordRequired;
        if (job && !job->background)
            return job->kind == JobResult::Kind::Identity && !identified ? State::Identifying : State::Busy;
        return State::Ready;
    }

    Connection *createLink() {
        Connection *link = nullptr;
        if (factory)
            link = factory(settings);
        else if (settings.remote)
            return new TcpConnection(settings.host, settings.port, settings.imei);
        else if (!settings.portName.isEmpty())
            return new SerialConnection(settings.portName);
        else
            link = new SerialConnection;
        // A serial link without a port, built here or by a factory, looks for the device by its USB
        // identifiers.
        auto *serial = qobject_cast<SerialConnection *>(link);
        if (!serial || !serial->portName().isEmpty())
            return link;
        const int found = serial->findDevices();
        if (found == 1)
            return serial;
        delete serial;
        LinkFailure f;
        f.error = found == 0 ? LinkError::NoDevice : LinkError::SeveralDevices;
        fail(f);
        return nullptr;
    }

    QString where() const {
        return settings.remote ? QStringLiteral("%1:%2").arg(settings.host).arg(settings.port)
                               : settings.portName;
    }

    // The link is gone or never came up: the job ends, the link is dropped.
    void fail(LinkFailure f) {
        f.remote = settings.remote;
        if (f.where.isEmpty())
            f.where = where();
        failure = f;
        connectTimer.stop();
        dropLink();
        finishJob(JobResult::End::LinkLost);
        passwordPending = false;
        identified = false;
        setState(everConnected ? State::Lost : State::Disconnected);
        emit q->linkFailed(f);
    }

    void dropLink() {
        if (Connection *link = device->link())
            link->disconnect(q);
        device->setLink(nullptr);
        loginsInFlight = 0;
    }

    void onConnected() {
        if (everConnected)
            return;
        everConnected = true;
        connectTimer.stop();
        device->resetRetries();
        if (settings.identify) {
            startJob(JobResult::Kind::Identity, false, [](DeviceWorkflows &w) { w.readIdentity(); });
            setState(State::Identifying);
        } else {
            setState(State::Ready);
        }
    }

    void onLinkError(int group, int code) {
        LinkFailure f = linkFailure(group, code, everConnected);
        if (f.isFailure())
            fail(f);
    }

    void onLinkClosed() {
        LinkFailure f;
        f.error = LinkError::LinkClosed;
        fail(f);
    }

    void onSilence() {
        if (!device->link() || state == State::Lost)
            return;
        lostBySilence = true;
        failure = LinkFailure();
        failure.error = LinkError::NotResponding;
        failure.remote = settings.remote;
        failure.where = where();
        setState(State::Lost);
        emit q->connectionLost();
    }

    void onRestored() {
        if (!lostBySilence)
            return;
        lostBySilence = false;
        failure = LinkFailure();
        setState(workingState());
        emit q->connectionRestored();
    }

    // Jobs

    bool canStart(bool background) const {
        // While a silent device is waited for, only telemetry rounds go out: they find out when it is back.
        const bool waiting = state == State::Lost && !(background && lostBySilence);
        if (!device->link() || passwordPending || waiting || state == State::Connecting)
            return false;
        if (job && !job->background)
            return false;
        return !(background && job);
    }

    bool startJob(JobResult::Kind kind, bool background, const std::function<void(DeviceWorkflows &)> &fill,
                  const QString &key = QString()) {
        if (job)
            finishJob(JobResult::End::Cancelled);
        auto *protocol = device->protocol();
        protocol->clearQueue();
        fill(*workflows);
        const QList<QByteArray> frames = protocol->queue();
        protocol->clearQueue();
        job = std::make_unique<Job>();
        job->kind = kind;
        job->background = background;
        for (const QByteArray &frame : frames) {
            Request r;
            r.frame = frame;
            r.type = quint8(frame.at(proto::Frame::TypeOffset));
            const QByteArray payload = frame.mid(proto::Frame::PayloadOffset);
            r.code = quint8(payload.at(proto::Frame::CodeOffset));
            r.operation = quint8(payload.at(proto::Frame::OperationOffset));
            r.parameter = quint8(payload.at(proto::Frame::ParameterOffset));
            r.expectsData = r.type == proto::ConfigPacketType ? (r.code & proto::code::ReadBit) != 0
                                                              : r.code == proto::code::Telemetry;
            const Naming naming = nameRequest(kind, configuration, r.type, r.code, r.operation, r.parameter);
            r.result.label = naming.label;
            r.result.sectionKey = key.isEmpty() ? naming.key : key;
            job->requests << r;
        }
        if (settings.jobDeadlineMs > 0)
            deadlineTimer.start(settings.jobDeadlineMs);
        if (!background)
            setState(workingState());
        emit q->jobProgress(0, job->requests.size());
        if (job->requests.isEmpty()) {
            QTimer::singleShot(0, q, [this] {
                if (job && job->requests.isEmpty())
                    finishJob(JobResult::End::Done);
            });
            return true;
        }
        sendRound();
        return true;
    }

    void sendRound() {
        if (!job || passwordPending)
            return;
        ++job->rounds;
        auto *protocol = device->protocol();
        protocol->clearQueue();
        for (const Request &r : qAsConst(job->requests)) {
            if (!r.settled)
                device->enqueue(r.frame);
        }
        quietTimer.start(device->responseInterval() + 200);
        startSending();
    }

    // Never from inside the device's answer step: it sends the next frame itself right after.
    void startSending() {
        QTimer::singleShot(0, q, [this] {
            if (device->link() && !device->isAnswerPending())
                device->sendNextCommand();
        });
    }

    void onFrameSent(const QByteArray &frame) {
        if (!job)
            return;
        for (Request &r : job->requests) {
            if (!r.settled && !r.sent && r.frame == frame) {
                r.sent = true;
                return;
            }
        }
    }

    void onRoundOver() {
        if (!job || passwordPending || job->holding)
            return;
        if (pending() == 0)
            return;
        if (settings.jobRounds > 0 && job->rounds >= settings.jobRounds && !job->background) {
            finishJob(JobResult::End::Done);
            return;
        }
        if (job->background && job->rounds >= qMax(1, settings.jobRounds)) {
            finishJob(JobResult::End::Done);
            return;
        }
        sendRound();
    }

    int pending() const {
        int n = 0;
        for (const Request &r : job->requests)
            n += r.settled ? 0 : 1;
        return n;
    }

    void onAnswer(quint8 type, const QByteArray &payload) {
        stallTimer.stop();
        if (payload.size() < proto::Frame::HeadSize - 1)
            return;
        const quint8 code = quint8(payload.at(proto::Frame::CodeOffset));
        const quint8 operation = quint8(payload.at(proto::Frame::OperationOffset));
        const quint8 parameter = quint8(payload.at(proto::Frame::ParameterOffset));
        const bool isStatus = operation & StatusBit;
        if (!isStatus || statusOf(payload) != UNPParcer::Blocked)
            blockedSaid = false;
        if (isStatus && isLoginAnswer(type, code, operation)) {
            onLoginAnswer(statusOf(payload));
            return;
        }
        if (quietTimer.isActive())
            quietTimer.start();
        if (!isStatus) {
            settleData(type, code, operation);
            return;
        }
        const quint16 status = statusOf(payload);
        switch (status) {
        case UNPParcer::AuthorisationNeeded:
            onPasswordNeeded();
            return;
        case UNPParcer::WrongPassword:
            onPasswordWrong();
            return;
        case UNPParcer::Blocked:
            if (!job)
                return; // the other requests on the line are refused the same way: said once
            settleStatus(code, operation & OperationMask, parameter, JobResult::Outcome::Refused,
                         statusLabel(status));
            onBlocked();
            return;
        case UNPParcer::PowerCycleNeeded:
            // The reset is taken; the device applies it only once its power has been cut.
            if (job)
                job->powerCycleText = UNPParcer::powerCycleText();
            settleStatus(code, operation & OperationMask, parameter, JobResult::Outcome::Confirmed, {});
            emit q->deviceBlocked(UNPParcer::powerCycleText());
            return;
        case UNPParcer::Executed:
            settleStatus(code, operation & OperationMask, parameter, JobResult::Outcome::Confirmed, {});
            return;
        default:
            settleStatus(code, operation & OperationMask, parameter, JobResult::Outcome::Refused,
                         statusLabel(status));
            return;
        }
    }

    void settleData(quint8 type, quint8 code, quint8 operation) {
        if (!job)
            return;
        for (Request &r : job->requests) {
            if (!r.settled && r.expectsData && r.type == type && r.code == code && r.operation == operation) {
                settle(r, JobResult::Outcome::Answered, {});
                return;
            }
        }
    }

    // The device answers this request with nothing that makes sense: asking it again in the next round
    // would only bring the same, so it ends unanswered now.
    void onNonsenseGivenUp(quint8 code, quint8 operation, quint8 parameter) {
        if (!job)
            return;
        for (Request &r : job->requests) {
            if (!r.settled && r.code == code && r.operation == operation && r.parameter == parameter) {
                settle(r, JobResult::Outcome::NotAnswered, {});
                return;
            }
        }
    }

    // A status answer settles only the request with its own code, operation and parameter.
    void settleStatus(quint8 code, quint8 operation, quint8 parameter, JobResult::Outcome outcome,
                      const QString &status) {
        if (!job)
            return;
        for (Request &r : job->requests) {
            if (r.settled || r.code != code || r.operation != operation || r.parameter != parameter)
                continue;
            if (r.expectsData && outcome == JobResult::Outcome::Confirmed)
                return; // an acknowledgement is no data
            settle(r, outcome, status);
            return;
        }
    }

    void settle(Request &r, JobResult::Outcome outcome, const QString &status) {
        r.settled = true;
        r.sent = true;
        r.result.outcome = outcome;
        r.result.status = status;
        const int total = job->requests.size();
        emit q->jobProgress(total - pending(), total);
        if (job->kind == JobResult::Kind::FirmwareUpdate && outcome == JobResult::Outcome::Confirmed) {
            job->holding = true;
            quietTimer.stop();
            deadlineTimer.stop();
            return;
        }
        if (pending() == 0) {
            // Let the device finish its answer step first.
            QTimer::singleShot(0, q, [this] {
                if (job && !job->holding && pending() == 0)
                    finishJob(JobResult::End::Done);
            });
        }
    }

    void finishJob(JobResult::End end) {
        if (!job)
            return;
        std::unique_ptr<Job> done = std::move(job);
        quietTimer.stop();
        stallTimer.stop();
        deadlineTimer.stop();
        device->protocol()->clearQueue();
        JobResult result;
        result.kind = done->kind;
        result.end = end;
        result.powerCycleText = done->powerCycleText;
        if (end == JobResult::End::LinkLost)
            result.failure = failure;
        for (Request &r : done->requests) {
            if (!r.settled)
                r.result.outcome = r.sent ? JobResult::Outcome::NotAnswered : JobResult::Outcome::NotSent;
            result.requests << r.result;
        }
        if (done->kind == JobResult::Kind::Identity && !identified &&
            result.requests.value(0).outcome == JobResult::Outcome::Answered) {
            identified = true;
            emit q->identified();
        }
        if (device->link() && state != State::Lost)
            setState(workingState());
        emit q->jobFinished(result);
    }

    // Password

    void onPasswordNeeded() {
        if (passwordPending)
            return; // every request queued before the login is refused the same way
        passwordPending = true;
        quietTimer.stop();
        device->protocol()->clearQueue();
        if (job) {
            // What the device refused goes out again once it has the password.
            for (Request &r : job->requests) {
                if (!r.settled)
                    r.sent = false;
            }
        }
        setState(State::PasswordRequired);
        if (settings.hasPassword && !startupPasswordTried) {
            startupPasswordTried = true;
            sendLogin(settings.password);
            return;
        }
        askPassword();
    }

    void sendLogin(quint32 password) {
        ++loginsInFlight;
        device->protocol()->clearQueue();
        workflows->login(password);
        startSending();
    }

    void onLoginAnswer(quint16 status) {
        // An answer to a login given up on, or to one that a newer login replaced, means nothing now.
        if (loginsInFlight == 0)
            return;
        if (--loginsInFlight > 0 || !passwordPending)
            return;
        if (status == UNPParcer::Executed) {
            passwordPending = false;
            emit q->passwordAccepted();
            setState(workingState());
            if (job)
                sendRound();
            return;
        }
        if (status == UNPParcer::WrongPassword) {
            emit q->passwordRejected(UNPParcer::statusText(status));
            askPassword();
            return;
        }
        if (status == UNPParcer::Blocked) {
            passwordPending = false;
            onBlocked();
        }
    }

    // The device refuses all work: the job ends and nothing else on the line is waited for, as every
    // request gets the same refusal. Told before the window's box opens its own event loop, so no
    // response time-out runs behind it. An unidentified session stays so until the user connects again.
    void onBlocked() {
        const bool background = job && job->background;
        finishJob(JobResult::End::Blocked);
        device->stop();
        device->resetRetries();
        // Each telemetry round would say it again.
        if (background && blockedSaid)
            return;
        blockedSaid = true;
        emit q->deviceBlocked(QString());
    }

    void onPasswordWrong() {
        if (!passwordPending)
            return;
        emit q->passwordRejected(UNPParcer::statusText(UNPParcer::WrongPassword));
        askPassword();
    }

    // Asked from the event loop, not from inside the device's answer step: the window opens a dialog.
    void askPassword() {
        QTimer::singleShot(0, q, [this] {
            if (passwordPending && state == State::PasswordRequired)
                emit q->passwordRequested();
        });
    }
};

SessionController::SessionController(kd::Configuration *configuration, QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Private>(this, configuration)) {
    qRegisterMetaType<LinkFailure>();
    qRegisterMetaType<JobResult>();
    Device *device = d->device;
    connect(device, &Device::answerAccepted, this,
            [this](quint8 type, const QByteArray &payload) { d->onAnswer(type, payload); });
    connect(device, &Device::frameSent, this, [this](const QByteArray &frame) { d->onFrameSent(frame); });
    connect(device, &Device::idle, this, [this] {
        // The round is over with answers missing: ask again at once instead of waiting for the quiet spell.
        QTimer::singleShot(0, this, [this] {
            if (d->job && d->device->isIdle())
                d->onRoundOver();
        });
    });
    connect(device, &Device::chunkDropped, this, [this] {
        if (d->job)
            d->stallTimer.start();
    });
    connect(device, &Device::requestAbandoned, this,
            [this](quint8 code, quint8 operation, quint8 parameter, bool nonsense) {
                if (nonsense)
                    d->onNonsenseGivenUp(code, operation, parameter);
            });
    connect(device, &Device::connectionLost, this, [this] { d->onSilence(); });
    connect(device, &Device::connectionRestored, this, [this] { d->onRestored(); });
    connect(device, &Device::linkDown, this, [this] {
        if (d->device->link())
            d->onLinkClosed();
    });
    connect(device, &Device::sectionDecoded, this, &SessionController::sectionDecoded);
    connect(device, &Device::telemetryDecoded, this, &SessionController::telemetryDecoded);
    connect(&d->quietTimer, &QTimer::timeout, this, [this] {
        if (d->job && d->device->protocol()->queueSize() == 0)
            d->onRoundOver();
        else if (d->job)
            d->quietTimer.start();
    });
    connect(&d->stallTimer, &QTimer::timeout, this, [this] {
        // Go on with the round; whatever stays unanswered is asked for again when the round is over.
        if (!d->job || d->device->isAnswerPending())
            return;
        if (d->device->protocol()->queueSize() > 0)
            d->device->sendNextCommand();
        else
            d->onRoundOver();
    });
    connect(&d->deadlineTimer, &QTimer::timeout, this, [this] { d->finishJob(JobResult::End::Deadline); });
    connect(&d->connectTimer, &QTimer::timeout, this, [this] {
        LinkFailure f;
        f.error = LinkError::ConnectTimeout;
        d->fail(f);
    });
}

SessionController::~SessionController() {
    d->job.reset();
    if (Connection *link = d->device->link())
        link->disconnect(this);
}

void SessionController::setLinkFactory(std::function<Connection *(const Settings &)> factory) {
    d->factory = std::move(factory);
}

SessionController::State SessionController::state() const {
    return d->state;
}

const SessionController::Settings &SessionController::settings() const {
    return d->settings;
}

bool SessionController::isIdentified() const {
    return d->identified;
}

bool SessionController::isReadyForJobs() const {
    return d->state == State::Ready && (d->identified || !d->settings.identify);
}

LinkFailure SessionController::lastFailure() const {
    return d->failure;
}

Connection *SessionController::link() const {
    return d->device->link();
}

void SessionController::setFirmwareHandler(std::function<bool(const QByteArray &)> handler) {
    d->device->setFirmwareHandler(std::move(handler));
}

void SessionController::connectDevice(const Settings &settings) {
    d->job.reset();
    d->dropLink();
    d->settings = settings;
    d->failure = LinkFailure();
    d->identified = false;
    d->everConnected = false;
    d->startupPasswordTried = false;
    d->passwordPending = false;
    d->lostBySilence = false;
    d->blockedSaid = false;
    d->device->protocol()->clearQueue();
    if (settings.responseIntervalMs > 0)
        d->device->setResponseInterval(settings.responseIntervalMs);
    d->device->setWindow(settings.window > 0 ? settings.window : Device::DefaultWindow);
    d->setState(State::Connecting);
    Connection *link = d->createLink();
    if (!link)
        return;
    connect(link, &Connection::error, this, [this](int group, int code) { d->onLinkError(group, code); });
    connect(link, &Connection::connected, this, [this] { d->onConnected(); });
    connect(link, &Connection::disconnected, this, [this] { d->onLinkClosed(); });
    d->device->setLink(link);
    if (settings.connectTimeoutMs > 0)
        d->connectTimer.start(settings.connectTimeoutMs);
    if (!link->open()) {
        LinkFailure f;
        f.error = LinkError::PortOpenFailed;
        if (auto *serial = qobject_cast<SerialConnection *>(link)) {
            f.where = serial->portName();
            f.reason = serial->openErrorReason();
        }
        d->fail(f);
        return;
    }
    if (link->state() == Connection::Connected)
        d->onConnected();
}

void SessionController::disconnectDevice() {
    if (d->job)
        d->finishJob(d->lostBySilence ? JobResult::End::LinkLost : JobResult::End::Cancelled);
    d->connectTimer.stop();
    d->dropLink();
    d->passwordPending = false;
    d->identified = false;
    d->lostBySilence = false;
    d->setState(State::Disconnected);
}

void SessionController::submitPassword(quint32 password) {
    if (!d->passwordPending || !d->device->link())
        return;
    d->sendLogin(password);
}

void SessionController::abandonLogin() {
    if (!d->passwordPending)
        return;
    d->passwordPending = false;
    d->dropLink();
    d->finishJob(JobResult::End::PasswordAbandoned);
    d->setState(State::Disconnected);
}

bool SessionController::readIdentity() {
    if (!d->canStart(false))
        return false;
    return d->startJob(JobResult::Kind::Identity, false, [](DeviceWorkflows &w) { w.readIdentity(); });
}

bool SessionController::readAll() {
    if (!d->canStart(false))
        return false;
    return d->startJob(JobResult::Kind::ReadAll, false, [](DeviceWorkflows &w) { w.readAll(); });
}

bool SessionController::writeAll() {
    return writeSections({});
}

bool SessionController::writeSections(const QStringList &keys) {
    if (!d->canStart(false))
        return false;
    return d->startJob(JobResult::Kind::WriteAll, false,
                       [keys](DeviceWorkflows &w) { w.writeSections(keys); });
}

bool SessionController::writeSection(const QString &key) {
    using namespace kd::keys;
    static const QHash<QString, void (DeviceWorkflows::*)()> writes{
        {System, &DeviceWorkflows::writeSystem},    {Navigation, &DeviceWorkflows::writeNavigation},
        {Gsm, &DeviceWorkflows::writeGsm},          {Server, &DeviceWorkflows::writeServers},
        {Agc, &DeviceWorkflows::writeAnalogInputs}, {Logic, &DeviceWorkflows::writeLogicInputs},
        {Fuel, &DeviceWorkflows::writeFuel},        {Output, &DeviceWorkflows::setOutputs},
    };
    const auto write = writes.value(key);
    if (!write)
        return false;
    return writeWith(key, [write](DeviceWorkflows &w) { (w.*write)(); });
}

bool SessionController::writeWith(const QString &key, const std::function<void(DeviceWorkflows &)> &enqueue) {
    if (!d->canStart(false))
        return false;
    return d->startJob(JobResult::Kind::WriteSection, false, enqueue, key);
}

bool SessionController::clearMemory() {
    if (!d->canStart(false))
        return false;
    return d->startJob(JobResult::Kind::ClearMemory, false, [](DeviceWorkflows &w) { w.clearMemory(); });
}

bool SessionController::resetSettings() {
    if (!d->canStart(false))
        return false;
    return d->startJob(JobResult::Kind::Reset, false, [](DeviceWorkflows &w) { w.resetSettings(); });
}

bool SessionController::setPassword(quint32 newPassword) {
    if (!d->canStart(false))
        return false;
    return d->startJob(JobResult::Kind::SetPassword, false,
                       [newPassword](DeviceWorkflows &w) { w.changePassword(newPassword); });
}

bool SessionController::telemetryRound() {
    if (!d->canStart(true))
        return false;
    return d->startJob(JobResult::Kind::Telemetry, true, [](DeviceWorkflows &w) { w.pollTelemetry(); });
}

bool SessionController::enterFirmwareUpdate() {
    if (!d->canStart(false))
        return false;
    return d->startJob(JobResult::Kind::FirmwareUpdate, false,
                       [](DeviceWorkflows &w) { w.enterFirmwareUpdate(); });
}

void SessionController::finishFirmwareUpdate() {
    if (d->job && d->job->kind == JobResult::Kind::FirmwareUpdate)
        d->finishJob(JobResult::End::Done);
}

void SessionController::cancelJob() {
    d->finishJob(JobResult::End::Cancelled);
}

bool SessionController::isJobRunning() const {
    return d->job != nullptr;
}
