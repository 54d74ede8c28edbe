#include "pages/ServersWidget.h"

#include "pages/DeviceTextValidator.h"

#include "Devices/ServerConfiguration.h"
#include "Devices/TelemetryRecords.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {
struct Protocol {
    kd::ServerProtocol code;
    const char *name;
};

const Protocol Protocols[] = {
    {kd::ServerProtocol::TavrelUnp, "TAVREL UNP"},
    {kd::ServerProtocol::WialonCombine, "WIALON COMBINE"},
};
} // namespace

QStringList ServersWidget::protocolNames() {
    QStringList names;
    for (const Protocol &p : Protocols)
        names << QString::fromLatin1(p.name);
    return names;
}

ServersWidget::ServersWidget(int index, QWidget *parent)
    : QWidget(parent)
    , enable(new QCheckBox(QStringLiteral("Передавать данные на сервер"), this))
    , address(new QLineEdit(this))
    , port(new QDoubleSpinBox(this))
    , protocol(new QComboBox(this)) {
    DeviceTextValidator::install(address);
    address->setPlaceholderText(QStringLiteral("адрес или имя сервера"));
    // A QSpinBox stops at 2^31 - 1; the device keeps the port in 32 bits.
    port->setDecimals(0);
    port->setRange(0, 4294967295.0);
    for (const Protocol &p : Protocols)
        protocol->addItem(QString::fromLatin1(p.name), int(p.code));

    auto *group = new QGroupBox(QStringLiteral("Сервер %1").arg(index + 1), this);
    auto *form = new QFormLayout(group);
    form->addRow(enable);
    form->addRow(QStringLiteral("Адрес сервера:"), address);
    form->addRow(QStringLiteral("Порт:"), port);
    form->addRow(QStringLiteral("Протокол:"), protocol);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(group);

    connect(enable, &QCheckBox::toggled, this, &ServersWidget::edited);
    connect(address, &QLineEdit::textEdited, this, &ServersWidget::edited);
    connect(port, qOverload<double>(&QDoubleSpinBox::valueChanged), this, &ServersWidget::edited);
    connect(protocol, qOverload<int>(&QComboBox::currentIndexChanged), this, &ServersWidget::edited);
}

void ServersWidget::load(const ServerConfigurationItem &item) {
    enable->setChecked(item.enable() & 1);
    address->setText(item.server());
    port->setValue(item.port());
    int row = protocol->findData(int(item.proto()));
    if (row < 0) {
        // A protocol this program does not know yet keeps its byte.
        protocol->addItem(QStringLiteral("Протокол %1").arg(item.proto()), int(item.proto()));
        row = protocol->count() - 1;
    }
    protocol->setCurrentIndex(row);
}

void ServersWidget::store(ServerConfigurationItem &item) const {
    item.setEnable(enable->isChecked() ? 1 : 0);
    item.setServer(address->text());
    item.setPort(quint32(port->value()));
    item.setProto(quint8(protocol->currentData().toInt()));
}
