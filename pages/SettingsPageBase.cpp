#include "pages/SettingsPageBase.h"

#include "pages/DeviceTextValidator.h"

#include "Devices/VantorConfiguration.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QSpinBox>
#include <QStyle>
#include <QVBoxLayout>

const char *const SettingsPageBase::UnsavedQuestion = "Есть несохраненные параметры, записать в прибор?";
const char *const SettingsPageBase::UnsavedTitle = "Подтверждение изменений";
const char *const SettingsPageBase::NoValuesNote =
    "Значения не получены из прибора: считайте конфигурацию, откройте файл или создайте новую "
    "конфигурацию. До этого страницу нельзя записать в прибор.";

SettingsPageBase::SettingsPageBase(VantorConfiguration *configuration, const QString &title, QWidget *parent)
    : QWidget(parent)
    , m_configuration(configuration)
    , m_title(title)
    , m_asker(messageBoxAsker())
    , m_notifier(messageBoxNotifier()) {
    setProperty("modified", false);
    auto *outer = new QVBoxLayout(this);
    auto *header = new QHBoxLayout;
    m_titleLabel = new QLabel(title, this);
    m_titleLabel->setObjectName(QStringLiteral("pageTitle"));
    QFont font = m_titleLabel->font();
    font.setBold(true);
    m_titleLabel->setFont(font);
    m_marker = new QLabel(QStringLiteral("* Есть несохраненные изменения"), this);
    m_marker->setObjectName(QStringLiteral("modifiedMarker"));
    m_marker->setVisible(false);
    header->addWidget(m_titleLabel);
    header->addStretch();
    header->addWidget(m_marker);
    outer->addLayout(header);
    m_noValues = new QLabel(QString::fromUtf8(NoValuesNote), this);
    m_noValues->setObjectName(QStringLiteral("noValuesNote"));
    m_noValues->setWordWrap(true);
    m_noValues->setStyleSheet(QStringLiteral("QLabel { color: #b35900; font-weight: bold; }"));
    m_noValues->setVisible(false);
    outer->addWidget(m_noValues);
    m_body = new QVBoxLayout;
    outer->addLayout(m_body);
    outer->addStretch();
}

QString SettingsPageBase::modifiedMarker() const {
    return m_modified ? QStringLiteral("*") : QString();
}

void SettingsPageBase::setHoldsValues(bool holds) {
    if (m_holdsValues == holds)
        return;
    m_holdsValues = holds;
    m_noValues->setVisible(!holds);
    emit holdsValuesChanged(holds);
}

bool SettingsPageBase::applyToDevice(DeviceWorkflows &workflows) {
    if (!m_holdsValues)
        return false;
    const QString problem = inputProblem();
    if (!problem.isEmpty()) {
        notify(m_title, problem);
        return false;
    }
    storeToSection();
    writeSection(workflows);
    setModified(false);
    return true;
}

QString SettingsPageBase::textProblem(const QString &field, const QString &text) {
    if (DeviceTextValidator::isSendable(text))
        return QString();
    return QStringLiteral("Поле «%1» содержит символы, которые нельзя передать в прибор.\n"
                          "Допустимы латинские буквы, цифры и знаки, не более %2 символов.")
        .arg(field)
        .arg(DeviceTextValidator::MaxLength);
}

bool SettingsPageBase::confirmLeave(DeviceWorkflows *workflows) {
    return confirmLeave(workflows ? Writer([this, workflows] { return applyToDevice(*workflows); })
                                  : Writer());
}

bool SettingsPageBase::confirmLeave(const Writer &write) {
    if (!m_modified)
        return true;
    if (!m_holdsValues) {
        storeToSection();
        setModified(false);
        return true;
    }
    const QString title = QString::fromUtf8(UnsavedTitle);
    const QString question = QString::fromUtf8(UnsavedQuestion);
    const LeaveAnswer answer = m_leaveAsker           ? m_leaveAsker(this, title, question)
                               : ask(title, question) ? LeaveAnswer::Write
                                                      : LeaveAnswer::Drop;
    if (answer == LeaveAnswer::Stay)
        return false;
    if (answer == LeaveAnswer::Drop) {
        revert();
        return true;
    }
    if (write)
        return write();
    storeToSection();
    setModified(false);
    return true;
}

