#pragma once

#include "cli/DeviceCommand.h"

#include <QStringList>

class VantorConfiguration;

// `bundle -o FILE.zip`: the identity, the whole configuration and one telemetry round, then the support
// archive (SupportBundle). A device that leaves answers out or drops the link still gets its archive
// with what came: that is when support needs it most; what is missing is named on stderr (exit 1).
class BundleCommand : public DeviceCommand {
    Q_OBJECT
public:
    BundleCommand(SessionController *session, VantorConfiguration *configuration, int deadlineMs,
                  const QString &file, bool hasPassword, quint32 password, QTextStream &out, QTextStream &err,
                  QObject *parent = nullptr);

protected:
    void run() override;
    void jobDone(const JobResult &result) override;

private:
    void writeBundle();

    VantorConfiguration *m_configuration;
    QString m_file;
    QStringList m_secrets;
    QStringList m_gaps;
};
