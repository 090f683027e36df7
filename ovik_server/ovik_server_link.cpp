// Makes /tmp/ovik_server.socket a link, owned by root, to the socket in the service's own folder.
//
// In /tmp, any user may have created the name, and may create it again as soon as it is free. So
// the link is created elsewhere and moved into place in one step; the name is never free meanwhile.

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

/// A command of a unit sees the unit's own /tmp, even with full privileges ("+"). Process 1 sees
/// the machine's /tmp.
bool enterMachine()
{
    const int space = open("/proc/1/ns/mnt", O_RDONLY | O_CLOEXEC);
    return space != -1 && setns(space, CLONE_NEWNS) == 0;
}

/// Checked first, so that a full /tmp does not prevent a start when the link is correct.
bool isInPlace()
{
    struct stat status = {};
    char text[64];
    return lstat(linkPath, &status) == 0 && status.st_uid == 0 &&
           readlink(linkPath, text, sizeof text) == static_cast<ssize_t>(target.size()) &&
           target.compare(0, target.size(), text, target.size()) == 0;
}

/// rename() replaces everything but a directory, which is exchanged instead. Uses syscall(), as not
/// every C library has renameat2().
bool putIntoPlace(const std::string& made)
{
    // A user who creates and removes a directory all the time can cause several failures in a row.
    for (int attempt = 0; attempt < 1000; ++attempt) {
        if (rename(made.c_str(), linkPath) == 0)
            return true;
        if (errno == EISDIR && syscall(SYS_renameat2, AT_FDCWD, made.c_str(), AT_FDCWD, linkPath,
                                       RENAME_EXCHANGE) == 0)
            return true;
        // A user who may mount, as with FUSE, can mount on their own directory of this name.
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
    // As root, do not delete the contents of another user's directory, which may still change.
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
