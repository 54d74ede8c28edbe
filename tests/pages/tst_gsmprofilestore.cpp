#include "pages/GsmProfileStore.h"

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
    const QString m_file = m_dir.filePath(QStringLiteral("GSMprofileList.json"));

    // A fresh file holding profiles named A, B, C (apn = the name in lower case).
    void fill(GsmProfileStore &store) {
        QFile::remove(m_file);
        for (const QString n : {"A", "B", "C"})
            QCOMPARE(store.add({n, n.toLower(), "u", "p"}), GsmProfileStore::AddResult::Added);
    }
    static QStringList names(const GsmProfileStore &store) {
        QStringList out;
        for (const GsmProfile &p : store.profiles())
            out << p.name;
        return out;
    }
    QStringList reloaded() const {
        GsmProfileStore store(m_file);
        store.load();
        return names(store);
    }
    QByteArray fileBytes() const {
        QFile f(m_file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
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
            << "D" << GsmProfileStore::AddResult::Added << QStringList{"A", "B", "C", "D"};
        QTest::newRow("single dash refused")
            << "-" << GsmProfileStore::AddResult::InvalidName << QStringList{"A", "B", "C"};
        QTest::newRow("double dash accepted")
            << "--" << GsmProfileStore::AddResult::Added << QStringList{"A", "B", "C", "--"};
        QTest::newRow("existing name left alone")
            << "B" << GsmProfileStore::AddResult::Exists << QStringList{"A", "B", "C"};
    }
    void add() {
        QFETCH(QString, name);
        QFETCH(GsmProfileStore::AddResult, result);
        QFETCH(QStringList, names);
        GsmProfileStore store(m_file);
        fill(store);
        const QByteArray before = fileBytes();
        QCOMPARE(store.add({name, "apn", "user", "secret"}), result);
        QCOMPARE(tst_GsmProfileStore::names(store), names);
        QCOMPARE(reloaded(), names);
        if (result != GsmProfileStore::AddResult::Added)
            QCOMPARE(fileBytes(), before);
    }

    void overwrite_replacesValuesInPlace() {
        GsmProfileStore store(m_file);
        fill(store);
        QVERIFY(store.overwrite({"B", "new.apn", "u2", "p2"}));
        QVERIFY(!store.overwrite({"Z", "z", "z", "z"}));
        GsmProfileStore loaded(m_file);
        loaded.load();
        QCOMPARE(names(loaded), (QStringList{"A", "B", "C"}));
        QCOMPARE(loaded.profiles().at(1), (GsmProfile{"B", "new.apn", "u2", "p2"}));
    }

    void remove_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("first") << 0 << QStringList{"B", "C"};
        QTest::newRow("middle keeps order") << 1 << QStringList{"A", "C"};
        QTest::newRow("last") << 2 << QStringList{"A", "B"};
        QTest::newRow("nothing selected") << -1 << QStringList{"A", "B", "C"};
        QTest::newRow("past the end") << 3 << QStringList{"A", "B", "C"};
    }
    void remove() {
        QFETCH(int, index);
        QFETCH(QStringList, names);
        GsmProfileStore store(m_file);
        fill(store);
        QCOMPARE(store.remove(index), names.size() == 2);
        QCOMPARE(reloaded(), names);
    }

    void fileLayout_isIndentedWithTheFourKeys() {
        GsmProfileStore store(m_file);
        fill(store);
        const QByteArray bytes = fileBytes();
        QVERIFY(bytes.contains("\n    \"Profiles\""));
        QCOMPARE(QJsonDocument::fromJson(bytes).object().value("Profiles").toArray().at(0).toObject(),
                 (QJsonObject{{"profileName", "A"}, {"apn", "a"}, {"apn_name", "u"}, {"apn_password", "p"}}));
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
        GsmProfileStore store(m_file);
        fill(store);
        QFile::remove(m_file);
        if (!content.isEmpty()) {
            QFile f(m_file);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(content);
        }
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
