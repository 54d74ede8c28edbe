#include "pages/ServersWidget.h"
#include "pages/SettingsTransmittDataToServer.h"
#include "tests/pages/PageSession.h"

#include "Devices/ServerConfiguration.h"

// The servers page and its ServersWidget.
class tst_SettingsTransmittDataToServer : public QObject {
    Q_OBJECT

private:
    static QString serverFrame(int enable, const QByteArray &address, quint32 port, int proto) {
        QByteArray body(1, char(enable));
        body += address.leftJustified(32, '\0', true);
        for (int i = 0; i < 4; ++i)
            body += char((port >> (8 * i)) & 0xFF);
        body += char(proto);
        return QStringLiteral("6:10010000") + QString::fromLatin1(body.toHex());
    }

private slots:
    void roundTrip_data() {
        QTest::addColumn<int>("enable");
        QTest::addColumn<QString>("address");
        QTest::addColumn<quint32>("port");
        QTest::addColumn<int>("proto");
        QTest::addColumn<QString>("protoShown");
        QTest::newRow("lowest") << 0 << QString() << quint32(0) << 0 << "TAVREL UNP";
        QTest::newRow("highest") << 1 << QStringLiteral("a.very-long-server-name.example1")
                                 << quint32(4294967295U) << 1 << "WIALON COMBINE";
        QTest::newRow("usual") << 1 << QStringLiteral("192.168.10.5") << quint32(20332) << 0 << "TAVREL UNP";
        QTest::newRow("unknown protocol kept")
            << 1 << QStringLiteral("srv") << quint32(1) << 7 << "Протокол 7";
    }
    void roundTrip() {
        QFETCH(int, enable);
        QFETCH(QString, address);
        QFETCH(quint32, port);
        QFETCH(int, proto);
        QFETCH(QString, protoShown);

        PageSession s;
        SettingsTransmittDataToServer page(&s.configuration);
        VantorConfiguration device;
        ServerConfigurationItem *d = device.servers()->value();
        d->setEnable(enable);
        d->setServer(address);
        d->setPort(port);
        d->setProto(proto);
        s.configuration.servers()->decode(device.servers()->encodeAnswer());

        ServersWidget *w = page.server(0);
        QCOMPARE(int(w->enable->isChecked()), enable);
        QCOMPARE(w->address->text(), address);
        QCOMPARE(quint32(w->port->value()), port);
        QCOMPARE(w->protocol->currentText(), protoShown);
        QVERIFY(!page.isModified());

        ServerConfigurationItem *item = s.configuration.servers()->value();
        item->setServer(QStringLiteral("changed"));
        item->setPort(5);
        item->setProto(3);
        page.applyToDevice(s.workflows);
        QCOMPARE(s.queued(), QStringList{serverFrame(enable, address.toLatin1(), port, proto)});
    }

    void cyrillicAddress_isNotSent() {
        PageSession s;
        s.configuration.servers()->value()->setServer(QStringLiteral("сервер.рф"));
        SettingsTransmittDataToServer page(&s.configuration);
        ScriptedAsker asker;
        page.setNotifier(asker.notifier());
        QVERIFY(!page.applyToDevice(s.workflows));
        QVERIFY(s.queued().isEmpty());
        QCOMPARE(asker.asked.size(), 1);
        QVERIFY(asker.asked.first().contains(QStringLiteral("Адрес сервера 1")));
    }
};

QTEST_MAIN(tst_SettingsTransmittDataToServer)
#include "tst_settingstransmittdatatoserver.moc"
