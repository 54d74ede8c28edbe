#pragma once

#include "pages/SettingsPageBase.h"

#include <QVector>

class ServersWidget;

// "Передача данных": one ServersWidget per server entry of the server section.
class SettingsTransmittDataToServer : public SettingsPageBase {
    Q_OBJECT
public:
    explicit SettingsTransmittDataToServer(VantorConfiguration *configuration, QWidget *parent = nullptr);

    void storeToSection() override;

    int serverCount() const { return m_servers.size(); }
    ServersWidget *server(int index) const { return m_servers.value(index); }

protected:
    void showSection() override;
    QString inputProblem() const override;
    void writeSection(DeviceWorkflows &workflows) override;

private:
    QVector<ServersWidget *> m_servers;
};
