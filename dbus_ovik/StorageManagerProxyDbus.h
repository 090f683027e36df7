#pragma once

#include "IProxy/IStorageManagerProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKStorageMgrInterface.h"

class StorageManagerProxyDbus
    : public DbusProxy<IStorageManagerProxy, ComWenuOVIKStorageMgrInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/StorageMgr"); }

    explicit StorageManagerProxyDbus(QDBusConnection& connection,
                                     const PlatformIntrospection& known = {})
        : DbusProxy(path(), connection, known)
    {
    }

public Q_SLOTS:
    status_t getStorageInfo(const QString& name, ovikStorageInfo& info) override
    {
        return ask(m_dbusObject, &Client::getStorageInfo, info, name);
    }
    status_t getStorageInfoJson(const QString& name, QString& json) override
    {
        return ask(m_dbusObject, &Client::getStorageInfoJSON, json, name);
    }
};
