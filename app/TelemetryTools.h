#pragma once

#include "pages/TelemetryChartsPage.h"
#include "support/TelemetryCsvWriter.h"
#include "support/TelemetryHistory.h"

#include <QObject>
#include <QPointer>

class Prompter;
class QAction;
class QMainWindow;
class QTimer;
class TelemetryRoundTracker;
class VantorConfiguration;

// The window's telemetry extras, fed by the telemetry the window already polls (no requests of their
// own): the "Графики" page at the end of the page list, the action "Записать телеметрию в файл…" and
// the action "Сохранить отчёт для поддержки…" at the end of the "Прибор" menu. Each finished telemetry
// round (TelemetryRoundTracker) goes into the history rings, the charts and a running recording.
class TelemetryTools : public QObject {
    Q_OBJECT
public:
    TelemetryTools(QMainWindow *window, VantorConfiguration *configuration, QTimer *pollTimer,
                   Prompter *prompter);
    ~TelemetryTools() override;

    TelemetryChartsPage *chartsPage() const { return m_page; }
    const TelemetryHistory &history() const { return m_history; }
    QAction *recordAction() const { return m_record; }
    QAction *bundleAction() const { return m_bundle; }
    bool isRecording() const { return m_csv.isOpen(); }

    // One finished round, at `timeMs` (the window passes the clock; a benchmark its own).
    void addRound(qint64 timeMs);

public slots:
    // Feed of the telemetry decoder: a block of `kind` is stored in the configuration.
    void telemetryDecoded(int kind);

private:
    void onRecordToggled(bool on);
    void saveBundle();
    void stopRecording();

    QMainWindow *m_window;
    VantorConfiguration *m_configuration;
    Prompter *m_prompter;
    TelemetryHistory m_history;
    TelemetryCsvWriter m_csv;
    TelemetryRoundTracker *m_rounds = nullptr;
    QPointer<TelemetryChartsPage> m_page;
    QAction *m_record = nullptr;
    QAction *m_bundle = nullptr;
};
