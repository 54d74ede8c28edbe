#include "pages/MobileOperatorList.h"

const QVector<MobileOperator> &MobileOperatorList::russian() {
    static const QVector<MobileOperator> list = {
        {QStringLiteral("МТС"), 250, QStringLiteral("01")},
        {QStringLiteral("МегаФон"), 250, QStringLiteral("02")},
        {QStringLiteral("Енисейтелеком"), 250, QStringLiteral("05")},
        {QStringLiteral("Вайнах Телеком"), 250, QStringLiteral("08")},
        {QStringLiteral("Yota"), 250, QStringLiteral("11")},
        {QStringLiteral("СМАРТС"), 250, QStringLiteral("15")},
        {QStringLiteral("Tele2"), 250, QStringLiteral("20")},
        {QStringLiteral("Летай"), 250, QStringLiteral("27")},
        {QStringLiteral("Мотив"), 250, QStringLiteral("35")},
        {QStringLiteral("Ростелеком"), 250, QStringLiteral("39")},
        {QStringLiteral("СберМобайл"), 250, QStringLiteral("50")},
        {QStringLiteral("Т-Мобайл"), 250, QStringLiteral("62")},
        {QStringLiteral("Билайн"), 250, QStringLiteral("99")},
    };
    return list;
}

QVector<MobileOperator> MobileOperatorList::filter(const QString &query) {
    const QString text = query.trimmed();
    QString digits = text;
    digits.remove(QLatin1Char(' ')).remove(QLatin1Char('-'));
    QVector<MobileOperator> found;
    for (const MobileOperator &op : russian()) {
        if (text.isEmpty() || op.name.contains(text, Qt::CaseInsensitive) ||
            (!digits.isEmpty() && op.code().startsWith(digits)))
            found.append(op);
    }
    return found;
}
