#pragma once

#include "cli/ConfigurationSource.h"
#include "cli/DeviceCommand.h"

#include "Devices/ConfigurationDiff.h"
#include "Devices/Snapshot.h"

class VantorConfiguration;

// `write FILE` and `restore SNAPSHOT`: reads the device first, prints to stderr what the write changes
// (and what a file could not carry), saves the device's values as a snapshot, writes every section the
// full write sends and, unless told not to, reads them back and compares. Each write counts only once the
// device's status answer to that very request confirms it; the outputs are not part of it.
class WriteCommand : public DeviceCommand {
    Q_OBJECT
public:
    struct Choices {
        bool dryRun = false;
        bool keepDeviceValues = false;
        bool verify = true;
    };

    WriteCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                 const ConfigurationSource &source, const Choices &choices, QTextStream &out,
                 QTextStream &err, QObject *parent = nullptr);
    ~WriteCommand() override;

protected:
    void run() override;
    void jobDone(const JobResult &result) override;

private:
    enum class Step { Identity, ReadDevice, Write, Verify };
    void deviceRead();
    void verified();
    QString sourceName() const;

    VantorConfiguration *m_configuration;
    ConfigurationSource m_source;
    Choices m_choices;
    QTextStream &m_err;
    Step m_step = Step::Identity;
    VantorConfiguration *m_device;  // the device's values as read before the write
    VantorConfiguration *m_written; // what was written
    kd::Snapshot m_snapshot;        // the device's values before the write, marked once it went through
};
