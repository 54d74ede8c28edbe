#pragma once

#include <QDialog>

class QProgressBar;
class QTimer;

// Shown while the device reboots: a bar that fills over ten ticks; the box closes itself on the
// eleventh tick whether or not the device is back, so the user is never left waiting on it.
class WaitMessageDlg : public QDialog {
    Q_OBJECT
public:
    static constexpr int DefaultTickMs = 1000;

    explicit WaitMessageDlg(QWidget *parent = nullptr, int tickMs = DefaultTickMs);

    QProgressBar *progressBar() const { return m_bar; }
    QTimer *timer() const { return m_timer; }

public slots:
    void on_timeout();

protected:
    void showEvent(QShowEvent *event) override;

private:
    QProgressBar *m_bar;
    QTimer *m_timer;
};
