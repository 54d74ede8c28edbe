#include "update/FirmwareImage.h"

#include "update/UpdateChannel.h"
#include "update/UpdateLog.h"

#include <QFile>
#include <QFileInfo>

namespace {

const QByteArray Magic("BOOT2FILE\0", 10);

constexpr int HdrMagic = 0;
constexpr int HdrPageCount = 12;
constexpr int HdrPageSize = 14;
constexpr int HdrVersionNumber = 16;
constexpr int HdrMiddle = 18;
constexpr int HdrKept = 20;
constexpr int HdrMajor = 21;
constexpr int HdrBuildCount = 22;
constexpr int HdrHardwareCount = 24;

bool readU16(QFile &file, quint16 &value) {
    const QByteArray b = file.read(2);
    if (b.size() < 2)
        return false;
    value = UpdateChannel::readU16(b, 0);
    return true;
}

} // namespace

FirmwareImage::FirmwareImage(QObject *parent)
    : QObject(parent)
    , m_slots(UpdateChannel::PageSlots, QByteArray(UpdateChannel::PageSize, '\0')) {}

FirmwareImage::LoadResult FirmwareImage::load(const QString &fileName) {
    const LoadResult result = loadFrom(fileName);
    m_loaded = result == Loaded;
    return result;
}

FirmwareImage::LoadResult FirmwareImage::loadFrom(const QString &fileName) {
    using UpdateChannel::PageSize;
    if (fileName.isEmpty())
        return NoFileName;
    // Only a regular file: opening a FIFO would wait for a writer, a device would never end.
    if (!QFileInfo(fileName).isFile())
        return CannotOpen;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return CannotOpen;
    qCDebug(lcUpdate).noquote().nospace() << "Открыт файл " << fileName;

    const QByteArray header = file.read(HeaderSize);
    const LoadResult headerResult = checkHeader(header, file.size());
    if (headerResult != Loaded)
        return headerResult;
    const int buildCount = UpdateChannel::readU16(header, HdrBuildCount);
    const int hardwareCount = UpdateChannel::readU16(header, HdrHardwareCount);
    const int pageCount = UpdateChannel::readU16(header, HdrPageCount);

    m_builds.clear();
    m_hardware.clear();
    m_versionLines.clear();
    emit versionsCleared();
    const quint8 major = quint8(header.at(HdrMajor));
    const quint16 middle = UpdateChannel::readU16(header, HdrMiddle);
    for (int i = 0; i < buildCount; ++i) {
        quint16 build = 0;
        if (!readU16(file, build))
            return NotFirmware;
        m_builds.append(build);
        m_versionLines.append(UpdateChannel::buildText(major, middle, build));
        emit versionLineAdded(m_versionLines.constLast());
    }
    for (int i = 0; i < hardwareCount; ++i) {
        quint16 hardware = 0;
        if (!readU16(file, hardware))
            return NotFirmware;
        m_hardware.append(hardware);
        m_versionLines.append(UpdateChannel::hardwareText(hardware));
        emit versionLineAdded(m_versionLines.constLast());
    }
    quint16 crc = 0; // present but not compared with anything
    if (!readU16(file, crc))
        return BadCrc;

    m_fileName = fileName;
    emit fileNameAccepted(fileName);
    qCDebug(lcUpdate).noquote().nospace() << "Читаем страницы: " << pageCount;

    // With many hardware versions the lists run past the header block and the skip would go backwards.
    const qint64 tail = HeaderBlockSize - file.pos();
    qCDebug(lcUpdate).noquote().nospace() << "Хвост: " << tail;
    if (tail < 0 || file.size() - file.pos() < tail || !file.seek(HeaderBlockSize))
        return NotFirmware;
    if (pageCount > UpdateChannel::PageSlots)
        return NotFirmware;

    for (int n = 0; n < pageCount; ++n) {
        const QByteArray page = file.read(PageSize);
        if (page.size() < PageSize) {
            qCDebug(lcUpdate).noquote().nospace() << "Неполная страница";
            return NotFirmware;
        }
        m_slots[n] = page;
        qCDebug(lcUpdate).noquote().nospace() << "Страница: " << (n + 1) << " из " << pageCount;
    }

    m_skipFirmwareMatch = false;
    m_skipHardwareLookup = false;
    m_pageCount = pageCount;
    m_versionNumber = UpdateChannel::readU16(header, HdrVersionNumber);
    m_middle = middle;
    m_kept = quint8(header.at(HdrKept));
    m_major = major;
    return Loaded;
}

FirmwareImage::LoadResult FirmwareImage::checkHeader(const QByteArray &header, qint64 fileSize) {
    if (header.size() < HeaderSize)
        return NotFirmware;
    if (header.mid(HdrMagic, Magic.size()) != Magic)
        return NotBoot2File;
    // The size test runs against the build count, not the page count: the device's tools check it so.
    const int buildCount = UpdateChannel::readU16(header, HdrBuildCount);
    if (buildCount > MaxBuilds)
        return NotFirmware;
    if (fileSize <= buildCount + SizeSlack)
        return NotFirmware;
    if (UpdateChannel::readU16(header, HdrPageSize) != UpdateChannel::PageSize)
        return NotFirmware;
    return Loaded;
}

quint16 FirmwareImage::headerVersionNumber(const QByteArray &header) {
    return header.size() < HeaderSize ? 0 : UpdateChannel::readU16(header, HdrVersionNumber);
}

QByteArray FirmwareImage::page(int n) const {
    if (n < 0 || n >= m_slots.size())
        return QByteArray();
    return m_slots.at(n);
}

QString FirmwareImage::reasonText(int code) {
    switch (code) {
    case NoFileName:
        return QStringLiteral("Не указано имя файла");
    case CannotOpen:
        return QStringLiteral("Не удалось открыть файл");
    case NotFirmware:
        return QStringLiteral("Файл не является прошивкой");
    case NotBoot2File:
        return QStringLiteral("Файл не является прошивкой BOOT2FILE");
    case BadCrc:
        return QStringLiteral("Файл поврежден, или некорректна CRC");
    default:
        return QString();
    }
}

QString FirmwareImage::failureText(const QString &fileName, int code) {
    return QStringLiteral("Не удалось загрузить прошивку '") + fileName + QStringLiteral("'\nПричина: ") +
           reasonText(code);
}
