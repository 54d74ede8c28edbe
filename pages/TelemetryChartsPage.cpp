#include "pages/TelemetryChartsPage.h"

#include "support/TelemetryHistory.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QEvent>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QtCharts/QChart>
#include <QtCharts/QChartView>
#include <QtCharts/QDateTimeAxis>
#include <QtCharts/QLineSeries>
#include <QtCharts/QValueAxis>
#include <cmath>

using namespace QtCharts;
using TelemetrySeries::Group;

namespace {

struct GroupInfo {
    Group group;
    const char *title;
    int row, column, columnSpan;
};

// Where each chart sits: voltages and satellites on top, signal and speed below, the fuel sensors wide.
constexpr GroupInfo Groups[] = {
    {Group::Voltage, "Напряжение, В", 0, 0, 1},
    {Group::Satellites, "Спутники в решении", 0, 1, 1},
    {Group::Signal, "Сигнал GSM (из 31)", 1, 0, 1},
    {Group::Speed, "Скорость, км/ч", 1, 1, 1},
    {Group::Fuel, "Топливо", 2, 0, 2},
};

const int SpanMinutes[] = {1, 5, 10, 30, 60};

// The value range a chart shows for the points it holds; counts and levels start at zero.
void valueRange(Group group, double low, double high, double *from, double *to) {
    switch (group) {
    case Group::Signal:
        *from = 0;
        *to = 31;
        return;
    case Group::Satellites:
        *from = 0;
        *to = std::max(12.0, high + 1);
        return;
    case Group::Voltage: {
        const double margin = std::max(0.5, (high - low) * 0.1);
        *from = std::max(0.0, std::floor(low - margin));
        *to = std::ceil(high + margin);
        return;
    }
    default:
        *from = 0;
        *to = std::max(10.0, std::ceil(high * 1.1));
        return;
    }
}

} // namespace

TelemetryChartsPage::TelemetryChartsPage(const TelemetryHistory *history, QWidget *parent)
    : QWidget(parent)
    , m_history(history) {
    setObjectName(QStringLiteral("telemetryChartsPage"));
    auto *area = new QWidget;
    auto *body = new QHBoxLayout;
    body->addWidget(buildSeriesList());
    body->addWidget(area, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(buildControls());
    layout->addLayout(body, 1);
    buildCharts(area);
    applyTheme();
}

QWidget *TelemetryChartsPage::buildControls() {
    auto *bar = new QWidget;
    auto *row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    m_pause = new QPushButton(QStringLiteral("Пауза"));
    m_pause->setObjectName(QStringLiteral("chartsPause"));
    m_pause->setCheckable(true);
    connect(m_pause, &QPushButton::toggled, this, &TelemetryChartsPage::setPaused);
    m_span = new QComboBox;
    m_span->setObjectName(QStringLiteral("chartsSpan"));
    for (int minutes : SpanMinutes)
        m_span->addItem(QStringLiteral("%1 мин").arg(minutes), minutes);
    m_span->setCurrentIndex(m_span->findData(DefaultSpanMinutes));
    connect(m_span, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        updateScrollBar();
        redraw();
    });
    m_scroll = new QScrollBar(Qt::Horizontal);
    m_scroll->setObjectName(QStringLiteral("chartsScroll"));
    m_scroll->setToolTip(QStringLiteral("Прокрутка по сохраненному часу телеметрии"));
    connect(m_scroll, &QScrollBar::valueChanged, this, &TelemetryChartsPage::onScrolled);
    row->addWidget(m_pause);
    row->addWidget(new QLabel(QStringLiteral("Период:")));
    row->addWidget(m_span);
    row->addWidget(m_scroll, 1);
    return bar;
}

QWidget *TelemetryChartsPage::buildSeriesList() {
    auto *list = new QWidget;
    auto *column = new QVBoxLayout(list);
    const QVector<TelemetrySeries::Column> &columns = TelemetrySeries::columns();
    for (const GroupInfo &g : Groups) {
        auto *head = new QLabel(QString::fromUtf8(g.title));
        head->setStyleSheet(QStringLiteral("font-weight: bold;"));
        column->addWidget(head);
        for (int i = 0; i < columns.size(); ++i) {
            if (columns[i].group != g.group)
                continue;
            auto *box = new QCheckBox(columns[i].label);
            box->setToolTip(TelemetrySeries::titleWithUnit(columns[i]));
            box->setObjectName(QStringLiteral("chartsShow_") + columns[i].key);
            box->setChecked(true);
            connect(box, &QCheckBox::toggled, this, [this, i](bool on) {
                m_series[i]->setVisible(on);
                redraw();
            });
            column->addWidget(box);
            m_switches.resize(columns.size());
            m_switches[i] = box;
        }
    }
    column->addStretch();
    auto *scroll = new QScrollArea;
    scroll->setWidget(list);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setMinimumWidth(list->sizeHint().width() + 20);
    scroll->setMaximumWidth(list->sizeHint().width() + 40);
    return scroll;
}

