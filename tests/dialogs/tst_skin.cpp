#include "Devices/VantorConfiguration.h"
#include "app/AppSettings.h"
#include "app/Skin.h"
#include "pages/SettingsStatePage.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QMainWindow>
#include <QMovie>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

namespace {
// The pixels of an image, `margin` in from its edges, whose brightness differs by more than `by` from
// `background`'s.
int differing(const QImage &image, int background, int by, int margin = 0) {
    int n = 0;
    for (int y = margin; y < image.height() - margin; ++y) {
        for (int x = margin; x < image.width() - margin; ++x)
            n += qAbs(qGray(image.pixel(x, y)) - background) > by ? 1 : 0;
    }
    return n;
}
} // namespace

class tst_Skin : public QObject {
    Q_OBJECT

private slots:
    void init() {
        qApp->setStyleSheet(QString());
        QSettings(QString::fromLatin1(AppSettings::Organisation),
                  QString::fromLatin1(AppSettings::Application))
            .clear();
    }

    void sheetTextStopsAtFirstZeroByte_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("no zero") << QByteArray("QWidget { }") << "QWidget { }";
        QTest::newRow("zero inside") << QByteArray("QLabel {}\0QWidget {}", 20) << "QLabel {}";
        QTest::newRow("zero first") << QByteArray("\0abc", 4) << QString();
        QTest::newRow("latin-1 byte") << QByteArray("/* \xe9 */") << QStringLiteral("/* \u00e9 */");
    }

    void sheetTextStopsAtFirstZeroByte() {
        QFETCH(QByteArray, bytes);
        QTEST(Skin::sheetText(bytes), "text");
    }

    void knownSkinSetsItsSheetOtherLeavesNoSheetAndNoMessage_data() {
        QTest::addColumn<int>("skin");
        QTest::addColumn<QString>("resource");
        QTest::newRow("0 light") << 0 << ":/css/style.css";
        QTest::newRow("1 dark") << 1 << ":/css/styleBlack.css";
        QTest::newRow("2 none") << 2 << QString();
        QTest::newRow("7 none") << 7 << QString();
        QTest::newRow("-1 none") << -1 << QString();
    }

    void knownSkinSetsItsSheetOtherLeavesNoSheetAndNoMessage() {
        QFETCH(int, skin);
        QFETCH(QString, resource);
        QCOMPARE(Skin::resourceFor(skin), resource);
        QCOMPARE(applySkin(qApp, skin), !resource.isEmpty());
        QCoreApplication::processEvents();
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
        if (resource.isEmpty()) {
            QVERIFY(qApp->styleSheet().isEmpty());
            return;
        }
        QFile file(resource);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray sheet = file.readAll();
        QCOMPARE(qApp->styleSheet(), QString::fromLatin1(sheet));
        QVERIFY(sheet.contains("QWidget[modified=\"true\"]"));
        QVERIFY(sheet.contains("[invalid=\"true\"]"));
        QCOMPARE(sheet.count('{'), sheet.count('}'));

        // Every image the sheet draws with is compiled in.
        const QRegularExpression url(QStringLiteral("url\\((:/[^)]+)\\)"));
        int images = 0;
        for (auto it = url.globalMatch(QString::fromLatin1(sheet)); it.hasNext(); ++images) {
            const QString name = it.next().captured(1);
            QVERIFY2(!QImage(name).isNull(), qPrintable(name));
        }
        QVERIFY(images >= 3);

        // The same sheet comes from the stored choice, replacing the other one.
        QVERIFY(applySkin(qApp, 1 - skin));
        AppSettings().setSkinName(skin);
        // AppSettings' own store is the program's, where earlier versions kept it.
        QCOMPARE(QSettings(QStringLiteral("Tavrel"), QStringLiteral("Tavrel_micro_cfg"))
                     .value(QStringLiteral("settings/skinName"))
                     .toInt(),
                 skin);
        QVERIFY(applyStoredSkin(qApp) && qApp->styleSheet() == QString::fromLatin1(sheet));
    }

    void everyIconAndSpinnerIsCompiledIn() {
        const QString names = QStringLiteral(
            "localConnection remoteConnection localConnection_on localConnection_off remoteConnection_on "
            "remoteConnection_off green_state red_state cloud_up_white cloud_plus cloud_close satellite "
            "satellite_white light_bulb light_bulb_white sim_card_green sim_card_inserted sim_card "
            "sim_card_active app");
        for (const QString &n : names.split(QLatin1Char(' '))) {
            const QImage image(QStringLiteral(":/images/%1.png").arg(n));
            QVERIFY2(image.width() >= 32 && image.hasAlphaChannel(), qPrintable(n));
        }
        QMovie movie(QStringLiteral(":/images/loading.gif"));
        QVERIFY(movie.frameCount() > 1);
    }

    void toolbarIconStandsOutFromItsButton_data() {
        QTest::addColumn<int>("skin");
        QTest::addColumn<QString>("icon");
        for (const char *icon : {"settings", "firmware", "file_new"}) {
            QTest::addRow("light %s", icon)
                << int(Skin::Light) << QStringLiteral(":/images/%1.png").arg(icon);
            QTest::addRow("dark %s", icon) << int(Skin::Dark) << QStringLiteral(":/images/%1.png").arg(icon);
        }
    }

    // The slate toolbar icons are drawn once for both themes: under each sheet much of an icon must differ
    // clearly in brightness from the button behind it.
    void toolbarIconStandsOutFromItsButton() {
        QFETCH(int, skin);
        QFETCH(QString, icon);
        QVERIFY(applySkin(qApp, skin));
        QMainWindow window;
        QToolBar *bar = window.addToolBar(QStringLiteral("bar"));
        QAction *action = bar->addAction(QIcon(icon), QStringLiteral("action"));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto *button = qobject_cast<QToolButton *>(bar->widgetForAction(action));
        QVERIFY(button);
        // The button is transparent where the toolbar shows through: take it from the whole window.
        const QRect area(button->mapTo(&window, QPoint(0, 0)), button->size());
        const QImage image = window.grab(area).toImage();
        const int background = qGray(image.pixel(2, image.height() / 2));
        // Inside the border: of the pixels the icon changes at all, a good part must differ clearly (a
        // translucent fill may stay close to the background).
        const int drawn = differing(image, background, 8, 4);
        const int clear = differing(image, background, 60, 4);
        QVERIFY(drawn > 0);
        const double share = double(clear) / drawn;
        QVERIFY2(share >= 0.35, qPrintable(QStringLiteral("%1 of the icon stands out").arg(share)));
    }

    void inactiveStateIconStandsOut_data() {
        QTest::addColumn<QString>("icon"); // an icon label, or "fix" for the third receiver's button
        QTest::addColumn<int>("skin");
        QTest::addColumn<QColor>("background"); // of the state page's group boxes under that skin
        for (const char *icon : {"ignitionIcon", "fix"}) {
            QTest::addRow("%s, light", icon) << icon << int(Skin::Light) << QColor(Qt::white);
            QTest::addRow("%s, dark", icon) << icon << int(Skin::Dark) << QColor(0x2c, 0x34, 0x3c);
        }
    }

    // The state page's "off" pictures are white outlines: on a light page they must not vanish.
    void inactiveStateIconStandsOut() {
        QFETCH(QString, icon);
        QFETCH(int, skin);
        QFETCH(QColor, background);
        QVERIFY(applySkin(qApp, skin));
        VantorConfiguration cfg;
        SettingsStatePage page(&cfg);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        const bool fix = icon == QLatin1String("fix");
        QCOMPARE(fix ? page.fixButton(2)->property("iconResource").toString() : page.iconResource(icon),
                 fix ? QStringLiteral(":/images/satellite_white.png")
                     : QStringLiteral(":/images/light_bulb_white.png"));
        const auto visible = [&] {
            auto *label = page.findChild<QLabel *>(icon);
            const QPixmap pixmap = fix     ? page.fixButton(2)->icon().pixmap(20, 20)
                                   : label ? label->pixmap(Qt::ReturnByValue)
                                           : QPixmap();
            QImage image(pixmap.size(), QImage::Format_ARGB32);
            image.fill(background);
            QPainter(&image).drawPixmap(0, 0, pixmap);
            return differing(image, qGray(background.rgb()), 60);
        };
        // The icons are drawn again once the new colours have reached every label.
        QTRY_VERIFY2(visible() >= 20, qPrintable(QString::number(visible())));
    }
};

QTEST_MAIN(tst_Skin)
#include "tst_skin.moc"
