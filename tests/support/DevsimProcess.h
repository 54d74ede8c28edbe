#pragma once

#include <QProcess>
#include <QStringList>
#include <QtTest>

#include <csignal>

// The virtual tracker as a program, for the length of a test. Its first line says where it can be reached
// (its pseudo-terminal, or host:port with --tcp); stop() sends SIGTERM, as a user would, so that it saves
// its --state file.
class DevsimProcess {
public:
    ~DevsimProcess() { stop(); }

    bool start(const QStringList &args) {
        m_process.start(QStringLiteral(TAVREL_BINARY_DIR "/tools/devsim/tavrel-devsim"), args);
        if (!QTest::qWaitFor(
                [this] { return m_process.canReadLine() || m_process.state() == QProcess::NotRunning; },
                5000))
            return false;
        m_address = QString::fromLocal8Bit(m_process.readLine()).trimmed();
        return !m_address.isEmpty();
    }

    // The exit code; -1 when it had to be killed.
    int stop() {
        if (m_process.state() != QProcess::NotRunning)
            ::kill(pid_t(m_process.processId()), SIGTERM);
        if (!m_process.waitForFinished(5000) && m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(1000);
        }
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }

    QString address() const { return m_address; }
    QProcess &process() { return m_process; }

private:
    QProcess m_process;
    QString m_address;
};
