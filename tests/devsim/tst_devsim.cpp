// Runs the real tavrel-devsim and talks to it through the protocol library, as the configurator does.
#include <Devices/ByteOrder.h>
#include <Devices/DeviceInfoConfiguration.h>
#include <Devices/GSMConfiguration.h>
#include <Devices/ServerConfiguration.h>
#include <Devices/SystemConfiguration.h>
#include <Devices/VantorConfiguration.h>
#include <protocol/Device.h>
#include <protocol/DeviceWorkflows.h>
#include <protocol/Frame.h>
#include <protocol/SerialConnection.h>
#include <protocol/TcpConnection.h>
#include <protocol/UNPParcer.h>
#include <update/UpdateChannel.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

const QString devsimPath = QStringLiteral(TAVREL_BINARY_DIR "/tools/devsim/tavrel-devsim");
constexpr int StartTimeoutMs = 5000;

// The program under test; stopped with SIGTERM (as a user would) when the test ends.
class DevsimProcess {
public:
    ~DevsimProcess() { stop(); }

    bool start(const QStringList &args) {
        m_process.setProgram(devsimPath);
        m_process.setArguments(args);
        m_process.setProcessChannelMode(QProcess::SeparateChannels);
        m_process.start();
        if (!m_process.waitForStarted(StartTimeoutMs))
            return false;
        QElapsedTimer t;
        t.start();
        while (!m_process.canReadLine() && t.elapsed() < StartTimeoutMs &&
               m_process.state() == QProcess::Running)
            QTest::qWait(10);
        if (!m_process.canReadLine())
            return false;
        m_address = QString::fromLocal8Bit(m_process.readLine()).trimmed();
        return !m_address.isEmpty();
    }

    // SIGTERM, then the exit code (-1 if it had to be killed).
    int stop() {
        if (m_process.state() == QProcess::NotRunning)
            return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
        ::kill(pid_t(m_process.processId()), SIGTERM);
        if (!m_process.waitForFinished(3000)) {
            m_process.kill();
            m_process.waitForFinished(1000);
            return -1;
        }
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }

    QString address() const { return m_address; }
    QProcess &process() { return m_process; }

private:
    QProcess m_process;
    QString m_address;
};

// A configurator session on the protocol library: configuration, device, workflows, and what came back.
struct Session {
    VantorConfiguration config;
    Device device{&config};
    DeviceWorkflows workflows{&device};
    QList<QByteArray> answers; // payloads, in order
    QSet<int> sections;

    explicit Session(Connection *link) {
        device.setResponseInterval(1000);
        device.setLink(link);
        QObject::connect(&device, &Device::answerAccepted,
                         [this](quint8, const QByteArray &p) { answers.append(p); });
        QObject::connect(device.parser(), &UNPParcer::ConfigPackageDetected,
                         [this](int code) { sections.insert(code); });
    }

    // Status of the last status answer to a request with this code, or -1.
    int statusOf(quint8 code) const {
        for (int i = answers.size() - 1; i >= 0; --i) {
            const QByteArray &p = answers.at(i);
            if (kd::le::u8(p, 0) == code && (kd::le::u8(p, 1) & 0x80))
                return kd::le::u16(p, 4);
        }
        return -1;
    }
};

} // namespace

class tst_Devsim : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void identityAndEverySectionOverPty();
    void answersNobodyReadDoNotGreetTheNextSession();
    void writeIsAnsweredStoredAndReadBack();
    void passwordFlow();
    void blockedDeviceSaysSo();
    void resetAnswersPowerCycleAndRestoresDefaults();
    void telemetryOfEveryKindArrives();
    void splitAndPacedAnswersStillArrive();
    void hangUpEndsTheProgramAndRemovesTheLink();
    void firmwareUpdateHandsTheLineToTheBootLoader();
    void pagePacketReachesTheLoaderAtTheLineRate();
    void serverStandInHangsUpOnTheClient();
    void serverStandInAcceptsTheRightImeiOnly();
    void badCommandLineExitsWithUsage();

private:
    QTemporaryDir m_dir;
};

void tst_Devsim::initTestCase() {
    QVERIFY2(QFileInfo::exists(devsimPath), qPrintable(devsimPath));
    // The exchange log of every session would drown the test's own lines.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\ntavrel.*.debug=false"));
    QVERIFY(m_dir.isValid());
}

