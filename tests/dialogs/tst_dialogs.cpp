#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/SnapshotStore.h"
#include "Devices/VantorConfiguration.h"
#include "app/CompareDialog.h"
#include "app/ConnectionToServerDialog.h"
#include "app/ConnectionWaitDlg.h"
#include "app/HistoryDialog.h"
#include "app/PopUp.h"
#include "app/WaitMessageDlg.h"
#include "app/WritePreviewDialog.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QListWidget>
#include <QMovie>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

using namespace kd;

namespace {
// A device with roaming forbidden on SIM 2 and a false-speed threshold, and the same settings after a
// trip through the configuration file, which loses both.
struct RoundTrip {
    VantorConfiguration device;
    VantorConfiguration loaded;
    QJsonObject root;
    RoundTrip() {
        device.deviceInfo()->setIMEI("863071014478127");
        device.gsm()->element(1)->setForbidden(1);
        device.navigation()->value()->setFaultSpeed(3);
        device.write(root);
        loaded.read(root);
    }
    kd::WritePreview preview() const {
        return {&device, &loaded, kd::writeAllSections(), kd::fieldsNotInFile(root),
                kd::otherModelWarning(root, device)};
    }
};
} // namespace

// The boxes the window shows while it waits for a device (they end only as the user or the device decides),
// the notification that fades in and out by itself, and the dialogs that show a configuration's changes.
class tst_Dialogs : public QObject {
    Q_OBJECT

private slots:
    void cancelSignalledOnlyWhenUserCancels_data() {
        QTest::addColumn<int>("how");
        QTest::addColumn<int>("cancelled");
        QTest::newRow("cancel button") << 0 << 1;
        QTest::newRow("escape") << 1 << 1;
        QTest::newRow("device answered") << 2 << 0;
    }

    // Only the user's cancel is signalled; the spinner runs only while the box is shown.
    void cancelSignalledOnlyWhenUserCancels() {
        QFETCH(int, how);
        ConnectionWaitDlg dialog;
        QSignalSpy cancelled(&dialog, &ConnectionWaitDlg::connectionWaitCancelled);
        QCOMPARE(dialog.movie()->state(), QMovie::NotRunning);
        dialog.show();
        QCOMPARE(dialog.movie()->state(), QMovie::Running);
        if (how == 0)
            dialog.cancelButton()->click();
        else if (how == 1)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            dialog.accept();
        QTEST(cancelled.count(), "cancelled");
        QVERIFY(!dialog.isVisible() && dialog.movie()->state() == QMovie::NotRunning);
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
        // Shown again, it fades in anew.
        popup.setTimings({5, 30, 5});
        popup.show();
        QVERIFY(popup.isVisible() && !popup.isFadingOut());
        QTRY_COMPARE(popup.getPopupOpacity(), 1.0f);
        QTRY_VERIFY(!popup.isVisible());
    }

    void writePreview_marksWhatTheFileLacksAndKeepsTheDeviceValues() {
        RoundTrip t;
        WritePreviewDialog dialog("Сохранение конфигурации", "Перезаписать все настройки прибора?",
                                  t.preview());
        QCOMPARE(dialog.changeCount(), 2);
        QCOMPARE(dialog.changesView()->topLevelItem(1)->text(0), "SIM 2: роуминг (нет в файле)");
        QCOMPARE(dialog.changesView()->topLevelItem(1)->text(2), "разрешен");
        QVERIFY(!dialog.findChild<QLabel *>("modelWarning"));

        dialog.keepBox()->setChecked(true);

        QVERIFY(dialog.keepDeviceValues());
        QCOMPARE(dialog.changeCount(), 0);
        QVERIFY(dialog.summary().startsWith("Значения в приборе уже такие же"));
    }

    void history_listsSnapshotsAndSkipsDamagedOnes() {
        QTemporaryDir dir;
        SnapshotStore store(dir.path());
        RoundTrip t;
        Snapshot s = Snapshot::capture(t.device, Snapshot::changesOf(t.preview().diff()));
        const QString path = store.save(s);
        QFile damaged(QFileInfo(path).absolutePath() + "/19990101-000000000.json");
        QVERIFY(damaged.open(QIODevice::WriteOnly) && damaged.write("{") == 1);
        damaged.close();

        HistoryDialog dialog(store, "863071014478127");

        QCOMPARE(dialog.list()->count(), 1);
        QVERIFY(dialog.findChild<QLabel *>("damaged")->text().contains("19990101"));
        QVERIFY(dialog.findChild<QPlainTextEdit *>()->toPlainText().contains(
            "SIM 2: роуминг: запрещен → разрешен"));
        dialog.restoreButton()->click();
        QVERIFY(dialog.chosen());
        QCOMPARE(dialog.chosen()->filePath, path);
    }

    void compare_ticksDifferencesAgainstTheDevice() {
        QTemporaryDir dir;
        RoundTrip t;
        CompareDialog dialog(&t.device, &t.loaded, SnapshotStore(dir.path()), "863071014478127");
        QCOMPARE(dialog.differenceCount(), 2);
        QVERIFY(!dialog.writeButton()->isHidden());
        QVERIFY(!dialog.writeButton()->isEnabled());
        QTreeWidgetItem *roaming = dialog.table()->findItems("роуминг", Qt::MatchExactly, 2).value(1);
        QVERIFY(roaming);
        roaming->setCheckState(0, Qt::Checked);
        QVERIFY(dialog.writeButton()->isEnabled());
        QCOMPARE(dialog.ticked().size(), 1);
        QCOMPARE(dialog.ticked().at(0)->path, "gsm[1].roaming.forbidden");
        QCOMPARE(dialog.writeSource()->gsm()->element(1)->forbidden(), quint8(0));

        QVERIFY(dialog.choose(0, "Загруженная конфигурация"));
        QCOMPARE(dialog.differenceCount(), 0);
        QVERIFY(dialog.writeButton()->isHidden());

        // The navigation never read from the device: shown so, not compared.
        QStringList read = kd::writeAllSections();
        read.removeAll(kd::keys::Navigation);
        CompareDialog partial(&t.device, &t.loaded, SnapshotStore(dir.path()), "863071014478127", read);
        QCOMPARE(partial.differenceCount(), 1);
        QVERIFY(!partial.table()->findItems("не считано из прибора", Qt::MatchExactly, 3).isEmpty());
    }
};

QTEST_MAIN(tst_Dialogs)
#include "tst_dialogs.moc"
