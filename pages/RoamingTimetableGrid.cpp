#include "pages/RoamingTimetableGrid.h"

#include <QMouseEvent>
#include <QPainter>

namespace {
constexpr int CellWidth = 28;
constexpr int CellHeight = 22;
} // namespace

RoamingTimetableGrid::RoamingTimetableGrid(QWidget *parent)
    : QWidget(parent) {
    setMouseTracking(false);
}

void RoamingTimetableGrid::setTimetable(const RoamingTimetable &timetable) {
    if (m_timetable == timetable)
        return;
    m_timetable = timetable;
    update();
    emit timetableChanged();
}

int RoamingTimetableGrid::labelWidth() const {
    int width = 0;
    for (int day = 0; day < RoamingTimetable::Days; ++day)
        width = qMax(width, fontMetrics().horizontalAdvance(RoamingTimetable::dayName(day)));
    return width + 8;
}

int RoamingTimetableGrid::headerHeight() const {
    return fontMetrics().height() * 2 + 4;
}

QRect RoamingTimetableGrid::cellRect(int day, int slot) const {
    return QRect(labelWidth() + slot * CellWidth, headerHeight() + day * CellHeight, CellWidth, CellHeight);
}

QPair<int, int> RoamingTimetableGrid::cellAt(const QPoint &pos) const {
    const int x = pos.x() - labelWidth();
    const int y = pos.y() - headerHeight();
    if (x < 0 || y < 0)
        return {-1, -1};
    const int slot = x / CellWidth;
    const int day = y / CellHeight;
    if (slot >= RoamingTimetable::SlotsPerDay || day >= RoamingTimetable::Days)
        return {-1, -1};
    return {day, slot};
}

QSize RoamingTimetableGrid::sizeHint() const {
    // The last slot's start is wider than its column and, centred over it, reaches past the grid.
    const QString lastStart = RoamingTimetable::slotStart(RoamingTimetable::SlotsPerDay - 1);
    const int overhang = qMax(0, (fontMetrics().horizontalAdvance(lastStart) + 1) / 2 - CellWidth / 2);
    return QSize(labelWidth() + RoamingTimetable::SlotsPerDay * CellWidth + 1 + overhang,
                 headerHeight() + RoamingTimetable::Days * CellHeight + 1);
}

QSize RoamingTimetableGrid::minimumSizeHint() const {
    return sizeHint();
}

void RoamingTimetableGrid::paintEvent(QPaintEvent *) {
    QPainter p(this);
    const QPalette pal = palette();
    // Slot starts on two staggered lines so that "07:30" labels do not overlap.
    for (int slot = 0; slot < RoamingTimetable::SlotsPerDay; ++slot) {
        const QRect cell = cellRect(0, slot);
        const int line = slot % 2;
        const QRect text(cell.left() - CellWidth / 2, line * fontMetrics().height(), CellWidth * 2,
                         fontMetrics().height());
        p.drawText(text, Qt::AlignCenter, RoamingTimetable::slotStart(slot));
    }
    for (int day = 0; day < RoamingTimetable::Days; ++day) {
        const QRect row = cellRect(day, 0);
        p.drawText(QRect(0, row.top(), labelWidth() - 4, CellHeight), Qt::AlignRight | Qt::AlignVCenter,
                   RoamingTimetable::dayName(day));
        for (int slot = 0; slot < RoamingTimetable::SlotsPerDay; ++slot) {
            const QRect cell = cellRect(day, slot);
            p.fillRect(cell, m_timetable.slot(day, slot) ? pal.color(QPalette::Highlight)
                                                         : pal.color(QPalette::Base));
            p.setPen(pal.color(QPalette::Mid));
            p.drawRect(cell);
            p.setPen(pal.color(QPalette::WindowText));
        }
    }
}

void RoamingTimetableGrid::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    const auto cell = cellAt(event->pos());
    if (cell.first < 0)
        return;
    m_painting = true;
    m_paintState = !m_timetable.slot(cell.first, cell.second);
    paintCell(event->pos());
}

void RoamingTimetableGrid::mouseMoveEvent(QMouseEvent *event) {
    if (m_painting && (event->buttons() & Qt::LeftButton))
        paintCell(event->pos());
}

void RoamingTimetableGrid::mouseReleaseEvent(QMouseEvent *) {
    m_painting = false;
}

void RoamingTimetableGrid::paintCell(const QPoint &pos) {
    const auto cell = cellAt(pos);
    if (cell.first < 0 || m_timetable.slot(cell.first, cell.second) == m_paintState)
        return;
    m_timetable.setSlot(cell.first, cell.second, m_paintState);
    update(cellRect(cell.first, cell.second));
    emit timetableChanged();
}
