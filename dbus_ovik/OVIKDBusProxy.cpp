#include "dbus_ovik/OVIKDBusProxy.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QXmlStreamReader>

namespace
{
constexpr int introspectionTimeoutMs = 1000;

bool lists(const QString& introspection, const QString& interface)
{
    // The interfaces of the object itself; those of child nodes do not count.
    QXmlStreamReader xml(introspection);
    if (!xml.readNextStartElement())
        return false;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("interface") &&
            xml.attributes().value(QLatin1String("name")) == interface)
            return true;
        xml.skipCurrentElement();
    }
    return false;
}
} // namespace

bool isPresent(const QDBusAbstractInterface& client)
{
    if (!client.isValid())
        return false;

    const QDBusMessage answer = client.connection().call(
        QDBusMessage::createMethodCall(client.service(), client.path(),
                                       QStringLiteral("org.freedesktop.DBus.Introspectable"),
                                       QStringLiteral("Introspect")),
        QDBus::Block, introspectionTimeoutMs);

    if (answer.type() == QDBusMessage::ErrorMessage) {
        const QDBusError::ErrorType error = QDBusError(answer).type();
        return error != QDBusError::UnknownObject && error != QDBusError::UnknownInterface;
    }
    return lists(answer.arguments().value(0).toString(), client.interface());
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
