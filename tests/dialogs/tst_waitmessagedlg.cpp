#include "app/WaitMessageDlg.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

class tst_WaitMessageDlg : public QObject {
    Q_OBJECT

private slots:
    void showsRebootTextAndEmptyBar() {
        WaitMessageDlg dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Перезагрузка прибора"));
        QCOMPARE(dialog.findChild<QLabel *>()->text(),
                 QStringLiteral("Идет перезагрузка. Подождите, пожалуйста.."));
        QCOMPARE(dialog.progressBar()->maximum(), 10);
        QCOMPARE(dialog.progressBar()->value(), 0);
        QCOMPARE(dialog.timer()->interval(), 1000);
        QVERIFY(!dialog.timer()->isActive());
    }

    void closesOnEleventhInjectedTickAfterTenSteps() {
        WaitMessageDlg dialog(nullptr, 5);
        QSignalSpy steps(dialog.progressBar(), &QProgressBar::valueChanged);
        QSignalSpy finished(&dialog, &QDialog::finished);
        QElapsedTimer clock;
        clock.start();
        dialog.show();
        QTRY_COMPARE(finished.count(), 1);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(steps.count(), 10);
        QVERIFY(clock.elapsed() >= 11 * 5);
    }
};

QTEST_MAIN(tst_WaitMessageDlg)
#include "tst_waitmessagedlg.moc"
