#pragma once

#include "Devices/SnapshotStore.h"
#include "protocol/JobResult.h"

#include <QJsonObject>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <memory>

class Prompter;
class QMenu;
class QWidget;
class SessionController;
class VantorConfiguration;

// The window's side of safe writes: remembers the device's values as last read and the file the
// configuration came from, shows the changes in the write confirmation, saves a snapshot of the
// device before each write, reads the written sections back and reports a field that did not take
// ("не подтверждено"), and runs "История изменений…" and "Сравнить…".
class SafeWrites : public QObject {
    Q_OBJECT
public:
    SafeWrites(SessionController *session, VantorConfiguration *configuration, QWidget *window,
               std::shared_ptr<Prompter> prompter, QObject *parent = nullptr);
    ~SafeWrites() override;

    void setVerify(bool on) { m_verify = on; }
    // What the user is told at the end of `result`'s job: a read that checks a write reports as the
    // write's check. Asked before this object's own slot ends the check.
    QString reportText(const JobResult &result) const;
    bool deviceValuesKnown() const { return !m_known.isEmpty(); }
    const VantorConfiguration &deviceValues() const { return *m_device; }
    // The configuration was loaded from the file at `path`, or built anew (no file).
    void fileLoaded(const QString &path);
    void configurationReplaced();

    // The write confirmation with the changes of `sections`; on yes the choice is applied to the
    // configuration. False: write nothing.
    bool confirm(const QString &title, const QString &question, const QStringList &sections);
    // The confirmed write was `started` by the session (or refused): only a write that starts leaves the
    // device's values as a snapshot in the history and is read back.
    void writeStarted(bool started);

    // "История изменений…" and "Сравнить…"; a write they lead to goes through writeRequested().
    void showHistory();
    void showCompare();

signals:
    // The configuration holds what to write to `sections` (all of a full write when empty); the window
    // asks its usual confirmation and writes.
    void writeRequested(const QStringList &sections);

private:
    void onJobFinished(const JobResult &result);
    QString imei() const;
    QStringList knownSections() const;

    SessionController *m_session;
    VantorConfiguration *m_configuration;
    QWidget *m_window;
    std::shared_ptr<Prompter> m_prompter;
    kd::SnapshotStore m_store;
    VantorConfiguration *m_device;  // the device's values as last read
    VantorConfiguration *m_written; // what the last confirmed write sends, for the read-back
    QStringList m_writtenSections;
    std::unique_ptr<kd::Snapshot> m_pending;    // of the confirmed write, until it starts
    std::unique_ptr<kd::Snapshot> m_unfinished; // of the running write, until it ends
    QJsonObject m_fileRoot;
    bool m_fromFile = false;
    QSet<QString> m_known; // the sections whose device values were read
    bool m_verify = true;
    enum class Verify { Idle, AwaitWrite, AwaitRead } m_step = Verify::Idle;
};
