#include "dbus_ovik/OVIKDBusProxy.h"

#include <QDBusConnection>

bool isPresent(const QDBusAbstractInterface& client, const PlatformIntrospection& known)
{
    if (known.hasAsked(client.path()))
        return !known.isDenied(client.path(), client.interface());
    return client.isValid() &&
           isPresent(client, PlatformIntrospection(client.connection(), {client.path()}));
}

void warnIfBusLost(const QDBusConnection& connection)
{
    static QString lost;
    if (connection.isConnected() || connection.name() == lost)
        return;
    lost = connection.name();
    qWarning("The connection to the system bus is lost, and no platform can be reached: restart "
             "this service");
}

bool isTypeMismatch(const QDBusPendingCall& finished)
{
    return finished.isError() && finished.error().type() == QDBusError::InvalidSignature &&
           finished.reply().service().isEmpty();
}

QDBusPendingReply<QString> ComWenuOVIKInterface::getAllSystemParametersJSON()
{
    return ComWenuOVIKGeneratedInterface::getAllSystemParametersJSON();
}

QDBusPendingReply<QString> ComWenuOVIKInterface::getVolatileParameter(const QString& name)
{
    return ComWenuOVIKGeneratedInterface::getVolatileParameter(name);
}

QDBusPendingReply<QString> ComWenuOVIKInterface::getAllVolatileParametersJSON()
{
    return ComWenuOVIKGeneratedInterface::getAllVolatileParametersJSON();
}
