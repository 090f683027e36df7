// A separate program, because its effect on the bus lasts for the life of the process.

#include "wrapper_ovik/ovik_c.h"

#include "tests/support/footprint.h"
#include "tests/support/private_bus.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{
std::atomic<int> applications{0};
}

/// Every new application first reports its initial mode.
void logOVIKErrors(char* err)
{
    if (strncmp(err, "OVIK set mode", 13) == 0)
        ++applications;
}

TEST(Bridge, AnApplicationThatComesLateIsWaitedForAgain)
{
    PrivateBus bus;
    // This bus accepts connections but never answers, so initialising the backend blocks.
    bus.stop();
    const std::string path = bus.address().substr(bus.address().find('/'));
    unlink(path.c_str());
    const int mute = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(mute, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(mute, 5), 0);

    const auto sleeps = [] { return statusField(getpid(), "voluntary_ctxt_switches"); };
    const long before = sleeps();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ovik_init(2), -3);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 10s);
    EXPECT_LT(sleeps() - before, 1500) << "1000 sleeps, however late they end";
    int value = 0;
    EXPECT_EQ(ovik_getBuzzerMode(&value), -3);
    EXPECT_EQ(ovik_shutdown(), -5);

    close(mute); // the connection is refused, so the thread continues
    EXPECT_EQ(ovik_init(2), 0);
    EXPECT_EQ(applications, 1) << "the same thread, no second one";
    EXPECT_EQ(ovik_getBuzzerMode(&value), -1);
    EXPECT_EQ(ovik_shutdown(), 0);
}
