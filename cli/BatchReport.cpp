#include "cli/BatchReport.h"
#include "Devices/SectionTable.h"
#include "Devices/WriteErrorText.h"

#include <QSaveFile>

namespace {

QString cell(const QString &text) {
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
        !text.contains(QLatin1Char('\n')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString checkText(BatchRow::Check check) {
    switch (check) {
    case BatchRow::Check::Passed:
        return QStringLiteral("да");
    case BatchRow::Check::Failed:
        return QStringLiteral("нет");
    case BatchRow::Check::NotDone:
        break;
    }
    return QStringLiteral("не проводилась");
}

// The sections by the names the rest of the tool uses ("системные параметры, навигация").
QString sectionsText(const QStringList &keys) {
    QStringList names;
    for (const QString &key : keys) {
        const kd::Section *section = kd::sectionByKey(key);
        names << (section ? section->displayName : key);
    }
    return names.join(QStringLiteral(", "));
}

} // namespace

QString BatchRow::resultText() const {
    if (!passed)
        return QStringLiteral("ошибка: %1").arg(failure);
    return note.isEmpty() ? QStringLiteral("успешно") : QStringLiteral("успешно (%1)").arg(note);
}

QString BatchRow::line() const {
    return QStringLiteral("%1 (%2): %3")
        .arg(imei.isEmpty() ? QStringLiteral("IMEI неизвестен") : imei, port, resultText());
}

QString BatchReport::header() {
    return QStringLiteral("время,порт,IMEI,прошивка до,прошивка после,результат,отличались разделы,проверка");
}

QString BatchReport::csvLine(const BatchRow &row) {
    return QStringList{row.time.toString(Qt::ISODate),
                       cell(row.port),
                       row.imei,
                       row.firmwareBefore,
                       row.firmwareAfter,
                       cell(row.resultText()),
                       cell(sectionsText(row.differed)),
                       checkText(row.verification)}
        .join(QLatin1Char(','));
}

bool BatchReport::save(const QString &path, const QVector<BatchRow> &rows, QString *error) {
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        QString text = header() + QLatin1Char('\n');
        for (const BatchRow &row : rows)
            text += csvLine(row) + QLatin1Char('\n');
        file.write(text.toUtf8());
        if (file.commit())
            return true;
    }
    *error =
        QStringLiteral("не удалось записать отчет: %1").arg(kd::writeErrorText(path, file.errorString()));
    return false;
}
