#pragma once

#include <QObject>
#include <QPointer>

class ConnectionWaitDlg;
class QPushButton;
class QStatusBar;
class QWidget;

// What the window shows of the connection: the two status-bar buttons, the connection type (USB or
// Интернет, on or off) and the state ("Нет подключенных приборов" or "Подключен прибор: ..."), and the
// box that waits for a silent device or for the server. They show what they are told, nothing more.
class ConnectionIndicators : public QObject {
    Q_OBJECT
public:
    ConnectionIndicators(QStatusBar *bar, QWidget *window);

    QPushButton *typeButton() const { return m_type; }
    QPushButton *stateButton() const { return m_state; }

    // The type icon while a link is being made (plain, neither on nor off).
    void showLinking(bool remote);
    void showType(bool remote, bool connected);
    // Several devices on the bus: the USB icon off, whatever else is shown.
    void showTypeOff();
    void showNoDevice();
    void showBusy(const QString &text);
    void showDevice(const QString &name);

    // At most one wait box: a second call while it is shown changes nothing.
    void showWait(const QString &text);
    // Closes the box without reporting a cancel.
    void closeWait();
    ConnectionWaitDlg *waitDialog() const { return m_wait; }

signals:
    // The user gave up waiting.
    void waitCancelled();

private:
    QPushButton *m_type;
    QPushButton *m_state;
    QPointer<ConnectionWaitDlg> m_wait;
};
