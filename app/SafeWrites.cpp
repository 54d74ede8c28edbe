#include "app/SafeWrites.h"

#include "app/CompareDialog.h"
#include "app/HistoryDialog.h"
#include "app/JobReport.h"
#include "app/Prompter.h"

#include "Devices/ConfigurationDiff.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/SessionController.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QSet>

SafeWrites::SafeWrites(SessionController *session, VantorConfiguration *configuration, QWidget *window,
                       std::shared_ptr<Prompter> prompter, QObject *parent)
    : QObject(parent)
    , m_session(session)
    , m_configuration(configuration)
    , m_window(window)
    , m_prompter(std::move(prompter))
    , m_device(new VantorConfiguration(this))
    , m_written(new VantorConfiguration(this)) {
    connect(m_session, &SessionController::jobFinished, this, &SafeWrites::onJobFinished);
}

SafeWrites::~SafeWrites() = default;

QString SafeWrites::imei() const {
    const kd::DeviceInfoConfiguration *d = m_configuration->deviceInfo();
    return d ? d->IMEI() : QString();
}

QStringList SafeWrites::knownSections() const {
    QStringList known = m_known.values();
    known.sort();
    return known;
}

void SafeWrites::fileLoaded(const QString &path) {
    QFile file(path);
    m_fromFile = file.open(QIODevice::ReadOnly);
    m_fileRoot = QJsonDocument::fromJson(file.readAll()).object();
}

void SafeWrites::configurationReplaced() {
    m_fileRoot = QJsonObject();
    m_fromFile = false;
}

bool SafeWrites::confirm(const QString &title, const QString &question, const QStringList &sections) {
    // A confirmation whose write was then refused leaves no snapshot for the next write to save.
    m_pending.reset();
    // The changes can only be shown against values read from the device.
    for (const QString &key : sections) {
        if (!m_known.contains(key))
            return m_prompter->question(m_window, title, question);
    }
    kd::WritePreview preview;
    preview.device = m_device;
    preview.planned = m_configuration;
    preview.sections = sections;
    if (m_fromFile) {
        preview.notInFile = kd::fieldsNotInFile(m_fileRoot, sections);
        preview.modelWarning = kd::otherModelWarning(m_fileRoot, *m_device);
    }
    if (!m_prompter->writePreview(m_window, title, question, &preview))
        return false;
    if (preview.keepDeviceValues)
        kd::keepDeviceValues(*m_configuration, *m_device, preview.notInFile);
    const kd::ConfigurationDiff diff = kd::ConfigurationDiff::compare(*m_device, *m_configuration, sections);
    m_pending = std::make_unique<kd::Snapshot>(
        kd::Snapshot::capture(*m_device, kd::Snapshot::changesOf(diff), knownSections()));
    m_pending->programVersion = QCoreApplication::applicationVersion();
    kd::copyFields(*m_written, *m_configuration);
    m_writtenSections = sections;
    return true;
}

void SafeWrites::writeStarted(bool started) {
    std::unique_ptr<kd::Snapshot> snapshot = std::move(m_pending);
    if (!started || !snapshot)
        return;
    snapshot->complete = false;
    QString error;
    if (m_store.save(*snapshot, &error).isEmpty())
        m_prompter->warning(m_window, QStringLiteral("История изменений"),
                            QStringLiteral("Не удалось сохранить снимок настроек прибора: %1").arg(error));
    else
        m_unfinished = std::move(snapshot);
    m_step = m_verify ? Verify::AwaitWrite : Verify::Idle;
}

QString SafeWrites::reportText(const JobResult &result) const {
    return m_step == Verify::AwaitRead && result.kind == JobResult::Kind::ReadAll ? readBackReportText(result)
                                                                                  : jobReportText(result);
}

void SafeWrites::onJobFinished(const JobResult &result) {
    switch (result.kind) {
    case JobResult::Kind::ReadAll: {
        // A section is the device's when every request of it brought its data, whatever became of others.
        QSet<QString> missed;
        for (const JobResult::Request &r : result.requests) {
            if (r.outcome != JobResult::Outcome::Answered)
                missed.insert(r.sectionKey);
        }
        QStringList arrived;
        for (const JobResult::Request &r : result.requests) {
            if (!r.sectionKey.isEmpty() && !missed.contains(r.sectionKey) && !arrived.contains(r.sectionKey))
                arrived << r.sectionKey;
        }
        if (m_step == Verify::AwaitRead) {
            m_step = Verify::Idle;
            // What did not come back is named by the window's own report of the read.
            QStringList checked;
            for (const QString &key : qAsConst(m_writtenSections)) {
                if (arrived.contains(key))
                    checked << key;
            }
            if (!checked.isEmpty()) {
                const kd::ConfigurationDiff mismatch =
                    kd::ConfigurationDiff::compare(*m_written, *m_configuration, checked);
                if (!mismatch.isEmpty())
                    m_prompter->warning(m_window, QStringLiteral("Проверка записи"),
                                        QStringLiteral("Записано, но не подтверждено чтением:\n") +
                                            kd::mismatchLines(mismatch).join('\n'));
                else
                    kd::trafficLog(QStringLiteral("Запись подтверждена чтением"));
            }
        }
        if (!arrived.isEmpty()) {
            kd::copyFields(*m_device, *m_configuration, true, arrived);
            m_known.unite(QSet<QString>(arrived.begin(), arrived.end()));
        }
        if (result.ok())
            configurationReplaced();
        return;
    }
    case JobResult::Kind::WriteAll:
    case JobResult::Kind::WriteSection:
        if (const std::unique_ptr<kd::Snapshot> snapshot = std::move(m_unfinished)) {
            // A rewrite that fails leaves the snapshot marked unfinished: the safe side.
            snapshot->complete = result.ok();
            if (snapshot->complete)
                m_store.rewrite(*snapshot);
        }
        if (m_step != Verify::AwaitWrite)
            return;
        m_step = Verify::Idle;
        if (result.ok() && m_session->readAll())
            m_step = Verify::AwaitRead;
        return;
    default:
        return;
    }
}

void SafeWrites::showHistory() {
    HistoryDialog dialog(m_store, imei(), m_window);
    if (dialog.exec() != QDialog::Accepted || !dialog.chosen())
        return;
    const kd::Snapshot *chosen = dialog.chosen();
    chosen->applyTo(*m_configuration);
    configurationReplaced();
    // A section the snapshot does not carry was never read from the device: it is not written back.
    const QStringList sections = chosen->carried(kd::writeAllSections());
    if (!sections.isEmpty())
        emit writeRequested(chosen->sections.isEmpty() ? QStringList() : sections);
}

void SafeWrites::showCompare() {
    CompareDialog dialog(m_known.isEmpty() ? nullptr : m_device, m_configuration, m_store, imei(),
                         knownSections(), m_window);
    if (dialog.exec() != QDialog::Accepted || !dialog.writeSource())
        return;
    QSet<QString> sections;
    // Only the ticked fields change: everything else is written with the device's own values.
    kd::copyFields(*m_configuration, *m_device, false);
    for (const kd::ConfigField *f : dialog.ticked()) {
        f->assign(*m_configuration, f->rawValue(*dialog.writeSource()));
        sections.insert(f->section);
    }
    configurationReplaced();
    emit writeRequested(sections.values());
}
