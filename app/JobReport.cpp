#include "app/JobReport.h"

#include "Devices/SectionKeys.h"
#include "Devices/SectionTable.h"

namespace {

// A section by the section table's name; telemetry requests by their own label.
QString sectionWord(const QString &key) {
    const kd::Section *section = key == kd::keys::ControlInfo ? nullptr : kd::sectionByKey(key);
    return section ? section->displayName : QString();
}

// The sections (commands by their own label) a job missed, each once however many of its requests went
// missing. A write the device refused or that never left is not written (`failed`); one sent but not answered
// (the link lost, the time out) may well have been taken (`unconfirmed`).
void missedNames(const JobResult &result, bool reading, QStringList *failed, QStringList *unconfirmed) {
    for (const JobResult::Request &r : result.requests) {
        if (r.outcome == JobResult::Outcome::Answered || r.outcome == JobResult::Outcome::Confirmed)
            continue;
        const QString word = sectionWord(r.sectionKey);
        const QString name = word.isEmpty() ? r.label : word;
        QStringList *list = !reading && r.outcome == JobResult::Outcome::NotAnswered ? unconfirmed : failed;
        if (!list->contains(name))
            *list << name;
    }
    for (const QString &name : qAsConst(*failed))
        unconfirmed->removeAll(name);
}

bool reported(const JobResult &result) {
    using End = JobResult::End;
    return result.end != End::Blocked && result.end != End::Cancelled && result.end != End::WrongPassword &&
           result.end != End::PasswordAbandoned;
}

} // namespace

QString jobReportText(const JobResult &result) {
    using Kind = JobResult::Kind;
    const bool reading = result.kind == Kind::ReadAll;
    if (!reading && result.kind != Kind::WriteAll && result.kind != Kind::WriteSection)
        return QString();
    if (!reported(result))
        return QString();
    QStringList failed;
    QStringList unconfirmed;
    missedNames(result, reading, &failed, &unconfirmed);
    QStringList lines;
    if (!failed.isEmpty())
        lines << (reading ? QStringLiteral("Не удалось считать: %1")
                          : QStringLiteral("Не удалось записать: %1"))
                     .arg(failed.join(QStringLiteral(", ")));
    if (!unconfirmed.isEmpty())
        lines << QStringLiteral("Записано без подтверждения: %1").arg(unconfirmed.join(QStringLiteral(", ")));
    return lines.join(QLatin1Char('\n'));
}

QString readBackReportText(const JobResult &readBack) {
    if (readBack.kind != JobResult::Kind::ReadAll || !reported(readBack))
        return QString();
    QStringList failed;
    QStringList unconfirmed;
    missedNames(readBack, true, &failed, &unconfirmed);
    if (failed.isEmpty())
        return QString();
    return QStringLiteral("Запись подтверждена прибором\nПроверка чтением: не удалось считать: %1")
        .arg(failed.join(QStringLiteral(", ")));
}

QString notWrittenText(const QStringList &names) {
    return QStringLiteral("Не будут записаны (значения не считаны из прибора и не загружены из файла): ") +
           names.join(QStringLiteral(", "));
}
