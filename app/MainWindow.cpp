#include "app/MainWindow.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "app/AppSettings.h"
#include "app/ConnectionWaitDlg.h"
#include "app/Prompter.h"
#include "app/SettinsDialog.h"
#include "app/Skin.h"
#include "app/WaitMessageDlg.h"
#include "app/loginDialog.h"
#include "pages/ProgramUpdatePage.h"
#include "pages/SettingsAnalogInPage.h"
#include "pages/SettingsDiscretInPage.h"
#include "pages/SettingsFuelLevelPage.h"
#include "pages/SettingsGSMPage.h"
#include "pages/SettingsNavyPage.h"
#include "pages/SettingsOutputs.h"
#include "pages/SettingsStatePage.h"
#include "pages/SettingsTransmittDataToServer.h"
#include "pages/SystemPage.h"
#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/SerialConnection.h"
#include "protocol/StatusNotifier.h"
#include "protocol/TcpConnection.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"
#include "ui_MainWindow.h"
#include "update/ComponentInformation.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareUpdater.h"
#include "update/QTIFWUpdater.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QPushButton>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>

namespace {
Q_LOGGING_CATEGORY(lcWindow, "tavrel.window")

const char *const AboutAddress = "https://tavrel.ru";
const char *const LinkErrorTitle = "Ошибка подключения";
const char *const NotOffered = "Прибор не поддерживает эту команду";

// The device asks for a power cycle: a box the user acknowledges.
class BoxNotifier : public StatusNotifier {
public:
    BoxNotifier(QWidget *window, Prompter *prompter)
        : m_window(window)
        , m_prompter(prompter) {}
    void notify(const QString &text) override {
        m_prompter->information(m_window, QCoreApplication::applicationName(), text);
    }

private:
    QWidget *m_window;
    Prompter *m_prompter;
};
} // namespace

MainWindow::MainWindow(QWidget *parent)
    : MainWindow(Options(), parent) {}

MainWindow::MainWindow(const Options &options, QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::MainWindow)
    , m_options(options)
    , m_prompter(options.prompter ? options.prompter : std::make_shared<Prompter>()) {
    QCoreApplication::setOrganizationName(QString::fromLatin1(AppSettings::Organisation));
    QCoreApplication::setOrganizationDomain(QStringLiteral("tavrel.ru"));
    QCoreApplication::setApplicationName(QString::fromLatin1(AppSettings::Application));

    ui->setupUi(this);
    setupStatusBar();

    m_deadlines.fill(QTime::currentTime().addSecs(30), 16);
    m_telemetryPeriod = 0;
    m_telemetryTimer = new QTimer(this);
    connect(m_telemetryTimer, &QTimer::timeout, this, &MainWindow::on_timeout);

    m_configuration = new VantorConfiguration(this);
    setupSession();
    setupPages();
    setupActions();
    setupUpdaters();
    applySkin();
    readNetworkSettings();

    AppSettings settings;
    m_connectionType = settings.loginType() == RemoteConnection ? RemoteConnection : LocalConnection;
    if (!m_options.portName.isEmpty())
        m_connectionType = LocalConnection;
    m_lastDir = QDir::currentPath();
    setConnectionTypeIndicator(false);
    setNotConnected();
    updateTelemetryPeriod();
    updateOutputsPage();
    ui->listWidget->setCurrentRow(DevicePage);
    updateApplyButton();

    if (m_options.connectAtStart)
        QTimer::singleShot(0, this, &MainWindow::openLink);
}

MainWindow::~MainWindow() {
    m_telemetryTimer->stop();
    // The session goes first: its link may still report while the pages are torn down.
    delete m_workflows;
    m_workflows = nullptr;
    delete m_device;
    m_device = nullptr;
}

int MainWindow::run(const Options &options, const std::function<int(QDialog *)> &runLogin) {
    if (runLogin) {
        std::unique_ptr<loginDialog> login(new loginDialog());
        const int result = runLogin(login.get());
        login.reset();
        if (result != QDialog::Accepted)
            return 0;
    }
    MainWindow window(options);
    window.show();
    return qApp->exec();
}

void MainWindow::applySkin() {
    applyStoredSkin(qApp);
}

QString MainWindow::appTitle() const {
    return QCoreApplication::applicationName();
}

void MainWindow::setupStatusBar() {
    m_typeButton = new QPushButton(this);
    m_typeButton->setObjectName(QStringLiteral("connectionTypeButton"));
    m_typeButton->setFlat(true);
    m_stateButton = new QPushButton(this);
    m_stateButton->setObjectName(QStringLiteral("connectionStateButton"));
    m_stateButton->setFlat(true);
    ui->statusBar->addWidget(m_typeButton);
    ui->statusBar->addWidget(m_stateButton);
    connect(m_typeButton, &QPushButton::clicked, this, &MainWindow::on_actionSettings_triggered);
    connect(m_stateButton, &QPushButton::clicked, this,
            [this] { ui->listWidget->setCurrentRow(DevicePage); });
}

