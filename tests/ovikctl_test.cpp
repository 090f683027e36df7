// What ovikctl sends and prints, and its exit status. Uses the real service with a fake platform,
// and a fake server for behaviour that the service never shows.

#include "client/ovik_client.h"
#include "protocol/command_table.h"
#include "tests/support/commands.h"
#include "tests/support/ovikctl.h"
#include "tests/support/private_bus.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

using nlohmann::json;

namespace
{
Words split(const std::string& text, char separator)
{
    Words words;
    size_t begin = 0;
    for (size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find(separator, begin);
        words.push_back(text.substr(begin, end - begin));
    }
    return words;
}

Words examplesOf(const Command& command)
{
    Words words = {command.word};
    for (const Argument& argument : command.arguments)
        words.emplace_back(argument.example);
    return words;
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

std::string namelessTest(const testing::TestParamInfo<const Command*>& info)
{
    return info.param->word;
}

std::vector<const Command*> allCommands()
{
    std::vector<const Command*> commands;
    for (const Command& command : commandTable)
        commands.push_back(&command);
    return commands;
}

// --- With a simulated panel ----------------------------------------------------------------------

struct SimulatedPanel {
    PrivateBus bus;
    Process panel{commandOf(OVIK_PANEL_SIM_PATH)};
    Server server;
};

class Example : public testing::TestWithParam<const Command*>
{
protected:
    static void SetUpTestSuite()
    {
        panel = std::make_unique<SimulatedPanel>();
        ASSERT_TRUE(panel->server.waitForPlatform());
    }
    static void TearDownTestSuite() { panel.reset(); }
    void SetUp() override
    {
        if (!panel->server.process().running())
            panel->server.start(); // an earlier test sent quit
        ASSERT_TRUE(panel->server.waitForPlatform());
    }
    static Ran runExample(const Words& options)
    {
        Words words = examplesOf(*GetParam());
        words.insert(words.end(), options.begin(), options.end());
        const Ran result = run(words);
        if (words.front() == "quit") {
            EXPECT_EQ(panel->server.process().wait(), 0);
        }
        return result;
    }
    static std::unique_ptr<SimulatedPanel> panel;
};
std::unique_ptr<SimulatedPanel> Example::panel;

INSTANTIATE_TEST_SUITE_P(Table, Example, testing::ValuesIn(allCommands()), namelessTest);

TEST_P(Example, OfTheTableIsAnsweredWithOneValue)
{
    const Command& command = *GetParam();
    const Ran result = runExample({});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const auto lines = std::count(result.output.begin(), result.output.end(), '\n');
    EXPECT_EQ(lines, command.shape == Shape::Status ? 0 : 1) << result.output;
}

TEST_P(Example, IsAnObjectWithJson)
{
    const Ran result = runExample({"--json"});
    EXPECT_EQ(result.status, 0);
    const json object = json::parse(result.output, nullptr, false);
    ASSERT_TRUE(object.is_object()) << result.output;
    EXPECT_EQ(object["command"], GetParam()->word);
    EXPECT_EQ(object["status"], 0);
}

TEST_P(Example, HelpTellsTheArgumentsAndAnExample)
{
    const Command& command = *GetParam();
    const Ran result = run({command.word, "--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(contains(result.output, command.help));
    EXPECT_TRUE(contains(result.output, std::string("Example: ovikctl ") + command.word));
    for (const Argument& argument : command.arguments) {
        EXPECT_TRUE(contains(result.output, argument.name)) << argument.name;
        EXPECT_TRUE(contains(result.output, argument.meaning)) << argument.meaning;
    }
}

TEST_P(Example, WithOneArgumentTooFewOrTooManyIsWrongUsage)
{
    const Command& command = *GetParam();
    Words words = examplesOf(command);
    words.emplace_back("more");
    Ran result = run(words);
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(contains(result.errors, "ovikctl " + words.front() + " --help")) << result.errors;

    words.resize(words.size() - 2);
    if (words.empty())
        return; // the command has no arguments
    result = run(words);
    EXPECT_EQ(result.status, 2);
    const Argument& missing = command.arguments[words.size() - 1];
    EXPECT_TRUE(contains(result.errors, std::string(missing.name) + " is required"))
        << result.errors;
}

// --- With a fake platform ------------------------------------------------------------------------

struct Panel {
    PrivateBus bus;
    FakePlatform platform;
    Server server;
};

class Ovikctl : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        panel = std::make_unique<Panel>();
        ASSERT_TRUE(panel->server.waitForPlatform());
    }
    static void TearDownTestSuite() { panel.reset(); }
    void SetUp() override
    {
        answerCommands(platform);
        platform.takeCalls();
    }

    static std::unique_ptr<Panel> panel;
    FakePlatform& platform = panel->platform;
};
std::unique_ptr<Panel> Ovikctl::panel;

TEST_F(Ovikctl, SendsEachCommandWithItsArgumentsAndPrintsTheValueAlone)
{
    for (const CommandRow& row : commandRows()) {
        platform.answer(row.member, row.reply);
        const Ran result = run(split(row.request(), ';'));
        EXPECT_EQ(result.status, 0) << row.word;
        EXPECT_EQ("0 " + result.output, row.response + "\n");
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(platform.takeCalls(), row.calls);
    }
}

TEST_F(Ovikctl, TakesArgumentsThatLookLikeOtherThings)
{
    for (const std::string value : {"list", "getBrightness", "", "[1,2]", "a b", "{}", "raw"}) {
        EXPECT_EQ(run({"setVolatileParameter", "k", value}).status, 0) << value;
        EXPECT_EQ(platform.takeCalls(),
                  Words{"/ com.wenu.OVIK.setVolatileParameter(ss) \"k\" \"" + value + "\""});
    }
    EXPECT_EQ(run({"setVolatileParameter", "k", "--", "--json"}).status, 0);
    EXPECT_EQ(platform.takeCalls(),
              Words{"/ com.wenu.OVIK.setVolatileParameter(ss) \"k\" \"--json\""});
    for (const std::string number : {"-2147483648", "-1", "2147483647"}) {
        EXPECT_EQ(run({"saveBrightness", number}).status, 0) << number;
        EXPECT_EQ(platform.takeCalls(),
                  Words{"/Backlight com.wenu.OVIK.Backlight.saveBrightness(i) " + number});
    }
}

TEST_F(Ovikctl, TellsValuesOfEachShapeAsJson)
{
    platform.answer("OVIK.getSystemParameter", replyText("a \"b\"\n"));
    platform.answer("StorageMgr.getStorageInfoJSON", replyText("{\"free\":\n1}"));
    platform.answer("NetworkManager.getConfigJSON", replyText("{\"cut"));
    platform.answer("OVIK.getAllSystemParametersJSON",
                    replyText("{\"big\":12345678901234567890123}"));
    platform.answer("PartitionInfo.version", replyBytes("1.5"));
    const std::vector<std::pair<Words, std::string>> table = {
        {{"getBrightness"}, R"("value":75)"},
        {{"setBuzzerMode", "1"}, R"("value":4294967293)"},
        {{"serviceStop", "ssh"}, R"("value":-2)"},
        {{"getAvailableMemory"}, R"("value":5000000000)"},
        {{"getSystemParameter", "k"}, R"("value":"a \"b\"\n")"},
        {{"mainOsVersion"}, R"("value":"1.5")"},
        {{"getStorageInfoJson", "data"}, R"("value":{"free": 1})"},
        {{"getNetworkConfigJson"}, R"("value":"{\"cut")"},
        {{"getAllSystemParametersJson"}, R"("value":{"big":12345678901234567890123})"},
        {{"getSystemInfo"}, R"("name":"PANEL","hardware":17,"manufacturer":513)"},
        {{"seepromRead", "0", "3"}, R"("value":[1,171,0])"},
        {{"seepromRead", "0", "0"}, R"("value":[])"},
        {{"serviceCommand", "ntp", "sync", "{}"}, R"("value":4)"},
    };
    for (const auto& [words, value] : table) {
        Words withJson = words;
        withJson.insert(withJson.begin(), "--json");
        EXPECT_EQ(run(withJson).output,
                  R"({"command":")" + words.front() + R"(","status":0,)" + value + "}\n");
    }
}

TEST_F(Ovikctl, TellsADocumentInLatin1AsJson)
{
    platform.answer("NetworkManager.getConfigJSON", replyText("{\"n\":\"K\u00fcche\"}"));
    EXPECT_TRUE(contains(run({"raw", "getNetworkConfigJson"}).output, "K\xfc")) << "as it was sent";
    json object = json::parse(run({"--json", "getNetworkConfigJson"}).output);
    EXPECT_EQ(object["value"], (json{{"n", "K\u00fcche"}}));
    platform.answer("NetworkManager.getConfigJSON", replyText("{\"n\":\"K\u00fc"));
    object = json::parse(run({"--json", "getNetworkConfigJson"}).output);
    EXPECT_EQ(object["value"], "{\"n\":\"K\u00fc");
}

TEST(OvikctlJson, TellsADocumentWithAByteOrderMarkAsJson)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        self.receive();
        self.answer("0 \ufeff{\"n\":1}");
    });
    EXPECT_EQ(run({"--json", "--socket", peer.path(), "getNetworkConfigJson"}).output,
              "{\"command\":\"getNetworkConfigJson\",\"status\":0,\"value\":{\"n\":1}}\n");
}

