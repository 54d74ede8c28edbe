#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// `decode`: explains one frame copied from the exchange log, offline. The header and checksum come
// from the frame layer; section values are decoded by the same model code the session uses (answers
// as the configurator reads them, requests as the device would store them).
class FrameText {
public:
    // The frame's bytes from a log line ("... Command a5a5...", "... From device: a5a5...: 12") or from
    // bare hex with optional blanks, colons or a 0x prefix. False when no even run of hex digits is left.
    static bool extractHex(const QString &text, QByteArray *bytes);
    static QStringList explain(const QByteArray &frame);
};
