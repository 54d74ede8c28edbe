#include "app/AppSettings.h"
#include "app/loginDialog.h"

#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QtTest>

class tst_loginDialog : public QObject {
    Q_OBJECT

private slots:
    void init() {
        delete m_raw;
        m_raw = new QSettings(QStringLiteral("TavrelTest"), QStringLiteral("logindialog"), this);
        m_raw->clear();
    }

    void imeiEditTakesOnlySixteenDigits_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        QTest::newRow("17 digits") << "12345678901234567"
                                   << "1234567890123456";
        QTest::newRow("letter refused") << "8630a7"
                                        << "86307";
        QTest::newRow("sign and blank refused") << "-1 2"
                                                << "12";
    }

    void imeiEditTakesOnlySixteenDigits() {
        QFETCH(QString, typed);
        AppSettings store(m_raw);
        store.setLoginType(AppSettings::RemoteConnection);
        loginDialog dialog(nullptr, &store);
        QCOMPARE(dialog.imeiEdit()->maxLength(), 16);
        QVERIFY(dialog.imeiEdit()->isEnabled());
        QTest::keyClicks(dialog.imeiEdit(), typed);
        QTEST(dialog.imei(), "kept");
    }

    void hintDependsOnStoredServer_data() {
        QTest::addColumn<QVariant>("address");
        QTest::addColumn<QVariant>("port");
        QTest::addColumn<QString>("hint");
        const QString check = QStringLiteral("Проверьте настройки сервера удаленного конфигурирования");
        QTest::newRow("nothing stored") << QVariant() << QVariant() << check;
        QTest::newRow("no port") << QVariant(QStringLiteral("cfg.example")) << QVariant() << check;
        QTest::newRow("both") << QVariant(QStringLiteral("cfg.example")) << QVariant(1256)
                              << "Для удаленного управления прибором необходимо перевести прибор на сервер "
                                 "конфигурирования: cfg.example:1256";
    }

    void hintDependsOnStoredServer() {
        QFETCH(QVariant, address);
        QFETCH(QVariant, port);
        if (address.isValid())
            m_raw->setValue(QStringLiteral("loginSettings/serverAddress"), address);
        if (port.isValid())
            m_raw->setValue(QStringLiteral("loginSettings/serverPort"), port);
        AppSettings store(m_raw);
        loginDialog dialog(nullptr, &store);
        QTEST(dialog.hintText(), "hint");
        QTEST(dialog.findChild<QLabel *>(QStringLiteral("hintLabel"))->text(), "hint");
    }

    void readsStoredChoice() {
        AppSettings store(m_raw);
        store.setLoginType(AppSettings::RemoteConnection);
        store.setPassWord(777);
        store.setSerialNumber(QStringLiteral("863071014478127"));
        loginDialog dialog(nullptr, &store);
        QCOMPARE(dialog.connectionType(), int(AppSettings::RemoteConnection));
        QVERIFY(dialog.remoteButton()->isChecked());
        QCOMPARE(dialog.password(), 777);
        QCOMPARE(dialog.imei(), QStringLiteral("863071014478127"));

        dialog.localButton()->setChecked(true);
        QVERIFY(!dialog.imeiEdit()->isEnabled());
    }

    void acceptWritesTypePasswordAndImeiRejectNothing_data() {
        QTest::addColumn<bool>("accept");
        QTest::newRow("accepted") << true;
        QTest::newRow("rejected") << false;
    }

    void acceptWritesTypePasswordAndImeiRejectNothing() {
        QFETCH(bool, accept);
        AppSettings store(m_raw);
        loginDialog dialog(nullptr, &store);
        QCOMPARE(dialog.connectionType(), int(AppSettings::LocalConnection));
        dialog.remoteButton()->setChecked(true);
        QTest::keyClicks(dialog.imeiEdit(), QStringLiteral("863071014478127"));
        QTest::keyClicks(dialog.passwordEdit(), QStringLiteral("12x34"));
        accept ? dialog.accept() : dialog.reject();
        QStringList written;
        for (const QString &key : m_raw->allKeys())
            written << key + QLatin1Char('=') + m_raw->value(key).toString();
        written.sort();
        if (accept)
            QCOMPARE(written, (QStringList{"loginSettings/loginType=1", "loginSettings/passWord=1234",
                                           "loginSettings/serialNumber=863071014478127"}));
        else
            QVERIFY(written.isEmpty());
    }

private:
    QSettings *m_raw = nullptr;
};

QTEST_MAIN(tst_loginDialog)
#include "tst_logindialog.moc"
