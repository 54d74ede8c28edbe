#include "app/JobReport.h"

#include "Devices/SectionKeys.h"

#include <QHash>

namespace {

QString sectionWord(const QString &key) {
    static const QHash<QString, QString> words{
        {kd::keys::System, QStringLiteral("системные параметры")},
        {kd::keys::Navigation, QStringLiteral("навигация")},
        {kd::keys::Gsm, QStringLiteral("GSM")},
        {kd::keys::Server, QStringLiteral("серверы")},
        {kd::keys::Agc, QStringLiteral("аналоговые входы")},
        {kd::keys::Logic, QStringLiteral("логические входы")},
        {kd::keys::Fuel, QStringLiteral("топливо")},
        {kd::keys::Output, QStringLiteral("выходы")},
        {kd::keys::MainDeviceInfo, QStringLiteral("сведения о приборе")},
    };
    return words.value(key);
}

} // namespace

QString jobReportText(const JobResult &result) {
    using End = JobResult::End;
    using Kind = JobResult::Kind;
    const bool reading = result.kind == Kind::ReadAll;
    if (!reading && result.kind != Kind::WriteAll && result.kind != Kind::WriteSection)
        return QString();
    if (result.end == End::Blocked || result.end == End::Cancelled || result.end == End::WrongPassword ||
        result.end == End::PasswordAbandoned)
        return QString();
    // Each section once, however many of its requests went missing; commands by their own label. A write
    // the device refused or that never left is not written; one sent but not answered (the link lost, the
    // time out) may well have been taken.
    QStringList failed;
    QStringList unconfirmed;
    for (const JobResult::Request &r : result.requests) {
        if (r.outcome == JobResult::Outcome::Answered || r.outcome == JobResult::Outcome::Confirmed)
            continue;
        const QString word = sectionWord(r.sectionKey);
        const QString name = word.isEmpty() ? r.label : word;
        if (!reading && r.outcome == JobResult::Outcome::NotAnswered) {
            if (!unconfirmed.contains(name))
                unconfirmed << name;
        } else if (!failed.contains(name)) {
            failed << name;
        }
    }
    for (const QString &name : qAsConst(failed))
        unconfirmed.removeAll(name);
    QStringList lines;
    if (!failed.isEmpty())
        lines << (reading ? QStringLiteral("Не удалось считать: %1")
                          : QStringLiteral("Не удалось записать: %1"))
                     .arg(failed.join(QStringLiteral(", ")));
    if (!unconfirmed.isEmpty())
        lines << QStringLiteral("Записано без подтверждения: %1").arg(unconfirmed.join(QStringLiteral(", ")));
    return lines.join(QLatin1Char('\n'));
}

QString notWrittenText(const QStringList &names) {
    return QStringLiteral("Не будут записаны (значения не считаны из прибора и не загружены из файла): ") +
           names.join(QStringLiteral(", "));
}
