#pragma once

#include <QWidget>

#include <functional>

class DeviceUpdater;
class FirmwareImage;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

// "Обновление прошивки": the user picks a ".bsk" file, sees which firmware builds and hardware versions it
// is meant for, and starts the transfer. The page owns the loaded image (the page store) and the transfer
// controller; the main window routes received chunks to updater()->offer() and reacts to startUpdate().
class ProgramUpdatePage : public QWidget {
    Q_OBJECT
public:
    explicit ProgramUpdatePage(QWidget *parent = nullptr);

    FirmwareImage *image() const { return m_image; }
    DeviceUpdater *updater() const { return m_updater; }

    // Loads fileName into the store; on a failure shows the "Ошибка обновления" warning. Returns the code.
    int loadFile(const QString &fileName);
    // The file dialog; replaceable so that tests never block on a modal dialog.
    void setFileChooser(std::function<QString()> chooser) { m_chooser = std::move(chooser); }
    // Off: warnings are only reported by loadFailed(), no modal box (tests, scripted use).
    void setMessageBoxesEnabled(bool on) { m_boxes = on; }

    void appendProgress(const QString &line);
    void clearProgress();
    QStringList progressLines() const;
    QStringList versionLines() const;
    QString fileName() const;
    bool startEnabled() const;
    // The transfer has ended (completed or abandoned): the updater stops serving and the start control
    // is offered again if the image is still good.
    void finishUpdate();

    QPushButton *chooseButton;
    QPushButton *startButton;

public slots:
    void chooseFile();
    void on_startButton_clicked();

signals:
    void startUpdate();
    void loadFailed(const QString &title, const QString &text);

private:
    void refreshStart();
    void showCounts();

    FirmwareImage *m_image;
    DeviceUpdater *m_updater;
    QLineEdit *m_fileName;
    QPlainTextEdit *m_versions;
    QPlainTextEdit *m_progress;
    QProgressBar *m_bar;
    QLabel *m_counts;
    std::function<QString()> m_chooser;
    int m_sent = 0;
    int m_confirmed = 0;
    bool m_boxes = true;
    bool m_running = false;
};