void tst_Devsim::identityAndEverySectionOverPty() {
    DevsimProcess sim;
    QVERIFY(sim.start({"--pty"}));
    QVERIFY2(sim.address().startsWith("/dev/pts/"), qPrintable(sim.address()));
    auto *link = new SerialConnection(sim.address());
    QVERIFY(link->open());
    Session s(link);
    QSignalSpy identified(s.device.parser(), &UNPParcer::DeviceInfoAcquired);
    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(identified.count(), 2, 5000);
    const kd::DeviceInfoConfiguration *info = s.config.deviceInfo();
    QCOMPARE(info->name(), QStringLiteral("Vantor micro"));
    QCOMPARE(info->IMEI(), QStringLiteral("863071014478127"));
    QCOMPARE(info->SerialNumber(), 100234u);
    QCOMPARE(info->Version(), 918u);

    s.workflows.readAll();
    const QSet<int> all{0x81, 0x83, 0x84, 0x88, 0x8C, 0x8D, 0x8E, 0x90, 0x91};
    QTRY_COMPARE_WITH_TIMEOUT(s.sections, all, 8000);
    QCOMPARE(s.config.gsm()->element(0)->apn(), QStringLiteral("internet.mts.ru"));
    QCOMPARE(s.config.gsm()->element(1)->apn(), QStringLiteral("internet"));
    QCOMPARE(s.config.servers()->value()->server(), QStringLiteral("gps.tavrel.ru"));
    QCOMPARE(s.config.servers()->value()->port(), 20629u);

    // The configurator closes the port and opens it again: the device is still there.
    link->close();
    QTest::qWait(200);
    QVERIFY(link->open());
    identified.clear();
    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(identified.count(), 2, 5000);
    QCOMPARE(sim.stop(), 0);
}

void tst_Devsim::answersNobodyReadDoNotGreetTheNextSession() {
    DevsimProcess sim;
    QVERIFY(sim.start({"--pty"}));
    {
        // A configurator asks for telemetry and goes away without reading the answer.
        const int fd = ::open(QFile::encodeName(sim.address()).constData(), O_RDWR | O_NOCTTY);
        QVERIFY(fd >= 0);
        const QByteArray request = proto::Frame::build(7, QByteArray::fromHex("820a0000"));
        QCOMPARE(::write(fd, request.constData(), size_t(request.size())), ssize_t(request.size()));
        QTest::qWait(700);
        ::close(fd);
    }
    auto *link = new SerialConnection(sim.address());
    QVERIFY(link->open());
    Session s(link);
    QSignalSpy identified(s.device.parser(), &UNPParcer::DeviceInfoAcquired);
    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(identified.count(), 2, 5000);
    QCOMPARE(s.answers.size(), 2);
    QCOMPARE(s.answers.first().left(2), QByteArray::fromHex("8101"));
}

void tst_Devsim::writeIsAnsweredStoredAndReadBack() {
    const QString state = m_dir.filePath("write.json");
    {
        DevsimProcess sim;
        QVERIFY(sim.start({"--pty", "--state", state}));
        auto *link = new SerialConnection(sim.address());
        QVERIFY(link->open());
        Session s(link);
        s.config.system()->value()->setParkingMin(41);
        s.config.gsm()->element(0)->setApn(QStringLiteral("written.apn"));
        s.config.gsm()->element(0)->setTimetableLow(0x1122334455667788ull);
        s.workflows.writeSystem();
        QTRY_COMPARE_WITH_TIMEOUT(s.statusOf(0x11), 1, 5000);
        s.workflows.writeGsm();
        QTRY_COMPARE_WITH_TIMEOUT(s.answers.size(), 5, 5000);
        const QByteArrayList heads{"048300000100", "048301000100", "048400000100", "048401000100"};
        for (int i = 0; i < heads.size(); ++i)
            QCOMPARE(s.answers.at(i + 1).toHex(), heads.at(i));

        s.config.system()->value()->setParkingMin(0);
        s.config.gsm()->element(0)->setApn(QString());
        s.config.gsm()->element(0)->setTimetableLow(0);
        s.sections.clear();
        s.workflows.readAll();
        QTRY_VERIFY_WITH_TIMEOUT(s.sections.contains(0x8E), 8000);
        QCOMPARE(int(s.config.system()->value()->parkingMin()), 41);
        QCOMPARE(s.config.gsm()->element(0)->apn(), QStringLiteral("written.apn"));
        QCOMPARE(s.config.gsm()->element(0)->timetableLow(), 0x1122334455667788ull);
        QCOMPARE(sim.stop(), 0);
    }
    // The state survives the program: a new device reads it back.
    QFile file(state);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    QCOMPARE(root.value("SystemParameters").toObject().value("parkingMin").toInt(), 41);

    DevsimProcess again;
    QVERIFY(again.start({"--pty", "--state", state}));
    auto *link = new SerialConnection(again.address());
    QVERIFY(link->open());
    Session s(link);
    s.workflows.readAll();
    QTRY_VERIFY_WITH_TIMEOUT(s.sections.contains(0x8E), 8000);
    QCOMPARE(int(s.config.system()->value()->parkingMin()), 41);
    QCOMPARE(s.config.gsm()->element(0)->timetableLow(), 0x1122334455667788ull);
}

