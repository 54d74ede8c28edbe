#pragma once

#include <QDate>
#include <QString>
#include <QtGlobal>

// Where the program's log lines go. Every line is written to the console's error stream in the
// terminal's encoding (CP1251 on a Windows console, whose code pages are switched to 1251 first;
// the locale's encoding elsewhere). When saving the device log is on, the traffic log - the lines
// of the "default" logging category - is also appended to one file per day:
// <application data>/logs/device-YYYYMMDD.log.
namespace DeviceLog {

// Installs the message handler; main calls it once, before the first window.
void install(bool toFile);

// Turns the file copy on or off later (the settings dialogs call it when the option changes).
void setFileEnabled(bool on);
bool fileEnabled();

// The folder of the day files; tests point it elsewhere. Empty restores the default.
void setDirectory(const QString &path);
QString directory();
QString filePath(const QDate &day = QDate::currentDate());

// The handler itself, exposed so that tests can drive it without replacing Qt's.
void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message);

} // namespace DeviceLog