void MainWindow::setupSession() {
    m_device = new Device(m_configuration, this);
    if (m_options.responseIntervalMs > 0)
        m_device->setResponseInterval(m_options.responseIntervalMs);
    m_workflows = new DeviceWorkflows(m_device, this);
    m_statusNotifier = std::make_unique<BoxNotifier>(this, m_prompter.get());
    UNPParcer *parser = m_device->parser();
    parser->setStatusNotifier(m_statusNotifier.get());
    connect(parser, &UNPParcer::ConfigPackageDetected, this, &MainWindow::onConfigPackage);
    connect(parser, &UNPParcer::DeviceBlocked, this, &MainWindow::onDeviceBlocked);
    connect(parser, &UNPParcer::PasswordChange, this, &MainWindow::onPasswordRequested);
    connect(parser, &UNPParcer::PasswordError, this, &MainWindow::onPasswordError);
    connect(m_device, &Device::connectionLost, this, &MainWindow::onConnectionLost);
    connect(m_device, &Device::connectionRestored, this, &MainWindow::onConnectionRestored);
}

void MainWindow::setupPages() {
    m_rowPages.fill(nullptr, PageCount);
    m_statePage = new SettingsStatePage(m_configuration, ui->deviceStack);
    ui->deviceStack->addWidget(m_statePage);
    connect(m_device->parser(), &UNPParcer::ControlTelemetry, m_statePage,
            &SettingsStatePage::updateTelemetry);

    auto add = [this](int row, SettingsPageBase *page) {
        m_rowPages[row] = page;
        ui->stackedWidget->addWidget(page);
    };
    add(SystemPage, new ::SystemPage(m_configuration));
    add(NavigationPage, new SettingsNavyPage(m_configuration));

    m_dataTabs = new QTabWidget;
    m_dataTabs->setObjectName(QStringLiteral("dataTransferTabs"));
    auto *servers = new SettingsTransmittDataToServer(m_configuration);
    SettingsGSMPage *gsm = m_options.gsmProfilePath.isEmpty()
                               ? new SettingsGSMPage(m_configuration)
                               : new SettingsGSMPage(m_configuration, nullptr, m_options.gsmProfilePath,
                                                     m_options.gsmNetworksPath);
    m_dataTabs->addTab(servers, QStringLiteral("Серверы"));
    m_dataTabs->addTab(gsm, QStringLiteral("GSM"));
    m_dataPages = {servers, gsm};
    ui->stackedWidget->addWidget(m_dataTabs);
    connect(m_dataTabs, &QTabWidget::currentChanged, this, [this](int index) {
        // Leaving one tab for the other is leaving a page.
        const int other = index == 0 ? 1 : 0;
        SettingsPageBase *left = m_dataPages.value(other);
        if (left && !left->confirmLeave(m_workflows)) {
            const QSignalBlocker block(m_dataTabs);
            m_dataTabs->setCurrentIndex(other);
        }
        updateDeviceActions();
    });

    add(AnalogPage, new SettingsAnalogInPage(m_configuration));
    add(LogicPage, new SettingsDiscretInPage(m_configuration));
    add(FuelPage, new SettingsFuelLevelPage(m_configuration));
    add(OutputsPage, new SettingsOutputs(m_configuration));

    m_firmwarePage = new ProgramUpdatePage;
    ui->stackedWidget->addWidget(m_firmwarePage);
    m_firmwarePage->setMessageBoxesEnabled(false);
    connect(m_firmwarePage, &ProgramUpdatePage::loadFailed, this,
            [this](const QString &title, const QString &text) { m_prompter->warning(this, title, text); });
    m_firmwarePage->setFileChooser([this] {
        return m_prompter->openFileName(this, QStringLiteral("Открыть файл прошивки"), m_lastDir,
                                        QStringLiteral("Файл прошивки (*.bsk)"));
    });
    connect(m_firmwarePage, &ProgramUpdatePage::startUpdate, this, &MainWindow::startFirmwareUpdate);
    connect(m_firmwarePage->updater(), &DeviceUpdater::UpdateComplete, this,
            &MainWindow::onFirmwareUpdateComplete);
    // Every received chunk goes to the boot-loader channel first; it claims only its own messages.
    DeviceUpdater *updater = m_firmwarePage->updater();
    m_device->setFirmwareHandler([updater](const QByteArray &chunk) { return updater->offer(chunk); });

    const auto asker = [this](QWidget *parent, const QString &title, const QString &text) {
        return m_prompter->question(parent, title, text);
    };
    const auto notifier = [this](QWidget *parent, const QString &title, const QString &text) {
        m_prompter->information(parent, title, text);
    };
    const auto leaveAsker = [this](QWidget *parent, const QString &title, const QString &text) {
        switch (m_prompter->questionWithCancel(parent, title, text)) {
        case Prompter::Answer::Yes:
            return SettingsPageBase::LeaveAnswer::Write;
        case Prompter::Answer::No:
            return SettingsPageBase::LeaveAnswer::Drop;
        case Prompter::Answer::Cancel:
            break;
        }
        return SettingsPageBase::LeaveAnswer::Stay;
    };
    for (SettingsPageBase *page : settingsPages()) {
        page->setAsker(asker);
        page->setLeaveAsker(leaveAsker);
        page->setNotifier(notifier);
        page->loadFromSection();
        // Start-up zeros are not the device's values.
        page->setHoldsValues(false);
        connect(page, &SettingsPageBase::holdsValuesChanged, this, &MainWindow::updateDeviceActions);
    }
}

