#pragma once

#include <QString>

class QWidget;

namespace kd {
struct WritePreview;
}

// Every question, message and file choice of the window goes through one prompter, so that a test can
// install a scripted one and answer without a modal loop. The default shows the usual Qt boxes.
class Prompter {
public:
    virtual ~Prompter();

    enum class Answer { Yes, No, Cancel };

    // Yes/No question; true on Yes.
    virtual bool question(QWidget *parent, const QString &title, const QString &text);
    // The write confirmation with the changes the write makes (WritePreviewDialog); true to write. The
    // user's choice to keep the device's values for what the file lacks is set in `preview`.
    virtual bool writePreview(QWidget *parent, const QString &title, const QString &question,
                              kd::WritePreview *preview);
    // "Да", "Нет" and "Отмена"; closing the box is Отмена.
    virtual Answer questionWithCancel(QWidget *parent, const QString &title, const QString &text);
    virtual void information(QWidget *parent, const QString &title, const QString &text);
    virtual void warning(QWidget *parent, const QString &title, const QString &text);
    virtual void critical(QWidget *parent, const QString &title, const QString &text);
    // Empty when the user cancels.
    virtual QString openFileName(QWidget *parent, const QString &title, const QString &dir,
                                 const QString &filter);
    virtual QString saveFileName(QWidget *parent, const QString &title, const QString &dir,
                                 const QString &filter);
    // A line of text; false when the user cancels.
    virtual bool text(QWidget *parent, const QString &title, const QString &label, QString *value);
    // The device password; false when the user cancels.
    virtual bool password(QWidget *parent, quint32 *password);
};
