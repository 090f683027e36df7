// The least that answers requests as the service does: a main thread that receives a message, hands
// it over to the application thread, which asks the platform for the brightness, whatever the
// message is, and sends the answer. server SOCKET: serves one client after the other until it is
// ended.

#include "dbus_ovik/OVIKDBusProxy.h"

#include <QCoreApplication>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace
{
ComWenuOVIKBacklightInterface* backlight;
std::atomic<bool> isStarted{false};

void runApplication()
{
    int argc = 1;
    char name[] = "server";
    char* argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    ComWenuOVIKBacklightInterface client(ovikServiceName(), "/Backlight",
                                         QDBusConnection::systemBus());
    backlight = &client;
    isStarted = true;
    QCoreApplication::exec();
}

void serve(int sock)
{
    char message[5000];
    while (recv(sock, message, sizeof message, 0) > 0) {
        int brightness = -1;
        QMetaObject::invokeMethod(
            backlight,
            [&] {
                QDBusPendingReply<int> reply = backlight->getBrightness();
                getReplyValue(reply, brightness);
            },
            Qt::BlockingQueuedConnection);
        const int size = snprintf(message, sizeof message, "0 %d", brightness) + 1;
        if (send(sock, message, static_cast<size_t>(size), MSG_NOSIGNAL) != size)
            return;
    }
}
} // namespace

int main(int argc, char* argv[])
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const int sock = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    if (argc != 2 || strlen(argv[1]) >= sizeof address.sun_path)
        return 2;
    strcpy(address.sun_path, argv[1]);
    if (bind(sock, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(sock, 1) != 0) {
        perror("server");
        return 1;
    }
    std::thread application(runApplication);
    while (!isStarted)
        usleep(1000);
    puts("ready");
    fflush(stdout);
    for (int client; (client = accept(sock, nullptr, nullptr)) != -1; close(client))
        serve(client);
    _exit(1);
}
