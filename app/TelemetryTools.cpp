#include "app/TelemetryTools.h"

#include "app/AppSettings.h"
#include "app/Prompter.h"

#include "pages/TelemetryChartsPage.h"
#include "support/SupportBundle.h"
#include "support/TelemetryRoundTracker.h"
#include "support/TelemetrySeries.h"

#include "Devices/ControlInfoConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/UNPProtocol.h"

#include <QAction>
#include <QDateTime>
#include <QDir>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QSettings>
#include <QStackedWidget>
#include <QTimer>

TelemetryTools::TelemetryTools(QMainWindow *window, VantorConfiguration *configuration, QTimer *pollTimer,
                               Prompter *prompter)
    : QObject(window)
    , m_window(window)
    , m_configuration(configuration)
    , m_prompter(prompter)
    , m_history(TelemetrySeries::columns().size()) {
    m_rounds = new TelemetryRoundTracker(proto::UNPProtocol::telemetrySubCodes().last(), this);
    connect(pollTimer, &QTimer::timeout, m_rounds, &TelemetryRoundTracker::pollStarted);
    connect(m_rounds, &TelemetryRoundTracker::roundComplete, this,
            [this] { addRound(QDateTime::currentMSecsSinceEpoch()); });

    // The page list and the page stack go row for row; the charts take the row after the last page.
    auto *list = window->findChild<QListWidget *>(QStringLiteral("listWidget"));
    auto *stack = window->findChild<QStackedWidget *>(QStringLiteral("stackedWidget"));
    m_page = new TelemetryChartsPage(&m_history);
    if (list && stack) {
        list->addItem(QStringLiteral("Графики"));
        stack->addWidget(m_page);
    }

    m_record = new QAction(QStringLiteral("Записать телеметрию в файл…"), this);
    m_record->setObjectName(QStringLiteral("action_RecordTelemetry"));
    m_record->setCheckable(true);
    connect(m_record, &QAction::toggled, this, &TelemetryTools::onRecordToggled);
    m_bundle = new QAction(QStringLiteral("Сохранить отчёт для поддержки…"), this);
    m_bundle->setObjectName(QStringLiteral("action_SupportBundle"));
    connect(m_bundle, &QAction::triggered, this, &TelemetryTools::saveBundle);
    if (auto *menu = window->findChild<QMenu *>(QStringLiteral("menuDevice"))) {
        menu->addSeparator();
        menu->addAction(m_record);
        menu->addAction(m_bundle);
    }
}

TelemetryTools::~TelemetryTools() {
    if (m_page && !m_page->parent())
        delete m_page.data(); // the window had no page stack to take it
}

void TelemetryTools::telemetryDecoded(int kind) {
    m_rounds->kindArrived(kind);
}

void TelemetryTools::addRound(qint64 timeMs) {
    const kd::ControlInfoConfiguration *state = m_configuration->controlInfo();
    if (!state)
        return;
    const QVector<double> values = TelemetrySeries::values(*state);
    m_history.add(timeMs, values);
    if (m_csv.isOpen() && !m_csv.writeRound(QDateTime::fromMSecsSinceEpoch(timeMs), values)) {
        const QString path = m_csv.path();
        m_record->setChecked(false);
        m_prompter->warning(
            m_window, QStringLiteral("Запись телеметрии"),
            QStringLiteral("Не удалось записать файл %1").arg(QDir::toNativeSeparators(path)));
    }
    m_page->refresh();
}

void TelemetryTools::onRecordToggled(bool on) {
    if (!on) {
        stopRecording();
        return;
    }
    const QString name = QStringLiteral("telemetry-%1.csv")
                             .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss")));
    const QString path =
        m_prompter->saveFileName(m_window, QStringLiteral("Записать телеметрию в файл"),
                                 QDir::current().filePath(name), QStringLiteral("Таблица CSV (*.csv)"));
    QString error;
    if (path.isEmpty() || !m_csv.open(path, &error)) {
        const QSignalBlocker block(m_record);
        m_record->setChecked(false);
        if (!path.isEmpty())
            m_prompter->warning(
                m_window, QStringLiteral("Запись телеметрии"),
                QStringLiteral("Не удалось создать файл %1: %2").arg(QDir::toNativeSeparators(path), error));
        return;
    }
    m_record->setText(QStringLiteral("Остановить запись телеметрии"));
}

void TelemetryTools::stopRecording() {
    m_record->setText(QStringLiteral("Записать телеметрию в файл…"));
    const QString path = m_csv.path();
    QString error;
    if (!m_csv.close(&error))
        m_prompter->warning(
            m_window, QStringLiteral("Запись телеметрии"),
            QStringLiteral("Не удалось сохранить файл %1: %2").arg(QDir::toNativeSeparators(path), error));
}

void TelemetryTools::saveBundle() {
    const QString name = QStringLiteral("tavrel-report-%1.zip")
                             .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss")));
    const QString path =
        m_prompter->saveFileName(m_window, QStringLiteral("Сохранить отчёт для поддержки"),
                                 QDir::current().filePath(name), QStringLiteral("Архив ZIP (*.zip)"));
    if (path.isEmpty())
        return;
    QSettings settings(QSettings::NativeFormat, QSettings::UserScope,
                       QString::fromLatin1(AppSettings::Organisation),
                       QString::fromLatin1(AppSettings::Application));
    QString error;
    if (!SupportBundle::write(
            path, SupportBundle::collect(*m_configuration, QStringLiteral("tavrel-cfg"), settings, {}),
            &error)) {
        m_prompter->warning(
            m_window, QStringLiteral("Отчёт для поддержки"),
            QStringLiteral("Не удалось записать файл %1: %2").arg(QDir::toNativeSeparators(path), error));
        return;
    }
    m_prompter->information(m_window, QStringLiteral("Отчёт для поддержки"),
                            QStringLiteral("Отчёт сохранён в файл %1").arg(QDir::toNativeSeparators(path)));
}
