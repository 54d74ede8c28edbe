#pragma once

#include "Devices/ConfigurationDiff.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QPushButton;
class QTreeWidget;

// The confirmation before a write, with what it would change: field by field the device's value and the
// one to be written, the count of unchanged fields, the fields the loaded file could not carry (with the
// choice to keep the device's values for them) and a warning line for a file of another model. When
// nothing differs it says so, and the write may be skipped.
class WritePreviewDialog : public QDialog {
    Q_OBJECT
public:
    WritePreviewDialog(const QString &title, const QString &question, const kd::WritePreview &preview,
                       QWidget *parent = nullptr);

    // The preview with the user's choice.
    const kd::WritePreview &preview() const { return m_preview; }
    bool keepDeviceValues() const { return m_preview.keepDeviceValues; }
    int changeCount() const;
    QString summary() const;
    QTreeWidget *changesView() const { return m_changes; }
    QCheckBox *keepBox() const { return m_keep; }

private:
    void refresh();

    kd::WritePreview m_preview;
    QLabel *m_summary;
    QTreeWidget *m_changes;
    QCheckBox *m_keep;
    QPushButton *m_write;
    QPushButton *m_cancel;
};
