#include "app/SettinsDialog.h"

#include "app/DeviceLog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

const QString customText = QStringLiteral("Другой");
// The automatic entry's item data: distinct from a port record (a list) and from the custom entry (none).
const QString autoData = QStringLiteral("auto");
const QString blank = QStringLiteral(" - ");

// The item data of a port: its record as the list shows it (name, description, manufacturer,
// vendor and product identifiers in hexadecimal; unknown fields read " - ").
QStringList portRecord(const SerialPortDescription &port) {
    const SerialPortRecord r = SerialConnection::record(port);
    return {r.portName, r.description, r.manufacturer, r.vendorIdentifier, r.productIdentifier};
}

QSpinBox *spinBox(QWidget *parent, const char *name, int max) {
    auto *box = new QSpinBox(parent);
    box->setObjectName(QLatin1String(name));
    box->setRange(0, max);
    return box;
}

QLineEdit *lineEdit(QWidget *parent, const char *name, bool secret = false) {
    auto *edit = new QLineEdit(parent);
    edit->setObjectName(QLatin1String(name));
    if (secret) {
        edit->setEchoMode(QLineEdit::PasswordEchoOnEdit);
        edit->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase);
    }
    return edit;
}

} // namespace

const QString SettinsDialog::AutoPortText = QStringLiteral("Автоопределение (USB)");

SettinsDialog::SettinsDialog(QWidget *parent, AppSettings *store)
    : QDialog(parent)
    , m_store(store ? store : new AppSettings)
    , m_ownsStore(!store) {
    setWindowTitle(QStringLiteral("Настройки"));
    buildForm();
    fillPortsParameters();
    load();
    QMetaObject::connectSlotsByName(this);
}

SettinsDialog::~SettinsDialog() {
    if (m_ownsStore)
        delete m_store;
}

