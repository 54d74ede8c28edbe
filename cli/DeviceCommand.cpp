#include "cli/DeviceCommand.h"

#include "protocol/SessionController.h"

#include <QTextStream>

DeviceCommand::DeviceCommand(SessionController *session, int deadlineMs, QTextStream &out, QTextStream &err,
                             QObject *parent)
    : QObject(parent)
    , m_session(session)
    , m_deadlineMs(deadlineMs)
    , m_out(out)
    , m_err(err) {}

DeviceCommand::~DeviceCommand() = default;

void DeviceCommand::start() {
    connect(m_session, &SessionController::jobFinished, this, [this](const JobResult &result) {
        if (!m_finished)
            jobDone(result);
    });
    run();
}

bool DeviceCommand::failed(const JobResult &result, const QString &incomplete) {
    const QString summary = result.summary();
    auto join = [&summary](const QString &head) {
        return summary.isEmpty() ? head
               : head.isEmpty()  ? summary
                                 : QStringLiteral("%1; %2").arg(head, summary);
    };
    switch (result.end) {
    case JobResult::End::Done:
        break;
    case JobResult::End::LinkLost:
        fail(join(linkErrorText(result.failure)));
        return true;
    case JobResult::End::Blocked:
        fail(QStringLiteral("прибор заблокирован, повторите попытку позже"));
        return true;
    case JobResult::End::WrongPassword:
        fail(QStringLiteral("неверный пароль"));
        return true;
    case JobResult::End::PasswordAbandoned:
        fail(QStringLiteral("прибор запрашивает пароль, укажите его параметром --password"));
        return true;
    case JobResult::End::Deadline: {
        const QString seconds = QString::number(m_deadlineMs / 1000.0, 'g', 4);
        const QString head = QStringLiteral("прибор не ответил за %1 с").arg(seconds);
        fail(summary.isEmpty() ? head : QStringLiteral("%1, %2").arg(head, summary));
        return true;
    }
    case JobResult::End::Cancelled:
        fail(QStringLiteral("прервано"));
        return true;
    }
    if (result.ok())
        return false;
    fail(incomplete.isEmpty() ? summary : QStringLiteral("%1: %2").arg(incomplete, summary));
    return true;
}

void DeviceCommand::cancel(int exitCode) {
    finish(exitCode);
}

void DeviceCommand::fail(const QString &message) {
    if (m_finished)
        return;
    m_err << QStringLiteral("tavrel-cli: ") << message << '\n';
    m_err.flush();
    finish(1);
}

void DeviceCommand::finish(int exitCode) {
    if (m_finished)
        return;
    m_finished = true;
    m_out.flush();
    emit finished(exitCode);
}
