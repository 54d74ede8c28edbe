#pragma once

#include "pages/SettingsPageBase.h"

#include <QList>
#include <QObject>
#include <QVector>

class Prompter;
class QStackedWidget;
class QTabWidget;
class VantorConfiguration;

// The settings pages of the page list: at most one per row, and on one row a tab widget whose tabs are
// pages. Answers which page a row shows and asks the leaving question for a whole row.
class SettingsPages : public QObject {
    Q_OBJECT
public:
    // Writes a page to the device; false when it could not (the user stays on the page).
    using Writer = std::function<bool(SettingsPageBase *page)>;

    explicit SettingsPages(QObject *parent = nullptr);

    // Builds the pages on the configuration into `stack`, each at the index of its list row: system,
    // navigation, data transfer (tabs "Серверы" and "GSM"), analog inputs, logic inputs, fuel, outputs.
    // Empty paths leave the GSM page's profile and network files at their defaults. The pages start
    // without values.
    void build(VantorConfiguration *configuration, QStackedWidget *stack, const QString &gsmProfiles,
               const QString &gsmNetworks);
    // The pages' questions and messages go through the prompter.
    void setPrompter(const std::shared_ptr<Prompter> &prompter);
    // Null writer: no device session, edits kept in the model.
    void setWriter(Writer writer) { m_writer = std::move(writer); }

    // The page a row shows (on the tab row: its current tab); null for rows without one.
    SettingsPageBase *page(int row) const;
    QList<SettingsPageBase *> all() const;
    QTabWidget *tabs() const { return m_tabs; }

    // The leaving question for every modified page of the row; false when the user stays.
    bool confirmLeave(int row);
    void storeModified();
    // After a file was opened or a new configuration created: every page shows values again.
    void showLoadedValues();
    void setHoldValues(bool hold);
    // Of `keys`, the sections whose pages all hold values (read, loaded or created); the others, by
    // their Russian names, into `leftOut`.
    QStringList sectionsWithValues(const QStringList &keys, QStringList *leftOut) const;

signals:
    // A page's modified or has-values mark changed, or another tab was shown.
    void pageStateChanged();

private:
    void add(QStackedWidget *stack, SettingsPageBase *page);
    void watch(SettingsPageBase *page);
    bool leave(SettingsPageBase *page);

    QVector<SettingsPageBase *> m_rows;
    int m_tabRow = -1;
    QTabWidget *m_tabs = nullptr;
    QList<SettingsPageBase *> m_tabPages;
    Writer m_writer;
};
