#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

class QObject;

namespace kd {

class Configuration;
class IConfigurationItem;

// One request that reading or writing a section makes, and the answer that settles it.
struct SectionRequest {
    quint8 type = 6;    // packet type of the request and of its answer
    QByteArray payload; // head (code, operation, parameter, 0) and body
    // The answer that settles the request: a data answer (bit 7 of the operation clear) with this code
    // and operation for a read; a status answer (bit 7 set) echoing code, operation and, when it is
    // not -1, the parameter for a write.
    quint8 answerCode = 0;
    quint8 answerOperation = 0;
    int answerParameter = -1;
    bool statusAnswer = false;
    QString label; // what the request asks for, in the user's messages ("навигация в движении")

    quint8 code() const;
    quint8 operation() const;
    quint8 parameter() const;
};

// One of the ten sections: everything the protocol, the file, the terminal tool and the virtual tracker
// need to know about it. A section's bytes are written by its class's codec; the row says which
// requests carry them and in which order.
struct Section {
    const char *key;     // container and file key (kd::keys)
    QString displayName; // Russian, for the user's messages ("навигация")
    const char *logLabel;
    quint8 packetType;             // 6 for configuration sections, 7 for the telemetry of "ControlInfo"
    quint8 code;                   // write requests (bit 7 clear); "ControlInfo" has only its telemetry code
    quint8 answerCode;             // read requests and their data answers
    int readOrder;                 // place in the full read, -1 when the full read leaves it out
    int writeOrder;                // place in the full write, -1 when the full write leaves it out
    int elements;                  // elements of the section in the whole-device configuration
    QStringList fileKeys;          // the configuration-file keys that hold its values
    QVector<SectionRequest> reads; // the read requests, in the order a full read sends them

    IConfigurationItem *(*create)(int elements, QObject *parent);
    // Decodes a data answer into the section of `cfg`; false when `cfg` has no such section.
    bool (*decode)(Configuration *cfg, const QByteArray &payload);
    // The write requests of the section's current values, in the order they are sent (one per item
    // for sections written item by item). Null for sections the configurator does not write whole.
    QVector<SectionRequest> (*writes)(const Configuration *cfg);
    // Device side: the data answer to a read of `operation`, empty for an operation the section
    // does not answer.
    QByteArray (*encodeAnswer)(const Configuration *cfg, quint8 operation);
    // Device side: stores a write request; false when it is not a well-formed write of this section.
    // Null for sections without writes of their own.
    bool (*decodeWrite)(Configuration *cfg, const QByteArray &payload);
};

// The ten sections, in the order of kd::sectionKeys().
const QVector<Section> &sections();
const Section *sectionByKey(const QString &key);
// The section whose read or write requests carry `code` in packets of `type`; null for none.
const Section *sectionByRequestCode(quint8 code, quint8 type = 6);
// The section whose data answers carry `code` in packets of `type`; null for none.
const Section *sectionByAnswerCode(quint8 code, quint8 type = 6);
// The sections of the full read and of the full write, in the order they are sent.
QVector<const Section *> readOrder();
QVector<const Section *> writeOrder();
// The write requests of section `key` for the values in `cfg`; empty when `cfg` lacks the section.
QVector<SectionRequest> writeRequests(const QString &key, const Configuration *cfg);

} // namespace kd
