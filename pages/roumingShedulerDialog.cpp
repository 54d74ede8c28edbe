#include "pages/roumingShedulerDialog.h"

#include "pages/RoamingTimetableGrid.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

roumingShedulerDialog::roumingShedulerDialog(const RoamingTimetable &timetable, int sim, QWidget *parent)
    : QDialog(parent)
    , m_grid(new RoamingTimetableGrid(this)) {
    setWindowTitle(QStringLiteral("Расписание роуминга SIM %1").arg(sim + 1));
    m_grid->setTimetable(timetable);

    auto *hint =
        new QLabel(QStringLiteral("Отмеченные интервалы (по 1 ч 30 мин) разрешают работу в роуминге. "
                                  "Щелкните ячейку или проведите по ячейкам с нажатой кнопкой мыши."),
                   this);
    hint->setWordWrap(true);

    auto *all = new QPushButton(QStringLiteral("Отметить все"), this);
    auto *none = new QPushButton(QStringLiteral("Очистить"), this);
    connect(all, &QPushButton::clicked, this, [this] {
        RoamingTimetable t = m_grid->timetable();
        t.setAll(true);
        m_grid->setTimetable(t);
    });
    connect(none, &QPushButton::clicked, this, [this] {
        RoamingTimetable t = m_grid->timetable();
        t.setAll(false);
        m_grid->setTimetable(t);
    });

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Отмена"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *tools = new QHBoxLayout;
    tools->addWidget(all);
    tools->addWidget(none);
    tools->addStretch();

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(hint);
    layout->addWidget(m_grid);
    layout->addLayout(tools);
    layout->addWidget(buttons);
}

RoamingTimetable roumingShedulerDialog::timetable() const {
    return m_grid->timetable();
}
