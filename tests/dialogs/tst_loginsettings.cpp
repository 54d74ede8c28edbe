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
    void formTextsAreShown_data();
    void formTextsAreShown();
    void acceptWritesItsFourKeys();
    void finishingReportsTheServiceDialogDone_data();
    void finishingReportsTheServiceDialogDone();

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
    QTest::newRow("fresh") << QVariantMap() << "cfg.tavrel.ru"
                           << "1256" << 15 << false;
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

void tst_loginSettings::formTextsAreShown_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("time-out") << "Таймаут для операций с переопросом (с)";
    QTest::newRow("update path") << "Сетевой путь размещения обновлений конфигуратора";
    QTest::newRow("log") << "Сохранять лог работы прибора в файл?";
}

void tst_loginSettings::formTextsAreShown() {
    QFETCH(QString, text);
    AppSettings store(m_raw);
    loginSettings dialog(nullptr, &store);
    QStringList texts;
    for (const QLabel *label : dialog.findChildren<QLabel *>())
        texts << label->text();
    texts << dialog.logSaveBox()->text();
    QVERIFY2(texts.contains(text), qPrintable(texts.join(QLatin1Char('|'))));
}

void tst_loginSettings::acceptWritesItsFourKeys() {
    AppSettings store(m_raw);
    loginSettings dialog(nullptr, &store);
    dialog.addressEdit()->setText(QStringLiteral("srv.example"));
    dialog.portEdit()->setText(QStringLiteral("7001"));
    dialog.timeoutBox()->setValue(33);
    dialog.logSaveBox()->setChecked(true);
    dialog.accept();
    QStringList keys = m_raw->allKeys();
    keys.sort();
    QCOMPARE(keys,
             (QStringList{QStringLiteral("loginSettings/Timeout"), QStringLiteral("loginSettings/logSave"),
                          QStringLiteral("loginSettings/serverAddress"),
                          QStringLiteral("loginSettings/serverPort")}));
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/serverAddress")).toString(),
             QStringLiteral("srv.example"));
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/serverPort")).toInt(), 7001);
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/Timeout")).toInt(), 33);
    QCOMPARE(m_raw->value(QStringLiteral("loginSettings/logSave")).toBool(), true);
}

void tst_loginSettings::finishingReportsTheServiceDialogDone_data() {
    QTest::addColumn<bool>("accept");
    QTest::addColumn<bool>("written");
    QTest::newRow("accepted") << true << true;
    QTest::newRow("rejected") << false << false;
}

void tst_loginSettings::finishingReportsTheServiceDialogDone() {
    QFETCH(bool, accept);
    AppSettings store(m_raw);
    loginSettings dialog(nullptr, &store);
    QSignalSpy done(&dialog, &loginSettings::loginServiceDelited);
    if (accept)
        dialog.accept();
    else
        dialog.reject();
    QCOMPARE(done.count(), 1);
    QTEST(m_raw->contains(QStringLiteral("loginSettings/serverAddress")), "written");
}

QTEST_MAIN(tst_loginSettings)
#include "tst_loginsettings.moc"
