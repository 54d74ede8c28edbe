#pragma once

#include "protocol/SessionController.h"

#include <QMainWindow>
#include <QPointer>
#include <QTime>
#include <QVector>
#include <functional>
#include <memory>

class Connection;
class AutoConnect;
class ConfigurationFiles;
class SafeWrites;
class ConnectionIndicators;
class ConnectionWaitDlg;
class FirmwareUpdateFlow;
class ProgramUpdatePage;
class Prompter;
class QDialog;
class QListWidgetItem;
class QPushButton;
class QTimer;
class SettingsPageBase;
class SettingsPages;
class SettingsStatePage;
class UpdateChecks;
class WindowActions;
class VantorConfiguration;

namespace Ui {
class MainWindow;
}

// The configurator's window: page list, menus, status-bar indicators and the telemetry timer. The
// device session (link, password, jobs, loss) is the SessionController below it; the window renders its
// states, asks the user and turns its reports into messages.
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
    QPushButton *connectionTypeButton() const;
    QPushButton *connectionStateButton() const;
    Prompter *prompter() const { return m_prompter.get(); }
    SessionController *session() const { return m_session; }
    VantorConfiguration *configuration() const { return m_configuration; }
    SettingsStatePage *statePage() const { return m_statePage; }
    ProgramUpdatePage *firmwarePage() const;
    // The settings page shown for a list row (for the data-transfer row: its current tab).
    SettingsPageBase *settingsPage(int row) const;
    QList<SettingsPageBase *> settingsPages() const;
    // The waiting dialog of a silent device or of the server; null when none is shown.
    ConnectionWaitDlg *waitDialog() const;
    AutoConnect *autoConnect() const { return m_autoConnect; }
    bool isIdentified() const;

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
    // The write confirmation with its changes, then the write of `sections` (a full write when empty).
    void writeSections(const QStringList &sections);
    void applyCurrentPage();
    // Closes the current link and opens a new one for the connection type.
    void reconnect();
    void setConnectionType(int type);
    // Shows the page of a list row (as if the user picked it).
    void showPage(int row);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void setupPages();
    void setupSession();

    // Everything the user sees of the session follows its state.
    void render();
    void updateDeviceActions();
    void updateOutputsPage();
    void updateTelemetryPeriod();
    void onLinkFailed(const LinkFailure &failure);
    void onPasswordRequested();
    void onDeviceBlocked(const QString &powerCycleText);
    void onJobFinished(const JobResult &result);
    void onWaitCancelled();
    // False for a device command the session cannot take now, after telling the user why (instead of
    // nothing happening).
    bool canStartJob();

    // Writes a settings page to the device as one job; false when nothing could be sent.
    bool writePage(SettingsPageBase *page);
    // Runs `then` now, or once the running job (a page written on leaving) has ended.
    void afterJob(std::function<void()> then);

    // After a new configuration or a file: the pages show its values.
    void showLoadedValues();
    void setDeviceControlsEnabled(bool on);
    QString appTitle() const;

    std::unique_ptr<Ui::MainWindow> ui;
    Options m_options;
    std::shared_ptr<Prompter> m_prompter;
    VantorConfiguration *m_configuration = nullptr;
    SessionController *m_session = nullptr;
    QTimer *m_telemetryTimer = nullptr;
    quint32 m_telemetryPeriod = 0;
    // Deadlines kept for the device's periodic jobs; nothing consults them yet.
    QVector<QTime> m_deadlines;
    int m_connectionType = LocalConnection;
    bool m_updating = false;
    bool m_closing = false;
    bool m_askingPassword = false;
    std::function<void()> m_afterJob;
    ConnectionIndicators *m_indicators = nullptr;
    AutoConnect *m_autoConnect = nullptr;

    SettingsStatePage *m_statePage = nullptr;
    SettingsPages *m_pages = nullptr;
    FirmwareUpdateFlow *m_firmware = nullptr;
    int m_currentRow = DevicePage;
    UpdateChecks *m_updates = nullptr;
    WindowActions *m_actions = nullptr;
    std::unique_ptr<ConfigurationFiles> m_files;
    SafeWrites *m_safe = nullptr;
};
