// Fuzzes the socket server and the command table with a fake C API that answers from the input.
//
// An input is requests in the form for ConsumeRandomLengthString(), then data for the answers.

#include "fuzz/check.h"
#include "fuzz/conversation.h"
#include "fuzz/stand_in_api.h"
#include "ovik_server/service_command.h"

#include <climits>
#include <cstring>
#include <unistd.h>

namespace
{
constexpr size_t longestMessage = 6000; // more than the server's buffer
constexpr int mostMessages = 64;
constexpr int maxSleeps = 120;

/// True when the status is the server's own, not from the C API.
bool isOfTheFront(const Exchange& exchange)
{
    const std::string word = exchange.command->word;
    switch (exchange.status) {
    case OVIK_NO_APPLICATION:
        return word.rfind("seepromRead", 0) == 0 && standIn.calls == 0;
    case OVIK_TIMEOUT:
        return word == "serviceCommand" && standIn.sleeps == maxSleeps;
    case OVIK_WRONG_MODE:
        return word.rfind("setHWPlugin", 0) == 0 && standIn.calls == 1;
    case OVIK_OK:
        return word == "quit" && standIn.calls == 0;
    default:
        return false;
    }
}

void converse(FuzzedDataProvider& input)
{
    Conversation conversation;
    for (int messages = 0; messages < mostMessages; ++messages) {
        if (conversation.isOver() || input.remaining_bytes() == 0)
            break;
        standIn.calls = 0;
        const Exchange exchange =
            conversation.send(input.ConsumeRandomLengthString(longestMessage));
        if (!exchange.command)
            check(standIn.calls == 0, "what is refused calls nothing");
        else if (!isOfTheFront(exchange))
            check(standIn.calls > 0 && exchange.status == standIn.status,
                  "the status is that of the call");
    }
}

/// The lowest free descriptor.
unsigned int firstFree()
{
    const int fd = dup(STDERR_FILENO);
    close(fd);
    return static_cast<unsigned int>(fd);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const unsigned int first = firstFree();
    FuzzedDataProvider input(data, size);
    standIn = {&input};
    onCommandResult("", "", ""); // ends a pending outcome of an earlier input
    converse(input);
    // The server leaves descriptors of gone clients open on purpose.
    close_range(first, UINT_MAX, 0);
    return 0;
}
