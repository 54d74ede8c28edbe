#pragma once

#include <QWidget>

class QCheckBox;

// One output of the device: its number and the state to switch it to.
class Widgetoutputs : public QWidget {
    Q_OBJECT
public:
    // number: 0-based, as the single-output command carries it.
    explicit Widgetoutputs(int number, QWidget *parent = nullptr);

    int number() const { return m_number; }
    quint8 state() const;
    void setState(quint8 state);

    QCheckBox *stateBox() const { return m_state; }

signals:
    void edited();

private:
    int m_number;
    QCheckBox *m_state;
};
