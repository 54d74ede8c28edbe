#pragma once

#include "Devices/ConfigurationFields.h"

#include <QDialog>
#include <functional>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTreeWidget;
class VantorConfiguration;

namespace kd {
class SnapshotStore;
}

// "Сравнить…": two of the device (its values as last read), the loaded configuration, a file and a
// snapshot of the tracker, side by side, section by section and field by field, differences highlighted.
// With the device on one side, "Записать выбранное" writes the ticked rows of the other side.
class CompareDialog : public QDialog {
    Q_OBJECT
public:
    // `device` may be null (not read in this session); `deviceSections` are the sections of it that were
    // read (all when empty), the others are shown as not read. Snapshots are the tracker's `imei` ones.
    CompareDialog(const VantorConfiguration *device, const VantorConfiguration *loaded,
                  const kd::SnapshotStore &store, const QString &imei, const QStringList &deviceSections = {},
                  QWidget *parent = nullptr);
    ~CompareDialog() override;

    // How "Файл…" asks for a file (a file dialog by default; tests answer it themselves).
    void setFileChooser(std::function<QString()> chooser);
    // Picks a source by its text on side 0 (left) or 1 (right); false when there is none such.
    bool choose(int side, const QString &text);

    int differenceCount() const;
    QTreeWidget *table() const { return m_table; }
    QPushButton *writeButton() const { return m_write; }
    // After "Записать выбранное": the ticked fields and the configuration to take their values from.
    QVector<const kd::ConfigField *> ticked() const;
    const VantorConfiguration *writeSource() const;

private:
    struct Side;
    void onChosen(int side);
    void refresh();
    int deviceSide() const;
    bool holds(int side, const kd::ConfigField &f) const;

    std::unique_ptr<Side> m_sides[2];
    const VantorConfiguration *m_device;
    const VantorConfiguration *m_loaded;
    QStringList m_deviceSections;
    std::function<QString()> m_chooseFile;
    QComboBox *m_combo[2];
    QCheckBox *m_onlyDifferences;
    QLabel *m_summary;
    QTreeWidget *m_table;
    QPushButton *m_write;
};
