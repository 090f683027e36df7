#pragma once

#include <ostream>
#include <string>
#include <sys/types.h>

/// What a running process holds.
struct Footprint {
    /// Open descriptors, without those of a server's clients: it keeps a client's descriptor on
    /// purpose when that has gone.
    int descriptors = 0;
    /// Of clients, connected or gone.
    int clientDescriptors = 0;
    int threads = 0;
    /// Memory of its own, in KiB.
    long memory = 0;
};

/// A number of /proc/PID/status, such as that of "VmHWM". Throws when it is not there.
long statusField(pid_t pid, const std::string& name);

/// Throws when there is no such process.
Footprint footprintOf(pid_t pid);

/**
 * True when there are no more descriptors and threads than @p before, and no more memory but for
 * @p memorySlack KiB, which an allocator needs to settle. Fewer is well: one that was just going
 * may have been counted before. Memory does not count in a sanitized build: a sanitizer keeps what
 * is freed for a while.
 */
bool isBackAt(const Footprint& before, const Footprint& now, long memorySlack);

std::ostream& operator<<(std::ostream& out, const Footprint& footprint);
