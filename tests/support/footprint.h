#pragma once

#include <ostream>
#include <string>
#include <sys/types.h>

/// The resource use of a running process.
struct Footprint {
    /// Open descriptors without those for a server's clients: the server keeps the descriptor of a
    /// gone client on purpose.
    int descriptors = 0;
    /// For clients, connected or gone.
    int clientDescriptors = 0;
    int threads = 0;
    /// Private memory in KiB.
    long memory = 0;
};

/// A number of /proc/PID/status, such as "VmHWM". Throws when the field is missing.
long statusField(pid_t pid, const std::string& name);

Footprint footprintOf(pid_t pid);

/// True when @p now has no more descriptors and threads than @p before, and not more memory apart
/// from @p memorySlack KiB. Fewer are fine, since @p before may count a thread that was ending.
/// A sanitizer delays freeing, so memory is ignored in a sanitized build.
bool isBackAt(const Footprint& before, const Footprint& now, long memorySlack);

std::ostream& operator<<(std::ostream& out, const Footprint& footprint);
