#pragma once

#include "IProxy/IMainOsProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKPartitionInfoInterface.h"

class MainOsProxyDbus : public DbusProxy<IMainOsProxy, ComWenuOVIKPartitionInfoInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/MainOSInfo"); }

    explicit MainOsProxyDbus(QDBusConnection& connection, const PlatformIntrospection& known = {})
        : DbusProxy(path(), connection, known)
    {
    }

public Q_SLOTS:
    status_t version(QByteArray& version) override
    {
        return ask(m_dbusObject, &Client::version, version);
    }
};
