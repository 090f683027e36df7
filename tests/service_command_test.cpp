// Service commands, whose outcome may arrive after their answer. Tests of the full time limit are
// in server_slow_test.

#include "tests/support/fake_platform.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

namespace
{
using Clock = std::chrono::steady_clock;

const std::string call = "/ServiceManager com.wenu.OVIK.ServiceManager.command(sss) ";

class ServiceCommand : public testing::Test
{
protected:
    void SetUp() override
    {
        platform.answer("ServiceManager.command", replyWith("i", 4));
        platform.answer("ServiceManager.state", replyWith("i", 3));
        ASSERT_TRUE(server.waitForPlatform());
        client = std::make_unique<Client>(serverSocket);
        platform.takeCalls();
        server.process().newOutput();
    }

    void sendAndWaitForCall(const std::string& text)
    {
        platform.takeCalls();
        client->send(text);
        ASSERT_TRUE(platform.waitForCall(call));
    }

    PrivateBus bus;
    FakePlatform platform;
    Server server;
    std::unique_ptr<Client> client; // created late, since only one client is served at a time
};

// A loaded machine can delay any single measurement, so the best of a few counts.

TEST_F(ServiceCommand, AScanIsAnsweredWithItsOutcomeInStepsOfHalfASecond)
{
    bool inSteps = false;
    for (int round = 0; round < 5 && !inSteps; ++round) {
        const auto start = Clock::now();
        sendAndWaitForCall("serviceCommand;wifi;scan;{}");
        std::this_thread::sleep_until(start + 1200ms);
        platform.emitCommandResult("wifi", "scan", "{\"networks\": []}");
        EXPECT_EQ(client->receive(), "0 4;wifi;scan;{\"networks\": []}");
        const auto took = Clock::now() - start;
        inSteps = took >= 1500ms && took <= 1900ms;
    }
    EXPECT_TRUE(inSteps) << "three sleeps, not two and not four";
}

TEST_F(ServiceCommand, AScanMakesItsCall)
{
    platform.answer("ServiceManager.command", replyError("com.wenu.OVIK.Failed"));
    EXPECT_EQ(client->request("serviceCommand;wifi;scan;{\"a\": 1}"), "-4");
    EXPECT_EQ(platform.takeCalls(), std::vector{call + "\"wifi\" \"scan\" \"{\"a\": 1}\""});
    EXPECT_EQ(server.process().newOutput(),
              "getReplyValue: error\nOVIK_SERVER: serviceCommand error -4\n");
}

TEST_F(ServiceCommand, AnOutcomeThatIsThereBeforeTheReplyCostsNoSleep)
{
    platform.answer("ServiceManager.command", [](sd_bus_message* message) {
        sd_bus* const connection = sd_bus_message_get_bus(message);
        sd_bus_emit_signal(connection, "/ServiceManager", "com.wenu.OVIK.ServiceManager",
                           "commandResult", "sss", "wifi", "scan", "[]");
        return sd_bus_reply_method_return(message, "i", 0);
    });
    // The application thread's event loop delivers the signal just after the reply. The first check
    // of the flag may come too early, but not every time.
    bool atOnce = false;
    for (int i = 0; i < 20 && !atOnce; ++i) {
        const auto start = Clock::now();
        ASSERT_EQ(client->request("serviceCommand;wifi;scan;{}"), "0 0;wifi;scan;[]");
        atOnce = Clock::now() - start < 400ms;
    }
    EXPECT_TRUE(atOnce);
}

TEST_F(ServiceCommand, AnyOtherCommandIsAnsweredAtOnceAndItsOutcomeIgnored)
{
    Clock::duration best = 1h;
    for (const std::string text :
         {"wifi;connect;{}", "WIFI;SCAN;{}", "ntp;scan;{}", "wifi;Scan;"}) {
        const auto start = Clock::now();
        EXPECT_EQ(client->request("serviceCommand;" + text), "0 4") << text;
        best = std::min(best, Clock::now() - start);
        platform.emitCommandResult("wifi", "connect", "late");
    }
    EXPECT_LT(best, 400ms);
    // Ignored outcomes must not end a later scan.
    for (int i = 0; i < 2; ++i) { // the second answer comes after their delivery
        EXPECT_EQ(client->request("serviceState;wifi"), "0 3");
    }
    sendAndWaitForCall("serviceCommand;wifi;scan;{}");
    platform.emitCommandResult("wifi", "scan", "mine");
    EXPECT_EQ(client->receive(), "0 4;wifi;scan;mine");
}

TEST_F(ServiceCommand, AnyOutcomeEndsAScansWait)
{
    sendAndWaitForCall("serviceCommand;wifi;scan;{}");
    platform.emitCommandResult("ntp", "sync", "{}");
    EXPECT_EQ(client->receive(), "0 4;ntp;sync;{}");
}

TEST_F(ServiceCommand, WithTooFewFieldsNothingIsCalledOrAwaited)
{
    EXPECT_EQ(client->request("serviceCommand;wifi;scan"), "-8");
    const auto start = Clock::now();
    EXPECT_EQ(client->request("serviceCommand;x;y;z"), "0 4");
    EXPECT_LT(Clock::now() - start, patienceFactor * 5s); // a wait would take a minute
}

TEST_F(ServiceCommand, AfterAScanWhoseCallFailedTheNextCommandWaitsForAnOutcome)
{
    platform.answer("ServiceManager.command", replyError("com.wenu.OVIK.Failed"));
    ASSERT_EQ(client->request("serviceCommand;wifi;scan;{}"), "-4");
    platform.takeCalls();

    platform.answer("ServiceManager.command", replyWith("i", 8));
    const auto start = Clock::now();
    sendAndWaitForCall("serviceCommand;x;y;z");
    std::this_thread::sleep_until(start + 600ms);
    EXPECT_FALSE(client->receiveBytes(0ms)) << "before the outcome";
    platform.emitCommandResult("wifi", "scan", "late");
    EXPECT_EQ(client->receive(), "0 8");
}

TEST_F(ServiceCommand, NonAsciiOutcomesAreHandedOverAsLatin1AndReadAsUtf8)
{
    sendAndWaitForCall("serviceCommand;wifi;scan;{}");
    platform.emitCommandResult("wifi", "scan", "a\u00fcb\u20acc");
    EXPECT_EQ(client->receive(), "0 4;wifi;scan;a\ufffdb?c");
}

TEST_F(ServiceCommand, AnOutcomeThatDoesNotFitIsCutAtItsEnd)
{
    sendAndWaitForCall("serviceCommand;wifi;scan;{}");
    platform.emitCommandResult("wifi", "scan", std::string(20000, 'x'));
    const std::string response = client->receive();
    EXPECT_EQ(response.size(), 9999u);
    EXPECT_EQ(response.substr(0, 20), "0 4;wifi;scan;xxxxxx");
}

TEST_F(ServiceCommand, PlaceholdersInAnOutcomeAreText)
{
    sendAndWaitForCall("serviceCommand;wifi;scan;{}");
    platform.emitCommandResult("%1%2%3", "%3", "%s%n%1");
    EXPECT_EQ(client->receive(), "0 4;%1%2%3;%3;%s%n%1");
}
} // namespace
