#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

// One programmed tracker as the bench's report lists it.
struct BatchRow {
    enum class Check { NotDone, Passed, Failed };

    QDateTime time;
    QString port;
    QString imei;
    QString firmwareBefore;
    QString firmwareAfter;
    bool passed = false;
    QString failure;      // why it did not pass
    QString note;         // said beside a pass
    QStringList differed; // the sections whose values the device held other than the target
    Check verification = Check::NotDone;

    QString resultText() const;
    // "863071010000013: успешно" or "...: ошибка: <reason>", the line the bench prints per tracker.
    QString line() const;
};

// The report: a header line and one comma-separated line per tracker, quoted where a cell needs it, so a
// spreadsheet opens it as it is.
struct BatchReport {
    static QString header();
    static QString csvLine(const BatchRow &row);
    // Writes the whole report atomically (a run stopped half-way leaves the last complete one).
    static bool save(const QString &path, const QVector<BatchRow> &rows, QString *error);
};
