#include "cli/DiffCommand.h"

#include "cli/ConfigurationCommands.h"

#include "Devices/ConfigurationDiff.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/SessionController.h"

DiffCommand::DiffCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                         const ConfigurationSource &a, const ConfigurationSource &b, QTextStream &out,
                         QTextStream &err, QObject *parent)
    : DeviceCommand(session, deadlineMs, out, err, parent)
    , m_configuration(configuration)
    , m_a(a)
    , m_b(b) {}

void DiffCommand::run() {
    session()->readAll();
}

void DiffCommand::jobDone(const JobResult &result) {
    if (failed(result, QStringLiteral("настройки прибора считаны не полностью")))
        return;
    VantorConfiguration a, b;
    for (auto side : {std::make_pair(&m_a, &a), std::make_pair(&m_b, &b)}) {
        if (side.first->kind == ConfigurationSource::Kind::Device)
            kd::copyFields(*side.second, *m_configuration);
        else
            side.first->fill(*side.second);
    }
    const kd::ConfigurationDiff diff = kd::ConfigurationDiff::compare(a, b);
    printChanges(diff, out());
    finish(diff.isEmpty() ? 0 : 1);
}
