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

/// A run that was killed leaves its socket file behind: it is removed, once.
bool start(OvikServer& server)
{
    if (server.start(socketPath))
        return true;
    printf("RETRY: Unlinking server at %s\n", socketPath);
    printf("unlink returned %d\n", unlink(socketPath));
    return server.start(socketPath);
}

/// Any user of the bus may send the service 32 MB, for which it allocates 270 MB in up to millions
/// of blocks. glibc returns only the free end of its heap by itself: one small block there, which
/// the thread's cache of freed blocks may be holding, keeps 200 MB. No mallopt() setting prevents
/// that.
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
    setvbuf(stdout, nullptr, _IOLBF, 0); // a failure's line is out before its response
    signal(SIGPIPE, SIG_IGN);            // writing to whoever has gone fails, and no more

    OvikServer server;
    if (!start(server)) {
        puts("ovik_server start failed");
        return EXIT_FAILURE;
    }
    // A bridge that failed to start leaves every call with a status of its own, so this serves on.
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