void SettinsDialog::buildForm() {
    auto *connectionBox = new QGroupBox(QStringLiteral("Соединение с прибором"), this);
    m_connectionType = new QComboBox(connectionBox);
    m_connectionType->setObjectName(QStringLiteral("connectionTypeBox"));
    m_connectionType->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_connectionType->addItems(
        {QStringLiteral("Локальное соединение (USB)"), QStringLiteral("Удаленное соединение (TCP)")});
    m_timeout = spinBox(connectionBox, "timeoutBox", 3600);
    auto *connectionForm = new QFormLayout(connectionBox);
    connectionForm->addRow(QStringLiteral("Тип соединения"), m_connectionType);
    connectionForm->addRow(QStringLiteral("Таймаут для операций, сек"), m_timeout);

    auto *portBox = new QGroupBox(QStringLiteral("Последовательный порт"), this);
    m_port = new QComboBox(portBox);
    m_port->setObjectName(QStringLiteral("serialPortInfoListBox"));
    auto *refresh = new QPushButton(QStringLiteral("Обновить"), portBox);
    refresh->setObjectName(QStringLiteral("refreshPortsButton"));
    refresh->setAutoDefault(false);
    connect(refresh, &QPushButton::clicked, this, &SettinsDialog::fillPortsInfo);
    m_inUse = new QLabel(portBox);
    m_inUse->setObjectName(QStringLiteral("portInUseLabel"));
    m_description = new QLabel(portBox);
    m_manufacturer = new QLabel(portBox);
    m_vid = new QLabel(portBox);
    m_pid = new QLabel(portBox);
    m_baudRate = new QComboBox(portBox);
    m_baudRate->setObjectName(QStringLiteral("baudRateBox"));
    m_dataBits = new QComboBox(portBox);
    m_parity = new QComboBox(portBox);
    m_stopBits = new QComboBox(portBox);
    m_flowControl = new QComboBox(portBox);
    auto *portRow = new QHBoxLayout;
    portRow->addWidget(m_port, 1);
    portRow->addWidget(refresh);
    auto *portForm = new QFormLayout(portBox);
    portForm->addRow(QStringLiteral("Порт"), portRow);
    portForm->addRow(QStringLiteral("Используется"), m_inUse);
    portForm->addRow(QStringLiteral("Описание"), m_description);
    portForm->addRow(QStringLiteral("Производитель"), m_manufacturer);
    portForm->addRow(QStringLiteral("Vendor ID"), m_vid);
    portForm->addRow(QStringLiteral("Product ID"), m_pid);
    portForm->addRow(QStringLiteral("Скорость"), m_baudRate);
    portForm->addRow(QStringLiteral("Биты данных"), m_dataBits);
    portForm->addRow(QStringLiteral("Четность"), m_parity);
    portForm->addRow(QStringLiteral("Стоп-биты"), m_stopBits);
    portForm->addRow(QStringLiteral("Управление потоком"), m_flowControl);

    auto *serverBox = new QGroupBox(QStringLiteral("Сервер конфигурирования"), this);
    m_serverAddress = lineEdit(serverBox, "serverAddressEdit");
    m_serverPort = spinBox(serverBox, "serverPortBox", 65535);
    m_imei = lineEdit(serverBox, "imeiEdit");
    m_imei->setMaxLength(16);
    m_imei->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{1,16}")), m_imei));
    m_login = lineEdit(serverBox, "loginEdit");
    m_userPassword = lineEdit(serverBox, "userPasswordEdit", true);
    auto *serverForm = new QFormLayout(serverBox);
    serverForm->addRow(QStringLiteral("Адрес сервера"), m_serverAddress);
    serverForm->addRow(QStringLiteral("Порт сервера"), m_serverPort);
    serverForm->addRow(QStringLiteral("IMEI прибора"), m_imei);
    serverForm->addRow(QStringLiteral("Пользователь"), m_login);
    serverForm->addRow(QStringLiteral("Пароль пользователя"), m_userPassword);

    auto *proxyBox = new QGroupBox(QStringLiteral("Прокси-сервер"), this);
    m_proxyType = new QComboBox(proxyBox);
    m_proxyType->setObjectName(QStringLiteral("proxyTypeBox"));
    m_proxyType->addItems(
        {QStringLiteral("Без прокси-сервера"), QStringLiteral("HTTP"), QStringLiteral("SOCKS5")});
    m_proxyAddress = lineEdit(proxyBox, "proxyAddressEdit");
    m_proxyPort = spinBox(proxyBox, "proxyPortBox", 65535);
    m_proxyLogin = lineEdit(proxyBox, "proxyLoginEdit");
    m_proxyPassword = lineEdit(proxyBox, "proxyPasswordEdit", true);
    auto *proxyForm = new QFormLayout(proxyBox);
    proxyForm->addRow(QStringLiteral("Тип"), m_proxyType);
    proxyForm->addRow(QStringLiteral("Адрес"), m_proxyAddress);
    proxyForm->addRow(QStringLiteral("Порт"), m_proxyPort);
    proxyForm->addRow(QStringLiteral("Пользователь"), m_proxyLogin);
    proxyForm->addRow(QStringLiteral("Пароль"), m_proxyPassword);

    auto *viewBox = new QGroupBox(QStringLiteral("Интерфейс"), this);
    m_theme = new QComboBox(viewBox);
    m_theme->setObjectName(QStringLiteral("themeBox"));
    m_theme->insertItem(LightThemeRow, QStringLiteral("Светлая тема"));
    m_theme->insertItem(DarkThemeRow, QStringLiteral("Темная тема"));
    m_telemetry = new QComboBox(viewBox);
    m_telemetry->setObjectName(QStringLiteral("telemetryBox"));
    m_telemetry->addItems({QStringLiteral("Непрерывно"), QStringLiteral("5 сек"), QStringLiteral("4 сек"),
                           QStringLiteral("3 сек"), QStringLiteral("2 сек"), QStringLiteral("1 сек"),
                           QStringLiteral("<Нет>")});
    m_logSave = new QCheckBox(QStringLiteral("Сохранять лог работы прибора в файл"), viewBox);
    m_logSave->setObjectName(QStringLiteral("logSaveBox"));
    m_verifyWrites = new QCheckBox(QStringLiteral("Проверять запись чтением"), viewBox);
    m_verifyWrites->setObjectName(QStringLiteral("verifyWritesBox"));
    m_verifyWrites->setToolTip(
        QStringLiteral("После записи в прибор записанные разделы считываются и сравниваются"));
    auto *logPath = new QLabel(
        QStringLiteral("Файлы журнала: %1")
            .arg(QDir::toNativeSeparators(DeviceLog::directory() + QStringLiteral("/device-ГГГГММДД.log"))),
        viewBox);
    logPath->setObjectName(QStringLiteral("logPathLabel"));
    logPath->setWordWrap(true);
    logPath->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *viewForm = new QFormLayout(viewBox);
    viewForm->addRow(QStringLiteral("Оформление"), m_theme);
    viewForm->addRow(QStringLiteral("Период опроса телеметрии"), m_telemetry);
    viewForm->addRow(m_logSave);
    viewForm->addRow(logPath);
    viewForm->addRow(m_verifyWrites);

    auto *apply = new QPushButton(QStringLiteral("Применить"), this);
    apply->setObjectName(QStringLiteral("applyButton"));
    apply->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("Отмена"), this);
    cancel->setObjectName(QStringLiteral("pushButton"));
    cancel->setAutoDefault(false);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(apply);
    buttons->addWidget(cancel);

    auto *grid = new QGridLayout;
    grid->addWidget(connectionBox, 0, 0);
    grid->addWidget(serverBox, 1, 0);
    grid->addWidget(proxyBox, 2, 0);
    grid->addWidget(portBox, 0, 1, 2, 1);
    grid->addWidget(viewBox, 2, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addLayout(buttons);

    // A style sheet that draws its own drop-down takes the arrow's room from the text a second time, which
    // the lists' size hints miss: give each list room for its longest entry plus the arrow.
    for (QComboBox *box : findChildren<QComboBox *>()) {
        int widest = 0;
        for (int i = 0; i < box->count(); ++i)
            widest = qMax(widest, box->fontMetrics().horizontalAdvance(box->itemText(i)));
        box->setMinimumWidth(qMax(box->minimumWidth(), widest + 64));
    }

    connect(m_port, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SettinsDialog::showPortInfo);
    connect(m_port, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &SettinsDialog::checkCustomDevicePathPolicy);
    connect(m_baudRate, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &SettinsDialog::checkCustomBaudRatePolicy);
}

