#include "panel_sim/platform_services.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

SimOvik::SimOvik(sim::Panel& panel, QObject* parent) : IOVIK(parent), m_panel(panel)
{
    connect(&panel, &sim::Panel::systemParameterChanged, this, &SimOvik::systemParameterChanged);
    connect(&panel, &sim::Panel::volatileParameterChanged, this,
            &SimOvik::volatileParameterChanged);
}

int SimOvik::setSystemParameter(const QString& key, const QString& value, bool)
{
    return m_panel.setSystemParameter(key, value);
}

bool SimOvik::isServiceControlled(const QString& service)
{
    const sim::Service* found = m_panel.service(service);
    return found && found->controlled;
}

const sim::Storage* SimStorageManager::find(const QString& name) const
{
    const auto& storages = m_panel.storages();
    const auto found =
        std::find_if(storages.begin(), storages.end(), [&name](const sim::Storage& storage) {
            return storage.name == name || storage.mountPoint == name;
        });
    return found == storages.end() ? nullptr : &*found;
}

QString SimStorageManager::mountPoint(const QString& name) const
{
    const sim::Storage* storage = find(name);
    return storage ? storage->mountPoint : QString();
}

QString SimStorageManager::devices(bool removableOnly) const
{
    QJsonArray names;
    for (const sim::Storage& storage : m_panel.storages()) {
        if (storage.removable || !removableOnly)
            names.append(storage.name);
    }
    return QString::fromUtf8(QJsonDocument(names).toJson(QJsonDocument::Compact));
}

ovikStorageInfo SimStorageManager::getStorageInfo(QString storageName)
{
    const sim::Storage* storage = find(storageName);
    return storage ? storage->record() : ovikStorageInfo{};
}

QString SimStorageManager::getStorageInfoJSON(QString storageName)
{
    const sim::Storage* storage = find(storageName);
    return storage ? sim::writeJson(storage->json()) : QString();
}

int SimNetworkManager::applyNewConfiguration(bool)
{
    const int rc = m_panel.applyNetwork();
    emit result(rc);
    return rc;
}

int SimTimeManager::setTimeZoneInfo(timeZoneInfo newTimeZoneInfo)
{
    m_panel.setTimeZone(newTimeZoneInfo);
    return sim::Done;
}

SimServiceManager::SimServiceManager(sim::Panel& panel, QObject* parent)
    : IServiceManager(parent), m_panel(panel)
{
    connect(&panel, &sim::Panel::commandFinished, this, &SimServiceManager::commandResult);
}

bool SimServiceManager::is(const QString& service, bool sim::Service::*property) const
{
    const sim::Service* found = m_panel.service(service);
    return found && found->*property;
}

int SimServiceManager::state(const QString& service)
{
    const sim::Service* found = m_panel.service(service);
    if (!found)
        return sim::Refused;
    return found->running ? 1 : 0;
}