void tst_Devsim::passwordFlow() {
    DevsimProcess sim;
    QVERIFY(sim.start({"--pty", "--password", "4321"}));
    auto *link = new SerialConnection(sim.address());
    QVERIFY(link->open());
    Session s(link);
    QSignalSpy needed(s.device.parser(), &UNPParcer::PasswordChange);
    QSignalSpy wrong(s.device.parser(), &UNPParcer::PasswordError);
    QSignalSpy complete(s.device.parser(), &UNPParcer::PasswordComplete);
    QSignalSpy identified(s.device.parser(), &UNPParcer::DeviceInfoAcquired);

    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(needed.count(), 2, 5000);
    QCOMPARE(identified.count(), 0);
    s.workflows.login(1234);
    QTRY_COMPARE_WITH_TIMEOUT(wrong.count(), 1, 5000);
    QCOMPARE(complete.count(), 0);
    s.workflows.login(4321);
    QTRY_COMPARE_WITH_TIMEOUT(complete.count(), 1, 5000);
    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(identified.count(), 2, 5000);
    QCOMPARE(s.config.deviceInfo()->IMEI(), QStringLiteral("863071014478127"));
}

void tst_Devsim::blockedDeviceSaysSo() {
    DevsimProcess sim;
    QVERIFY(sim.start({"--pty", "--blocked"}));
    auto *link = new SerialConnection(sim.address());
    QVERIFY(link->open());
    Session s(link);
    QSignalSpy blocked(s.device.parser(), &UNPParcer::DeviceBlocked);
    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(blocked.count(), 2, 5000);
    QCOMPARE(s.statusOf(0x81), 5);
    QVERIFY(s.sections.isEmpty());
}

void tst_Devsim::resetAnswersPowerCycleAndRestoresDefaults() {
    DevsimProcess sim;
    QVERIFY(sim.start({"--pty"}));
    auto *link = new SerialConnection(sim.address());
    QVERIFY(link->open());
    Session s(link);
    s.config.system()->value()->setParkingMin(99);
    s.workflows.writeSystem();
    QTRY_COMPARE_WITH_TIMEOUT(s.statusOf(0x11), 1, 5000);
    s.workflows.resetSettings();
    QTRY_COMPARE_WITH_TIMEOUT(s.statusOf(0x01), 6, 5000);
    s.workflows.clearMemory();
    QTRY_COMPARE_WITH_TIMEOUT(s.statusOf(0x01), 1, 5000);
    s.workflows.readAll();
    QTRY_VERIFY_WITH_TIMEOUT(s.sections.contains(0x91), 5000);
    QCOMPARE(int(s.config.system()->value()->parkingMin()), 5);
}

void tst_Devsim::telemetryOfEveryKindArrives() {
    DevsimProcess sim;
    QVERIFY(sim.start({"--pty"}));
    auto *link = new SerialConnection(sim.address());
    QVERIFY(link->open());
    Session s(link);
    QSet<int> kinds;
    connect(s.device.parser(), &UNPParcer::ControlTelemetry, this,
            [&kinds](int kind) { kinds.insert(kind); });
    QCOMPARE(s.workflows.pollTelemetry(), 15);
    const QSet<int> all{9, 10, 11, 12, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24};
    QTRY_COMPARE_WITH_TIMEOUT(kinds, all, 8000);
}

void tst_Devsim::splitAndPacedAnswersStillArrive() {
    DevsimProcess sim;
    QVERIFY(sim.start({"--pty", "--split", "--baud", "115200", "--latency", "5"}));
    auto *link = new SerialConnection(sim.address());
    QVERIFY(link->open());
    Session s(link);
    QSignalSpy identified(s.device.parser(), &UNPParcer::DeviceInfoAcquired);
    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(identified.count(), 2, 8000);
    QCOMPARE(s.config.deviceInfo()->name(), QStringLiteral("Vantor micro"));
}

