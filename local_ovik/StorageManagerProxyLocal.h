#pragma once

#include "IProxy/IStorageManagerProxy.h"
#include "local_ovik/LocalProxy.h"

class StorageManagerProxyLocal : public LocalProxy<IStorageManagerProxy, IStorageManager>
{
    Q_OBJECT
public:
    explicit StorageManagerProxyLocal(OvikPluginFactory_getInstance_function factory)
        : LocalProxy("StorageMgr", factory)
    {
    }

public Q_SLOTS:
    status_t getStorageInfo(const QString& name, ovikStorageInfo& info) override
    {
        // By way of a C string, so that the name ends at its first NUL.
        const QString cName = QString::fromUtf8(name.toStdString().c_str());
        return ask(m_platformObject, &Platform::getStorageInfo, info, cName);
    }
    /// Whatever the name, the platform is asked for the data partition.
    status_t getStorageInfoJson(const QString& name, QString& info) override
    {
        Q_UNUSED(name)
        return ask(m_platformObject, &Platform::getStorageInfoJSON, info,
                   QStringLiteral("/mnt/data"));
    }
};
