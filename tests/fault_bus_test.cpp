// The bus, the platform's service and its facilities come and go: at the start, between two calls
// and during a call. Checks the answers meanwhile, and which faults heal without a restart.

#include "tests/support/fault_fixture.h"

#include <algorithm>
#include <csignal>
#include <map>
#include <set>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{
using Clock = std::chrono::steady_clock;

std::function<std::string(const CommandRow&)> responsesTo(Obstacle obstacle)
{
    return [=](const CommandRow& row) { return row.responseTo(obstacle); };
}

void expectAnswers(Server& server, Client& client,
                   const std::function<std::string(const CommandRow&)>& expected)
{
    for (const CommandRow& row : commandRows())
        client.send(row.request());
    for (const CommandRow& row : commandRows())
        EXPECT_EQ(client.receive(), expected(row)) << row.word;
    server.process().output(); // a full pipe would block the server
}

// --- Neither bus nor platform --------------------------------------------------------------------

/// The server tries to find the platform once a second; the first tries are not measured.
constexpr int firstTries = 5;
constexpr int measuredTries = 25;

/// A bus that closes each connection at once; counts the connections.
class HangingUpBus
{
public:
    HangingUpBus()
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        m_dir.path("bus").copy(address.sun_path, sizeof address.sun_path - 1);
        if (m_fd == -1 ||
            bind(m_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == -1 ||
            listen(m_fd, 5) == -1)
            throw std::runtime_error("no socket");
    }
    ~HangingUpBus() { close(m_fd); }

    std::string address() const { return "unix:path=" + m_dir.path("bus"); }

    bool waitForTry()
    {
        const bool came = waitUntil([this] {
            const int fd = accept4(m_fd, nullptr, nullptr, SOCK_CLOEXEC);
            if (fd != -1)
                close(fd);
            return fd != -1;
        });
        return came;
    }

private:
    TempDir m_dir;
    int m_fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
};

/// Starts a platform and fails unless the server finds it soon.
void expectAPlatformIsFound(Client& client)
{
    FakePlatform platform;
    answerCommands(platform);
    const auto start = Clock::now();
    ASSERT_TRUE(waitUntil([&] { return client.request("getBrightness") == "0 75"; }));
    EXPECT_LT(millisecondsSince(start), 5000) << "a second and the adoption";
    figure("milliseconds until it was found: " + std::to_string(millisecondsSince(start)));
    expectEveryCommandWorks(client);
}

TEST(FaultBus, TriesOnABusThatHangsUpLeaveNothingBehind)
{
    HangingUpBus bus;
    const Variable address("DBUS_SYSTEM_BUS_ADDRESS", bus.address());
    Server server;
    Client client(serverSocket);
    const auto tries = [&](int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(bus.waitForTry());
            expectAnswers(server, client, responsesTo(Obstacle::NotFound));
        }
    };
    tries(firstTries);
    const Footprint before = footprintOf(server.process().pid());
    tries(measuredTries);
    expectNothingLeftBehind(server.process().pid(), before);
}

TEST(FaultBus, TriesOnABusWithoutThePlatformLeaveNothingBehindAndOneFindsIt)
{
    PrivateBus bus;
    Server server;
    Client client(serverSocket);
    const std::string line = "Cannot find dbus node in system bus. Fallback to use session bus\n";
    const auto waitForTries = [&](size_t count) {
        ASSERT_TRUE(
            waitUntil([&] { return server.process().errors().size() >= count * line.size(); },
                      patienceFactor * 60s));
        expectAnswers(server, client, responsesTo(Obstacle::NotFound));
    };
    waitForTries(firstTries);
    const Footprint before = footprintOf(server.process().pid());
    waitForTries(firstTries + measuredTries);
    expectNothingLeftBehind(server.process().pid(), before);

    expectAPlatformIsFound(client);
}

TEST(FaultBus, ABusAndAPlatformThatComeLaterAreFoundWithinTheNextTry)
{
    PrivateBus bus;
    bus.stop();
    Server server;
    Client client(serverSocket);
    expectAnswers(server, client, responsesTo(Obstacle::NotFound));

    bus.start();
    expectAPlatformIsFound(client);
}

// --- The bus dies --------------------------------------------------------------------------------

