#include "app/AppSettings.h"
#include "app/loginSettings.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

class tst_loginSettings : public QObject {
    Q_OBJECT

private slots:
    void init() {
        delete m_raw;
        m_raw = new QSettings(QStringLiteral("TavrelTest"), QStringLiteral("loginsettings"), this);
        m_raw->clear();
    }

    void showsStoredValuesZeroPortAndTimeOutGiveDefaults() {
        AppSettings store(m_raw);
        store.setServerAddress(QStringLiteral("1.2.3.4"));
        store.setServerLogSave(true);
        store.setServerPort(0);
        store.setTimeoutSeconds(0);
        loginSettings zero(nullptr, &store);
        QCOMPARE(zero.addressEdit()->text(), QStringLiteral("1.2.3.4"));
        QCOMPARE(zero.portEdit()->text(), QStringLiteral("1256"));
        QCOMPARE(zero.timeoutBox()->value(), 15);
        QVERIFY(zero.logSaveBox()->isChecked());
        store.setServerPort(5000);
        store.setTimeoutSeconds(40);
        loginSettings stored(nullptr, &store);
        QCOMPARE(stored.portEdit()->text(), QStringLiteral("5000"));
        QCOMPARE(stored.timeoutBox()->value(), 40);
    }

    void acceptWritesItsFourKeysRejectNone_data() {
        QTest::addColumn<bool>("accept");
        QTest::newRow("accepted") << true;
        QTest::newRow("rejected") << false;
    }

    void acceptWritesItsFourKeysRejectNone() {
        QFETCH(bool, accept);
        AppSettings store(m_raw);
        loginSettings dialog(nullptr, &store);
        QSignalSpy done(&dialog, &loginSettings::loginServiceDelited);
        dialog.addressEdit()->setText(QStringLiteral("srv.example"));
        dialog.portEdit()->setText(QStringLiteral("7001"));
        dialog.timeoutBox()->setValue(33);
        dialog.logSaveBox()->setChecked(true);
        accept ? dialog.accept() : dialog.reject();
        QCOMPARE(done.count(), 1);
        QStringList written;
        for (const QString &key : m_raw->allKeys())
            written << key + QLatin1Char('=') + m_raw->value(key).toString();
        written.sort();
        if (accept)
            QCOMPARE(written, (QStringList{"loginSettings/Timeout=33", "loginSettings/logSave=true",
                                           "loginSettings/serverAddress=srv.example",
                                           "loginSettings/serverPort=7001"}));
        else
            QVERIFY(written.isEmpty());
    }

private:
    QSettings *m_raw = nullptr;
};

QTEST_MAIN(tst_loginSettings)
#include "tst_loginsettings.moc"
