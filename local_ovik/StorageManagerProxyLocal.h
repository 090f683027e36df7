#pragma once

#include "IProxy/IStorageManagerProxy.h"
#include "local_ovik/LocalProxy.h"

class StorageManagerProxyLocal : public IStorageManagerProxy
{
    Q_OBJECT
public:
    explicit StorageManagerProxyLocal(OvikPluginFactory_getInstance_function factory)
        : m_StorageManager(instance<IStorageManager>(factory, "StorageMgr"))
    {
    }

    bool isValid() const override { return m_StorageManager != nullptr; }

public Q_SLOTS:
    status_t getStorageInfo(const QString& name, ovikStorageInfo& info) override
    {
        // Converted to a C string, so that the name ends at its first NUL.
        const QString cName = QString::fromUtf8(name.toStdString().c_str());
        return ask(m_StorageManager, &IStorageManager::getStorageInfo, info, cName);
    }
    /// Always asks for the data partition, for any @p name.
    status_t getStorageInfoJson(const QString& name, QString& info) override
    {
        Q_UNUSED(name)
        return ask(m_StorageManager, &IStorageManager::getStorageInfoJSON, info,
                   QStringLiteral("/mnt/data"));
    }

private:
    IStorageManager* const m_StorageManager; // the platform library's
};
