#pragma once

#include <QMetaType>
#include <QString>

// Why a link would not open or went away. The links report raw socket and serial-port codes; the session
// turns them into one of these, and linkErrorText() into the words the user reads.
enum class LinkError {
    None,
    NoDevice,          // no port carries the device's USB identifiers
    SeveralDevices,    // more than one port does
    PortOpenFailed,    // the port would not open (the reason says why)
    DeviceNotFound,    // the port vanished
    DeviceGone,        // the cable was pulled or the other end went away
    PortClosed,        // the port is not open
    PortAccessDenied,  // no permission to use the port
    PortError,         // another complaint of the port
    ServerRefused,     // the server refused the connection
    ServerNotFound,    // the server's name does not resolve
    ServerNoAnswer,    // the server did not answer in time
    ServerUnreachable, // the server was never reached for another reason
    ServerClosed,      // the server hung up
    NetworkError,      // another network error
    ConnectTimeout,    // the link did not come up in time
    LinkClosed,        // the link closed by itself without an error
    NotResponding,     // the device stopped answering
};

struct LinkFailure {
    LinkError error = LinkError::None;
    bool remote = false;
    QString where;  // the port or "host:port"
    QString reason; // what the system said, empty when the error says it all
    int code = 0;   // the socket or serial-port error code behind it

    bool isFailure() const { return error != LinkError::None; }
};
Q_DECLARE_METATYPE(LinkFailure)

// The failure behind a link's error(group, code). `everConnected`: whether the link was ever up, so that
// a server that hangs up before the device was reached is not called a disconnection. None for the
// port's complaints that leave it working.
LinkFailure linkFailure(int errorGroup, int errorCode, bool everConnected);
// The user's text for a failure, the same in the window's boxes and on the terminal.
QString linkErrorText(const LinkFailure &failure);
