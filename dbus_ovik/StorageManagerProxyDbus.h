#pragma once

#include "IProxy/IStorageManagerProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class StorageManagerProxyDbus : public IStorageManagerProxy
{
    Q_OBJECT
    using Client = ComWenuOVIKStorageMgrInterface;

public:
    explicit StorageManagerProxyDbus(QDBusConnection& connection)
        : m_dbusObject(makeClient<Client>(QStringLiteral("/StorageMgr"), connection))
    {
    }

    bool isValid() const override { return m_dbusObject && m_dbusObject->isValid(); }

public Q_SLOTS:
    status_t getStorageInfo(const QString& name, ovikStorageInfo& info) override
    {
        return ask(m_dbusObject, &Client::getStorageInfo, info, name);
    }
    status_t getStorageInfoJson(const QString& name, QString& json) override
    {
        return ask(m_dbusObject, &Client::getStorageInfoJSON, json, name);
    }

private:
    std::unique_ptr<Client> m_dbusObject;
};
