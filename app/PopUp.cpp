#include "app/PopUp.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

PopUp::PopUp(QWidget *parent)
    : QWidget(parent)
    , m_label(this)
    , m_animation(this, QByteArrayLiteral("popupOpacity"), this)
    , m_hideTimer(this) {
    setWindowFlags(Qt::FramelessWindowHint | Qt::Tool | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);

    m_label.setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    m_label.setStyleSheet(QStringLiteral("QLabel { color : white; margin-top: 6px;margin-bottom: 6px;"
                                         "margin-left: 10px;margin-right: 10px; }"));
    auto *layout = new QGridLayout(this);
    layout->addWidget(&m_label, 0, 0);

    connect(&m_animation, &QAbstractAnimation::finished, this, &PopUp::animationFinished);
    m_hideTimer.setSingleShot(false);
    connect(&m_hideTimer, &QTimer::timeout, this, &PopUp::hideAnimation);
}

void PopUp::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect box = rect().adjusted(5, 5, -5, -5);
    painter.setBrush(QBrush(QColor(0, 0, 0, 180)));
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(box, 10, 10);
}

void PopUp::setPopupText(const QString &text) {
    m_label.setText(text);
    m_label.adjustSize();
    adjustSize();
}

void PopUp::show() {
    m_hideTimer.stop();
    m_animation.stop();
    m_fadingOut = false;
    setPopupOpacity(0.0f);

    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        move(area.right() - width() - 36, area.bottom() - height() - 36);
    }
    QWidget::show();

    m_animation.setDuration(m_timings.fadeInMs);
    m_animation.setStartValue(0.0f);
    m_animation.setEndValue(1.0f);
    m_animation.start();
    m_hideTimer.start(m_timings.holdMs);
}

void PopUp::hideAnimation() {
    m_hideTimer.stop();
    m_fadingOut = true;
    m_animation.stop();
    m_animation.setDuration(m_timings.fadeOutMs);
    m_animation.setStartValue(1.0f);
    m_animation.setEndValue(0.0f);
    m_animation.start();
}

void PopUp::animationFinished() {
    if (m_fadingOut) {
        m_fadingOut = false;
        QWidget::hide();
    }
}

void PopUp::setPopupOpacity(float opacity) {
    m_popupOpacity = opacity;
    setWindowOpacity(qreal(opacity));
}
