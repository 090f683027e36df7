#pragma once

#include "IProxy/IBuzzerProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKBuzzerInterface.h"

class BuzzerProxyDbus : public DbusProxy<IBuzzerProxy, ComWenuOVIKBuzzerInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/Buzzer"); }

    explicit BuzzerProxyDbus(QDBusConnection& connection, const PlatformIntrospection& known = {})
        : DbusProxy(path(), connection, known)
    {
    }

public Q_SLOTS:
    status_t setBuzzerMode(int mode, int& resp) override
    {
        return ask(m_dbusObject, &Client::SetBuzzerMode, resp, mode);
    }
    status_t getBuzzerMode(int& resp) override
    {
        return ask(m_dbusObject, &Client::GetBuzzerMode, resp);
    }
    status_t setBuzzerUserControl(int control, int& resp) override
    {
        return ask(m_dbusObject, &Client::SetBuzzerUserControl, resp, control);
    }
    status_t setBuzzerOnTime(int time, int& resp) override
    {
        return ask(m_dbusObject, &Client::SetBuzzerOnTime, resp, time);
    }
    status_t setBuzzerOffTime(int time, int& resp) override
    {
        return ask(m_dbusObject, &Client::SetBuzzerOffTime, resp, time);
    }
};