TEST(OvikctlJson, TellsATextThatWasCutWithinACharacterAsReplacement)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        self.receive();
        self.answer("0 gr\xc3");
    });
    const Ran result = run({"--json", "--socket", peer.path(), "getVolatileParameter", "k"});
    EXPECT_EQ(json::parse(result.output)["value"], "gr\ufffd");
}

TEST_F(Ovikctl, QuietPrintsFailuresOnly)
{
    Ran result = run({"-q", "getBrightness"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.errors, "");
    result = run({"getHWPluginIO", "9", "0", "--quiet"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.substr(0, 4), "-10:");
}

Ran runRedirected(const std::string& redirection, const Words& arguments)
{
    Words words = {"sh", "-c", "exec \"$@\" " + redirection, "sh"};
    for (const std::string& word : ovikctl(arguments))
        words.push_back(word);
    Process process(words);
    const int status = process.wait();
    return {status, process.output(), process.errors()};
}

TEST_F(Ovikctl, TellsThatItsOutputCannotBeWritten)
{
    for (const std::string redirection : {">/dev/full", ">&-"}) {
        const Ran result = runRedirected(redirection, {"getBrightness"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, "cannot write to standard output: see whether it is open and its "
                                 "disk not full\n");
    }
}

TEST(OvikctlClosed, StandardDescriptorsSendNothingToTheService)
{
    const Words texts = {"setBuzzerMode;1", "getBrightness"};
    for (const std::string redirection :
         {">&-", "2>&-", "<&-", ">&- 2>&-", "<&- >&-", "<&- >&- 2>&-"}) {
        Words received;
        {
            ScriptedPeer peer([&](ScriptedPeer& self) {
                self.accept();
                for (std::string text = self.receive(); !text.empty(); text = self.receive()) {
                    received.push_back(text);
                    self.answer("-8");
                }
            });
            const Ran result =
                runRedirected(redirection, {"--socket", peer.path(), "raw", texts[0], texts[1]});
            EXPECT_EQ(result.status, 1) << redirection;
        }
        EXPECT_EQ(received, (Words{texts[0] + '\0', texts[1] + '\0'})) << redirection;
    }
}

// --- Raw requests and batches --------------------------------------------------------------------

TEST_F(Ovikctl, RawSendsRequestsAsTheyAreAndGoesOnAfterARefusal)
{
    Ran result = run({"raw", "getSystemParameter;k;more", "nonsense;1", "[a,b]", "getBrightness"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "getSystemParameter;k;more -> 0 \nnonsense;1 -> -8\n[a,b] -> -8\n"
                             "getBrightness -> 0 75\n");
    EXPECT_TRUE(contains(result.errors, "nonsense: -8: there is no such command")) << result.errors;

    result = runWithInput("getBrightness\n\nserviceStop;ssh", {"raw"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "getBrightness -> 0 75\nserviceStop;ssh -> 0 -2\n");
    EXPECT_EQ(run({"raw", "getBrightness", "--json"}).output,
              "{\"command\":\"getBrightness\",\"status\":0,\"value\":75}\n");
}

TEST_F(Ovikctl, BatchTakesAFileOfRequestsInEitherForm)
{
    const std::string requests = "# a comment\n\ngetBrightness\n"
                                 "setVolatileParameter;page;two words\n"
                                 "setVolatileParameter page 'two words'\n";
    const std::string lines = "getBrightness -> 0 75\n"
                              "setVolatileParameter;page;two words -> 0 0\n"
                              "setVolatileParameter;page;two words -> 0 0\n";
    Ran result = runWithInput(requests, {"batch", "-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, lines);
    const TempDir dir;
    std::ofstream(dir.path("file")) << requests;
    EXPECT_EQ(run({"batch", dir.path("file")}).output, lines);

    result = runWithInput("nonsense;\ngetBrightness\n", {"batch", "-"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "nonsense; -> -8\ngetBrightness -> 0 75\n");
    EXPECT_EQ(run({"batch", "/dev/null"}).status, 0);
}

TEST_F(Ovikctl, BatchSendsNothingWhenALineIsWrong)
{
    const std::vector<std::pair<std::string, std::string>> table = {
        {"getBrightness\nsaveBrightness x\n", "-:2: value: \"x\" is not a whole number"},
        {"getBrightness\nnonsense\n", "-:2: there is no command \"nonsense\""},
        {"saveBrightness 1 2\n", "-:1: saveBrightness takes 1 argument(s), not 2"},
        {"getBrightness\n\n'open\n", "-:3: a quote or a backslash at the end is left open"},
        {"setVolatileParameter k 'a;b'\n", "-:1: value: the protocol separates"},
    };
    for (const auto& [input, error] : table) {
        const Ran result = runWithInput(input, {"batch", "-"});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors.substr(0, error.size()), error);
        EXPECT_TRUE(contains(result.errors, "; nothing was sent\n")) << result.errors;
    }
    EXPECT_TRUE(platform.takeCalls().empty());
    EXPECT_TRUE(contains(run({"batch", "/nonexistent"}).errors, "cannot read /nonexistent"));
    EXPECT_EQ(run({"batch", "/nonexistent"}).status, 2);
}

TEST_F(Ovikctl, RefusesALineWithANul)
{
    const std::string cut("getBrightness\nsaveBrightness;1\0;2\n", 34);
    Ran result = runWithInput(cut, {"raw"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "getBrightness -> 0 75\n");
    EXPECT_EQ(result.errors, "-:2: a NUL, which ends a request, is within the line: remove it\n");
    for (const std::string& input : {cut, std::string("saveBrightness 1\0 2\n", 20)}) {
        result = runWithInput(input, {"batch", "-"});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(contains(result.errors, "remove it; nothing was sent\n")) << result.errors;
    }
    EXPECT_EQ(platform.takeCalls(), Words{"/Backlight com.wenu.OVIK.Backlight.getBrightness()"});
}

TEST_F(Ovikctl, TellsThatItsInputCannotBeReadToItsEnd)
{
    const TempDir dir;
    const std::string folder = dir.path("");
    for (const Ran& result : {run({"batch", folder}), runRedirected("<" + folder, {"batch", "-"}),
                              runRedirected("<" + folder, {"raw"})}) {
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(contains(result.errors, "cannot read ")) << result.errors;
        EXPECT_TRUE(contains(result.errors, "(Is a directory): name a file of requests"))
            << result.errors;
    }
}

TEST_F(Ovikctl, TakesLinesWithCarriageReturns)
{
    const std::string lines = "getBrightness -> 0 75\nsaveBrightness;1 -> 0 0\n";
    const std::string input = "getBrightness\r\n\r\nsaveBrightness;1\r\n";
    EXPECT_EQ(runWithInput(input, {"batch", "-"}).output, lines);
    EXPECT_EQ(runWithInput(input, {"raw"}).output, lines);
}

TEST(OvikctlBatch, SendsWithoutWaitingForAnswers)
{
    // Answers only after the last request.
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        for (int i = 0; i < 20; ++i)
            self.receive();
        for (int i = 0; i < 20; ++i)
            self.answer("0 " + std::to_string(i));
        self.receive();
    });
    std::string requests;
    for (int i = 0; i < 20; ++i)
        requests += "getBrightness\n";
    const Ran result = runWithInput(requests, {"--socket", peer.path(), "batch", "-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(contains(result.output, "getBrightness -> 0 0\ngetBrightness -> 0 1\n"));
}

auto stopsAfter(int requests, int answers)
{
    return [=](ScriptedPeer& self) {
        self.accept();
        for (int i = 0; i < requests; ++i)
            self.receive();
        for (int i = 0; i < answers; ++i)
            self.answer("0 " + std::to_string(i));
        self.disconnect();
    };
}

TEST(OvikctlBatch, TellsWhatWasAnsweredAndSentWhenTheServiceEndsInTheMiddle)
{
    const std::string requests = "getBrightness\ngetBuzzerMode\nsetBuzzerMode 1\ngetSysCounter\n";
    {
        ScriptedPeer peer(stopsAfter(4, 2));
        const Ran result = runWithInput(requests, {"--socket", peer.path(), "batch", "-"});
        EXPECT_EQ(result.status, 8);
        EXPECT_EQ(result.output, "getBrightness -> 0 0\ngetBuzzerMode -> 0 1\n");
        EXPECT_EQ(result.errors,
                  "answered: 1 (getBrightness) to 2 (getBuzzerMode)\n"
                  "sent, perhaps done: 3 (setBuzzerMode) to 4 (getSysCounter)\n"
                  "never left, not done: none\n"
                  "the service closed the connection: it has ended; see why with journalctl -u "
                  "ovik_server, and start it\n");
    }
    ScriptedPeer peer(stopsAfter(4, 3));
    const Ran result = runWithInput(requests, {"--json", "--socket", peer.path(), "batch", "-"});
    EXPECT_TRUE(contains(result.output, "{\"command\":\"getSysCounter\",\"status\":null,"
                                        "\"error\":\"sent, perhaps done\"}\n"))
        << result.output;
}

TEST(OvikctlBatch, TellsThatNothingIsDoneBehindAQuit)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        self.receive();
        self.answer("0");
        self.receive();
        self.disconnect();
    });
    const Ran result =
        runWithInput("quit\nsetBuzzerMode 1\n", {"--json", "--socket", peer.path(), "batch", "-"});
    EXPECT_EQ(result.status, 8);
    EXPECT_TRUE(contains(result.errors, "sent behind quit, not done: 2 (setBuzzerMode)\n"))
        << result.errors;
    EXPECT_TRUE(contains(result.output, "\"error\":\"sent behind quit, not done\""))
        << result.output;
}

TEST(OvikctlBatch, TellsWhatNeverLeftWhenTheServiceDoesNotRead)
{
    ScriptedPeer peer(stopsAfter(2, 1));
    std::string requests = "getBrightness\n"; // more than a socket can buffer
    for (int i = 0; i < 3000; ++i)
        requests += "setVolatileParameter;k;" + std::string(4000, 'x') + "\n";
    const Ran result = runWithInput(requests, {"--socket", peer.path(), "batch", "-"});
    EXPECT_EQ(result.status, 8);
    std::smatch found;
    const std::regex told("answered: 1 \\(getBrightness\\)\n"
                          "sent, perhaps done: (?:2 .* to )?([0-9]+) .*\n"
                          "never left, not done: ([0-9]+) .* to 3001 .*\n[^]*");
    ASSERT_TRUE(std::regex_match(result.errors, found, told)) << result.errors;
    EXPECT_EQ(std::stoi(found[2]), std::stoi(found[1]) + 1) << result.errors;
}

// --- Failures ------------------------------------------------------------------------------------

TEST(OvikctlFailure, OfTheServiceIsToldInWordsWithWhatCuresIt)
{
    const std::vector<std::pair<status_t, std::string>> table = {
        {-1, "ovikctl doctor tells which"},
        {-3, "read 0 to 65535 bytes; if you do, restart the service"},
        {-4, "see the platform's own log, or its calls with busctl monitor com.wenu.OVIK"},
        {-8, "ovikctl list tells the commands and their arguments"},
        {-9, "try again when the platform has ended the service's earlier command"},
        {-10, "count the modules that are there, from 0; ovikctl doctor tells of the platform"},
        {-12, "ask getHWPluginLedMode or getHWPluginIoMode which points have mode 2"},
    };
    for (const auto& [status, cure] : table) {
        const std::string number = std::to_string(status);
        const std::string words = ovik_client_status_text(status);
        {
            ScriptedPeer peer([&](ScriptedPeer& self) {
                self.accept();
                self.receive();
                self.answer(number);
            });
            const Ran result = run({"--socket", peer.path(), "getBrightness"});
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.output, "");
            EXPECT_EQ(result.errors, number + ": " + words + "; " + cure + "\n");
        }
        ScriptedPeer peer([&](ScriptedPeer& self) {
            self.accept();
            self.receive();
            self.answer(number);
        });
        const Ran result = run({"--socket", peer.path(), "getBrightness", "--json"});
        EXPECT_EQ(result.output, "{\"command\":\"getBrightness\",\"status\":" + number +
                                     ",\"error\":\"" + words + "\"}\n");
    }
}

TEST(OvikctlFailure, OfUsageIsToldBeforeAnythingIsSent)
{
    const std::vector<std::pair<Words, std::string>> table = {
        {{}, "usage: ovikctl [OPTIONS] COMMAND"},
        {{"nonsense"}, "not expected: nonsense; ovikctl --help tells the commands"},
        {{"setBuzzerMode;1"}, "ovikctl raw sends a request as it is"},
        {{"--nonsense", "getBrightness"}, "not expected: --nonsense; "},
        {{"setBuzzerMode", "x"}, "mode: \"x\" is not a whole number"},
        {{"setBuzzerMode", ""}, "mode: \"\" is not a whole number"},
        {{"setBuzzerMode", "1.5"}, "is not a whole number"},
        {{"setBuzzerMode", " 1"}, "is not a whole number"},
        {{"setBuzzerMode", "0x10"}, "is not a whole number"},
        {{"setBuzzerMode", "2147483648"}, "2147483648 does not fit: give a number from "},
        {{"setBuzzerMode", "-2147483649"}, "-2147483649 does not fit: give a number from "},
        {{"setVolatileParameter", "k", "a;b"}, "value: the protocol separates its fields by \";\""},
        {{"setVolatileParameter", ";", "v"}, "key: the protocol separates its fields by \";\""},
        {{"setBuzzerMode", "1;2"}, "mode: the protocol separates its fields by \";\""},
        {{"getVolatileParameter", std::string(5000, 'x')},
         "the request is longer than the 4999 bytes that the service takes"},
        {{"raw", std::string(5000, 'x')}, "the request is longer than the 4999 bytes"},
        {{"--timeout", "0", "getBrightness"}, "--timeout: "},
        {{"--timeout", "soon", "getBrightness"}, "--timeout"},
        {{"--timeout", "nan", "getBrightness"}, "--timeout: give a number of seconds"},
        {{"watch", "getBrightness", "--interval", "nan"}, "--interval: give a number of seconds"},
        {{"setVolatileParameter", "k", "-q"}, "begins with \"-\" stands behind \"--\""},
        {{"--socket", std::string(108, 'x'), "getBrightness"}, "at most 107 bytes"},
        {{"watch"}, "command is required; ovikctl watch --help"},
        {{"watch", "nonsense"}, "there is no command \"nonsense\""},
        {{"completion", "fish"}, "fish"},
        {{"batch"}, "file is required"},
        {{"--service-user", "no one", "list"},
         "there is no user \"no one\": give a name or a number"},
    };
    for (const auto& [words, error] : table) {
        Words nowhere = words;
        if (!words.empty() && words.front() != "--socket")
            nowhere.insert(nowhere.begin(), {"--socket", "/nonexistent"});
        const Ran result = run(nowhere);
        EXPECT_EQ(result.status, 2) << error;
        EXPECT_EQ(result.output, "") << error;
        EXPECT_TRUE(contains(result.errors, error)) << result.errors;
    }
}

TEST(OvikctlFailure, WithoutAServiceIs8)
{
    const TempDir dir;
    Ran result = run({"--socket", dir.path("none"), "getBrightness", "--json"});
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(result.errors, "no service at " + dir.path("none") +
                                 ": start it, systemctl start ovik_server, or name its socket with "
                                 "--socket\n");
    const std::string object = result.output;
    EXPECT_EQ(json::parse(object)["status"], nullptr);
    result = run({"--socket", dir.path("none"), "raw", "getBrightness", "--json"});
    EXPECT_EQ(result.output, object);
    result = runWithInput("getBrightness\ngetBrightness\n",
                          {"--socket", dir.path("none"), "batch", "-", "--json"});
    EXPECT_EQ(result.output, object + object);

    ScriptedPeer stream([](ScriptedPeer&) {}, SOCK_STREAM);
    result = run({"--socket", stream.path(), "getBrightness"});
    EXPECT_EQ(result.status, 8);
    EXPECT_TRUE(contains(result.errors, "is not ovik_server: stop it")) << result.errors;
}

TEST(OvikctlFailure, OfAServiceThatEndsOrDoesNotSpeakTheProtocolIs8)
{
    {
        ScriptedPeer peer([](ScriptedPeer& self) {
            self.accept();
            self.receive();
            self.disconnect();
        });
        const Ran result = run({"--socket", peer.path(), "getBrightness"});
        EXPECT_EQ(result.status, 8);
        EXPECT_TRUE(contains(result.errors, "the service closed the connection")) << result.errors;
    }
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        self.receive();
        self.answer("hello");
    });
    const Ran result = run({"--socket", peer.path(), "getBrightness"});
    EXPECT_EQ(result.status, 8);
    EXPECT_TRUE(contains(result.errors, "does not speak the protocol of ovik_server"));
}

void saysNothing(ScriptedPeer& self)
{
    self.accept();
    while (!self.receive().empty()) {
    }
}

TEST(OvikctlFailure, WithoutAnAnswerInTimeIs3)
{
    ScriptedPeer peer(saysNothing);
    const auto start = std::chrono::steady_clock::now();
    const Ran result = run({"--socket", peer.path(), "--timeout", "0.3", "getBrightness"});
    EXPECT_EQ(result.status, 3);
    EXPECT_GE(millisecondsSince(start), 300);
    EXPECT_TRUE(contains(result.errors, "no answer in time: the service serves another client"))
        << result.errors;
    EXPECT_TRUE(contains(result.errors, "may still carry out the request; wait longer with "
                                        "--timeout"))
        << result.errors;
}

TEST(OvikctlFailure, WithoutPermissionIs4)
{
    ScriptedPeer peer([](ScriptedPeer&) {});
    chmod(peer.path().c_str(), 0);
    const Ran result = run({"--socket", peer.path(), "getBrightness"}, withoutPrivilege());
    EXPECT_EQ(result.status, 4);
    EXPECT_TRUE(contains(result.errors, "this user may not use " + peer.path())) << result.errors;
}

// --- Another user listens ------------------------------------------------------------------------

class OvikctlStranger : public testing::Test
{
protected:
    void SetUp() override
    {
        if (geteuid() != 0)
            GTEST_SKIP() << "only root can listen as another user";
    }

    auto answering(int clients)
    {
        return [this, clients](ScriptedPeer& self) {
            for (int i = 0; i < clients; ++i) {
                self.accept();
                for (std::string text = self.receive(); !text.empty(); text = self.receive()) {
                    received.push_back(text.c_str());
                    self.answer("0 75");
                }
            }
        };
    }

    const std::string warning = "warning: process " + std::to_string(getpid()) +
                                " of user unknown (4242), neither root nor you, listens at ";
    Words received;
};

TEST_F(OvikctlStranger, IsWarnedOfAndGetsNoSecret)
{
    const TempDir dir;
    std::ofstream(dir.path("file")) << "getBrightness\nsetInterfaceConfigJson eth0 s3cret\n";
    struct Row {
        Words words;
        Words sent;
        bool isRefused;
    };
    const Row table[] = {
        {{"getBrightness"}, {"getBrightness"}, false},
        {{"raw", "setVolatileParameter;k;v"}, {"setVolatileParameter;k;v"}, false},
        {{"wait"}, {"?"}, false},
        {{"setInterfaceConfigJson", "eth0", "s3cret"}, {}, true},
        {{"serviceCommand", "wifi", "connect", "s3cret"}, {}, true},
        {{"raw", "getBrightness", "setInterfaceConfigJsn;s3cret"}, {"getBrightness"}, true},
        {{"batch", dir.path("file")}, {}, true},
    };
    for (const auto& [words, sent, isRefused] : table) {
        received.clear();
        auto peer = peerOf(otherUser, answering(1));
        Words all = {"--socket", peer->path()};
        all.insert(all.end(), words.begin(), words.end());
        const Ran result = run(all);
        peer.reset();
        EXPECT_EQ(result.errors.substr(0, warning.size()), warning);
        EXPECT_EQ(received, sent);
        EXPECT_EQ(result.status, isRefused ? 8 : 0) << result.errors;
        EXPECT_EQ(contains(result.errors, " was not sent: it may have a secret"), isRefused);
        EXPECT_FALSE(contains(result.errors, "s3cret"));
    }
}

TEST_F(OvikctlStranger, IsTheServicesUserWhenNamed)
{
    const auto peer = peerOf(otherUser, answering(1));
    const Ran result = run({"--socket", peer->path(), "--service-user", "4242",
                            "setInterfaceConfigJson", "eth0", "s3cret"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
}

TEST_F(OvikctlStranger, IsNeitherRootNorOneself)
{
    for (const uid_t user : {uid_t(0), otherUser}) {
        const auto peer = peerOf(user, answering(1));
        const Ran result = run({"--socket", peer->path(), "getBrightness"}, asOtherUser());
        EXPECT_EQ(result.status, 0) << user;
        EXPECT_EQ(result.errors, "") << user;
    }
}

TEST_F(OvikctlStranger, IsWarnedOfOnceByWatch)
{
    const auto peer = peerOf(otherUser, answering(2));
    Process watch(
        ovikctl({"--socket", peer->path(), "watch", "getBrightness", "--interval", "0.01"}));
    const auto hasTwoRounds = [&] {
        const std::string& lines = watch.output();
        return lines.find("75\n") != lines.rfind("75\n");
    };
    EXPECT_TRUE(waitUntil(hasTwoRounds));
    EXPECT_EQ(watch.errors().find("warning: "), 0u);
    EXPECT_EQ(watch.errors().rfind("warning: "), 0u);
}

// --- Waiting and watching ------------------------------------------------------------------------

TEST(OvikctlWait, TellsWhatIsMissingWhenTheTimeIsOver)
{
    const TempDir dir;
    const Ran result = run({"wait", "--timeout", "0.3", "--socket", dir.path("none")});
    EXPECT_EQ(result.status, 8);
    EXPECT_TRUE(contains(result.errors, "no service at")) << result.errors;
}

TEST(OvikctlWait, EndsWhenTheServiceAndThenThePlatformAnswer)
{
    PrivateBus bus;
    FakePlatform platform(FakePlatform::wholePanel(), false);
    Server server; // also keeps other tests' servers away
    server.process().stop();
    const std::string bound = std::to_string(3 * patience / 1s);
    Process wait(ovikctl({"wait", "--timeout", bound}));
    Process waitForPlatform(ovikctl({"wait", "--platform", "--timeout", bound}));
    server.start();
    EXPECT_EQ(wait.wait(), 0);
    EXPECT_EQ(wait.output() + wait.errors(), "");

    // Time for two tries: the server may answer the other process first.
    const Ran result = run({"wait", "--platform", "--timeout", std::to_string(2 * patienceFactor)});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.errors, "no platform yet")) << result.errors;
    EXPECT_TRUE(waitForPlatform.running());

    answerCommands(platform);
    platform.ownName();
    EXPECT_EQ(waitForPlatform.wait(), 0);
}

TEST_F(Ovikctl, WaitIsOverInTimeWhileAnotherClientIsServed)
{
    Client other(serverSocket);
    EXPECT_EQ(other.request("getBrightness"), "0 75");
    const Ran result = run({"wait", "--timeout", "1.5"});
    EXPECT_EQ(result.status, 3);
}

TEST_F(Ovikctl, WatchPrintsALineForEachCommandInEachRound)
{
    Process watch(ovikctl({"watch", "getBrightness", "getHWPluginIO 1 3", "--interval", "0.1"}));
    EXPECT_TRUE(watch.waitForOutput(" getBrightness 75\n"));
    EXPECT_TRUE(watch.waitForOutput(" getHWPluginIO;1;3 1\n"));
    platform.answer("Backlight.getBrightness", replyWith("i", 76));
    EXPECT_TRUE(watch.waitForOutput(" getBrightness 76\n"));
    platform.answer("Backlight.getBrightness", replyError("com.wenu.OVIK.Failed"));
    EXPECT_TRUE(watch.waitForOutput(" getBrightness -4: the platform answered with an error"));
    EXPECT_EQ(run({"getBuzzerMode"}).status, 0) << "others are served in between";
    EXPECT_FALSE(contains(watch.output(), "\033"));
    watch.signal(SIGINT);
    EXPECT_EQ(watch.wait(), 128 + SIGINT);
}

TEST_F(Ovikctl, WatchPrintsNoSecrets)
{
    Process watch(ovikctl({"watch", "setInterfaceConfigJson eth0 s3cret"}));
    EXPECT_TRUE(watch.waitForOutput(" setInterfaceConfigJson;eth0;... "));
    EXPECT_FALSE(contains(watch.output(), "s3cret"));
}

TEST_F(Ovikctl, WatchGoesOnWhenTheServiceComesBack)
{
    Process watch(ovikctl({"watch", "getBrightness", "--interval", "0.1", "--json"}));
    EXPECT_TRUE(watch.waitForOutput(R"({"command":"getBrightness","status":0,"value":75})"));
    EXPECT_EQ(run({"quit"}).status, 0);
    EXPECT_EQ(panel->server.process().wait(), 0);
    EXPECT_TRUE(watch.waitForErrors("no service at"));
    panel->server.start();
    ASSERT_TRUE(panel->server.waitForPlatform());
    watch.newOutput();
    EXPECT_TRUE(waitUntil([&] { return contains(watch.newOutput(), "\"value\":75}"); }));
}

// --- Self-description ----------------------------------------------------------------------------

json everythingOf(const Command& command)
{
    json arguments = json::array();
    for (const Argument& argument : command.arguments)
        arguments.push_back({{"name", argument.name},
                             {"kind", nameOf(argument.kind)},
                             {"meaning", argument.meaning},
                             {"example", argument.example},
                             {"secret", argument.isSecret}});
    return {{"command", command.word},          {"effect", nameOf(command.effect)},
            {"arguments", arguments},           {"shape", nameOf(command.shape)},
            {"answer", command.answer},         {"answerSecret", command.isAnswerSecret},
            {"answerLimit", command.textLimit}, {"modeQuery", nameOf(command.modeQuery)},
            {"logName", command.logName},       {"help", command.help}};
}

TEST(OvikctlTells, EveryCommandInItsHelpAndItsList)
{
    const Ran help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(run({"help"}).output, help.output);
    EXPECT_EQ(run({"help", "getBrightness"}).output, run({"getBrightness", "--help"}).output);
    const Ran list = run({"list"});
    EXPECT_EQ(list.status, 0);
    std::istringstream objects(run({"list", "--json"}).output);
    for (const Command& command : commandTable) {
        EXPECT_TRUE(contains(help.output, std::string("  ") + command.word));
        EXPECT_TRUE(contains("\n" + list.output, std::string("\n") + command.word + " "));
        EXPECT_TRUE(contains(list.output, command.help));
        std::string line;
        std::getline(objects, line);
        EXPECT_EQ(json::parse(line), everythingOf(command)) << line;
    }
    for (const char* verb :
         {"raw", "batch", "list", "wait", "watch", "doctor", "completion", "Exit status"})
        EXPECT_TRUE(contains(help.output, verb)) << verb;
}

TEST(OvikctlTells, ItsVersion)
{
    const Ran result = run({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "ovikctl " OVIK_VERSION "\n");
}
} // namespace
