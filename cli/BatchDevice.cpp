#include "cli/BatchDevice.h"

#include "cli/FirmwareCommands.h"

#include "Devices/ConfigurationDiff.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "protocol/JobResult.h"
#include "protocol/LinkError.h"

namespace {

QString reasonOf(const JobResult &result) {
    switch (result.end) {
    case JobResult::End::LinkLost:
        return linkErrorText(result.failure);
    case JobResult::End::Blocked:
        return QStringLiteral("прибор заблокирован");
    case JobResult::End::WrongPassword:
        return QStringLiteral("неверный пароль");
    case JobResult::End::PasswordAbandoned:
        return QStringLiteral("прибор запросил пароль");
    default:
        break;
    }
    const QString summary = result.summary();
    return summary.isEmpty() ? QStringLiteral("нет ответа") : summary;
}

// The sections that the changes touch, in the order of the first change of each.
QStringList sectionsOf(const kd::ConfigurationDiff &diff) {
    QStringList sections;
    for (const kd::FieldChange &change : diff.changes) {
        if (change.field && !sections.contains(change.field->section))
            sections << change.field->section;
    }
    return sections;
}

} // namespace

BatchDevice::BatchDevice(const BatchPlan &plan, const QString &port, QObject *parent)
    : QObject(parent)
    , m_plan(plan)
    , m_session(new SessionController(&m_work, this))
    , m_flashLog(&m_flashText) {
    m_row.port = port;
    m_retry.setSingleShot(true);
    m_retry.setInterval(plan.retryIntervalMs);
    connect(&m_retry, &QTimer::timeout, this, &BatchDevice::reconnect);
    connect(m_session, &SessionController::jobFinished, this, &BatchDevice::onJobFinished);
    connect(m_session, &SessionController::linkFailed, this, &BatchDevice::onLinkFailed);
    connect(m_session, &SessionController::passwordRejected, this, [this] { m_wrongPassword = true; });
    connect(m_session, &SessionController::passwordRequested, this, [this] {
        fail(m_wrongPassword ? QStringLiteral("неверный пароль") : QStringLiteral("прибор запросил пароль"));
    });
    connect(m_session, &SessionController::connectionLost, this, [this] {
        if (m_step != Step::Flash)
            fail(QStringLiteral("прибор перестал отвечать"));
    });
}

BatchDevice::~BatchDevice() {
    // The session works on the configurations held here: it goes first.
    delete m_flash;
    delete m_session;
}

SessionController::Settings BatchDevice::settings() const {
    SessionController::Settings s;
    s.portName = m_row.port;
    s.hasPassword = m_plan.hasPassword;
    s.password = m_plan.password;
    s.connectTimeoutMs = m_plan.connectTimeoutMs;
    s.jobDeadlineMs = m_plan.jobDeadlineMs;
    return s;
}

void BatchDevice::start() {
    m_row.time = QDateTime::currentDateTime();
    m_step = Step::Identify;
    m_session->connectDevice(settings());
}

void BatchDevice::abandon(const QString &reason) {
    fail(reason);
}

void BatchDevice::skip() {
    m_skipped = true;
    fail(QStringLiteral("уже запрограммирован в этом запуске"));
}

void BatchDevice::onLinkFailed(const LinkFailure &failure) {
    if (m_step == Step::Done)
        return;
    // A tracker starting its new firmware is away for a while; its port may even vanish.
    if (m_step == Step::Reconnect && m_rebooting.elapsed() < m_plan.reconnectMs) {
        m_retry.start();
        return;
    }
    fail(linkErrorText(failure));
}

