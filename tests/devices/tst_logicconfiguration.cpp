#include "Devices/LogicConfiguration.h"

#include <QSignalSpy>
#include <QtTest>

using kd::LogicConfiguration;

class tst_LogicConfiguration : public QObject {
    Q_OBJECT

private slots:
    void decode_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("func0");
        QTest::addColumn<int>("func1");
        QTest::addColumn<QString>("loggedHead"); // empty: nothing decoded

        QTest::newRow("two records") << QByteArray::fromHex("8d 02 00 00 03 00 07 00") << 3 << 7
                                     << "8d 02 00 00";
        QTest::newRow("index byte 5 is clamped to 1, records still start at input 0")
            << QByteArray::fromHex("8d 02 05 00 03 00 07 00") << 3 << 7 << "8d 02 01 00";
        QTest::newRow("index byte 1 stays 1")
            << QByteArray::fromHex("8d 02 01 00 04 00") << 4 << 9 << "8d 02 01 00";
        QTest::newRow("odd byte is no record")
            << QByteArray::fromHex("8d 02 00 00 04 00 05") << 4 << 9 << "8d 02 00 00";
        QTest::newRow("a third record is skipped")
            << QByteArray::fromHex("8d 02 00 00 01 00 02 00 03 00") << 1 << 2 << "8d 02 00 00";
        QTest::newRow("another kind changes nothing")
            << QByteArray::fromHex("8d 01 00 00 01 00 02 00") << 9 << 9 << "";
        QTest::newRow("status answer changes nothing")
            << QByteArray::fromHex("8d 82 00 00 01 00") << 9 << 9 << "";
    }

    void decode() {
        QFETCH(QByteArray, payload);
        QFETCH(QString, loggedHead);
        LogicConfiguration s(2);
        s.element(0)->setFunc(9);
        s.element(1)->setFunc(9);
        if (!loggedHead.isEmpty()) {
            QTest::ignoreMessage(QtDebugMsg,
                                 QRegularExpression(QStringLiteral("^\\d+ Прочитано %1 "
                                                                   "Конфигурация LogicInputs\\[0$")
                                                        .arg(loggedHead)));
        }
        QSignalSpy filled(&s, &LogicConfiguration::DeviceInfoFilled);

        s.decode(payload);

        QTEST(int(s.element(0)->func()), "func0");
        QTEST(int(s.element(1)->func()), "func1");
        QCOMPARE(filled.count(), loggedHead.isEmpty() ? 0 : 1);
    }

    void encode_sendsTheInputIndexInByte2() {
        LogicConfiguration s(2);
        s.element(0)->setFunc(42);
        s.element(1)->setFunc(42);
        QCOMPARE(s.encode(0).toHex(' '), QByteArray("0d 02 00 00 2a 00"));
        QCOMPARE(s.encode(1).toHex(' '), QByteArray("0d 02 01 00 2a 00"));
        QVERIFY(s.encode(2).isEmpty());
    }

    void funcChange_isReemittedWithTheInput() {
        LogicConfiguration s(2);
        QSignalSpy spy(&s, &LogicConfiguration::funcChanged);
        s.element(1)->setFunc(3);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), 1);
    }
};

QTEST_GUILESS_MAIN(tst_LogicConfiguration)
#include "tst_logicconfiguration.moc"
