// Minimal servers of the same kind as the service: a thread serves one client after the other until
// the program is killed.
//   minimal_server SOCKET echo        sends each message back
//   minimal_server SOCKET brightness  answers each message with the brightness, which the
//                                     application thread reads from the platform

#include "ComWenuOVIKBacklightInterface.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace
{
size_t answerBrightness(ComWenuOVIKBacklightInterface& backlight, char* answer, size_t capacity)
{
    int value = -1;
    QMetaObject::invokeMethod(
        &backlight,
        [&] {
            QDBusPendingReply<int> reply = backlight.getBrightness();
            reply.waitForFinished();
            if (!reply.isError())
                value = reply.value();
        },
        Qt::BlockingQueuedConnection);
    return static_cast<size_t>(snprintf(answer, capacity, "0 %d", value)) + 1;
}

/// @param backlight nullptr for an echo
void serve(int listener, ComWenuOVIKBacklightInterface* backlight)
{
    char message[5000];
    for (int client; (client = accept(listener, nullptr, nullptr)) != -1; close(client)) {
        for (ssize_t size; (size = recv(client, message, sizeof message, 0)) > 0;) {
            const size_t length = backlight ? answerBrightness(*backlight, message, sizeof message)
                                            : static_cast<size_t>(size);
            if (send(client, message, length, MSG_NOSIGNAL) == -1)
                break;
        }
    }
}
} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (argc != 3 || strlen(argv[1]) >= sizeof address.sun_path)
        return 2;
    strcpy(address.sun_path, argv[1]);
    const int listener = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 1) != 0)
        return 1;
    ComWenuOVIKBacklightInterface backlight("com.wenu.OVIK", "/Backlight",
                                            QDBusConnection::systemBus());
    std::thread(serve, listener, strcmp(argv[2], "echo") == 0 ? nullptr : &backlight).detach();
    puts("ready");
    fflush(stdout);
    return QCoreApplication::exec();
}
