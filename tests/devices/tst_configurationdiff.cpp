#include "Devices/ConfigurationDiff.h"
#include "Devices/ConfigurationFile.h"
#include "Devices/ConfigurationFileCheck.h"
#include "Devices/SnapshotStore.h"
#include "tests/support/ConfigurationSample.h"

#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

using namespace kd;

namespace {
QJsonObject fileOf(const VantorConfiguration &cfg) {
    QJsonObject root;
    cfg.write(root);
    return root;
}

QStringList paths(const QVector<const ConfigField *> &fields) {
    QStringList out;
    for (const ConfigField *f : fields)
        out << f->path;
    return out;
}
} // namespace

class tst_ConfigurationDiff : public QObject {
    Q_OBJECT

private slots:
    // One field set on each side; the line is what the user reads, empty when the device would hold the
    // same value (masked to the field, text as the wire carries it).
    void fieldChange_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QVariant>("before");
        QTest::addColumn<QVariant>("after");
        QTest::addColumn<QString>("human");
        QTest::addColumn<QString>("plain");
        const auto row = [](const char *name, const char *path, const QVariant &before, const QVariant &after,
                            const QString &human = {}, const QString &plain = {}) {
            QTest::newRow(name) << QString::fromLatin1(path) << before << after << human << plain;
        };
        row("roaming", "gsm[1].roaming.forbidden", 1ULL, 0ULL, "SIM 2: роуминг: запрещен → разрешен",
            "gsm[1].roaming.forbidden: 1 -> 0");
        row("unit", "navigation.faultSpeed", 3ULL, 0ULL, "Навигация: Порог ложной скорости: 3 км/ч → 0 км/ч",
            "navigation.faultSpeed: 3 -> 0");
        row("text", "Server[0].server", "a.ru", "", "Сервер 1: Адрес сервера: «a.ru» → (пусто)",
            "Server[0].server: \"a.ru\" -> \"\"");
        row("timetable count", "gsm[0].roaming.timetable", "ff", "0",
            "SIM 1: расписание роуминга: 8 из 112 интервалов → 0 из 112 интервалов",
            "gsm[0].roaming.timetable: 0x000000000000000000000000000000ff -> "
            "0x00000000000000000000000000000000");
        row("timetable same count", "gsm[0].roaming.timetable", "1", "2",
            "SIM 1: расписание роуминга: 1 из 112 интервалов (0x00000000000000000000000000000001) → 1 из 112 "
            "интервалов (0x00000000000000000000000000000002)",
            "gsm[0].roaming.timetable: 0x00000000000000000000000000000001 -> "
            "0x00000000000000000000000000000002");
        row("masked to 4 bits", "SystemParameters.gsens", 16ULL, 0ULL);
        row("flag bit", "adcs[2].enabled", 3ULL, 1ULL);
        row("unsendable tail", "gsm[0].gprs.apn", "internet", "internetЖx");
        row("beyond 32", "gsm[1].gprs.apn_password", QString(32, 'p'), QString(40, 'p'));
    }
    void fieldChange() {
        QFETCH(QString, path);
        QFETCH(QVariant, before);
        QFETCH(QVariant, after);
        const ConfigField *f = findField(path);
        QVERIFY(f);
        VantorConfiguration a, b;
        f->assign(a, before);
        f->assign(b, after);

        const ConfigurationDiff d = ConfigurationDiff::compare(a, b);

        QFETCH(QString, human);
        QFETCH(QString, plain);
        QCOMPARE(d.humanLines().join('\n'), human);
        QCOMPARE(d.plainLines().join('\n'), plain);
        QCOMPARE(d.unchanged + d.changes.size(), writableFields().size());
    }

    // Saved and loaded again, the file loses the roaming and "faultSpeed"; the check names exactly those,
    // and keeping the device's values for them makes the write change nothing.
    void roundTripKeepsTheDeviceValuesOnRequest() {
        VantorConfiguration device;
        fillSample(device);
        const QJsonObject root = fileOf(device);
        VantorConfiguration loaded;
        loaded.read(root);

        const ConfigurationDiff before = ConfigurationDiff::compare(device, loaded);
        const QVector<const ConfigField *> lacking = fieldsNotInFile(root);
        WritePreview preview{&device, &loaded, writeAllSections(), lacking, QString(), true};
        VantorConfiguration written;
        preview.apply(written);

        QCOMPARE(before.plainLines(),
                 QStringList({"navigation.faultSpeed: 150 -> 0", "gsm[0].roaming.forbidden: 1 -> 0",
                              "gsm[0].roaming.timetable: 0x00000000000003e800000000000007d0 -> "
                              "0x00000000000000000000000000000000",
                              "gsm[1].roaming.forbidden: 1 -> 0",
                              "gsm[1].roaming.timetable: 0x00000000000003e900000000000007d1 -> "
                              "0x00000000000000000000000000000000"}));
        QCOMPARE(paths(lacking),
                 QStringList({"navigation.faultSpeed", "gsm[0].roaming.forbidden", "gsm[0].roaming.timetable",
                              "gsm[1].roaming.forbidden", "gsm[1].roaming.timetable"}));
        QCOMPARE(identityNotInFile(root), QStringList{"IMEI"});
        QVERIFY(preview.diff().isEmpty());
        QVERIFY(ConfigurationDiff::compare(device, written).isEmpty());
        QCOMPARE(mismatchLines(before).at(0),
                 "Навигация: Порог ложной скорости: записано 150 км/ч, в приборе 0 км/ч");
        QCOMPARE(fieldsNotInFile(QJsonObject()).size(), writableFields().size());
    }

    void otherModel() {
        VantorConfiguration device;
        fillSample(device);
        QJsonObject root = fileOf(device);
        QCOMPARE(otherModelWarning(root, device), QString());
        QCOMPARE(otherModelWarning(QJsonObject(), device), QString());
        root.insert("hardver.devmod", 5);
        QCOMPARE(otherModelWarning(root, device),
                 "Файл сохранен с прибора другой модели (группа 1, тип 3, модификация 5), подключен прибор: "
                 "группа 1, тип 3, модификация 2");
    }

    void fileCheck_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QStringList>("lines");
        const auto row = [](const char *name, const QByteArray &json, const QString &line = {}) {
            QTest::newRow(name) << json << (line.isEmpty() ? QStringList() : QStringList{line});
        };
        const QString none = "в файле нет ни одного параметра конфигурации";
        row("empty", "{}", none);
        row("identity only", R"({"name":"x","hardver.devtype":3})", none);
        row("fine", R"({"SystemParameters":{"gsens":15,"lowSpeed":1}})");
        row("masked", R"({"SystemParameters":{"gsens":300}})",
            "SystemParameters.gsens: в файле 300 (вне диапазона, читается как 44), в прибор уйдет 12");
        row("negative port", R"({"Server":[{"port":-5}]})",
            "Server[0].port: в файле -5 (вне диапазона), в прибор уйдет 4294967291");
        row("fraction", R"({"navigation":{"deltaSpeed":2.5}})",
            "navigation.deltaSpeed: в файле 2.5 (вне диапазона), в прибор уйдет 2");
        row("string for a number", R"({"adcs":[{},{"averaging":"10"}]})",
            "adcs[1].averaging: в файле \"10\" (не число), в прибор уйдет 0");
        row("long text", R"({"gsm":[{"gprs 1":{"apn":"abcdefghijklmnopqrstuvwxyz0123456789"}}]})",
            "gsm[0].gprs.apn: в файле \"abcdefghijklmnopqrstuvwxyz0123456789\" (длиннее 32 символов), в "
            "прибор "
            "уйдет \"abcdefghijklmnopqrstuvwxyz012345\"");
        row("cyrillic", R"({"gsm":[{},{"gprs 2":{"apn_name":"юзер"}}]})",
            "gsm[1].gprs.apn_name: в файле \"юзер\" (символы, которые прибор не принимает), в прибор уйдет "
            "\"\"");
        row("number for text", R"({"Server":[{"server":7}]})",
            "Server[0].server: в файле 7 (не текст), в прибор уйдет \"\"");
    }
    void fileCheck() {
        QFETCH(QByteArray, json);
        QFETCH(QStringList, lines);
        const ConfigurationFileCheck c =
            ConfigurationFileCheck::check(QJsonDocument::fromJson(json).object());
        QCOMPARE(c.lines(), lines);
        QCOMPARE(c.ok(), lines.isEmpty());
    }

    // Every field comes back, the roaming and the identity included; a damaged or foreign file is skipped
    // whole; only the newest Kept stay.
    void snapshots() {
        QTemporaryDir dir;
        SnapshotStore store(dir.path());
        VantorConfiguration device;
        fillSample(device);
        VantorConfiguration other;
        Snapshot s =
            Snapshot::capture(device, Snapshot::changesOf(ConfigurationDiff::compare(device, other)));
        s.programVersion = "1.2.3";
        const QString path = store.save(s);
        QVERIFY(!path.isEmpty());

        const QString folder = QFileInfo(path).absolutePath();
        QFile cut(folder + "/20000101-000000000.json");
        QVERIFY(cut.open(QIODevice::WriteOnly));
        cut.write(s.toJson().left(200));
        cut.close();
        QJsonObject lacking = QJsonDocument::fromJson(s.toJson()).object();
        QJsonObject values = lacking.value("values").toObject();
        values.remove("navigation.faultSpeed");
        lacking.insert("values", values);
        QFile half(folder + "/20000102-000000000.json");
        QVERIFY(half.open(QIODevice::WriteOnly));
        half.write(QJsonDocument(lacking).toJson());
        half.close();

        QStringList damaged;
        const QVector<Snapshot> list = store.list("863071014478127", &damaged);
        QCOMPARE(list.size(), 1);
        QCOMPARE(damaged.size(), 2);
        QVERIFY2(damaged.at(0).endsWith("нет значения navigation.faultSpeed"), qPrintable(damaged.at(0)));
        QCOMPARE(list.at(0).programVersion, QString("1.2.3"));
        QCOMPARE(list.at(0).writtenLines().size(), ConfigurationDiff::compare(device, other).changes.size());
        QVERIFY(list.at(0).writtenLines().contains("SIM 1: роуминг: запрещен → разрешен"));

        VantorConfiguration restored;
        list.at(0).applyTo(restored);
        for (const ConfigField &f : configurationFields())
            QVERIFY2(f.rawValue(restored) == f.rawValue(device), qPrintable(f.path));

        for (int i = 0; i < SnapshotStore::Kept + 2; ++i) {
            Snapshot more = s;
            more.time = more.time.addSecs(i + 1);
            QVERIFY(!store.save(more).isEmpty());
        }
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), SnapshotStore::Kept);
        QVERIFY(!QFile::exists(path));
    }
};

QTEST_GUILESS_MAIN(tst_ConfigurationDiff)
#include "tst_configurationdiff.moc"
