#include "tests/support/footprint.h"

#include "tests/support/server.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace
{
#if defined(__SANITIZE_ADDRESS__)
constexpr bool memoryCounts = false;
#else
constexpr bool memoryCounts = true;
#endif

/// The inodes of the server's sockets for clients, connected or gone.
std::set<std::string> clientSockets()
{
    constexpr const char* connected = "03";
    std::set<std::string> inodes;
    std::ifstream table("/proc/net/unix");
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string number, references, protocol, flags, type, state, inode, path;
        fields >> number >> references >> protocol >> flags >> type >> state >> inode >> path;
        if (path == serverSocket && state == connected)
            inodes.insert("socket:[" + inode + "]");
    }
    return inodes;
}

} // namespace

long statusField(pid_t pid, const std::string& name)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(name + ":", 0) == 0)
            return std::stol(line.substr(name.size() + 1));
    }
    throw std::runtime_error("no " + name + " of process " + std::to_string(pid));
}

Footprint footprintOf(pid_t pid)
{
    Footprint footprint;
    footprint.threads = static_cast<int>(statusField(pid, "Threads"));
    footprint.memory = statusField(pid, "RssAnon");
    const std::set<std::string> clients = clientSockets();
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd")) {
        std::error_code closedMeanwhile;
        const std::string target =
            std::filesystem::read_symlink(entry.path(), closedMeanwhile).string();
        if (clients.count(target))
            ++footprint.clientDescriptors;
        else if (!closedMeanwhile)
            ++footprint.descriptors;
    }
    return footprint;
}

bool isBackAt(const Footprint& before, const Footprint& now, long memorySlack)
{
    return now.descriptors <= before.descriptors && now.threads <= before.threads &&
           (!memoryCounts || now.memory <= before.memory + memorySlack);
}

std::ostream& operator<<(std::ostream& out, const Footprint& footprint)
{
    return out << footprint.descriptors << " descriptors, " << footprint.clientDescriptors
               << " of clients, " << footprint.threads << " threads, " << footprint.memory
               << " KiB";
}
