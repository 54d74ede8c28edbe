#include "app/loginSettings.h"

#include "app/AppSettings.h"
#include "app/DeviceLog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QIntValidator>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

loginSettings::loginSettings(QWidget *parent, AppSettings *store)
    : QDialog(parent)
    , m_store(store ? store : new AppSettings)
    , m_ownsStore(!store)
    , m_address(new QLineEdit(this))
    , m_port(new QLineEdit(this))
    , m_timeout(new QSpinBox(this))
    , m_logSave(new QCheckBox(QStringLiteral("Сохранять лог работы прибора в файл?"), this))
    , m_updatePath(new QLineEdit(this)) {
    setWindowTitle(QStringLiteral("Настройки удаленного подключения"));

    m_address->setObjectName(QStringLiteral("serverAddressEdit"));
    m_port->setObjectName(QStringLiteral("serverPortEdit"));
    m_port->setValidator(new QIntValidator(1, 65535, m_port));
    m_timeout->setObjectName(QStringLiteral("timeoutBox"));
    m_timeout->setRange(1, 3600);
    m_logSave->setObjectName(QStringLiteral("logSaveBox"));
    m_logSave->setToolTip(DeviceLog::directory());
    m_updatePath->setObjectName(QStringLiteral("updatePathEdit"));
    m_updatePath->setReadOnly(true);

    m_address->setMinimumWidth(240);
    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(QStringLiteral("Адрес сервера конфигурирования"), m_address);
    form->addRow(QStringLiteral("Порт"), m_port);
    form->addRow(QStringLiteral("Таймаут для операций с переопросом (с)"), m_timeout);
    form->addRow(QStringLiteral("Сетевой путь размещения обновлений конфигуратора"), m_updatePath);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("Сохранить"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Отмена"));
    connect(buttons, &QDialogButtonBox::accepted, this, &loginSettings::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &loginSettings::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_logSave);
    layout->addWidget(buttons);

    load();
}

loginSettings::~loginSettings() {
    if (m_ownsStore)
        delete m_store;
}

void loginSettings::load() {
    m_address->setText(m_store->serverAddressOrDefault());
    m_port->setText(QString::number(m_store->serverPortOrDefault()));
    m_timeout->setValue(m_store->timeoutSecondsOrDefault());
    m_logSave->setChecked(m_store->serverLogSave());
}

void loginSettings::save() {
    m_store->setServerAddress(serverAddress());
    m_store->setServerPort(serverPort().toInt());
    m_store->setTimeoutSeconds(timeoutSeconds());
    m_store->setServerLogSave(logSave());
    m_store->sync();
    DeviceLog::setFileEnabled(m_store->deviceLogToFile());
}

void loginSettings::accept() {
    save();
    QDialog::accept();
}

void loginSettings::done(int result) {
    QDialog::done(result);
    emit loginServiceDelited();
}

QString loginSettings::serverAddress() const {
    return m_address->text().trimmed();
}

QString loginSettings::serverPort() const {
    return m_port->text().trimmed();
}

int loginSettings::timeoutSeconds() const {
    return m_timeout->value();
}

bool loginSettings::logSave() const {
    return m_logSave->isChecked();
}

void loginSettings::setUpdatePath(const QString &path) {
    m_updatePath->setText(path);
}

QString loginSettings::updatePath() const {
    return m_updatePath->text();
}
