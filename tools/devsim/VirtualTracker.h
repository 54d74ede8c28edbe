#pragma once

#include "tools/devsim/TrackerModel.h"

#include <QByteArray>
#include <QJsonObject>
#include <QObject>
#include <functional>
#include <optional>

class VantorConfiguration;
namespace kd {
struct Section;
}

// The tracker's firmware as the configurator meets it: it answers every request of the UNP protocol
// from its own configuration and live state, stores every write, and guards itself with a password and
// a blocked mode. It only turns request payloads into answer frames; links, faults and timing are
// elsewhere, so tests drive it directly.
class VirtualTracker : public QObject {
    Q_OBJECT
public:
    explicit VirtualTracker(QObject *parent = nullptr);
    ~VirtualTracker() override;

    // The millisecond clock since power-on that drives the live state (a monotonic clock by default).
    void setClock(std::function<qint64()> clock);

    // A device password: until a login with it, every request is answered "authorisation needed".
    void setPassword(std::optional<quint32> password);
    std::optional<quint32> password() const { return m_password; }
    bool loggedIn() const { return m_loggedIn; }
    void setBlocked(bool blocked) { m_blocked = blocked; }
    bool blocked() const { return m_blocked; }
    // Writes of these sections are answered with status 1 but change nothing (a device that loses them).
    void setIgnoredWrites(const QStringList &sectionKeys);
    // Reads of these sections are never answered (a section the device keeps silent about).
    void setSilentReads(const QStringList &sectionKeys);
    // The write command code of a section key, 0 for a section that is not written.
    static quint8 writeCode(const QString &sectionKey);

    // Answer frames for one request frame (type and payload); usually exactly one. Status answers
    // carry the statuses of UNPParcer::Status.
    QList<QByteArray> handle(quint8 type, const QByteArray &payload);

    // The factory configuration (identity included).
    void restoreDefaults();
    // The device started again (after a firmware update), or a new configurator reached it through the
    // server: a login is needed again.
    void logout();

    // Device state as a JSON object: the configuration-file form plus, under "device", what that form
    // loses (IMEI, faultSpeed, roaming words, output states, the password).
    QJsonObject saveState() const;
    // Restores a state saved by saveState(); a plain configuration file is accepted too.
    void loadState(const QJsonObject &root);

    VantorConfiguration *configuration() const { return m_config; }
    TrackerModel &model() { return m_model; }
    // The live state at the current clock reading.
    const TrackerModel &modelNow();

    static QByteArray statusPayload(quint8 code, quint8 operation, quint8 parameter, quint16 status);

signals:
    // A write changed the stored configuration (or the password): time to save the state.
    void stateChanged();
    // The configurator asked for firmware-update mode; the answer is among the frames returned.
    void firmwareUpdateRequested();

private:
    QByteArray handleConfig(const QByteArray &payload);
    QByteArray handleCommand(const QByteArray &payload);
    bool writeSection(const kd::Section &section, const QByteArray &payload);
    void refreshModelSetup();
    void trimOutputs();

    VantorConfiguration *m_config;
    TrackerModel m_model;
    std::function<qint64()> m_clock;
    std::optional<quint32> m_password;
    bool m_loggedIn = false;
    bool m_blocked = false;
    int m_outputCount = 2;
    QList<quint8> m_ignoredWrites;
    QList<quint8> m_silentReads;
};
