#pragma once

#include "Devices/TelemetryRecords.h"

#include <QString>

// How the "Прибор" page turns telemetry values into text. Pure functions, no widgets, so that the
// page, the command-line tool and the tests share one wording.
namespace TelemetryText {

// SIM card state reported by the modem, 0..8; codes above 8 give no text.
QString simState(int code);
// Network registration state of the modem, 0..5; 4 and codes above 5 give no text.
QString registration(int code);

// SIM slot state (kd::SimSlotState); unknown codes read as an absent card.
QString simSlot(int code);

// "dd.mm.yy hh:mm:ss", every field two digits.
QString fixDateTime(int day, int month, int year, int hours, int minutes, int seconds);
// "-DD° MM.mmmmm": the minus sign for the southern or western hemisphere, minutes to five decimals
// as the receiver reports them.
QString coordinate(bool negativeHemisphere, int degrees, double minutes);
// 0 and 1 ordinary, 2 differential, 3 and above precise.
QString fixQuality(int quality);
// "h / v / p" with two decimals each.
QString dilution(double horizontal, double vertical, double position);

// Fix mode 2 and 3 are 2D and 3D fixes; anything else means no fix.
bool hasFix(int mode);
QString fixButton(int mode, int satellites);
QString fixLabel(int mode);
// The text of a field that has no value without a fix.
QString noFixValue();

// Protocol code of a server connection (kd::ServerProtocol); unknown codes read as the device's own.
QString serverProtocol(int code);
// kd::ServerState; unknown values read as disconnected.
QString serverState(int code);
// "a.b.c.d:port", first octet first.
QString serverAddress(const quint8 ip[4], int port);

QString counter(qint64 value, qint64 total);
QString spacedCounter(qint64 value, qint64 total);
QString temperatures(int first, int second);
QString activity(bool active);

// Input mode (kd::InputMode) with its value: the logic level, or the measured value after a blank
// for the frequency and the three counters. Unknown modes read as off.
QString inputMode(int mode, qint64 value);

// The fields of one navigation receiver; without a fix the date, coordinates, speed and course
// read "-".
QString fixDateTime(const kd::NavReceiverRecord &r);
QString latitude(const kd::NavReceiverRecord &r);
QString longitude(const kd::NavReceiverRecord &r);
QString dilution(const kd::NavReceiverRecord &r);
QString speed(const kd::NavReceiverRecord &r);
QString course(const kd::NavReceiverRecord &r);
// Volts from millivolts, two decimals.
QString voltage(quint32 millivolts);
QString duration(quint32 seconds);

} // namespace TelemetryText
