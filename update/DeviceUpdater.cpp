#include "update/DeviceUpdater.h"

#include "protocol/Connection.h"
#include "update/FirmwareImage.h"
#include "update/UpdateLog.h"

#include <QDateTime>
#include <QTimer>

using namespace UpdateChannel;

namespace {

QString stamp() {
    return QDateTime::currentDateTime().toString(QStringLiteral("hh:mm:ss.zzz"));
}

// The two marker bytes of a UNP frame; no page-channel message starts so.
bool startsLikeFrame(const QByteArray &chunk) {
    return chunk.size() >= 2 && quint8(chunk.at(0)) == 0xA5 && quint8(chunk.at(1)) == 0xA5;
}

} // namespace

DeviceUpdater::DeviceUpdater(QObject *parent)
    : QObject(parent)
    , m_timer(new QTimer(this)) {
    m_timer->setInterval(m_intervalMs);
    connect(m_timer, &QTimer::timeout, this, &DeviceUpdater::sendNextPage);
}

void DeviceUpdater::setInterval(int ms) {
    m_intervalMs = qMax(0, ms);
    m_timer->setInterval(m_intervalMs);
}

bool DeviceUpdater::begin() {
    if (!m_image || !m_image->isLoaded())
        return false;
    m_inProgress = true;
    m_refusalReported = false; // once per update: the loader keeps asking for page 0
    m_buffer.clear();
    return true;
}

void DeviceUpdater::stop() {
    m_inProgress = false;
    m_timer->stop();
    m_buffer.clear();
}

bool DeviceUpdater::streaming() const {
    return m_timer->isActive();
}

bool DeviceUpdater::claims(const QByteArray &chunk) const {
    if (!m_buffer.isEmpty())
        return true; // the rest of a message that began in an earlier chunk
    if (chunk.isEmpty() || quint8(chunk.at(0)) != Start)
        return false;
    if (chunk.size() > MsgPageHigh)
        return looksLikeMessage(chunk);
    // Too short to see the marker: only a device in update mode sends such a piece.
    return m_inProgress;
}

bool DeviceUpdater::offer(const QByteArray &chunk) {
    if (!m_buffer.isEmpty() && startsLikeFrame(chunk))
        m_buffer.clear(); // the device left its loader: the piece we held will never be completed
    if (!claims(chunk))
        return false;
    m_buffer.append(chunk);
    processBuffer();
    return true;
}

void DeviceUpdater::processBuffer() {
    while (m_buffer.size() >= MessageSize) {
        if (!looksLikeMessage(m_buffer)) {
            m_buffer.clear();
            return;
        }
        if (!messageCrcValid(m_buffer)) {
            qCDebug(lcUpdate).noquote().nospace() << stamp() << ' ' << "Не сошлась CRC, пропускаем....";
            m_buffer.clear();
            emit messageCorrupted();
            return;
        }
        const QByteArray message = m_buffer.left(MessageSize);
        m_buffer.remove(0, MessageSize);
        const Message m = decodeMessage(message);
        qCDebug(lcUpdate).noquote().nospace() << stamp() << ' ' << "<< номер страницы: " << m.page;
        if (m.kind == PageRequested)
            m_request = message;
        handleMessage(m);
    }
    // A leftover that cannot begin a message is noise from the link.
    if (!m_buffer.isEmpty() && quint8(m_buffer.at(0)) != Start)
        m_buffer.clear();
}

void DeviceUpdater::handleMessage(const Message &m) {
    switch (m.kind) {
    case PageRequested:
        qCDebug(lcUpdate).noquote().nospace() << stamp() << ' ' << "<< Запрашивается страница: " << m.page;
        emit pageRequested(m.page);
        if (m_inProgress) {
            m_current = qMin<int>(m.page, StreamEnd);
            m_timer->start(m_intervalMs);
        }
        break;
    case PageConfirmed:
        qCDebug(lcUpdate).noquote().nospace() << stamp() << ' ' << "<< Подтверждена страница: " << m.page;
        emit pageConfirmed(m.page);
        if (m_inProgress && m.page == LastPage) {
            m_timer->stop();
            m_inProgress = false;
            emit progressLine(QStringLiteral("Подготовка прибора."));
            emit progressLine(QStringLiteral("Ожидание перезагрузки прибора."));
            emit UpdateComplete();
        }
        break;
    case PageError:
        qCDebug(lcUpdate).noquote().nospace() << stamp() << ' ' << "<< Ошибка страницы: " << m.page;
        emit pageError(m.page);
        break;
    default:
        qCDebug(lcUpdate).noquote().nospace()
            << stamp() << ' ' << "<< неизвестное сообщение: " << int(m.kind);
        break;
    }
}

void DeviceUpdater::sendNextPage() {
    if (m_current >= StreamEnd) {
        m_timer->stop();
        return;
    }
    QByteArray packet;
    if (!buildPacket(quint16(m_current), packet)) {
        // Never start a device on firmware it was not built for: page 0 is withheld, the device waits.
        if (!m_refusalReported) {
            m_refusalReported = true;
            emit pageRefused(m_current);
        }
        return;
    }
    qCDebug(lcUpdate).noquote().nospace() << "Отправляем страницу " << m_current;
    const int sent = m_current++;
    if (m_link)
        m_link->write(packet);
    emit pageSent(sent);
}

bool DeviceUpdater::buildPacket(quint16 page, QByteArray &packet) const {
    if (!m_image || !m_image->isLoaded() || m_request.size() < MessageSize)
        return false;
    Message request = decodeMessage(m_request);
    request.page = page;
    if (request.marker != Marker)
        return false;
    if (page == 0 && request.fwMajor < NoVersionMatch) {
        if (!m_image->skipFirmwareVersionMatch() &&
            (!m_image->builds().contains(request.fwBuild) || request.fwMajor != m_image->major() ||
             request.fwMiddle != m_image->middle()))
            return false;
        // The hardware lookup is informative only: the boot loader knows its own board.
        if (!m_image->skipHardwareVersionLookup() && !m_image->hardwareVersions().contains(request.hardware))
            qCDebug(lcUpdate) << "hardware version" << Qt::hex << request.hardware
                              << "not listed in the image";
    }
    packet = encodePagePacket(page, m_image->page(page));
    return true;
}
