// A minimal resident Qt D-Bus program: an application object, a connection to the system bus, one
// blocking call to the platform, and the event loop.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QDBusMessage answer = QDBusConnection::systemBus().call(QDBusMessage::createMethodCall(
        "com.wenu.OVIK", "/Backlight", "com.wenu.OVIK.Backlight", "getBrightness"));
    if (answer.type() != QDBusMessage::ReplyMessage)
        return 1;
    printf("brightness %d\n", answer.arguments().value(0).toInt());
    fflush(stdout);
    return QCoreApplication::exec();
}
