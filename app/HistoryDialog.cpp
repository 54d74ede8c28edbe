#include "app/HistoryDialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

HistoryDialog::HistoryDialog(const kd::SnapshotStore &store, const QString &imei, QWidget *parent)
    : QDialog(parent)
    , m_list(new QListWidget(this))
    , m_details(new QPlainTextEdit(this)) {
    setWindowTitle(QStringLiteral("История изменений прибора %1").arg(imei));
    QStringList damaged;
    m_snapshots = store.list(imei, &damaged);

    auto *layout = new QVBoxLayout(this);
    auto *intro = new QLabel(m_snapshots.isEmpty()
                                 ? QStringLiteral("Снимков настроек этого прибора нет: они сохраняются перед "
                                                  "каждой записью в прибор.")
                                 : QStringLiteral("Настройки прибора перед каждой записью (последние %1):")
                                       .arg(kd::SnapshotStore::Kept),
                             this);
    intro->setWordWrap(true);
    layout->addWidget(intro);
    if (!damaged.isEmpty()) {
        auto *warning =
            new QLabel(QStringLiteral("Поврежденные снимки пропущены:\n") + damaged.join('\n'), this);
        warning->setObjectName(QStringLiteral("damaged"));
        warning->setWordWrap(true);
        warning->setStyleSheet(QStringLiteral("color: #b00020"));
        layout->addWidget(warning);
    }

    auto *panes = new QHBoxLayout;
    for (const kd::Snapshot &s : qAsConst(m_snapshots)) {
        m_list->addItem(QStringLiteral("%1 — %2").arg(
            s.time.toLocalTime().toString(QStringLiteral("dd.MM.yyyy HH:mm:ss")), s.summary()));
    }
    m_list->setMinimumWidth(380);
    m_details->setReadOnly(true);
    m_details->setMinimumSize(520, 300);
    panes->addWidget(m_list);
    panes->addWidget(m_details, 1);
    layout->addLayout(panes);

    auto *buttons = new QDialogButtonBox(this);
    m_restore = buttons->addButton(QStringLiteral("Восстановить"), QDialogButtonBox::AcceptRole);
    m_restore->setEnabled(false);
    buttons->addButton(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    connect(m_list, &QListWidget::currentRowChanged, this, &HistoryDialog::showSnapshot);
    if (!m_snapshots.isEmpty())
        m_list->setCurrentRow(0);
}

const kd::Snapshot *HistoryDialog::chosen() const {
    const int row = m_list->currentRow();
    return result() == Accepted && row >= 0 && row < m_snapshots.size() ? &m_snapshots.at(row) : nullptr;
}

void HistoryDialog::showSnapshot(int row) {
    m_restore->setEnabled(row >= 0);
    if (row < 0 || row >= m_snapshots.size()) {
        m_details->clear();
        return;
    }
    const kd::Snapshot &s = m_snapshots.at(row);
    QStringList text{QStringLiteral("Снимок: %1").arg(s.filePath),
                     QStringLiteral("Версия программы: %1").arg(s.programVersion), QString(),
                     QStringLiteral("Записано поверх этих значений:")};
    const QStringList written = s.writtenLines();
    text << (written.isEmpty() ? QStringList{QStringLiteral("(ничего не менялось)")} : written);
    m_details->setPlainText(text.join('\n'));
}
