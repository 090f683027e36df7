#include "bench/proc.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace
{
std::string directoryOf(pid_t pid) { return "/proc/" + std::to_string(pid); }

std::filesystem::directory_iterator tasksOf(pid_t pid)
{
    return std::filesystem::directory_iterator(directoryOf(pid) + "/task");
}

/// ns, as schedstat in @p directory tells them.
struct Times {
    double running = 0;
    double queued = 0;
};

Times timesIn(const std::string& directory)
{
    Times times;
    std::ifstream file(directory + "/schedstat");
    if (!(file >> times.running >> times.queued))
        throw std::runtime_error("cannot read " + directory + "/schedstat");
    return times;
}
} // namespace

Memory memoryOf(pid_t pid)
{
    std::ifstream rollup(directoryOf(pid) + "/smaps_rollup");
    std::string line;
    std::getline(rollup, line);
    Memory memory;
    double kib = 0;
    for (std::string name, unit; rollup >> name >> kib >> unit;) {
        if (name == "Rss:")
            memory.resident = kib;
        if (name == "Private_Dirty:")
            memory.own = kib;
    }
    if (memory.resident == 0)
        throw std::runtime_error("cannot read the memory of process " + std::to_string(pid));
    return memory;
}

double processorTimeOf(pid_t pid)
{
    double sum = 0;
    for (const auto& task : tasksOf(pid))
        sum += timesIn(task.path()).running;
    // A kernel that keeps no such account writes 0, which no process has that has started.
    if (sum == 0)
        throw std::runtime_error("no processor time of process " + std::to_string(pid));
    return sum;
}

double busyTimeOf(pid_t pid)
{
    const Times times = timesIn(directoryOf(pid));
    return times.running + times.queued;
}

int threadsOf(pid_t pid)
{
    return static_cast<int>(std::distance(tasksOf(pid), std::filesystem::directory_iterator()));
}
