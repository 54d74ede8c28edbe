#include "tools/devsim/DevsimSession.h"

#include "tools/devsim/BootLoader.h"
#include "tools/devsim/DevsimLog.h"
#include "tools/devsim/DevsimOptions.h"
#include "tools/devsim/InboundLine.h"
#include "tools/devsim/SimLink.h"
#include "tools/devsim/VirtualTracker.h"

#include "protocol/Frame.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QTimer>

DevsimSession::DevsimSession(const DevsimOptions &options, SimLink *link, QObject *parent)
    : QObject(parent)
    , m_link(link)
    , m_tracker(new VirtualTracker(this))
    , m_faults(new FaultInjector(faultSettings(options), this))
    , m_inbound(new InboundLine(options.baud, this))
    , m_statePath(options.statePath)
    , m_dropRequestsEvery(options.dropRequestsEvery)
    , m_nonsenseCode(VirtualTracker::writeCode(options.nonsenseSection))
    , m_nonsenseKind(options.nonsenseKind) {
    m_clock.start();
    // The device clock is set from the network at start, so it shows the real time.
    m_tracker->model().setStartUnixTime(quint32(QDateTime::currentSecsSinceEpoch()));
    m_tracker->setBlocked(options.blocked);
    m_tracker->setIgnoredWrites(options.ignoredWrites);
    m_tracker->setSilentReads(options.silentSections);

    connect(m_link, &SimLink::received, this, &DevsimSession::onReceived);
    connect(m_link, &SimLink::peerChanged, this, [this] {
        m_faults->restart();
        m_inbound->clear();
        m_requestReader.clear();
        m_tracker->logout();
    });
    connect(m_inbound, &InboundLine::arrived, this, &DevsimSession::onArrived);
    connect(m_link, &SimLink::finished, this, &DevsimSession::finished);
    connect(m_faults, &FaultInjector::write, m_link, &SimLink::write);
    connect(m_faults, &FaultInjector::hangUp, m_link, &SimLink::hangUp);
    connect(m_tracker, &VirtualTracker::stateChanged, this, [this] {
        if (m_saveTimer)
            m_saveTimer->start();
        else
            saveState();
    });
    connect(m_tracker, &VirtualTracker::firmwareUpdateRequested, this,
            &DevsimSession::onFirmwareUpdateRequested);

    BootLoader::Options bl;
    if (options.hasHwVersion)
        bl.hwVersion = options.hwVersion;
    if (options.hasFwVersion) {
        bl.fwMajor = options.fwMajor;
        bl.fwMiddle = options.fwMiddle;
        bl.fwBuild = options.fwBuild;
    }
    bl.corruptEvery = options.corruptEvery;
    m_bootLoader = new BootLoader(bl, this);
    connect(m_bootLoader, &BootLoader::send, m_faults, &FaultInjector::sendRaw);
    connect(m_bootLoader, &BootLoader::finished, this, [this] {
        qCInfo(lcDevsim) << "firmware written, the device starts again";
        m_requestReader.clear();
        m_tracker->logout();
    });
}

FaultInjector::Settings DevsimSession::faultSettings(const DevsimOptions &options) {
    FaultInjector::Settings s;
    s.silentEvery = options.silentEvery;
    s.truncateEvery = options.truncateEvery;
    s.garbageEvery = options.garbageEvery;
    s.split = options.split;
    s.latencyMs = options.latencyMs;
    s.baud = options.baud;
    s.hangupAfter = options.hangupAfter;
    return s;
}

void DevsimSession::onReceived(const QByteArray &bytes) {
    // The page packets are what a flash spends its time on, so the loader hears them at the line rate. A UNP
    // request's own line time is added to its answer instead; bytes that follow a page still on the line
    // queue behind it.
    if (m_bootLoader->active() || !m_inbound->idle())
        m_inbound->feed(bytes);
    else
        onArrived(bytes);
}

void DevsimSession::onArrived(const QByteArray &bytes) {
    if (m_bootLoader->active()) {
        m_bootLoader->receive(bytes);
        return;
    }
    const QList<proto::StreamDeframer::Item> requests = m_requestReader.feed(bytes, m_clock.elapsed());
    for (const proto::StreamDeframer::Item &r : requests) {
        if (m_dropRequestsEvery > 0 && ++m_requests % m_dropRequestsEvery == 0) {
            qCInfo(lcDevsim) << "request" << m_requests << "lost on the line";
            continue;
        }
        const bool confuse = m_nonsenseCode && r.payload.size() > proto::Frame::CodeOffset &&
                             (quint8(r.payload.at(proto::Frame::CodeOffset)) & 0x7F) == m_nonsenseCode;
        for (const QByteArray &frame : m_tracker->handle(r.type, r.payload))
            m_faults->sendAnswer(confuse ? FaultInjector::nonsense(m_nonsenseKind, frame) : frame,
                                 r.payload.size() + proto::Frame::Overhead);
    }
}

void DevsimSession::onFirmwareUpdateRequested() {
    qCInfo(lcDevsim) << "entering firmware-update mode";
    m_requestReader.clear();
    // The answer is already queued in the fault layer; the loader's first request follows it on the line.
    QMetaObject::invokeMethod(m_bootLoader, &BootLoader::start, Qt::QueuedConnection);
}

void DevsimSession::setSaveDelay(int ms) {
    delete m_saveTimer;
    m_saveTimer = nullptr;
    if (ms <= 0)
        return;
    m_saveTimer = new QTimer(this);
    m_saveTimer->setSingleShot(true);
    m_saveTimer->setInterval(ms);
    connect(m_saveTimer, &QTimer::timeout, this, [this] { saveState(); });
}

bool DevsimSession::loadState(QString *error) {
    if (m_statePath.isEmpty() || !QFile::exists(m_statePath))
        return true;
    QFile file(m_statePath);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("cannot read %1: %2").arg(m_statePath, file.errorString());
        return false;
    }
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (!doc.isObject()) {
        if (error)
            *error =
                QStringLiteral("%1 is not a device state: %2").arg(m_statePath, parseError.errorString());
        return false;
    }
    m_tracker->loadState(doc.object());
    qCInfo(lcDevsim).noquote() << "state loaded from" << m_statePath;
    return true;
}

bool DevsimSession::saveState(QString *error) {
    if (m_statePath.isEmpty())
        return true;
    QSaveFile file(m_statePath);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QJsonDocument(m_tracker->saveState()).toJson(QJsonDocument::Indented));
        if (file.commit())
            return true;
    }
    const QString text =
        QStringLiteral("cannot save the state to %1: %2").arg(m_statePath, file.errorString());
    qCWarning(lcDevsim).noquote() << text;
    if (error)
        *error = text;
    return false;
}
