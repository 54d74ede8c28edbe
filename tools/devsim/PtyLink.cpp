#include "tools/devsim/PtyLink.h"

#include "tools/devsim/DevsimLog.h"

#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {
// Bytes the device holds for a configurator that does not read; beyond that the oldest are dropped, as
// a UART with nobody listening would lose them.
constexpr int MaxPendingOutput = 64 * 1024;
constexpr int ReadRetryMs = 100;
constexpr int HangUpPollMs = 10;
constexpr int HangUpSettleMs = 50;
constexpr int HangUpDrainMs = 2000;

QString errnoText() {
    return QString::fromLocal8Bit(std::strerror(errno));
}
} // namespace

PtyLink::PtyLink(const QString &symlinkPath, QObject *parent)
    : SimLink(parent)
    , m_symlinkPath(symlinkPath) {}

PtyLink::~PtyLink() {
    shutdown();
}

bool PtyLink::start(QString *error) {
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0) {
        *error = QStringLiteral("cannot open a pseudo-terminal: %1").arg(errnoText());
        closeAll();
        return false;
    }
    ::fcntl(m_master, F_SETFD, FD_CLOEXEC);
    ::fcntl(m_master, F_SETFL, ::fcntl(m_master, F_GETFL) | O_NONBLOCK);
    char name[256] = {};
    if (::ptsname_r(m_master, name, sizeof name) != 0) {
        *error = QStringLiteral("cannot name the pseudo-terminal: %1").arg(errnoText());
        closeAll();
        return false;
    }
    m_slavePath = QString::fromLocal8Bit(name);
    m_slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_slave < 0) {
        *error = QStringLiteral("cannot open %1: %2").arg(m_slavePath, errnoText());
        closeAll();
        return false;
    }
    // A serial port carries bytes untouched: no echo, no line editing, no newline translation.
    termios tio{};
    if (::tcgetattr(m_slave, &tio) == 0) {
        ::cfmakeraw(&tio);
        ::cfsetispeed(&tio, B115200);
        ::cfsetospeed(&tio, B115200);
        ::tcsetattr(m_slave, TCSANOW, &tio);
    }

    if (!m_symlinkPath.isEmpty()) {
        // A stale link of an earlier run is replaced; anything else at that path is not ours to delete.
        const QFileInfo existing(m_symlinkPath);
        if (existing.exists() && !existing.isSymLink()) {
            *error = QStringLiteral("%1 exists and is not a symbolic link").arg(m_symlinkPath);
            closeAll();
            return false;
        }
        if (existing.isSymLink())
            QFile::remove(m_symlinkPath);
        if (!QFile::link(m_slavePath, m_symlinkPath)) {
            *error = QStringLiteral("cannot make the link %1 -> %2").arg(m_symlinkPath, m_slavePath);
            closeAll();
            return false;
        }
        m_symlinkMade = true;
    }

    m_readNotifier = new QSocketNotifier(m_master, QSocketNotifier::Read, this);
    connect(m_readNotifier, &QSocketNotifier::activated, this, &PtyLink::readMaster);
    m_writeNotifier = new QSocketNotifier(m_master, QSocketNotifier::Write, this);
    m_writeNotifier->setEnabled(false);
    connect(m_writeNotifier, &QSocketNotifier::activated, this, &PtyLink::flushOutput);
    watchPeers();
    m_retryRead = new QTimer(this);
    m_retryRead->setSingleShot(true);
    m_retryRead->setInterval(ReadRetryMs);
    connect(m_retryRead, &QTimer::timeout, this, [this] {
        if (m_readNotifier)
            m_readNotifier->setEnabled(true);
    });
    return true;
}

void PtyLink::readMaster() {
    QByteArray chunk;
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(m_master, buffer, sizeof buffer);
        if (n > 0) {
            chunk.append(buffer, int(n));
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
            // EIO means no slave is open; ours keeps one open, so this is only a passing state. Do not spin.
            qCDebug(lcDevsim) << "pty read:" << errnoText();
            m_readNotifier->setEnabled(false);
            m_retryRead->start();
        }
        break;
    }
    // A device that has decided to go away answers nothing more while its last answer drains.
    if (!chunk.isEmpty() && !m_hangingUp)
        emit received(chunk);
}

