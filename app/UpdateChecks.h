#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class FirmwareUpdater;
class Prompter;
class QTIFWUpdater;
class QWidget;
struct ComponentInformation;

// The two update checks of the window: the configurator's own (the installer's maintenance tool) and the
// device firmware (the current image downloaded and compared with the device's version). Reports their
// outcomes to the user; the window only hears that a newer firmware should be installed.
class UpdateChecks : public QObject {
    Q_OBJECT
public:
    // window: parent of the boxes; deviceVersion: the identified device's firmware version, or -1.
    UpdateChecks(QWidget *window, std::shared_ptr<Prompter> prompter, std::function<qint64()> deviceVersion);

    QTIFWUpdater *programUpdater() const { return m_selfUpdater; }
    // The downloaded image; empty before the first download.
    QString firmwarePath() const;

    // Reads "network.xml" beside the program for the program check's proxy.
    void readNetworkSettings();
    void checkProgram();
    // Downloads the current image; `asked`: the user wants to hear the outcome either way.
    void checkDevice(bool asked);
    // A device was identified: compares its version with a downloaded image.
    void deviceIdentified();
    // "О программе" and "Версия ПО" (with the device's firmware version once one is identified).
    void showAbout();
    void showVersions();

signals:
    // The firmware check found a newer image ("Новая версия обновления прибора доступна").
    void newFirmwareAvailable();

private:
    void onFirmwareReady();
    void onProgramCheckComplete(const QList<ComponentInformation> &components);
    QString appTitle() const;

    QWidget *m_window;
    std::shared_ptr<Prompter> m_prompter;
    std::function<qint64()> m_deviceVersion;
    QTIFWUpdater *m_selfUpdater;
    FirmwareUpdater *m_firmwareUpdater = nullptr;
    bool m_asked = false;
    bool m_versionAnswered = false;
};