TEST(FaultBus, ABusThatDiesFailsEveryCommandUntilTheServerIsStartedAgain)
{
    FaultPanel panel;
    Client client(serverSocket);
    expectEveryCommandWorks(client);
    panel.endPlatform();
    panel.bus.stop();
    for (int i = 0; i < 5; ++i)
        expectAnswers(panel.server, client, responsesTo(Obstacle::Failing));
    const Footprint before = footprintOf(panel.server.process().pid());
    const auto start = Clock::now();
    for (int i = 0; i < 50; ++i)
        expectAnswers(panel.server, client, responsesTo(Obstacle::Failing));
    EXPECT_LT(millisecondsSince(start), 10000) << "nothing waits for a bus that is gone";

    // The server does not look for a restarted bus, even at the same address.
    panel.bus.start();
    panel.startPlatform();
    expectAnswers(panel.server, client, responsesTo(Obstacle::Failing));
    expectNothingLeftBehind(panel.server.process().pid(), before);
    ASSERT_EQ(client.request("quit"), "0");
    ASSERT_EQ(panel.server.process().wait(), 0);
    EXPECT_TRUE(panel.platform->takeCalls().empty());
    const std::string& errors = panel.server.process().errors();
    const size_t line = errors.find("The connection to the system bus is lost");
    EXPECT_NE(line, std::string::npos);
    EXPECT_EQ(errors.find("lost", line + 50), std::string::npos) << "once: " << errors;

    panel.server.start();
    ASSERT_TRUE(panel.server.waitForPlatform());
    Client again(serverSocket);
    expectEveryCommandWorks(again);
}

TEST(FaultBus, ALostBusIsReportedByWhateverRequestMeetsIt)
{
    for (const char* request : {"getSysCounter", "seepromRead;0;1", "getHWPluginIoMode;0;1"}) {
        FaultPanel panel;
        Client client(serverSocket);
        panel.bus.stop();
        EXPECT_TRUE(waitUntil([&] {
            client.request(request);
            return panel.server.process().errors().find("bus is lost") != std::string::npos;
        })) << request;
    }
}

TEST(FaultBus, ABusThatDiesInTheMiddleOfACallIsAFailureAtOnce)
{
    FaultPanel panel;
    panel.platform->answer("Backlight.getBrightness", silence());
    Client client(serverSocket);
    client.send("getBrightness");
    ASSERT_TRUE(panel.platform->waitForCall("getBrightness"));
    panel.bus.stop();
    EXPECT_EQ(client.receive(), "-4");
    expectAnswers(panel.server, client, responsesTo(Obstacle::Failing));
    EXPECT_EQ(client.request("quit"), "0");
    EXPECT_EQ(panel.server.process().wait(), 0);
}

// --- Strangers on the bus ------------------------------------------------------------------------

/// Another user of the bus sends to the server. Returns when the server has received everything.
void sendAsStranger(FaultPanel& panel, const std::string& kind, int amount)
{
    const std::string pid = std::to_string(panel.server.process().pid());
    Process stranger(commandOf(OVIK_BUS_STRANGER_PATH, {pid, kind, std::to_string(amount)}));
    ASSERT_EQ(stranger.wait(), 0) << stranger.errors();
    // The platform's reply comes after the signals.
    EXPECT_EQ(Client(serverSocket).request("getBrightness", patienceFactor * 60s), "0 75");
}

TEST(FaultStranger, DescriptorsOnTheBusDoNoHarmHoweverManyClientsWereThere)
{
    constexpr int limit = 400; // enough for the burst
    FaultPanel panel{{"prlimit", "--nofile=" + std::to_string(limit)}};
    for (int i = 0; i < limit - 50; ++i)
        Client client(serverSocket);
    sendAsStranger(panel, "descriptors", 8);
}

TEST(FaultStranger, TheMemoryForASignalOf32MegabytesIsReturnedAndThatForSuchAReply)
{
    constexpr long slack = 8 * 1024; // KiB
    FaultPanel panel;
    const Footprint before = footprintOf(panel.server.process().pid());
    for (int i = 0; i < 3; ++i) {
        sendAsStranger(panel, "signal", 32000000);
        EXPECT_GT(statusField(panel.server.process().pid(), "VmHWM"), before.memory + 32000)
            << "the signal has not come";
        expectNothingLeftBehind(panel.server.process().pid(), before, slack);
    }
    panel.platform->answer("OVIK.getVolatileParameter", replyFilledBy([](sd_bus_message* to) {
                               sd_bus_message_open_container(to, 'a', "s");
                               for (int bytes = 0; bytes < 31000000; bytes += 8)
                                   sd_bus_message_append_basic(to, 's', "x");
                               sd_bus_message_close_container(to);
                           }));
    EXPECT_EQ(Client(serverSocket).request("getVolatileParameter;k", patienceFactor * 60s), "0 ");
    expectNothingLeftBehind(panel.server.process().pid(), before, slack);
}

// --- The platform dies ---------------------------------------------------------------------------

class FaultCrash : public FaultTest
{
protected:
    /// The platform ends after it has received the call to @p member, without a reply.
    void crashDuring(const std::string& request, const std::string& member)
    {
        panel->platform->answer(member, silence());
        client->send(request);
        ASSERT_TRUE(panel->platform->waitForCall('.' + member + '('));
        panel->endPlatform();
    }
};

