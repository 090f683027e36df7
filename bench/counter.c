/* Counts the allocations of the program that it is loaded into by LD_PRELOAD, by thread. */
#include "counter.h"

#include <execinfo.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

extern void* __libc_malloc(size_t size);
extern void* __libc_calloc(size_t count, size_t size);
extern void* __libc_realloc(void* block, size_t size);

enum { DEEPEST = 40 };

static struct counter* counter;
static int stacks = -1;
static pthread_mutex_t writing = PTHREAD_MUTEX_INITIALIZER;
static __thread int inside __attribute__((tls_model("initial-exec")));

__attribute__((constructor)) static void open_files(void)
{
    void* frames[DEEPEST];
    backtrace(frames, DEEPEST); /* which loads what it needs at its first call */
    const char* const path = getenv("OVIK_BENCH_COUNTER");
    const char* const stacks_path = getenv("OVIK_BENCH_STACKS");
    const int file = path ? open(path, O_RDWR | O_CLOEXEC) : -1;
    if (stacks_path)
        stacks = open(stacks_path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    void* const mapped = mmap(NULL, sizeof *counter, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (mapped == MAP_FAILED || stacks == -1) {
        fputs("the allocation counter has no files\n", stderr);
        _exit(1);
    }
    counter = mapped;
}

/* Qt names the thread that it does the bus's work on; nobody names the application thread. */
static int thread_kind(void)
{
    char name[16] = "";
    if (gettid() == getpid())
        return MAIN_THREAD;
    prctl(PR_GET_NAME, name);
    return strncmp(name, "QDBusConnection", 15) == 0 ? BUS_THREAD : APPLICATION_THREAD;
}

__attribute__((noinline)) static void count(void)
{
    if (!counter || inside)
        return;
    inside = 1;
    const int kind = thread_kind();
    __atomic_add_fetch(&counter->allocations[kind], 1, __ATOMIC_RELAXED);
    if (counter->recording) {
        void* frames[DEEPEST];
        const int depth = backtrace(frames, DEEPEST);
        pthread_mutex_lock(&writing);
        dprintf(stacks, "thread %d\n", kind);
        backtrace_symbols_fd(frames + 2, depth - 2,
                             stacks); /* without this function and malloc() */
        pthread_mutex_unlock(&writing);
    }
    inside = 0;
}

__attribute__((visibility("default"))) void* malloc(size_t size)
{
    count();
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(size_t number, size_t size)
{
    count();
    return __libc_calloc(number, size);
}

__attribute__((visibility("default"))) void* realloc(void* block, size_t size)
{
    count();
    return __libc_realloc(block, size);
}
