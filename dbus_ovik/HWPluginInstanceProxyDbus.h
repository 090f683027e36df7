#pragma once

#include "IProxy/IHWPluginInstanceProxy.h"
#include "dbus_ovik/PluginLedsProxyDbus.h"
#include "dbus_ovik/PluginSensorsProxyDbus.h"

class HWPluginInstanceProxyDbus : public IHWPluginInstanceProxy
{
    Q_OBJECT
    using Client = ComWenuOVIKHWPluginInstanceInterface;

public:
    /// @param slot 0 to 9: the path has room for one digit.
    static QString path(int slot) { return QStringLiteral("/HWPlugin/") + QChar('0' + slot); }
    static QString ledsPath(int slot) { return path(slot) + QStringLiteral("/Leds"); }
    static QString sensorsPath(int slot) { return path(slot) + QStringLiteral("/Sensors"); }

    HWPluginInstanceProxyDbus(QDBusConnection& connection, int slot,
                              const PlatformIntrospection& known = {})
        : m_dbusPath(path(slot)), m_dbusObject(makeClient<Client>(m_dbusPath, connection, known))
    {
        if (!m_dbusObject)
            return;
        m_slot = slot;
        m_dbusLedsObject = new PluginLedsProxyDbus(&connection, this, ledsPath(slot), known);
        m_dbusSensorsObject =
            new PluginSensorsProxyDbus(&connection, this, sensorsPath(slot), known);
    }

    bool isValid() const override { return m_dbusObject && m_dbusObject->isValid(); }

    /// True when the platform had the module, whether it can be reached now or not.
    bool hasClient() const { return m_dbusObject != nullptr; }

    /// The slot that the module sits in; -1 when the service has no such object.
    int getSlot() const { return m_slot; }

public Q_SLOTS:
    PluginLedsProxyDbus* getLeds() override { return m_dbusLedsObject; }
    PluginSensorsProxyDbus* getSensors() override { return m_dbusSensorsObject; }

private:
    const QString m_dbusPath;
    PluginLedsProxyDbus* m_dbusLedsObject = nullptr;       // a child object
    PluginSensorsProxyDbus* m_dbusSensorsObject = nullptr; // a child object
    /// Only tells whether the module is there; none of its methods is called.
    const std::unique_ptr<Client> m_dbusObject;
};
