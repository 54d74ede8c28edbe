#pragma once

#include "pages/RoamingTimetable.h"

#include <QDialog>

class RoamingTimetableGrid;

// Edits the roaming timetable of one SIM card on a day x 90-minute grid.
class roumingShedulerDialog : public QDialog {
    Q_OBJECT
public:
    roumingShedulerDialog(const RoamingTimetable &timetable, int sim, QWidget *parent = nullptr);

    RoamingTimetable timetable() const;
    RoamingTimetableGrid *grid() const { return m_grid; }

private:
    RoamingTimetableGrid *m_grid;
};
