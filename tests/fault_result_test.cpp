// Outcomes of service commands: many, large, malformed, or from strangers. They arrive before,
// during and after the call, with and without a pending scan.

#include "tests/support/fault_fixture.h"

#include <thread>

namespace
{
const std::string scan = "serviceCommand;wifi;scan;{}";
const std::string call = "/ServiceManager com.wenu.OVIK.ServiceManager.command(sss) ";

/// Memory in KiB that an allocator may keep after storms; it depends on how far queues fill under
/// load. Leaking one text of each measured outcome would take more than twice as much.
constexpr long stormSlack = 16 * 1024;
const std::string stormText(200, 'x');
constexpr int firstStorms = 3;

class FaultResult : public FaultTest
{
protected:
    void emitMany(int count, const std::string& text = "")
    {
        for (int i = 0; i < count; ++i)
            panel->platform->emitCommandResult("wifi", "storm", std::to_string(i) + text);
    }

    /// Repeats storms; the first ones are not measured.
    void repeatStorms(int times, const std::function<void()>& storm)
    {
        memorySlack = stormSlack;
        for (int i = 0; i < firstStorms && !HasFailure(); ++i)
            storm();
        repeat(times, storm);
    }

    /// Returns when the server has handled all earlier outcomes.
    void drain()
    {
        // The bus delivers the first reply after the signals; the application's thread handles the
        // second request after them.
        for (int i = 0; i < 2; ++i)
            ASSERT_EQ(client->request("getBrightness", patienceFactor * 60s), "0 75");
    }

    /// Sends a scan and returns when the platform has received the call.
    void sendScan()
    {
        panel->platform->takeCalls();
        client->send(scan);
        ASSERT_TRUE(panel->platform->waitForCall(call));
    }

