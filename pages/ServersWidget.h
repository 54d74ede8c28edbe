#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class ServerConfigurationItem;

// One server entry: in use, address, port (the device keeps 32 bits) and reporting protocol, whose
// list index is the protocol byte of the device.
class ServersWidget : public QWidget {
    Q_OBJECT
public:
    explicit ServersWidget(int index, QWidget *parent = nullptr);

    void load(const ServerConfigurationItem &item);
    void store(ServerConfigurationItem &item) const;

    static QStringList protocolNames();

    QCheckBox *enable;
    QLineEdit *address;
    QDoubleSpinBox *port;
    QComboBox *protocol;

signals:
    // The user changed a value.
    void edited();
};