void SettinsDialog::fillPortsParameters() {
    for (const qint32 rate : {9600, 19200, 38400, 57600, int(SerialConnection::BaudRate)})
        m_baudRate->addItem(QString::number(rate), rate);
    m_baudRate->addItem(customText);
    m_baudRate->setCurrentIndex(m_baudRate->findData(AppSettings::SerialBaudRate));

    m_dataBits->addItem(QStringLiteral("5"), QSerialPort::Data5);
    m_dataBits->addItem(QStringLiteral("6"), QSerialPort::Data6);
    m_dataBits->addItem(QStringLiteral("7"), QSerialPort::Data7);
    m_dataBits->addItem(QStringLiteral("8"), QSerialPort::Data8);
    m_dataBits->setCurrentIndex(3);

    m_parity->addItem(QStringLiteral("Нет"), QSerialPort::NoParity);
    m_parity->addItem(QStringLiteral("Четный"), QSerialPort::EvenParity);
    m_parity->addItem(QStringLiteral("Нечетный"), QSerialPort::OddParity);
    m_parity->addItem(QStringLiteral("Маркер"), QSerialPort::MarkParity);
    m_parity->addItem(QStringLiteral("Пробел"), QSerialPort::SpaceParity);

    m_stopBits->addItem(QStringLiteral("1"), QSerialPort::OneStop);
    m_stopBits->addItem(QStringLiteral("1.5"), QSerialPort::OneAndHalfStop);
    m_stopBits->addItem(QStringLiteral("2"), QSerialPort::TwoStop);

    m_flowControl->addItem(QStringLiteral("Нет"), QSerialPort::NoFlowControl);
    m_flowControl->addItem(QStringLiteral("RTS/CTS"), QSerialPort::HardwareControl);
    m_flowControl->addItem(QStringLiteral("XON/XOFF"), QSerialPort::SoftwareControl);
}

void SettinsDialog::fillPortsInfo() {
    if (m_port->currentData() == autoData)
        fillPorts(QString());
    else
        fillPorts(m_port->currentText().isEmpty() ? m_current.portName : m_port->currentText());
}

void SettinsDialog::fillPorts(const QString &select) {
    const QSignalBlocker block(m_port);
    m_port->clear();
    m_port->addItem(AutoPortText, autoData);
    QList<SerialPortDescription> devices;
    QList<SerialPortDescription> others;
    for (const SerialPortDescription &port : m_lister ? m_lister() : QList<SerialPortDescription>())
        (SerialConnection::isDevicePort(port) ? devices : others).append(port);
    for (const SerialPortDescription &port : devices + others)
        m_port->addItem(port.portName, portRecord(port));
    m_port->addItem(customText);
    // A stored port that is not plugged in now stays selectable, and so does the port in use.
    for (const QString &name : {m_current.portName, m_portInUse}) {
        if (!name.isEmpty() && m_port->findText(name) < 0)
            m_port->insertItem(m_port->count() - 1, name, QStringList{name});
    }
    m_inUse->setText(m_portInUse.isEmpty() ? blank : m_portInUse);

    // No stored port: automatic detection.
    int row = select.isEmpty() ? 0 : m_port->findText(select);
    if (row < 0 && select != m_current.portName)
        row = m_current.portName.isEmpty() ? 0 : m_port->findText(m_current.portName);
    m_port->setCurrentIndex(row < 0 ? 0 : row);
    showPortInfo(m_port->currentIndex());
    checkCustomDevicePathPolicy(m_port->currentIndex());
}

void SettinsDialog::setPortLister(SerialConnection::PortLister lister) {
    m_lister = std::move(lister);
    fillPorts(m_current.portName);
}

void SettinsDialog::setPortInUse(const QString &portName) {
    m_portInUse = portName;
    fillPortsInfo();
}

