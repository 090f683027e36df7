/* The least that a SOCK_SEQPACKET server can be: it sends each message back as soon as poll() says
 * that there is one. echo SOCKET: serves one client after the other until it is ended. */
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

static void serve(int sock)
{
    char message[5000];
    struct pollfd event = {.fd = sock, .events = POLLIN};
    while (poll(&event, 1, -1) == 1) {
        const ssize_t size = recv(sock, message, sizeof message, 0);
        if (size <= 0 || send(sock, message, (size_t)size, MSG_NOSIGNAL) != size)
            return;
    }
}

int main(int argc, char* argv[])
{
    struct sockaddr_un address = {.sun_family = AF_UNIX};
    const int sock = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    if (argc != 2 || strlen(argv[1]) >= sizeof address.sun_path)
        return 2;
    memcpy(address.sun_path, argv[1], strlen(argv[1]));
    if (bind(sock, (struct sockaddr*)&address, sizeof address) != 0 || listen(sock, 1) != 0) {
        perror("echo");
        return 1;
    }
    puts("ready");
    fflush(stdout);
    for (;;) {
        const int client = accept(sock, NULL, NULL);
        if (client == -1)
            return 1;
        serve(client);
        close(client);
    }
}
