// Tests of more than a minute: the limits of a service command's wait.

#include "tests/support/fake_platform.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

namespace
{
using Clock = std::chrono::steady_clock;

TEST(Slow, AScanWithoutOutcomeTimesOutAndTheNextCommandWaitsInItsPlace)
{
    PrivateBus bus;
    FakePlatform platform;
    platform.answer("ServiceManager.command", replyWith("i", 4));
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    Client client(serverSocket);

    // Without an outcome, the command sleeps 120 times half a second.
    server.process().newOutput();
    auto start = Clock::now();
    EXPECT_EQ(client.request("serviceCommand;wifi;scan;{}", patienceFactor * 90s), "-9");
    EXPECT_GE(Clock::now() - start, 60s);
    EXPECT_LT(Clock::now() - start, 60s + patienceFactor * 20s);
    EXPECT_EQ(server.process().newOutput(), "OVIK_SERVER: serviceCommand error timeout\n");

    // The time-out left the flag set: now any command waits for an outcome, and times out as well.
    start = Clock::now();
    EXPECT_EQ(client.request("serviceCommand;x;y;z", patienceFactor * 90s), "-9");
    EXPECT_GE(Clock::now() - start, 60s);
    EXPECT_EQ(server.process().newOutput(), "OVIK_SERVER: serviceCommand error timeout\n");

    // A late outcome clears the flag.
    platform.takeCalls();
    start = Clock::now();
    client.send("serviceCommand;x;y;z");
    ASSERT_TRUE(platform.waitForCall("command(sss)"));
    platform.emitCommandResult("wifi", "scan", "late");
    EXPECT_EQ(client.receive(), "0 4");
    EXPECT_LT(Clock::now() - start, patienceFactor * 5s);
    start = Clock::now();
    EXPECT_EQ(client.request("serviceCommand;x;y;z"), "0 4");
    EXPECT_LT(Clock::now() - start, patienceFactor * 5s);
}
} // namespace
