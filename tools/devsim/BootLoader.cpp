#include "tools/devsim/BootLoader.h"

#include "update/UpdateChannel.h"

#include <QTimer>
#include <QVector>

using namespace UpdateChannel;

BootLoader::BootLoader(const Options &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_retryTimer(new QTimer(this)) {
    connect(m_retryTimer, &QTimer::timeout, this, &BootLoader::retry);
}

void BootLoader::start() {
    m_active = true;
    m_expected = 0;
    m_buffer.clear();
    m_pages = QVector<QByteArray>(StreamEnd);
    m_finishPending = false;
    m_rerequested = false;
    m_progress = false;
    m_retryTimer->start(qMax(1, m_options.retryMs));
    sendMessage(PageRequested, 0);
}

QByteArray BootLoader::receivedPage(int n) const {
    return n >= 0 && n < m_pages.size() ? m_pages.at(n) : QByteArray();
}

void BootLoader::sendMessage(quint8 kind, int page) {
    Message m;
    m.kind = kind;
    m.hardware = m_options.hwVersion;
    m.fwMiddle = m_options.fwMiddle;
    m.fwBuild = m_options.fwBuild;
    m.fwMajor = m_options.fwMajor;
    m.page = quint16(page);
    QByteArray bytes = encodeMessage(m);
    m_lastGood = bytes;
    ++m_messages;
    if (m_options.corruptEvery > 0 && m_messages % m_options.corruptEvery == 0)
        bytes[MsgCrc] = char(bytes.at(MsgCrc) ^ 0x5A);
    emit send(bytes);
}

void BootLoader::receive(const QByteArray &bytes) {
    if (!m_active || m_finishPending)
        return;
    m_buffer.append(bytes);
    for (;;) {
        // Resynchronise on the start of a page packet; anything else on the line is dropped.
        int start = -1;
        for (int i = 0; i + 1 < m_buffer.size() && start < 0; ++i) {
            if (quint8(m_buffer.at(i)) == Start && quint8(m_buffer.at(i + 1)) == PagePacket)
                start = i;
        }
        if (start < 0) {
            const bool keepLast = !m_buffer.isEmpty() && quint8(m_buffer.at(m_buffer.size() - 1)) == Start;
            m_buffer = keepLast ? m_buffer.right(1) : QByteArray();
            return;
        }
        m_buffer.remove(0, start);
        if (m_buffer.size() < PacketSize)
            return;
        const QByteArray packet = m_buffer.left(PacketSize);
        m_buffer.remove(0, PacketSize);
        handlePacket(packet);
        if (!m_active || m_finishPending)
            return;
    }
}

void BootLoader::handlePacket(const QByteArray &packet) {
    const int page = packetPage(packet);
    if (!packetCrcValid(packet) || (quint8(packet.at(PktPageHigh)) >> 4) != Marker) {
        m_buffer.clear();
        sendMessage(PageError, page);
        sendMessage(PageRequested, m_expected);
        m_rerequested = true;
        return;
    }
    if (page != m_expected) {
        // Pages after a gap are useless: ask once for the missing one; older pages are repeats.
        if (page > m_expected && !m_rerequested) {
            sendMessage(PageRequested, m_expected);
            m_rerequested = true;
        }
        return;
    }
    m_pages[page] = packet.mid(PktData, PageSize);
    m_progress = true;
    m_rerequested = false;
    ++m_expected;
    sendMessage(PageConfirmed, page);
    if (page == LastPage) {
        const bool damaged = m_options.corruptEvery > 0 && m_messages % m_options.corruptEvery == 0;
        if (damaged) {
            // The configurator dropped our last word; say it again before going quiet.
            m_finishPending = true;
            m_retryTimer->start(qMax(1, m_options.retryMs));
            return;
        }
        m_active = false;
        m_retryTimer->stop();
        emit finished();
    }
}

void BootLoader::retry() {
    if (m_finishPending) {
        m_finishPending = false;
        m_active = false;
        m_retryTimer->stop();
        emit send(m_lastGood);
        emit finished();
        return;
    }
    if (!m_active)
        return;
    if (!m_progress)
        sendMessage(PageRequested, m_expected);
    m_progress = false;
}
