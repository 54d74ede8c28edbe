#pragma once

#include <QObject>

// Tells when one telemetry round is complete: the answer of the last kind the poll asks for has come,
// or the next poll starts while a round is still open (its last answer was lost or refused). Each
// round is reported once.
class TelemetryRoundTracker : public QObject {
    Q_OBJECT
public:
    explicit TelemetryRoundTracker(int lastKind, QObject *parent = nullptr);

public slots:
    // Feeds the telemetry decoder's ControlTelemetry(kind).
    void kindArrived(int kind);
    void pollStarted();

signals:
    void roundComplete();

private:
    void close();

    int m_lastKind;
    bool m_open = false;
};
