#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QTime>
#include <QVector>
#include <functional>
#include <memory>

class Connection;
class Prompter;
class QListWidgetItem;
class QPushButton;
class QTimer;

namespace Ui {
class MainWindow;
}

// The configurator's window: page list, menus, status-bar indicators and the two timers. The device
// session and the workflows live below it; the window wires their signals to pages and boxes.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    enum ConnectionType { LocalConnection = 0, RemoteConnection = 1 };
    enum Page {
        DevicePage,
        SystemPage,
        NavigationPage,
        ServersPage,
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
        std::function<Connection *(int connectionType, QObject *parent)> linkFactory;
        // Questions and messages; null: the usual Qt boxes.
        std::shared_ptr<Prompter> prompter;
        // Response interval of the session in ms; 0 keeps the session's own.
        int responseIntervalMs = 0;
        // Start the firmware download and the maintenance tool check (off in tests).
        bool networkUpdates = true;
        // Open the link during construction.
        bool connectAtStart = true;
    };

    explicit MainWindow(QWidget *parent = nullptr);
    explicit MainWindow(const Options &options, QWidget *parent = nullptr);
    ~MainWindow() override;

    int connectionType() const { return m_connectionType; }
    quint32 telemetryPeriod() const { return m_telemetryPeriod; }
    QTimer *telemetryTimer() const { return m_telemetryTimer; }
    QPushButton *connectionTypeButton() const { return m_typeButton; }
    QPushButton *connectionStateButton() const { return m_stateButton; }
    Prompter *prompter() const { return m_prompter.get(); }

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

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void setupStatusBar();
    void setupActions();
    void updateTelemetryPeriod();
    void setConnectionTypeIndicator(bool connected);
    void setNotConnected();
    void setDeviceName(const QString &name);
    void showAbout();

    std::unique_ptr<Ui::MainWindow> ui;
    Options m_options;
    std::shared_ptr<Prompter> m_prompter;
    QTimer *m_telemetryTimer = nullptr;
    quint32 m_telemetryPeriod = 0;
    // Deadlines kept for the device's periodic jobs; nothing consults them yet.
    QVector<QTime> m_deadlines;
    int m_connectionType = LocalConnection;
    QPushButton *m_typeButton = nullptr;
    QPushButton *m_stateButton = nullptr;
};
