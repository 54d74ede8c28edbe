#include "app/CompareDialog.h"
#include "app/HistoryDialog.h"
#include "app/WritePreviewDialog.h"

#include "Devices/DeviceInfoConfiguration.h"
#include "Devices/GSMConfiguration.h"
#include "Devices/NavigationConfiguration.h"
#include "Devices/SnapshotStore.h"
#include "Devices/VantorConfiguration.h"

#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
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
    WritePreview preview() const {
        return {&device, &loaded, writeAllSections(), fieldsNotInFile(root), otherModelWarning(root, device)};
    }
};
} // namespace

class tst_ConfigurationDialogs : public QObject {
    Q_OBJECT

private slots:
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
    }
};

QTEST_MAIN(tst_ConfigurationDialogs)
#include "tst_configurationdialogs.moc"
