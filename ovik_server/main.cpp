#include "ovik_server/ovik_server.h"

#include "wrapper_ovik/ovik_c.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <unistd.h>

namespace
{
constexpr const char* socketPath = "/tmp/ovik_server.socket";
constexpr useconds_t idleSleepMicroseconds = 10000;
constexpr unsigned int idleSleepsPerSecond = 1000000 / idleSleepMicroseconds;

/// A killed run leaves its socket file, so the file is removed once.
bool start(OvikServer& server)
{
    if (server.start(socketPath))
        return true;
    printf("RETRY: Unlinking server at %s\n", socketPath);
    printf("unlink returned %d\n", unlink(socketPath));
    return server.start(socketPath);
}

/// Any user of the bus can send the service 32 MB, which makes it allocate 270 MB in up to millions
/// of blocks. By itself, glibc returns only the free end of its heap: one small block at the end,
/// even a free one in the thread's cache, keeps 200 MB. No mallopt() setting prevents this.
void returnFreedMemory()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}
} // namespace

int main()
{
#ifdef __GLIBC__
    mallopt(M_ARENA_MAX, 1); // malloc_trim() does not shrink the heaps of other threads
#endif
    setvbuf(stdout, nullptr, _IOLBF, 0); // a failure's line is written before its response
    signal(SIGPIPE, SIG_IGN);            // a write to a closed client only fails

    OvikServer server;
    if (!start(server)) {
        puts("ovik_server start failed");
        return EXIT_FAILURE;
    }
    // The result is ignored: if the bridge fails to start, every call returns an error status.
    ovik_init(OVIK_MODE_NONE_THEN_DBUS);

    for (unsigned int idleSleeps = 0; !server.isQuit();) {
        if (server.process())
            continue;
        usleep(idleSleepMicroseconds);
        if (++idleSleeps % idleSleepsPerSecond == 0)
            returnFreedMemory();
    }

    puts("---- ovik_shutdown ----");
    const status_t status = ovik_shutdown();
    if (status != OVIK_OK) {
        printf("ovik_shutdown failed with %d\n", status);
        return EXIT_FAILURE;
    }
    puts("ovik_server exiting");
    return EXIT_SUCCESS;
}
