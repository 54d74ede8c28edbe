#pragma once

#include <QDialog>

class AppSettings;
class QLabel;
class QLineEdit;
class QRadioButton;

// The start-up dialog: USB or remote connection, the IMEI of the device to reach through the
// configuration server and the device password. Accepting it builds the main window with that
// choice; the choice is stored for the next start.
class loginDialog : public QDialog {
    Q_OBJECT
public:
    // store: the settings to read and write (not owned); null = the program's own store.
    explicit loginDialog(QWidget *parent = nullptr, AppSettings *store = nullptr);
    ~loginDialog() override;

    int connectionType() const;
    int password() const;
    QString imei() const;
    QString serverAddress() const { return m_serverAddress; }
    QString serverPort() const { return m_serverPort; }
    QString hintText() const;

    // The text of the hint for a server address and port as stored.
    static QString hintFor(const QString &address, const QString &port);

    QLineEdit *imeiEdit() const { return m_imei; }
    QLineEdit *passwordEdit() const { return m_password; }
    QRadioButton *localButton() const { return m_local; }
    QRadioButton *remoteButton() const { return m_remote; }

public slots:
    void accept() override;

private slots:
    void openServerSettings();
    void updateRemoteFields();

private:
    void readServer();

    AppSettings *m_store;
    bool m_ownsStore;
    QString m_serverAddress;
    QString m_serverPort;
    QRadioButton *m_local;
    QRadioButton *m_remote;
    QLineEdit *m_imei;
    QLineEdit *m_password;
    QLabel *m_hint;
};
