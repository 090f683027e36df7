// The socket server over the real C API, application thread and backends: the D-Bus backend with a
// platform, and the in-process backend with a library, that answer as the input says.
//
// An input is requests, each ended as ConsumeRandomLengthString() does, and then what is drawn.

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

/// Now and then another backend.
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
            continue; // each would leave a descriptor open, as promised
        check(statuses.count(conversation.send(message).status) == 1,
              "the status is one of those promised");
    }
}

/// Nothing of this input reaches the next one.
void comeToRest()
{
    drawFrom(nullptr);
    int counter = 0;
    check(ovik_setMode(dbusBackend) == OVIK_OK && ovik_getSysCounter(&counter) == OVIK_OK,
          "the platform answers on"); // and what it sent before has come
    ovik_doSomething();               // and has been handled
    onCommandResult("", "", "");
}

void tearDown()
{
    ovik_shutdown();
    delete bus;
}
} // namespace

/// Instead of the system's: a result that is on its way comes within one turn of the application's
/// loop, so that is what a sleep takes. Before there is an application it is a sleep.
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
