#include "protocol/InterruptWatcher.h"

#include <QSocketNotifier>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {

#ifdef Q_OS_UNIX
int signalPipe[2] = {-1, -1};

void onSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(signalPipe[1], &byte, 1);
}
#endif

} // namespace

InterruptWatcher::InterruptWatcher(QObject *parent)
    : QObject(parent) {
#ifdef Q_OS_UNIX
    // Close-on-exec: programs the tool starts must not inherit the pair.
    if (signalPipe[0] >= 0 || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0)
        return;
    m_notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        [[maybe_unused]] const ssize_t n = ::read(signalPipe[0], &byte, 1);
        emit interrupted();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
#endif
}

InterruptWatcher::~InterruptWatcher() {
#ifdef Q_OS_UNIX
    if (!m_notifier)
        return;
    ::signal(SIGINT, SIG_DFL);
    ::signal(SIGTERM, SIG_DFL);
    delete m_notifier;
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
    signalPipe[0] = signalPipe[1] = -1;
#endif
}
