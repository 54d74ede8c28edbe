#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class DeviceUpdater;
class FirmwareImage;
class QTextStream;
class SessionController;
class QTimer;

// `fwinfo FILE.bsk`: prints "pages P", then "build X.Y.Z" per compatible build and "hardware A.B.C.D" per
// hardware version, in file order. Exit 0, or 10 + the loader's result code on a file that does not load.
int fwInfoCommand(const QString &file, QTextStream &out, QTextStream &err);

// `flash FILE.bsk`: switches the device into its boot loader and streams the image's pages as the loader
// asks for them. finished(0) on the confirmation of page 511; finished(1) when the device stops asking for
// timeoutSeconds or refuses to take the image; finished(10 + code) when the file does not load.
class FlashCommand : public QObject {
    Q_OBJECT
public:
    static constexpr int ExitOk = 0;
    static constexpr int ExitFailure = 1;
    static constexpr int ExitBadFile = 10;

    FlashCommand(SessionController *session, const QString &file, int timeoutSeconds, QTextStream &err,
                 QObject *parent = nullptr);
    ~FlashCommand() override;

    // For tests: the quiet time-out in milliseconds and the page interval.
    void setQuietTimeoutMs(int ms);
    void setPageInterval(int ms);
    // A progress bar on stderr; on by default when stderr is a terminal.
    void setProgressBar(bool on) { m_progressBar = on; }

    void start();
    DeviceUpdater *updater() const { return m_updater; }

signals:
    void finished(int exitCode);

private:
    void finish(int exitCode);
    void deviceSpoke();
    void drawProgress();

    QPointer<SessionController> m_session;
    QString m_file;
    QTextStream &m_err;
    FirmwareImage *m_image;
    DeviceUpdater *m_updater;
    QTimer *m_quiet;
    int m_sent = 0;
    int m_confirmed = 0;
    bool m_progressBar = false;
    bool m_done = false;
};
