#include "cli/FrameText.h"

#include "support/TelemetryReport.h"

#include "Devices/ControlInfoConfiguration.h"
#include "Devices/SectionTable.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/Frame.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString hex2(int value) {
    return QStringLiteral("0x%1").arg(value, 2, 16, QLatin1Char('0'));
}

QString hex4(int value) {
    return QStringLiteral("0x%1").arg(value, 4, 16, QLatin1Char('0'));
}

QString typeName(quint8 type) {
    switch (type) {
    case proto::ConfigPacketType:
        return QStringLiteral("конфигурация");
    case proto::CommandPacketType:
        return QStringLiteral("команда");
    case proto::ServerLoginPacketType:
        return QStringLiteral("вход на сервер");
    default:
        return QStringLiteral("неизвестный");
    }
}

QString sectionName(quint8 code) {
    if (const kd::Section *s = kd::sectionByRequestCode(code))
        return s->displayName;
    switch (code & ~proto::code::ReadBit) {
    case proto::code::PasswordChange:
        return QStringLiteral("смена пароля");
    case proto::code::Code9:
        return QStringLiteral("код 9");
    default:
        return {};
    }
}

QString commandName(quint8 code, quint8 operation) {
    const quint8 op = operation & ~proto::op::StatusBit;
    if (code == proto::code::Telemetry)
        return QStringLiteral("телеметрия");
    if (code == proto::code::OutputControl)
        return QStringLiteral("управление выходами");
    if (code == proto::code::Mode) {
        switch (op) {
        case proto::op::Login:
            return QStringLiteral("ввод пароля");
        case proto::op::FirmwareUpdate:
            return QStringLiteral("режим обновления прошивки");
        case proto::op::ResetOrClear:
            return QStringLiteral("сброс настроек / очистка памяти");
        default:
            break;
        }
    }
    return {};
}

QString compact(const QJsonValue &value) {
    if (value.isObject())
        return QString::fromUtf8(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
    if (value.isArray())
        return QString::fromUtf8(QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact));
    return value.toVariant().toString();
}

// A write request stored the way the device stores it; only sections the full write sends.
bool decodeWriteRequest(VantorConfiguration &cfg, quint8 code, const QByteArray &payload) {
    const kd::Section *s = kd::sectionByRequestCode(code);
    return s && s->code == code && s->writeOrder >= 0 && s->decodeWrite(&cfg, payload);
}

QStringList sectionValues(quint8 type, const QByteArray &payload) {
    QStringList lines;
    if (payload.size() < proto::Frame::HeadSize)
        return lines;
    const quint8 code = quint8(payload.at(proto::Frame::CodeOffset));
    const quint8 operation = quint8(payload.at(proto::Frame::OperationOffset));
    if (operation & proto::op::StatusBit)
        return lines;

    VantorConfiguration cfg;
    if (type == proto::CommandPacketType && code == proto::code::Telemetry) {
        UNPParcer parser(&cfg);
        parser.parse(type, payload);
        if (cfg.controlInfo()) {
            lines << TelemetryReport::rawLines(*cfg.controlInfo());
            lines << TelemetryReport::lines(*cfg.controlInfo());
        }
        return lines;
    }
    if (type != proto::ConfigPacketType)
        return lines;
    bool decoded = false;
    if (code & proto::code::ReadBit) {
        if (payload.size() == proto::Frame::HeadSize)
            return lines; // a read request, nothing to show
        UNPParcer parser(&cfg);
        bool seen = false;
        QObject::connect(&parser, &UNPParcer::ConfigPackageDetected, [&seen](int) { seen = true; });
        parser.parse(type, payload);
        decoded = seen;
    } else {
        decoded = decodeWriteRequest(cfg, code, payload);
    }
    if (!decoded)
        return lines;
    QJsonObject root;
    cfg.write(root);
    const kd::Section *section = kd::sectionByRequestCode(code);
    for (const QString &key : section ? section->fileKeys : QStringList()) {
        if (root.contains(key))
            lines << QStringLiteral("%1: %2").arg(key, compact(root.value(key)));
    }
    return lines;
}

} // namespace

