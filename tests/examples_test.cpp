// Runs the client examples with the real server and the simulated panel.

#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

#include <fstream>

namespace
{
class Examples : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(panel.waitForOutput("ovik_panel_sim: ready\n"));
        ASSERT_TRUE(server.waitForPlatform());
    }

    PrivateBus bus;
    Process panel{commandOf(OVIK_PANEL_SIM_PATH)};
    Server server;
};

std::string request(const std::string& text) { return Client(serverSocket).request(text); }

// --- The control loops ---------------------------------------------------------------------------

struct Loop {
    const char* name;
    std::vector<std::string> command;

    Process start(const std::string& cycles) const
    {
        std::vector<std::string> words = command;
        words.push_back(cycles);
        return Process(words);
    }
};

const Loop loops[] = {{"C", commandOf(OVIK_CONTROL_LOOP_PATH)},
                      {"Python", {"python3", OVIK_EXAMPLES_DIR "/control_loop.py"}}};

class ControlLoop : public Examples, public testing::WithParamInterface<Loop>
{
};

INSTANTIATE_TEST_SUITE_P(In, ControlLoop, testing::ValuesIn(loops),
                         [](const auto& loop) { return std::string(loop.param.name); });

TEST_P(ControlLoop, ReadsAllValuesInEveryCycleAndTheBuzzerFollowsTheInput)
{
    for (const std::string input : {"1", "0", "1"}) {
        ASSERT_EQ(request("setHWPluginIO;0;1;" + input), "0 0");
        std::string output;
        // A cycle can miss its deadline on a loaded machine, but not in every run.
        EXPECT_TRUE(waitUntil([&] {
            Process loop = GetParam().start("5");
            EXPECT_EQ(loop.wait(), 0) << loop.errors();
            output = loop.output();
            return output == "cycle 0: done\n5 of 5 cycles read all values\n";
        })) << output;
        EXPECT_EQ(request("getBuzzerMode"), "0 " + input);
    }
}

TEST_P(ControlLoop, ConnectsAgainWhenTheServiceRestarts)
{
    Process loop = GetParam().start("1000000");
    ASSERT_TRUE(loop.waitForOutput(": done\n")) << loop.errors();
    server.process().signal(SIGKILL);
    ASSERT_EQ(server.process().wait(), 128 + SIGKILL);
    ASSERT_TRUE(waitUntil([&] { // the message of either loop
        return loop.output().find(": no service") != std::string::npos ||
               loop.output().find("Connection refused") != std::string::npos;
    })) << loop.output();
    loop.newOutput();
    server.start();
    std::string after;
    EXPECT_TRUE(waitUntil([&] {
        after += loop.newOutput();
        return after.find(": done\n") != std::string::npos;
    })) << after;
}

// --- The lines for a shell -----------------------------------------------------------------------

/// Lines of the examples' README that use socat.
std::vector<std::string> shellLines()
{
    std::ifstream readme(OVIK_EXAMPLES_DIR "/README.md");
    std::vector<std::string> found;
    for (std::string line; std::getline(readme, line);) {
        if (line.rfind("    ", 0) == 0 && line.find("socat") != std::string::npos)
            found.push_back(line.substr(4));
    }
    return found;
}

TEST_F(Examples, SocatSendsARequestWithItsNulAndEchoSendsNone)
{
    const std::vector<std::string> lines = shellLines();
    const std::vector<std::string> answers = {request("getBrightness"), "-8"};
    ASSERT_EQ(lines.size(), answers.size());
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string output;
        // socat waits half a second for the answer, which is too short on a loaded machine.
        EXPECT_TRUE(waitUntil([&] {
            Process shell({"sh", "-c", lines[i]});
            EXPECT_EQ(shell.wait(), 0) << shell.errors();
            output = shell.output();
            return output == answers[i] + '\0';
        })) << lines[i]
            << " -> " << output;
    }
}
} // namespace
