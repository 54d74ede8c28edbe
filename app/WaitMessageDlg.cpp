#include "app/WaitMessageDlg.h"

#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>

WaitMessageDlg::WaitMessageDlg(QWidget *parent, int tickMs)
    : QDialog(parent)
    , m_bar(new QProgressBar(this))
    , m_timer(new QTimer(this)) {
    setModal(true);
    setWindowTitle(QStringLiteral("Перезагрузка прибора"));

    auto *text = new QLabel(QStringLiteral("Идет перезагрузка. Подождите, пожалуйста.."), this);
    m_bar->setRange(0, 10);
    m_bar->setValue(0);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addWidget(m_bar);

    m_timer->setInterval(tickMs);
    connect(m_timer, &QTimer::timeout, this, &WaitMessageDlg::on_timeout);
}

void WaitMessageDlg::showEvent(QShowEvent *event) {
    QDialog::showEvent(event);
    m_timer->start();
}

void WaitMessageDlg::on_timeout() {
    if (m_bar->value() == m_bar->maximum()) {
        m_timer->stop();
        close();
        return;
    }
    m_bar->setValue(m_bar->value() + 1);
}