TEST_F(FaultCrash, InTheMiddleOfEveryCommandIsItsFailureAndHealsWithThePlatform)
{
    memorySlack = 1024;
    repeat(3, [&] {
        for (const CommandRow& row : commandRows()) {
            const auto start = Clock::now();
            crashDuring(row.request(), row.member);
            // The mode query succeeded before the crash, so only the write fails.
            EXPECT_EQ(client->receive(),
                      row.isGuarded() ? "0 0" : row.responseTo(Obstacle::Failing))
                << row.word;
            EXPECT_LT(millisecondsSince(start), 10000) << "no time-out is waited for";
            EXPECT_EQ(client->request("getSysCounter"), "-4");
            panel->startPlatform();
            EXPECT_EQ(client->request(row.request()), row.response);
        }
    });
}

TEST_F(FaultCrash, BetweenAPointsModeAndItsWriteKeepsTheWriteFromBeingMade)
{
    crashDuring("setHWPluginLedValue;1;4;1", "Leds.GetLedMode");
    EXPECT_EQ(client->receive(), "-12");
    panel->startPlatform();
}

TEST_F(FaultCrash, DuringAScanLeavesTheNextCommandWaitingForAnOutcomeOfTheNewPlatform)
{
    crashDuring("serviceCommand;wifi;scan;{}", "ServiceManager.command");
    EXPECT_EQ(client->receive(), "-4");
    panel->startPlatform();
    client->send("serviceCommand;ntp;sync;{}");
    ASSERT_TRUE(panel->platform->waitForCall("\"ntp\" \"sync\""));
    panel->platform->emitCommandResult("ntp", "sync", "{}");
    EXPECT_EQ(client->receive(), "0 4");
}

TEST_F(FaultCrash, AfterAScanHasBegunTheNewPlatformsOutcomeEndsIt)
{
    client->send("serviceCommand;wifi;scan;{}");
    ASSERT_TRUE(panel->platform->waitForCall("\"wifi\" \"scan\""));
    panel->endPlatform();
    panel->startPlatform();
    panel->platform->emitCommandResult("wifi", "scan", "new");
    EXPECT_EQ(client->receive(), "0 4;wifi;scan;new");
}

TEST_F(FaultCrash, APlatformWhoseNameIsTakenOverIsReachedByItsName)
{
    panel->platform->releaseName();
    FakePlatform other;
    answerCommands(other);
    other.answer("Backlight.getBrightness", replyWith("i", 76));
    EXPECT_EQ(client->request("getBrightness"), "0 76");
    other.releaseName();
    panel->platform->ownName();
}

TEST(FaultPanelSim, KilledAgainAndAgainItIsReachedAgainEachTime)
{
    PrivateBus bus;
    const auto startPanel = [] {
        auto panel = std::make_unique<Process>(commandOf(OVIK_PANEL_SIM_PATH));
        if (!panel->waitForOutput("ovik_panel_sim: ready\n"))
            throw std::runtime_error(panel->errors());
        return panel;
    };
    auto panel = startPanel();
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    Client client(serverSocket);

    Footprint before;
    for (int round = 0; round < 12; ++round) {
        if (round == 2)
            before = footprintOf(server.process().pid());
        ASSERT_EQ(client.request("saveBrightness;41"), "0 0");
        ASSERT_EQ(client.request("getBrightness"), "0 41");
        panel->signal(SIGKILL);
        ASSERT_EQ(panel->wait(), 128 + SIGKILL);
        ASSERT_EQ(client.request("getBrightness"), "-4");
        ASSERT_EQ(client.request("getHWPluginLedMode;0;0"), "0 0");
        panel = startPanel();
        ASSERT_EQ(client.request("getBrightness"), "0 200") << "a new panel's";
        ASSERT_EQ(client.request("serviceCommand;wifi;scan;{}").rfind("0 0;wifi;scan;", 0), 0u);
    }
    expectNothingLeftBehind(server.process().pid(), before);
}

// --- Facilities ----------------------------------------------------------------------------------

/// A facility's object on the bus, and the commands that need it.
struct Facility {
    const char* name;
    const char* path;
    std::string members; ///< prefix of its D-Bus members
};

void PrintTo(const Facility& facility, std::ostream* out) { *out << facility.name; }

class FaultFacility : public testing::TestWithParam<Facility>
{
};

