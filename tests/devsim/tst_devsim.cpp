// Runs the real tavrel-devsim over a pseudo-terminal and talks to it through the protocol library.
#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/Frame.h"
#include "protocol/SerialConnection.h"
#include "protocol/UNPParcer.h"
#include "tests/support/DeviceProbe.h"
#include "tests/support/DevsimProcess.h"
#include "update/UpdateChannel.h"

#include <QProcess>
#include <QtTest>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <unistd.h>

using namespace UpdateChannel;

namespace {

// A configurator session on the protocol library: configuration, device, workflows, and what came back.
struct Session {
    SerialConnection *link;
    VantorConfiguration config;
    Device device{&config};
    DeviceWorkflows workflows{&device};
    QList<QByteArray> answers; // payloads, in order
    QSignalSpy identified{DeviceProbe::parser(device), &UNPParcer::DeviceInfoAcquired};

    explicit Session(const QString &path)
        : link(new SerialConnection(path)) {
        device.setResponseInterval(1000);
        device.setLink(link);
        QObject::connect(&device, &Device::answerAccepted,
                         [this](quint8, const QByteArray &p) { answers.append(p); });
        link->open();
    }

    // Plays the boot loader's other side: every loader message, decoded, goes to onMessage.
    void streamFirmware(std::function<void(const Message &)> onMessage) {
        auto pending = std::make_shared<QByteArray>();
        device.setFirmwareHandler([pending, onMessage](const QByteArray &chunk) {
            if (pending->isEmpty() && !chunk.startsWith(char(Start)))
                return false;
            *pending += chunk;
            while (pending->size() >= MessageSize) {
                const QByteArray bytes = pending->left(MessageSize);
                pending->remove(0, MessageSize);
                if (messageCrcValid(bytes))
                    onMessage(decodeMessage(bytes));
            }
            return true;
        });
    }
};

} // namespace

class tst_Devsim : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(QFileInfo::exists(TAVREL_BINARY_DIR "/tools/devsim/tavrel-devsim"));
        // The exchange log of every session would drown the test's own lines.
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\ntavrel.*.debug=false"));
    }

    void answersNobodyReadDoNotGreetTheNextSession() {
        DevsimProcess sim;
        QVERIFY(sim.start({"--pty"}));
        // A configurator asks for telemetry and goes away without reading the answer.
        const int fd = ::open(QFile::encodeName(sim.address()).constData(), O_RDWR | O_NOCTTY);
        QVERIFY(fd >= 0);
        const QByteArray request = proto::Frame::build(7, QByteArray::fromHex("820a0000"));
        QCOMPARE(::write(fd, request.constData(), size_t(request.size())), ssize_t(request.size()));
        QTest::qWait(700);
        ::close(fd);

        Session s(sim.address());
        QVERIFY(s.link->isOpen());
        s.workflows.readIdentity();
        QTRY_COMPARE_WITH_TIMEOUT(s.identified.count(), 2, 5000);
        QCOMPARE(s.answers.size(), 2);
        QCOMPARE(s.answers.first().left(2), QByteArray::fromHex("8101"));
    }

    // The loader announces the versions it was started with, and a page takes its time on the line:
    // 526 bytes at 19200 baud take 274 ms, well inside the loader's half-second repeat.
    void bootLoaderTakesPagesAtTheLineRate() {
        DevsimProcess sim;
        QVERIFY(sim.start({"--pty", "--baud", "19200", "--fw-version", "4.10.21", "--hw-version", "1a05"}));
        Session s(sim.address());
        QVERIFY(s.link->isOpen());
        QList<Message> messages;
        QElapsedTimer sincePage;
        qint64 confirmedAfterNs = -1;
        s.streamFirmware([&](const Message &m) {
            messages.append(m);
            if (m.kind == PageRequested && m.page == 0 && !sincePage.isValid()) {
                s.link->write(encodePagePacket(0, QByteArray(PageSize, char(0x5A))));
                sincePage.start();
            } else if (m.kind == PageConfirmed && m.page == 0 && confirmedAfterNs < 0) {
                confirmedAfterNs = sincePage.nsecsElapsed();
            }
        });
        QSignalSpy entered(DeviceProbe::parser(s.device), &UNPParcer::OnFirmwareUpdateEnter);
        s.workflows.enterFirmwareUpdate();
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
