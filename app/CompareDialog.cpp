#include "app/CompareDialog.h"

#include "Devices/ConfigurationDiff.h"
#include "Devices/ConfigurationFile.h"
#include "Devices/Snapshot.h"
#include "Devices/SnapshotStore.h"
#include "Devices/VantorConfiguration.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
const QColor Differs(0xffd7d7);
enum Column { Tick, Section, Field, Left, Right };
enum class Kind { Device, Loaded, Snapshot, File, ChooseFile };
} // namespace

struct CompareDialog::Side {
    Kind kind = Kind::Loaded;
    VantorConfiguration values; // a copy, so the window's configuration may change meanwhile
    QStringList sections;       // those read from the device (all when empty)
    bool valid = false;
};

CompareDialog::CompareDialog(const VantorConfiguration *device, const VantorConfiguration *loaded,
                             const kd::SnapshotStore &store, const QString &imei,
                             const QStringList &deviceSections, QWidget *parent)
    : QDialog(parent)
    , m_device(device)
    , m_loaded(loaded)
    , m_deviceSections(deviceSections)
    , m_onlyDifferences(new QCheckBox(QStringLiteral("Только различия"), this))
    , m_summary(new QLabel(this))
    , m_table(new QTreeWidget(this)) {
    setWindowTitle(QStringLiteral("Сравнение конфигураций"));
    m_chooseFile = [this] {
        return QFileDialog::getOpenFileName(this, QStringLiteral("Open Json File"), QString(),
                                            QStringLiteral("JSON (*.json)"));
    };
    auto *layout = new QVBoxLayout(this);
    auto *pick = new QGridLayout;
    const QVector<kd::Snapshot> snapshots = store.list(imei);
    for (int side = 0; side < 2; ++side) {
        m_sides[side] = std::make_unique<Side>();
        m_combo[side] = new QComboBox(this);
        if (device)
            m_combo[side]->addItem(QStringLiteral("Прибор"), QVariantList{int(Kind::Device)});
        m_combo[side]->addItem(QStringLiteral("Загруженная конфигурация"), QVariantList{int(Kind::Loaded)});
        for (const kd::Snapshot &s : snapshots) {
            m_combo[side]->addItem(
                QStringLiteral("Снимок %1")
                    .arg(s.time.toLocalTime().toString(QStringLiteral("dd.MM.yyyy HH:mm:ss"))),
                QVariantList{int(Kind::Snapshot), s.filePath});
        }
        m_combo[side]->addItem(QStringLiteral("Файл…"), QVariantList{int(Kind::ChooseFile)});
        pick->addWidget(new QLabel(side == 0 ? QStringLiteral("Слева:") : QStringLiteral("Справа:"), this),
                        side, 0);
        pick->addWidget(m_combo[side], side, 1);
    }
    pick->setColumnStretch(1, 1);
    layout->addLayout(pick);

    m_table->setColumnCount(5);
    m_table->setHeaderLabels({QString(), QStringLiteral("Раздел"), QStringLiteral("Параметр"),
                              QStringLiteral("Слева"), QStringLiteral("Справа")});
    m_table->setRootIsDecorated(false);
    m_table->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_table->header()->setStretchLastSection(true);
    m_table->setMinimumSize(980, 420);
    layout->addWidget(m_summary);
    layout->addWidget(m_table);
    layout->addWidget(m_onlyDifferences);

    auto *buttons = new QDialogButtonBox(this);
    m_write = buttons->addButton(QStringLiteral("Записать выбранное"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    connect(m_onlyDifferences, &QCheckBox::toggled, this, &CompareDialog::refresh);
    connect(m_table, &QTreeWidget::itemChanged, this, [this] { m_write->setEnabled(!ticked().isEmpty()); });
    for (int side = 0; side < 2; ++side) {
        connect(m_combo[side], QOverload<int>::of(&QComboBox::activated), this,
                [this, side] { onChosen(side); });
    }
    // The device against the loaded configuration, when there is a device to compare with.
    m_combo[1]->setCurrentIndex(device ? 1 : 0);
    onChosen(0);
    onChosen(1);
}

CompareDialog::~CompareDialog() = default;

void CompareDialog::setFileChooser(std::function<QString()> chooser) {
    m_chooseFile = std::move(chooser);
}

bool CompareDialog::choose(int side, const QString &text) {
    const int index = m_combo[side]->findText(text);
    if (index < 0)
        return false;
    m_combo[side]->setCurrentIndex(index);
    onChosen(side);
    return true;
}

void CompareDialog::onChosen(int side) {
    QComboBox *combo = m_combo[side];
    const QVariantList data = combo->currentData().toList();
    Side &s = *m_sides[side];
    s.kind = Kind(data.value(0).toInt());
    s.valid = true;
    s.sections.clear();
    switch (s.kind) {
    case Kind::Device:
        kd::copyFields(s.values, *m_device);
        s.sections = m_deviceSections;
        break;
    case Kind::Loaded:
        kd::copyFields(s.values, *m_loaded);
        break;
    case Kind::Snapshot: {
        kd::Snapshot snapshot;
        s.valid = kd::SnapshotStore::load(data.value(1).toString(), &snapshot);
        if (s.valid)
            snapshot.applyTo(s.values);
        s.sections = snapshot.sections;
        break;
    }
    case Kind::File:
        s.valid = kd::ConfigurationFile::load(data.value(1).toString(), s.values).ok();
        break;
    case Kind::ChooseFile: {
        const QString path = m_chooseFile ? m_chooseFile() : QString();
        if (path.isEmpty()) {
            s.valid = false;
            break;
        }
        combo->insertItem(combo->count() - 1, QStringLiteral("Файл %1").arg(QFileInfo(path).fileName()),
                          QVariantList{int(Kind::File), path});
        combo->setCurrentIndex(combo->count() - 2);
        onChosen(side);
        return;
    }
    }
    refresh();
}

int CompareDialog::deviceSide() const {
    for (int side = 0; side < 2; ++side) {
        if (m_sides[side]->kind == Kind::Device)
            return side;
    }
    return -1;
}

bool CompareDialog::holds(int side, const kd::ConfigField &f) const {
    const Side &s = *m_sides[side];
    return s.valid && kd::Snapshot::carries(s.sections, f.section);
}

void CompareDialog::refresh() {
    const QSignalBlocker block(m_table);
    m_table->clear();
    const bool both = m_sides[0]->valid && m_sides[1]->valid;
    const bool canWrite = both && deviceSide() >= 0 && m_sides[0]->kind != m_sides[1]->kind;
    int differences = 0;
    int notRead = 0;
    // A section never read from the device holds no values of it: shown so, never compared.
    const auto text = [this](int side, const kd::ConfigField &f) {
        if (!m_sides[side]->valid)
            return f.text(QVariant());
        return holds(side, f) ? f.text(f.value(m_sides[side]->values))
                              : QStringLiteral("не считано из прибора");
    };
    for (const kd::ConfigField *f : kd::writableFields()) {
        const bool compared = both && holds(0, *f) && holds(1, *f);
        const bool differs = compared && f->value(m_sides[0]->values) != f->value(m_sides[1]->values);
        differences += differs;
        notRead += both && !compared;
        if (m_onlyDifferences->isChecked() && !differs)
            continue;
        auto *row = new QTreeWidgetItem(m_table, {QString(), f->group, f->label, text(0, *f), text(1, *f)});
        row->setData(Tick, Qt::UserRole, f->path);
        row->setToolTip(Field, f->path);
        if (differs) {
            for (int col = Section; col <= Right; ++col)
                row->setBackground(col, Differs);
            if (canWrite)
                row->setCheckState(Tick, Qt::Unchecked);
        }
    }
    QString summary = both ? (differences ? QStringLiteral("Различается параметров: %1").arg(differences)
                                          : QStringLiteral("Различий нет"))
                           : QStringLiteral("Выберите, что сравнивать");
    if (notRead)
        summary += QStringLiteral(", не считано из прибора параметров: %1").arg(notRead);
    m_summary->setText(summary);
    m_write->setEnabled(false);
    m_write->setVisible(canWrite);
}

int CompareDialog::differenceCount() const {
    int n = 0;
    for (const kd::ConfigField *f : kd::writableFields())
        n += holds(0, *f) && holds(1, *f) && f->value(m_sides[0]->values) != f->value(m_sides[1]->values);
    return n;
}

QVector<const kd::ConfigField *> CompareDialog::ticked() const {
    QVector<const kd::ConfigField *> out;
    for (int i = 0; i < m_table->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *row = m_table->topLevelItem(i);
        if (row->checkState(Tick) == Qt::Checked)
            out << kd::findField(row->data(Tick, Qt::UserRole).toString());
    }
    return out;
}

const VantorConfiguration *CompareDialog::writeSource() const {
    const int device = deviceSide();
    return device < 0 ? nullptr : &m_sides[1 - device]->values;
}
