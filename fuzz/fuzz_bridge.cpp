// Fuzzes the socket server with the real C API, application thread and backends. The platform of
// the D-Bus backend and the library of the in-process backend answer from the input.
//
// An input is requests in the form for ConsumeRandomLengthString(), then data for the answers.

#include "fuzz/check.h"
#include "fuzz/conversation.h"
#include "fuzz/platform_bus.h"
#include "fuzz/platform_library.h"
#include "ovik_server/service_command.h"
#include "wrapper_ovik/ovik_c.h"

#include <cstdlib>
#include <ctime>
#include <set>
#include <unistd.h>

namespace
{
constexpr size_t longestMessage = 6000; // more than the server's buffer
constexpr int mostMessages = 64;
constexpr int dbusBackend = 2;

PlatformBus* bus;
bool isStarted = false;

void drawFrom(FuzzedDataProvider* input)
{
    bus->drawFrom(input);
    libraryInput = input;
}

/// Sometimes selects another backend.
void drawMode(FuzzedDataProvider& input)
{
    const int choice = input.ConsumeIntegralInRange(0, 15);
    if (choice >= 13)
        check(ovik_setMode(choice - 13) == OVIK_OK, "every backend can be chosen");
}

void converse(FuzzedDataProvider& input)
{
    const std::set<int> statuses = {OVIK_OK,         OVIK_NO_PLATFORM, OVIK_NO_APPLICATION,
                                    OVIK_NOT_RUN,    OVIK_REPLY_ERROR, OVIK_TIMEOUT,
                                    OVIK_EMPTY_SLOT, OVIK_WRONG_MODE};
    Conversation conversation;
    for (int messages = 0; messages < mostMessages; ++messages) {
        if (conversation.isOver() || input.remaining_bytes() == 0)
            break;
        drawMode(input);
        const std::string message = input.ConsumeRandomLengthString(longestMessage);
        if (message.empty())
            continue; // leaves a descriptor open by design
        check(statuses.count(conversation.send(message).status) == 1,
              "the status is one of those promised");
    }
}

/// Prevents effects of this input on the next one.
void comeToRest()
{
    drawFrom(nullptr);
    int counter = 0;
    check(ovik_setMode(dbusBackend) == OVIK_OK && ovik_getSysCounter(&counter) == OVIK_OK,
          "the platform answers on"); // so all earlier signals have arrived
    ovik_doSomething();               // and now they are handled
    onCommandResult("", "", "");
}

void tearDown()
{
    ovik_shutdown();
    delete bus;
}
} // namespace

/// Replaces the system's usleep(). A pending result arrives within one turn of the application's
/// loop, so a sleep is one turn. Before the application exists, it really sleeps.
extern "C" int usleep(useconds_t microseconds)
{
    if (isStarted) {
        ovik_doSomething();
        return 0;
    }
    const timespec time = {0, static_cast<long>(microseconds) * 1000};
    return nanosleep(&time, nullptr);
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    bus = new PlatformBus;
    check(ovik_init(dbusBackend) == OVIK_OK, "the application starts");
    isStarted = true;
    atexit(tearDown);
    comeToRest();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    drawFrom(&input);
    converse(input);
    comeToRest();
    return 0;
}
