#pragma once

#include <QWidget>
#include <functional>

class DeviceWorkflows;
class VantorConfiguration;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class QVBoxLayout;

namespace kd {
class IConfigurationItem;
}

// A settings page maps the widgets of one configuration section to and from the model; it never talks
// to the link or the protocol itself, it only asks the shared workflows to write its section.
//
// The model is the page's reference: loadFromSection() shows it (through the page's showSection()),
// storeToSection() takes the user's edits into it. An edit of a widget marks the page modified (dynamic
// property "modified" = true, which the style sheets use, plus a marker label in the page header and
// modifiedChanged()); loading from the model, a refresh after the device answered, revert() and
// applyToDevice() clear the mark.
class SettingsPageBase : public QWidget {
    Q_OBJECT
public:
    // Asks a Yes/No question; true = Yes. Tests replace it so that no modal loop runs.
    using Asker = std::function<bool(QWidget *parent, const QString &title, const QString &text)>;
    // Shows an information or warning text.
    using Notifier = std::function<void(QWidget *parent, const QString &title, const QString &text)>;
    // The unsaved-change question on leaving: Да writes, Нет drops the edits, Отмена stays on the page.
    enum class LeaveAnswer { Write, Drop, Stay };
    using LeaveAsker = std::function<LeaveAnswer(QWidget *parent, const QString &title, const QString &text)>;

    static const char *const UnsavedQuestion;
    static const char *const UnsavedTitle;
    static const char *const NoValuesNote;

    SettingsPageBase(VantorConfiguration *configuration, const QString &title, QWidget *parent = nullptr);

    VantorConfiguration *configuration() const { return m_configuration; }
    // The entry of the page list that opens this page ("Навигация", ...).
    QString title() const { return m_title; }
    // The key of the section the page edits ("NavConfiguration", ...).
    QString sectionKey() const { return m_sectionKey; }

    // Whether the widgets show values of a device or a file. A page takes its configuration's values as
    // given; the window marks its pages empty at start-up, until the section is read, a file loaded or a
    // new configuration created. A page without values cannot be applied: its zeros would overwrite the
    // device's settings.
    bool holdsValues() const { return m_holdsValues; }
    void setHoldsValues(bool holds);

    bool isModified() const { return m_modified; }
    // "*" while modified, else empty: the window may append it to the page list entry.
    QString modifiedMarker() const;

    // Fills the widgets from the model and clears the mark; never counts as a user change.
    void loadFromSection() { refresh(); }
    // Takes the widgets' values into the model.
    virtual void storeToSection() = 0;
    // Stores, then enqueues the write of this page's section (the workflow starts the queue). A field the
    // device cannot take (see inputProblem()) is reported through the notifier and nothing is written:
    // returns false then, and also for a page without values.
    virtual bool applyToDevice(DeviceWorkflows &workflows);

    // The unsaved-change prompt, for leaving the page: without changes nothing is asked. Да writes the
    // section to the device (or only into the model when there is no device session), Нет drops the
    // edits, Отмена stays. Edits of a page without values go into the model unasked: nothing can be
    // written. Returns whether leaving may proceed.
    bool confirmLeave(DeviceWorkflows *workflows);
    // The same with the write left to the caller: `write` sends the page (false: it could not, stay);
    // null when there is no device session.
    using Writer = std::function<bool()>;
    bool confirmLeave(const Writer &write);

    void setAsker(Asker asker);
    // Without one, the yes/no asker answers the leaving question (no Отмена).
    void setLeaveAsker(LeaveAsker asker);
    void setNotifier(Notifier notifier);
    static Asker messageBoxAsker();
    static Notifier messageBoxNotifier();

public slots:
    // Shows the model's values again, e.g. after the section was decoded from the device or a file was
    // loaded. Not a user change.
    void refresh();
    // Drops the edits: shows the model's values again.
    void revert() { refresh(); }

signals:
    void modifiedChanged(bool modified);
    void holdsValuesChanged(bool holds);

protected:
    // Fills the widgets from the model; called with the page in loading state.
    virtual void showSection() = 0;
    // Why the shown values cannot go to the device (text the device cannot take), or empty.
    virtual QString inputProblem() const { return QString(); }
    // The problem text for a text field named `field` whose content cannot be sent, or empty.
    static QString textProblem(const QString &field, const QString &text);
    // Enqueues the write of this page's section; the model already holds the widgets' values.
    virtual void writeSection(DeviceWorkflows &workflows) = 0;

    // The layout below the page header, for the page's own widgets.
    QVBoxLayout *body() const { return m_body; }

    // Refreshes the page whenever the section under `key` reports that the device filled it; the page
    // then holds values.
    void followSection(const char *key);

    // Widgets built with these helpers mark the page modified when the user edits them.
    QSpinBox *spinBox(int min, int max, const QString &suffix = QString());
    QCheckBox *checkBox(const QString &text);
    QComboBox *comboBox(const QStringList &items);
    QLineEdit *deviceTextEdit();
    void watch(QSpinBox *w);
    void watch(QCheckBox *w);
    void watch(QComboBox *w);
    void watch(QLineEdit *w);

    bool ask(const QString &title, const QString &text);
    void notify(const QString &title, const QString &text);

    bool isLoading() const { return m_loading > 0; }
    // Call from a slot of a widget edited by the user.
    void markModified();
    void setModified(bool modified);

    // Runs f with the page in loading state (widget signals do not count as user changes).
    template <class F>
    void loading(F f) {
        ++m_loading;
        f();
        --m_loading;
    }

private:
    VantorConfiguration *m_configuration;
    QString m_title;
    QString m_sectionKey;
    QVBoxLayout *m_body;
    QLabel *m_titleLabel;
    QLabel *m_marker;
    QLabel *m_noValues;
    bool m_modified = false;
    bool m_holdsValues = true;
    int m_loading = 0;
    Asker m_asker;
    Notifier m_notifier;
    LeaveAsker m_leaveAsker;
};
