#include "Devices/VantorConfiguration.h"
#include "app/AppSettings.h"
#include "app/DeviceLog.h"
#include "app/DialogScreenshots.h"
#include "app/MainWindow.h"
#include "app/PasswordDialog.h"
#include "app/Prompter.h"
#include "app/QtTranslations.h"
#include "app/Skin.h"
#include "pages/SettingsStatePage.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QScrollArea>
#include <QTabWidget>
#include <QTextStream>
#include <QTimer>

#include <functional>

namespace {

// Screenshot runs answer every question with Yes and print the messages instead of showing boxes.
class ConsolePrompter : public Prompter {
public:
    bool question(QWidget *, const QString &title, const QString &text) override {
        say(QStringLiteral("question"), title, text);
        return true;
    }
    void information(QWidget *, const QString &title, const QString &text) override {
        say(QStringLiteral("information"), title, text);
    }
    void warning(QWidget *, const QString &title, const QString &text) override {
        say(QStringLiteral("warning"), title, text);
        lastWarning = {title, text};
    }
    void critical(QWidget *, const QString &title, const QString &text) override {
        say(QStringLiteral("critical"), title, text);
    }

    // The last warning, shown again as a box that does not wait for the picture of the lost connection.
    QPair<QString, QString> lastWarning;

private:
    static void say(const QString &kind, const QString &title, const QString &text) {
        QTextStream(stderr) << kind << ": " << title << ": " << QString(text).replace('\n', ' ') << '\n';
    }
};

// Walks the window through its states and saves a picture of the screen at each: not connected,
// the device page with a fix, a page before anything was read, every settings page after a full read,
// and the dark theme. Scene "password": the password dialog of a tracker that asks for one; scene
// "lost": the window after the tracker hung up.
class ScreenshotTour : public QObject {
public:
    ScreenshotTour(MainWindow *window, const QString &folder, bool withDevice, const QString &scene,
                   ConsolePrompter *prompter)
        : QObject(window)
        , m_window(window)
        , m_folder(folder)
        , m_withDevice(withDevice)
        , m_scene(scene)
        , m_prompter(prompter) {
        QDir().mkpath(folder);
    }

    void start() {
        if (m_scene == QLatin1String("password")) {
            // The dialog runs its own loop; the picture is taken inside it, then the password typed.
            after(2500, [this] {
                auto *dialog = qobject_cast<PasswordDialog *>(QApplication::activeModalWidget());
                shoot(QStringLiteral("25-password-dialog"));
                if (dialog) {
                    dialog->passwordEdit()->setText(QStringLiteral("1234"));
                    dialog->accept();
                }
                waitFor([this] { return m_window->isIdentified(); }, 10000, [] { qApp->quit(); });
            });
            return;
        }
        if (m_scene == QLatin1String("lost")) {
            waitFor([this] { return m_window->isIdentified(); }, 10000,
                    [this] {
                        waitFor([this] { return !m_window->isIdentified(); }, 30000,
                                [this] {
                                    auto *box = new QMessageBox(
                                        QMessageBox::Warning, m_prompter->lastWarning.first,
                                        m_prompter->lastWarning.second, QMessageBox::Ok, m_window);
                                    box->open();
                                    after(1500, [this] {
                                        shoot(QStringLiteral("26-lost-connection"));
                                        qApp->quit();
                                    });
                                });
                    });
            return;
        }
        if (!m_withDevice) {
            after(1500, [this] {
                shoot(QStringLiteral("01-not-connected"));
                qApp->quit();
            });
            return;
        }
        waitFor(
            [this] {
                const QString fix = m_window->statePage()->fixButton(0)->text();
                return m_window->isIdentified() &&
                       (fix.startsWith(QLatin1String("2D")) || fix.startsWith(QLatin1String("3D")));
            },
            60000,
            [this] {
                after(1500, [this] {
                    shoot(QStringLiteral("02-connected-device-page"));
                    // The whole telemetry page, below the fold included.
                    if (auto *scroll = m_window->statePage()->findChild<QScrollArea *>())
                        scroll->widget()->grab().save(
                            QDir(m_folder).filePath(QStringLiteral("02-device-page-full.png")));
                    m_window->showPage(MainWindow::SystemPage);
                    after(700, [this] { shoot(QStringLiteral("24-unread-page")); });
                    after(900, [this] { m_window->showPage(MainWindow::DevicePage); });
                    after(1000, [this] { readEverything(); });
                });
            });
    }

private:
    void readEverything() {
        m_window->readAll();
        waitFor(
            [this] {
                for (const char *key :
                     {"SystemConfiguration", "NavConfiguration", "GSMConfiguration", "ServerConfiguration",
                      "agcConfiguration", "LogicConfiguration", "FuelConfiguration", "OutConfiguration"}) {
                    if (!m_window->configuration()->isFilled(QString::fromLatin1(key)))
                        return false;
                }
                return true;
            },
            30000, [this] { nextPage(MainWindow::SystemPage); });
    }

