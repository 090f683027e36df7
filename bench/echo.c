/* The least that a SOCK_SEQPACKET server can be: it waits for a message and sends it back, a system
 * call each. echo SOCKET: serves one client after the other until it is ended. */
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

static void serve(int sock)
{
    char message[5000];
    ssize_t size;
    while ((size = recv(sock, message, sizeof message, 0)) > 0) {
        if (send(sock, message, (size_t)size, MSG_NOSIGNAL) != size)
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
