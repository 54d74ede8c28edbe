#pragma once

#include "Devices/SnapshotStore.h"

#include <QDialog>

class QLabel;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

// "История изменений…": a tracker's snapshots, newest first, each with what was written over it. Damaged
// snapshots are named and left out. "Восстановить" hands the chosen one back for a normal write.
class HistoryDialog : public QDialog {
    Q_OBJECT
public:
    HistoryDialog(const kd::SnapshotStore &store, const QString &imei, QWidget *parent = nullptr);

    const QVector<kd::Snapshot> &snapshots() const { return m_snapshots; }
    // The snapshot to restore once the dialog was accepted; null otherwise.
    const kd::Snapshot *chosen() const;
    QListWidget *list() const { return m_list; }
    QPushButton *restoreButton() const { return m_restore; }

private:
    void showSnapshot(int row);

    QVector<kd::Snapshot> m_snapshots;
    QListWidget *m_list;
    QPlainTextEdit *m_details;
    QPushButton *m_restore;
};
