// Prints the time from process start to the main window shown, then polls the virtual tracker at the
// fastest telemetry period (50 ms) for a minute and prints the resident memory and the longest command
// queue seen. Usage: bench_startup [--seconds N] [--devsim PATH]
#include "app/AppSettings.h"
#include "app/MainWindow.h"
#include "app/Prompter.h"
#include "bench/ResidentMemory.h"
#include "protocol/SerialConnection.h"
#include "protocol/SessionController.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <time.h>
#include <unistd.h>

namespace {

// Milliseconds since the process was started by the kernel (field 22 of /proc/self/stat).
double msSinceProcessStart() {
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    const double startTicks = fields.value(19).toDouble(); // field 22 counted from 1, minus pid and comm
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    const double ticks = double(sysconf(_SC_CLK_TCK));
    return (now.tv_sec + now.tv_nsec / 1e9 - startTicks / ticks) * 1000.0;
}

class Quiet : public Prompter {
public:
    bool question(QWidget *, const QString &, const QString &) override { return true; }
    void information(QWidget *, const QString &, const QString &) override {}
    void warning(QWidget *, const QString &, const QString &text) override {
        QTextStream(stderr) << "warning: " << text << '\n';
    }
    void critical(QWidget *, const QString &, const QString &text) override {
        QTextStream(stderr) << "critical: " << text << '\n';
    }
};

class ShowWatcher : public QObject {
public:
    double shownAtMs = -1;
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::Show && shownAtMs < 0)
            shownAtMs = msSinceProcessStart();
        return false;
    }
};

} // namespace

int main(int argc, char *argv[]) {
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toLocal8Bit());
    QApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    int seconds = 60;
    QString devsim = QStringLiteral(TAVREL_BINARY_DIR "/tools/devsim/tavrel-devsim");
    const QStringList args = app.arguments();
    for (int i = 1; i + 1 < args.size(); ++i) {
        if (args.at(i) == QLatin1String("--seconds"))
            seconds = args.at(i + 1).toInt();
        else if (args.at(i) == QLatin1String("--devsim"))
            devsim = args.at(i + 1);
    }

    QProcess sim;
    sim.start(devsim, {QStringLiteral("--pty")});
    if (!sim.waitForStarted() || !sim.waitForReadyRead(5000)) {
        QTextStream(stderr) << "bench_startup: cannot start " << devsim << '\n';
        return 1;
    }
    const QString pty = QString::fromLocal8Bit(sim.readLine()).trimmed();
    const double simReadyMs = msSinceProcessStart();

    // The 50 ms period is the remote connection's "<Нет>" row; the link itself is the virtual tracker.
    {
        AppSettings settings;
        settings.setLoginType(AppSettings::RemoteConnection);
        settings.setTelemetryTime(6);
        settings.setSerialNumber(QStringLiteral("863071014478127"));
    }
    MainWindow::Options options;
    options.prompter = std::make_shared<Quiet>();
    options.updateCheckAtStart = false;
    options.linkFactory = [pty](int) { return new SerialConnection(pty); };

    ShowWatcher watcher;
    MainWindow window(options);
    window.installEventFilter(&watcher);
    window.show();

    int telemetry = 0;
    QObject::connect(window.session(), &SessionController::telemetryDecoded, [&telemetry] { ++telemetry; });

    QTextStream out(stdout);
    QTimer::singleShot(0, [&] {
        out << "window shown after " << QString::number(watcher.shownAtMs, 'f', 1)
            << " ms from process start (of which " << QString::number(simReadyMs, 'f', 1)
            << " ms starting the virtual tracker)\n";
        out << "resident memory at start: " << residentKiB() << " KiB\n";
        out.flush();
    });
    QTimer::singleShot(seconds * 1000, [&] {
        out << "telemetry period: " << window.telemetryPeriod()
            << " ms, identified: " << (window.isIdentified() ? "yes" : "no") << '\n';
        out << "after " << seconds << " s of polling: resident memory " << residentKiB() << " KiB, "
            << telemetry << " telemetry answers\n";
        out.flush();
        app.quit();
    });
    const int code = app.exec();
    sim.terminate();
    sim.waitForFinished(3000);
    return code;
}
