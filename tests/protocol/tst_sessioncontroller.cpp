// The session's state machine against a scripted device behind a fake link: every row starts a session,
// lets the device behave as the row says and compares what the session reported, in order.
#include "protocol/SessionController.h"
#include "tests/support/FakeLink.h"
#include "tests/support/SectionsFixture.h"

#include "protocol/Frame.h"
#include "protocol/UNPParcer.h"

#include <QtTest>

namespace {

// A device in a few lines: a password it asks for, a blocked state, and answers that can go missing.
class ScriptedLink : public FakeLink {
    Q_OBJECT
public:
    quint32 password = 0;
    bool loggedIn = false;
    bool blocked = false;
    bool silent = false;
    // Answers every access block of the GSM section with the status of SIM 1 (a stale status on the line).
    bool echoFirstSim = false;
    int loginDelayMs = 0;
    int dataDelayMs = 0;
    // Counted into the test's own variable: the session may delete the link before the check.
    int *logins = nullptr;

    qint64 write(const QByteArray &bytes) override {
        written << bytes;
        const quint8 type = quint8(bytes.at(proto::Frame::TypeOffset));
        QByteArray p = bytes.mid(proto::Frame::PayloadOffset, 4).leftJustified(4, '\0');
        const bool login = type == proto::CommandPacketType && p.at(0) == 1 && p.at(1) == 1;
        if (login && logins)
            ++*logins;
        if (silent)
            return bytes.size();
        quint16 status = UNPParcer::Executed;
        if (blocked)
            status = UNPParcer::Blocked;
        else if (login)
            status = (loggedIn = bytes.mid(proto::Frame::PayloadOffset + 4, 4) ==
                                 QByteArray::fromRawData(reinterpret_cast<const char *>(&password), 4))
                         ? UNPParcer::Executed
                         : UNPParcer::WrongPassword;
        else if (password && !loggedIn)
            status = UNPParcer::AuthorisationNeeded;
        else if ((quint8(p.at(0)) & 0x80) || (type == proto::CommandPacketType && quint8(p.at(0)) == 0x82)) {
            const QByteArray answer = proto::Frame::build(type, p + QByteArray(4, '\0'));
            QTimer::singleShot(dataDelayMs, this, [this, answer] { deliverNow(answer); });
            return bytes.size();
        }
        if (echoFirstSim && p.at(0) == 4 && p.at(1) == 3)
            p[2] = 0;
        p[1] = char(quint8(p.at(1)) | 0x80);
        const QByteArray answer =
            proto::Frame::build(type, p + QByteArray(1, char(status)) + QByteArray(1, '\0'));
        QTimer::singleShot(login ? loginDelayMs : 0, this, [this, answer] { deliverNow(answer); });
        return bytes.size();
    }
};

using State = SessionController::State;

} // namespace

