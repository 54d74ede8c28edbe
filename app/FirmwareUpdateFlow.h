#pragma once

#include <QObject>
#include <functional>
#include <memory>

class ProgramUpdatePage;
class Prompter;
class QStackedWidget;
class QWidget;
class SessionController;

// The device firmware update as the window runs it: the firmware page, the session switched into the
// boot loader on the same link, the reboot wait box afterwards, then the wait for the device to answer.
class FirmwareUpdateFlow : public QObject {
    Q_OBJECT
public:
    // The page is added to `stack`; lastDir: where the file dialog opens.
    FirmwareUpdateFlow(QWidget *window, QStackedWidget *stack, SessionController *session,
                       std::shared_ptr<Prompter> prompter, std::function<QString()> lastDir);

    ProgramUpdatePage *page() const { return m_page; }

signals:
    // The transfer started (true) or ended (false): the window holds everything else still meanwhile.
    void runningChanged(bool running);
    // The transfer is over and the device starts its new firmware.
    void restarting();

private:
    void start();
    void complete();

    QWidget *m_window;
    SessionController *m_session;
    std::shared_ptr<Prompter> m_prompter;
    ProgramUpdatePage *m_page;
};
