#pragma once

#include "dbus_ovik/PlatformIntrospection.h"
#include "dbus_ovik/PlatformReply.h"

#include <memory>

/// @return the client of the service's object at @p path, or null when the object is not present
template <class Client>
std::unique_ptr<Client> makeClient(const QString& path, const QDBusConnection& connection,
                                   const PlatformIntrospection& known)
{
    auto client = std::make_unique<Client>(ovikServiceName(), path, connection, nullptr);
    if (!isPresent(*client, known))
        client.reset();
    return client;
}

/// Base of the proxies: owns the client of its object, or null when the object is not present.
template <class Interface, class ClientClass>
class DbusProxy : public Interface
{
public:
    bool isValid() const override { return m_dbusObject && m_dbusObject->isValid(); }

    /// True when the platform had the object at initialisation, even if it is unreachable now.
    bool hasClient() const { return m_dbusObject != nullptr; }

protected:
    using Client = ClientClass;

    DbusProxy(const QString& path, const QDBusConnection& connection,
              const PlatformIntrospection& known)
        : m_dbusObject(makeClient<Client>(path, connection, known))
    {
    }

    const std::unique_ptr<Client> m_dbusObject;
};

/// Base of the proxies of a plug-in module's facilities.
template <class Interface, class ClientClass>
class PluginProxy : public Interface
{
public:
    PluginProxy(QDBusConnection* connection, QObject* parent, const QString& path,
                const PlatformIntrospection& known = {})
        : Interface(parent), m_dbusObject(makeClient<Client>(path, *connection, known))
    {
    }

    bool isValid() const { return m_dbusObject != nullptr; }

protected:
    using Client = ClientClass;

    const std::unique_ptr<Client> m_dbusObject;
};
