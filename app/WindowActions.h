#pragma once

#include <QObject>

class MainWindow;
class SafeWrites;
class SettingsPageBase;
class UpdateChecks;

namespace Ui {
class MainWindow;
}

// The window's menus and buttons: what each one starts and when it can be used. The window decides
// from the session's state; this wires the actions to it and switches them on and off.
class WindowActions : public QObject {
    Q_OBJECT
public:
    WindowActions(MainWindow *window, Ui::MainWindow *ui, UpdateChecks *updates, SafeWrites *safe);

    // The device actions want a ready session; the apply button also a shown page holding device values.
    void setReady(bool ready, const SettingsPageBase *shown);
    // Whatever would change the link or the loaded configuration (held still during a firmware update).
    void setControlsEnabled(bool on);

private:
    Ui::MainWindow *m_ui;
};
