#include "tools/devsim/DevsimBench.h"

#include "tools/devsim/DevsimLog.h"
#include "tools/devsim/DevsimSession.h"
#include "tools/devsim/PtyLink.h"
#include "tools/devsim/VirtualTracker.h"

#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"

#include <QFileInfo>
#include <QTimer>

namespace {

// The type allocation code and the first serial digits of the default virtual tracker.
constexpr char ImeiPrefix[] = "86307101";
constexpr int ImeiSerialDigits = 6;
constexpr int SaveDelayMs = 300;

} // namespace

DevsimBench::DevsimBench(const DevsimOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options) {
    if (options.appearEverySec > 0) {
        m_appear = new QTimer(this);
        m_appear->setInterval(options.appearEverySec * 1000);
        connect(m_appear, &QTimer::timeout, this, [this] {
            QString error;
            if (!addTracker(&error))
                qCWarning(lcDevsim).noquote() << error;
        });
    }
}

bool DevsimBench::start(QString *error) {
    for (int i = 0; i < m_options.benchCount; ++i) {
        if (!addTracker(error))
            return false;
    }
    if (m_appear)
        m_appear->start();
    return true;
}

void DevsimBench::shutdown() {
    if (m_appear)
        m_appear->stop();
    for (DevsimSession *session : findChildren<DevsimSession *>(QString(), Qt::FindDirectChildrenOnly))
        session->saveState();
    for (SimLink *link : findChildren<SimLink *>(QString(), Qt::FindDirectChildrenOnly))
        link->shutdown();
}

QString DevsimBench::numberedPath(const QString &path, int n) {
    if (path.isEmpty())
        return path;
    const QFileInfo info(path);
    const QString suffix = info.completeSuffix();
    const QString number = QStringLiteral("-%1").arg(n);
    if (suffix.isEmpty() || info.fileName().startsWith(QLatin1Char('.')))
        return path + number;
    return path.left(path.size() - suffix.size() - 1) + number + QLatin1Char('.') + suffix;
}

QString DevsimBench::imei(int n) {
    const QString body =
        QLatin1String(ImeiPrefix) + QStringLiteral("%1").arg(n, ImeiSerialDigits, 10, QLatin1Char('0'));
    // Luhn: every second digit from the right of the body doubled.
    int sum = 0;
    for (int i = 0; i < body.size(); ++i) {
        int d = body.at(body.size() - 1 - i).digitValue();
        if (i % 2 == 0) {
            d *= 2;
            if (d > 9)
                d -= 9;
        }
        sum += d;
    }
    return body + QString::number((10 - sum % 10) % 10);
}

bool DevsimBench::addTracker(QString *error) {
    const int n = ++m_count;
    DevsimOptions options = m_options;
    options.linkPath = numberedPath(m_options.linkPath, n);
    options.statePath = numberedPath(m_options.statePath, n);

    auto *link = new PtyLink(options.linkPath, this);
    auto *session = new DevsimSession(options, link, this);
    session->setSaveDelay(SaveDelayMs);
    // A state file of an earlier run keeps its own IMEI.
    session->tracker()->configuration()->deviceInfo()->setIMEI(imei(n));
    if (!session->loadState(error) || !link->start(error)) {
        delete session;
        delete link;
        return false;
    }
    if (options.hasPassword)
        session->tracker()->setPassword(options.password);
    connect(session, &DevsimSession::finished, this, [session, link] {
        session->saveState();
        link->shutdown();
        session->deleteLater();
        link->deleteLater();
    });
    const QString id = session->tracker()->configuration()->deviceInfo()->IMEI();
    qCInfo(lcDevsim).noquote() << "device" << id << "ready at" << link->address();
    emit appeared(link->address(), id);
    return true;
}
