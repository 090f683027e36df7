/* ovik_request: sends requests to the service and prints each with its response. */

#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#define SOCKET_PATH "/tmp/ovik_server.socket"
#define NOT_OURS "who listens at " SOCKET_PATH " is not ovik_server: stop it"

enum { ALL_DONE, REFUSED, USAGE, TIMED_OUT, NOT_UNDERSTOOD, NO_SERVICE = 8 };

static const char usage[] =
    "usage: ovik_request [--timeout SECONDS] [--] [REQUEST...]\n"
    "       ovik_request --probe\n"
    "Sends each REQUEST to the service at " SOCKET_PATH " and prints its response.\n"
    "Without REQUEST, reads requests from standard input, one per line.\n"
    "  --timeout SECONDS  how long to wait for a response (70: a Wi-Fi scan may take 60)\n"
    "  --probe            only tell by the exit status whether there is a service\n"
    "Exit status: 0 each response has status 0; 1 some request was refused; 2 wrong usage;\n"
    "3 no response in time; 4 a response that is none; 8 no service.\n";

static int timeout = 70;

/* A failure after which the connection is of no more use: the service's next response could belong
 * to an earlier request. */
static void fail(int status, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    fputs("ovik_request: ", stderr);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    va_end(arguments);
    exit(status);
}

static void fail_for_system(const char* what)
{
    if (errno == EAGAIN)
        fail(TIMED_OUT, "no response within %d s: %s", timeout,
             "the service is busy, or serves another client; try again, or a longer --timeout");
    if (errno == ENOENT || errno == ECONNREFUSED)
        fail(NO_SERVICE, "no service at " SOCKET_PATH ": start ovik_server, or ./run.sh");
    if (errno == EPIPE || errno == ECONNRESET)
        fail(NO_SERVICE, "the service closed the connection: it has ended");
    if (errno == EACCES)
        fail(NO_SERVICE, "may not use " SOCKET_PATH ": run this as the user of the service");
    fail(NO_SERVICE, "%s: %s", what, strerror(errno));
}

/* The connected socket, or -1 with errno. The bound holds for each later send and receive too. */
static int connect_within(int seconds)
{
    struct sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = SOCKET_PATH};
    const struct timeval bound = {.tv_sec = seconds};
    const int sock = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    if (sock == -1 || setsockopt(sock, SOL_SOCKET, SO_SNDTIMEO, &bound, sizeof bound) == -1 ||
        setsockopt(sock, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound) == -1)
        fail_for_system("cannot make a socket");
    if (connect(sock, (const struct sockaddr*)&address, sizeof address) == -1)
        return -1;
    return sock;
}

static int connection(void)
{
    const int sock = connect_within(timeout);
    if (sock == -1)
        fail_for_system("cannot connect to " SOCKET_PATH);
    return sock;
}

static int probe(void)
{
    /* A queue that is full is somebody's too. */
    return connect_within(1) != -1 || errno == EAGAIN ? ALL_DONE : NO_SERVICE;
}

static void receive(int sock, char* response, size_t size)
{
    ssize_t got;
    do { /* a stop and a continue end a receive that has a bound */
        got = recv(sock, response, size, 0);
    } while (got == -1 && errno == EINTR);
    if (got == 0)
        errno = EPIPE;
    if (got <= 0)
        fail_for_system("cannot receive");
    if (memchr(response, 0, (size_t)got) != response + got - 1)
        fail(NOT_UNDERSTOOD, "a response without one NUL at its end; " NOT_OURS);
}

/* A response is a status, alone or with a blank and more behind it. */
static bool is_success(const char* response)
{
    char* end;
    const long status = strtol(response, &end, 10);
    if (end == response || (*end != 0 && *end != ' '))
        fail(NOT_UNDERSTOOD, "a response without a status: \"%s\"; " NOT_OURS, response);
    return status == 0;
}

static bool request(int sock, const char* text)
{
    static char response[65536]; /* several times what the service can send */
    if (send(sock, text, strlen(text) + 1, MSG_NOSIGNAL) == -1)
        fail_for_system("cannot send");
    receive(sock, response, sizeof response);
    printf("%s -> %s\n", text, response);
    fflush(stdout);
    return is_success(response);
}

/* The service looks at the first field only. */
static bool is_quit(const char* text)
{
    return strncmp(text, "quit", 4) == 0 && (text[4] == 0 || text[4] == ';');
}

static bool next_line(char** line, size_t* size, bool prompt)
{
    if (prompt) {
        fputs("ovik> ", stdout);
        fflush(stdout);
    }
    if (getline(line, size, stdin) == -1) {
        if (prompt)
            putchar('\n');
        return false;
    }
    (*line)[strcspn(*line, "\n")] = 0;
    return true;
}

/* At a prompt, a connection of its own for each request: the service serves one client at a time,
 * and others would wait for whoever sits there. */
static int request_lines(void)
{
    int status = ALL_DONE;
    const bool prompt = isatty(STDIN_FILENO);
    int sock = prompt ? -1 : connection();
    char* line = NULL;
    size_t size = 0;
    bool ended = false;
    while (!ended && next_line(&line, &size, prompt)) {
        if (*line == 0)
            continue;
        if (prompt)
            sock = connection();
        if (!request(sock, line))
            status = REFUSED;
        if (prompt)
            close(sock);
        ended = is_quit(line);
    }
    free(line);
    return status;
}

static int request_each(int sock, char** texts)
{
    int status = ALL_DONE;
    for (; *texts; ++texts) {
        if (!request(sock, *texts))
            status = REFUSED;
    }
    return status;
}

static int seconds(const char* text)
{
    char* end;
    const long value = text ? strtol(text, &end, 10) : 0;
    if (value < 1 || value > 86400 || *end != 0)
        fail(USAGE, "--timeout wants whole seconds, at least 1\n%s", usage);
    return (int)value;
}

int main(int argc, char* argv[])
{
    char** next = argv + (argc > 0);
    for (; *next && (*next)[0] == '-'; ++next) {
        if (strcmp(*next, "--help") == 0)
            return fputs(usage, stdout) < 0;
        if (strcmp(*next, "--probe") == 0 && !next[1])
            return probe();
        if (strcmp(*next, "--") == 0) {
            ++next;
            break;
        }
        if (strcmp(*next, "--timeout") != 0)
            fail(USAGE, "unexpected option %s\n%s", *next, usage);
        timeout = seconds(*++next);
    }

    return *next ? request_each(connection(), next) : request_lines();
}