SettingsPageBase *MainWindow::settingsPage(int row) const {
    if (row == DataTransferPage)
        return qobject_cast<SettingsPageBase *>(m_dataTabs->currentWidget());
    return m_rowPages.value(row);
}

QList<SettingsPageBase *> MainWindow::settingsPages() const {
    QList<SettingsPageBase *> pages;
    for (int row = 0; row < m_rowPages.size(); ++row) {
        if (row == DataTransferPage)
            pages += m_dataPages;
        else if (m_rowPages.at(row))
            pages.append(m_rowPages.at(row));
    }
    return pages;
}

void MainWindow::setupActions() {
    auto *group = new QActionGroup(this);
    group->setExclusive(true);
    group->addAction(ui->action_LocalControl);
    group->addAction(ui->action_RemoteControl);
    connect(ui->action_LocalControl, &QAction::triggered, this,
            [this] { setConnectionType(LocalConnection); });
    connect(ui->action_RemoteControl, &QAction::triggered, this,
            [this] { setConnectionType(RemoteConnection); });

    // The device firmware has no command for these; they stay visible so the user learns why.
    for (QAction *a : {ui->action_Reboot, ui->action_ReadStatistics}) {
        a->setEnabled(false);
        a->setToolTip(QString::fromUtf8(NotOffered));
        a->setStatusTip(QString::fromUtf8(NotOffered));
    }
    // A menu shows an action's tool tip only when asked to.
    ui->menuDevice->setToolTipsVisible(true);

    connect(ui->action_ReadCfg, &QAction::triggered, this, &MainWindow::readAll);
    connect(ui->action_WriteCfg, &QAction::triggered, this, &MainWindow::writeAll);
    connect(ui->readButton, &QPushButton::clicked, this, &MainWindow::readAll);
    connect(ui->writeButton, &QPushButton::clicked, this, &MainWindow::writeAll);
    connect(ui->applyButton, &QPushButton::clicked, this, &MainWindow::applyCurrentPage);
    connect(ui->action_Reconnect, &QAction::triggered, this, &MainWindow::reconnect);
    connect(ui->connectButton, &QPushButton::clicked, this, &MainWindow::reconnect);
    connect(ui->action_UpdateFirmware, &QAction::triggered, this, &MainWindow::showFirmwarePage);
    connect(ui->action_UpdateDevice, &QAction::triggered, this, &MainWindow::showFirmwarePage);
    connect(ui->action_CheckUpdates, &QAction::triggered, this, [this] {
        checkProgramUpdates();
        checkDeviceUpdates();
    });
    connect(ui->action_CheckProgramUpdates, &QAction::triggered, this, &MainWindow::checkProgramUpdates);
    connect(ui->action_CheckDeviceUpdates, &QAction::triggered, this, &MainWindow::checkDeviceUpdates);
    connect(ui->action_SoftwareVersion, &QAction::triggered, this, &MainWindow::showSoftwareVersion);
    connect(ui->action_About, &QAction::triggered, this, &MainWindow::showAbout);
}

void MainWindow::setupUpdaters() {
    m_selfUpdater = new QTIFWUpdater(this);
    connect(m_selfUpdater, &QTIFWUpdater::errorOccurred, this, [this](const QString &error) {
        m_prompter->warning(this, appTitle(),
                            QStringLiteral("Ошибка проверки обновлений программы конфигуратора\n") +
                                QStringLiteral("Ошибка: %1").arg(error));
    });
    connect(m_selfUpdater, &QTIFWUpdater::warningOccurred, this, [this](const QString &) {
        m_prompter->information(this, appTitle(), QStringLiteral("Нет доступных обновлений конфигуратора"));
    });
    connect(m_selfUpdater, &QTIFWUpdater::checkComplete, this, &MainWindow::onUpdateCheckComplete);
    m_selfUpdater->setMaintenanceToolName(QStringLiteral("maintenancetool"));
    m_selfUpdater->setWorkingDirectory(QCoreApplication::applicationDirPath());
    if (m_options.updateCheckAtStart)
        startDeviceUpdateCheck(false);
}

void MainWindow::readNetworkSettings() {
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/network.xml");
    // Installations without a proxy carry no file at all; only a broken file is worth a box.
    if (!QFileInfo::exists(path))
        return;
    QTIFWUpdater::NetworkSettings network;
    QString error;
    if (!QTIFWUpdater::readNetworkSettings(path, network, error)) {
        qCWarning(lcWindow) << error;
        m_prompter->critical(this, QStringLiteral("Ошибка"),
                             QStringLiteral("Ошибка чтения файла сетевых настроек network.xml"));
        return;
    }
    m_selfUpdater->setProxyType(network.proxyType);
}