void BatchDevice::onJobFinished(const JobResult &result) {
    if (m_step == Step::Done)
        return;
    if (!result.ok()) {
        if (m_step == Step::Reconnect && m_rebooting.elapsed() < m_plan.reconnectMs) {
            m_session->disconnectDevice();
            m_retry.start();
            return;
        }
        // The flash owns the session while it runs and reports for itself.
        if (m_step != Step::Flash)
            fail(reasonOf(result));
        return;
    }
    switch (m_step) {
    case Step::Identify:
        onIdentity();
        break;
    case Step::ReadBefore:
        copyFields(m_before, m_work);
        if (m_plan.firmwareFile.isEmpty())
            startWrite();
        else
            startFlash();
        break;
    case Step::Reconnect:
        m_row.firmwareAfter = QString::number(m_work.deviceInfo()->Version());
        startWrite();
        break;
    case Step::Write:
        m_step = Step::Verify;
        m_session->readAll();
        break;
    case Step::Verify:
        verify();
        break;
    case Step::Flash:
    case Step::Done:
        break;
    }
}

void BatchDevice::onIdentity() {
    const kd::DeviceInfoConfiguration *info = m_work.deviceInfo();
    m_row.imei = info->IMEI();
    m_row.firmwareBefore = QString::number(info->Version());
    m_row.firmwareAfter = m_row.firmwareBefore;
    emit identified(m_row.imei);
    if (m_step == Step::Done)
        return;
    // A tracker the table does not list still gets the template; its row says it got nothing of its own.
    if (m_plan.hasOverrides && !m_plan.overrides.contains(m_row.imei))
        m_row.note = QStringLiteral("только шаблон: IMEI нет в таблице значений");
    m_step = Step::ReadBefore;
    m_session->readAll();
}

void BatchDevice::startFlash() {
    m_step = Step::Flash;
    m_flash = new FlashCommand(m_session, m_plan.firmwareFile, m_plan.flashQuietMs / 1000, m_flashLog, this);
    m_flash->setQuietTimeoutMs(m_plan.flashQuietMs);
    m_flash->setProgressBar(false);
    connect(m_flash, &FlashCommand::finished, this, [this](int exitCode) {
        m_flash->deleteLater();
        if (exitCode != FlashCommand::ExitOk) {
            m_flashLog.flush();
            fail(QStringLiteral("прошивка: %1").arg(m_flashText.trimmed().section(QLatin1Char('\n'), -1)));
            return;
        }
        // The tracker starts its new firmware: a fresh session once it answers again.
        m_step = Step::Reconnect;
        m_session->disconnectDevice();
        m_rebooting.start();
        m_retry.start();
    });
    m_flash->start();
}

void BatchDevice::reconnect() {
    if (m_step == Step::Reconnect)
        m_session->connectDevice(settings());
}

void BatchDevice::startWrite() {
    QJsonObject root = m_plan.templateRoot;
    QString error;
    if (m_plan.hasOverrides && !m_plan.overrides.apply(m_row.imei, &root, &error)) {
        fail(error);
        return;
    }
    m_target.read(root);
    // What the file cannot carry keeps the device's own values instead of zeros.
    kd::keepDeviceValues(m_target, m_before, kd::fieldsNotInFile(root));
    m_row.differed = sectionsOf(kd::ConfigurationDiff::compare(m_before, m_target, kd::writeAllSections()));
    kd::copyFields(m_work, m_target, false);
    m_step = Step::Write;
    m_session->writeAll();
}

void BatchDevice::verify() {
    const kd::ConfigurationDiff readBack =
        kd::ConfigurationDiff::compare(m_target, m_work, kd::writeAllSections());
    m_row.verification = readBack.isEmpty() ? BatchRow::Check::Passed : BatchRow::Check::Failed;
    if (readBack.isEmpty())
        pass();
    else
        fail(QStringLiteral("проверка: %1").arg(kd::mismatchLines(readBack).join(QStringLiteral("; "))));
}

void BatchDevice::pass() {
    m_row.passed = true;
    m_step = Step::Done;
    m_session->disconnectDevice();
    emit finished(m_row);
}

void BatchDevice::fail(const QString &reason) {
    if (m_step == Step::Done)
        return;
    m_step = Step::Done;
    m_retry.stop();
    m_row.passed = false;
    m_row.failure = reason;
    if (m_flash)
        m_flash->disconnect(this);
    m_session->disconnectDevice();
    emit finished(m_row);
}
