#include "app/FirmwareUpdateFlow.h"

#include "app/Prompter.h"
#include "app/WaitMessageDlg.h"
#include "pages/ProgramUpdatePage.h"
#include "protocol/SessionController.h"
#include "update/DeviceUpdater.h"

#include <QCoreApplication>
#include <QStackedWidget>

FirmwareUpdateFlow::FirmwareUpdateFlow(QWidget *window, QStackedWidget *stack, SessionController *session,
                                       std::shared_ptr<Prompter> prompter, std::function<QString()> lastDir)
    : QObject(window)
    , m_window(window)
    , m_session(session)
    , m_prompter(std::move(prompter))
    , m_page(new ProgramUpdatePage) {
    stack->addWidget(m_page);
    m_page->setMessageBoxesEnabled(false);
    connect(m_page, &ProgramUpdatePage::loadFailed, this, [this](const QString &title, const QString &text) {
        m_prompter->warning(m_window, title, text);
    });
    m_page->setFileChooser([this, lastDir] {
        return m_prompter->openFileName(m_window, QStringLiteral("Открыть файл прошивки"), lastDir(),
                                        QStringLiteral("Файл прошивки (*.bsk)"));
    });
    connect(m_page, &ProgramUpdatePage::startUpdate, this, &FirmwareUpdateFlow::start);
    DeviceUpdater *updater = m_page->updater();
    connect(updater, &DeviceUpdater::UpdateComplete, this, &FirmwareUpdateFlow::complete);
    // Every received chunk goes to the boot-loader channel first; it claims only its own messages.
    m_session->setFirmwareHandler([updater](const QByteArray &chunk) { return updater->offer(chunk); });
}

void FirmwareUpdateFlow::start() {
    if (!m_session->link() || m_session->state() != SessionController::State::Ready) {
        m_prompter->warning(m_window, QCoreApplication::applicationName(),
                            QStringLiteral("Прибор не подключен"));
        m_page->finishUpdate();
        return;
    }
    DeviceUpdater *updater = m_page->updater();
    updater->setConnection(m_session->link());
    if (!updater->begin() || !m_session->enterFirmwareUpdate()) {
        m_page->finishUpdate();
        return;
    }
    emit runningChanged(true);
}

void FirmwareUpdateFlow::complete() {
    m_session->finishFirmwareUpdate();
    emit runningChanged(false);
    auto *wait = new WaitMessageDlg(m_window);
    wait->setAttribute(Qt::WA_DeleteOnClose);
    connect(wait, &QDialog::finished, this, [this] {
        m_page->appendProgress(QStringLiteral("Обновление завершено."));
        m_page->finishUpdate();
        // The device starts its new firmware: connect again once it answers.
        emit restarting();
    });
    wait->open();
}
