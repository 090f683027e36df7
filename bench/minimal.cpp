// The least that a resident Qt D-Bus program can be: an application, a connection to the system
// bus, one blocking call to the platform, and the event loop. With "client" as its argument it
// calls by a QDBusInterface, as programs do that are written by hand; that one asks the object what
// it has.

#include <QCoreApplication>
#include <QDBusInterface>

#include <cstdio>

namespace
{
const char* const service = "com.wenu.OVIK";
const char* const path = "/Backlight";
const char* const interface = "com.wenu.OVIK.Backlight";
const char* const method = "getBrightness";
} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QDBusConnection bus = QDBusConnection::systemBus();
    const QDBusMessage answer =
        argc > 1 ? QDBusInterface(service, path, interface, bus).call(method)
                 : bus.call(QDBusMessage::createMethodCall(service, path, interface, method));
    if (answer.type() != QDBusMessage::ReplyMessage)
        return 1;
    printf("brightness %d\n", answer.arguments().value(0).toInt());
    fflush(stdout);
    return QCoreApplication::exec();
}
