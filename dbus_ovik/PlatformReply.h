#pragma once

#include "IProxy/ovik_status.h"

#include <QDBusConnection>
#include <QDBusPendingReply>
#include <QDBusReply>

#include <cstdio>
#include <memory>

/**
 * True for a finished reply whose arguments are not of the expected type.
 *
 * Qt D-Bus replaces such a reply by its own error. Unlike an error of the same name from the
 * platform, Qt's error has no sender.
 */
bool isTypeMismatch(const QDBusPendingCall& finished);

/// Reports on standard error, once per connection, that the bus is lost and what to do.
void warnIfBusLost(const QDBusConnection& connection);

/**
 * Waits for @p reply and copies its first argument to @p value. A reply of an unexpected type
 * gives the default value.
 *
 * @return false for an error reply or none, with @p value unchanged and a line on standard output
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

/// One proxy operation: calls the platform once and writes the answer to @p resp.
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
 * One plug-in operation. @return the platform's answer; @p absent when there is no object to call;
 * the default value when the call fails, so errors cannot be detected.
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
