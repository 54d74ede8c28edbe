#pragma once

#include <QFile>
#include <QString>
#include <QVector>

class QDateTime;

// A telemetry recording: one CSV line per telemetry round, "time" first, then one column per
// TelemetrySeries column. The first line holds the Russian titles with units, the second the stable
// column keys; a value the device did not report is an empty cell. Rows go to "<file>.part" and are
// flushed as they come, so a crash keeps them; close() puts the finished file in place in one rename.
class TelemetryCsvWriter {
public:
    TelemetryCsvWriter() = default;
    ~TelemetryCsvWriter();
    TelemetryCsvWriter(const TelemetryCsvWriter &) = delete;
    TelemetryCsvWriter &operator=(const TelemetryCsvWriter &) = delete;

    static constexpr char Separator = ',';

    // Starts a recording (the header lines are written at once); false with the reason on failure.
    bool open(const QString &path, QString *error);
    bool writeRound(const QDateTime &time, const QVector<double> &values);
    // Ends the recording; false with the reason when the file could not be put in place.
    bool close(QString *error = nullptr);
    bool isOpen() const { return m_file.isOpen(); }
    QString path() const { return m_path; }
    int rows() const { return m_rows; }

    static QString titleLine();
    static QString keyLine();
    static QString rowLine(const QDateTime &time, const QVector<double> &values);

private:
    bool writeLine(const QString &line);

    QFile m_file;
    QString m_path;
    int m_rows = 0;
};
