#pragma once

#include "IProxy/IHWPluginInstanceProxy.h"
#include "dbus_ovik/PluginLedsProxyDbus.h"
#include "dbus_ovik/PluginSensorsProxyDbus.h"

#include "ComWenuOVIKHWPluginInstanceInterface.h"

/// The client only checks that the module is present; its methods are never called.
class HWPluginInstanceProxyDbus
    : public DbusProxy<IHWPluginInstanceProxy, ComWenuOVIKHWPluginInstanceInterface>
{
    Q_OBJECT
public:
    /// @param slot 0 to 9: the path has one digit for the slot.
    static QString path(int slot) { return QStringLiteral("/HWPlugin/") + QChar('0' + slot); }
    static QString ledsPath(int slot) { return path(slot) + QStringLiteral("/Leds"); }
    static QString sensorsPath(int slot) { return path(slot) + QStringLiteral("/Sensors"); }

    HWPluginInstanceProxyDbus(QDBusConnection& connection, int slot,
                              const PlatformIntrospection& known = {})
        : DbusProxy(path(slot), connection, known)
    {
        if (!m_dbusObject)
            return;
        m_slot = slot;
        m_dbusLedsObject = new PluginLedsProxyDbus(&connection, this, ledsPath(slot), known);
        m_dbusSensorsObject =
            new PluginSensorsProxyDbus(&connection, this, sensorsPath(slot), known);
    }

    /// @return the module's slot; -1 when the service has no such object
    int getSlot() const { return m_slot; }

public Q_SLOTS:
    PluginLedsProxyDbus* getLeds() override { return m_dbusLedsObject; }
    PluginSensorsProxyDbus* getSensors() override { return m_dbusSensorsObject; }

private:
    PluginLedsProxyDbus* m_dbusLedsObject = nullptr;       // a child object
    PluginSensorsProxyDbus* m_dbusSensorsObject = nullptr; // a child object
};
