#include "app/WritePreviewDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
const QColor LacksInFile(0xfff1c2);
}

WritePreviewDialog::WritePreviewDialog(const QString &title, const QString &question,
                                       const kd::WritePreview &preview, QWidget *parent)
    : QDialog(parent)
    , m_preview(preview)
    , m_summary(new QLabel(this))
    , m_changes(new QTreeWidget(this))
    , m_keep(new QCheckBox(QStringLiteral("Оставить значения прибора для параметров, которых нет в файле"),
                           this)) {
    setWindowTitle(title);
    auto *layout = new QVBoxLayout(this);
    auto *questionLabel = new QLabel(question, this);
    questionLabel->setWordWrap(true);
    layout->addWidget(questionLabel);
    if (!preview.modelWarning.isEmpty()) {
        auto *warning = new QLabel(preview.modelWarning, this);
        warning->setObjectName(QStringLiteral("modelWarning"));
        warning->setWordWrap(true);
        warning->setStyleSheet(QStringLiteral("color: #b00020; font-weight: bold"));
        layout->addWidget(warning);
    }
    m_summary->setObjectName(QStringLiteral("summary"));
    layout->addWidget(m_summary);

    m_changes->setColumnCount(3);
    m_changes->setHeaderLabels(
        {QStringLiteral("Параметр"), QStringLiteral("В приборе"), QStringLiteral("Будет записано")});
    m_changes->setRootIsDecorated(false);
    m_changes->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_changes->header()->setStretchLastSection(true);
    m_changes->setMinimumSize(880, 220);
    layout->addWidget(m_changes);

    m_keep->setVisible(!preview.notInFile.isEmpty());
    m_keep->setChecked(preview.keepDeviceValues);
    m_keep->setToolTip(QStringLiteral("Файл конфигурации не хранит роуминг SIM-карт и порог ложной скорости; "
                                      "без этой отметки они будут записаны как прочитаны из файла"));
    connect(m_keep, &QCheckBox::toggled, this, [this](bool on) {
        m_preview.keepDeviceValues = on;
        refresh();
    });
    layout->addWidget(m_keep);

    auto *buttons = new QDialogButtonBox(this);
    m_write = buttons->addButton(QStringLiteral("Записать"), QDialogButtonBox::AcceptRole);
    m_cancel = buttons->addButton(QStringLiteral("Отмена"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    refresh();
}

int WritePreviewDialog::changeCount() const {
    return m_changes->topLevelItemCount();
}

QString WritePreviewDialog::summary() const {
    return m_summary->text();
}

void WritePreviewDialog::refresh() {
    const kd::ConfigurationDiff diff = m_preview.diff();
    m_changes->clear();
    for (const kd::FieldChange &c : diff.changes) {
        auto *row = new QTreeWidgetItem(m_changes,
                                        {c.field->title(), c.field->text(c.before), c.field->text(c.after)});
        if (m_preview.lacksInFile(c.field)) {
            row->setText(0, row->text(0) + QStringLiteral(" (нет в файле)"));
            for (int col = 0; col < 3; ++col)
                row->setBackground(col, LacksInFile);
        }
        row->setToolTip(0, c.field->path);
    }
    m_changes->setVisible(!diff.isEmpty());
    if (diff.isEmpty()) {
        m_summary->setText(
            QStringLiteral("Значения в приборе уже такие же, записывать нечего (параметров: %1).")
                .arg(diff.unchanged));
        m_write->setText(QStringLiteral("Записать все равно"));
        m_cancel->setText(QStringLiteral("Пропустить"));
    } else {
        m_summary->setText(QStringLiteral("Изменится параметров: %1, без изменений: %2")
                               .arg(diff.changes.size())
                               .arg(diff.unchanged));
        m_write->setText(QStringLiteral("Записать"));
        m_cancel->setText(QStringLiteral("Отмена"));
    }
}
