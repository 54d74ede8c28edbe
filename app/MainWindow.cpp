#include "MainWindow.h"

#include "Prompter.h"
#include "ui_MainWindow.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QLoggingCategory>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>

namespace {
Q_LOGGING_CATEGORY(lcWindow, "tavrel.window")

const char *const AboutAddress = "https://tavrel.ru";
const char *const LinkErrorTitle = "Ошибка подключения";
} // namespace

MainWindow::MainWindow(QWidget *parent)
    : MainWindow(Options(), parent) {}

MainWindow::MainWindow(const Options &options, QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::MainWindow)
    , m_options(options)
    , m_prompter(options.prompter ? options.prompter : std::make_shared<Prompter>()) {
    QCoreApplication::setOrganizationName(QStringLiteral("Tavrel"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("tavrel.ru"));
    QCoreApplication::setApplicationName(QStringLiteral("Tavrel_micro_cfg"));

    ui->setupUi(this);
    setupStatusBar();

    m_deadlines.fill(QTime::currentTime().addSecs(30), 16);
    m_telemetryPeriod = 0;
    m_telemetryTimer = new QTimer(this);
    connect(m_telemetryTimer, &QTimer::timeout, this, &MainWindow::on_timeout);

    setupActions();
    applySkin();

    QSettings settings;
    m_connectionType =
        settings.value(QStringLiteral("loginSettings/loginType"), 0).toInt() == RemoteConnection
            ? RemoteConnection
            : LocalConnection;
    if (!m_options.portName.isEmpty())
        m_connectionType = LocalConnection;
    setConnectionTypeIndicator(false);
    setNotConnected();
    updateTelemetryPeriod();
    ui->listWidget->setCurrentRow(DevicePage);
}

MainWindow::~MainWindow() = default;

void MainWindow::applySkin() {
    QSettings settings;
    const int skin = settings.value(QStringLiteral("settings/skinName"), 0).toInt();
    QString path;
    if (skin == 0)
        path = QStringLiteral(":/css/style.css");
    else if (skin == 1)
        path = QStringLiteral(":/css/styleBlack.css");
    else
        return; // an unknown theme keeps the platform look
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QByteArray bytes = file.readAll();
    const int zero = bytes.indexOf('\0');
    if (zero >= 0)
        bytes.truncate(zero);
    qApp->setStyleSheet(QString::fromLatin1(bytes));
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
}

void MainWindow::setupActions() {
    auto *group = new QActionGroup(this);
    group->setExclusive(true);
    group->addAction(ui->action_LocalControl);
    group->addAction(ui->action_RemoteControl);

    const QString notOffered = QStringLiteral("Прибор не поддерживает эту команду");
    for (QAction *a : {ui->action_Reboot, ui->action_ReadStatistics}) {
        a->setEnabled(false);
        a->setToolTip(notOffered);
        a->setStatusTip(notOffered);
    }
    connect(ui->action_About, &QAction::triggered, this, &MainWindow::showAbout);
}

void MainWindow::updateTelemetryPeriod() {
    QSettings settings;
    if (m_connectionType == LocalConnection) {
        m_telemetryPeriod = 1000;
    } else {
        // The stored row and the period do not match the row's label; devices in the field rely on it.
        static const quint32 periods[] = {0, 1000, 2000, 3000, 4000, 5000, 50};
        const int row = settings.value(QStringLiteral("settings/telemetryTime"), 0).toInt();
        m_telemetryPeriod = (row >= 0 && row < 7) ? periods[row] : 0;
    }
    m_telemetryTimer->setInterval(int(m_telemetryPeriod));
}

void MainWindow::setConnectionTypeIndicator(bool connected) {
    if (m_connectionType == RemoteConnection) {
        m_typeButton->setToolTip(QStringLiteral("Тип соединения с прибором: Интернет соединение"));
        m_typeButton->setIcon(QIcon(connected ? QStringLiteral(":/images/remoteConnection_on.png")
                                              : QStringLiteral(":/images/remoteConnection_off.png")));
    } else {
        m_typeButton->setToolTip(QStringLiteral("Тип соединения с прибором: USB соединение"));
        m_typeButton->setIcon(QIcon(connected ? QStringLiteral(":/images/localConnection_on.png")
                                              : QStringLiteral(":/images/localConnection_off.png")));
    }
    ui->action_RemoteControl->setChecked(m_connectionType == RemoteConnection);
    ui->action_LocalControl->setChecked(m_connectionType == LocalConnection);
}

void MainWindow::setNotConnected() {
    m_stateButton->setText(QStringLiteral("Нет подключенных приборов"));
    m_stateButton->setIcon(QIcon(QStringLiteral(":/images/red_state.png")));
    ui->deviceStack->setCurrentWidget(ui->placeholderPanel);
}

void MainWindow::setDeviceName(const QString &name) {
    m_stateButton->setText(QStringLiteral("Подключен прибор: %1").arg(name));
    m_stateButton->setIcon(QIcon(QStringLiteral(":/images/green_state.png")));
}

void MainWindow::showAbout() {
    m_prompter->information(
        this, QStringLiteral("О программе"),
        QString::fromLatin1(AboutAddress) +
            QStringLiteral("\nВерсия программного обеспечения: %1").arg(QStringLiteral(TAVREL_VERSION)));
}

void MainWindow::on_needUpdFirmware() {}

void MainWindow::on_listWidget_currentItemChanged(QListWidgetItem *current, QListWidgetItem *previous) {
    Q_UNUSED(previous)
    const int row = ui->listWidget->row(current);
    if (row >= 0 && row < ui->stackedWidget->count())
        ui->stackedWidget->setCurrentIndex(row);
}

void MainWindow::on_action_CreateNewCfg_triggered() {}
void MainWindow::on_action_OpenCfgFromFile_triggered() {}
void MainWindow::on_action_SaveCfgToFile_triggered() {}

void MainWindow::on_action_Exit_triggered() {
    close();
}

void MainWindow::on_action_ClearMemory_triggered() {}
void MainWindow::on_action_ResetSettings_triggered() {}
void MainWindow::on_actionSettings_triggered() {}

void MainWindow::on_timeout() {
    if (!m_telemetryTimer->isActive() || m_telemetryPeriod == 0)
        return;
}

void MainWindow::closeEvent(QCloseEvent *event) {
    event->accept();
}
