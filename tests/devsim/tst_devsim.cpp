// Runs the real tavrel-devsim over a pseudo-terminal and talks to its boot loader through the protocol
// library.
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/SerialConnection.h"
#include "protocol/UNPParcer.h"
#include "tests/support/DeviceProbe.h"
#include "tests/support/DevsimProcess.h"
#include "update/UpdateChannel.h"

#include <QtTest>

using namespace UpdateChannel;

class tst_Devsim : public QObject {
    Q_OBJECT

private slots:
    // The loader announces the versions it was started with, and a page takes its time on the line:
    // 526 bytes at 19200 baud take 274 ms, well inside the loader's half-second repeat.
    void bootLoaderTakesPagesAtTheLineRate() {
        // The exchange log would drown the test's own lines.
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\ntavrel.*.debug=false"));
        DevsimProcess sim;
        QVERIFY(sim.start({"--pty", "--baud", "19200", "--fw-version", "4.10.21", "--hw-version", "1a05"}));
        QList<Message> messages;
        QElapsedTimer sincePage;
        qint64 confirmedAfterNs = -1;
        QByteArray pending;
        auto *link = new SerialConnection(sim.address());
        VantorConfiguration config;
        Device device(&config);
        DeviceWorkflows workflows(&device);
        device.setResponseInterval(1000);
        device.setLink(link);
        QVERIFY(link->open());
        // The loader's other side: its messages, decoded; page 0 goes out once it is asked for.
        device.setFirmwareHandler([&](const QByteArray &chunk) {
            if (pending.isEmpty() && !chunk.startsWith(char(Start)))
                return false;
            for (pending += chunk; pending.size() >= MessageSize; pending.remove(0, MessageSize)) {
                const Message m = decodeMessage(pending.left(MessageSize));
                if (!messageCrcValid(pending.left(MessageSize)))
                    continue;
                messages.append(m);
                if (m.kind == PageRequested && m.page == 0 && !sincePage.isValid()) {
                    link->write(encodePagePacket(0, QByteArray(PageSize, char(0x5A))));
                    sincePage.start();
                } else if (m.kind == PageConfirmed && m.page == 0 && confirmedAfterNs < 0) {
                    confirmedAfterNs = sincePage.nsecsElapsed();
                }
            }
            return true;
        });
        QSignalSpy entered(DeviceProbe::parser(device), &UNPParcer::OnFirmwareUpdateEnter);
        workflows.enterFirmwareUpdate();
        QTRY_VERIFY_WITH_TIMEOUT(confirmedAfterNs >= 0, 5000);
        QCOMPARE(entered.count(), 1);
        const Message first = messages.first();
        QCOMPARE(QVector<int>(
                     {first.kind, first.page, first.hardware, first.fwMajor, first.fwMiddle, first.fwBuild}),
                 QVector<int>({int(PageRequested), 0, 0x1a05, 4, 10, 21}));
        QVERIFY2(confirmedAfterNs >= 273959000ll, qPrintable(QString::number(confirmedAfterNs)));
    }
};

QTEST_GUILESS_MAIN(tst_Devsim)
#include "tst_devsim.moc"
