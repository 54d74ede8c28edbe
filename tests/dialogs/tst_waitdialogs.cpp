#include "app/ConnectionToServerDialog.h"
#include "app/ConnectionWaitDlg.h"
#include "app/PopUp.h"
#include "app/WaitMessageDlg.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QMovie>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

// The boxes the window shows while it waits for a device (they end only as the user or the device decides)
// and the notification that fades in and out by itself.
class tst_WaitDialogs : public QObject {
    Q_OBJECT

private slots:
    void cancelSignalledOnlyWhenUserCancels_data() {
        QTest::addColumn<int>("how");
        QTest::addColumn<int>("cancelled");
        QTest::newRow("cancel button") << 0 << 1;
        QTest::newRow("escape") << 1 << 1;
        QTest::newRow("device answered") << 2 << 0;
    }

    void cancelSignalledOnlyWhenUserCancels() {
        QFETCH(int, how);
        ConnectionWaitDlg dialog;
        QSignalSpy cancelled(&dialog, &ConnectionWaitDlg::connectionWaitCancelled);
        dialog.show();
        if (how == 0)
            dialog.cancelButton()->click();
        else if (how == 1)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            dialog.accept();
        QTEST(cancelled.count(), "cancelled");
        QVERIFY(!dialog.isVisible());
    }

    void spinnerRunsOnlyWhileShown() {
        ConnectionWaitDlg dialog;
        QVERIFY(dialog.movie()->isValid());
        QCOMPARE(dialog.movie()->state(), QMovie::NotRunning);
        dialog.show();
        QCOMPARE(dialog.movie()->state(), QMovie::Running);
        dialog.accept();
        QCOMPARE(dialog.movie()->state(), QMovie::NotRunning);
    }

    void messageIsShownWhole_data() {
        QTest::addColumn<QString>("message"); // empty: the box's own text
        QTest::newRow("own text") << QString();
        QTest::newRow("server wait") << "Ожидание подключения прибора к серверу конфигурирования";
    }

    // A wrapped message gets every line: a top-level box does not size itself for wrapped text on its own.
    void messageIsShownWhole() {
        QFETCH(QString, message);
        ConnectionWaitDlg dialog;
        if (!message.isEmpty())
            dialog.setMessage(message);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        int shown = 0;
        for (QLabel *label : dialog.findChildren<QLabel *>()) {
            if (!label->text().isEmpty() && ++shown)
                QVERIFY2(label->height() >= label->heightForWidth(label->width()), qPrintable(label->text()));
        }
        QVERIFY(shown > 0);
    }

    void rebootWaitClosesAfterTenStepsAndATick() {
        WaitMessageDlg dialog(nullptr, 5);
        QSignalSpy steps(dialog.progressBar(), &QProgressBar::valueChanged);
        QSignalSpy finished(&dialog, &QDialog::finished);
        QVERIFY(!dialog.timer()->isActive());
        QElapsedTimer clock;
        clock.start();
        dialog.show();
        QTRY_COMPARE(finished.count(), 1);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(steps.count(), 10);
        QVERIFY(clock.elapsed() >= 11 * 5); // closed on the eleventh tick
    }

    // The server wait cannot be closed or put aside by the user.
    void serverWaitHasOnlyATitleBar() {
        const Qt::WindowFlags flags = ConnectionToServerDialog().windowFlags();
        QVERIFY(flags & Qt::CustomizeWindowHint && flags & Qt::WindowTitleHint &&
                flags & Qt::WindowStaysOnBottomHint);
        QVERIFY(!(flags & (Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint |
                           Qt::WindowContextHelpButtonHint)));
    }

    void popupTextResizesTheBox() {
        PopUp popup;
        popup.setPopupText(QStringLiteral("Ok"));
        const int narrow = popup.width();
        popup.setPopupText(QStringLiteral("Конфигурация прибора успешно записана в прибор"));
        QCOMPARE(popup.text(), QStringLiteral("Конфигурация прибора успешно записана в прибор"));
        QVERIFY(popup.width() > narrow);
    }

    void popupFadesInHoldsAndFadesOut_data() {
        QTest::addColumn<int>("fadeIn");
        QTest::addColumn<int>("hold");
        QTest::addColumn<int>("fadeOut");
        QTest::newRow("short") << 10 << 200 << 10;
        QTest::newRow("slow fade") << 5 << 150 << 100;
    }

    void popupFadesInHoldsAndFadesOut() {
        QFETCH(int, fadeIn);
        QFETCH(int, hold);
        QFETCH(int, fadeOut);
        PopUp popup;
        popup.setTimings({fadeIn, hold, fadeOut});
        popup.setPopupText(QStringLiteral("Настройки записаны"));
        popup.setPopupOpacity(0.7f);
        QElapsedTimer clock;
        clock.start();
        popup.show();
        QVERIFY(popup.isVisible() && popup.getPopupOpacity() < 0.7f);
        auto *animation = popup.findChild<QPropertyAnimation *>();
        // At the end of each fade: the opacity, whether shown and the fade's length; and when it ended.
        QStringList steps;
        QList<qint64> at;
        connect(animation, &QAbstractAnimation::finished, &popup, [&] {
            steps << QStringLiteral("%1 %2 %3")
                         .arg(popup.getPopupOpacity())
                         .arg(popup.isVisible())
                         .arg(animation->duration());
            at << clock.elapsed();
        });
        QTRY_VERIFY(!popup.isVisible());
        // Faded in: opaque and still shown, the hold time not yet over; faded out after it: transparent,
        // hidden.
        QCOMPARE(steps,
                 (QStringList{QStringLiteral("1 1 %1").arg(fadeIn), QStringLiteral("0 0 %1").arg(fadeOut)}));
        // Coarse timers may fire up to 5 % early.
        QVERIFY(at[0] >= fadeIn && at[1] >= (hold + fadeOut) * 19 / 20);
    }

    void popupShownAgainRestartsTheFade() {
        PopUp popup;
        popup.setTimings({5, 30, 5});
        popup.show();
        QTRY_VERIFY(!popup.isVisible());
        popup.show();
        QVERIFY(popup.isVisible());
        QVERIFY(!popup.isFadingOut());
        QTRY_COMPARE(popup.getPopupOpacity(), 1.0f);
        QTRY_VERIFY(!popup.isVisible());
    }
};

QTEST_MAIN(tst_WaitDialogs)
#include "tst_waitdialogs.moc"
