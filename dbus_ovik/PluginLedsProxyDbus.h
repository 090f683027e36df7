#pragma once

#include "IProxy/OVIKPlatformInterface.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKPlatformLedsInterface.h"

/// The LEDs of one plug-in module. Returns -1 without an LED object, and 0 when the call fails.
class PluginLedsProxyDbus : public PluginProxy<IPluginLeds, ComWenuOVIKPlatformLedsInterface>
{
    Q_OBJECT
public:
    using PluginProxy::PluginProxy;

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
};
