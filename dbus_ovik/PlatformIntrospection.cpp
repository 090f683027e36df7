#include "dbus_ovik/PlatformIntrospection.h"

#include <QDBusError>
#include <QDBusPendingCall>
#include <QXmlStreamReader>

namespace
{
constexpr int deadlineMs = 5000;

// Beyond any real object's. Reading a tag takes time by the square of its length.
constexpr int maxDocumentBytes = 64 * 1024;
constexpr int maxTagBytes = 8 * 1024;

/// A tag has no '<' inside, but may have '>' in a quoted value, so it ends with the last one before
/// the next tag. A comment, or a text with '>', counts as part of the tag that it begins or
/// follows.
bool hasLongTag(const QByteArray& document)
{
    for (int begin = document.indexOf('<'); begin != -1;) {
        const int next = document.indexOf('<', begin + 1);
        if (document.lastIndexOf('>', next) - begin >= maxTagBytes)
            return true;
        begin = next;
    }
    return false;
}

/// True for a well-formed document in which the object does not list @p interface.
bool isWithout(const QString& interface, const QString& document)
{
    const QByteArray bytes = document.toUtf8();
    if (bytes.size() > maxDocumentBytes || hasLongTag(bytes))
        return false;

    QXmlStreamReader xml(document);
    int depth = 0;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::DTD:
            // Declarations of the document's own could give its tags any length.
            if (xml.text().contains('['))
                return false;
            break;
        case QXmlStreamReader::StartElement:
            // The interfaces of the object itself; those of child nodes do not count.
            if (++depth == 2 && xml.name() == QLatin1String("interface") &&
                xml.attributes().value(QLatin1String("name")) == interface)
                return false;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        default:
            break;
        }
    }
    return !xml.hasError();
}
} // namespace

PlatformIntrospection::PlatformIntrospection(const QDBusConnection& connection,
                                             const QStringList& paths)
{
    QHash<QString, QDBusPendingCall> calls;
    for (const QString& path : paths) {
        const auto introspect = QDBusMessage::createMethodCall(
            ovikServiceName(), path, QStringLiteral("org.freedesktop.DBus.Introspectable"),
            QStringLiteral("Introspect"));
        calls.insert(path, connection.asyncCall(introspect, deadlineMs));
    }
    for (auto call = calls.begin(); call != calls.end(); ++call) {
        call->waitForFinished();
        m_answers.insert(call.key(), call->reply());
    }
}

bool PlatformIntrospection::hasAnswered(const QString& path) const
{
    // Qt's own errors, such as that of the deadline, have no sender. A full queue is the bus's.
    const QDBusMessage answer = m_answers.value(path);
    return !answer.service().isEmpty() && QDBusError(answer).type() != QDBusError::LimitsExceeded;
}

bool PlatformIntrospection::isDenied(const QString& path, const QString& interface) const
{
    const QDBusMessage answer = m_answers.value(path);
    if (answer.type() == QDBusMessage::ErrorMessage)
        return QDBusError(answer).type() == QDBusError::UnknownObject;
    return answer.signature() == QLatin1String("s") &&
           isWithout(interface, answer.arguments().at(0).toString());
}

bool isPresent(const QDBusAbstractInterface& client, const PlatformIntrospection& known)
{
    if (known.hasAsked(client.path()))
        return !known.isDenied(client.path(), client.interface());
    return client.isValid() &&
           isPresent(client, PlatformIntrospection(client.connection(), {client.path()}));
}
