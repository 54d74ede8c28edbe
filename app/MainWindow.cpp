#include "app/MainWindow.h"

#include "Devices/ConfigurationDiff.h"
#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/OutputConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "app/AppSettings.h"
#include "app/AutoConnect.h"
#include "app/ConfigurationFiles.h"
#include "app/ConnectionIndicators.h"
#include "app/ConnectionWaitDlg.h"
#include "app/FirmwareUpdateFlow.h"
#include "app/JobReport.h"
#include "app/Prompter.h"
#include "app/SafeWrites.h"
#include "app/SettingsPages.h"
#include "app/SettinsDialog.h"
#include "app/Skin.h"
#include "app/TelemetryTools.h"
#include "app/UpdateChecks.h"
#include "app/WindowActions.h"
#include "app/loginDialog.h"
#include "pages/ProgramUpdatePage.h"
#include "pages/SettingsStatePage.h"
#include "protocol/Connection.h"
#include "protocol/SerialConnection.h"
#include "protocol/TrafficLog.h"
#include "ui_MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QPushButton>
#include <QTimer>

namespace {

using State = SessionController::State;

const char *const LinkErrorTitle = "Ошибка подключения";

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
    m_indicators = new ConnectionIndicators(ui->statusBar, this);
    connect(m_indicators->typeButton(), &QPushButton::clicked, this,
            &MainWindow::on_actionSettings_triggered);
    connect(m_indicators->stateButton(), &QPushButton::clicked, this, [this] { showPage(DevicePage); });
    connect(m_indicators, &ConnectionIndicators::waitCancelled, this, &MainWindow::onWaitCancelled);

    m_deadlines.fill(QTime::currentTime().addSecs(30), 16);
    m_telemetryTimer = new QTimer(this);
    connect(m_telemetryTimer, &QTimer::timeout, this, &MainWindow::on_timeout);

    m_configuration = new VantorConfiguration(this);
    setupSession();
    setupPages();
    auto *telemetryTools = new TelemetryTools(this, m_configuration, m_telemetryTimer, m_prompter.get());
    connect(m_session, &SessionController::telemetryDecoded, telemetryTools,
            &TelemetryTools::telemetryDecoded);
    m_updates = new UpdateChecks(this, m_prompter, [this]() -> qint64 {
        return isIdentified() && m_configuration->deviceInfo()
                   ? qint64(m_configuration->deviceInfo()->Version())
                   : -1;
    });
    m_actions = new WindowActions(this, ui.get(), m_updates, m_safe);
    connect(m_updates, &UpdateChecks::newFirmwareAvailable, this, &MainWindow::on_needUpdFirmware);
    if (m_options.updateCheckAtStart)
        m_updates->checkDevice(false);
    applySkin();
    m_updates->readNetworkSettings();

    m_connectionType = AppSettings().loginType() == RemoteConnection && m_options.portName.isEmpty()
                           ? RemoteConnection
                           : LocalConnection;
    m_files = std::make_unique<ConfigurationFiles>(m_configuration, this, m_prompter);
    updateTelemetryPeriod();
    updateOutputsPage();
    ui->listWidget->setCurrentRow(DevicePage);
    render();

    if (m_options.connectAtStart)
        QTimer::singleShot(0, this, &MainWindow::reconnect);
}