class tst_SessionController : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); }

    void session_data() {
        QTest::addColumn<quint32>("devicePassword");
        QTest::addColumn<quint32>("startupPassword");
        QTest::addColumn<QList<quint32>>("typed"); // on each question, in order; none left: give up
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<int>("logins");
        const auto row = [](const char *name, quint32 device, quint32 startup, const QList<quint32> &typed,
                            const char *script, const QString &events, int logins) {
            QTest::newRow(name) << device << startup << typed << QString(script) << events.split(' ')
                                << logins;
        };
        const QString identified = "Connecting Identifying identified Ready";
        row("plain", 0, 0, {}, "", identified, 0);
        // The start-up password goes once, without a question, and the identity read that was refused
        // before the login is sent again.
        row("password at start", 1234, 1234, {}, "",
            "Connecting Identifying PasswordRequired accepted Identifying identified Ready", 1);
        row("wrong then right", 1234, 1111, {1234}, "",
            "Connecting Identifying PasswordRequired rejected asked accepted Identifying identified Ready",
            2);
        // A second password typed before the first one's answer: the late refusal of the first means nothing.
        row("replaced login answer ignored", 1234, 0, {1111, 1234}, "retype",
            "Connecting Identifying PasswordRequired asked accepted Identifying identified Ready", 2);
        row("password abandoned", 1234, 0, {}, "",
            "Connecting Identifying PasswordRequired asked job:PasswordAbandoned Disconnected", 0);
        row("blocked", 0, 0, {}, "blocked", "Connecting Identifying Ready job:Blocked blocked", 0);
        row("link error", 0, 0, {}, "error", identified + " Busy job:LinkLost Lost failed:DeviceGone", 0);
        row("link closed", 0, 0, {}, "closed", identified + " Busy job:LinkLost Lost failed:LinkClosed", 0);
        row("four time-outs", 0, 0, {}, "silent", identified + " Busy Lost lost job:LinkLost Disconnected",
            0);
        row("silent, then back", 0, 0, {}, "back",
            identified + " Lost lost job:Cancelled Ready restored job:Done", 0);
        // A telemetry round is replaced by the full read: none of its requests follows the read's first one.
        row("read all clears the queue", 0, 0, {}, "telemetry",
            identified + " job:Cancelled Busy Ready job:Done", 0);
        // The status of SIM 1's block confirms SIM 1 only, however often it comes.
        row("status of another block", 0, 0, {}, "echo", identified + " Busy Ready job:Done", 0);
    }

    void session() {
        QFETCH(quint32, devicePassword);
        QFETCH(quint32, startupPassword);
        QFETCH(QList<quint32>, typed);
        QFETCH(QString, script);
        QFETCH(QStringList, events);
        QFETCH(int, logins);

        auto *cfg = makeConfiguration(this);
        SessionController session(cfg);
        auto *link = new ScriptedLink;
        int loginCount = 0;
        link->logins = &loginCount;
        link->password = devicePassword;
        link->blocked = script == "blocked";
        link->echoFirstSim = script == "echo";
        link->loginDelayMs = script == "retype" ? 10 : 0;
        link->dataDelayMs = script == "telemetry" ? 5 : 0;
        session.setLinkFactory([link](const SessionController::Settings &) { return link; });
        QStringList log;
        JobResult last;
        connect(&session, &SessionController::stateChanged, this, [&](State s) {
            log << QString::fromLatin1(QMetaEnum::fromType<State>().valueToKey(int(s)));
        });
        connect(&session, &SessionController::identified, this, [&] { log << "identified"; });
        connect(&session, &SessionController::passwordAccepted, this, [&] { log << "accepted"; });
        connect(&session, &SessionController::passwordRejected, this, [&](const QString &text) {
            QCOMPARE(text, QStringLiteral("....Введен неправильный пароль"));
            log << "rejected";
        });
        connect(&session, &SessionController::passwordRequested, this, [&] {
            log << "asked";
            if (typed.isEmpty())
                return session.abandonLogin();
            session.submitPassword(typed.takeFirst());
            if (script == "retype" && !typed.isEmpty())
                QTimer::singleShot(2, &session, [&] { session.submitPassword(typed.takeFirst()); });
        });
        connect(&session, &SessionController::deviceBlocked, this, [&] { log << "blocked"; });
        connect(&session, &SessionController::connectionLost, this, [&] {
            log << "lost";
            if (script != "back")
                return session.disconnectDevice();
            link->silent = false;
            session.cancelJob();
            QVERIFY(!session.readAll() && session.telemetryRound()); // only telemetry probes a silent device
        });
        connect(&session, &SessionController::connectionRestored, this, [&] { log << "restored"; });
        connect(&session, &SessionController::linkFailed, this, [&](const LinkFailure &f) {
            log << QStringLiteral("failed:") +
                       (f.error == LinkError::DeviceGone ? "DeviceGone" : "LinkClosed");
        });
        connect(&session, &SessionController::jobFinished, this, [&](const JobResult &r) {
            static const char *const ends[] = {"Done",          "LinkLost", "Blocked",  "PasswordAbandoned",
                                               "WrongPassword", "Deadline", "Cancelled"};
            if (r.kind != JobResult::Kind::Identity || r.end != JobResult::End::Done)
                log << QStringLiteral("job:") + ends[int(r.end)];
            last = r;
        });

        SessionController::Settings settings;
        settings.portName = "fake";
        settings.hasPassword = startupPassword != 0;
        settings.password = startupPassword;
        settings.responseIntervalMs = 20;
        settings.jobRounds = 1;
        session.connectDevice(settings);
        QTRY_VERIFY(session.state() == State::Ready || session.state() == State::Disconnected);
        QCOMPARE(loginCount, logins);
        if (script == "back") {
            link->silent = true;
            QVERIFY(session.telemetryRound());
        } else if (script == "error" || script == "closed" || script == "silent") {
            link->silent = true;
            QVERIFY(session.readAll());
            if (script == "error")
                emit link->error(Connection::SerialError, 9);
            else if (script == "closed")
                emit link->disconnected();
        } else if (script == "telemetry") {
            QVERIFY(session.telemetryRound());
            QTest::qWait(2); // one telemetry request on the line, the rest still queued
            QVERIFY(session.readAll());
            const int readStart = link->written.size();
            QTRY_VERIFY(!session.isJobRunning());
            for (const QByteArray &frame : link->written.mid(readStart))
                QVERIFY(quint8(frame.at(proto::Frame::PayloadOffset)) != 0x82);
        } else if (script == "echo") {
            QVERIFY(session.writeSection(kd::keys::Gsm));
            QTRY_VERIFY(!session.isJobRunning());
            QCOMPARE(last.labels(JobResult::Outcome::Confirmed),
                     QStringList({"GSM (провайдер SIM1)", "GSM (роуминг SIM1)", "GSM (роуминг SIM2)"}));
            QCOMPARE(last.labels(JobResult::Outcome::NotAnswered), QStringList{"GSM (провайдер SIM2)"});
        }
        QTRY_COMPARE(log, events);
    }
};

QTEST_GUILESS_MAIN(tst_SessionController)
#include "tst_sessioncontroller.moc"
