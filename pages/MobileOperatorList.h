#pragma once

#include <QString>
#include <QVector>

// A mobile network by its country and network codes (MCC, MNC). The MNC is kept as text so that
// its leading zero ("01") survives.
struct MobileOperator {
    QString name;
    int mcc = 0;
    QString mnc;

    QString code() const { return QString::number(mcc) + mnc; }
    bool operator==(const MobileOperator &o) const { return mcc == o.mcc && mnc == o.mnc && name == o.name; }
};

// The built-in list of Russian networks (MCC 250) offered by the preferred-network editor.
class MobileOperatorList {
public:
    static const QVector<MobileOperator> &russian();
    // Operators whose name contains the query (case-insensitive) or whose code "MCCMNC" starts with
    // it (blanks and dashes in the query are ignored for codes). An empty query matches all.
    static QVector<MobileOperator> filter(const QString &query);
};
