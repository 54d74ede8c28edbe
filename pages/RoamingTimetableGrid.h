#pragma once

#include "pages/RoamingTimetable.h"

#include <QWidget>

// The roaming timetable as a grid the user paints: one row per day, one column per 90-minute slot.
// Pressing a cell toggles it; dragging with the button held gives every cell passed over the state the
// first cell got.
class RoamingTimetableGrid : public QWidget {
    Q_OBJECT
public:
    explicit RoamingTimetableGrid(QWidget *parent = nullptr);

    RoamingTimetable timetable() const { return m_timetable; }
    void setTimetable(const RoamingTimetable &timetable);

    // Cell under a point of the widget: (day, slot), or (-1, -1) outside the cells.
    QPair<int, int> cellAt(const QPoint &pos) const;
    QRect cellRect(int day, int slot) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void timetableChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    int labelWidth() const;
    int headerHeight() const;
    void paintCell(const QPoint &pos);

    RoamingTimetable m_timetable;
    bool m_painting = false;
    bool m_paintState = false;
};
