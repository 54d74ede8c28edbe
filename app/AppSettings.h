#pragma once

#include "protocol/SessionController.h"

#include <QSerialPort>
#include <QSettings>
#include <QString>

// The configurator's own preferences (not the device's) in the per-user settings store. Every
// reader returns the documented default when its key is absent; nothing here needs a widget, so
// the command-line tool and the tests use the same keys and defaults as the dialogs.
//
// Two keys hold "save the device log to a file": "loginSetings/logSave" (spelt so by the settings
// dialog) and "loginSettings/logSave" (kept by the server dialog). They are independent entries on
// purpose: each dialog reads back only its own spelling.
class AppSettings {
public:
    static constexpr const char *Organisation = "Tavrel";
    static constexpr const char *Application = "Tavrel_micro_cfg";

    enum ConnectionType { LocalConnection = 0, RemoteConnection = 1 };

    static constexpr int DefaultServerPort = 1256;
    static constexpr int DefaultTimeoutSeconds = 15;
    static constexpr int SerialBaudRate = 115200;
    // Shown by the server dialog when no configuration-server host is stored.
    static const QString DefaultServerAddress;

    struct Keys {
        static constexpr const char *PortName = "settings/portName";
        static constexpr const char *SkinName = "settings/skinName";
        static constexpr const char *TelemetryTime = "settings/telemetryTime";
        static constexpr const char *LoginType = "loginSettings/loginType";
        static constexpr const char *PassWord = "loginSettings/passWord";
        static constexpr const char *ServerAddress = "loginSettings/serverAddress";
        static constexpr const char *ServerPort = "loginSettings/serverPort";
        static constexpr const char *SerialNumber = "loginSettings/serialNumber";
        static constexpr const char *Timeout = "loginSettings/Timeout";
        static constexpr const char *SettingsLogSave = "loginSetings/logSave";
        static constexpr const char *ServerLogSave = "loginSettings/logSave";
        static constexpr const char *Login = "loginSettings/login";
        static constexpr const char *UserPassword = "loginSettings/userPassword";
        static constexpr const char *CurrentProxy = "loginSettings/currentProxy";
        static constexpr const char *ProxyServerAddres = "loginSettings/proxyServerAddres";
        static constexpr const char *ProxyPort = "loginSettings/proxyPort";
        static constexpr const char *ProxyLogin = "loginSettings/proxyLogin";
        static constexpr const char *ProxyPassword = "loginSettings/proxyPassword";
        static constexpr const char *VerifyWrites = "settings/verifyWrites";
    };

    // The plain record the window takes whenever it builds a link or a timer: the stored values as
    // the settings dialog sees them, plus the serial line settings (fixed, not stored).
    struct Record {
        QString portName;
        qint32 baudRate = SerialBaudRate;
        QSerialPort::DataBits dataBits = QSerialPort::Data8;
        QSerialPort::Parity parity = QSerialPort::NoParity;
        QSerialPort::StopBits stopBits = QSerialPort::OneStop;
        QSerialPort::FlowControl flowControl = QSerialPort::NoFlowControl;

        int skinName = 0;
        int telemetryTime = 0;
        int loginType = LocalConnection;
        int passWord = 0;
        QString serverAddress;
        int serverPort = 0;
        QString serialNumber;
        int timeoutSeconds = 0;
        bool logSave = false; // the settings dialog's spelling of the key
        QString login;
        QString userPassword;
        int currentProxy = 0;
        QString proxyServerAddres;
        int proxyPort = 0;
        QString proxyLogin;
        QString proxyPassword;
        bool verifyWrites = true; // read the written sections back and compare
    };

    // Uses the program's own store (organisation "Tavrel", application "Tavrel_micro_cfg") whatever
    // the application object's names are, so dialogs shown before the main window agree with it.
    AppSettings();
    // Reads and writes the given store instead (not owned).
    explicit AppSettings(QSettings *store);
    ~AppSettings();
    AppSettings(const AppSettings &) = delete;
    AppSettings &operator=(const AppSettings &) = delete;

    QSettings *store() const { return m_store; }
    void sync();

    QString portName() const;
    void setPortName(const QString &name);
    int skinName() const;
    void setSkinName(int row);
    int telemetryTime() const;
    void setTelemetryTime(int row);
    int loginType() const;
    void setLoginType(int type);
    int passWord() const;
    void setPassWord(int password);
    QString serverAddress() const;
    void setServerAddress(const QString &host);
    int serverPort() const;
    void setServerPort(int port);
    QString serialNumber() const;
    void setSerialNumber(const QString &imei);
    int timeoutSeconds() const;
    void setTimeoutSeconds(int seconds);
    bool settingsLogSave() const;
    void setSettingsLogSave(bool on);
    bool serverLogSave() const;
    void setServerLogSave(bool on);
    QString login() const;
    void setLogin(const QString &name);
    QString userPassword() const;
    void setUserPassword(const QString &password);
    int currentProxy() const;
    void setCurrentProxy(int row);
    QString proxyServerAddres() const;
    void setProxyServerAddres(const QString &host);
    int proxyPort() const;
    void setProxyPort(int port);
    QString proxyLogin() const;
    void setProxyLogin(const QString &name);
    QString proxyPassword() const;
    void setProxyPassword(const QString &password);
    bool verifyWrites() const; // on unless switched off
    void setVerifyWrites(bool on);

    // What the server dialog shows: the stored values with its replacements for absent ones.
    QString serverAddressOrDefault() const;
    int serverPortOrDefault() const;
    int timeoutSecondsOrDefault() const;

    // The traffic log goes to a file when either dialog has the option on.
    bool deviceLogToFile() const;

    Record record() const;
    // What the session needs to connect: the link of the connection type (a serial port given on the
    // command line before the stored one; none stored: detection by USB identifiers) and the start-up
    // password, sent once when the device asks.
    SessionController::Settings sessionSettings(bool remote, const QString &portOverride) const;
    // Writes every stored field of the record (the serial line settings are not stored).
    void writeRecord(const Record &r);

    // Telemetry poll period in milliseconds, 0 = no polling. The USB link always polls every
    // second. The remote link takes the stored row of the period list, and the table runs against
    // the row labels ("5 сек" polls every second, "<Нет>" every 50 ms, "Непрерывно" never): this is
    // how the device firmware's remote sessions have always been paced, so it stays.
    static quint32 telemetryPeriod(int connectionType, int telemetryRow);

private:
    QSettings *m_store;
    bool m_owned;
};
