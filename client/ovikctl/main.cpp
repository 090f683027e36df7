#include "client/ovikctl/command_line.h"
#include "client/ovikctl/failure.h"
#include "client/ovikctl/verbs.h"

#include <clocale>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace
{
/// Fills closed standard descriptors with /dev/null, or the socket could become stdout and receive
/// our output as requests. Opened for reading only, so that writing fails.
void openStandardDescriptors()
{
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(fd, F_GETFD) == -1 && open("/dev/null", O_RDONLY) == -1)
            _exit(refused);
    }
}

/// Input may contain more than ASCII, even where no locale is set.
void useWideCharacters()
{
    setlocale(LC_CTYPE, "");
    if (strcmp(setlocale(LC_CTYPE, nullptr), "C") == 0)
        setlocale(LC_CTYPE, "C.UTF-8");
}

int promptOrUsage(const Settings& settings)
{
    if (isatty(STDIN_FILENO) && isatty(STDOUT_FILENO))
        return runPrompt(settings);
    fputs("usage: ovikctl [OPTIONS] COMMAND [ARGUMENT...]\n"
          "ovikctl --help tells the commands; at a terminal, ovikctl alone is a prompt\n",
          stderr);
    return wrongUsage;
}
} // namespace

int main(int argc, char* argv[])
{
    openStandardDescriptors();
    useWideCharacters();
    const int result = CommandLine({}, promptOrUsage).run({argv + (argc > 0 ? 1 : 0), argv + argc});
    if (fflush(stdout) == 0 && !ferror(stdout))
        return result;
    fputs("cannot write to standard output: see whether it is open and its disk not full\n",
          stderr);
    return refused;
}
