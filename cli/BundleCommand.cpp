#include "cli/BundleCommand.h"

#include "support/SupportBundle.h"

#include "Devices/VantorConfiguration.h"
#include "protocol/SessionController.h"

#include <QSettings>
#include <QTextStream>

BundleCommand::BundleCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                             const QString &file, bool hasPassword, quint32 password, QTextStream &out,
                             QTextStream &err, QObject *parent)
    : DeviceCommand(session, deadlineMs, out, err, parent)
    , m_configuration(configuration)
    , m_file(file) {
    if (hasPassword)
        m_secrets << QString::number(password);
}

void BundleCommand::run() {
    session()->readIdentity();
}

void BundleCommand::jobDone(const JobResult &result) {
    const bool complete = result.end == JobResult::End::Done &&
                          result.labels(JobResult::Outcome::NotAnswered).isEmpty() &&
                          result.labels(JobResult::Outcome::NotSent).isEmpty();
    if (!complete)
        m_gaps << result.summary();
    // Identity, then the whole configuration, then one telemetry round; a job cut short ends the series.
    const bool goOn = result.end == JobResult::End::Done;
    if (goOn && result.kind == JobResult::Kind::Identity && session()->readAll())
        return;
    if (goOn && result.kind == JobResult::Kind::ReadAll && session()->telemetryRound())
        return;
    writeBundle();
}

void BundleCommand::writeBundle() {
    // The window's own settings store, whichever program writes the report.
    QSettings settings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Tavrel"),
                       QStringLiteral("Tavrel_micro_cfg"));
    QString error;
    const auto members =
        SupportBundle::collect(*m_configuration, QStringLiteral("tavrel-cli"), settings, m_secrets);
    if (!SupportBundle::write(m_file, members, &error)) {
        fail(QStringLiteral("не удалось записать файл %1: %2").arg(m_file, error));
        return;
    }
    out() << QStringLiteral("Отчет для поддержки записан в %1").arg(m_file) << '\n';
    if (m_gaps.isEmpty())
        finish(0);
    else
        fail(QStringLiteral("в отчете не все сведения: %1").arg(m_gaps.join(QStringLiteral("; "))));
}
