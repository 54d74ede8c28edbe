#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QTime>
#include <QVector>
#include <functional>
#include <memory>

class Connection;
class ConnectionWaitDlg;
class Device;
class DeviceWorkflows;
class FirmwareUpdater;
class ProgramUpdatePage;
class Prompter;
class QDialog;
class QListWidgetItem;
class QPushButton;
class QTabWidget;
class QTIFWUpdater;
class QTimer;
class SettingsPageBase;
class SettingsStatePage;
class StatusNotifier;
class VantorConfiguration;
struct ComponentInformation;

namespace Ui {
class MainWindow;
}

// The configurator's window: page list, menus, status-bar indicators and the telemetry timer. The
// device session (queue, response timer, parser) and the workflows live below it; the window asks the
// user, wires their signals to the pages and turns failures into messages.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    enum ConnectionType { LocalConnection = 0, RemoteConnection = 1 };
    // Rows of the page list.
    enum Page {
        DevicePage,
        SystemPage,
        NavigationPage,
        DataTransferPage,
        AnalogPage,
        LogicPage,
        FuelPage,
        OutputsPage,
        FirmwarePage,
        PageCount
    };

    struct Options {
        // A serial port to open instead of the stored one (the virtual device's pseudo-terminal).
        QString portName;
        // Builds the link for a connection type; empty: the serial or TCP link from the settings.
        std::function<Connection *(int connectionType)> linkFactory;
        // Questions and messages; null: the usual Qt boxes.
        std::shared_ptr<Prompter> prompter;
        // Response interval of the session in ms; 0 keeps the session's own.
        int responseIntervalMs = 0;
        // Download the device firmware image at start (a box reports a failed download).
        bool updateCheckAtStart = true;
        // Open the link during construction.
        bool connectAtStart = true;
        // Where the GSM page keeps its profiles; empty: its default.
        QString gsmProfilePath;
        QString gsmNetworksPath;
    };

    explicit MainWindow(QWidget *parent = nullptr);
    explicit MainWindow(const Options &options, QWidget *parent = nullptr);
    ~MainWindow() override;

    // Start-up: runs the connection dialog through runLogin (normally exec()), builds and shows the
    // window only on acceptance and runs the event loop. A rejected dialog ends with 0, no window.
    static int run(const Options &options, const std::function<int(QDialog *)> &runLogin);

    int connectionType() const { return m_connectionType; }
    quint32 telemetryPeriod() const { return m_telemetryPeriod; }
    QTimer *telemetryTimer() const { return m_telemetryTimer; }
    QPushButton *connectionTypeButton() const { return m_typeButton; }
    QPushButton *connectionStateButton() const { return m_stateButton; }
    Prompter *prompter() const { return m_prompter.get(); }
    Device *device() const { return m_device; }
    DeviceWorkflows *workflows() const { return m_workflows; }
    VantorConfiguration *configuration() const { return m_configuration; }
    SettingsStatePage *statePage() const { return m_statePage; }
    ProgramUpdatePage *firmwarePage() const { return m_firmwarePage; }
    // The settings page shown for a list row (for the data-transfer row: its current tab).
    SettingsPageBase *settingsPage(int row) const;
    QList<SettingsPageBase *> settingsPages() const;
    // The waiting dialog of a lost or not yet answering device; null when none is shown.
    ConnectionWaitDlg *waitDialog() const;
    bool isIdentified() const { return m_identified; }

    // Reads the stored theme and applies its style sheet to the whole application.
    static void applySkin();

public slots:
    void on_needUpdFirmware();
    void on_listWidget_currentItemChanged(QListWidgetItem *current, QListWidgetItem *previous);
    void on_action_CreateNewCfg_triggered();
    void on_action_OpenCfgFromFile_triggered();
    void on_action_SaveCfgToFile_triggered();
    void on_action_Exit_triggered();
    void on_action_ClearMemory_triggered();
    void on_action_ResetSettings_triggered();
    void on_actionSettings_triggered();
    void on_timeout();

    void readAll();
    void writeAll();
    void applyCurrentPage();
    // Closes the current link and opens it again (a new link for the connection type).
    void reconnect();
    void setConnectionType(int type);
    // Shows the page of a list row (as if the user picked it).
    void showPage(int row);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void setupStatusBar();
    void setupActions();
    void setupPages();
    void setupSession();
    void setupUpdaters();
    void readNetworkSettings();

    Connection *createLink();
    void openLink();
    void onLinkConnected();
    void onLinkError(int group, int code);
    void onDeviceOverflow();
    void onConnectionLost();
    void onConnectionRestored();
    void onWaitCancelled();
    void showWaitDialog(const QString &text);
    void closeWaitDialog();
    void dropConnection();

    void onConfigPackage(int code);
    void onIdentified();
    void onDeviceBlocked();
    void onPasswordRequested();
    void onPasswordError();

    void updateTelemetryPeriod();
    void startTelemetry();
    void setConnectionTypeIndicator(bool connected);
    void setNotConnected();
    void setDeviceName(const QString &name);
    void updateOutputsPage();
    void updateApplyButton();
    // Device commands only while a link is up and no firmware transfer runs.
    void updateDeviceActions();
    void refreshAllPages();
    // The unsaved-change prompt of the page shown for a row; true when leaving may proceed.
    bool confirmLeave(int row);
    void storeModifiedPages();
    // Runs `then` once every frame queued now has been written (at once with an empty queue or no link).
    void whenSent(const std::function<void()> &then);

    void showAbout();
    void showSoftwareVersion();
    void checkProgramUpdates();
    void checkDeviceUpdates();
    // Downloads the current firmware image; `asked`: the user wants to hear the outcome either way.
    void startDeviceUpdateCheck(bool asked);
    void onDeviceFirmwareReady();
    void onUpdateCheckComplete(const QList<ComponentInformation> &components);
    void showFirmwarePage();
    void startFirmwareUpdate();
    void onFirmwareUpdateComplete();
    void setDeviceControlsEnabled(bool on);

    QString appTitle() const;

    std::unique_ptr<Ui::MainWindow> ui;
    Options m_options;
    std::shared_ptr<Prompter> m_prompter;
    std::unique_ptr<StatusNotifier> m_statusNotifier;
    VantorConfiguration *m_configuration = nullptr;
    Device *m_device = nullptr;
    DeviceWorkflows *m_workflows = nullptr;
    QTimer *m_telemetryTimer = nullptr;
    quint32 m_telemetryPeriod = 0;
    // Deadlines kept for the device's periodic jobs; nothing consults them yet.
    QVector<QTime> m_deadlines;
    int m_connectionType = LocalConnection;
    bool m_identified = false;
    bool m_updating = false;
    bool m_storedPasswordTried = false;
    bool m_closing = false;
    QPushButton *m_typeButton = nullptr;
    QPushButton *m_stateButton = nullptr;
    QPointer<ConnectionWaitDlg> m_waitDialog;

    SettingsStatePage *m_statePage = nullptr;
    QTabWidget *m_dataTabs = nullptr;
    QVector<SettingsPageBase *> m_rowPages; // per list row, null for rows without a settings page
    QList<SettingsPageBase *> m_dataPages;  // the tabs of the data-transfer row
    ProgramUpdatePage *m_firmwarePage = nullptr;
    int m_currentRow = DevicePage;

    FirmwareUpdater *m_firmwareUpdater = nullptr;
    QTIFWUpdater *m_selfUpdater = nullptr;
    bool m_deviceUpdateAsked = false;
    bool m_versionAnswered = false;
    QString m_lastDir;
};
