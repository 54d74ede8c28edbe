#include "app/QtTranslations.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLibraryInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

// Qt's own buttons speak Russian like the rest of the window once the translations are installed.
class tst_QtTranslations : public QObject {
    Q_OBJECT

private slots:
    void standardButtonsReadRussian_data() {
        QTest::addColumn<int>("button");
        QTest::addColumn<QString>("text");
        QTest::newRow("yes") << int(QDialogButtonBox::Yes) << "Да";
        QTest::newRow("no") << int(QDialogButtonBox::No) << "Нет";
        QTest::newRow("cancel") << int(QDialogButtonBox::Cancel) << "Отмена";
    }

    void standardButtonsReadRussian() {
        QFETCH(int, button);
        QFETCH(QString, text);
        if (!QFile::exists(QLibraryInfo::location(QLibraryInfo::TranslationsPath) + "/qtbase_ru.qm"))
            QSKIP("Qt's Russian translations are not installed here");
        static const bool installed = installQtTranslations(*qApp);
        QVERIFY(installed);
        QDialogButtonBox box{QDialogButtonBox::StandardButtons(button)};
        QCOMPARE(box.button(QDialogButtonBox::StandardButton(button))->text().remove(QLatin1Char('&')), text);
    }
};

QTEST_MAIN(tst_QtTranslations)
#include "tst_qttranslations.moc"
