#pragma once

#include <QString>

// How the "Прибор" page turns telemetry values into text. Pure functions, no widgets, so that the
// page, the command-line tool and the tests share one wording.
namespace TelemetryText {

// SIM card state reported by the modem, 0..8; codes above 8 give no text.
QString simState(int code);
// Network registration state of the modem, 0..5; 4 and codes above 5 give no text.
QString registration(int code);

enum class SimSlot { Absent, Inserted, Active };
QString simSlot(SimSlot slot);

// "dd.mm.yy hh:mm:ss", every field two digits.
QString fixDateTime(int day, int month, int year, int hours, int minutes, int seconds);
// "-DD° minutes": the minus sign for the southern or western hemisphere.
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

// Protocol code of a server connection: 0 the device's own protocol, 1 the Wialon combined one.
QString serverProtocol(int code);
// 0 disconnected, 1 connecting, 2 connected; other values read as disconnected.
QString serverState(int code);
// IPv4 address stored least significant byte first: 0x0100007F reads "127.0.0.1".
QString ipAddress(quint32 address);
QString serverAddress(quint32 address, int port);

QString counter(qint64 value, qint64 total);
QString spacedCounter(qint64 value, qint64 total);
QString temperatures(int first, int second);
QString activity(bool active);

// Input modes: 0 off, 1 logic 0, 2 logic 1, 3 frequency, 4 USS counter, 5 DFM counter, 6 universal
// counter; the last four carry the measured value after a blank.
QString inputMode(int mode, qint64 value);

} // namespace TelemetryText
