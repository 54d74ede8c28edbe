#include "app/ConnectionIndicators.h"

#include "app/ConnectionWaitDlg.h"

#include <QIcon>
#include <QPushButton>
#include <QStatusBar>
#include <QVariant>

ConnectionIndicators::ConnectionIndicators(QStatusBar *bar, QWidget *window)
    : QObject(window)
    , m_type(new QPushButton(window))
    , m_state(new QPushButton(window)) {
    m_type->setObjectName(QStringLiteral("connectionTypeButton"));
    m_type->setFlat(true);
    m_state->setObjectName(QStringLiteral("connectionStateButton"));
    m_state->setFlat(true);
    bar->addWidget(m_type);
    bar->addWidget(m_state);
}

void ConnectionIndicators::showLinking(bool remote) {
    m_type->setIcon(QIcon(remote ? QStringLiteral(":/images/remoteConnection.png")
                                 : QStringLiteral(":/images/localConnection.png")));
}

void ConnectionIndicators::showType(bool remote, bool connected) {
    if (remote) {
        m_type->setToolTip(QStringLiteral("Тип соединения с прибором: Интернет соединение"));
        m_type->setText(QStringLiteral("Интернет"));
        m_type->setIcon(QIcon(connected ? QStringLiteral(":/images/remoteConnection_on.png")
                                        : QStringLiteral(":/images/remoteConnection_off.png")));
    } else {
        m_type->setToolTip(QStringLiteral("Тип соединения с прибором: USB соединение"));
        m_type->setText(QStringLiteral("USB"));
        m_type->setIcon(QIcon(connected ? QStringLiteral(":/images/localConnection_on.png")
                                        : QStringLiteral(":/images/localConnection_off.png")));
    }
    m_type->setProperty("connected", QVariant(connected));
}

void ConnectionIndicators::showTypeOff() {
    m_type->setIcon(QIcon(QStringLiteral(":/images/localConnection_off.png")));
}

void ConnectionIndicators::showNoDevice() {
    m_state->setText(QStringLiteral("Нет подключенных приборов"));
    m_state->setIcon(QIcon(QStringLiteral(":/images/red_state.png")));
}

void ConnectionIndicators::showBusy(const QString &text) {
    m_state->setText(text);
}

void ConnectionIndicators::showDevice(const QString &name) {
    m_state->setText(QStringLiteral("Подключен прибор: %1").arg(name));
    m_state->setIcon(QIcon(QStringLiteral(":/images/green_state.png")));
}

void ConnectionIndicators::showWait(const QString &text) {
    if (m_wait)
        return;
    m_wait = new ConnectionWaitDlg(qobject_cast<QWidget *>(parent()));
    m_wait->setAttribute(Qt::WA_DeleteOnClose);
    m_wait->setMessage(text);
    connect(m_wait, &ConnectionWaitDlg::connectionWaitCancelled, this, [this] {
        if (m_wait)
            m_wait->deleteLater();
        m_wait = nullptr;
        emit waitCancelled();
    });
    m_wait->open();
}

void ConnectionIndicators::closeWait() {
    if (!m_wait)
        return;
    ConnectionWaitDlg *dialog = m_wait;
    m_wait = nullptr;
    disconnect(dialog, &ConnectionWaitDlg::connectionWaitCancelled, this, nullptr);
    dialog->accept();
}