INSTANTIATE_TEST_SUITE_P(Missing, FaultFacility,
                         testing::Values(Facility{"Ovik", "/", "OVIK."},
                                         Facility{"Backlight", "/Backlight", "Backlight."},
                                         Facility{"Buzzer", "/Buzzer", "Buzzer."},
                                         Facility{"Seeprom", "/I2CSEEPROM", "I2CSEEPROM."},
                                         Facility{"MainOs", "/MainOSInfo", "PartitionInfo."},
                                         Facility{"Network", "/NetworkManager", "NetworkManager."},
                                         Facility{"Services", "/ServiceManager", "ServiceManager."},
                                         Facility{"Storage", "/StorageMgr", "StorageMgr."},
                                         Facility{"SysStat", "/SysStat", "SysStat."},
                                         Facility{"SystemInfo", "/SystemInfo", "SystemInfo."},
                                         Facility{"Leds", "/HWPlugin/2/Leds", "Leds."},
                                         Facility{"Sensors", "/HWPlugin/2/Sensors", "Sensors."}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(FaultFacility, AtTheStartIsMinusOneForItsCommandsUntilTheServerIsStartedAgain)
{
    const Facility& facility = GetParam();
    const auto belongs = [&](const CommandRow& row) {
        return row.member.rfind(facility.members, 0) == 0;
    };
    ASSERT_TRUE(std::any_of(commandRows().begin(), commandRows().end(), belongs));

    PrivateBus bus;
    auto objects = FakePlatform::wholePanel();
    objects.erase(facility.path);
    auto platform = std::make_unique<FakePlatform>(objects);
    answerCommands(*platform);
    Server server;
    Client client(serverSocket);
    // Every one of these panels has this module; the answer is -10 until the panel is found.
    ASSERT_TRUE(waitUntil([&] { return client.request("getHWPluginLedMode;0;4") == "0 2"; }));

    const auto expected = [&](const CommandRow& row) {
        return belongs(row) ? row.responseTo(Obstacle::Lacking) : row.response;
    };
    for (int i = 0; i < 5; ++i)
        expectAnswers(server, client, expected);
    const Footprint before = footprintOf(server.process().pid());
    for (int i = 0; i < 20; ++i)
        expectAnswers(server, client, expected);

    // A new platform has the facility, but the server does not look for it again.
    platform.reset();
    platform = std::make_unique<FakePlatform>();
    answerCommands(*platform);
    expectAnswers(server, client, expected);
    expectNothingLeftBehind(server.process().pid(), before);
    ASSERT_EQ(client.request("quit"), "0");
    ASSERT_EQ(server.process().wait(), 0);

    server.start();
    ASSERT_TRUE(server.waitForPlatform());
    Client again(serverSocket);
    expectEveryCommandWorks(again);
}

class FaultComingFacility : public FaultTest
{
};

TEST_F(FaultComingFacility, AfterTheStartFailsItsCommandsUntilItIsBack)
{
    std::set<std::string> interfaces;
    for (const CommandRow& row : commandRows())
        interfaces.insert(row.member.substr(0, row.member.find('.') + 1));
    repeat(3, [&] {
        for (const std::string& interface : interfaces) {
            const auto belongs = [&](const CommandRow& row) {
                return row.member.rfind(interface, 0) == 0;
            };
            for (const CommandRow& row : commandRows()) {
                if (belongs(row))
                    panel->platform->answer(row.member,
                                            replyError("org.freedesktop.DBus.Error.UnknownObject"));
            }
            expectAnswers(panel->server, *client, [&](const CommandRow& row) {
                return belongs(row) ? row.responseTo(Obstacle::Failing) : row.response;
            });
            answerCommands(*panel->platform);
            expectEveryCommandWorks(*client);
        }
    });
}

TEST(FaultModules, WithoutAnyTheirCommandsAnswerMinusTenUntilTheServerIsStartedAgain)
{
    PrivateBus bus;
    auto objects = FakePlatform::wholePanel();
    for (const char* slot : {"/HWPlugin/0", "/HWPlugin/2"}) {
        objects.erase(slot);
        objects.erase(std::string(slot) + "/Leds");
        objects.erase(std::string(slot) + "/Sensors");
    }
    auto platform = std::make_unique<FakePlatform>(objects);
    answerCommands(*platform);
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    Client client(serverSocket);
    const auto expected = [](const CommandRow& row) {
        return row.isPlugin() ? "-10" : row.response;
    };
    expectAnswers(server, client, expected);
    platform.reset();
    platform = std::make_unique<FakePlatform>();
    answerCommands(*platform);
    expectAnswers(server, client, expected);
    ASSERT_EQ(client.request("quit"), "0");
    ASSERT_EQ(server.process().wait(), 0);

    server.start();
    ASSERT_TRUE(server.waitForPlatform());
    Client again(serverSocket);
    expectEveryCommandWorks(again);
}

TEST_F(FaultComingFacility, AModuleThatIsPulledOutAnswersZeroUntilItIsBack)
{
    for (const CommandRow& row : commandRows()) {
        if (row.isPlugin())
            panel->platform->answer(row.member,
                                    replyError("org.freedesktop.DBus.Error.UnknownObject"));
    }
    expectAnswers(panel->server, *client, [](const CommandRow& row) {
        return row.isPlugin() ? row.responseTo(Obstacle::Failing) : row.response;
    });
}
} // namespace
