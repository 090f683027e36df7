#pragma once

#include "IProxy/ISystemInfoProxy.h"
#include "local_ovik/LocalProxy.h"

#include <QThread>

class SystemInfoProxyLocal : public ISystemInfoProxy
{
    Q_OBJECT
public:
    explicit SystemInfoProxyLocal(OvikPluginFactory_getInstance_function factory)
        : m_systemInfo(instance<ISystemInfo>(factory, "SystemInfo"))
    {
        connect(this, SIGNAL(_getSystemInfo()), m_systemInfo, SLOT(info()), Qt::DirectConnection);
    }

    bool isValid() const override { return m_systemInfo != nullptr; }

Q_SIGNALS:
    /// Nothing in this program emits it; it is there for callers that want the direct way.
    systemInfo _getSystemInfo();

public Q_SLOTS:
    /**
     * The library serves this one object in a thread of its own, so it is asked there. An object
     * that lives in the calling thread, or in one that does not run, is not asked, as that would
     * wait for ever: OVIK_OK with @p resp unchanged.
     */
    status_t getSystemInfo(systemInfo& resp) override
    {
        if (!m_systemInfo)
            return OVIK_NO_PLATFORM;
        const QThread* const thread = m_systemInfo->thread();
        if (thread && thread->isRunning() && thread != QThread::currentThread())
            QMetaObject::invokeMethod(m_systemInfo, "info", Qt::BlockingQueuedConnection,
                                      Q_RETURN_ARG(systemInfo, resp));
        return OVIK_OK;
    }

private:
    ISystemInfo* const m_systemInfo; // the platform library's
};
