#include "app/ConnectionToServerDialog.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

ConnectionToServerDialog::ConnectionToServerDialog(QWidget *parent)
    : QDialog(parent,
              Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowStaysOnBottomHint)
    , m_message(new QLabel(QStringLiteral("Подключение к серверу конфигурирования..."), this)) {
    setWindowTitle(QStringLiteral("Подключение к серверу"));
    m_message->setWordWrap(true);

    // A busy bar: the server gives no progress to show.
    auto *busy = new QProgressBar(this);
    busy->setRange(0, 0);
    busy->setTextVisible(false);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_message);
    layout->addWidget(busy);
}

void ConnectionToServerDialog::setMessage(const QString &text) {
    m_message->setText(text);
}

QString ConnectionToServerDialog::message() const {
    return m_message->text();
}
