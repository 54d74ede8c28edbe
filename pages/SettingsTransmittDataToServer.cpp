#include "pages/SettingsTransmittDataToServer.h"

#include "pages/ServersWidget.h"

#include "Devices/ServerConfiguration.h"
#include "Devices/VantorConfiguration.h"
#include "protocol/DeviceWorkflows.h"

#include <QLineEdit>
#include <QVBoxLayout>

SettingsTransmittDataToServer::SettingsTransmittDataToServer(VantorConfiguration *configuration,
                                                             QWidget *parent)
    : SettingsPageBase(configuration, QStringLiteral("Передача данных"), parent) {
    const kd::ServerConfiguration *section = configuration ? configuration->servers() : nullptr;
    const int count = section ? section->count() : 0;
    for (int i = 0; i < count; ++i) {
        auto *w = new ServersWidget(i, this);
        connect(w, &ServersWidget::edited, this, &SettingsTransmittDataToServer::markModified);
        body()->addWidget(w);
        m_servers.append(w);
    }

    followSection(kd::keys::Server);
    refresh();
}

void SettingsTransmittDataToServer::showSection() {
    const kd::ServerConfiguration *section = configuration() ? configuration()->servers() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < m_servers.size(); ++i) {
        if (const ServerConfigurationItem *item = section->element(i))
            m_servers.at(i)->load(*item);
    }
}

void SettingsTransmittDataToServer::storeToSection() {
    const kd::ServerConfiguration *section = configuration() ? configuration()->servers() : nullptr;
    if (!section)
        return;
    for (int i = 0; i < m_servers.size(); ++i) {
        if (ServerConfigurationItem *item = section->element(i))
            m_servers.at(i)->store(*item);
    }
}

QString SettingsTransmittDataToServer::inputProblem() const {
    for (int i = 0; i < m_servers.size(); ++i) {
        const QString problem =
            textProblem(QStringLiteral("Адрес сервера %1").arg(i + 1), m_servers.at(i)->address->text());
        if (!problem.isEmpty())
            return problem;
    }
    return QString();
}

void SettingsTransmittDataToServer::writeSection(DeviceWorkflows &workflows) {
    workflows.writeServers();
}
