#include "pages/GsmProfileDialog.h"
#include "tests/pages/PageSession.h"

class tst_GsmProfileDialog : public QObject {
    Q_OBJECT

private slots:
    void typedValues_makeTheProfile() {
        GsmProfileDialog dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Добавление профиля"));
        typeText(dialog.nameEdit(), QStringLiteral("Дом"));
        typeText(dialog.apnEdit(), QStringLiteral("inтernet")); // the Cyrillic т is refused
        typeText(dialog.userEdit(), QStringLiteral("u"));
        typeText(dialog.passwordEdit(), QStringLiteral("p"));
        QCOMPARE(dialog.profile(), (GsmProfile{QStringLiteral("Дом"), "inernet", "u", "p"}));
    }
};

QTEST_MAIN(tst_GsmProfileDialog)
#include "tst_gsmprofiledialog.moc"
