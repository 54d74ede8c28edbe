#pragma once

#include "protocol/LinkError.h"

#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVector>

// What became of one job of the session, request by request.
struct JobResult {
    enum class Kind {
        Identity,
        ReadAll,
        WriteAll,
        WriteSection,
        ClearMemory,
        Reset,
        SetPassword,
        Telemetry,
        FirmwareUpdate,
    };
    enum class Outcome {
        Answered,    // a read got its data
        Confirmed,   // the device confirmed a write or a command with its status answer
        NotAnswered, // sent, but no answer of its own came
        Refused,     // the device answered with a refusal (status says which)
        NotSent,     // never left the configurator
    };
    enum class End {
        Done,              // every request had its chance
        LinkLost,          // the link failed or the user gave up on a silent device (failure says why)
        Blocked,           // the device refused work
        PasswordAbandoned, // the device wants a password the user did not give
        WrongPassword,     // the device refused the password
        Deadline,          // the job's time ran out
        Cancelled,         // cancelled, or replaced by a job that empties the queue
    };
    struct Request {
        QString label; // as the user calls it: "навигация на стоянке", "сервер 2"
        QString sectionKey; // the section it reads or writes; empty for commands
        Outcome outcome = Outcome::NotSent;
        QString status; // the device's status text of a refusal
    };

    Kind kind = Kind::Identity;
    End end = End::Done;
    QVector<Request> requests;
    LinkFailure failure;    // what cut the job short (End::LinkLost)
    QString powerCycleText; // the device takes a reset only after its power has been cut

    // Every request answered or confirmed.
    bool ok() const;
    QStringList labels(Outcome outcome) const;
    // The labels that did not come through (not answered, refused with the status, not sent), one list.
    QStringList failedLabels() const;
    // A new password was sent but not confirmed: it may already be in force.
    bool passwordMayBeInForce() const;
    // One line for a job that did not come through: "нет ответа: ...; отказ: ..."; for a job cut short also
    // what was confirmed, sent without confirmation and not sent.
    QString summary() const;
};
Q_DECLARE_METATYPE(JobResult)