void PtyLink::watchPeers() {
    m_inotify = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_inotify < 0)
        return;
    if (::inotify_add_watch(m_inotify, QFile::encodeName(m_slavePath).constData(),
                            IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE) < 0) {
        ::close(m_inotify);
        m_inotify = -1;
        return;
    }
    m_peerNotifier = new QSocketNotifier(m_inotify, QSocketNotifier::Read, this);
    connect(m_peerNotifier, &QSocketNotifier::activated, this, &PtyLink::readPeerEvents);
}

void PtyLink::readPeerEvents() {
    alignas(inotify_event) char buffer[4096];
    const int before = m_peers;
    for (;;) {
        const ssize_t n = ::read(m_inotify, buffer, sizeof buffer);
        if (n <= 0)
            break;
        for (ssize_t off = 0; off + ssize_t(sizeof(inotify_event)) <= n;) {
            const auto *e = reinterpret_cast<const inotify_event *>(buffer + off);
            if (e->mask & IN_OPEN)
                ++m_peers;
            if (e->mask & (IN_CLOSE_WRITE | IN_CLOSE_NOWRITE))
                m_peers = qMax(0, m_peers - 1);
            off += ssize_t(sizeof(inotify_event)) + e->len;
        }
    }
    // Our own descriptor keeps the terminal alive when the configurator closes the port, so answers it
    // never read would greet the next session and be taken for answers to its requests. Once nobody else
    // has the port open, whatever waits in it is for nobody.
    int waiting = 0;
    if (m_peers == 0 && before > 0 && ::ioctl(m_slave, FIONREAD, &waiting) == 0 && waiting > 0) {
        ::tcflush(m_slave, TCIFLUSH);
        qCInfo(lcDevsim) << "dropped" << waiting << "bytes the configurator left unread";
    }
}

void PtyLink::write(const QByteArray &bytes) {
    if (m_master < 0)
        return;
    // The configurator's open may still wait among the events: its request can be read first.
    if (m_inotify >= 0)
        readPeerEvents();
    if (m_inotify >= 0 && m_peers == 0) {
        qCDebug(lcDevsim) << "nobody has the port open;" << bytes.size() << "bytes not sent";
        return;
    }
    m_output.append(bytes);
    if (m_output.size() > MaxPendingOutput)
        m_output.remove(0, m_output.size() - MaxPendingOutput);
    flushOutput();
}

void PtyLink::flushOutput() {
    while (!m_output.isEmpty()) {
        const ssize_t n = ::write(m_master, m_output.constData(), size_t(m_output.size()));
        if (n > 0) {
            m_output.remove(0, int(n));
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
            qCDebug(lcDevsim) << "pty write:" << errnoText();
            m_output.clear();
        }
        break;
    }
    if (m_writeNotifier)
        m_writeNotifier->setEnabled(!m_output.isEmpty());
}

void PtyLink::hangUp() {
    if (m_master < 0)
        return;
    m_hangingUp = true;
    // Closing the master throws away what the configurator has not read yet, so the last answer would
    // never arrive. Bytes pass from master to slave a moment after they are written, so the slave's
    // input queue must be seen empty after a short settling time, twice in a row (or a time limit passes).
    int waiting = 0;
    const bool pending = !m_output.isEmpty() || ::ioctl(m_slave, FIONREAD, &waiting) != 0 || waiting > 0;
    m_hangUpQuietPolls = pending ? 0 : m_hangUpQuietPolls + 1;
    const bool settled = m_hangUpWaitMs >= HangUpSettleMs && m_hangUpQuietPolls >= 2;
    if (!settled && m_hangUpWaitMs < HangUpDrainMs) {
        m_hangUpWaitMs += HangUpPollMs;
        QTimer::singleShot(HangUpPollMs, this, &PtyLink::hangUp);
        return;
    }
    qCInfo(lcDevsim) << "hanging up the pseudo-terminal";
    closeAll();
    emit finished();
}

void PtyLink::shutdown() {
    closeAll();
    if (m_symlinkMade) {
        QFile::remove(m_symlinkPath);
        m_symlinkMade = false;
    }
}

void PtyLink::closeAll() {
    delete m_readNotifier;
    m_readNotifier = nullptr;
    delete m_writeNotifier;
    m_writeNotifier = nullptr;
    delete m_peerNotifier;
    m_peerNotifier = nullptr;
    if (m_inotify >= 0)
        ::close(m_inotify);
    m_inotify = -1;
    if (m_slave >= 0)
        ::close(m_slave);
    if (m_master >= 0)
        ::close(m_master);
    m_slave = m_master = -1;
    m_output.clear();
}
