#include "dbus_ovik/ServiceManagerProxyDbus.h"

ServiceManagerProxyDbus::ServiceManagerProxyDbus(QDBusConnection& connection,
                                                 const PlatformIntrospection& known)
    : DbusProxy(path(), connection, known)
{
    if (!m_dbusObject)
        return;
    if (!connect(m_dbusObject.get(), SIGNAL(commandResult(QString, QString, QString)), this,
                 SLOT(onCommandResult(QString, QString, QString)))) {
        // The text names another class on purpose: log readers look for that name.
        qWarning("Error connecting to PlatformSensors::onError");
    }
}

status_t ServiceManagerProxyDbus::command(const QString& service, const QString& command,
                                          const QString& opts, void* fnCallback, int& resp)
{
    if (!m_dbusObject)
        return OVIK_NO_PLATFORM;
    // Stored before the call: the result may arrive before the reply.
    fnWifiInterfaceCallback = reinterpret_cast<decltype(fnWifiInterfaceCallback)>(fnCallback);
    return ask(m_dbusObject, &Client::command, resp, service, command, opts);
}

void ServiceManagerProxyDbus::onCommandResult(const QString& service, const QString& command,
                                              const QString& json)
{
    if (!fnWifiInterfaceCallback)
        return;
    fnWifiInterfaceCallback(service.toLatin1().constData(), command.toLatin1().constData(),
                            json.toLatin1().constData());
}
