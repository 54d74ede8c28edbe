#pragma once

#include <QDialog>

class AppSettings;
class QCheckBox;
class QLineEdit;
class QSpinBox;

// Settings of the remote connection: the configuration server's host and port, the time-out for
// operations with re-request and whether the device log is saved to a file. Absent values show the
// deployment defaults (the maker's server, port 1256, 15 s).
class loginSettings : public QDialog {
    Q_OBJECT
public:
    // store: the settings to read and write (not owned); null = the program's own store.
    explicit loginSettings(QWidget *parent = nullptr, AppSettings *store = nullptr);
    ~loginSettings() override;

    QString serverAddress() const;
    QString serverPort() const;
    int timeoutSeconds() const;
    bool logSave() const;

    // The folder the configurator's own updates come from, shown for information (kept by the
    // update checker, not in the settings store).
    void setUpdatePath(const QString &path);
    QString updatePath() const;

    QLineEdit *addressEdit() const { return m_address; }
    QLineEdit *portEdit() const { return m_port; }
    QSpinBox *timeoutBox() const { return m_timeout; }
    QCheckBox *logSaveBox() const { return m_logSave; }

signals:
    // The dialog is done (accepted or not); whoever opened it re-reads the server values.
    void loginServiceDelited();

public slots:
    void accept() override;
    void done(int result) override;

private:
    void load();
    void save();

    AppSettings *m_store;
    bool m_ownsStore;
    QLineEdit *m_address;
    QLineEdit *m_port;
    QSpinBox *m_timeout;
    QCheckBox *m_logSave;
    QLineEdit *m_updatePath;
};
