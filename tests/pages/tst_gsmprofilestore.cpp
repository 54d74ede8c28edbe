#include "GsmProfileStore.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(GsmProfileStore::AddResult)

class tst_GsmProfileStore : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString path(const char *name) const { return m_dir.filePath(QString::fromLatin1(name)); }

    static QStringList names(const GsmProfileStore &store) {
        QStringList out;
        for (const GsmProfile &p : store.profiles())
            out << p.name;
        return out;
    }

    static QByteArray readFile(const QString &file) {
        QFile f(file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    static void writeFile(const QString &file, const QByteArray &bytes) {
        QFile f(file);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }

private slots:
    void defaultPath_isInTheCurrentDirectory() {
        QCOMPARE(GsmProfileStore::defaultPath(),
                 QDir::currentPath() + QStringLiteral("/GSMprofileList.json"));
    }

    void add_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<GsmProfileStore::AddResult>("result");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("new name appended")
            << "Tele2" << GsmProfileStore::AddResult::Added << QStringList{"MTS", "Beeline", "Tele2"};
        QTest::newRow("single dash refused")
            << "-" << GsmProfileStore::AddResult::InvalidName << QStringList{"MTS", "Beeline"};
        QTest::newRow("double dash accepted")
            << "--" << GsmProfileStore::AddResult::Added << QStringList{"MTS", "Beeline", "--"};
        QTest::newRow("existing name left alone")
            << "MTS" << GsmProfileStore::AddResult::Exists << QStringList{"MTS", "Beeline"};
    }
    void add() {
        QFETCH(QString, name);
        QFETCH(GsmProfileStore::AddResult, result);
        QFETCH(QStringList, names);

        const QString file = path("add.json");
        QFile::remove(file);
        GsmProfileStore store(file);
        QCOMPARE(store.add({"MTS", "internet.mts.ru", "mts", "mts"}), GsmProfileStore::AddResult::Added);
        QCOMPARE(store.add({"Beeline", "internet.beeline.ru", "beeline", "beeline"}),
                 GsmProfileStore::AddResult::Added);
        const QByteArray before = readFile(file);

        QCOMPARE(store.add({name, "apn", "user", "secret"}), result);
        QCOMPARE(tst_GsmProfileStore::names(store), names);
        GsmProfileStore reloaded(file);
        reloaded.load();
        QCOMPARE(tst_GsmProfileStore::names(reloaded), names);
        if (result != GsmProfileStore::AddResult::Added)
            QCOMPARE(readFile(file), before);
    }

    void overwrite_replacesValuesInPlace() {
        const QString file = path("overwrite.json");
        QFile::remove(file);
        GsmProfileStore store(file);
        store.add({"A", "a", "a", "a"});
        store.add({"B", "b", "b", "b"});
        store.add({"C", "c", "c", "c"});
        QVERIFY(store.overwrite({"B", "new.apn", "u", "p"}));
        QVERIFY(!store.overwrite({"Z", "z", "z", "z"}));

        GsmProfileStore reloaded(file);
        reloaded.load();
        QCOMPARE(names(reloaded), (QStringList{"A", "B", "C"}));
        QCOMPARE(reloaded.profiles().at(1), (GsmProfile{"B", "new.apn", "u", "p"}));
    }

    void remove_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("removed");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("first") << 0 << true << QStringList{"B", "C"};
        QTest::newRow("middle keeps order") << 1 << true << QStringList{"A", "C"};
        QTest::newRow("last") << 2 << true << QStringList{"A", "B"};
        QTest::newRow("nothing selected") << -1 << false << QStringList{"A", "B", "C"};
        QTest::newRow("past the end") << 3 << false << QStringList{"A", "B", "C"};
    }
    void remove() {
        QFETCH(int, index);
        QFETCH(bool, removed);
        QFETCH(QStringList, names);
        const QString file = path("remove.json");
        QFile::remove(file);
        GsmProfileStore store(file);
        for (const char *n : {"A", "B", "C"})
            store.add({n, "x", "y", "z"});
        QCOMPARE(store.remove(index), removed);
        GsmProfileStore reloaded(file);
        reloaded.load();
        QCOMPARE(tst_GsmProfileStore::names(reloaded), names);
    }

    void fileLayout_isIndentedWithTheFourKeys() {
        const QString file = path("layout.json");
        QFile::remove(file);
        GsmProfileStore store(file);
        store.add({"Home", "internet", "gdata", "pw"});
        const QByteArray bytes = readFile(file);
        QVERIFY(bytes.contains("\n    \"Profiles\""));
        const QJsonObject o =
            QJsonDocument::fromJson(bytes).object().value("Profiles").toArray().at(0).toObject();
        QCOMPARE(o.value("profileName").toString(), QStringLiteral("Home"));
        QCOMPARE(o.value("apn").toString(), QStringLiteral("internet"));
        QCOMPARE(o.value("apn_name").toString(), QStringLiteral("gdata"));
        QCOMPARE(o.value("apn_password").toString(), QStringLiteral("pw"));
    }

    void load_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("missing file") << QByteArray() << QStringList();
        QTest::newRow("not json") << QByteArray("{ broken") << QStringList();
        QTest::newRow("no Profiles key")
            << QByteArray(R"({"profiles": [{"profileName": "x"}]})") << QStringList();
        QTest::newRow("order kept") << QByteArray(R"({"Profiles": [{"profileName": "Z"}, {"profileName": "A"},
                                                   {"profileName": "M", "apn": "m"}]})")
                                    << QStringList{"Z", "A", "M"};
    }
    void load() {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, names);
        const QString file = path("load.json");
        QFile::remove(file);
        if (!content.isEmpty())
            writeFile(file, content);
        GsmProfileStore store(file);
        store.add({"stale", "", "", ""});
        if (!content.isEmpty())
            writeFile(file, content);
        else
            QFile::remove(file);
        store.load();
        QCOMPARE(tst_GsmProfileStore::names(store), names);
    }

    void unwritableFile_keepsListInMemory() {
        GsmProfileStore store(m_dir.filePath(QStringLiteral("no/such/folder/GSMprofileList.json")));
        QCOMPARE(store.add({"A", "a", "", ""}), GsmProfileStore::AddResult::Added);
        QVERIFY(!store.save());
        QCOMPARE(names(store), QStringList{"A"});
    }
};

QTEST_MAIN(tst_GsmProfileStore)
#include "tst_gsmprofilestore.moc"
