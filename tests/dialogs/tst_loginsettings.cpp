#include "AppSettings.h"
#include "loginSettings.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

class tst_loginSettings : public QObject {
    Q_OBJECT

private slots:
    void init();
    void showsStoredValuesOrDefaults_data();
    void showsStoredValuesOrDefaults();
    void formTextsAreShown();
    void acceptWritesItsFourKeysRejectNone_data();
    void acceptWritesItsFourKeysRejectNone();

private:
    QSettings *m_raw = nullptr;
};

void tst_loginSettings::init() {
    delete m_raw;
    m_raw = new QSettings(QStringLiteral("TavrelTest"), QStringLiteral("loginsettings"), this);
    m_raw->clear();
}

void tst_loginSettings::showsStoredValuesOrDefaults_data() {
    QTest::addColumn<QVariantMap>("stored");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("port");
    QTest::addColumn<int>("timeout");
    QTest::addColumn<bool>("logSave");
    QTest::newRow("stored") << QVariantMap{{QStringLiteral("loginSettings/serverAddress"),
                                            QStringLiteral("1.2.3.4")},
                                           {QStringLiteral("loginSettings/serverPort"), 5000},
                                           {QStringLiteral("loginSettings/Timeout"), 40},
                                           {QStringLiteral("loginSettings/logSave"), true}}
                            << "1.2.3.4"
                            << "5000" << 40 << true;
    QTest::newRow("zero port and time-out") << QVariantMap{{QStringLiteral("loginSettings/serverPort"), 0},
                                                           {QStringLiteral("loginSettings/Timeout"), 0}}
                                            << "cfg.tavrel.ru"
                                            << "1256" << 15 << false;
}

void tst_loginSettings::showsStoredValuesOrDefaults() {
    QFETCH(QVariantMap, stored);
    for (auto it = stored.cbegin(); it != stored.cend(); ++it)
        m_raw->setValue(it.key(), it.value());
    AppSettings store(m_raw);
    loginSettings dialog(nullptr, &store);
    QTEST(dialog.addressEdit()->text(), "address");
    QTEST(dialog.portEdit()->text(), "port");
    QTEST(dialog.timeoutBox()->value(), "timeout");
    QTEST(dialog.logSaveBox()->isChecked(), "logSave");
}

void tst_loginSettings::formTextsAreShown() {
    AppSettings store(m_raw);
    loginSettings dialog(nullptr, &store);
    QStringList texts{dialog.logSaveBox()->text()};
    for (const QLabel *label : dialog.findChildren<QLabel *>())
        texts << label->text();
    for (const char *text :
         {"Таймаут для операций с переопросом (с)", "Сетевой путь размещения обновлений конфигуратора",
          "Сохранять лог работы прибора в файл?"})
        QVERIFY2(texts.contains(QString::fromUtf8(text)), text);
}

void tst_loginSettings::acceptWritesItsFourKeysRejectNone_data() {
    QTest::addColumn<bool>("accept");
    QTest::newRow("accepted") << true;
    QTest::newRow("rejected") << false;
}

void tst_loginSettings::acceptWritesItsFourKeysRejectNone() {
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
        QCOMPARE(written,
                 (QStringList{"loginSettings/Timeout=33", "loginSettings/logSave=true",
                              "loginSettings/serverAddress=srv.example", "loginSettings/serverPort=7001"}));
    else
        QVERIFY(written.isEmpty());
}

QTEST_MAIN(tst_loginSettings)
#include "tst_loginsettings.moc"
