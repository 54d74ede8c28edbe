#include "pages/GSMSubnetsEditor.h"
#include "pages/PreferredNetworkStore.h"

#include <QLineEdit>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>

// The preferred-network editor, its built-in operator list and the file that keeps the lists.
class tst_GSMSubnetsEditor : public QObject {
    Q_OBJECT

private:
    static QStringList codes(const QVector<MobileOperator> &ops) {
        QStringList out;
        for (const MobileOperator &op : ops)
            out << op.code();
        return out;
    }

private slots:
    void filter_data() {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("codes");
        const char *const builtIn[][2] = {{"МТС", "25001"},   {"МегаФон", "25002"}, {"Yota", "25011"},
                                          {"Tele2", "25020"}, {"Мотив", "25035"},   {"Ростелеком", "25039"},
                                          {"Билайн", "25099"}};
        for (const auto &row : builtIn)
            QTest::newRow(row[0]) << QString::fromUtf8(row[0]) << QStringList{QString::fromLatin1(row[1])};
        QTest::newRow("lower-case name part") << "мега" << QStringList{"25002"};
        QTest::newRow("code prefix") << "2509" << QStringList{"25099"};
        QTest::newRow("code with dash") << "250-20" << QStringList{"25020"};
        QTest::newRow("no match") << "Vodafone" << QStringList();
    }
    void filter() {
        QFETCH(QString, query);
        QFETCH(QStringList, codes);
        QCOMPARE(tst_GSMSubnetsEditor::codes(MobileOperatorList::filter(query)), codes);
        QCOMPARE(MobileOperatorList::filter(QString()).size(), MobileOperatorList::russian().size());
    }

    void editor_searchAddMoveRemove() {
        GSMSubnetsEditor editor({{QStringLiteral("МТС"), 250, QStringLiteral("01")}}, 0);
        // The clear button fades in with an animation that would outlive this test without an event loop.
        editor.searchEdit()->setClearButtonEnabled(false);
        editor.searchEdit()->setText(QStringLiteral("билайн"));
        QCOMPARE(codes(editor.shownOperators()), QStringList{"25099"});
        editor.addShown(0);
        editor.addShown(0); // already listed
        editor.addManual(257, QStringLiteral("02"), QStringLiteral("A1"));
        editor.addManual(250, QStringLiteral("7"), QString()); // MNC too short
        QCOMPARE(codes(editor.networks()), (QStringList{"25001", "25099", "25702"}));
        editor.move(2, -1);
        QCOMPARE(codes(editor.networks()), (QStringList{"25001", "25702", "25099"}));
        editor.move(0, -1); // already first
        editor.removeAt(0);
        QCOMPARE(codes(editor.networks()), (QStringList{"25702", "25099"}));
    }

    // The operator table is the editor's main tool: several rows at once and whole names and headings.
    void editor_tableShowsSeveralWholeRows() {
        GSMSubnetsEditor editor({}, 0);
        editor.searchEdit()->setClearButtonEnabled(false);
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
        auto *table = editor.findChild<QTableWidget *>();
        QVERIFY(table);
        QVERIFY(table->rowCount() >= 6);
        QVERIFY2(table->viewport()->height() >= 6 * table->rowHeight(0),
                 qPrintable(QString::number(table->viewport()->height())));
        for (int column = 0; column < table->columnCount(); ++column) {
            int widest = table->fontMetrics().horizontalAdvance(table->horizontalHeaderItem(column)->text());
            for (int row = 0; row < table->rowCount(); ++row)
                widest =
                    qMax(widest, table->fontMetrics().horizontalAdvance(table->item(row, column)->text()));
            QVERIFY2(table->columnWidth(column) >= widest, qPrintable(QString::number(column)));
        }
    }

    void store_keepsEachSimsListInOrderAndReadsABrokenFileAsEmpty() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("nets.json"));
        PreferredNetworkStore store(file);
        store.setNetworks(0, {{QStringLiteral("Билайн"), 250, QStringLiteral("99")},
                              {QStringLiteral("МТС"), 250, QStringLiteral("01")}});
        store.setNetworks(1, {{QStringLiteral("Tele2"), 250, QStringLiteral("20")}});
        QVERIFY(store.save());
        PreferredNetworkStore loaded(file);
        loaded.load();
        QCOMPARE(loaded.networks(0), store.networks(0));
        QCOMPARE(loaded.networks(1), store.networks(1));
        QVERIFY(loaded.networks(2).isEmpty());

        QFile f(file);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("[1, 2");
        f.close();
        loaded.load();
        QVERIFY(loaded.networks(0).isEmpty());
        QVERIFY(loaded.networks(1).isEmpty());
    }
};

QTEST_MAIN(tst_GSMSubnetsEditor)
#include "tst_gsmsubnetseditor.moc"