void TelemetryChartsPage::buildCharts(QWidget *area) {
    auto *grid = new QGridLayout(area);
    grid->setContentsMargins(0, 0, 0, 0);
    const QVector<TelemetrySeries::Column> &columns = TelemetrySeries::columns();
    m_series.resize(columns.size());
    for (const GroupInfo &g : Groups) {
        Chart c;
        c.chart = new QChart;
        c.chart->setTitle(QString::fromUtf8(g.title));
        c.chart->setMargins(QMargins(4, 4, 4, 4));
        // The series list beside the charts is the key (each switch shows its line's colour): a legend
        // under a chart of eight sensors has no room for their names.
        c.time = new QDateTimeAxis;
        c.time->setFormat(QStringLiteral("hh:mm:ss"));
        c.time->setTickCount(5);
        c.values = new QValueAxis;
        c.values->setLabelFormat(g.group == Group::Voltage ? QStringLiteral("%.1f") : QStringLiteral("%.0f"));
        c.chart->legend()->hide();
        c.chart->addAxis(c.time, Qt::AlignBottom);
        c.chart->addAxis(c.values, Qt::AlignLeft);
        for (int i = 0; i < columns.size(); ++i) {
            if (columns[i].group != g.group)
                continue;
            auto *line = new QLineSeries;
            line->setName(columns[i].label);
            c.chart->addSeries(line);
            line->attachAxis(c.time);
            line->attachAxis(c.values);
            m_series[i] = line;
        }
        c.view = new QChartView(c.chart);
        c.view->setRenderHint(QPainter::Antialiasing);
        c.view->setMinimumHeight(170);
        grid->addWidget(c.view, g.row, g.column, 1, g.columnSpan);
        m_charts.insert(int(g.group), c);
    }
}

void TelemetryChartsPage::setPaused(bool paused) {
    m_paused = paused;
    if (m_pause->isChecked() != paused)
        m_pause->setChecked(paused);
    if (!paused)
        refresh();
}

int TelemetryChartsPage::spanMinutes() const {
    return m_span->currentData().toInt();
}

void TelemetryChartsPage::setSpanMinutes(int minutes) {
    const int index = m_span->findData(minutes);
    if (index >= 0)
        m_span->setCurrentIndex(index);
}

void TelemetryChartsPage::setSeriesVisible(const QString &key, bool visible) {
    const QVector<TelemetrySeries::Column> &columns = TelemetrySeries::columns();
    for (int i = 0; i < columns.size(); ++i) {
        if (columns[i].key == key)
            m_switches[i]->setChecked(visible);
    }
}

QChart *TelemetryChartsPage::chart(Group group) const {
    return m_charts.value(int(group)).chart;
}

QLineSeries *TelemetryChartsPage::series(const QString &key) const {
    const QVector<TelemetrySeries::Column> &columns = TelemetrySeries::columns();
    for (int i = 0; i < columns.size(); ++i) {
        if (columns[i].key == key)
            return m_series[i];
    }
    return nullptr;
}

void TelemetryChartsPage::refresh() {
    if (m_paused)
        return;
    m_until = m_history->lastTime();
    // A hidden page only keeps its end time; showing it draws the whole span once.
    if (!isVisible())
        return;
    updateScrollBar();
    redraw();
}

void TelemetryChartsPage::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    if (!m_paused)
        m_until = m_history->lastTime();
    updateScrollBar();
    redraw();
}

void TelemetryChartsPage::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        applyTheme();
}

void TelemetryChartsPage::applyTheme() {
    const bool dark = palette().color(QPalette::Window).lightness() < 128;
    const QChart::ChartTheme theme = dark ? QChart::ChartThemeDark : QChart::ChartThemeLight;
    // The theme sets its own fonts: the axis labels get a smaller one again, so that the times and the
    // values fit beside a chart of the default window's size.
    QFont labels = font();
    labels.setPointSizeF(labels.pointSizeF() * 0.8);
    for (const Chart &c : qAsConst(m_charts)) {
        if (c.chart->theme() != theme)
            c.chart->setTheme(theme);
        c.chart->legend()->hide();
        c.time->setLabelsFont(labels);
        c.values->setLabelsFont(labels);
    }
    // The theme also chose the lines' colours: the switches show them.
    for (int i = 0; i < m_series.size() && i < m_switches.size(); ++i) {
        QPixmap swatch(12, 12);
        swatch.fill(m_series[i]->color());
        m_switches[i]->setIcon(QIcon(swatch));
    }
}

void TelemetryChartsPage::updateScrollBar() {
    // The bar counts seconds from the oldest kept round; its maximum is the newest.
    const qint64 first = m_history->firstTime();
    const int newest = int((m_history->lastTime() - first) / 1000);
    const int span = spanMinutes() * 60;
    const QSignalBlocker block(m_scroll);
    m_scroll->setRange(qMin(span, newest), newest);
    m_scroll->setPageStep(span);
    m_scroll->setValue(int((m_until - first) / 1000));
}

void TelemetryChartsPage::onScrolled(int value) {
    m_until = m_history->firstTime() + qint64(value) * 1000;
    setPaused(value < m_scroll->maximum());
    redraw();
}

void TelemetryChartsPage::redraw() {
    const qint64 to = m_until;
    const qint64 from = to - qint64(spanMinutes()) * 60 * 1000;
    const QVector<TelemetrySeries::Column> &columns = TelemetrySeries::columns();
    for (auto it = m_charts.constBegin(); it != m_charts.constEnd(); ++it) {
        const Group group = Group(it.key());
        double low = INFINITY, high = -INFINITY;
        for (int i = 0; i < columns.size(); ++i) {
            if (columns[i].group != group)
                continue;
            const QVector<QPointF> points =
                m_series[i]->isVisible() ? m_history->series(i).range(from, to) : QVector<QPointF>();
            m_series[i]->replace(points);
            for (const QPointF &p : points) {
                low = std::min(low, p.y());
                high = std::max(high, p.y());
            }
        }
        if (low > high)
            low = high = 0;
        double bottom = 0, top = 1;
        valueRange(group, low, high, &bottom, &top);
        it->values->setRange(bottom, top);
        if (group != Group::Signal)
            it->values->applyNiceNumbers();
        it->time->setRange(QDateTime::fromMSecsSinceEpoch(from), QDateTime::fromMSecsSinceEpoch(to));
        it->time->setFormat(spanMinutes() > 10 ? QStringLiteral("hh:mm") : QStringLiteral("hh:mm:ss"));
    }
}
