// Makes /tmp/ovik_server.socket a link of root's to the socket in the service's own folder.
//
// In /tmp, any user may have taken the name before, and may take it again as soon as it is free. So
// the link is made elsewhere and put into place in one step; the name is never free in between.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <linux/fs.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
constexpr const char* linkPath = "/tmp/ovik_server.socket";
const std::string target = "/run/ovik_server/ovik_server.socket";

/// A command of a unit sees the unit's own /tmp, even with full privileges ("+"). The machine's is
/// the one that process 1 sees.
bool enterMachine()
{
    const int space = open("/proc/1/ns/mnt", O_RDONLY | O_CLOEXEC);
    return space != -1 && setns(space, CLONE_NEWNS) == 0;
}

/// Checked first: a full /tmp does not keep a service whose link is good from starting.
bool isInPlace()
{
    struct stat status = {};
    char text[64];
    return lstat(linkPath, &status) == 0 && status.st_uid == 0 &&
           readlink(linkPath, text, sizeof text) == static_cast<ssize_t>(target.size()) &&
           target.compare(0, target.size(), text, target.size()) == 0;
}

/// rename() replaces everything but a directory, which is exchanged. By a system call, as not every
/// C library has renameat2().
bool putIntoPlace(const std::string& made)
{
    // Another user who makes and removes a directory all the time can cause some failures in a row.
    for (int attempt = 0; attempt < 1000; ++attempt) {
        if (rename(made.c_str(), linkPath) == 0)
            return true;
        if (errno == EISDIR && syscall(SYS_renameat2, AT_FDCWD, made.c_str(), AT_FDCWD, linkPath,
                                       RENAME_EXCHANGE) == 0)
            return true;
        // A user who may mount, as with FUSE, can do so on a directory of his own there.
        const bool isFree =
            errno == ENOENT || (errno == EBUSY && umount2(linkPath, MNT_DETACH) == 0);
        if (!isFree)
            return false;
    }
    return false;
}

bool replace()
{
    char folder[] = "/tmp/ovik_server.XXXXXX";
    if (mkdtemp(folder) == nullptr)
        return false;
    const std::string made = std::string(folder) + "/link";
    const bool isDone = symlink(target.c_str(), made.c_str()) == 0 && putIntoPlace(made);
    const int reason = errno;
    // root does not delete what another user has put into a directory, and may still change.
    if (remove(made.c_str()) != 0 && errno != ENOENT)
        fprintf(stderr, "ovik_server_link: moved the directory %s to %s\n", linkPath, made.c_str());
    rmdir(folder);
    errno = reason;
    return isDone;
}
} // namespace

int main()
{
    if (enterMachine() && (isInPlace() || replace()))
        return EXIT_SUCCESS;
    perror("ovik_server_link: /tmp/ovik_server.socket");
    return EXIT_FAILURE;
}
