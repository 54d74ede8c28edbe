#include "pages/DeviceTextValidator.h"
#include "tests/pages/PageSession.h"

class tst_DeviceTextValidator : public QObject {
    Q_OBJECT

private slots:
    void validate_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("empty") << QString() << true;
        QTest::newRow("access point") << "internet.mts.ru" << true;
        QTest::newRow("32 characters") << QString(32, QLatin1Char('a')) << true;
        QTest::newRow("33 characters") << QString(33, QLatin1Char('a')) << false;
        QTest::newRow("Latin-1 letters") << QStringLiteral("café ß") << true;
        QTest::newRow("Latin-1 top 0xFF") << QString(QChar(0xFF)) << true;
        QTest::newRow("Cyrillic") << QStringLiteral("интернет") << false;
        QTest::newRow("one Cyrillic among Latin") << QStringLiteral("internеt") << false; // Cyrillic е
        QTest::newRow("tab") << "a\tb" << false;
        QTest::newRow("zero byte") << QString(QChar(0)) << false;
        QTest::newRow("DEL") << QString(QChar(0x7F)) << false;
        QTest::newRow("C1 control") << QString(QChar(0x85)) << false;
        QTest::newRow("no-break space") << QString(QChar(0xA0)) << true;
        QTest::newRow("euro sign") << QStringLiteral("€") << false;
    }
    void validate() {
        QFETCH(QString, text);
        QFETCH(bool, accepted);
        DeviceTextValidator v;
        int pos = 0;
        QCOMPARE(v.validate(text, pos) == QValidator::Acceptable, accepted);
        QCOMPARE(DeviceTextValidator::isSendable(text), accepted);
    }

    void typingCyrillic_leavesEditUnchanged() {
        QLineEdit edit;
        DeviceTextValidator::install(&edit);
        typeText(&edit, QStringLiteral("apn"));
        typeText(&edit, QStringLiteral("ж"));
        QCOMPARE(edit.text(), QStringLiteral("apn"));
        QCOMPARE(edit.maxLength(), 32);
    }
};

QTEST_MAIN(tst_DeviceTextValidator)
#include "tst_devicetextvalidator.moc"
