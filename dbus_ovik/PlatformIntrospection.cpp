#include "dbus_ovik/PlatformIntrospection.h"

#include <QDBusError>
#include <QDBusPendingCall>
#include <QXmlStreamReader>

namespace
{
constexpr int deadlineMs = 5000;

// More than any real object needs. The time to read a tag grows with the square of its length.
constexpr int maxDocumentBytes = 64 * 1024;
constexpr int maxTagBytes = 8 * 1024;

/// A tag contains no '<', but may contain '>' in a quoted value, so the tag ends with the last '>'
/// before the next tag. A comment, or a text with '>', counts as part of the tag that it begins or
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
            // The document's own declarations could give its tags any length.
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
    // Qt's own errors, such as a time-out, have no sender. The bus itself reports a full queue.
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
