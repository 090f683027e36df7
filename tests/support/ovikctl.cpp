#include "tests/support/ovikctl.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace
{
Ran runOnce(const Words& words)
{
    Process process(words);
    const int status = process.wait();
    return {status, process.output(), process.errors()};
}

Ran runWords(const Words& words)
{
    const bool isEmulated = ovikctl({}).size() > 1;
    const Ran ran = runOnce(words);
    if (ran.status != -1 || !isEmulated)
        return ran;
    // The emulator sometimes hangs before the program prints anything; the same test never hung
    // natively. A program with a real bug hangs in the second run too.
    puts("it did not end under emulation: once more");
    return runOnce(words);
}
} // namespace

Words ovikctl(const Words& arguments) { return commandOf(OVIKCTL_PATH, arguments); }

Ran run(const Words& arguments, const Words& prefix)
{
    Words words = prefix;
    for (const std::string& word : ovikctl(arguments))
        words.push_back(word);
    return runWords(words);
}

Ran runWithInput(const std::string& input, const Words& arguments)
{
    const TempDir dir;
    const std::string file = dir.path("input");
    std::ofstream(file) << input;
    Words words = {"sh", "-c", R"(file=$1; shift; exec "$@" <"$file")", "sh", file};
    for (const std::string& word : ovikctl(arguments))
        words.push_back(word);
    return runWords(words);
}

Words withoutPrivilege()
{
    if (geteuid() != 0)
        return {};
    return {"setpriv", "--bounding-set=-dac_override,-dac_read_search"};
}

Words asOtherUser()
{
    return {"setpriv", "--reuid=" + std::to_string(otherUser), "--inh-caps=+dac_override",
            "--ambient-caps=+dac_override"};
}

std::unique_ptr<ScriptedPeer> peerOf(uid_t user, std::function<void(ScriptedPeer&)> script)
{
    const uid_t self = geteuid();
    if (seteuid(user) != 0)
        throw std::runtime_error("cannot become user " + std::to_string(user));
    auto peer = std::make_unique<ScriptedPeer>(std::move(script));
    if (seteuid(self) != 0)
        throw std::runtime_error("cannot become user " + std::to_string(self));
    return peer;
}