    void expectScanWorks()
    {
        sendScan();
        panel->platform->emitCommandResult("wifi", "scan", "mine");
        EXPECT_EQ(client->receive(), "0 4;wifi;scan;mine");
    }
};

TEST_F(FaultResult, TenThousandThatNobodyWaitsForAreDropped)
{
    repeatStorms(20, [&] {
        emitMany(10000, stormText);
        drain();
    });
    expectScanWorks();
}

TEST_F(FaultResult, LongOnesThatNobodyWaitsForAreDropped)
{
    const std::string text(20000, 'x');
    repeatStorms(15, [&] {
        emitMany(200, text);
        drain();
    });
    expectScanWorks();
}

TEST_F(FaultResult, TheFirstOfTenThousandEndsAScanAndTheOthersAreDropped)
{
    repeatStorms(20, [&] {
        sendScan();
        emitMany(10000, stormText);
        EXPECT_EQ(client->receive(), "0 4;wifi;storm;0" + stormText);
        drain();
    });
    expectScanWorks();
}

TEST_F(FaultResult, RequestsAreAnsweredWhileTheyCome)
{
    int answered = 0;
    repeatStorms(8, [&] {
        std::atomic<bool> isOver{false};
        std::thread storm([&] {
            emitMany(10000, std::string(500, 'x'));
            isOver = true;
        });
        for (; !isOver; ++answered)
            EXPECT_EQ(client->request("getBrightness", patienceFactor * 60s), "0 75");
        storm.join();
        drain();
    });
    figure("requests answered during 110000 outcomes: " + std::to_string(answered));
    expectScanWorks();
}

TEST_F(FaultResult, ATextOfAMebibyteIsCutAtTheEndOfTheAnswer)
{
    memorySlack = 24 * 1024; // KiB; leaking one text of each outcome would take more
    const std::string text(1 << 20, 'x');
    repeat(7, [&] {
        for (const auto& [service, command, json] :
             {std::tuple{text, std::string("scan"), std::string("{}")},
              std::tuple{std::string("wifi"), text, std::string("{}")},
              std::tuple{std::string("wifi"), std::string("scan"), text},
              std::tuple{text, text, text}}) {
            sendScan();
            panel->platform->emitCommandResult(service, command, json);
            EXPECT_EQ(client->receive(),
                      ("0 4;" + service + ';' + command + ';' + json).substr(0, 9999));
        }
    });
}

TEST_F(FaultResult, EveryLengthAroundTheEndOfTheAnswerIsCutThere)
{
    const std::string start = "0 4;wifi;scan;";
    for (const size_t size : {9983u, 9984u, 9985u, 9986u, 9987u, 10000u}) {
        const std::string text = std::string(size, 'x') + "y";
        sendScan();
        panel->platform->emitCommandResult("wifi", "scan", text);
        EXPECT_EQ(client->receive(), (start + text).substr(0, 9999)) << size;
    }
}

TEST_F(FaultResult, EmptyOnesAreAnsweredAsSuch)
{
    sendScan();
    panel->platform->emitCommandResult("", "", "");
    EXPECT_EQ(client->receive(), "0 4;;;");
}

TEST_F(FaultResult, MalformedOnesAreNotTakenForAnOutcome)
{
    sendScan();
    FakePlatform& platform = *panel->platform;
    platform.emitCommandResult([](sd_bus_message*) {});
    platform.emitCommandResult([](sd_bus_message* m) { sd_bus_message_append(m, "s", "wifi"); });
    platform.emitCommandResult(
        [](sd_bus_message* m) { sd_bus_message_append(m, "ss", "wifi", "scan"); });
    platform.emitCommandResult([](sd_bus_message* m) { sd_bus_message_append(m, "iii", 1, 2, 3); });
    platform.emitCommandResult(
        [](sd_bus_message* m) { sd_bus_message_append(m, "ssay", "wifi", "scan", 1, 65); });
    platform.emitCommandResult(
        [](sd_bus_message* m) { sd_bus_message_append(m, "ssss", "wifi", "scan", "{}", "more"); });
    platform.emitCommandResult([](sd_bus_message* m) {
        sd_bus_message_append(m, "ss", "wifi", "scan");
        appendDescriptor(m);
    });
    platform.emitCommandResult("wifi", "scan", "mine");
    EXPECT_EQ(client->receive(), "0 4;wifi;scan;mine");
}

TEST_F(FaultResult, AStrangersAreNotTakenForAnOutcome)
{
    FakePlatform stranger(FakePlatform::wholePanel(), false);
    sendScan();
    stranger.emitCommandResult("wifi", "scan", "strange");
    panel->platform->emitCommandResult("wifi", "scan", "mine");
    EXPECT_EQ(client->receive(), "0 4;wifi;scan;mine");
}

TEST_F(FaultResult, OneThatComesAfterItsScanHasFailedEndsTheNextCommand)
{
    panel->platform->answer("ServiceManager.command", replyError("com.wenu.OVIK.Failed"));
    ASSERT_EQ(client->request(scan), "-4");
    panel->platform->emitCommandResult("wifi", "scan", "late");
    drain();
    panel->platform->answer("ServiceManager.command", replyWith("i", 4));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client->request("serviceCommand;x;y;z"), "0 4");
    EXPECT_LT(std::chrono::steady_clock::now() - start, patienceFactor * 5s)
        << "it would be a minute";
    expectScanWorks();
}

/// Uses a new server: one that has handled the storms above has enough free memory to hide a leak.
class FaultResultDuringTheCall : public FaultResult
{
};

TEST_F(FaultResultDuringTheCall, AThousandGiveTheFirstOne)
{
    panel->platform->answer("ServiceManager.command", [](sd_bus_message* message) {
        for (int i = 0; i < 1000; ++i)
            sd_bus_emit_signal(sd_bus_message_get_bus(message), "/ServiceManager",
                               "com.wenu.OVIK.ServiceManager", "commandResult", "sss", "wifi",
                               "scan", (std::to_string(i) + stormText).c_str());
        return sd_bus_reply_method_return(message, "i", 7);
    });
    memorySlack = 2 * 1024; // KiB; one leaked text per outcome takes three times as much
    repeat(30, [&] {
        EXPECT_EQ(client->request(scan), "0 7;wifi;scan;0" + stormText);
        drain();
    });
}

TEST(FaultResultFirst, ThoseBeforeAnyCommandAreDropped)
{
    FaultPanel panel;
    Client client(serverSocket);
    for (int i = 0; i < 1000; ++i)
        panel.platform->emitCommandResult("wifi", "scan", "early");
    expectEveryCommandWorks(client);
    client.send(scan);
    ASSERT_TRUE(panel.platform->waitForCall("\"wifi\" \"scan\""));
    panel.platform->emitCommandResult("wifi", "scan", "mine");
    EXPECT_EQ(client.receive(), "0 4;wifi;scan;mine");
    client.disconnect();
    expectGoodEnd(panel.server);
}
} // namespace