Connection *MainWindow::createLink() {
    if (m_options.linkFactory)
        return m_options.linkFactory(m_connectionType);
    AppSettings settings;
    if (m_connectionType == RemoteConnection) {
        return new TcpConnection(settings.serverAddress(), quint16(settings.serverPort()),
                                 settings.serialNumber());
    }
    const QString port = m_options.portName.isEmpty() ? settings.portName() : m_options.portName;
    auto *serial = port.isEmpty() ? new SerialConnection() : new SerialConnection(port);
    return serial;
}

void MainWindow::openLink() {
    m_identified = false;
    m_telemetryTimer->stop();
    Connection *link = createLink();
    connect(link, &Connection::error, this, &MainWindow::onLinkError);
    connect(link, &Connection::connected, this, &MainWindow::onLinkConnected);
    connect(link, &Connection::deviceOverflow, this, &MainWindow::onDeviceOverflow);
    m_device->setLink(link);
    m_typeButton->setIcon(QIcon(m_connectionType == RemoteConnection
                                    ? QStringLiteral(":/images/remoteConnection.png")
                                    : QStringLiteral(":/images/localConnection.png")));
    if (auto *serial = qobject_cast<SerialConnection *>(link)) {
        if (serial->portName().isEmpty() && serial->findDevices() != 1)
            return; // no device, or more than one (already reported)
    }
    if (!link->open()) {
        setConnectionTypeIndicator(false);
        setNotConnected();
    }
}

void MainWindow::reconnect() {
    closeWaitDialog();
    setNotConnected();
    openLink();
}

void MainWindow::setConnectionType(int type) {
    if (type == RemoteConnection) {
        AppSettings settings;
        QString imei = settings.serialNumber();
        if (imei.isEmpty()) {
            if (!m_prompter->text(this, appTitle(), QStringLiteral("Введите IMEI прибора"), &imei) ||
                imei.isEmpty()) {
                setConnectionTypeIndicator(false);
                return;
            }
            settings.setSerialNumber(imei);
        }
    }
    m_connectionType = type == RemoteConnection ? RemoteConnection : LocalConnection;
    AppSettings().setLoginType(m_connectionType);
    if (m_connectionType == RemoteConnection)
        m_options.portName.clear();
    setConnectionTypeIndicator(false);
    setNotConnected();
    updateTelemetryPeriod();
    reconnect();
}

void MainWindow::onLinkConnected() {
    m_storedPasswordTried = false;
    updateDeviceActions();
    if (m_connectionType == LocalConnection) {
        m_device->resetRetries();
        setConnectionTypeIndicator(true);
        m_workflows->readIdentity();
    } else {
        // The link has announced the IMEI to the server; the device answers once the server puts it through.
        m_device->protocol()->clearQueue();
        setConnectionTypeIndicator(true);
        showWaitDialog(QStringLiteral("Ожидание подключения прибора к серверу конфигурирования"));
        m_workflows->readIdentity();
    }
}

void MainWindow::onLinkError(int group, int code) {
    QString text;
    if (group == Connection::NetworkError) {
        if (code == 1) {
            text = QStringLiteral("Отключен от сервера");
            dropConnection();
        }
    } else if (group == Connection::SerialError) {
        switch (code) {
        case 1:
            text = QStringLiteral("Прибор отключен");
            break;
        case 9:
            text = QStringLiteral("Прибор был отключен");
            break;
        case 13:
            text = QStringLiteral("Порт закрыт");
            break;
        default:
            // Other port complaints (a refused read or write) leave the link as it is.
            qCWarning(lcWindow) << "serial link error" << code;
            return;
        }
        m_telemetryTimer->stop();
    }
    setConnectionTypeIndicator(false);
    m_identified = false;
    m_telemetryTimer->stop();
    m_stateButton->setText(QStringLiteral("Нет подключенных приборов"));
    m_stateButton->setIcon(QIcon(QStringLiteral(":/images/red_state.png")));
    ui->deviceStack->setCurrentWidget(ui->placeholderPanel);
    updateDeviceActions();
    if (!text.isEmpty())
        m_prompter->warning(this, QString::fromUtf8(LinkErrorTitle), text);
}

void MainWindow::onDeviceOverflow() {
    m_telemetryTimer->stop();
    m_typeButton->setIcon(QIcon(QStringLiteral(":/images/localConnection_off.png")));
    m_prompter->warning(
        this, QString::fromUtf8(LinkErrorTitle),
        QStringLiteral("Подключено более одного прибора, отключите лишние \n для избежания ошибок"));
}

void MainWindow::dropConnection() {
    m_telemetryTimer->stop();
    m_identified = false;
    m_device->setLink(nullptr);
    setConnectionTypeIndicator(false);
}

