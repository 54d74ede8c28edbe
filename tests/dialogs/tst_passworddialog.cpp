#include "app/PasswordDialog.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

class tst_PasswordDialog : public QObject {
    Q_OBJECT

private slots:
    void editIsMaskedSensitiveInput() {
        PasswordDialog dialog;
        QLineEdit *edit = dialog.passwordEdit();
        QCOMPARE(edit->inputMask(), QStringLiteral("999999999"));
        QVERIFY(edit->inputMethodHints() & Qt::ImhSensitiveData);
        // Opens empty, not as nine masked blanks; typed digits are masked once the field is left.
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        edit->setFocus();
        QCOMPARE(edit->displayText().trimmed(), QString());
        QTest::keyClicks(edit, QStringLiteral("1234"));
        QCOMPARE(edit->displayText().trimmed(), QStringLiteral("1234"));
        dialog.findChild<QDialogButtonBox *>()->setFocus();
        QCOMPARE(edit->echoMode(), QLineEdit::PasswordEchoOnEdit);
        QVERIFY(!edit->displayText().contains(QLatin1Char('1')));
    }

    void everyEditConvertsThePassword_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<qint32>("password");
        QTest::newRow("nine digits") << "123456789" << 123456789;
        QTest::newRow("short") << "42" << 42;
        QTest::newRow("leading zeros") << "000000007" << 7;
        QTest::newRow("ten digits, tenth refused") << "1234567890" << 123456789;
        QTest::newRow("letters refused") << "ab" << 0;
    }

    void everyEditConvertsThePassword() {
        QFETCH(QString, typed);
        PasswordDialog dialog;
        QTest::keyClicks(dialog.passwordEdit(), QStringLiteral("5"));
        QCOMPARE(dialog.password(), 5);
        dialog.passwordEdit()->clear();
        QCOMPARE(dialog.password(), 0);
        dialog.passwordEdit()->setFocus();
        QTest::keyClicks(dialog.passwordEdit(), typed);
        QTEST(dialog.password(), "password");
    }

    void okAcceptsWithThePassword() {
        PasswordDialog dialog;
        QTest::keyClicks(dialog.passwordEdit(), QStringLiteral("31337"));
        dialog.findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"))
            ->button(QDialogButtonBox::Ok)
            ->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.password(), 31337);
    }
};

QTEST_MAIN(tst_PasswordDialog)
#include "tst_passworddialog.moc"
