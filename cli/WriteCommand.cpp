#include "cli/WriteCommand.h"

#include "cli/ConfigurationCommands.h"

#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/SnapshotStore.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/SessionController.h"

#include <QDir>
#include <QTextStream>

WriteCommand::WriteCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                           const ConfigurationSource &source, const Choices &choices, QTextStream &out,
                           QTextStream &err, QObject *parent)
    : DeviceCommand(session, deadlineMs, out, err, parent)
    , m_configuration(configuration)
    , m_source(source)
    , m_choices(choices)
    , m_err(err)
    , m_device(new VantorConfiguration(this))
    , m_written(new VantorConfiguration(this)) {}

WriteCommand::~WriteCommand() = default;

QString WriteCommand::sourceName() const {
    return m_source.kind == ConfigurationSource::Kind::Snapshot
               ? QStringLiteral("Конфигурация из снимка %1").arg(m_source.path)
               : QStringLiteral("Конфигурация из %1").arg(m_source.path);
}

void WriteCommand::run() {
    session()->readIdentity();
}

void WriteCommand::jobDone(const JobResult &result) {
    switch (m_step) {
    case Step::Identity:
        if (failed(result, QStringLiteral("прибор не ответил на запрос сведений, ничего не записано")))
            return;
        m_step = Step::ReadDevice;
        session()->readAll();
        return;
    case Step::ReadDevice:
        if (failed(result, QStringLiteral("настройки прибора считаны не полностью, ничего не записано")))
            return;
        deviceRead();
        return;
    case Step::Write: {
        if (failed(result, QStringLiteral("конфигурация записана не полностью")))
            return;
        m_snapshot.complete = true;
        QString error;
        if (!kd::SnapshotStore().rewrite(m_snapshot, &error))
            m_err << QStringLiteral("tavrel-cli: внимание: снимок не отмечен как завершенный: ") << error
                  << '\n';
        if (!m_choices.verify) {
            out() << QStringLiteral("%1 записана в прибор (без проверки чтением)").arg(sourceName()) << '\n';
            finish(0);
            return;
        }
        m_step = Step::Verify;
        session()->readAll();
        return;
    }
    case Step::Verify:
        if (failed(result,
                   QStringLiteral("конфигурация записана, но не подтверждено: прибор не ответил на чтение")))
            return;
        verified();
        return;
    }
}

void WriteCommand::deviceRead() {
    kd::copyFields(*m_device, *m_configuration);
    VantorConfiguration planned;
    const bool snapshot = m_source.kind == ConfigurationSource::Kind::Snapshot;
    // A section the snapshot does not carry was never read from the device: it keeps the device's values.
    if (snapshot)
        kd::copyFields(planned, *m_device);
    m_source.fill(planned);
    kd::WritePreview preview;
    preview.device = m_device;
    preview.planned = &planned;
    preview.sections = snapshot ? m_source.snapshot.carried(kd::writeAllSections()) : kd::writeAllSections();
    preview.keepDeviceValues = m_choices.keepDeviceValues;
    if (m_source.kind == ConfigurationSource::Kind::File) {
        preview.notInFile = kd::fieldsNotInFile(m_source.root, preview.sections);
        preview.modelWarning = kd::otherModelWarning(m_source.root, *m_device);
    }
    const QString imei = m_device->deviceInfo() ? m_device->deviceInfo()->IMEI() : QString();
    if (m_source.kind == ConfigurationSource::Kind::Snapshot && m_source.snapshot.imei != imei)
        m_err << QStringLiteral("tavrel-cli: внимание: снимок прибора %1, подключен прибор %2")
                     .arg(m_source.snapshot.imei, imei)
              << '\n';
    if (!preview.modelWarning.isEmpty())
        m_err << QStringLiteral("tavrel-cli: внимание: ") << preview.modelWarning << '\n';
    if (!preview.notInFile.isEmpty()) {
        QStringList paths;
        for (const kd::ConfigField *f : preview.notInFile)
            paths << f->path;
        m_err << (m_choices.keepDeviceValues
                      ? QStringLiteral("tavrel-cli: параметров нет в файле, остаются значения прибора: ")
                      : QStringLiteral("tavrel-cli: параметров нет в файле (--keep-device-values оставит "
                                       "значения прибора): "))
              << paths.join(QStringLiteral(", ")) << '\n';
    }
    preview.apply(*m_written);
    const kd::ConfigurationDiff diff = preview.diff();
    printChanges(diff, m_err);
    m_err << diff.summary() << '\n';
    if (m_choices.dryRun) {
        out() << QStringLiteral("Ничего не записано (--dry-run)") << '\n';
        finish(0);
        return;
    }

    m_snapshot = kd::Snapshot::capture(*m_device, kd::Snapshot::changesOf(diff));
    m_snapshot.programVersion = QStringLiteral(TAVREL_VERSION);
    m_snapshot.complete = false;
    QString error;
    const QString saved = kd::SnapshotStore().save(m_snapshot, &error);
    if (saved.isEmpty()) {
        fail(QStringLiteral("не удалось сохранить снимок настроек прибора, ничего не записано: %1")
                 .arg(error));
        return;
    }
    m_err << QStringLiteral("Снимок настроек прибора: %1").arg(QDir::toNativeSeparators(saved)) << '\n';
    kd::copyFields(*m_configuration, *m_written, false);
    m_step = Step::Write;
    session()->writeSections(preview.sections);
}

void WriteCommand::verified() {
    const kd::ConfigurationDiff mismatch =
        kd::ConfigurationDiff::compare(*m_written, *m_configuration, kd::writeAllSections());
    if (!mismatch.isEmpty()) {
        for (const QString &line : kd::mismatchLines(mismatch))
            m_err << QStringLiteral("tavrel-cli: ") << line << '\n';
        fail(QStringLiteral("конфигурация записана, но не подтверждено: параметров с другим значением: %1")
                 .arg(mismatch.changes.size()));
        return;
    }
    out() << QStringLiteral("%1 записана в прибор и подтверждена чтением").arg(sourceName()) << '\n';
    finish(0);
}
