#pragma once

#include "Devices/VantorConfiguration.h"
#include "pages/SettingsPageBase.h"
#include "protocol/Device.h"
#include "protocol/DeviceWorkflows.h"
#include "protocol/Frame.h"
#include "protocol/UNPProtocol.h"
#include "tests/support/DeviceProbe.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

// A device session without a link: whatever a page asks the workflows to write stays in the queue,
// where the test reads it back frame by frame.
struct PageSession {
    VantorConfiguration configuration;
    Device device{&configuration};
    DeviceWorkflows workflows{&device};

    // "type:payload-hex" for every queued frame, in queue order.
    QStringList queued() const {
        QStringList out;
        for (const QByteArray &frame : DeviceProbe::protocol(device)->queue()) {
            const QByteArray payload =
                frame.mid(proto::Frame::PayloadOffset, frame.size() - proto::Frame::Overhead);
            out << QString::number(quint8(frame.at(proto::Frame::TypeOffset))) + QLatin1Char(':') +
                       QString::fromLatin1(payload.toHex());
        }
        return out;
    }

    void clearQueue() { DeviceProbe::protocol(device)->clearQueue(); }
};

// Answers the page's questions without a modal loop and remembers them.
struct ScriptedAsker {
    bool answer = true;
    QStringList asked; // "title|text"

    SettingsPageBase::Asker asker() {
        return [this](QWidget *, const QString &title, const QString &text) {
            asked << title + QLatin1Char('|') + text;
            return answer;
        };
    }
    SettingsPageBase::Notifier notifier() {
        return [this](QWidget *w, const QString &title, const QString &text) { asker()(w, title, text); };
    }
};

inline QString hexFrame(int type, const char *hex) {
    return QString::number(type) + QLatin1Char(':') + QString::fromLatin1(hex).remove(QLatin1Char(' '));
}

// QTest::keyClicks only knows ASCII keys: Cyrillic is typed as key events carrying the text.
inline void typeText(QWidget *w, const QString &text) {
    for (const QChar c : text) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(c));
        QApplication::sendEvent(w, &press);
    }
}
