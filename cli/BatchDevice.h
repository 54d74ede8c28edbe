#pragma once

#include "cli/BatchReport.h"

#include "Devices/ConfigurationOverrides.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/SessionController.h"

#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QTextStream>
#include <QTimer>

class FlashCommand;
struct JobResult;
struct LinkFailure;

// What every tracker of a batch gets: the template, its per-device values, the firmware and the limits.
struct BatchPlan {
    QJsonObject templateRoot;
    kd::ConfigurationOverrides overrides;
    bool hasOverrides = false;
    QString firmwareFile;
    bool hasPassword = false;
    quint32 password = 0;
    int connectTimeoutMs = 5000;
    int jobDeadlineMs = 20000;
    int flashQuietMs = 10000;
    // How long a tracker that reboots after its firmware may take to answer again.
    int reconnectMs = 60000;
    int retryIntervalMs = 1000;
};

// One tracker of a batch on its own session: identify, read what it holds, optionally flash (and wait for
// it to come back), write the target, read it back and compare. Ends in finished() exactly once.
class BatchDevice : public QObject {
    Q_OBJECT
public:
    BatchDevice(const BatchPlan &plan, const QString &port, QObject *parent = nullptr);
    ~BatchDevice() override;

    void start();
    // Ends the run now with `reason` as the failure; nothing more is sent.
    void abandon(const QString &reason);
    // Ends the run without programming: the tracker was already programmed in this run.
    void skip();
    bool wasSkipped() const { return m_skipped; }
    QString port() const { return m_row.port; }

signals:
    // The tracker's IMEI is known; the owner may skip() it now.
    void identified(const QString &imei);
    void finished(const BatchRow &row);

private:
    enum class Step { Identify, ReadBefore, Flash, Reconnect, Write, Verify, Done };

    SessionController::Settings settings() const;
    void onJobFinished(const JobResult &result);
    void onLinkFailed(const LinkFailure &failure);
    void onIdentity();
    void startFlash();
    void reconnect();
    void startWrite();
    void verify();
    void pass();
    void fail(const QString &reason);

    const BatchPlan &m_plan;
    VantorConfiguration m_work;
    VantorConfiguration m_before;
    VantorConfiguration m_target;
    SessionController *m_session;
    QPointer<FlashCommand> m_flash;
    QString m_flashText;
    QTextStream m_flashLog;
    QTimer m_retry;
    QElapsedTimer m_rebooting;
    Step m_step = Step::Identify;
    BatchRow m_row;
    bool m_wrongPassword = false;
    bool m_skipped = false;
};
