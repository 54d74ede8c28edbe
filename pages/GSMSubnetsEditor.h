#pragma once

#include "pages/MobileOperatorList.h"

#include <QDialog>

class QLineEdit;
class QListWidget;
class QSpinBox;
class QTableWidget;

// Edits the ordered list of preferred networks of one SIM card. The built-in table of Russian
// networks can be searched by name or code; other networks are added by their MCC and MNC.
// The list is kept on this computer only (PreferredNetworkStore): the device has no field for it.
class GSMSubnetsEditor : public QDialog {
    Q_OBJECT
public:
    GSMSubnetsEditor(const QVector<MobileOperator> &networks, int sim, QWidget *parent = nullptr);

    QVector<MobileOperator> networks() const { return m_networks; }

    // The operators shown in the search table (filtered by the search text).
    QVector<MobileOperator> shownOperators() const { return m_shown; }
    QLineEdit *searchEdit() const { return m_search; }

    void addShown(int row);
    void addManual(int mcc, const QString &mnc, const QString &name);
    void removeAt(int index);
    void move(int index, int delta);

private:
    void applyFilter();
    void fillList(int current);

    QVector<MobileOperator> m_networks;
    QVector<MobileOperator> m_shown;
    QLineEdit *m_search;
    QTableWidget *m_table;
    QListWidget *m_list;
    QSpinBox *m_mcc;
    QLineEdit *m_mnc;
    QLineEdit *m_name;
};
