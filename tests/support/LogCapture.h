#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <QtGlobal>

// Collects the debug lines of one logging category with their time stamp checked and removed, so that
// tests compare the texts alone. By default: the exchange log ("default") and its "<unix seconds> " prefix.
class LogCapture {
public:
    explicit LogCapture(const char *category = "default",
                        const QString &stamp = QStringLiteral("^\\d{10,} (.*)$"))
        : m_category(category)
        , m_stamp(stamp, QRegularExpression::DotMatchesEverythingOption) {
        s_current = this;
        m_previous = qInstallMessageHandler(&LogCapture::handler);
    }
    ~LogCapture() {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
    }

    QStringList lines;
    int unstamped = 0; // lines of the category without the time stamp

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &message) {
        if (!s_current || type != QtDebugMsg || qstrcmp(context.category, s_current->m_category) != 0)
            return;
        const auto m = s_current->m_stamp.match(message);
        if (m.hasMatch())
            s_current->lines << m.captured(1);
        else
            ++s_current->unstamped;
    }

    static inline LogCapture *s_current = nullptr;
    const char *m_category;
    QRegularExpression m_stamp;
    QtMessageHandler m_previous = nullptr;
};
