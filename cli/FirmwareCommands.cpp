#include "cli/FirmwareCommands.h"

#include "protocol/SessionController.h"
#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"
#include "update/UpdateChannel.h"

#include <QTextStream>
#include <QTimer>

#include <cstdio>
#include <unistd.h>

int fwInfoCommand(const QString &file, QTextStream &out, QTextStream &err) {
    FirmwareImage image;
    const FirmwareImage::LoadResult result = image.load(file);
    if (result != FirmwareImage::Loaded) {
        err << FirmwareImage::failureText(file, result) << '\n';
        err.flush();
        return FlashCommand::ExitBadFile + result;
    }
    out << "pages " << image.pageCount() << '\n';
    for (quint16 build : image.builds())
        out << "build " << UpdateChannel::buildText(image.major(), image.middle(), build) << '\n';
    for (quint16 hardware : image.hardwareVersions())
        out << "hardware " << UpdateChannel::hardwareText(hardware) << '\n';
    out.flush();
    return FlashCommand::ExitOk;
}

FlashCommand::FlashCommand(SessionController *session, const QString &file, int timeoutSeconds,
                           QTextStream &err, QObject *parent)
    : QObject(parent)
    , m_session(session)
    , m_file(file)
    , m_err(err)
    , m_image(new FirmwareImage(this))
    , m_updater(new DeviceUpdater(this))
    , m_quiet(new QTimer(this))
    , m_progressBar(isatty(fileno(stderr))) {
    m_quiet->setSingleShot(true);
    m_quiet->setInterval(qMax(1, timeoutSeconds) * 1000);
    connect(m_quiet, &QTimer::timeout, this, [this] {
        m_err << QStringLiteral("Прибор перестал запрашивать страницы прошивки") << '\n';
        finish(ExitFailure);
    });
    m_updater->setImage(m_image);
    connect(m_updater, &DeviceUpdater::pageRequested, this, &FlashCommand::deviceSpoke);
    connect(m_updater, &DeviceUpdater::pageError, this, &FlashCommand::deviceSpoke);
    connect(m_updater, &DeviceUpdater::pageConfirmed, this, [this](int page) {
        m_confirmed = qMax(m_confirmed, page + 1);
        deviceSpoke();
    });
    connect(m_updater, &DeviceUpdater::pageSent, this, [this](int page) {
        m_sent = qMax(m_sent, page + 1);
        drawProgress();
    });
    connect(m_updater, &DeviceUpdater::pageRefused, this, [this] {
        m_err << QStringLiteral("Прошивка не предназначена для этого прибора: страница 0 не отправлена")
              << '\n';
        finish(ExitFailure);
    });
    connect(m_updater, &DeviceUpdater::UpdateComplete, this, [this] {
        m_confirmed = UpdateChannel::StreamEnd;
        drawProgress();
        if (m_progressBar)
            m_err << '\n';
        m_err << QStringLiteral("Обновление завершено.") << '\n';
        finish(ExitOk);
    });
}

FlashCommand::~FlashCommand() {
    if (m_session)
        m_session->setFirmwareHandler(nullptr);
}

void FlashCommand::setQuietTimeoutMs(int ms) {
    m_quiet->setInterval(qMax(1, ms));
}

void FlashCommand::setPageInterval(int ms) {
    m_updater->setInterval(ms);
}

void FlashCommand::start() {
    const FirmwareImage::LoadResult result = m_image->load(m_file);
    if (result != FirmwareImage::Loaded) {
        m_err << FirmwareImage::failureText(m_file, result) << '\n';
        QTimer::singleShot(0, this, [this, result] { finish(ExitBadFile + result); });
        return;
    }
    if (!m_session || !m_session->link()) {
        m_err << QStringLiteral("Нет подключенных приборов") << '\n';
        QTimer::singleShot(0, this, [this] { finish(ExitFailure); });
        return;
    }
    m_updater->setConnection(m_session->link());
    m_updater->begin();
    QPointer<DeviceUpdater> updater = m_updater;
    m_session->setFirmwareHandler(
        [updater](const QByteArray &chunk) { return updater && updater->offer(chunk); });
    m_err << QStringLiteral("Загрузка обновления в прибор.") << '\n';
    m_err.flush();
    m_session->enterFirmwareUpdate();
    m_quiet->start();
}

void FlashCommand::deviceSpoke() {
    if (!m_done)
        m_quiet->start();
    drawProgress();
}

void FlashCommand::drawProgress() {
    if (!m_progressBar)
        return;
    constexpr int Width = 40;
    const int total = UpdateChannel::StreamEnd;
    const int filled = m_confirmed * Width / total;
    const int sentMark = qMax(filled, m_sent * Width / total);
    const QString bar = QString(filled, QLatin1Char('#')) + QString(sentMark - filled, QLatin1Char('-')) +
                        QString(Width - sentMark, QLatin1Char(' '));
    m_err << "\r[" << bar << "] " << m_confirmed << '/' << total;
    m_err.flush();
}

void FlashCommand::finish(int exitCode) {
    if (m_done)
        return;
    m_done = true;
    m_quiet->stop();
    m_updater->stop();
    if (m_session) {
        m_session->setFirmwareHandler(nullptr);
        m_session->finishFirmwareUpdate();
    }
    m_err.flush();
    emit finished(exitCode);
}