MainWindow::~MainWindow() {
    m_telemetryTimer->stop();
    // The session goes first: its link may still report while the pages are torn down.
    delete m_session;
    m_session = nullptr;
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

QPushButton *MainWindow::connectionTypeButton() const {
    return m_indicators->typeButton();
}

QPushButton *MainWindow::connectionStateButton() const {
    return m_indicators->stateButton();
}

ProgramUpdatePage *MainWindow::firmwarePage() const {
    return m_firmware->page();
}

ConnectionWaitDlg *MainWindow::waitDialog() const {
    return m_indicators->waitDialog();
}

bool MainWindow::isIdentified() const {
    return m_session && m_session->isIdentified();
}

void MainWindow::setupSession() {
    m_session = new SessionController(m_configuration, this);
    if (m_options.linkFactory) {
        const auto factory = m_options.linkFactory;
        m_session->setLinkFactory([factory](const SessionController::Settings &s) {
            return factory(s.remote ? RemoteConnection : LocalConnection);
        });
    }
    connect(m_session, &SessionController::stateChanged, this, &MainWindow::render);
    m_autoConnect = new AutoConnect(m_session, m_indicators, this);
    connect(m_session, &SessionController::identified, this, [this] {
        m_statePage->showIdentity();
        m_updates->deviceIdentified();
    });
    connect(m_session, &SessionController::linkFailed, this, &MainWindow::onLinkFailed);
    connect(m_session, &SessionController::connectionLost, this, [this] {
        // At most one waiting dialog: a second loss while it is shown changes nothing.
        m_indicators->showWait(QStringLiteral("Прибор не отвечает. Ожидание ответа прибора..."));
    });
    connect(m_session, &SessionController::connectionRestored, m_indicators,
            &ConnectionIndicators::closeWait);
    connect(m_session, &SessionController::passwordRequested, this, &MainWindow::onPasswordRequested);
    connect(m_session, &SessionController::passwordRejected, this,
            [this](const QString &text) { m_prompter->warning(this, appTitle(), text); });
    connect(m_session, &SessionController::deviceBlocked, this, &MainWindow::onDeviceBlocked);
    connect(m_session, &SessionController::jobFinished, this, &MainWindow::onJobFinished);
    m_safe = new SafeWrites(m_session, m_configuration, this, m_prompter, this);
    m_safe->setVerify(AppSettings().verifyWrites());
    connect(m_safe, &SafeWrites::writeRequested, this, &MainWindow::writeSections);
    connect(m_session, &SessionController::sectionDecoded, this, [this](int code) {
        if (code == kd::OutputConfiguration::AnswerCode)
            updateOutputsPage();
    });
}

void MainWindow::setupPages() {
    m_statePage = new SettingsStatePage(m_configuration, ui->deviceStack);
    ui->deviceStack->addWidget(m_statePage);
    connect(m_session, &SessionController::telemetryDecoded, m_statePage,
            &SettingsStatePage::updateTelemetry);

    m_pages = new SettingsPages(this);
    m_pages->build(m_configuration, ui->stackedWidget, m_options.gsmProfilePath, m_options.gsmNetworksPath);
    m_pages->setPrompter(m_prompter);
    m_pages->setWriter([this](SettingsPageBase *page) { return writePage(page); });
    connect(m_pages, &SettingsPages::pageStateChanged, this, &MainWindow::updateDeviceActions);

    m_firmware = new FirmwareUpdateFlow(this, ui->stackedWidget, m_session, m_prompter,
                                        [this] { return m_files->lastDir(); });
    connect(m_firmware, &FirmwareUpdateFlow::runningChanged, this,
            [this](bool running) { setDeviceControlsEnabled(!running); });
    connect(m_firmware, &FirmwareUpdateFlow::restarting, m_autoConnect, &AutoConnect::expectRestart);
}

SettingsPageBase *MainWindow::settingsPage(int row) const {
    return m_pages->page(row);
}

QList<SettingsPageBase *> MainWindow::settingsPages() const {
    return m_pages->all();
}

void MainWindow::render() {
    const State state = m_session->state();
    const bool remote = m_connectionType == RemoteConnection;
    const bool linked = state == State::Identifying || state == State::PasswordRequired ||
                        state == State::Ready || state == State::Busy;
    if (state == State::Connecting)
        m_indicators->showLinking(remote);
    else
        m_indicators->showType(remote, linked);
    ui->action_RemoteControl->setChecked(remote);
    ui->action_LocalControl->setChecked(!remote);

    const bool identified = linked && isIdentified() && m_configuration->deviceInfo();
    if (identified) {
        const auto *info = m_configuration->deviceInfo();
        m_indicators->showDevice(info->name().isEmpty() ? info->IMEI() : info->name());
        ui->deviceStack->setCurrentWidget(m_statePage);
        m_indicators->closeWait();
    } else {
        m_indicators->showNoDevice();
        if (state == State::Connecting || state == State::Identifying)
            m_indicators->showBusy(QStringLiteral("Подключение к прибору..."));
        else if (state == State::PasswordRequired)
            m_indicators->showBusy(QStringLiteral("Прибор ожидает пароль"));
        ui->deviceStack->setCurrentWidget(ui->placeholderPanel);
        m_statePage->clearTelemetry();
    }
    if (state == State::Identifying && remote)
        m_indicators->showWait(QStringLiteral("Ожидание подключения прибора к серверу конфигурирования"));
    // A ready session waits for nothing, and a dropped link has nothing left to wait for.
    if (state == State::Disconnected || state == State::Ready || !m_session->link())
        m_indicators->closeWait();

    if (!identified || m_telemetryPeriod == 0 || m_updating)
        m_telemetryTimer->stop();
    else if (!m_telemetryTimer->isActive())
        m_telemetryTimer->start(int(m_telemetryPeriod));
    updateDeviceActions();
}

void MainWindow::updateDeviceActions() {
    // The pages and the session report before the actions exist; the constructor renders once after.
    if (!m_actions)
        return;
    m_actions->setReady(m_session->isReadyForJobs() && !m_updating,
                        settingsPage(ui->listWidget->currentRow()));
}

void MainWindow::updateOutputsPage() {
    auto *outputs = m_configuration->outputs();
    const bool any = outputs && outputs->element(0) && outputs->element(0)->numberOfOutputs() > 0;
    QListWidgetItem *item = ui->listWidget->item(OutputsPage);
    item->setFlags(any ? (item->flags() | Qt::ItemIsEnabled) : (item->flags() & ~Qt::ItemIsEnabled));
    item->setToolTip(any ? QString() : QStringLiteral("Прибор не сообщил о выходах"));
    if (!any && ui->listWidget->currentRow() == OutputsPage)
        showPage(DevicePage);
}

void MainWindow::updateTelemetryPeriod() {
    m_telemetryPeriod = AppSettings::telemetryPeriod(m_connectionType, AppSettings().telemetryTime());
    m_telemetryTimer->setInterval(int(m_telemetryPeriod));
    m_telemetryTimer->stop();
    render();
}

void MainWindow::on_timeout() {
    if (!m_telemetryTimer->isActive() || m_telemetryPeriod == 0)
        return;
    kd::trafficLog(QStringLiteral("ВРЕМЯ ") + QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz")));
    m_session->telemetryRound();
}

void MainWindow::reconnect() {
    m_indicators->closeWait();
    SessionController::Settings settings =
        AppSettings().sessionSettings(m_connectionType == RemoteConnection, m_options.portName);
    if (m_options.responseIntervalMs > 0)
        settings.responseIntervalMs = m_options.responseIntervalMs;
    m_session->connectDevice(settings);
    m_autoConnect->apply(settings);
}

void MainWindow::setConnectionType(int type) {
    if (type == RemoteConnection) {
        AppSettings settings;
        QString imei = settings.serialNumber();
        if (imei.isEmpty()) {
            if (!m_prompter->text(this, appTitle(), QStringLiteral("Введите IMEI прибора"), &imei) ||
                imei.isEmpty()) {
                render();
                return;
            }
            settings.setSerialNumber(imei);
        }
        m_options.portName.clear();
    }
    m_connectionType = type == RemoteConnection ? RemoteConnection : LocalConnection;
    AppSettings().setLoginType(m_connectionType);
    m_session->disconnectDevice();
    updateTelemetryPeriod();
    reconnect();
}

void MainWindow::onLinkFailed(const LinkFailure &failure) {
    if (failure.error == LinkError::SeveralDevices) {
        m_telemetryTimer->stop();
        m_indicators->showTypeOff();
    }
    // No device plugged in: the state button says so already; a restarting device fails a few tries.
    const bool quiet = failure.error == LinkError::NoDevice || m_autoConnect->isWaiting();
    const QString text = quiet ? QString() : linkErrorText(failure);
    if (!text.isEmpty())
        m_prompter->warning(this, QString::fromUtf8(LinkErrorTitle), text);
}

void MainWindow::onPasswordRequested() {
    // Asked outside the session's own signal, and once at a time.
    QTimer::singleShot(0, this, [this] {
        if (m_askingPassword || m_session->state() != State::PasswordRequired)
            return;
        m_askingPassword = true;
        quint32 password = 0;
        const bool given = m_prompter->password(this, &password);
        m_askingPassword = false;
        if (given)
            m_session->submitPassword(password);
        else
            m_session->abandonLogin();
    });
}

void MainWindow::onDeviceBlocked(const QString &powerCycleText) {
    if (!powerCycleText.isEmpty()) {
        m_prompter->information(this, appTitle(), powerCycleText);
        return;
    }
    m_prompter->warning(
        this, appTitle(),
        QStringLiteral("Прибор заблокирован, повторите попытку позже. \nИзменения не применены."));
}

void MainWindow::onJobFinished(const JobResult &result) {
    // After the link's own box when a loss cut the job short; asked before SafeWrites ends its read-back.
    const QString report = m_safe->reportText(result);
    if (!report.isEmpty())
        QTimer::singleShot(0, this, [this, report] { m_prompter->warning(this, appTitle(), report); });
    if (m_afterJob) {
        const std::function<void()> then = std::move(m_afterJob);
        m_afterJob = nullptr;
        then();
    }
}

void MainWindow::onWaitCancelled() {
    kd::trafficLog(QStringLiteral("Соединение разорвано"));
    m_session->disconnectDevice();
    m_prompter->information(this, appTitle(), QStringLiteral("Соединение разорвано"));
}

bool MainWindow::writePage(SettingsPageBase *page) {
    bool written = false;
    m_session->writeWith(page->sectionKey(), [&written, page](DeviceWorkflows &workflows) {
        written = page->applyToDevice(workflows);
    });
    return written;
}

void MainWindow::afterJob(std::function<void()> then) {
    if (m_session->state() == State::Busy)
        m_afterJob = std::move(then);
    else
        then();
}

void MainWindow::on_listWidget_currentItemChanged(QListWidgetItem *current, QListWidgetItem *) {
    const int row = ui->listWidget->row(current);
    if (row < 0 || row == m_currentRow)
        return;
    if (!m_pages->confirmLeave(m_currentRow)) {
        const QSignalBlocker block(ui->listWidget);
        ui->listWidget->setCurrentRow(m_currentRow);
        return;
    }
    m_currentRow = row;
    ui->stackedWidget->setCurrentIndex(row);
    updateDeviceActions();
}

void MainWindow::showPage(int row) {
    ui->listWidget->setCurrentRow(row);
}

void MainWindow::readAll() {
    if (!m_pages->confirmLeave(m_currentRow))
        return;
    if (!m_prompter->question(
            this, QStringLiteral("Считывание конфигурации"),
            QStringLiteral("Считать все настройки из прибора? \nНесохраненные параметры будут утрачены")))
        return;
    // A page written on leaving goes out first: the full read empties the queue.
    afterJob([this] {
        if (!canStartJob())
            return;
        m_configuration->resetFilled();
        m_session->readAll();
    });
}

void MainWindow::writeAll() {
    writeSections({});
}

void MainWindow::writeSections(const QStringList &sections) {
    m_pages->storeModified();
    // A section that was never read, loaded or created holds zeros, not the device's values: it stays out.
    QStringList leftOut;
    const QStringList keys =
        m_pages->sectionsWithValues(sections.isEmpty() ? kd::writeAllSections() : sections, &leftOut);
    if (keys.isEmpty()) {
        m_prompter->warning(this, appTitle(),
                            QStringLiteral("Нет значений для записи: считайте конфигурацию из прибора или "
                                           "откройте файл."));
        return;
    }
    QString question =
        QStringLiteral("Перезаписать все настройки прибора? \nДействие заменит текущие настройки");
    if (!leftOut.isEmpty())
        question += QStringLiteral("\n\n") + notWrittenText(leftOut);
    if (!m_safe->confirm(QStringLiteral("Сохранение конфигурации"), question, keys))
        return;
    if (!canStartJob())
        return;
    m_safe->writeStarted(keys.size() == 1 ? m_session->writeSection(keys.constFirst())
                                          : m_session->writeSections(keys));
    for (SettingsPageBase *page : m_pages->all())
        page->refresh();
}

void MainWindow::applyCurrentPage() {
    SettingsPageBase *page = settingsPage(ui->listWidget->currentRow());
    if (!page)
        return;
    page->storeToSection();
    if (!m_safe->confirm(QStringLiteral("Запись в прибор"),
                         QStringLiteral("Загрузить настройки текущей страницы в прибор?"),
                         {page->sectionKey()}))
        return;
    if (canStartJob())
        m_safe->writeStarted(writePage(page));
}

void MainWindow::on_action_ClearMemory_triggered() {
    m_prompter->information(this, appTitle(), QStringLiteral("Очистка памяти"));
    if (canStartJob())
        m_session->clearMemory();
}

void MainWindow::on_action_ResetSettings_triggered() {
    m_prompter->information(this, appTitle(), QStringLiteral("Сброс настроек"));
    if (canStartJob())
        m_session->resetSettings();
}

bool MainWindow::canStartJob() {
    if (m_session->isReadyForJobs())
        return true;
    m_prompter->warning(
        this, appTitle(),
        m_session->state() == State::Busy
            ? QStringLiteral("Прибор занят: дождитесь окончания текущей операции.")
            : QStringLiteral("Прибор не подключен: команда не выполнена. Нажмите «Подключить»."));
    return false;
}

void MainWindow::on_action_CreateNewCfg_triggered() {
    if (!m_files->createNew())
        return;
    m_safe->configurationReplaced();
    showLoadedValues();
}

void MainWindow::on_action_OpenCfgFromFile_triggered() {
    if (!m_pages->confirmLeave(m_currentRow) || !m_files->open())
        return;
    m_safe->fileLoaded(m_files->openedPath());
    showLoadedValues();
}

void MainWindow::on_action_SaveCfgToFile_triggered() {
    m_pages->storeModified();
    m_files->save();
}

void MainWindow::showLoadedValues() {
    m_pages->showLoadedValues();
    m_statePage->updateAll();
    updateOutputsPage();
}

void MainWindow::on_action_Exit_triggered() {
    close();
}

void MainWindow::on_actionSettings_triggered() {
    SettinsDialog dialog(this);
    if (auto *serial = qobject_cast<SerialConnection *>(m_session->link()))
        dialog.setPortInUse(serial->portName());
    connect(&dialog, &SettinsDialog::settingsApplied, this, [this] {
        applySkin();
        updateTelemetryPeriod();
        m_safe->setVerify(AppSettings().verifyWrites());
    });
    dialog.exec();
    // A new connection type in the settings means a new link.
    const int stored = AppSettings().loginType() == RemoteConnection ? RemoteConnection : LocalConnection;
    if (stored != m_connectionType)
        setConnectionType(stored);
}

void MainWindow::closeEvent(QCloseEvent *event) {
    if (!m_closing) {
        if (!m_pages->confirmLeave(m_currentRow)) {
            event->ignore();
            return;
        }
        m_closing = true;
        m_telemetryTimer->stop();
        if (m_session->state() == State::Busy) {
            // Let a page written on leaving reach the device before the link goes.
            event->ignore();
            afterJob([this] { close(); });
            return;
        }
    }
    m_telemetryTimer->stop();
    m_indicators->closeWait();
    m_session->disconnectDevice();
    event->accept();
}

void MainWindow::on_needUpdFirmware() {
    if (!m_prompter->question(this, appTitle(),
                              QStringLiteral("Новая версия обновления прибора доступна, обновить?")))
        return;
    showPage(FirmwarePage);
    m_firmware->page()->loadFile(m_updates->firmwarePath());
}

void MainWindow::setDeviceControlsEnabled(bool on) {
    m_updating = !on;
    m_actions->setControlsEnabled(on);
    render();
}
