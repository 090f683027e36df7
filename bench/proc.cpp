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
    for (const auto& task : tasksOf(pid)) {
        double time = 0;
        std::ifstream(task.path() / "schedstat") >> time;
        sum += time;
    }
    return sum;
}

double busyTimeOf(pid_t pid)
{
    double running = 0;
    double queued = 0;
    std::ifstream(directoryOf(pid) + "/schedstat") >> running >> queued;
    return running + queued;
}

int threadsOf(pid_t pid)
{
    return static_cast<int>(std::distance(tasksOf(pid), std::filesystem::directory_iterator()));
}
