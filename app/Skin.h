#pragma once

#include <QByteArray>
#include <QString>

class QApplication;

// The application style sheet chosen by "settings/skinName": 0 the light sheet, 1 the dark one.
// Any other value selects nothing and leaves whatever look the application has; an unknown value
// written by a newer or older configurator must not break the window.
namespace Skin {

inline constexpr int Light = 0;
inline constexpr int Dark = 1;

// The resource of the sheet for a stored value, or an empty string for an unknown value.
QString resourceFor(int skin);

// The sheet text: the bytes up to the first zero byte, as Latin-1.
QString sheetText(const QByteArray &bytes);

} // namespace Skin

// Sets the sheet of the stored value on the whole application. Returns whether a sheet was set;
// an unknown value or an unreadable resource change nothing and show nothing.
bool applySkin(QApplication *app, int skin);

// applySkin() with the value from the settings store.
bool applyStoredSkin(QApplication *app);
