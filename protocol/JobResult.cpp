#include "protocol/JobResult.h"

namespace {

void addUnique(QStringList &list, const QString &label) {
    if (!list.contains(label))
        list << label;
}

} // namespace

bool JobResult::ok() const {
    if (end != End::Done)
        return false;
    for (const Request &r : requests) {
        if (r.outcome != Outcome::Answered && r.outcome != Outcome::Confirmed)
            return false;
    }
    return true;
}

QStringList JobResult::labels(Outcome outcome) const {
    QStringList list;
    for (const Request &r : requests) {
        if (r.outcome == outcome)
            addUnique(list, outcome == Outcome::Refused ? QStringLiteral("%1 (%2)").arg(r.label, r.status)
                                                        : r.label);
    }
    return list;
}

QStringList JobResult::failedLabels() const {
    QStringList list;
    for (const Request &r : requests) {
        if (r.outcome != Outcome::Answered && r.outcome != Outcome::Confirmed)
            addUnique(list, r.label);
    }
    return list;
}

bool JobResult::passwordMayBeInForce() const {
    if (kind != Kind::SetPassword)
        return false;
    for (const Request &r : requests) {
        if (r.outcome == Outcome::NotAnswered)
            return true;
    }
    return false;
}

QString JobResult::summary() const {
    QStringList parts;
    auto add = [&parts](const QString &title, const QStringList &labels) {
        if (!labels.isEmpty())
            parts << QStringLiteral("%1: %2").arg(title, labels.join(QStringLiteral(", ")));
    };
    if (end == End::LinkLost) {
        // Cut short: the user must know what the device already has.
        add(QStringLiteral("получено"), labels(Outcome::Answered));
        add(QStringLiteral("подтверждено"), labels(Outcome::Confirmed));
        add(QStringLiteral("отправлено без подтверждения"), labels(Outcome::NotAnswered));
        add(QStringLiteral("отказ"), labels(Outcome::Refused));
        add(QStringLiteral("не отправлено"), labels(Outcome::NotSent));
    } else {
        add(QStringLiteral("нет ответа"), labels(Outcome::NotAnswered) + labels(Outcome::NotSent));
        add(QStringLiteral("отказ"), labels(Outcome::Refused));
    }
    if (passwordMayBeInForce())
        parts << QStringLiteral("новый пароль мог уже вступить в силу");
    return parts.join(QStringLiteral("; "));
}
