#pragma once

#include "IProxy/IMainOsProxy.h"
#include "local_ovik/LocalProxy.h"

class MainOsProxyLocal : public IMainOsProxy
{
    Q_OBJECT
public:
    explicit MainOsProxyLocal(OvikPluginFactory_getInstance_function factory)
        : m_MainOs(instance<IMainOSInfo>(factory, "MainOSInfo"))
    {
    }

    bool isValid() const override { return m_MainOs != nullptr; }

public Q_SLOTS:
    status_t version(QByteArray& version) override
    {
        return ask(m_MainOs, &IMainOSInfo::version, version);
    }

private:
    IMainOSInfo* const m_MainOs; // the platform library's
};
