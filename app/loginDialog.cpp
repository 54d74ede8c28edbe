#include "app/loginDialog.h"

#include "app/AppSettings.h"
#include "app/loginSettings.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

loginDialog::loginDialog(QWidget *parent, AppSettings *store)
    : QDialog(parent)
    , m_store(store ? store : new AppSettings)
    , m_ownsStore(!store)
    , m_local(new QRadioButton(QStringLiteral("Локальное управление (USB)"), this))
    , m_remote(new QRadioButton(QStringLiteral("Удаленное управление (Интернет)"), this))
    , m_imei(new QLineEdit(this))
    , m_password(new QLineEdit(this))
    , m_hint(new QLabel(this)) {
    setWindowTitle(QStringLiteral("Подключение к прибору"));
    setWindowIcon(QIcon(QStringLiteral(":/images/app.png")));

    m_local->setObjectName(QStringLiteral("localButton"));
    m_remote->setObjectName(QStringLiteral("remoteButton"));

    m_imei->setObjectName(QStringLiteral("imeiEdit"));
    m_imei->setMaxLength(16);
    m_imei->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{1,16}")), m_imei));
    m_imei->setPlaceholderText(QStringLiteral("IMEI прибора"));

    m_password->setObjectName(QStringLiteral("passwordEdit"));
    m_password->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,9}")), m_password));
    m_password->setEchoMode(QLineEdit::PasswordEchoOnEdit);
    m_password->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhNoPredictiveText | Qt::ImhDigitsOnly);

    m_hint->setObjectName(QStringLiteral("hintLabel"));
    m_hint->setWordWrap(true);
    m_hint->setFrameShape(QFrame::StyledPanel);
    m_hint->setMargin(6);

    auto *serverButton = new QPushButton(QStringLiteral("Настройки сервера..."), this);
    serverButton->setObjectName(QStringLiteral("serverSettingsButton"));
    serverButton->setAutoDefault(false);
    connect(serverButton, &QPushButton::clicked, this, &loginDialog::openServerSettings);

    auto *typeBox = new QGroupBox(QStringLiteral("Тип соединения с прибором"), this);
    auto *typeLayout = new QVBoxLayout(typeBox);
    typeLayout->addWidget(m_local);
    typeLayout->addWidget(m_remote);

    auto *remoteBox = new QGroupBox(QStringLiteral("Удаленное подключение"), this);
    auto *remoteForm = new QFormLayout(remoteBox);
    remoteForm->addRow(QStringLiteral("IMEI прибора"), m_imei);
    remoteForm->addRow(m_hint);
    remoteForm->addRow(serverButton);

    auto *passwordForm = new QFormLayout;
    passwordForm->addRow(QStringLiteral("Пароль прибора"), m_password);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("buttonBox"));
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("Подключить"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Выход"));
    connect(buttons, &QDialogButtonBox::accepted, this, &loginDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &loginDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(typeBox);
    layout->addWidget(remoteBox);
    layout->addLayout(passwordForm);
    layout->addWidget(buttons);

    const bool remote = m_store->loginType() == AppSettings::RemoteConnection;
    (remote ? m_remote : m_local)->setChecked(true);
    const int storedPassword = m_store->passWord();
    if (storedPassword != 0)
        m_password->setText(QString::number(storedPassword));
    m_imei->setText(m_store->serialNumber().left(16));
    readServer();

    connect(m_remote, &QRadioButton::toggled, this, &loginDialog::updateRemoteFields);
    updateRemoteFields();
}

loginDialog::~loginDialog() {
    if (m_ownsStore)
        delete m_store;
}

QString loginDialog::hintFor(const QString &address, const QString &port) {
    if (!address.isEmpty() && !port.isEmpty())
        return QStringLiteral("Для удаленного управления прибором необходимо перевести прибор на сервер "
                              "конфигурирования: %1:%2")
            .arg(address, port);
    return QStringLiteral("Проверьте настройки сервера удаленного конфигурирования");
}

void loginDialog::readServer() {
    QSettings *s = m_store->store();
    m_serverAddress = s->value(QLatin1String(AppSettings::Keys::ServerAddress)).toString();
    m_serverPort = s->value(QLatin1String(AppSettings::Keys::ServerPort)).toString();
    m_hint->setText(hintFor(m_serverAddress, m_serverPort));
}

QString loginDialog::hintText() const {
    return m_hint->text();
}

int loginDialog::connectionType() const {
    return m_remote->isChecked() ? AppSettings::RemoteConnection : AppSettings::LocalConnection;
}

int loginDialog::password() const {
    return m_password->text().toInt();
}

QString loginDialog::imei() const {
    return m_imei->text();
}

void loginDialog::updateRemoteFields() {
    m_imei->setEnabled(m_remote->isChecked());
}

void loginDialog::openServerSettings() {
    loginSettings dialog(this, m_store);
    connect(&dialog, &loginSettings::loginServiceDelited, this, &loginDialog::readServer);
    dialog.exec();
}

void loginDialog::accept() {
    m_store->setLoginType(connectionType());
    m_store->setPassWord(password());
    m_store->setSerialNumber(imei());
    m_store->sync();
    QDialog::accept();
}
