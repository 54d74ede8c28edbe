#pragma once

#include <QLabel>
#include <QPropertyAnimation>
#include <QTimer>
#include <QWidget>

// A short notification in a dark rounded box that fades in, stays for a while and fades out. It is a
// frameless tool window above the others and never takes the focus from the user's input.
class PopUp : public QWidget {
    Q_OBJECT
    Q_PROPERTY(float popupOpacity READ getPopupOpacity WRITE setPopupOpacity)

public:
    struct Timings {
        int fadeInMs = 150;
        int holdMs = 3000;
        int fadeOutMs = 1000;
    };

    explicit PopUp(QWidget *parent = nullptr);

    void setTimings(const Timings &timings) { m_timings = timings; }
    Timings timings() const { return m_timings; }

    void setPopupOpacity(float opacity);
    float getPopupOpacity() const { return m_popupOpacity; }

    QString text() const { return m_label.text(); }
    bool isFadingOut() const { return m_fadingOut; }

public slots:
    void setPopupText(const QString &text);
    // Shows the box at the bottom right of the screen and starts the fade-in and the hide timer.
    void show();

protected:
    void paintEvent(QPaintEvent *event) override;

private slots:
    void hideAnimation();
    void animationFinished();

private:
    QLabel m_label;
    QPropertyAnimation m_animation;
    QTimer m_hideTimer;
    Timings m_timings;
    float m_popupOpacity = 0.0f;
    bool m_fadingOut = false;
};
