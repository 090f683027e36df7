#pragma once

#include "IProxy/IOvikProxy.h"
#include "dbus_ovik/ComWenuOVIKInterface.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class OvikProxyDbus : public DbusProxy<IOvikProxy, ComWenuOVIKInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/"); }

    explicit OvikProxyDbus(QDBusConnection& connection, const PlatformIntrospection& known = {})
        : DbusProxy(path(), connection, known)
    {
    }

public Q_SLOTS:
    status_t getSysCounter(int& resp) override
    {
        return ask(m_dbusObject, &Client::getSysCounter, resp);
    }
    status_t getBackLightCounter(int& resp) override
    {
        return ask(m_dbusObject, &Client::getBlightCounter, resp);
    }
    status_t getVolatileParameter(const QString& name, QString& value) override
    {
        return ask(m_dbusObject, &Client::getVolatileParameter, value, name);
    }
    status_t getSystemParameter(const QString& name, QString& value) override
    {
        return ask(m_dbusObject, &Client::getSystemParameter, value, name);
    }
    status_t getAllVolatileParametersJson(QString& value) override
    {
        return ask(m_dbusObject, &Client::getAllVolatileParametersJSON, value);
    }
    status_t getAllSystemParametersJson(QString& value) override
    {
        return ask(m_dbusObject, &Client::getAllSystemParametersJSON, value);
    }
    status_t setVolatileParameter(const QString& name, const QString& value, int& resp) override
    {
        return ask(m_dbusObject, &Client::setVolatileParameter, resp, name, value);
    }
    status_t setSystemParameter(const QString& name, const QString& value, int& resp) override
    {
        return ask(m_dbusObject, &Client::setSystemParameter, resp, name, value);
    }
    status_t setSystemParametersJSON(const QString& key, const QString& json, int& resp) override
    {
        return ask(m_dbusObject, &Client::setSystemParametersJSON, resp, key, json);
    }
};
