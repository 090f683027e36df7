#pragma once

#include "IProxy/ISysStatProxy.h"
#include "local_ovik/LocalProxy.h"

class SysStatProxyLocal : public ISysStatProxy
{
    Q_OBJECT
public:
    explicit SysStatProxyLocal(OvikPluginFactory_getInstance_function factory)
        : m_SysStat(instance<ISysStat>(factory, "SysStat"))
    {
    }

    bool isValid() const override { return m_SysStat != nullptr; }

public Q_SLOTS:
    status_t availableMemory(qulonglong& available) override
    {
        return ask(m_SysStat, &ISysStat::getAvailableMemory, available);
    }

private:
    ISysStat* const m_SysStat; // the platform library's
};
