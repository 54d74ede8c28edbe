#include "app/ConnectionToServerDialog.h"

#include <QtTest>

class tst_ConnectionToServerDialog : public QObject {
    Q_OBJECT

private slots:
    void hasOnlyTitleBarAndStaysBelow() {
        ConnectionToServerDialog dialog;
        const Qt::WindowFlags flags = dialog.windowFlags();
        QVERIFY(flags & Qt::CustomizeWindowHint);
        QVERIFY(flags & Qt::WindowTitleHint);
        QVERIFY(flags & Qt::WindowStaysOnBottomHint);
        QVERIFY(!(flags & Qt::WindowCloseButtonHint));
        QVERIFY(!(flags & Qt::WindowMinimizeButtonHint));
        QVERIFY(!(flags & Qt::WindowContextHelpButtonHint));
        dialog.setMessage(QStringLiteral("x"));
        QCOMPARE(dialog.message(), QStringLiteral("x"));
    }
};

QTEST_MAIN(tst_ConnectionToServerDialog)
#include "tst_connectiontoserverdialog.moc"