    void nextPage(int row) {
        if (row == MainWindow::PageCount) {
            m_window->showPage(MainWindow::DevicePage);
            showConfigurationDialogs(
                m_window, *m_window->configuration(),
                [this](QWidget *dialog, const QString &name) { shoot(name, dialog); },
                [this] { nextPage(MainWindow::PageCount + 1); });
            return;
        }
        if (row > MainWindow::PageCount) {
            applySkin(qApp, Skin::Dark);
            m_window->showPage(MainWindow::DevicePage);
            after(1500, [this] {
                shoot(QStringLiteral("20-dark-theme"));
                qApp->quit();
            });
            return;
        }
        m_window->showPage(row);
        after(700, [this, row] {
            auto *list = m_window->findChild<QListWidget *>(QStringLiteral("listWidget"));
            if (list->currentRow() == row)
                shoot(QStringLiteral("%1-%2")
                          .arg(row + 2, 2, 10, QLatin1Char('0'))
                          .arg(QLatin1String(slug(row))));
            auto *tabs = m_window->findChild<QTabWidget *>(QStringLiteral("dataTransferTabs"));
            if (row != MainWindow::DataTransferPage || !tabs || tabs->count() < 2) {
                nextPage(row + 1);
                return;
            }
            // The GSM settings sit on the second tab of the same row.
            tabs->setCurrentIndex(1);
            after(700, [this, row, tabs] {
                shoot(QStringLiteral("%1-data-transfer-gsm-tab").arg(row + 2, 2, 10, QLatin1Char('0')));
                tabs->setCurrentIndex(0);
                nextPage(row + 1);
            });
        });
    }

    static const char *slug(int row) {
        static const char *const names[] = {"device",
                                            "system-page",
                                            "navigation-page",
                                            "data-transfer-page",
                                            "analog-inputs-page",
                                            "logic-inputs-page",
                                            "fuel-page",
                                            "outputs-page",
                                            "firmware-update-page"};
        return names[row];
    }

    void after(int ms, std::function<void()> f) { QTimer::singleShot(ms, this, std::move(f)); }

    void waitFor(std::function<bool()> ready, int timeoutMs, std::function<void()> then) {
        auto *timer = new QTimer(this);
        auto *clock = new QElapsedTimer;
        clock->start();
        timer->start(100);
        connect(timer, &QTimer::timeout, this, [=] {
            const bool done = ready();
            if (!done && clock->elapsed() < timeoutMs)
                return;
            if (!done)
                QTextStream(stderr) << "screenshots: gave up waiting, taking the picture anyway\n";
            timer->deleteLater();
            delete clock;
            then();
        });
    }

    void shoot(const QString &name, QWidget *shown = nullptr) {
        const QString path = QDir(m_folder).filePath(name + QStringLiteral(".png"));
        // The whole virtual screen, as the user sees it; without ImageMagick only the window.
        if (QFileInfo(QStringLiteral("/usr/bin/import")).isExecutable() &&
            QProcess::execute(QStringLiteral("/usr/bin/import"),
                              {QStringLiteral("-window"), QStringLiteral("root"), path}) == 0) {
            QTextStream(stdout) << path << '\n';
            return;
        }
        (shown ? shown : m_window)->grab().save(path);
        QTextStream(stdout) << path << '\n';
    }

    MainWindow *m_window;
    QString m_folder;
    bool m_withDevice;
    QString m_scene;
    ConsolePrompter *m_prompter;
};

} // namespace

// tavrel-cfg [--port PATH] [--no-login] [--no-update-check] [--screenshots DIR]
//   --port PATH        open this serial port at once (a device path or the virtual device's terminal)
//   --no-login         skip the start-up connection dialog and use the stored connection type
//   --no-update-check  do not download the device firmware image at start
//   --screenshots DIR  walk through the window's states, save a picture of each into DIR, then quit
//                      (implies --no-login and --no-update-check; every question is answered Yes)
//   --scene NAME       with --screenshots: only the password dialog ("password") or the lost
//                      connection ("lost")
int main(int argc, char *argv[]) {
    // The console's code page and stream encoding are set up before anything is logged.
    DeviceLog::install(AppSettings().deviceLogToFile());

    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QString::fromLatin1(AppSettings::Organisation));
    QCoreApplication::setOrganizationDomain(QStringLiteral("tavrel.ru"));
    QCoreApplication::setApplicationName(QString::fromLatin1(AppSettings::Application));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVREL_VERSION));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/app.png")));
    installQtTranslations(app);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Конфигуратор прибора"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption port(QStringLiteral("port"), QStringLiteral("Open this serial port at once."),
                                  QStringLiteral("PATH"));
    const QCommandLineOption noLogin(QStringLiteral("no-login"),
                                     QStringLiteral("Skip the start-up connection dialog."));
    const QCommandLineOption noUpdateCheck(QStringLiteral("no-update-check"),
                                           QStringLiteral("Do not download the device firmware at start."));
    const QCommandLineOption screenshots(
        QStringLiteral("screenshots"),
        QStringLiteral("Save pictures of the window's states into DIR, then quit."), QStringLiteral("DIR"));
    const QCommandLineOption scene(QStringLiteral("scene"),
                                   QStringLiteral("With --screenshots: password or lost only."),
                                   QStringLiteral("NAME"));
    parser.addOptions({port, noLogin, noUpdateCheck, screenshots, scene});
    parser.process(app);

    MainWindow::Options options;
    options.portName = parser.value(port);
    options.updateCheckAtStart = !parser.isSet(noUpdateCheck);

    if (parser.isSet(screenshots)) {
        options.updateCheckAtStart = false;
        auto prompter = std::make_shared<ConsolePrompter>();
        options.prompter = prompter;
        MainWindow window(options);
        window.resize(1280, 800);
        window.show();
        auto *tour = new ScreenshotTour(&window, parser.value(screenshots), !options.portName.isEmpty(),
                                        parser.value(scene), prompter.get());
        tour->start();
        return app.exec();
    }

    std::function<int(QDialog *)> runLogin;
    if (!parser.isSet(noLogin))
        runLogin = [](QDialog *dialog) { return dialog->exec(); };
    return MainWindow::run(options, runLogin);
}
