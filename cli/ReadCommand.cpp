#include "cli/ReadCommand.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/SessionController.h"

#include <QTextStream>

ReadCommand::ReadCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                         const QString &file, QTextStream &out, QTextStream &err, QObject *parent)
    : DeviceCommand(session, deadlineMs, out, err, parent)
    , m_configuration(configuration)
    , m_file(file) {}

void ReadCommand::run() {
    session()->readIdentity();
}

void ReadCommand::jobDone(const JobResult &result) {
    if (failed(result, QStringLiteral("конфигурация считана не полностью, файл не записан")))
        return;
    if (result.kind == JobResult::Kind::Identity) {
        session()->readAll();
        return;
    }
    const kd::ConfigurationFile::SaveResult saved = kd::ConfigurationFile::save(m_file, *m_configuration);
    if (!saved.ok()) {
        fail(QStringLiteral("не удалось записать файл %1: %2").arg(m_file, saved.errorString));
        return;
    }
    out() << QStringLiteral("Конфигурация считана в %1").arg(m_file) << '\n';
    finish(0);
}
