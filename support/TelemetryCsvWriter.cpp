#include "support/TelemetryCsvWriter.h"
#include "Devices/WriteErrorText.h"

#include "support/TelemetrySeries.h"

#include <QDateTime>
#include <QStringList>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

const QLatin1String PartSuffix(".part");

QString quoted(const QString &cell) {
    if (!cell.contains(QLatin1Char(TelemetryCsvWriter::Separator)) && !cell.contains(QLatin1Char('"')))
        return cell;
    QString q = cell;
    q.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + q + QLatin1Char('"');
}

} // namespace

TelemetryCsvWriter::~TelemetryCsvWriter() {
    close();
}

QString TelemetryCsvWriter::titleLine() {
    QStringList cells{QStringLiteral("Время")};
    for (const TelemetrySeries::Column &c : TelemetrySeries::columns())
        cells << quoted(TelemetrySeries::titleWithUnit(c));
    return cells.join(QLatin1Char(Separator));
}

QString TelemetryCsvWriter::keyLine() {
    QStringList cells{QStringLiteral("time")};
    for (const TelemetrySeries::Column &c : TelemetrySeries::columns())
        cells << c.key;
    return cells.join(QLatin1Char(Separator));
}

QString TelemetryCsvWriter::rowLine(const QDateTime &time, const QVector<double> &values) {
    // Local time with its offset, so rows from two time zones still sort and compare.
    QStringList cells{time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate)};
    const QVector<TelemetrySeries::Column> &columns = TelemetrySeries::columns();
    for (int i = 0; i < columns.size(); ++i) {
        const double v = i < values.size() ? values[i] : std::nan("");
        cells << (std::isnan(v) ? QString() : QString::number(v, 'f', columns[i].decimals));
    }
    return cells.join(QLatin1Char(Separator));
}

bool TelemetryCsvWriter::open(const QString &path, QString *error) {
    close();
    m_path = path;
    m_rows = 0;
    m_file.setFileName(path + PartSuffix);
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate) || !writeLine(titleLine()) ||
        !writeLine(keyLine())) {
        if (error)
            *error = kd::writeErrorText(path, m_file.errorString());
        m_file.close();
        m_file.remove();
        return false;
    }
    return true;
}

bool TelemetryCsvWriter::writeRound(const QDateTime &time, const QVector<double> &values) {
    if (!isOpen() || !writeLine(rowLine(time, values)))
        return false;
    ++m_rows;
    return true;
}

bool TelemetryCsvWriter::writeLine(const QString &line) {
    const QByteArray bytes = line.toUtf8() + '\n';
    return m_file.write(bytes) == bytes.size() && m_file.flush();
}

bool TelemetryCsvWriter::close(QString *error) {
    if (!isOpen())
        return true;
    m_file.close();
    // rename(2) replaces an existing file in one step; QFile::rename would refuse it.
    if (std::rename(QFile::encodeName(m_file.fileName()).constData(),
                    QFile::encodeName(m_path).constData()) == 0)
        return true;
    if (error)
        *error = QString::fromLocal8Bit(std::strerror(errno));
    return false;
}