void tst_Devsim::hangUpEndsTheProgramAndRemovesTheLink() {
    const QString linkPath = m_dir.filePath("tracker-tty");
    DevsimProcess sim;
    QVERIFY(sim.start({"--pty", "--link", linkPath, "--hangup-after", "1"}));
    QCOMPARE(QFileInfo(linkPath).symLinkTarget(), sim.address());
    auto *link = new SerialConnection(linkPath);
    QVERIFY(link->open());
    Session s(link);
    QSignalSpy identified(s.device.parser(), &UNPParcer::DeviceInfoAcquired);
    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(sim.process().state(), QProcess::NotRunning, 5000);
    QCOMPARE(sim.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(sim.process().exitCode(), 0);
    QVERIFY(!QFileInfo(linkPath).isSymLink());
    QVERIFY(s.sections.contains(0x81)); // the one answer made it before the line went dead
    QCOMPARE(identified.count(), 1);    // and the second request, sent while it drained, got none
}

void tst_Devsim::firmwareUpdateHandsTheLineToTheBootLoader() {
    using namespace UpdateChannel;
    DevsimProcess sim;
    QVERIFY(sim.start({"--pty", "--fw-version", "4.10.21", "--hw-version", "1a05"}));
    auto *link = new SerialConnection(sim.address());
    QVERIFY(link->open());
    Session s(link);

    // The test plays the configurator's page streamer: each page as it is asked for or the last confirmed.
    QByteArray pending;
    QList<Message> messages;
    int confirmedLast = -1;
    auto page = [](int n) { return QByteArray(PageSize, char(n * 7)); };
    s.device.setFirmwareHandler([&](const QByteArray &chunk) {
        if (pending.isEmpty() && !chunk.startsWith(char(Start)))
            return false;
        pending += chunk;
        while (pending.size() >= MessageSize) {
            const QByteArray bytes = pending.left(MessageSize);
            pending.remove(0, MessageSize);
            if (!messageCrcValid(bytes))
                continue;
            const Message m = decodeMessage(bytes);
            messages.append(m);
            if (m.kind == PageRequested)
                link->write(encodePagePacket(m.page, page(m.page)));
            else if (m.kind == PageConfirmed && m.page < LastPage)
                link->write(encodePagePacket(m.page + 1, page(m.page + 1)));
            else if (m.kind == PageConfirmed)
                confirmedLast = m.page;
        }
        return true;
    });
    QSignalSpy entered(s.device.parser(), &UNPParcer::OnFirmwareUpdateEnter);
    s.workflows.enterFirmwareUpdate();
    QTRY_COMPARE_WITH_TIMEOUT(entered.count(), 1, 5000);
    QTRY_VERIFY_WITH_TIMEOUT(!messages.isEmpty(), 5000);
    const Message first = messages.first();
    QCOMPARE(int(first.kind), int(PageRequested));
    QCOMPARE(int(first.page), 0);
    QCOMPARE(first.hardware, quint16(0x1a05));
    QCOMPARE(int(first.fwMajor), 4);
    QCOMPARE(int(first.fwMiddle), 10);
    QCOMPARE(int(first.fwBuild), 21);
    QTRY_COMPARE_WITH_TIMEOUT(confirmedLast, int(LastPage), 15000);

    // Written and restarted: the device speaks the configuration protocol again.
    s.device.setFirmwareHandler(nullptr);
    QSignalSpy identified(s.device.parser(), &UNPParcer::DeviceInfoAcquired);
    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(identified.count(), 2, 5000);
}

void tst_Devsim::pagePacketReachesTheLoaderAtTheLineRate() {
    using namespace UpdateChannel;
    DevsimProcess sim;
    // 526 bytes at 19200 baud take 274 ms on the line, well inside the loader's half-second repeat.
    QVERIFY(sim.start({"--pty", "--baud", "19200"}));
    auto *link = new SerialConnection(sim.address());
    QVERIFY(link->open());
    Session s(link);

    QByteArray pending;
    QElapsedTimer sincePage;
    qint64 confirmedAfterNs = -1;
    s.device.setFirmwareHandler([&](const QByteArray &chunk) {
        if (pending.isEmpty() && !chunk.startsWith(char(Start)))
            return false;
        pending += chunk;
        while (pending.size() >= MessageSize) {
            const QByteArray bytes = pending.left(MessageSize);
            pending.remove(0, MessageSize);
            if (!messageCrcValid(bytes))
                continue;
            const Message m = decodeMessage(bytes);
            if (m.kind == PageRequested && m.page == 0 && !sincePage.isValid()) {
                link->write(encodePagePacket(0, QByteArray(PageSize, char(0x5A))));
                sincePage.start();
            } else if (m.kind == PageConfirmed && m.page == 0 && confirmedAfterNs < 0) {
                confirmedAfterNs = sincePage.nsecsElapsed();
            }
        }
        return true;
    });
    s.workflows.enterFirmwareUpdate();
    QTRY_VERIFY_WITH_TIMEOUT(confirmedAfterNs >= 0, 5000);
    QVERIFY2(confirmedAfterNs >= 273959000ll, qPrintable(QString::number(confirmedAfterNs)));
}

void tst_Devsim::serverStandInHangsUpOnTheClient() {
    DevsimProcess sim;
    QVERIFY(sim.start({"--tcp", "0", "--imei", "42", "--hangup-after", "2"}));
    const quint16 port = quint16(sim.address().section(':', 1).toUInt());
    const QByteArray request = proto::Frame::build(6, QByteArray::fromHex("81020000"));
    const QByteArray answer = proto::Frame::build(6, QByteArray::fromHex("81020000") + "Vantor micro" + '\0');

    QTcpSocket first;
    first.connectToHost(QHostAddress::LocalHost, port);
    QVERIFY(first.waitForConnected(3000));
    first.write(proto::Frame::textFrame(proto::ServerLoginPacketType, "42") + request + request);
    QTRY_COMPARE_WITH_TIMEOUT(first.state(), QAbstractSocket::UnconnectedState, 5000);
    QCOMPARE(first.readAll(), answer + answer); // both answers, then the line goes dead

    // The server keeps listening and the device hangs up only once: a later client stays.
    QTcpSocket second;
    second.connectToHost(QHostAddress::LocalHost, port);
    QVERIFY(second.waitForConnected(3000));
    second.write(proto::Frame::textFrame(proto::ServerLoginPacketType, "42") + request + request);
    QTRY_COMPARE_WITH_TIMEOUT(second.bytesAvailable(), qint64(2 * answer.size()), 5000);
    QTest::qWait(50);
    QCOMPARE(second.state(), QAbstractSocket::ConnectedState);
    QCOMPARE(sim.process().state(), QProcess::Running);
}

void tst_Devsim::serverStandInAcceptsTheRightImeiOnly() {
    DevsimProcess sim;
    QVERIFY(sim.start({"--tcp", "0"}));
    const QStringList hostPort = sim.address().split(':');
    QCOMPARE(hostPort.size(), 2);
    QCOMPARE(hostPort.first(), QStringLiteral("127.0.0.1"));
    const quint16 port = quint16(hostPort.last().toUInt());
    QVERIFY(port != 0);

    QTcpSocket stranger;
    stranger.connectToHost(QHostAddress::LocalHost, port);
    QVERIFY(stranger.waitForConnected(3000));
    stranger.write(proto::Frame::textFrame(proto::ServerLoginPacketType, "000000000000000"));
    QTRY_COMPARE_WITH_TIMEOUT(stranger.state(), QAbstractSocket::UnconnectedState, 5000);

    auto *link = new TcpConnection("127.0.0.1", port, "863071014478127");
    Session s(link);
    QSignalSpy connected(link, &Connection::connected);
    QVERIFY(link->open());
    QTRY_COMPARE_WITH_TIMEOUT(connected.count(), 1, 5000);
    QSignalSpy identified(s.device.parser(), &UNPParcer::DeviceInfoAcquired);
    s.workflows.readIdentity();
    QTRY_COMPARE_WITH_TIMEOUT(identified.count(), 2, 5000);
    QCOMPARE(s.config.deviceInfo()->IMEI(), QStringLiteral("863071014478127"));
    QCOMPARE(sim.stop(), 0);
}

void tst_Devsim::badCommandLineExitsWithUsage() {
    QProcess p;
    p.start(devsimPath, {"--pty", "--tcp", "0"});
    QVERIFY(p.waitForFinished(5000));
    QCOMPARE(p.exitCode(), 2);
    QVERIFY(p.readAllStandardOutput().isEmpty());
    QVERIFY(p.readAllStandardError().contains("Usage"));

    // --link never replaces a file that is not a link.
    const QString path = m_dir.filePath("notes.txt");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("keep");
    file.close();
    p.start(devsimPath, {"--pty", "--link", path});
    QVERIFY(p.waitForFinished(5000));
    QCOMPARE(p.exitCode(), 1);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("keep"));
}

QTEST_GUILESS_MAIN(tst_Devsim)
#include "tst_devsim.moc"
