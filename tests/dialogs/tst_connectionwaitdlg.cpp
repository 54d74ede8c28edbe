#include "app/ConnectionWaitDlg.h"

#include <QLabel>
#include <QMovie>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

class tst_ConnectionWaitDlg : public QObject {
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
};

QTEST_MAIN(tst_ConnectionWaitDlg)
#include "tst_connectionwaitdlg.moc"
