#pragma once

#include <sys/types.h>

/// What /proc tells of a running process.
struct Memory {
    double resident = 0; ///< KiB
    double own = 0;      ///< KiB of it that it has written, whatever others map besides
};
Memory memoryOf(pid_t pid);
/// All its threads' time on a processor, in ns.
double processorTimeOf(pid_t pid);
/// The time that its main thread ran or was to run, in ns; the rest of its time it waits for
/// something.
double busyTimeOf(pid_t pid);
int threadsOf(pid_t pid);
