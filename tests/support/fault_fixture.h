#pragma once

#include "tests/support/commands.h"
#include "tests/support/footprint.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

/// A bus, a platform on which every command works, and the server. The platform may be gone.
struct FaultPanel {
    /// @param prefix what to run the server under, as for Server
    explicit FaultPanel(const std::vector<std::string>& prefix = {});

    /// Ends the platform with whatever it has to answer yet.
    void endPlatform() { platform.reset(); }
    /// A new one, on which every command works.
    void startPlatform();

    PrivateBus bus;
    std::unique_ptr<FakePlatform> platform;
    Server server;
};

/// The answers to requests that are sent without waiting for them.
std::vector<std::string> answersTo(Client& client, const std::vector<std::string>& requests);

/// Fails, and says which, unless every command is answered as its row says.
void expectEveryCommandWorks(Client& client);

/// KiB that a server may keep: an idle one returns free pages every second, but not those that
/// small blocks in use share.
constexpr long usualSlack = 256;

/// Prints a measured value of the test that runs.
void figure(const std::string& text);

/// Fails unless @p pid gets back to what it held @p before. Prints what is left as a figure.
void expectNothingLeftBehind(pid_t pid, const Footprint& before, long memorySlack = usualSlack);

/// Ends the server as a client does, which is when a sanitized one tells what it has leaked. No
/// other client may be connected.
void expectGoodEnd(Server& server);

/**
 * One panel for all tests of a suite. Whatever a test does to its platform, after it the server
 * must still run, answer every command rightly and hold no more than before.
 */
class FaultTest : public testing::Test
{
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;
    void TearDown() override;

    /**
     * Makes a fault again and again. What the server holds is measured from the second time on:
     * the first time may cost what an allocator keeps.
     */
    void repeat(int times, const std::function<void()>& fault);

    std::string newLog() { return panel->server.process().newOutput(); }

    static std::unique_ptr<FaultPanel> panel;
    std::unique_ptr<Client> client;
    long memorySlack = usualSlack;

private:
    Footprint m_before;
};
