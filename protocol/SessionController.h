#pragma once

#include "protocol/JobResult.h"
#include "protocol/LinkError.h"

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class Connection;
class DeviceWorkflows;

namespace kd {
class Configuration;
}

// One device session as the user sees it: opens the link a settings record names, identifies the device,
// answers its password question, runs one job at a time and notices a device that went away, whatever
// the cause. The window and the command-line tool only render its states and job results.
class SessionController : public QObject {
    Q_OBJECT
public:
    enum class State {
        Disconnected,
        Connecting,
        Identifying,
        PasswordRequired,
        Ready,
        Busy, // a job other than a telemetry round is running
        Lost, // the link failed, or the device stopped answering while the link stays open
    };
    Q_ENUM(State)

    struct Settings {
        bool remote = false;
        QString portName; // empty: the one port carrying the device's USB identifiers
        QString host;
        quint16 port = 0;
        QString imei;
        // The start-up password: sent once, when the device first asks for one.
        bool hasPassword = false;
        quint32 password = 0;
        int responseIntervalMs = 3000;
        bool identify = true;     // read the device's identity once the link is up
        int connectTimeoutMs = 0; // the link must be up by then (0: no limit)
        int jobDeadlineMs = 0;    // a job still missing answers then ends (0: no limit)
        // How often a job asks again for what did not come (0: until its deadline).
        int jobRounds = 2;
        // Requests on the line at once (0: the device's default; 1: each waits for the answer before it).
        int window = 0;
    };

    explicit SessionController(kd::Configuration *configuration, QObject *parent = nullptr);
    ~SessionController() override;

    // Tests put their own link in place of the serial or TCP one.
    void setLinkFactory(std::function<Connection *(const Settings &)> factory);

    State state() const;
    const Settings &settings() const;
    bool isIdentified() const;
    // Ready, and the device identified unless the settings skip that: what the device commands need.
    bool isReadyForJobs() const;
    // Why the session was last lost; None while it is up.
    LinkFailure lastFailure() const;
    // The open link, for the firmware transfer that shares it; null when there is none.
    Connection *link() const;
    // Offered every received chunk first; returning true claims it (the firmware loader's page channel).
    void setFirmwareHandler(std::function<bool(const QByteArray &chunk)> handler);

    void connectDevice(const Settings &settings);
    // Closes the link; a running job ends cut short. Also how the user gives up on a silent device.
    void disconnectDevice();

    // The answer to passwordRequested(): the password, or giving up (the link is then closed; late answers
    // to the abandoned login are ignored).
    void submitPassword(quint32 password);
    void abandonLogin();

    // Jobs. False, with nothing sent, when the session is not ready for one. Read all and write all empty
    // the queue first (pending telemetry polls included); nothing queued before fires later.
    bool readIdentity();
    bool readAll();
    bool writeAll();
    // Some of the sections of the full write (all when empty), in its order (a job of the full write's kind).
    bool writeSections(const QStringList &keys);
    // One section by its key ("NavConfiguration", "ServerConfiguration", ...).
    bool writeSection(const QString &key);
    // A page's own write of `key`: `enqueue` puts its requests into the queue.
    bool writeWith(const QString &key, const std::function<void(DeviceWorkflows &)> &enqueue);
    bool clearMemory();
    bool resetSettings();
    bool setPassword(quint32 newPassword);
    // One round of the telemetry requests; the state stays Ready, and any other job replaces it. Also
    // allowed while a silent device is waited for (state Lost, link open): its answer brings the session
    // back.
    bool telemetryRound();
    // The switch into the boot loader; the job stays running until finishFirmwareUpdate().
    bool enterFirmwareUpdate();
    void finishFirmwareUpdate();
    // Ends the running job now; nothing more of it is sent.
    void cancelJob();
    bool isJobRunning() const;

signals:
    void stateChanged(SessionController::State state);
    // The device wants a password and the start-up one is spent or missing.
    void passwordRequested();
    // The device refused a password; said once per try, with the device's status text.
    void passwordRejected(const QString &text);
    void passwordAccepted();
    // The device refused work ("Прибор заблокирован"). A reset the device applies only after a power cycle
    // ends the same way, with that text.
    void deviceBlocked(const QString &powerCycleText);
    // The link failed, closed by itself or did not come up; lastFailure() holds the same.
    void linkFailed(const LinkFailure &failure);
    // The device stopped answering while the link stays open (state Lost): an answer brings it back
    // (connectionRestored), disconnectDevice() gives up.
    void connectionLost();
    void connectionRestored();
    void identified();
    // A section decoded from an answer (its answer code) and a telemetry record (its kind).
    void sectionDecoded(int code);
    void telemetryDecoded(int kind);
    void jobProgress(int done, int total);
    void jobFinished(const JobResult &result);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
