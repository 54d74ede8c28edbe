#include "tools/devsim/DevsimBench.h"
#include "tools/devsim/DevsimLog.h"
#include "tools/devsim/DevsimOptions.h"
#include "tools/devsim/DevsimSession.h"
#include "tools/devsim/PtyLink.h"
#include "tools/devsim/TcpLink.h"
#include "tools/devsim/VirtualTracker.h"

#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/InterruptWatcher.h"

#include <QCoreApplication>
#include <QTextStream>

#include <csignal>
#include <cstdio>

namespace {

// SIGINT and SIGTERM end the event loop normally, so that the state is saved and the link removed.
void watchSignals(QCoreApplication *app) {
    auto *interrupts = new InterruptWatcher(app);
    QObject::connect(interrupts, &InterruptWatcher::interrupted, app, &QCoreApplication::quit);
    // A configurator that vanishes mid-write must not take the device with it.
    ::signal(SIGPIPE, SIG_IGN);
}

void printAddress(const QString &address) {
    // Scripts wait for the address lines, so each goes out at once.
    std::fputs(qPrintable(address + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

int runBench(QCoreApplication &app, const DevsimOptions &options) {
    auto *bench = new DevsimBench(options, &app);
    QObject::connect(bench, &DevsimBench::appeared, &app,
                     [](const QString &address) { printAddress(address); });
    QString error;
    if (!bench->start(&error)) {
        QTextStream(stderr) << "tavrel-devsim: " << error << "\n";
        bench->shutdown();
        return 1;
    }
    watchSignals(&app);
    const int rc = app.exec();
    bench->shutdown();
    return rc;
}

} // namespace

int main(int argc, char *argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavrel-devsim"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVREL_VERSION));
    QTextStream err(stderr);

    DevsimOptions options;
    QString error;
    if (!options.parse(app.arguments(), &error)) {
        if (error.isEmpty()) {
            QTextStream(stdout) << DevsimOptions::usage();
            return 0;
        }
        err << "tavrel-devsim: " << error << "\n\n" << DevsimOptions::usage();
        return 2;
    }

    if (options.isBench())
        return runBench(app, options);

    SimLink *link = nullptr;
    if (options.transport == DevsimOptions::Transport::Pty)
        link = new PtyLink(options.linkPath, &app);
    else
        link = new TcpLink(options.tcpPort, options.serverImei, &app);

    auto *session = new DevsimSession(options, link, &app);
    if (!session->loadState(&error)) {
        err << "tavrel-devsim: " << error << "\n";
        return 1;
    }
    if (options.hasPassword)
        session->tracker()->setPassword(options.password);
    if (auto *tcp = qobject_cast<TcpLink *>(link); tcp && options.serverImei.isEmpty())
        tcp->setImei(session->tracker()->configuration()->deviceInfo()->IMEI());

    if (!link->start(&error)) {
        err << "tavrel-devsim: " << error << "\n";
        return 1;
    }
    watchSignals(&app);
    QObject::connect(session, &DevsimSession::finished, &app, &QCoreApplication::quit);

    printAddress(link->address());
    qCInfo(lcDevsim).noquote() << "device" << session->tracker()->configuration()->deviceInfo()->IMEI()
                               << "ready at" << link->address();

    const int rc = app.exec();
    session->saveState();
    link->shutdown();
    return rc;
}