void SettinsDialog::showPortInfo(int index) {
    if (index < 0)
        return;
    if (m_port->itemData(index) == autoData) {
        m_description->setText(QStringLiteral("Прибор ищется по идентификаторам USB при каждом подключении"));
        for (QLabel *label : {m_manufacturer, m_vid, m_pid})
            label->setText(blank);
        return;
    }
    const QStringList record = m_port->itemData(index).toStringList();
    auto field = [&record](int i) { return i < record.size() ? record.at(i) : blank; };
    m_description->setText(field(1));
    m_manufacturer->setText(field(2));
    m_vid->setText(field(3));
    m_pid->setText(field(4));
}

void SettinsDialog::checkCustomBaudRatePolicy(int index) {
    const bool custom = !m_baudRate->itemData(index).isValid();
    m_baudRate->setEditable(custom);
    if (custom) {
        m_baudRate->clearEditText();
        m_baudRate->lineEdit()->setValidator(new QIntValidator(0, 4000000, m_baudRate));
    }
}

void SettinsDialog::checkCustomDevicePathPolicy(int index) {
    const bool custom = index >= 0 && !m_port->itemData(index).isValid();
    m_port->setEditable(custom);
    if (custom)
        m_port->clearEditText();
}

void SettinsDialog::load() {
    m_current = m_store->record();
    const AppSettings::Record &r = m_current;

    m_theme->setCurrentIndex(r.skinName >= 0 && r.skinName < m_theme->count() ? r.skinName : -1);
    m_telemetry->setCurrentIndex(
        r.telemetryTime >= 0 && r.telemetryTime < m_telemetry->count() ? r.telemetryTime : -1);
    m_connectionType->setCurrentIndex(r.loginType);
    m_serverAddress->setText(r.serverAddress);
    m_serverPort->setValue(r.serverPort);
    m_imei->setText(r.serialNumber.left(16));
    m_timeout->setValue(r.timeoutSeconds);
    m_logSave->setChecked(r.logSave);
    m_verifyWrites->setChecked(r.verifyWrites);
    m_login->setText(r.login);
    m_userPassword->setText(r.userPassword);
    m_proxyType->setCurrentIndex(r.currentProxy >= 0 && r.currentProxy < m_proxyType->count() ? r.currentProxy
                                                                                              : 0);
    m_proxyAddress->setText(r.proxyServerAddres);
    m_proxyPort->setValue(r.proxyPort);
    m_proxyLogin->setText(r.proxyLogin);
    m_proxyPassword->setText(r.proxyPassword);

    fillPorts(r.portName);
}

AppSettings::Record SettinsDialog::fromWidgets() const {
    AppSettings::Record r = m_current;
    r.portName = m_port->currentData() == autoData ? QString() : m_port->currentText();
    r.baudRate = m_baudRate->itemData(m_baudRate->currentIndex()).isValid()
                     ? m_baudRate->currentData().toInt()
                     : m_baudRate->currentText().toInt();
    if (r.baudRate <= 0)
        r.baudRate = AppSettings::SerialBaudRate;
    r.dataBits = QSerialPort::DataBits(m_dataBits->currentData().toInt());
    r.parity = QSerialPort::Parity(m_parity->currentData().toInt());
    r.stopBits = QSerialPort::StopBits(m_stopBits->currentData().toInt());
    r.flowControl = QSerialPort::FlowControl(m_flowControl->currentData().toInt());

    // An unknown stored row (no entry selected) is kept as it was.
    if (m_theme->currentIndex() >= 0)
        r.skinName = m_theme->currentIndex();
    if (m_telemetry->currentIndex() >= 0)
        r.telemetryTime = m_telemetry->currentIndex();
    r.loginType = m_connectionType->currentIndex();
    r.serverAddress = m_serverAddress->text().trimmed();
    r.serverPort = m_serverPort->value();
    r.serialNumber = m_imei->text();
    r.timeoutSeconds = m_timeout->value();
    r.logSave = m_logSave->isChecked();
    r.verifyWrites = m_verifyWrites->isChecked();
    r.login = m_login->text();
    r.userPassword = m_userPassword->text();
    r.currentProxy = m_proxyType->currentIndex();
    r.proxyServerAddres = m_proxyAddress->text().trimmed();
    r.proxyPort = m_proxyPort->value();
    r.proxyLogin = m_proxyLogin->text();
    r.proxyPassword = m_proxyPassword->text();
    return r;
}

void SettinsDialog::apply() {
    const int previousSkin = m_current.skinName;
    m_current = fromWidgets();
    m_store->writeRecord(m_current);
    m_store->sync();
    DeviceLog::setFileEnabled(m_store->deviceLogToFile());
    emit settingsApplied();
    if (m_current.skinName != previousSkin)
        emit skinChanged(m_current.skinName);
}

void SettinsDialog::on_applyButton_clicked() {
    apply();
    accept();
}

void SettinsDialog::on_pushButton_clicked() {
    // Leaving without applying: the next opening shows the stored values again.
    load();
    reject();
}