bool FrameText::extractHex(const QString &text, QByteArray *bytes) {
    QString hex = text;
    const QString answer = QStringLiteral("From device: ");
    const QString command = QStringLiteral("Command ");
    int at = hex.indexOf(answer);
    if (at >= 0) {
        hex = hex.mid(at + answer.size());
        const int colon = hex.indexOf(QLatin1Char(':'));
        if (colon >= 0)
            hex.truncate(colon); // ": <size>" closes an answer line
    } else if ((at = hex.indexOf(command)) >= 0) {
        hex = hex.mid(at + command.size());
    }
    // One pass over the text: a whole exchange log line can be hundreds of kilobytes, more than a
    // backtracking pattern match handles.
    auto isHexDigit = [](QChar c) {
        return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
               (c >= QLatin1Char('a') && c <= QLatin1Char('f')) ||
               (c >= QLatin1Char('A') && c <= QLatin1Char('F'));
    };
    QByteArray digits;
    digits.reserve(hex.size());
    for (int i = 0; i < hex.size(); ++i) {
        const QChar c = hex.at(i);
        const bool prefix = c == QLatin1Char('0') && i + 3 < hex.size() &&
                            (hex.at(i + 1) == QLatin1Char('x') || hex.at(i + 1) == QLatin1Char('X')) &&
                            isHexDigit(hex.at(i + 2)) && isHexDigit(hex.at(i + 3));
        if (prefix)
            ++i;
        else if (isHexDigit(c))
            digits.append(char(c.unicode()));
        else if (!c.isSpace() && c != QLatin1Char(':') && c != QLatin1Char(','))
            return false;
    }
    if (digits.isEmpty() || digits.size() % 2 != 0)
        return false;
    *bytes = QByteArray::fromHex(digits);
    return true;
}

QStringList FrameText::explain(const QByteArray &frame) {
    QStringList lines;
    lines << QStringLiteral("кадр: %1 байт").arg(frame.size());
    if (proto::Frame::isFirmwareChunk(frame)) {
        lines << QStringLiteral("пакет загрузчика прошивки");
        return lines;
    }
    const proto::Frame::Explanation e = proto::Frame::explain(frame);
    if (frame.size() < proto::Frame::PayloadOffset) {
        lines << QStringLiteral("слишком короткий для кадра");
        return lines;
    }
    lines << QStringLiteral("маркеры: %1")
                 .arg(e.markersOk ? QStringLiteral("верны") : QStringLiteral("неверны"));
    lines << QStringLiteral("тип пакета: %1 (%2)").arg(e.type).arg(typeName(e.type));
    lines << QStringLiteral("длина данных: %1").arg(e.length);
    if (!e.complete) {
        lines << QStringLiteral("кадр неполный: %1 из %2 байт")
                     .arg(frame.size())
                     .arg(e.length + proto::Frame::Overhead);
        return lines;
    }
    lines << (e.checksumOk ? QStringLiteral("контрольная сумма: %1 верна").arg(hex4(e.checksum))
                           : QStringLiteral("контрольная сумма: %1 неверна, ожидалась %2")
                                 .arg(hex4(e.checksum), hex4(e.expectedChecksum)));
    const QByteArray payload = frame.mid(proto::Frame::PayloadOffset, e.length);
    if (e.type == proto::ServerLoginPacketType) {
        lines << QStringLiteral("IMEI: %1").arg(QString::fromLatin1(payload.left(payload.indexOf('\0'))));
    } else if (e.code >= 0) {
        QString name = e.type == proto::CommandPacketType
                           ? commandName(quint8(e.code), quint8(qMax(0, e.operation)))
                           : sectionName(quint8(e.code));
        QString direction;
        if (e.type == proto::ConfigPacketType)
            direction =
                (e.code & proto::code::ReadBit) ? QStringLiteral("чтение / ответ") : QStringLiteral("запись");
        QStringList notes;
        if (!name.isEmpty())
            notes << name;
        if (!direction.isEmpty())
            notes << direction;
        lines << QStringLiteral("код: %1%2")
                     .arg(hex2(e.code))
                     .arg(notes.isEmpty() ? QString()
                                          : QStringLiteral(" (%1)").arg(notes.join(QStringLiteral(", "))));
        if (e.operation >= 0)
            lines << QStringLiteral("операция: %1%2")
                         .arg(hex2(e.operation))
                         .arg((e.operation & proto::op::StatusBit) ? QStringLiteral(" (ответ о выполнении)")
                                                                   : QString());
        if (e.parameter >= 0)
            lines << QStringLiteral("параметр: %1").arg(e.parameter);
        const std::optional<quint16> status = UNPParcer::statusOf(payload);
        if (e.operation >= 0 && (e.operation & proto::op::StatusBit) && status) {
            QString text = UNPParcer::statusText(*status);
            while (text.startsWith(QLatin1Char('.')))
                text.remove(0, 1);
            if (*status == UNPParcer::PowerCycleNeeded)
                text = QStringLiteral("нужно отключить питание прибора");
            lines << QStringLiteral("статус: %1 (%2)").arg(*status).arg(text);
        }
    }
    if (!e.body.isEmpty() && e.type != proto::ServerLoginPacketType)
        lines << QStringLiteral("данные: %1").arg(QString::fromLatin1(e.body.toHex(' ')));
    lines << sectionValues(e.type, payload);
    if (!e.surplus.isEmpty())
        lines << QStringLiteral("лишние байты за кадром: %1").arg(e.surplus.size());
    return lines;
}
