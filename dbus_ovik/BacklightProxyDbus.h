#pragma once

#include "IProxy/IBacklightProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKBacklightInterface.h"

class BacklightProxyDbus : public DbusProxy<IBacklightProxy, ComWenuOVIKBacklightInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/Backlight"); }

    explicit BacklightProxyDbus(QDBusConnection& connection,
                                const PlatformIntrospection& known = {})
        : DbusProxy(path(), connection, known)
    {
    }

public Q_SLOTS:
    status_t getBrightness(int& resp) override
    {
        return ask(m_dbusObject, &Client::getBrightness, resp);
    }
    status_t saveBrightness(int value, int& resp) override
    {
        return ask(m_dbusObject, &Client::saveBrightness, resp, value);
    }
};
