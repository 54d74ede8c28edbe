#include "cli/BatchCommand.h"

#include "cli/CliOptions.h"
#include "cli/ConfigurationSource.h"
#include "update/FirmwareImage.h"

#include <QTextStream>

bool BatchCommand::loadPlan(const CliOptions &options, BatchPlan *plan, QString *error) {
    ConfigurationSource source;
    if (!ConfigurationSource::load(options.templateFile, &source, error))
        return false;
    if (source.kind != ConfigurationSource::Kind::File) {
        *error = QStringLiteral("шаблон %1 - не файл конфигурации").arg(options.templateFile);
        return false;
    }
    plan->templateRoot = source.root;
    if (!options.overridesFile.isEmpty()) {
        if (!kd::ConfigurationOverrides::read(options.overridesFile, &plan->overrides, error))
            return false;
        if (!plan->overrides.check(plan->templateRoot, error)) {
            *error = QStringLiteral("%1: %2").arg(options.overridesFile, *error);
            return false;
        }
        plan->hasOverrides = true;
    }
    if (!options.flashFile.isEmpty()) {
        FirmwareImage image;
        const FirmwareImage::LoadResult loaded = image.load(options.flashFile);
        if (loaded != FirmwareImage::Loaded) {
            *error = FirmwareImage::failureText(options.flashFile, loaded);
            return false;
        }
        plan->firmwareFile = options.flashFile;
    }
    plan->hasPassword = options.hasPassword;
    plan->password = options.password;
    if (options.timeoutMs > 0)
        plan->jobDeadlineMs = options.timeoutMs;
    return true;
}

BatchCommand::BatchCommand(const BatchPlan &plan, const PortSelection &ports, bool waitNew,
                           const QString &reportPath, QTextStream &out, QTextStream &err, QObject *parent)
    : QObject(parent)
    , m_plan(plan)
    , m_watcher(ports)
    , m_waitNew(waitNew)
    , m_reportPath(reportPath)
    , m_out(out)
    , m_err(err) {
    connect(&m_watcher, &PortWatcher::appeared, this, &BatchCommand::program);
    connect(&m_watcher, &PortWatcher::disappeared, this, &BatchCommand::onUnplugged);
}

void BatchCommand::start() {
    if (m_waitNew) {
        m_err << QStringLiteral("Ожидание приборов (Ctrl+C - завершить)") << '\n';
        m_err.flush();
        m_watcher.start();
        return;
    }
    // One look at the ports: every tracker there is started before any result is counted.
    m_starting = true;
    m_watcher.poll();
    m_starting = false;
    if (m_watcher.ports().isEmpty()) {
        m_err << QStringLiteral("tavrel-cli: Нет подключенных приборов") << '\n';
        saveReport();
        m_finished = true;
        emit finished(1);
        return;
    }
    finishIfDone();
}

void BatchCommand::interrupt() {
    m_stopping = true;
    m_watcher.stop();
    const QList<BatchDevice *> devices = m_active.values();
    for (BatchDevice *device : devices)
        device->abandon(QStringLiteral("прервано"));
    finishIfDone();
}

void BatchCommand::program(const QString &port) {
    if (m_stopping || m_active.contains(port))
        return;
    auto *device = new BatchDevice(m_plan, port, this);
    m_active.insert(port, device);
    connect(device, &BatchDevice::identified, this,
            [this, device](const QString &imei) { onIdentified(device, imei); });
    connect(device, &BatchDevice::finished, this,
            [this, device](const BatchRow &row) { onDeviceFinished(device, row); });
    device->start();
}

void BatchCommand::onUnplugged(const QString &port) {
    m_err << QStringLiteral("%1: прибор отключен").arg(port) << '\n';
    m_err.flush();
}

void BatchCommand::onIdentified(BatchDevice *device, const QString &imei) {
    // A tracker plugged in again, or seen on two ports, is programmed once.
    if (m_imeis.contains(imei)) {
        device->skip();
        return;
    }
    m_imeis.insert(imei);
}

void BatchCommand::onDeviceFinished(BatchDevice *device, const BatchRow &row) {
    m_active.remove(device->port());
    device->deleteLater();
    if (device->wasSkipped()) {
        m_err << QStringLiteral("%1 (%2): уже запрограммирован, пропущен").arg(row.imei, row.port) << '\n';
        m_err.flush();
        return;
    }
    m_rows << row;
    m_out << row.line() << '\n';
    m_out.flush();
    // On the bench the report follows each tracker, so a run stopped any time leaves it complete; a run
    // over the trackers present writes it once at the end (writing it is a disk flush that holds up the
    // other trackers' exchanges).
    if (m_waitNew)
        saveReport();
    finishIfDone();
}

void BatchCommand::saveReport() {
    QString error;
    if (!BatchReport::save(m_reportPath, m_rows, &error)) {
        m_err << error << '\n';
        m_err.flush();
    }
}

void BatchCommand::finishIfDone() {
    if (m_finished || m_starting || !m_active.isEmpty() || (m_waitNew && !m_stopping))
        return;
    m_finished = true;
    bool allPassed = !m_rows.isEmpty();
    for (const BatchRow &row : m_rows)
        allPassed = allPassed && row.passed;
    saveReport();
    emit finished(allPassed ? 0 : 1);
}
