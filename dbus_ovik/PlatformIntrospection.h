#pragma once

#include <QDBusAbstractInterface>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QHash>
#include <QStringList>

/// The platform service's name on the system bus.
inline QString ovikServiceName() { return QStringLiteral("com.wenu.OVIK"); }

/**
 * The answers of the platform's objects to Introspect: whether the objects are present.
 *
 * QDBusAbstractInterface::isValid() is true for any path and interface of a name that has an owner,
 * so the objects themselves are asked.
 */
class PlatformIntrospection
{
public:
    /// Asks no object yet; isPresent() then asks the object of each new client.
    PlatformIntrospection() = default;

    /// Asks all objects at once and waits for their answers, at most 5 s.
    PlatformIntrospection(const QDBusConnection& connection, const QStringList& paths);

    bool hasAsked(const QString& path) const { return m_answers.contains(path); }

    /// True when an answer came in time, even if it is an error.
    bool hasAnswered(const QString& path) const;

    /**
     * True when the object does not exist, or lists its interfaces without @p interface. Any other
     * answer, or none, is no evidence: a working object need not support introspection.
     */
    bool isDenied(const QString& path, const QString& interface) const;

private:
    QHash<QString, QDBusMessage> m_answers;
};

/**
 * True when the client's service does not deny having its object and interface.
 *
 * @param known the answers so far. When the client's object is not among them, the service must
 *              have an owner and is asked now.
 */
bool isPresent(const QDBusAbstractInterface& client, const PlatformIntrospection& known = {});
