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
    /// Never emitted by this program; callers may emit it to ask the object directly.
    systemInfo _getSystemInfo();

public Q_SLOTS:
    /**
     * The library's object lives in its own thread, so it is called there. When the object lives
     * in the calling thread, or in a thread that does not run, the call would block for ever: the
     * result is then OVIK_OK with @p resp unchanged.
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
