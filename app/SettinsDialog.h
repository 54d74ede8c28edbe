#pragma once

#include "app/AppSettings.h"
#include "protocol/SerialConnection.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

// The configurator's preferences: serial port, connection type, configuration server, proxy,
// theme, telemetry period and the device log. It loads the stored values when built; apply()
// stores them and tells the window to re-apply the skin and the telemetry period. settings() is the
// plain record the window takes whenever it builds a link or a timer.
class SettinsDialog : public QDialog {
    Q_OBJECT
public:
    // Rows of the theme list: the stored row is the skin value, so the light sheet comes first.
    enum ThemeRow { LightThemeRow = 0, DarkThemeRow = 1 };

    // store: the settings to read and write (not owned); null = the program's own store.
    explicit SettinsDialog(QWidget *parent = nullptr, AppSettings *store = nullptr);
    ~SettinsDialog() override;

    AppSettings::Record settings() const { return m_current; }

    // The first entry of the port list: no fixed port, the device is looked for by its USB
    // identifiers at every connect. It is the choice while no port is stored.
    static const QString AutoPortText;

    // Replaces the system's port enumeration (tests) and lists the ports again. The device's own
    // ports come first; the others follow for a manual choice.
    void setPortLister(SerialConnection::PortLister lister);
    // The port the window is connected through now (found by detection or given on the command line):
    // listed and named, but not chosen; only the user's pick becomes a fixed port.
    void setPortInUse(const QString &portName);

    QComboBox *themeBox() const { return m_theme; }
    QComboBox *telemetryBox() const { return m_telemetry; }
    QComboBox *connectionTypeBox() const { return m_connectionType; }
    QLineEdit *imeiEdit() const { return m_imei; }
    QCheckBox *logSaveBox() const { return m_logSave; }
    QComboBox *portBox() const { return m_port; }
    QLabel *manufacturerLabel() const { return m_manufacturer; }
    QLabel *portInUseLabel() const { return m_inUse; }

signals:
    // Stored: the window re-applies the skin and recomputes the telemetry period.
    void settingsApplied();
    // The stored theme row changed with the last apply().
    void skinChanged(int skin);

public slots:
    void showPortInfo(int index);
    void apply();
    void checkCustomBaudRatePolicy(int index);
    void checkCustomDevicePathPolicy(int index);
    void on_applyButton_clicked();
    void on_pushButton_clicked();
    // Lists the serial ports again (a device plugged in while the dialog is open).
    void fillPortsInfo();

private:
    void buildForm();
    void fillPortsParameters();
    void fillPorts(const QString &select);
    void load();
    AppSettings::Record fromWidgets() const;

    AppSettings *m_store;
    bool m_ownsStore;
    AppSettings::Record m_current;
    SerialConnection::PortLister m_lister = &SerialConnection::systemPorts;
    QString m_portInUse;

    QComboBox *m_connectionType = nullptr;
    QComboBox *m_port = nullptr;
    QLabel *m_inUse = nullptr;
    QLabel *m_description = nullptr;
    QLabel *m_manufacturer = nullptr;
    QLabel *m_vid = nullptr;
    QLabel *m_pid = nullptr;
    QComboBox *m_baudRate = nullptr;
    QComboBox *m_dataBits = nullptr;
    QComboBox *m_parity = nullptr;
    QComboBox *m_stopBits = nullptr;
    QComboBox *m_flowControl = nullptr;
    QLineEdit *m_serverAddress = nullptr;
    QSpinBox *m_serverPort = nullptr;
    QLineEdit *m_imei = nullptr;
    QLineEdit *m_login = nullptr;
    QLineEdit *m_userPassword = nullptr;
    QSpinBox *m_timeout = nullptr;
    QComboBox *m_proxyType = nullptr;
    QLineEdit *m_proxyAddress = nullptr;
    QSpinBox *m_proxyPort = nullptr;
    QLineEdit *m_proxyLogin = nullptr;
    QLineEdit *m_proxyPassword = nullptr;
    QComboBox *m_theme = nullptr;
    QComboBox *m_telemetry = nullptr;
    QCheckBox *m_logSave = nullptr;
    QCheckBox *m_verifyWrites = nullptr;
};
