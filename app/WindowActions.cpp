#include "app/WindowActions.h"

#include "app/MainWindow.h"
#include "app/SafeWrites.h"
#include "app/UpdateChecks.h"
#include "pages/SettingsPageBase.h"
#include "ui_MainWindow.h"

#include <QActionGroup>

namespace {
const char *const NotOffered = "Прибор не поддерживает эту команду";
}

WindowActions::WindowActions(MainWindow *window, Ui::MainWindow *ui, UpdateChecks *updates, SafeWrites *safe)
    : QObject(window)
    , m_ui(ui) {
    auto *group = new QActionGroup(this);
    group->setExclusive(true);
    group->addAction(ui->action_LocalControl);
    group->addAction(ui->action_RemoteControl);
    connect(ui->action_LocalControl, &QAction::triggered, window,
            [window] { window->setConnectionType(MainWindow::LocalConnection); });
    connect(ui->action_RemoteControl, &QAction::triggered, window,
            [window] { window->setConnectionType(MainWindow::RemoteConnection); });

    // The device firmware has no command for these; they stay visible so the user learns why.
    for (QAction *a : {ui->action_Reboot, ui->action_ReadStatistics}) {
        a->setEnabled(false);
        a->setToolTip(QString::fromUtf8(NotOffered));
        a->setStatusTip(QString::fromUtf8(NotOffered));
    }
    // A menu shows an action's tool tip only when asked to.
    ui->menuDevice->setToolTipsVisible(true);

    connect(ui->action_ReadCfg, &QAction::triggered, window, &MainWindow::readAll);
    connect(ui->action_WriteCfg, &QAction::triggered, window, &MainWindow::writeAll);
    connect(ui->readButton, &QPushButton::clicked, window, &MainWindow::readAll);
    connect(ui->writeButton, &QPushButton::clicked, window, &MainWindow::writeAll);
    connect(ui->applyButton, &QPushButton::clicked, window, &MainWindow::applyCurrentPage);
    connect(ui->action_Reconnect, &QAction::triggered, window, &MainWindow::reconnect);
    connect(ui->connectButton, &QPushButton::clicked, window, &MainWindow::reconnect);
    for (QAction *a : {ui->action_UpdateFirmware, ui->action_UpdateDevice})
        connect(a, &QAction::triggered, window, [window] { window->showPage(MainWindow::FirmwarePage); });
    connect(ui->action_CheckUpdates, &QAction::triggered, updates, [updates] {
        updates->checkProgram();
        updates->checkDevice(true);
    });
    connect(ui->action_CheckProgramUpdates, &QAction::triggered, updates, &UpdateChecks::checkProgram);
    connect(ui->action_CheckDeviceUpdates, &QAction::triggered, updates,
            [updates] { updates->checkDevice(true); });
    connect(ui->action_SoftwareVersion, &QAction::triggered, updates, &UpdateChecks::showVersions);
    connect(ui->action_About, &QAction::triggered, updates, &UpdateChecks::showAbout);
    ui->menuDevice->addSeparator();
    ui->menuDevice->addAction(QStringLiteral("История изменений…"), safe, &SafeWrites::showHistory);
    ui->menuDevice->addAction(QStringLiteral("Сравнить…"), safe, &SafeWrites::showCompare);
}

void WindowActions::setReady(bool ready, const SettingsPageBase *shown) {
    for (QAction *a :
         {m_ui->action_ReadCfg, m_ui->action_WriteCfg, m_ui->action_ClearMemory, m_ui->action_ResetSettings})
        a->setEnabled(ready);
    m_ui->readButton->setEnabled(ready);
    m_ui->writeButton->setEnabled(ready);
    m_ui->applyButton->setEnabled(ready && shown && shown->holdsValues());
    m_ui->applyButton->setToolTip(!shown ? QStringLiteral("На этой странице нет настроек прибора")
                                  : !shown->holdsValues() ? QStringLiteral("На странице нет значений прибора")
                                  : ready ? QString()
                                          : QStringLiteral("Прибор не подключен"));
}

void WindowActions::setControlsEnabled(bool on) {
    for (QAction *a : {m_ui->action_Reconnect, m_ui->action_LocalControl, m_ui->action_RemoteControl,
                       m_ui->action_CreateNewCfg, m_ui->action_OpenCfgFromFile, m_ui->actionSettings})
        a->setEnabled(on);
    m_ui->connectButton->setEnabled(on);
    m_ui->listWidget->setEnabled(on);
}
