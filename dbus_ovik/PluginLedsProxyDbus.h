#pragma once

#include "IProxy/OVIKPlatformInterface.h"
#include "dbus_ovik/OVIKDBusProxy.h"

/// The LEDs of one plug-in module. -1 without an LED object; 0 when the call fails.
class PluginLedsProxyDbus : public IPluginLeds
{
    Q_OBJECT
    using Client = ComWenuOVIKPlatformLedsInterface;

public:
    PluginLedsProxyDbus(QDBusConnection* connection, QObject* parent, const QString& path,
                        const PlatformIntrospection& known = {})
        : IPluginLeds(parent), m_dbusObject(makeClient<Client>(path, *connection, known))
    {
    }

    bool isValid() const { return m_dbusObject != nullptr; }

public Q_SLOTS:
    int GetLedMode(uint ledId) const override
    {
        return askValue(m_dbusObject, &Client::GetLedMode, -1, ledId);
    }
    int SetLedUserControl(uint ledId, int control) override
    {
        return askValue(m_dbusObject, &Client::SetLedUserControl, -1, ledId, control);
    }
    int flash(uint ledId, uint value, int time) override
    {
        return askValue(m_dbusObject, &Client::flash, -1, ledId, value, time);
    }
    int blink(uint ledId, uint value, int onTime, int offTime) override
    {
        return askValue(m_dbusObject, &Client::blink, -1, ledId, value, onTime, offTime);
    }
    int SetLedOnTime(uint ledId, int time) override
    {
        return askValue(m_dbusObject, &Client::SetLedOnTime, -1, ledId, time);
    }
    int SetLedOffTime(uint ledId, int time) override
    {
        return askValue(m_dbusObject, &Client::SetLedOffTime, -1, ledId, time);
    }
    int SetLedValue(uint ledId, uint value) override
    {
        return askValue(m_dbusObject, &Client::SetLedValue, -1, ledId, value);
    }

private:
    const std::unique_ptr<Client> m_dbusObject;
};
