#include "dbus_ovik/ComWenuOVIKInterface.h"

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
