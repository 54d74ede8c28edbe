#include "ConnectionWaitDlg.h"

#include <QMovie>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

class tst_ConnectionWaitDlg : public QObject {
    Q_OBJECT

private slots:
    void ending_data();
    void ending();
    void spinnerRunsOnlyWhileShown();
};

void tst_ConnectionWaitDlg::ending_data() {
    QTest::addColumn<int>("how");
    QTest::addColumn<int>("cancelled");
    QTest::newRow("cancel button") << 0 << 1;
    QTest::newRow("escape") << 1 << 1;
    QTest::newRow("device answered") << 2 << 0;
}

void tst_ConnectionWaitDlg::ending() {
    QFETCH(int, how);
    ConnectionWaitDlg dialog;
    QSignalSpy cancelled(&dialog, &ConnectionWaitDlg::connectionWaitCancelled);
    dialog.show();
    switch (how) {
    case 0:
        dialog.cancelButton()->click();
        break;
    case 1:
        QTest::keyClick(&dialog, Qt::Key_Escape);
        break;
    default:
        dialog.accept();
        break;
    }
    QTEST(cancelled.count(), "cancelled");
    QVERIFY(!dialog.isVisible());
}

void tst_ConnectionWaitDlg::spinnerRunsOnlyWhileShown() {
    ConnectionWaitDlg dialog;
    QCOMPARE(dialog.movie()->fileName(), QStringLiteral(":/images/loading.gif"));
    QVERIFY(dialog.movie()->isValid());
    QCOMPARE(dialog.movie()->state(), QMovie::NotRunning);
    dialog.show();
    QCOMPARE(dialog.movie()->state(), QMovie::Running);
    dialog.accept();
    QCOMPARE(dialog.movie()->state(), QMovie::NotRunning);
}

QTEST_MAIN(tst_ConnectionWaitDlg)
#include "tst_connectionwaitdlg.moc"
