#pragma once

#include "IProxy/ISysStatProxy.h"
#include "local_ovik/LocalProxy.h"

class SysStatProxyLocal : public LocalProxy<ISysStatProxy, ISysStat>
{
    Q_OBJECT
public:
    explicit SysStatProxyLocal(OvikPluginFactory_getInstance_function factory)
        : LocalProxy("SysStat", factory)
    {
    }

public Q_SLOTS:
    status_t availableMemory(qulonglong& available) override
    {
        return ask(m_platformObject, &Platform::getAvailableMemory, available);
    }
};
