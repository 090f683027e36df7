#pragma once

#include "tests/support/commands.h"
#include "tests/support/footprint.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

/// A bus, a platform on which every command works, and the server.
struct FaultPanel {
    /// @param prefix command to run the server under
    explicit FaultPanel(const std::vector<std::string>& prefix = {});

    /// Ends the platform without its pending replies.
    void endPlatform() { platform.reset(); }
    void startPlatform();

    PrivateBus bus;
    std::unique_ptr<FakePlatform> platform;
    Server server;
};

/// Sends all requests before it reads the first answer.
std::vector<std::string> answersTo(Client& client, const std::vector<std::string>& requests);

/// Fails for each command whose answer differs from its row.
void expectEveryCommandWorks(Client& client);

/// Memory in KiB that a server may keep. An idle server returns free pages every second, except
/// pages with small blocks still in use.
constexpr long usualSlack = 256;

/// Prints a measured value of the current test.
void figure(const std::string& text);

/// Fails unless the resource use of @p pid returns to @p before; prints the difference.
void expectNothingLeftBehind(pid_t pid, const Footprint& before, long memorySlack = usualSlack);

/// Ends the server with "quit", so that a sanitizer reports its leaks. No other client may be
/// connected.
void expectGoodEnd(Server& server);

/// One panel for all tests of a suite. After every test the server must still run, answer every
/// command correctly and use no more resources than before.
class FaultTest : public testing::Test
{
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;
    void TearDown() override;

    /// Repeats a fault. The first run is not measured, since the allocator may keep memory then.
    void repeat(int times, const std::function<void()>& fault);

    std::string newLog() { return panel->server.process().newOutput(); }

    static std::unique_ptr<FaultPanel> panel;
    std::unique_ptr<Client> client;
    long memorySlack = usualSlack;

private:
    Footprint m_before;
};
