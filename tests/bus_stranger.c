/*
 * A hostile local user of the system bus: sends unsolicited signals to every connection of a
 * process. Plain C with libsystemd, so that it compiles without Qt and the tests:
 *
 *     cc bus_stranger.c -lsystemd -o bus_stranger
 *     bus_stranger PID descriptors COUNT    COUNT signals with 16 descriptors each, in one burst
 *     bus_stranger PID signal BYTES         one signal with BYTES bytes of short strings
 *
 * The exit status is 0 when the bus has accepted all signals.
 */
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

enum { descriptorsPerSignal = 16 }; /* the system bus's limit */

static int check(int result, const char* step)
{
    if (result >= 0)
        return result;
    fprintf(stderr, "bus_stranger: %s: %s\n", step, strerror(-result));
    exit(EXIT_FAILURE);
}

static void fillWithDescriptors(sd_bus_message* signal)
{
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    for (int i = 0; i < descriptorsPerSignal; ++i)
        check(sd_bus_message_append(signal, "h", fd), "append a descriptor");
    close(fd);
}

/* The reader allocates each string separately, which costs more than one string of that size. */
static void fillWithBytes(sd_bus_message* signal, long bytes)
{
    const long bytesPerString = 8; /* the length, "x", its NUL, two bytes of padding */
    check(sd_bus_message_open_container(signal, 'a', "s"), "open the array");
    for (long i = 0; i < bytes / bytesPerString; ++i)
        check(sd_bus_message_append_basic(signal, 's', "x"), "append a string");
    check(sd_bus_message_close_container(signal), "close the array");
}

int main(int argc, char** argv)
{
    const int sendsDescriptors = argc == 4 && strcmp(argv[2], "descriptors") == 0;
    if (argc != 4 || (!sendsDescriptors && strcmp(argv[2], "signal") != 0)) {
        fputs("usage: bus_stranger PID descriptors COUNT | signal BYTES\n", stderr);
        return 2;
    }
    const long pid = strtol(argv[1], NULL, 10);
    const long amount = strtol(argv[3], NULL, 10);

    sd_bus* bus;
    check(sd_bus_open_system(&bus), "connect to the system bus");
    char** names;
    check(sd_bus_list_names(bus, &names, NULL), "list the names");

    int victims = 0;
    for (char** name = names; *name; ++name) {
        /* A connection may close between the two calls. */
        sd_bus_creds* creds;
        pid_t owner = 0;
        if ((*name)[0] == ':' && sd_bus_get_name_creds(bus, *name, SD_BUS_CREDS_PID, &creds) >= 0) {
            sd_bus_creds_get_pid(creds, &owner);
            sd_bus_creds_unref(creds);
        }
        const int isVictim = owner == (pid_t)pid;
        victims += isVictim;
        for (long i = 0; isVictim && i < (sendsDescriptors ? amount : 1); ++i) {
            sd_bus_message* signal;
            check(sd_bus_message_new_signal(bus, &signal, "/", "stranger.Signal", "Sent"),
                  "signal");
            if (sendsDescriptors)
                fillWithDescriptors(signal);
            else
                fillWithBytes(signal, amount);
            check(sd_bus_send_to(bus, signal, *name, NULL), "send");
            sd_bus_message_unref(signal);
        }
        free(*name);
    }
    free(names);
    /* The bus replies to this call after it has processed all signals. Debian's policy lets any
     * user call it, unlike org.freedesktop.DBus.Peer. */
    check(sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                             "org.freedesktop.DBus", "GetId", NULL, NULL, ""),
          "call the bus");
    sd_bus_unref(bus);
    if (!victims)
        fprintf(stderr, "bus_stranger: process %ld has no connection to the bus\n", pid);
    return victims ? EXIT_SUCCESS : EXIT_FAILURE;
}
