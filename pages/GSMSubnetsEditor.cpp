#include "pages/GSMSubnetsEditor.h"

#include "pages/PreferredNetworkStore.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

GSMSubnetsEditor::GSMSubnetsEditor(const QVector<MobileOperator> &networks, int sim, QWidget *parent)
    : QDialog(parent)
    , m_networks(networks)
    , m_search(new QLineEdit(this))
    , m_table(new QTableWidget(0, 3, this))
    , m_list(new QListWidget(this))
    , m_mcc(new QSpinBox(this))
    , m_mnc(new QLineEdit(this))
    , m_name(new QLineEdit(this)) {
    setWindowTitle(QStringLiteral("Предпочтительные сети SIM %1").arg(sim + 1));

    m_search->setPlaceholderText(QStringLiteral("Поиск по названию или коду"));
    m_search->setClearButtonEnabled(true);
    m_table->setHorizontalHeaderLabels(
        {QStringLiteral("Оператор"), QStringLiteral("MCC"), QStringLiteral("MNC")});
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    connect(m_search, &QLineEdit::textChanged, this, &GSMSubnetsEditor::applyFilter);
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this](int row) { addShown(row); });

    auto *addKnown = new QPushButton(QStringLiteral("Добавить >"), this);
    connect(addKnown, &QPushButton::clicked, this, [this] { addShown(m_table->currentRow()); });

    m_mcc->setRange(100, 999);
    m_mcc->setValue(250);
    m_mnc->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{2,3}")), m_mnc));
    m_mnc->setMaxLength(3);
    auto *addOther = new QPushButton(QStringLiteral("Добавить"), this);
    connect(addOther, &QPushButton::clicked, this,
            [this] { addManual(m_mcc->value(), m_mnc->text(), m_name->text().trimmed()); });
    auto *manual = new QGroupBox(QStringLiteral("Другая сеть"), this);
    auto *manualForm = new QFormLayout(manual);
    manualForm->addRow(QStringLiteral("MCC:"), m_mcc);
    manualForm->addRow(QStringLiteral("MNC:"), m_mnc);
    manualForm->addRow(QStringLiteral("Название:"), m_name);
    manualForm->addRow(addOther);

    auto *left = new QVBoxLayout;
    left->addWidget(new QLabel(QStringLiteral("Операторы России (MCC 250)"), this));
    left->addWidget(m_search);
    left->addWidget(m_table);
    left->addWidget(addKnown);
    left->addWidget(manual);

    auto *up = new QPushButton(QStringLiteral("Выше"), this);
    auto *down = new QPushButton(QStringLiteral("Ниже"), this);
    auto *remove = new QPushButton(QStringLiteral("Удалить"), this);
    connect(up, &QPushButton::clicked, this, [this] { move(m_list->currentRow(), -1); });
    connect(down, &QPushButton::clicked, this, [this] { move(m_list->currentRow(), 1); });
    connect(remove, &QPushButton::clicked, this, [this] { removeAt(m_list->currentRow()); });
    auto *listButtons = new QHBoxLayout;
    listButtons->addWidget(up);
    listButtons->addWidget(down);
    listButtons->addWidget(remove);

    auto *right = new QVBoxLayout;
    right->addWidget(new QLabel(QStringLiteral("Предпочтительные сети (по порядку)"), this));
    right->addWidget(m_list);
    right->addLayout(listButtons);

    auto *columns = new QHBoxLayout;
    columns->addLayout(left, 3);
    columns->addLayout(right, 2);

    auto *note = new QLabel(QStringLiteral("Список хранится только на этом компьютере (файл %1) "
                                           "и в прибор не записывается.")
                                .arg(QFileInfo(PreferredNetworkStore::defaultPath()).fileName()),
                            this);
    note->setWordWrap(true);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Отмена"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addWidget(note);
    layout->addWidget(buttons);

    applyFilter();
    fillList(0);

    // Without a floor the dialog squeezes the table to a row or two and cuts its columns.
    m_table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_table->horizontalHeader()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    int nameWidth = m_table->fontMetrics().horizontalAdvance(m_table->horizontalHeaderItem(0)->text());
    for (int row = 0; row < m_table->rowCount(); ++row)
        nameWidth = qMax(nameWidth, m_table->fontMetrics().horizontalAdvance(m_table->item(row, 0)->text()));
    const int frame = 2 * m_table->frameWidth();
    m_table->setMinimumHeight(m_table->horizontalHeader()->sizeHint().height() +
                              8 * m_table->verticalHeader()->defaultSectionSize() + frame);
    m_table->setMinimumWidth(nameWidth + m_table->fontMetrics().horizontalAdvance(QStringLiteral("MCC")) * 2 +
                             m_table->fontMetrics().averageCharWidth() * 8 +
                             m_table->verticalScrollBar()->sizeHint().width() + frame + 24);
}

void GSMSubnetsEditor::applyFilter() {
    m_shown = MobileOperatorList::filter(m_search->text());
    m_table->setRowCount(m_shown.size());
    for (int row = 0; row < m_shown.size(); ++row) {
        const MobileOperator &op = m_shown.at(row);
        m_table->setItem(row, 0, new QTableWidgetItem(op.name));
        m_table->setItem(row, 1, new QTableWidgetItem(QString::number(op.mcc)));
        m_table->setItem(row, 2, new QTableWidgetItem(op.mnc));
    }
}

void GSMSubnetsEditor::fillList(int current) {
    m_list->clear();
    for (const MobileOperator &op : m_networks) {
        const QString name = op.name.isEmpty() ? QStringLiteral("Сеть") : op.name;
        m_list->addItem(QStringLiteral("%1 (%2 %3)").arg(name).arg(op.mcc).arg(op.mnc));
    }
    if (current >= 0 && current < m_list->count())
        m_list->setCurrentRow(current);
}

void GSMSubnetsEditor::addShown(int row) {
    if (row < 0 || row >= m_shown.size())
        return;
    addManual(m_shown.at(row).mcc, m_shown.at(row).mnc, m_shown.at(row).name);
}

void GSMSubnetsEditor::addManual(int mcc, const QString &mnc, const QString &name) {
    if (mcc < 100 || mcc > 999 || mnc.size() < 2 || mnc.size() > 3)
        return;
    for (const QChar c : mnc) {
        if (!c.isDigit())
            return;
    }
    for (const MobileOperator &op : m_networks) {
        if (op.mcc == mcc && op.mnc == mnc)
            return;
    }
    m_networks.append({name, mcc, mnc});
    fillList(m_networks.size() - 1);
}

void GSMSubnetsEditor::removeAt(int index) {
    if (index < 0 || index >= m_networks.size())
        return;
    m_networks.removeAt(index);
    fillList(qMin(index, m_networks.size() - 1));
}

void GSMSubnetsEditor::move(int index, int delta) {
    const int to = index + delta;
    if (index < 0 || index >= m_networks.size() || to < 0 || to >= m_networks.size())
        return;
    m_networks.move(index, to);
    fillList(to);
}
