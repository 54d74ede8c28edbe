#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

class QByteArray;
class QJsonObject;

namespace kd {

// Per-device values for a fleet from a spreadsheet: one row per device keyed by its IMEI, one column per
// value named by its key in the configuration file ("Server[0].server", "gsm[0].gprs 1.apn",
// "SystemParameters.gsens"). The values go into the template's document before it is read, so they meet
// the same reader and the same checks as a file. Comma or semicolon separated (a spreadsheet in a Russian
// locale saves with semicolons), quotes as spreadsheets write them; an empty cell keeps the template's value.
class ConfigurationOverrides {
public:
    static constexpr char ImeiColumn[] = "IMEI";

    // False with a reason (and the line) when the table cannot be read or has no IMEI column.
    static bool read(const QString &path, ConfigurationOverrides *overrides, QString *error);
    static bool parse(const QByteArray &text, ConfigurationOverrides *overrides, QString *error);

    QStringList keys() const { return m_keys; }
    QStringList imeis() const { return m_order; }
    bool contains(const QString &imei) const { return m_rows.contains(imei); }

    // The device's row put into `root`; false with a reason when a key is not in the document or a value
    // does not fit the type there (a number for a number).
    bool apply(const QString &imei, QJsonObject *root, QString *error) const;
    // Every row tried on the template, so a bad column or value is found before any device is touched.
    bool check(const QJsonObject &root, QString *error) const;
    // One value by its key: "Server[0].server". The document's keys with dots in them ("hardver.serial")
    // are found as they stand.
    static bool setValue(QJsonObject *root, const QString &key, const QString &text, QString *error);

private:
    QStringList m_keys;
    QStringList m_order;
    QHash<QString, QStringList> m_rows; // IMEI -> the cells in key order
};

} // namespace kd
