#pragma once

#include "IProxy/OVIKPlatformInterface.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKPlatformSensorsInterface.h"

/// The I/O points of one plug-in module. Returns -1 or no bytes without an I/O object, and 0 or no
/// bytes when the call fails.
class PluginSensorsProxyDbus
    : public PluginProxy<IPluginSensors, ComWenuOVIKPlatformSensorsInterface>
{
    Q_OBJECT
public:
    using PluginProxy::PluginProxy;

public Q_SLOTS:
    int getIoMode(uint ioId) override
    {
        return askValue(m_dbusObject, &Client::getIoMode, -1, ioId);
    }
    QByteArray readIo(uint ioId, uint length) override
    {
        return askValue(m_dbusObject, &Client::readIo, QByteArray(), ioId, length);
    }
    int writeIo(uint ioId, const QByteArray& data) override
    {
        return askValue(m_dbusObject, &Client::writeIo, -1, ioId, data);
    }
};
