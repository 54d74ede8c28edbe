#include "AppSettings.h"
#include "DeviceLog.h"
#include "MainWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDialog>

// tavrel-cfg [--port PATH] [--no-login] [--no-update-check]
//   --port PATH        open this serial port at once (a device path or the virtual device's terminal)
//   --no-login         skip the start-up connection dialog and use the stored connection type
//   --no-update-check  do not download the device firmware image at start
int main(int argc, char *argv[]) {
    // The console's code page and stream encoding are set up before anything is logged.
    DeviceLog::install(AppSettings().deviceLogToFile());

    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QString::fromLatin1(AppSettings::Organisation));
    QCoreApplication::setOrganizationDomain(QStringLiteral("tavrel.ru"));
    QCoreApplication::setApplicationName(QString::fromLatin1(AppSettings::Application));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVREL_VERSION));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/app.png")));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Конфигуратор прибора"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption port(QStringLiteral("port"), QStringLiteral("Open this serial port at once."),
                                  QStringLiteral("PATH"));
    const QCommandLineOption noLogin(QStringLiteral("no-login"),
                                     QStringLiteral("Skip the start-up connection dialog."));
    const QCommandLineOption noUpdateCheck(QStringLiteral("no-update-check"),
                                           QStringLiteral("Do not download the device firmware at start."));
    parser.addOptions({port, noLogin, noUpdateCheck});
    parser.process(app);

    MainWindow::Options options;
    options.portName = parser.value(port);
    options.updateCheckAtStart = !parser.isSet(noUpdateCheck);
    std::function<int(QDialog *)> runLogin;
    if (!parser.isSet(noLogin))
        runLogin = [](QDialog *dialog) { return dialog->exec(); };
    return MainWindow::run(options, runLogin);
}
