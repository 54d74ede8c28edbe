#pragma once

#include "support/TelemetrySeries.h"

#include <QHash>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QPushButton;
class QScrollBar;
class TelemetryHistory;

namespace QtCharts {
class QChart;
class QChartView;
class QDateTimeAxis;
class QLineSeries;
class QValueAxis;
} // namespace QtCharts

// The "Графики" page: the telemetry series of the last minutes as lines, one chart per unit (voltages,
// satellites, GSM signal, fuel, speed). It draws what the history rings hold; the newest round comes in
// through refresh(). Paused, the picture stays while the rings go on filling, and the scroll bar moves
// back through the kept hour.
class TelemetryChartsPage : public QWidget {
    Q_OBJECT
public:
    static constexpr int DefaultSpanMinutes = 10;

    explicit TelemetryChartsPage(const TelemetryHistory *history, QWidget *parent = nullptr);

    bool isPaused() const { return m_paused; }
    void setPaused(bool paused);
    int spanMinutes() const;
    void setSpanMinutes(int minutes);
    void setSeriesVisible(const QString &key, bool visible);
    // The chart of a group and the line of a series (tests and screenshots read them).
    QtCharts::QChart *chart(TelemetrySeries::Group group) const;
    QtCharts::QLineSeries *series(const QString &key) const;
    // The end of the shown time span, ms since the epoch.
    qint64 shownUntil() const { return m_until; }

public slots:
    // The history has a new round: follow it unless paused or hidden.
    void refresh();

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Chart {
        QtCharts::QChart *chart = nullptr;
        QtCharts::QChartView *view = nullptr;
        QtCharts::QDateTimeAxis *time = nullptr;
        QtCharts::QValueAxis *values = nullptr;
    };

    QWidget *buildControls();
    QWidget *buildSeriesList();
    void buildCharts(QWidget *area);
    void onScrolled(int value);
    void updateScrollBar();
    void redraw();
    void applyTheme();

    const TelemetryHistory *m_history;
    QHash<int, Chart> m_charts;                // by TelemetrySeries::Group
    QVector<QtCharts::QLineSeries *> m_series; // per column
    QVector<QCheckBox *> m_switches;           // per column
    QPushButton *m_pause = nullptr;
    QComboBox *m_span = nullptr;
    QScrollBar *m_scroll = nullptr;
    bool m_paused = false;
    bool m_scrolling = false;
    qint64 m_until = 0;
};
