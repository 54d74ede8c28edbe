#include "Devices/configuration.h"

#include "Devices/CodecHelpers.h"

#include <QDateTime>
#include <QDebug>

namespace kd {

ConfigurationValue::ConfigurationValue(QObject *parent)
    : QObject(parent) {}

IConfigurationItem::IConfigurationItem(QObject *parent)
    : QObject(parent) {
    // The section signals carry fixed-width types; spies and queued connections look them up by name.
    static const bool registered = [] {
        qRegisterMetaType<uint16_t>("uint16_t");
        qRegisterMetaType<uint32_t>("uint32_t");
        qRegisterMetaType<quint8>("quint8");
        qRegisterMetaType<quint16>("quint16");
        qRegisterMetaType<quint64>("quint64");
        return true;
    }();
    Q_UNUSED(registered)
}

IConfigurationItem::~IConfigurationItem() = default;

Configuration::Configuration(QObject *parent)
    : QObject(parent) {}

Configuration::~Configuration() = default;

void Configuration::registerItem(const QString &key, IConfigurationItem *item) {
    m_items.insert(key, item);
}

IConfigurationItem *Configuration::item(const QString &key) const {
    return m_items.value(key).data();
}

QStringList Configuration::keys() const {
    return m_items.keys();
}

void Configuration::write(QJsonObject &) const {}

void Configuration::read(const QJsonObject &) {}

void Configuration::checkComplete() {}

namespace detail {
void typedItemFailure(const QString &key, const char *found, const char *expected) {
    // The line number is the one this check has always reported; scripts and bug reports look for it.
    qFatal("ASSERT: \"typed_item\" in file Devices/configuration, line 203 (section \"%s\" is %s, not %s)",
           qPrintable(key), found, expected);
    abort(); // qFatal does not return; keeps [[noreturn]] honest for the compiler
}
} // namespace detail

namespace {
constexpr int KeptTrafficLines = 5000;

QStringList &keptTrafficLines() {
    static QStringList lines;
    return lines;
}
} // namespace

void trafficLog(const QString &text) {
    const QString line = QString::number(QDateTime::currentSecsSinceEpoch()) + QLatin1Char(' ') + text;
    QStringList &kept = keptTrafficLines();
    if (kept.size() >= KeptTrafficLines)
        kept.removeFirst();
    kept.append(line);
    qDebug().noquote() << line;
}

QStringList recentTrafficLog() {
    return keptTrafficLines();
}

namespace codec {

QByteArray head(quint8 code, quint8 operation, quint8 index, int bodySize) {
    QByteArray b(HeadSize + bodySize, '\0');
    b[0] = char(code);
    b[1] = char(operation);
    b[2] = char(index);
    return b;
}

bool isAnswer(const QByteArray &payload, quint8 code, int operation) {
    if (payload.size() < 2 || quint8(payload.at(0)) != code)
        return false;
    const quint8 op = quint8(payload.at(1));
    if (op & StatusBit)
        return false;
    return operation < 0 || op == operation;
}

bool isWrite(const QByteArray &payload, quint8 code, quint8 block, int bodySize) {
    return payload.size() >= HeadSize + bodySize && quint8(payload.at(0)) == code &&
           quint8(payload.at(1)) == block;
}

int recordCount(const QByteArray &payload, int recordSize) {
    const int data = payload.size() - HeadSize;
    return (data > 0 && recordSize > 0) ? data / recordSize : 0;
}

void logRead(const QByteArray &payload, const QString &label) {
    trafficLog(QStringLiteral("Прочитано ") + QString::fromLatin1(payload.left(HeadSize).toHex(' ')) +
               QLatin1Char(' ') + label);
}

} // namespace codec

} // namespace kd
