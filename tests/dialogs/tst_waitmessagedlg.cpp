#include "WaitMessageDlg.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

class tst_WaitMessageDlg : public QObject {
    Q_OBJECT

private slots:
    void showsRebootTextAndEmptyBar();
    void closesOnEleventhTick_data();
    void closesOnEleventhTick();
    void closesByItselfWithInjectedTick();
};

void tst_WaitMessageDlg::showsRebootTextAndEmptyBar() {
    WaitMessageDlg dialog;
    QVERIFY(dialog.isModal());
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Перезагрузка прибора"));
    QCOMPARE(dialog.findChild<QLabel *>()->text(),
             QStringLiteral("Идет перезагрузка. Подождите, пожалуйста.."));
    QCOMPARE(dialog.progressBar()->maximum(), 10);
    QCOMPARE(dialog.progressBar()->value(), 0);
    QCOMPARE(dialog.timer()->interval(), 1000);
    QVERIFY(!dialog.timer()->isActive());
}

void tst_WaitMessageDlg::closesOnEleventhTick_data() {
    QTest::addColumn<int>("ticks");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("visible");
    QTest::newRow("1") << 1 << 1 << true;
    QTest::newRow("10") << 10 << 10 << true;
    QTest::newRow("11") << 11 << 10 << false;
}

void tst_WaitMessageDlg::closesOnEleventhTick() {
    QFETCH(int, ticks);
    WaitMessageDlg dialog(nullptr, 60 * 60 * 1000);
    dialog.show();
    QVERIFY(dialog.timer()->isActive());
    for (int i = 0; i < ticks; ++i)
        dialog.on_timeout();
    QTEST(dialog.progressBar()->value(), "value");
    QTEST(dialog.isVisible(), "visible");
    QTEST(dialog.timer()->isActive(), "visible");
}

void tst_WaitMessageDlg::closesByItselfWithInjectedTick() {
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

QTEST_MAIN(tst_WaitMessageDlg)
#include "tst_waitmessagedlg.moc"
