#include "app/ConnectionWaitDlg.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMovie>
#include <QPushButton>
#include <QVBoxLayout>

ConnectionWaitDlg::ConnectionWaitDlg(QWidget *parent)
    : QDialog(parent)
    , m_message(new QLabel(QStringLiteral("Ожидание подключения прибора к серверу..."), this))
    , m_animation(new QLabel(this))
    , m_movie(new QMovie(QStringLiteral(":/images/loading.gif"), QByteArray(), this))
    , m_cancel(new QPushButton(QStringLiteral("Отмена"), this)) {
    setWindowTitle(QStringLiteral("Подключение к прибору"));
    setModal(true);
    setMinimumWidth(360);

    m_animation->setMovie(m_movie);
    m_animation->setAlignment(Qt::AlignCenter);
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setWordWrap(true);
    m_cancel->setObjectName(QStringLiteral("cancelButton"));
    connect(m_cancel, &QPushButton::clicked, this, &ConnectionWaitDlg::reject);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cancel);
    buttons->addStretch();

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_animation);
    layout->addWidget(m_message);
    layout->addLayout(buttons);
    fitMessage();
}

void ConnectionWaitDlg::setMessage(const QString &text) {
    m_message->setText(text);
    fitMessage();
}

void ConnectionWaitDlg::fitMessage() {
    // A top-level box does not grow for a wrapped label by itself: reserve the lines the text needs at
    // the narrowest the box can be.
    const QMargins margins = layout()->contentsMargins();
    const int width = qMax(m_message->width(), minimumWidth() - margins.left() - margins.right());
    m_message->setMinimumHeight(m_message->heightForWidth(width));
}

void ConnectionWaitDlg::reject() {
    emit connectionWaitCancelled();
    QDialog::reject();
}

void ConnectionWaitDlg::showEvent(QShowEvent *event) {
    QDialog::showEvent(event);
    fitMessage();
    m_movie->start();
}

void ConnectionWaitDlg::hideEvent(QHideEvent *event) {
    m_movie->stop();
    QDialog::hideEvent(event);
}