void SettingsPageBase::setAsker(Asker asker) {
    m_asker = std::move(asker);
}

void SettingsPageBase::setNotifier(Notifier notifier) {
    m_notifier = std::move(notifier);
}

void SettingsPageBase::setLeaveAsker(LeaveAsker asker) {
    m_leaveAsker = std::move(asker);
}

SettingsPageBase::Asker SettingsPageBase::messageBoxAsker() {
    return [](QWidget *parent, const QString &title, const QString &text) {
        return QMessageBox::question(parent, title, text, QMessageBox::Yes | QMessageBox::No) ==
               QMessageBox::Yes;
    };
}

SettingsPageBase::Notifier SettingsPageBase::messageBoxNotifier() {
    return [](QWidget *parent, const QString &title, const QString &text) {
        QMessageBox::information(parent, title, text);
    };
}

void SettingsPageBase::refresh() {
    loading([this] { showSection(); });
    setModified(false);
}

void SettingsPageBase::followSection(const char *key) {
    if (m_sectionKey.isEmpty())
        m_sectionKey = QString::fromLatin1(key);
    if (!m_configuration)
        return;
    if (kd::IConfigurationItem *section = m_configuration->item(QString::fromLatin1(key)))
        connect(section, &kd::IConfigurationItem::DeviceInfoFilled, this, [this] {
            setHoldsValues(true);
            refresh();
        });
}

QSpinBox *SettingsPageBase::spinBox(int min, int max, const QString &suffix) {
    auto *w = new QSpinBox(this);
    w->setRange(min, max);
    if (!suffix.isEmpty())
        w->setSuffix(QLatin1Char(' ') + suffix);
    watch(w);
    return w;
}

QCheckBox *SettingsPageBase::checkBox(const QString &text) {
    auto *w = new QCheckBox(text, this);
    watch(w);
    return w;
}

QComboBox *SettingsPageBase::comboBox(const QStringList &items) {
    auto *w = new QComboBox(this);
    w->addItems(items);
    watch(w);
    return w;
}

QLineEdit *SettingsPageBase::deviceTextEdit() {
    auto *w = new QLineEdit(this);
    DeviceTextValidator::install(w);
    watch(w);
    return w;
}

void SettingsPageBase::watch(QSpinBox *w) {
    connect(w, qOverload<int>(&QSpinBox::valueChanged), this, &SettingsPageBase::markModified);
}

void SettingsPageBase::watch(QCheckBox *w) {
    connect(w, &QCheckBox::toggled, this, &SettingsPageBase::markModified);
}

void SettingsPageBase::watch(QComboBox *w) {
    connect(w, qOverload<int>(&QComboBox::currentIndexChanged), this, &SettingsPageBase::markModified);
}

void SettingsPageBase::watch(QLineEdit *w) {
    connect(w, &QLineEdit::textChanged, this, &SettingsPageBase::markModified);
}

bool SettingsPageBase::ask(const QString &title, const QString &text) {
    return m_asker && m_asker(this, title, text);
}

void SettingsPageBase::notify(const QString &title, const QString &text) {
    if (m_notifier)
        m_notifier(this, title, text);
}

void SettingsPageBase::markModified() {
    if (!isLoading())
        setModified(true);
}

void SettingsPageBase::setModified(bool modified) {
    if (m_modified == modified)
        return;
    m_modified = modified;
    setProperty("modified", modified);
    m_marker->setVisible(modified);
    style()->unpolish(this);
    style()->polish(this);
    update();
    emit modifiedChanged(modified);
}
