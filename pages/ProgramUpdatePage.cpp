#include "pages/ProgramUpdatePage.h"

#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"
#include "update/UpdateChannel.h"

#include <QFileDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

ProgramUpdatePage::ProgramUpdatePage(QWidget *parent)
    : QWidget(parent)
    , m_image(new FirmwareImage(this))
    , m_updater(new DeviceUpdater(this))
    , m_fileName(new QLineEdit(this))
    , m_versions(new QPlainTextEdit(this))
    , m_progress(new QPlainTextEdit(this))
    , m_bar(new QProgressBar(this))
    , m_counts(new QLabel(this)) {
    setObjectName(QStringLiteral("ProgramUpdatePage"));
    m_updater->setImage(m_image);
    m_chooser = [this] {
        return QFileDialog::getOpenFileName(this, QStringLiteral("Открыть файл прошивки"), QString(),
                                            QStringLiteral("*.bsk"));
    };

    chooseButton = new QPushButton(QStringLiteral("Выбрать файл..."), this);
    chooseButton->setObjectName(QStringLiteral("chooseButton"));
    startButton = new QPushButton(QStringLiteral("Обновить прибор"), this);
    startButton->setObjectName(QStringLiteral("startButton"));
    m_fileName->setReadOnly(true);
    m_fileName->setPlaceholderText(QStringLiteral("Файл прошивки (*.bsk)"));
    m_versions->setReadOnly(true);
    m_progress->setReadOnly(true);
    m_bar->setRange(0, UpdateChannel::StreamEnd);
    m_bar->setValue(0);
    m_bar->setFormat(QStringLiteral("%v из %m"));

    auto *fileRow = new QHBoxLayout;
    fileRow->addWidget(m_fileName, 1);
    fileRow->addWidget(chooseButton);
    auto *versionsBox = new QGroupBox(QStringLiteral("Совместимые версии прошивки и оборудования"), this);
    auto *versionsLayout = new QVBoxLayout(versionsBox);
    versionsLayout->addWidget(m_versions);
    auto *progressBox = new QGroupBox(QStringLiteral("Ход обновления"), this);
    auto *progressLayout = new QVBoxLayout(progressBox);
    progressLayout->addWidget(m_bar);
    progressLayout->addWidget(m_counts);
    progressLayout->addWidget(m_progress, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fileRow);
    layout->addWidget(versionsBox);
    layout->addWidget(startButton, 0, Qt::AlignLeft);
    layout->addWidget(progressBox, 1);

    connect(m_image, &FirmwareImage::versionsCleared, m_versions, &QPlainTextEdit::clear);
    connect(m_image, &FirmwareImage::versionLineAdded, m_versions, &QPlainTextEdit::appendPlainText);
    connect(m_image, &FirmwareImage::fileNameAccepted, m_fileName, &QLineEdit::setText);
    connect(m_updater, &DeviceUpdater::progressLine, this, &ProgramUpdatePage::appendProgress);
    connect(m_updater, &DeviceUpdater::pageSent, this, [this](int page) {
        m_sent = qMax(m_sent, page + 1);
        showCounts();
    });
    connect(m_updater, &DeviceUpdater::pageConfirmed, this, [this](int page) {
        m_confirmed = qMax(m_confirmed, page + 1);
        showCounts();
    });
    // The device is not told (it simply gets no page), but the user must learn why nothing moves.
    connect(m_updater, &DeviceUpdater::pageRefused, this, [this] {
        appendProgress(QStringLiteral("Прошивка не предназначена для этого прибора, обновление не начато."));
    });
    connect(chooseButton, &QPushButton::clicked, this, &ProgramUpdatePage::chooseFile);
    connect(startButton, &QPushButton::clicked, this, &ProgramUpdatePage::on_startButton_clicked);
    showCounts();
    refreshStart();
}

int ProgramUpdatePage::loadFile(const QString &fileName) {
    const int code = m_image->load(fileName);
    if (code == FirmwareImage::Loaded) {
        clearProgress();
        appendProgress(QStringLiteral("Файл обновления загружен, ожидание старта обновления."));
    } else {
        const QString title = QStringLiteral("Ошибка обновления");
        const QString text = FirmwareImage::failureText(fileName, code);
        emit loadFailed(title, text);
        if (m_boxes)
            QMessageBox::warning(this, title, text);
    }
    refreshStart();
    return code;
}

void ProgramUpdatePage::chooseFile() {
    const QString name = m_chooser ? m_chooser() : QString();
    if (name.isEmpty())
        return;
    m_fileName->setText(name);
    loadFile(name);
}

void ProgramUpdatePage::on_startButton_clicked() {
    clearProgress();
    m_progress->show();
    if (m_fileName->text().isEmpty()) {
        chooseFile();
        if (m_fileName->text().isEmpty())
            return;
    }
    // Only an image whose last load succeeded may reach the device.
    if (!m_updater->begin())
        return;
    m_running = true;
    m_sent = 0;
    m_confirmed = 0;
    showCounts();
    refreshStart();
    appendProgress(QStringLiteral("Загрузка обновления в прибор."));
    emit startUpdate();
}

void ProgramUpdatePage::finishUpdate() {
    m_updater->stop();
    m_running = false;
    refreshStart();
}

void ProgramUpdatePage::appendProgress(const QString &line) {
    m_progress->appendPlainText(line);
}

void ProgramUpdatePage::clearProgress() {
    m_progress->clear();
}

QStringList ProgramUpdatePage::progressLines() const {
    const QString text = m_progress->toPlainText();
    return text.isEmpty() ? QStringList() : text.split(QLatin1Char('\n'));
}

QStringList ProgramUpdatePage::versionLines() const {
    const QString text = m_versions->toPlainText();
    return text.isEmpty() ? QStringList() : text.split(QLatin1Char('\n'));
}

QString ProgramUpdatePage::fileName() const {
    return m_fileName->text();
}

bool ProgramUpdatePage::startEnabled() const {
    return startButton->isEnabled();
}

void ProgramUpdatePage::refreshStart() {
    startButton->setEnabled(!m_running && m_image->isLoaded());
}

void ProgramUpdatePage::showCounts() {
    m_bar->setValue(m_confirmed);
    m_counts->setText(
        QStringLiteral("Отправлено страниц: %1, подтверждено: %2").arg(m_sent).arg(m_confirmed));
}
