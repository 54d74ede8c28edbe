#include "cli/WriteCommand.h"

#include "protocol/SessionController.h"

#include <QTextStream>

WriteCommand::WriteCommand(SessionController *session, int deadlineMs, const QString &file, QTextStream &out,
                           QTextStream &err, QObject *parent)
    : DeviceCommand(session, deadlineMs, out, err, parent)
    , m_file(file) {}

void WriteCommand::run() {
    session()->writeAll();
}

void WriteCommand::jobDone(const JobResult &result) {
    if (failed(result, QStringLiteral("конфигурация записана не полностью")))
        return;
    out() << QStringLiteral("Конфигурация из %1 записана в прибор").arg(m_file) << '\n';
    finish(0);
}
