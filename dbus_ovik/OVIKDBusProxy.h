#pragma once

#include "IProxy/ovik_status.h"
#include "dbus_ovik/OVIKDBusRecords.h"
#include "dbus_ovik/PlatformIntrospection.h"

// Generated from interfaces/*.xml at build time.
#include "ComWenuOVIKBacklightInterface.h"
#include "ComWenuOVIKBuzzerInterface.h"
#include "ComWenuOVIKGeneratedInterface.h"
#include "ComWenuOVIKHWPluginInstanceInterface.h"
#include "ComWenuOVIKHWPluginInterface.h"
#include "ComWenuOVIKI2CSEEPROMInterface.h"
#include "ComWenuOVIKNFCReaderInterface.h"
#include "ComWenuOVIKNetworkManagerInterface.h"
#include "ComWenuOVIKPartitionInfoInterface.h"
#include "ComWenuOVIKPlatformLedsInterface.h"
#include "ComWenuOVIKPlatformSensorsInterface.h"
#include "ComWenuOVIKServiceManagerInterface.h"
#include "ComWenuOVIKSplashImageInfoInterface.h"
#include "ComWenuOVIKStorageMgrInterface.h"
#include "ComWenuOVIKSysStatInterface.h"
#include "ComWenuOVIKSystemInfoInterface.h"
#include "ComWenuOVIKTimeMgrInterface.h"

#include <QDBusPendingReply>
#include <QDBusReply>

#include <cstdio>
#include <memory>

/// The platform service's name on the system bus.
inline QString ovikServiceName() { return QStringLiteral("com.wenu.OVIK"); }

/**
 * Client of the service's base interface. Three of its calls are virtual, so that a class derived
 * from it can answer them; generated calls are not. Their order is that of the virtual table, and
 * stays.
 */
class ComWenuOVIKInterface : public ComWenuOVIKGeneratedInterface
{
    Q_OBJECT
public:
    using ComWenuOVIKGeneratedInterface::ComWenuOVIKGeneratedInterface;

public Q_SLOTS:
    virtual QDBusPendingReply<QString> getAllSystemParametersJSON();
    virtual QDBusPendingReply<QString> getVolatileParameter(const QString& name);
    virtual QDBusPendingReply<QString> getAllVolatileParametersJSON();
};

/**
 * True when the client's service does not deny having its object and interface.
 *
 * @param known what the platform has answered already. A service whose object is not in there must
 *              have an owner, and is asked now.
 */
bool isPresent(const QDBusAbstractInterface& client, const PlatformIntrospection& known = {});

/// The client of the service's object at @p path, or null when that is not present.
template <class Client>
std::unique_ptr<Client> makeClient(const QString& path, const QDBusConnection& connection,
                                   const PlatformIntrospection& known)
{
    auto client = std::make_unique<Client>(ovikServiceName(), path, connection, nullptr);
    if (!isPresent(*client, known))
        client.reset();
    return client;
}

/**
 * True for a finished reply whose arguments are not of the expected type.
 *
 * Qt D-Bus puts an error of its own in place of such a reply. What tells it apart from an error of
 * the same name that the platform sent is that it has no sender.
 */
bool isTypeMismatch(const QDBusPendingCall& finished);

/// Says on standard error, once per connection, that the bus is lost and what to do.
void warnIfBusLost(const QDBusConnection& connection);

/**
 * Waits for @p reply and takes its first argument into @p value. A reply of an unexpected type
 * gives the default value.
 *
 * @return false, with @p value untouched and a line on standard output, for an error reply or none.
 */
template <class T>
bool getReplyValue(QDBusPendingReply<T>& reply, T& value)
{
    reply.waitForFinished();
    if (isTypeMismatch(reply)) {
        value = T();
        return true;
    }
    if (reply.isError()) {
        puts("getReplyValue: error");
        return false;
    }
    value = qdbus_cast<T>(reply.argumentAt(0));
    return true;
}

/// One proxy operation: one call of the platform, its answer into @p resp.
template <class Client, class Base, class T, class... Params, class... Args>
status_t ask(const std::unique_ptr<Client>& client, QDBusPendingReply<T> (Base::*method)(Params...),
             T& resp, const Args&... args)
{
    if (!client)
        return OVIK_NO_PLATFORM;
    QDBusPendingReply<T> reply = (client.get()->*method)(args...);
    if (getReplyValue(reply, resp))
        return OVIK_OK;
    warnIfBusLost(client->connection());
    return OVIK_REPLY_ERROR;
}

/**
 * One plug-in operation: the platform's answer itself, or @p absent when there is no object to
 * call. A call that fails gives the default value; an error is not told apart.
 */
template <class Client, class T, class... Params, class... Args>
T askValue(const std::unique_ptr<Client>& client, QDBusPendingReply<T> (Client::*method)(Params...),
           T absent, const Args&... args)
{
    if (!client)
        return absent;
    const QDBusReply<T> reply = (client.get()->*method)(args...);
    if (!reply.isValid())
        warnIfBusLost(client->connection());
    return reply.value();
}

/// What every proxy has in common: the client of its one object, or null without that.
template <class Interface, class ClientClass>
class DbusProxy : public Interface
{
public:
    bool isValid() const override { return m_dbusObject && m_dbusObject->isValid(); }

    /// True when the platform had the object, whether it can be reached now or not.
    bool hasClient() const { return m_dbusObject != nullptr; }

protected:
    using Client = ClientClass;

    DbusProxy(const QString& path, const QDBusConnection& connection,
              const PlatformIntrospection& known)
        : m_dbusObject(makeClient<Client>(path, connection, known))
    {
    }

    const std::unique_ptr<Client> m_dbusObject;
};
