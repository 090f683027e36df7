#pragma once

#include "IProxy/IServiceManagerProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKServiceManagerInterface.h"

class ServiceManagerProxyDbus
    : public DbusProxy<IServiceManagerProxy, ComWenuOVIKServiceManagerInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/ServiceManager"); }

    explicit ServiceManagerProxyDbus(QDBusConnection& connection,
                                     const PlatformIntrospection& known = {});

public Q_SLOTS:
    status_t start(const QString& service, int& resp) override
    {
        return ask(m_dbusObject, &Client::start, resp, service);
    }
    status_t stop(const QString& service, int& resp) override
    {
        return ask(m_dbusObject, &Client::stop, resp, service);
    }
    status_t restart(const QString& service, int& resp) override
    {
        return ask(m_dbusObject, &Client::restart, resp, service);
    }
    status_t reload(const QString& service, int& resp) override
    {
        return ask(m_dbusObject, &Client::reload, resp, service);
    }
    status_t enable(const QString& service, int& resp) override
    {
        return ask(m_dbusObject, &Client::enable, resp, service);
    }
    status_t disable(const QString& service, int& resp) override
    {
        return ask(m_dbusObject, &Client::disable, resp, service);
    }
    status_t enabled(const QString& service, bool& resp) override
    {
        return ask(m_dbusObject, &Client::enabled, resp, service);
    }
    status_t apply(const QString& service, int& resp) override
    {
        return ask(m_dbusObject, &Client::apply, resp, service);
    }
    status_t controlled(const QString& service, bool& resp) override
    {
        return ask(m_dbusObject, &Client::controlled, resp, service);
    }
    status_t state(const QString& service, int& resp) override
    {
        return ask(m_dbusObject, &Client::state, resp, service);
    }
    status_t command(const QString& service, const QString& command, const QString& opts,
                     void* fnCallback, int& resp) override;
    void onCommandResult(const QString& service, const QString& command,
                         const QString& json) override;

private:
    /// The callback of the latest command; receives the results of all commands. Not owned.
    void (*fnWifiInterfaceCallback)(const char* service, const char* command,
                                    const char* json) = nullptr;
};
