// A platform that exists but does not answer: tests that wait for the bus's time-out of 25 seconds.

#include "tests/support/fault_fixture.h"

#include <csignal>

namespace
{
using Clock = std::chrono::steady_clock;

constexpr auto answerBound = 60s;

/// The answer to a request that must end with the time-out.
std::string requestThatTimesOut(Client& client, const std::string& text)
{
    const auto start = Clock::now();
    const std::string answer = client.request(text, answerBound);
    const std::chrono::duration<double> time = Clock::now() - start;
    EXPECT_GE(time, 23.5s); // Qt's timer may deviate by a twentieth
    EXPECT_LT(time, 35s);
    figure("seconds until " + text + " timed out: " + std::to_string(time.count()));
    return answer;
}

TEST(FaultSlow, AFrozenPanelFailsACallAfter25SecondsAndItsLateRepliesAreNotTakenForOthers)
{
    PrivateBus bus;
    Process panel(commandOf(OVIK_PANEL_SIM_PATH));
    ASSERT_TRUE(panel.waitForOutput("ovik_panel_sim: ready\n"));
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    Client client(serverSocket);
    ASSERT_EQ(client.request("saveBrightness;41"), "0 0");
    ASSERT_EQ(client.request("setBuzzerMode;2"), "0 0");
    ASSERT_EQ(client.request("getHWPluginLedMode;0;1"), "0 2");
    const auto expectWorks = [&] {
        EXPECT_EQ(client.request("getBuzzerMode"), "0 2");
        EXPECT_EQ(client.request("getBrightness"), "0 41");
        EXPECT_EQ(client.request("getHWPluginLedMode;0;1"), "0 2");
        EXPECT_EQ(client.request("setHWPluginLedValue;0;1;1"), "0 0");
    };
    for (int i = 0; i < 5; ++i)
        expectWorks();
    const Footprint before = footprintOf(server.process().pid());

    panel.signal(SIGSTOP);
    EXPECT_EQ(requestThatTimesOut(client, "getBrightness"), "-4");
    // The mode is unknown after the failed query, so the write is not tried.
    EXPECT_EQ(requestThatTimesOut(client, "setHWPluginLedValue;0;1;1"), "-12");
    panel.signal(SIGCONT);
    // The late replies are 41 and 2; the next answers must differ.
    EXPECT_EQ(client.request("getNetworkConfigJson").rfind("0 {", 0), 0u);
    expectWorks();
    expectNothingLeftBehind(server.process().pid(), before);
}

class FaultSlowReply : public FaultTest
{
};

TEST_F(FaultSlowReply, AReplyAfterTheTimeOutIsNotTakenForTheNextCallsOfTheSameMethod)
{
    sd_bus_message* held = nullptr;
    panel->platform->answer("Backlight.getBrightness", [&](sd_bus_message* call) {
        held = sd_bus_message_ref(call);
        return 1;
    });
    EXPECT_EQ(requestThatTimesOut(*client, "getBrightness"), "-4");
    ASSERT_NE(held, nullptr);
    panel->platform->answer("Backlight.getBrightness", [&](sd_bus_message* call) {
        sd_bus_reply_method_return(held, "i", 111);
        sd_bus_message_unref(held);
        return sd_bus_reply_method_return(call, "i", 222);
    });
    EXPECT_EQ(client->request("getBrightness"), "0 222");
}

TEST_F(FaultSlowReply, OnAFrozenBusIsAFailureAfter25SecondsAndTheLateOneIsNotTakenForTheNext)
{
    int call = 0;
    panel->platform->answer("Backlight.getBrightness", [&](sd_bus_message* message) {
        return sd_bus_reply_method_return(message, "i", ++call);
    });
    ASSERT_EQ(client->request("getBrightness"), "0 1");
    panel->bus.signal(SIGSTOP);
    EXPECT_EQ(requestThatTimesOut(*client, "getBrightness"), "-4");
    panel->bus.signal(SIGCONT);
    // The platform's late reply to the second call is dropped.
    EXPECT_EQ(client->request("getBrightness"), "0 3");
}

TEST(FaultSlow, APanelThatIsFrozenAtTheStartIsAdoptedWholeOnceItGoesOn)
{
    PrivateBus bus;
    Process panel(commandOf(OVIK_PANEL_SIM_PATH));
    ASSERT_TRUE(panel.waitForOutput("ovik_panel_sim: ready\n"));
    panel.signal(SIGSTOP);
    Server server;
    Client client(serverSocket);
    // Requests block while the service looks for the platform, but not between two tries.
    std::chrono::duration<double> longest = 0s;
    const auto timed = [&](const std::string& request) {
        const auto start = Clock::now();
        const std::string answer = client.request(request, answerBound);
        server.process().newOutput(); // a failure's line; a full pipe would block the server
        longest = std::max<std::chrono::duration<double>>(longest, Clock::now() - start);
        return answer;
    };
    for (const auto start = Clock::now(); Clock::now() - start < 13s;)
        EXPECT_EQ(timed("getBrightness"), "-1");
    figure("longest wait for an answer, seconds: " + std::to_string(longest.count()));

    panel.signal(SIGCONT);
    const auto woken = Clock::now();
    EXPECT_TRUE(waitUntil([&] { return timed("getBrightness") == "0 200"; }));
    const std::chrono::duration<double> took = Clock::now() - woken;
    EXPECT_LT(took, patienceFactor * 7s);
    EXPECT_LT(longest, patienceFactor * 6s);
    EXPECT_GT(longest, 4s) << "the platform was not frozen while it was looked for";
    figure("seconds from its waking up to right answers: " + std::to_string(took.count()));
    // Modules in slots 0 and 2 have places 0 and 1.
    EXPECT_EQ(client.request("getHWPluginLedMode;1;1"), "0 2");
    EXPECT_EQ(client.request("getHWPluginLedMode;2;1"), "-10");
}
} // namespace
