#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <QtGlobal>

// Collects the exchange log lines ("default" category) with their "<unix seconds> " prefix checked and
// removed, so that tests compare the texts alone.
class LogCapture {
public:
    LogCapture() {
        s_current = this;
        m_previous = qInstallMessageHandler(&LogCapture::handler);
    }
    ~LogCapture() {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
    }

    QStringList lines;
    int unstamped = 0; // lines of the default category without the time stamp

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &message) {
        if (!s_current || type != QtDebugMsg || qstrcmp(context.category, "default") != 0)
            return;
        static const QRegularExpression stamp(QStringLiteral("^\\d{10,} (.*)$"),
                                              QRegularExpression::DotMatchesEverythingOption);
        const auto m = stamp.match(message);
        if (m.hasMatch())
            s_current->lines << m.captured(1);
        else
            ++s_current->unstamped;
    }

    static inline LogCapture *s_current = nullptr;
    QtMessageHandler m_previous = nullptr;
};