void MainWindow::showWaitDialog(const QString &text) {
    if (m_waitDialog)
        return;
    auto *dialog = new ConnectionWaitDlg(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setMessage(text);
    connect(dialog, &ConnectionWaitDlg::connectionWaitCancelled, this, &MainWindow::onWaitCancelled);
    m_waitDialog = dialog;
    dialog->open();
}

void MainWindow::closeWaitDialog() {
    if (!m_waitDialog)
        return;
    ConnectionWaitDlg *dialog = m_waitDialog;
    m_waitDialog = nullptr;
    disconnect(dialog, &ConnectionWaitDlg::connectionWaitCancelled, this, &MainWindow::onWaitCancelled);
    dialog->accept();
    m_device->resolveConnectionLost();
}

void MainWindow::onConnectionLost() {
    // At most one waiting dialog: a second loss while it is shown changes nothing.
    showWaitDialog(QStringLiteral("Прибор не отвечает. Ожидание ответа прибора..."));
}

void MainWindow::onConnectionRestored() {
    closeWaitDialog();
}

void MainWindow::onWaitCancelled() {
    if (m_waitDialog) {
        m_waitDialog->deleteLater();
        m_waitDialog = nullptr;
    }
    m_device->resolveConnectionLost();
    kd::trafficLog(QStringLiteral("Соединение разорвано"));
    m_prompter->information(this, appTitle(), QStringLiteral("Соединение разорвано"));
    m_telemetryTimer->stop();
    m_identified = false;
    m_device->protocol()->clearQueue();
    if (Connection *link = m_device->link())
        link->close();
    setConnectionTypeIndicator(false);
    setNotConnected();
}

void MainWindow::onConfigPackage(int code) {
    switch (code) {
    case kd::DeviceInfoConfiguration::AnswerCode:
        onIdentified();
        break;
    case 0x8E:
        updateOutputsPage();
        break;
    default:
        break;
    }
    // The pages follow their own sections; the window only shows the result of a full read.
}

void MainWindow::onIdentified() {
    closeWaitDialog();
    auto *info = m_configuration->deviceInfo();
    if (!info)
        return;
    QString name = info->name();
    if (name.isEmpty())
        name = info->IMEI();
    setDeviceName(name);
    m_statePage->showIdentity();
    ui->deviceStack->setCurrentWidget(m_statePage);
    if (!m_identified) {
        m_identified = true;
        startTelemetry();
        if (m_firmwareUpdater && QFileInfo::exists(m_firmwareUpdater->firmwarePath()))
            m_firmwareUpdater->checkVersion(info->Version());
    }
}

void MainWindow::onDeviceBlocked() {
    // Nothing further may reach the device in this state.
    m_device->protocol()->clearQueue();
    m_prompter->warning(
        this, appTitle(),
        QStringLiteral("Прибор заблокирован, повторите попытку позже. \nИзменения не применены."));
}

void MainWindow::onPasswordRequested() {
    // The password typed in the start-up dialog is tried once per connection before asking.
    const quint32 stored = quint32(AppSettings().passWord());
    if (stored != 0 && !m_storedPasswordTried) {
        m_storedPasswordTried = true;
        m_workflows->login(stored);
        return;
    }
    quint32 password = 0;
    if (m_prompter->password(this, &password))
        m_workflows->login(password);
}

void MainWindow::onPasswordError() {
    m_prompter->warning(this, appTitle(), QStringLiteral("Введен неправильный пароль"));
}

void MainWindow::updateTelemetryPeriod() {
    AppSettings settings;
    m_telemetryPeriod = AppSettings::telemetryPeriod(m_connectionType, settings.telemetryTime());
    m_telemetryTimer->setInterval(int(m_telemetryPeriod));
    if (m_telemetryPeriod == 0)
        m_telemetryTimer->stop();
    else if (m_identified)
        m_telemetryTimer->start();
}

void MainWindow::startTelemetry() {
    if (m_telemetryPeriod != 0)
        m_telemetryTimer->start(int(m_telemetryPeriod));
}

void MainWindow::on_timeout() {
    if (!m_telemetryTimer->isActive() || m_telemetryPeriod == 0)
        return;
    kd::trafficLog(QStringLiteral("ВРЕМЯ ") + QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz")));
    m_workflows->pollTelemetry();
}

void MainWindow::setConnectionTypeIndicator(bool connected) {
    if (m_connectionType == RemoteConnection) {
        m_typeButton->setToolTip(QStringLiteral("Тип соединения с прибором: Интернет соединение"));
        m_typeButton->setText(QStringLiteral("Интернет"));
        m_typeButton->setIcon(QIcon(connected ? QStringLiteral(":/images/remoteConnection_on.png")
                                              : QStringLiteral(":/images/remoteConnection_off.png")));
    } else {
        m_typeButton->setToolTip(QStringLiteral("Тип соединения с прибором: USB соединение"));
        m_typeButton->setText(QStringLiteral("USB"));
        m_typeButton->setIcon(QIcon(connected ? QStringLiteral(":/images/localConnection_on.png")
                                              : QStringLiteral(":/images/localConnection_off.png")));
    }
    m_typeButton->setProperty("connected", connected);
    ui->action_RemoteControl->setChecked(m_connectionType == RemoteConnection);
    ui->action_LocalControl->setChecked(m_connectionType == LocalConnection);
}

void MainWindow::setNotConnected() {
    updateDeviceActions();
    m_stateButton->setText(QStringLiteral("Нет подключенных приборов"));
    m_stateButton->setIcon(QIcon(QStringLiteral(":/images/red_state.png")));
    ui->deviceStack->setCurrentWidget(ui->placeholderPanel);
    m_statePage->clearTelemetry();
}

void MainWindow::setDeviceName(const QString &name) {
    m_stateButton->setText(QStringLiteral("Подключен прибор: %1").arg(name));
    m_stateButton->setIcon(QIcon(QStringLiteral(":/images/green_state.png")));
}

void MainWindow::updateOutputsPage() {
    auto *outputs = m_configuration->outputs();
    const bool any = outputs && outputs->element(0) && outputs->element(0)->numberOfOutputs() > 0;
    QListWidgetItem *item = ui->listWidget->item(OutputsPage);
    const Qt::ItemFlags flags = item->flags();
    item->setFlags(any ? (flags | Qt::ItemIsEnabled) : (flags & ~Qt::ItemIsEnabled));
    item->setToolTip(any ? QString() : QStringLiteral("Прибор не сообщил о выходах"));
    if (!any && ui->listWidget->currentRow() == OutputsPage)
        ui->listWidget->setCurrentRow(DevicePage);
}

void MainWindow::updateApplyButton() {
    updateDeviceActions();
}

void MainWindow::updateDeviceActions() {
    const bool linkUp = m_device->link() && m_device->link()->state() == Connection::Connected;
    const bool device = linkUp && !m_updating;
    for (QAction *a :
         {ui->action_ReadCfg, ui->action_WriteCfg, ui->action_ClearMemory, ui->action_ResetSettings})
        a->setEnabled(device);
    ui->readButton->setEnabled(device);
    ui->writeButton->setEnabled(device);
    SettingsPageBase *shown = settingsPage(ui->listWidget->currentRow());
    ui->applyButton->setEnabled(device && shown && shown->holdsValues());
    ui->applyButton->setToolTip(!shown ? QStringLiteral("На этой странице нет настроек прибора")
                                : !shown->holdsValues() ? QStringLiteral("На странице нет значений прибора")
                                : device ? QString()
                                         : QStringLiteral("Прибор не подключен"));
}

void MainWindow::refreshAllPages() {
    for (SettingsPageBase *page : settingsPages()) {
        page->setHoldsValues(true);
        page->refresh();
    }
    m_statePage->updateAll();
    updateOutputsPage();
}

bool MainWindow::confirmLeave(int row) {
    if (row == DataTransferPage) {
        for (SettingsPageBase *page : qAsConst(m_dataPages)) {
            if (!page->confirmLeave(m_workflows))
                return false;
        }
        return true;
    }
    SettingsPageBase *page = m_rowPages.value(row);
    return !page || page->confirmLeave(m_workflows);
}

void MainWindow::storeModifiedPages() {
    for (SettingsPageBase *page : settingsPages()) {
        if (page->isModified())
            page->storeToSection();
    }
}

void MainWindow::on_listWidget_currentItemChanged(QListWidgetItem *current, QListWidgetItem *previous) {
    Q_UNUSED(previous)
    const int row = ui->listWidget->row(current);
    if (row < 0 || row == m_currentRow)
        return;
    if (!confirmLeave(m_currentRow)) {
        const QSignalBlocker block(ui->listWidget);
        ui->listWidget->setCurrentRow(m_currentRow);
        return;
    }
    m_currentRow = row;
    ui->stackedWidget->setCurrentIndex(row);
    updateApplyButton();
}

void MainWindow::readAll() {
    if (!confirmLeave(m_currentRow))
        return;
    if (!m_prompter->question(
            this, QStringLiteral("Считывание конфигурации"),
            QStringLiteral("Считать все настройки из прибора? \nНесохраненные параметры будут утрачены")))
        return;
    // A page written on leaving goes out first: the full read empties the queue.
    whenSent([this] {
        m_configuration->resetFilled();
        m_workflows->readAll();
    });
}

void MainWindow::whenSent(const std::function<void()> &then) {
    proto::UNPProtocol *protocol = m_device->protocol();
    const bool linkUp = m_device->link() && m_device->link()->state() == Connection::Connected;
    if (protocol->queue().isEmpty() || !linkUp) {
        then();
        return;
    }
    const QByteArray last = protocol->queue().last();
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection =
        connect(protocol, &proto::UNPProtocol::queueChanged, this, [protocol, last, connection, then] {
            if (protocol->isQueued(last))
                return;
            QObject::disconnect(*connection);
            then();
        });
}

void MainWindow::writeAll() {
    if (!m_prompter->question(
            this, QStringLiteral("Сохранение конфигурации"),
            QStringLiteral("Перезаписать все настройки прибора? \nДействие заменит текущие настройки")))
        return;
    storeModifiedPages();
    m_workflows->writeAll();
    for (SettingsPageBase *page : settingsPages())
        page->refresh();
}

void MainWindow::applyCurrentPage() {
    SettingsPageBase *page = settingsPage(ui->listWidget->currentRow());
    if (!page)
        return;
    page->applyToDevice(*m_workflows);
}

void MainWindow::on_action_ClearMemory_triggered() {
    m_prompter->information(this, appTitle(), QStringLiteral("Очистка памяти"));
    m_workflows->clearMemory();
}

void MainWindow::on_action_ResetSettings_triggered() {
    m_prompter->information(this, appTitle(), QStringLiteral("Сброс настроек"));
    m_workflows->resetSettings();
}

void MainWindow::on_action_CreateNewCfg_triggered() {
    if (!m_prompter->question(
            this, appTitle(),
            QStringLiteral("Предыдущая загруженная конфигурация будет заменена.  Продолжить?"))) {
        m_prompter->information(this, appTitle(), QStringLiteral("Ничего не делаем"));
        return;
    }
    m_configuration->read(QJsonObject());
    refreshAllPages();
}

void MainWindow::on_action_OpenCfgFromFile_triggered() {
    if (!confirmLeave(m_currentRow))
        return;
    const QString path = m_prompter->openFileName(this, QStringLiteral("Open Json File"), m_lastDir,
                                                  QStringLiteral("JSON (*.json)"));
    if (path.isEmpty())
        return;
    m_lastDir = QFileInfo(path).absolutePath();
    const auto result = kd::ConfigurationFile::load(path, *m_configuration);
    switch (result.status) {
    case kd::ConfigurationFile::LoadResult::CannotOpen:
        qCWarning(lcWindow) << path << result.errorString;
        m_prompter->warning(this, appTitle(), QStringLiteral("Не удалось открыть файл конфигурации"));
        return;
    case kd::ConfigurationFile::LoadResult::ParseError:
        qCWarning(lcWindow) << path << result.errorString;
        m_prompter->warning(this, appTitle(), QStringLiteral("Произошла ошибка при открытии файла"));
        return;
    case kd::ConfigurationFile::LoadResult::Ok:
        break;
    }
    refreshAllPages();
    m_prompter->information(this, appTitle(), QStringLiteral("Конфигурация успешно загружена"));
}

void MainWindow::on_action_SaveCfgToFile_triggered() {
    storeModifiedPages();
    QString path = m_prompter->saveFileName(this, QStringLiteral("Save Json File"), m_lastDir,
                                            QStringLiteral("JSON (*.json)"));
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QStringLiteral(".json");
    m_lastDir = QFileInfo(path).absolutePath();
    QDir::setCurrent(m_lastDir);
    const auto result = kd::ConfigurationFile::save(path, *m_configuration);
    if (!result.ok()) {
        qCWarning(lcWindow) << path << result.errorString;
        m_prompter->critical(
            this, appTitle(),
            QStringLiteral("Не удалось сохранить файл конфигурации\n%1").arg(result.errorString));
    }
}

void MainWindow::on_action_Exit_triggered() {
    close();
}

void MainWindow::on_actionSettings_triggered() {
    SettinsDialog dialog(this);
    if (auto *serial = qobject_cast<SerialConnection *>(m_device->link()))
        dialog.setPortInUse(serial->portName());
    connect(&dialog, &SettinsDialog::skinChanged, this, [] { applySkin(); });
    connect(&dialog, &SettinsDialog::settingsApplied, this, [this] {
        applySkin();
        updateTelemetryPeriod();
    });
    dialog.exec();
    // A new connection type in the settings means a new link.
    const int stored = AppSettings().loginType() == RemoteConnection ? RemoteConnection : LocalConnection;
    if (stored != m_connectionType)
        setConnectionType(stored);
}

void MainWindow::closeEvent(QCloseEvent *event) {
    if (!m_closing) {
        if (!confirmLeave(m_currentRow)) {
            event->ignore();
            return;
        }
        m_closing = true;
        m_telemetryTimer->stop();
        if (!m_device->protocol()->queue().isEmpty()) {
            // Let a page written on leaving reach the device before the link goes.
            event->ignore();
            whenSent([this] { close(); });
            return;
        }
    }
    m_telemetryTimer->stop();
    closeWaitDialog();
    if (Connection *link = m_device->link())
        link->close();
    event->accept();
}

void MainWindow::showAbout() {
    m_prompter->information(
        this, QStringLiteral("О программе"),
        QString::fromLatin1(AboutAddress) +
            QStringLiteral("\nВерсия программного обеспечения: %1").arg(QStringLiteral(TAVREL_VERSION)));
}

void MainWindow::showSoftwareVersion() {
    QString text = QStringLiteral("Версия программного обеспечения: %1").arg(QStringLiteral(TAVREL_VERSION));
    if (m_identified && m_configuration->deviceInfo())
        text += QStringLiteral("\nВерсия прошивки прибора: %1").arg(m_configuration->deviceInfo()->Version());
    m_prompter->information(this, QStringLiteral("Версия ПО"), text);
}

void MainWindow::checkProgramUpdates() {
    if (!m_selfUpdater->checkUpdates())
        qCDebug(lcWindow) << "an update check is already running";
}

void MainWindow::checkDeviceUpdates() {
    startDeviceUpdateCheck(true);
}

void MainWindow::startDeviceUpdateCheck(bool asked) {
    m_deviceUpdateAsked = asked;
    if (m_firmwareUpdater) {
        m_firmwareUpdater->download();
        return;
    }
    // Creating the downloader starts the download.
    m_firmwareUpdater = new FirmwareUpdater(QString(), this);
    connect(m_firmwareUpdater, &FirmwareUpdater::newFirmwareAvailable, this, &MainWindow::on_needUpdFirmware);
    connect(m_firmwareUpdater, &FirmwareUpdater::downloadError, this, [this] {
        m_prompter->information(this, QStringLiteral("Информация по обновлению прошивки"),
                                QStringLiteral("Не удалось загрузить с сервера файл актуального обновления "
                                               "прибора. \nУстройство может работать некорректно!"));
    });
    connect(m_firmwareUpdater, &FirmwareUpdater::firwareUpdateNotAvailable, this, [this] {
        m_versionAnswered = true;
        m_deviceUpdateAsked = false;
        m_prompter->information(this, appTitle(), QStringLiteral("Нет доступных обновлений прибора."));
    });
    connect(m_firmwareUpdater, &FirmwareUpdater::downloadComplete, this, &MainWindow::onDeviceFirmwareReady);
}

void MainWindow::onDeviceFirmwareReady() {
    if (!m_identified || !m_configuration->deviceInfo()) {
        if (m_deviceUpdateAsked)
            m_prompter->information(this, appTitle(),
                                    QStringLiteral("Файл обновления загружен. Версия прошивки будет сравнена "
                                                   "после подключения прибора."));
        return;
    }
    m_versionAnswered = false;
    m_firmwareUpdater->checkVersion(m_configuration->deviceInfo()->Version());
    if (!m_versionAnswered && m_deviceUpdateAsked)
        m_prompter->warning(
            this, QStringLiteral("Информация по обновлению прошивки"),
            QStringLiteral("Загруженный с сервера файл не является файлом прошивки прибора."));
    m_deviceUpdateAsked = false;
}

void MainWindow::on_needUpdFirmware() {
    m_versionAnswered = true;
    m_deviceUpdateAsked = false;
    if (!m_prompter->question(this, appTitle(),
                              QStringLiteral("Новая версия обновления прибора доступна, обновить?")))
        return;
    showFirmwarePage();
    m_firmwarePage->loadFile(m_firmwareUpdater->firmwarePath());
}

void MainWindow::showPage(int row) {
    ui->listWidget->setCurrentRow(row);
}

void MainWindow::showFirmwarePage() {
    ui->listWidget->setCurrentRow(FirmwarePage);
}

void MainWindow::startFirmwareUpdate() {
    Connection *link = m_device->link();
    if (!link || link->state() != Connection::Connected) {
        m_prompter->warning(this, appTitle(), QStringLiteral("Прибор не подключен"));
        m_firmwarePage->finishUpdate();
        return;
    }
    DeviceUpdater *updater = m_firmwarePage->updater();
    updater->setConnection(link);
    if (!updater->begin()) {
        m_firmwarePage->finishUpdate();
        return;
    }
    m_device->protocol()->clearQueue();
    m_telemetryTimer->stop();
    m_workflows->enterFirmwareUpdate();
    setDeviceControlsEnabled(false);
}

void MainWindow::onFirmwareUpdateComplete() {
    setDeviceControlsEnabled(true);
    m_telemetryTimer->stop();
    m_identified = false;
    auto *wait = new WaitMessageDlg(this);
    wait->setAttribute(Qt::WA_DeleteOnClose);
    connect(wait, &QDialog::finished, this, [this] {
        m_firmwarePage->appendProgress(QStringLiteral("Обновление завершено."));
        m_firmwarePage->finishUpdate();
        // The device starts its new firmware: identify it again.
        if (m_device->link() && m_device->link()->state() == Connection::Connected)
            m_workflows->readIdentity();
    });
    wait->open();
}

void MainWindow::setDeviceControlsEnabled(bool on) {
    m_updating = !on;
    for (QAction *a : {ui->action_Reconnect, ui->action_LocalControl, ui->action_RemoteControl,
                       ui->action_CreateNewCfg, ui->action_OpenCfgFromFile, ui->actionSettings})
        a->setEnabled(on);
    ui->connectButton->setEnabled(on);
    ui->listWidget->setEnabled(on);
    updateDeviceActions();
}

void MainWindow::onUpdateCheckComplete(const QList<ComponentInformation> &components) {
    if (!m_prompter->question(this, QStringLiteral("Результат проверки обновлений"),
                              QTIFWUpdater::reportText(components)))
        return;
    m_selfUpdater->setMaintenanceToolName(QStringLiteral("maintenancetool"));
    m_selfUpdater->setWorkingDirectory(QCoreApplication::applicationDirPath());
    if (!m_selfUpdater->startUpdater())
        m_prompter->critical(this, QStringLiteral("Ошибка выполнения обновления"),
                             QStringLiteral("Обновление приостановлено."));
}

ConnectionWaitDlg *MainWindow::waitDialog() const {
    return m_waitDialog;
}
