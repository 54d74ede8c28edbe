#include "pages/Widgetoutputs.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>

Widgetoutputs::Widgetoutputs(int number, QWidget *parent)
    : QWidget(parent)
    , m_number(number)
    , m_state(new QCheckBox(QStringLiteral("Включен"), this)) {
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new QLabel(QStringLiteral("Выход %1").arg(number + 1), this));
    layout->addWidget(m_state);
    layout->addStretch();
    connect(m_state, &QCheckBox::toggled, this, &Widgetoutputs::edited);
}

quint8 Widgetoutputs::state() const {
    return m_state->isChecked() ? 1 : 0;
}

void Widgetoutputs::setState(quint8 state) {
    m_state->setChecked(state != 0);
}
