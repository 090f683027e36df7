#include "client/ovikctl/command_line.h"
#include "client/ovikctl/failure.h"
#include "client/ovikctl/verbs.h"

#include <clocale>
#include <cstdio>
#include <unistd.h>

namespace
{
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
    setlocale(LC_CTYPE, ""); // what is typed may be more than ASCII
    const int result = CommandLine({}, promptOrUsage).run({argv + (argc > 0 ? 1 : 0), argv + argc});
    if (fflush(stdout) == 0 && !ferror(stdout))
        return result;
    fputs("cannot write to standard output: see whether its disk is full\n", stderr);
    return refused;
}
