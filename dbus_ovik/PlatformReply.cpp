#include "dbus_ovik/PlatformReply.h"

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
