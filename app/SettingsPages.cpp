#include "app/SettingsPages.h"

#include "Devices/SectionTable.h"

#include <algorithm>

#include "app/Prompter.h"
#include "pages/SettingsAnalogInPage.h"
#include "pages/SettingsDiscretInPage.h"
#include "pages/SettingsFuelLevelPage.h"
#include "pages/SettingsGSMPage.h"
#include "pages/SettingsNavyPage.h"
#include "pages/SettingsOutputs.h"
#include "pages/SettingsTransmittDataToServer.h"
#include "pages/SystemPage.h"

#include <QSignalBlocker>
#include <QStackedWidget>
#include <QTabWidget>

SettingsPages::SettingsPages(QObject *parent)
    : QObject(parent) {}

void SettingsPages::build(VantorConfiguration *configuration, QStackedWidget *stack,
                          const QString &gsmProfiles, const QString &gsmNetworks) {
    add(stack, new SystemPage(configuration));
    add(stack, new SettingsNavyPage(configuration));

    m_tabs = new QTabWidget;
    m_tabs->setObjectName(QStringLiteral("dataTransferTabs"));
    auto *servers = new SettingsTransmittDataToServer(configuration);
    auto *gsm = gsmProfiles.isEmpty() ? new SettingsGSMPage(configuration)
                                      : new SettingsGSMPage(configuration, nullptr, gsmProfiles, gsmNetworks);
    m_tabs->addTab(servers, QStringLiteral("Серверы"));
    m_tabs->addTab(gsm, QStringLiteral("GSM"));
    m_tabPages = {servers, gsm};
    watch(servers);
    watch(gsm);
    m_tabRow = stack->addWidget(m_tabs);
    m_rows.resize(m_tabRow + 1);
    connect(m_tabs, &QTabWidget::currentChanged, this, [this](int index) {
        // Leaving one tab for the other is leaving a page; Отмена goes back.
        const int other = index == 0 ? 1 : 0;
        SettingsPageBase *left = m_tabPages.value(other);
        if (left && !leave(left)) {
            const QSignalBlocker block(m_tabs);
            m_tabs->setCurrentIndex(other);
        }
        emit pageStateChanged();
    });

    add(stack, new SettingsAnalogInPage(configuration));
    add(stack, new SettingsDiscretInPage(configuration));
    add(stack, new SettingsFuelLevelPage(configuration));
    add(stack, new SettingsOutputs(configuration));
    for (SettingsPageBase *page : all()) {
        page->loadFromSection();
        // Start-up zeros are not the device's values.
        page->setHoldsValues(false);
    }
}

void SettingsPages::add(QStackedWidget *stack, SettingsPageBase *page) {
    const int row = stack->addWidget(page);
    if (m_rows.size() <= row)
        m_rows.resize(row + 1);
    m_rows[row] = page;
    watch(page);
}

void SettingsPages::watch(SettingsPageBase *page) {
    connect(page, &SettingsPageBase::holdsValuesChanged, this, &SettingsPages::pageStateChanged);
    connect(page, &SettingsPageBase::modifiedChanged, this, &SettingsPages::pageStateChanged);
}

void SettingsPages::setPrompter(const std::shared_ptr<Prompter> &prompter) {
    for (SettingsPageBase *page : all()) {
        page->setAsker([prompter](QWidget *parent, const QString &title, const QString &text) {
            return prompter->question(parent, title, text);
        });
        page->setLeaveAsker([prompter](QWidget *parent, const QString &title, const QString &text) {
            const Prompter::Answer answer = prompter->questionWithCancel(parent, title, text);
            return answer == Prompter::Answer::Yes  ? SettingsPageBase::LeaveAnswer::Write
                   : answer == Prompter::Answer::No ? SettingsPageBase::LeaveAnswer::Drop
                                                    : SettingsPageBase::LeaveAnswer::Stay;
        });
        page->setNotifier([prompter](QWidget *parent, const QString &title, const QString &text) {
            prompter->information(parent, title, text);
        });
    }
}

SettingsPageBase *SettingsPages::page(int row) const {
    if (row == m_tabRow)
        return qobject_cast<SettingsPageBase *>(m_tabs->currentWidget());
    return m_rows.value(row);
}

QList<SettingsPageBase *> SettingsPages::all() const {
    QList<SettingsPageBase *> pages;
    for (int row = 0; row < m_rows.size(); ++row) {
        if (row == m_tabRow)
            pages += m_tabPages;
        else if (m_rows.at(row))
            pages.append(m_rows.at(row));
    }
    return pages;
}

bool SettingsPages::leave(SettingsPageBase *page) {
    if (!m_writer)
        return page->confirmLeave(SettingsPageBase::Writer());
    return page->confirmLeave([this, page] { return m_writer(page); });
}

bool SettingsPages::confirmLeave(int row) {
    const QList<SettingsPageBase *> pages =
        row == m_tabRow ? m_tabPages : QList<SettingsPageBase *>{page(row)};
    for (SettingsPageBase *p : pages) {
        if (p && !leave(p))
            return false;
    }
    return true;
}

void SettingsPages::storeModified() {
    for (SettingsPageBase *page : all()) {
        if (page->isModified())
            page->storeToSection();
    }
}

void SettingsPages::showLoadedValues() {
    for (SettingsPageBase *page : all()) {
        page->setHoldsValues(true);
        page->refresh();
    }
}

QStringList SettingsPages::sectionsWithValues(const QStringList &keys, QStringList *leftOut) const {
    QStringList with;
    for (const QString &key : keys) {
        const QList<SettingsPageBase *> pages = all();
        const bool empty = std::any_of(pages.begin(), pages.end(), [&key](SettingsPageBase *page) {
            return page->sectionKey() == key && !page->holdsValues();
        });
        if (!empty)
            with << key;
        else if (const kd::Section *section = kd::sectionByKey(key))
            *leftOut << section->displayName;
    }
    return with;
}

void SettingsPages::setHoldValues(bool hold) {
    for (SettingsPageBase *page : all())
        page->setHoldsValues(hold);
}
