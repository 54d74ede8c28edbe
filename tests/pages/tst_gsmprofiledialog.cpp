#include "GsmProfileDialog.h"

#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

// QTest::keyClicks only knows ASCII keys: Cyrillic is typed as key events carrying the text.
static void typeText(QWidget *w, const QString &text) {
    for (const QChar c : text) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(c));
        QApplication::sendEvent(w, &press);
    }
}

class tst_GsmProfileDialog : public QObject {
    Q_OBJECT

private slots:
    void texts() {
        GsmProfileDialog dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Добавление профиля"));
        QStringList labels;
        for (QLabel *label : dialog.findChildren<QLabel *>())
            labels << label->text();
        for (const char *text : {"Добавление нового профиля настроек GSM",
                                 "Название профиля:", "Точка доступа:", "Пользователь:", "Пароль:"})
            QVERIFY2(labels.contains(QString::fromUtf8(text)), text);
    }

    void typedValues_makeTheProfile() {
        GsmProfileDialog dialog;
        typeText(dialog.nameEdit(), QStringLiteral("Дом"));
        typeText(dialog.apnEdit(), QStringLiteral("inтernet")); // the Cyrillic т is refused
        typeText(dialog.userEdit(), QStringLiteral("u"));
        typeText(dialog.passwordEdit(), QStringLiteral("p"));
        QCOMPARE(dialog.profile(), (GsmProfile{QStringLiteral("Дом"), "inernet", "u", "p"}));
    }
};

QTEST_MAIN(tst_GsmProfileDialog)
#include "tst_gsmprofiledialog.moc"
