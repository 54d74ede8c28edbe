#pragma once

#include <QHash>
#include <QWidget>

class QFormLayout;
class QGridLayout;
class QLabel;
class QPushButton;
class VantorConfiguration;

namespace kd {
class ControlInfoConfiguration;
}

// The "Прибор" page: the device's identity and its live state. Each telemetry block the device
// reports refreshes the group that shows it; the wording comes from TelemetryText.
class SettingsStatePage : public QWidget {
    Q_OBJECT
public:
    static constexpr int Receivers = 3;
    static constexpr int Servers = 3;
    static constexpr int Sims = 2;
    static constexpr int AnalogInputs = 3;
    static constexpr int LogicInputs = 2;
    static constexpr int FuelSensors = 8;

    explicit SettingsStatePage(VantorConfiguration *configuration, QWidget *parent = nullptr);

    // The text of a value field by its object name ("simState0", "latitude1", ...); tests and
    // screenshots read the page through it.
    QString valueText(const QString &name) const;
    QLabel *valueLabel(const QString &name) const { return m_values.value(name); }
    // The resource shown by an icon label ("serverIcon0", "simIcon1", "ignitionIcon", ...).
    QString iconResource(const QString &name) const;
    QPushButton *fixButton(int receiver) const;
    // The picture shown for a state icon on a widget. The "_white" pictures are outlines meant for a
    // dark background; where the widget's text is dark (a light background) they take a muted text
    // colour instead, or they would vanish.
    static QPixmap statePixmap(const QString &resource, const QWidget *on);

public slots:
    // Shows the identity from the device-information section.
    void showIdentity();
    // Shows the stored records of one telemetry kind.
    void updateTelemetry(int kind);
    // Every kind at once (after a file was loaded or the page is shown again).
    void updateAll();
    // Back to dashes: the device is gone.
    void clearTelemetry();

protected:
    void changeEvent(QEvent *event) override;

private:
    // Draws every state icon again for the current colours (after a theme change).
    void redrawIcons();
    QLabel *addValue(QFormLayout *form, const QString &title, const QString &name);
    QLabel *addIconValue(QFormLayout *form, const QString &title, const QString &name);
    QLabel *addGridValue(QGridLayout *grid, int row, int column, const QString &name);
    void setValue(const QString &name, const QString &text);
    void setIcon(const QString &name, const QString &resource);
    void setFixIcon(int receiver, bool fix);
    kd::ControlInfoConfiguration *controlInfo() const;

    void showDeviceState();
    void showClock();
    void showReceivers();
    void showServers();
    void showNavSummary();
    void showAnalogInputs();
    void showLogicInputs();
    void showFuel();
    void showSimStates();
    void showRegistration();

    VantorConfiguration *m_configuration;
    QHash<QString, QLabel *> m_values;
    QHash<QString, QLabel *> m_icons;
    bool m_redrawPending = false;
    QPushButton *m_fixButtons[Receivers] = {};
};
