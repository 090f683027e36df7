// The prompt of ovikctl and its other behaviour at a terminal, tested through a pseudoterminal.

#include "tests/support/commands.h"
#include "tests/support/ovikctl.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"
#include "tests/support/terminal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace
{
struct Panel {
    PrivateBus bus;
    FakePlatform platform;
    Server server;
};

class Prompt : public testing::Test
{
protected:
    static void SetUpTestSuite() { panel = std::make_unique<Panel>(); }
    static void TearDownTestSuite() { panel.reset(); }
    void SetUp() override
    {
        answerCommands(panel->platform);
        if (!panel->server.process().running())
            panel->server.start(); // an earlier test sent quit
        ASSERT_TRUE(panel->server.waitForPlatform());
    }

    /// A session with its prompt on the screen.
    std::unique_ptr<Terminal> open(const Words& options = {})
    {
        auto terminal = std::make_unique<Terminal>(ovikctl(options), environment);
        EXPECT_TRUE(terminal->shows(prompt));
        return terminal;
    }

    std::string historyFile() const
    {
        std::ifstream file(dir.path("state/ovikctl/history"));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static std::unique_ptr<Panel> panel;
    const std::string prompt = "ovikctl> ";
    TempDir dir;
    Words environment = {"XDG_STATE_HOME=" + dir.path("state"), "HOME=" + dir.path("home")};
};
std::unique_ptr<Panel> Prompt::panel;

TEST_F(Prompt, AnswersWhatIsTypedInEitherForm)
{
    const auto terminal = open();
    terminal->type("getBrightness\n");
    EXPECT_TRUE(terminal->shows("\r\n75\r\n"));
    terminal->type("setVolatileParameter k 'two words'\n");
    EXPECT_TRUE(terminal->shows("\r\n0\r\n"));
    EXPECT_TRUE(panel->platform.waitForCall("\"two words\""));
    terminal->type("getBrightness;\n");
    EXPECT_TRUE(terminal->shows("getBrightness; -> 0 75\r\n"));
    terminal->type("nonsense\n");
    EXPECT_TRUE(terminal->shows("not expected: nonsense"));
    terminal->type("setBuzzerMode x\n");
    EXPECT_TRUE(terminal->shows("mode: \"x\" is not a whole number"));
    terminal->type("getHWPluginIO 9 0\n");
    EXPECT_TRUE(terminal->shows("-10: "));
    terminal->type("getBrightness 'open\n");
    EXPECT_TRUE(terminal->shows("left open: close it"));
    terminal->type("getBrightness --json\n");
    EXPECT_TRUE(terminal->shows("{\"command\":\"getBrightness\",\"status\":0,\"value\":75}"));
    terminal->type("help setBuzzerMode\n");
    EXPECT_TRUE(terminal->shows("Example: ovikctl setBuzzerMode 1"));
    EXPECT_TRUE(terminal->shows(prompt));
}

TEST_F(Prompt, TakesTheOptionsItWasStartedWith)
{
    const auto terminal = open({"--json"});
    terminal->type("getBrightness\n");
    EXPECT_TRUE(terminal->shows("\"value\":75}"));
}

TEST_F(Prompt, LetsOthersBeServedWhileItWaitsForALine)
{
    const auto terminal = open();
    terminal->type("getBrightness\n");
    EXPECT_TRUE(terminal->shows("\r\n75\r\n"));
    EXPECT_EQ(Client(serverSocket).request("getBrightness"), "0 75");
}

TEST_F(Prompt, TakesWhatIsNotAsciiWithoutALanguage)
{
    for (const std::string language : {"LC_ALL=C", "LC_ALL=POSIX", "LC_ALL=xx_XX.UTF-8"}) {
        environment.push_back(language);
        const auto terminal = open();
        panel->platform.takeCalls();
        terminal->type("setVolatileParameter greet gr\u00fcn\n");
        EXPECT_TRUE(terminal->shows("\r\n0\r\n"));
        EXPECT_TRUE(panel->platform.waitForCall("\"gr\u00fcn\"")) << language;
        environment.pop_back();
    }
}

// --- TAB -----------------------------------------------------------------------------------------

TEST_F(Prompt, CompletesACommandThatIsTheOnlyOne)
{
    const auto terminal = open();
    terminal->type("getBri" + keys::tab);
    EXPECT_TRUE(terminal->shows("ghtness "));
    terminal->type("\n");
    EXPECT_TRUE(terminal->shows("\r\n75\r\n"));
}

TEST_F(Prompt, CompletesWhatSeveralHaveInCommonThenListsThem)
{
    const auto terminal = open();
    terminal->type("setBu" + keys::tab);
    EXPECT_TRUE(terminal->shows("zzer"));
    terminal->type(keys::tab);
    for (const char* command :
         {"setBuzzerMode ", "setBuzzerUserControl", "setBuzzerOnTime", "setBuzzerOffTime"})
        EXPECT_TRUE(terminal->shows(command)) << command;
    EXPECT_TRUE(terminal->shows(prompt + "setBuzzer"));
    terminal->type("Mode 1\n");
    EXPECT_TRUE(terminal->shows("\r\n4294967293\r\n"));
}

TEST_F(Prompt, TellsWhichArgumentComesNext)
{
    const std::vector<std::pair<std::string, std::string>> table = {
        {"setHWPluginIO ", "setHWPluginIO [slot] index value  place in the list of the modules"},
        {"setHWPluginIO 0 ", "setHWPluginIO slot [index] value  I/O point or LED"},
        {"setHWPluginIO;0;1;", "setHWPluginIO slot index [value]  the value, one digit"},
        {"setVolatileParameter 'a b' ", "setVolatileParameter key [value]  its value"},
        {"getBrightness ", "getBrightness  nothing more"},
        {"batch ", "batch [file]  One request in each line"},
    };
    for (const auto& [line, hint] : table) {
        const auto terminal = open();
        terminal->type(line + keys::tab);
        EXPECT_TRUE(terminal->shows("\r\n" + hint)) << line << "\n" << terminal->screen();
        EXPECT_TRUE(terminal->shows(prompt + line.substr(0, line.size() - 1)));
    }
}

TEST_F(Prompt, CompletesToolsOptionsAndCommandsToWatchOrToHaveExplained)
{
    const std::vector<std::pair<std::string, std::string>> table = {
        {"doc", "tor "},
        {"watch --int", "erval "},
        {"getBrightness --jso", "n "},
        {"watch getBri", "ghtness "},
        {"help getBri", "ghtness "},
        {"exi", "t "},
    };
    for (const auto& [line, rest] : table) {
        const auto terminal = open();
        terminal->type(line);
        EXPECT_TRUE(terminal->shows(line));
        terminal->type(keys::tab);
        EXPECT_TRUE(terminal->shows(rest)) << line << "\n" << terminal->screen();
    }
}

TEST_F(Prompt, RingsWhenThereIsNothingToComplete)
{
    for (const std::string line : {"nonsense", "nonsense ", "getBrightness 'open"}) {
        const auto terminal = open();
        terminal->type(line + keys::tab);
        EXPECT_TRUE(terminal->shows("\a")) << line;
    }
}

// --- History -------------------------------------------------------------------------------------

TEST_F(Prompt, RemembersLinesForTheNextSession)
{
    auto terminal = open();
    terminal->type("getBuzzerMode\n");
    EXPECT_TRUE(terminal->shows("\r\n2\r\n"));
    terminal->type("exit\n");
    EXPECT_EQ(terminal->wait(), 0);

    terminal = open();
    terminal->type(keys::up);
    EXPECT_TRUE(terminal->shows("getBuzzerMode"));
    terminal->type("\n");
    EXPECT_TRUE(terminal->shows("\r\n2\r\n"));
    EXPECT_TRUE(terminal->shows(prompt)); // the line is in the file now

    struct stat status = {};
    ASSERT_EQ(stat(dir.path("state/ovikctl/history").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    ASSERT_EQ(stat(dir.path("state/ovikctl").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    const std::filesystem::directory_iterator files(dir.path("state/ovikctl"));
    EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "nothing is left but the history";
}

TEST_F(Prompt, LeavesALinkInPlaceOfItsHistoryAsItIs)
{
    std::filesystem::create_directories(dir.path("state/ovikctl"));
    const std::string link = dir.path("state/ovikctl/history");
    const std::string target = dir.path("target");
    std::ofstream(target) << "kept";
    chmod(target.c_str(), 0644);
    std::filesystem::create_symlink(target, link);
    const auto terminal = open();
    terminal->type("getBuzzerMode\n");
    EXPECT_TRUE(terminal->shows("\r\n2\r\n"));
    EXPECT_TRUE(terminal->shows(prompt));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(historyFile(), "kept");
    struct stat status = {};
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0644u);
}

TEST_F(Prompt, KeepsTheLinesOfSessionsSideBySide)
{
    const auto first = open();
    const auto second = open();
    first->type("getBuzzerMode\n");
    EXPECT_TRUE(first->shows("\r\n2\r\n"));
    EXPECT_TRUE(first->shows(prompt));
    second->type("getBrightness\n");
    EXPECT_TRUE(second->shows("\r\n75\r\n"));
    EXPECT_TRUE(second->shows(prompt));
    EXPECT_NE(historyFile().find("getBuzzerMode"), std::string::npos);
    EXPECT_NE(historyFile().find("getBrightness"), std::string::npos);
}

TEST_F(Prompt, KeepsSecretsOutOfTheFileButRecallsThemInTheSession)
{
    const auto terminal = open();
    for (const std::string line :
         {"setInterfaceConfigJson eth0 s3cret", "setInterfaceConfigJson;eth0;s3cret",
          "serviceCommand wifi connect s3cret", "--json serviceCommand wifi connect s3cret",
          "raw 'serviceCommand;wifi;connect;s3cret'", "service'Command' wifi connect s3cret",
          "serviceComand wifi connect s3cret", "serviceCommand s3cret", "s3cret",
          "setInterfaceConfigJson eth0 'a;s3cret'", "setInterfaceConfigJsn;eth0;s3cret"}) {
        terminal->type(line + "\n");
        EXPECT_TRUE(terminal->shows("\r\n")) << line;
        EXPECT_TRUE(terminal->shows(prompt)) << line;
    }
    terminal->type(keys::up);
    EXPECT_TRUE(terminal->shows("s3cret"));
    terminal->type(keys::ctrlC + "getBrightness\n");
    EXPECT_TRUE(terminal->shows("\r\n75\r\n"));
    EXPECT_TRUE(terminal->shows(prompt));
    EXPECT_NE(historyFile().find("getBrightness"), std::string::npos);
    EXPECT_EQ(historyFile().find("s3cret"), std::string::npos) << historyFile();
}

TEST_F(Prompt, WorksWithoutAPlaceForItsHistory)
{
    environment = {"XDG_STATE_HOME=/proc/nowhere"};
    const auto terminal = open();
    terminal->type("getBrightness\n");
    EXPECT_TRUE(terminal->shows("\r\n75\r\n"));
    EXPECT_TRUE(terminal->shows(prompt));
}

// --- The end of the service and of the prompt ----------------------------------------------------

TEST_F(Prompt, ReachesAServiceThatWasRestarted)
{
    const auto terminal = open();
    terminal->type("getBrightness\n");
    EXPECT_TRUE(terminal->shows("\r\n75\r\n"));
    EXPECT_EQ(Client(serverSocket).request("quit"), "0");
    EXPECT_EQ(panel->server.process().wait(), 0);
    terminal->type("getBrightness\n");
    EXPECT_TRUE(terminal->shows("no service at"));
    panel->server.start();
    ASSERT_TRUE(panel->server.waitForPlatform());
    terminal->type("getBrightness\n");
    EXPECT_TRUE(terminal->shows("\r\n75\r\n"));
}

TEST_F(Prompt, EndsTheServiceAndItselfWithQuit)
{
    for (const char* line : {"quit\n", "quit;\n"}) {
        if (!panel->server.process().running())
            panel->server.start();
        const auto terminal = open();
        terminal->type(line);
        EXPECT_EQ(terminal->wait(), 0);
        EXPECT_EQ(panel->server.process().wait(), 0);
    }
}

TEST_F(Prompt, LeavesWithCtrlDAndWithExit)
{
    for (const std::string& line : {keys::ctrlD, std::string("exit\n"), std::string(" exit \n")}) {
        const auto terminal = open();
        EXPECT_FALSE(terminal->isPlain());
        terminal->type(line);
        EXPECT_EQ(terminal->wait(), 0);
        EXPECT_TRUE(terminal->isPlain());
    }
}

TEST_F(Prompt, ClearsTheLineWithCtrlC)
{
    const auto terminal = open();
    terminal->type("saveBrightness 1");
    EXPECT_TRUE(terminal->shows("saveBrightness 1"));
    terminal->type(keys::ctrlC);
    EXPECT_TRUE(terminal->shows(prompt));
    panel->platform.takeCalls();
    terminal->type("\ngetBrightness\n");
    EXPECT_TRUE(terminal->shows("\r\n75\r\n"));
    EXPECT_EQ(panel->platform.takeCalls(),
              Words{"/Backlight com.wenu.OVIK.Backlight.getBrightness()"});
}

TEST_F(Prompt, LeavesThePlainTerminalWhenASignalEndsIt)
{
    for (const int number : {SIGTERM, SIGHUP}) {
        const auto terminal = open();
        EXPECT_TRUE(waitUntil([&] { return !terminal->isPlain(); }));
        kill(terminal->pid(), number);
        EXPECT_EQ(terminal->wait(), 128 + number);
        EXPECT_TRUE(terminal->isPlain());
    }
}

class WaitingPrompt : public Prompt
{
protected:
    void SetUp() override
    {
        Prompt::SetUp();
        other = std::make_unique<Client>(serverSocket);
        ASSERT_EQ(other->request("getBrightness"), "0 75");
    }

    /// A prompt with a waiting request; a child process waits, once it runs.
    std::unique_ptr<Terminal> openAtARequest()
    {
        auto terminal = open();
        terminal->type("getBuzzerMode\n");
        EXPECT_TRUE(terminal->shows("getBuzzerMode\r\n"));
        EXPECT_TRUE(waitUntil([&] { return terminal->isPlain(); }));
        return terminal;
    }

    std::unique_ptr<Client> other;
};

TEST_F(WaitingPrompt, GivesUpTheRequestWithCtrlC)
{
    const auto terminal = openAtARequest();
    terminal->type(keys::ctrlC);
    EXPECT_TRUE(terminal->shows(prompt));
    other->disconnect();
    terminal->type("getBrightness\n");
    EXPECT_TRUE(terminal->shows("\r\n75\r\n"));
}

TEST_F(WaitingPrompt, PassesOnAnInterruptThatTheProcessDidNotGet)
{
    const auto terminal = openAtARequest();
    kill(terminal->pid(), SIGINT); // like Ctrl-C before the child process runs
    EXPECT_TRUE(terminal->shows(prompt));
}

TEST_F(WaitingPrompt, EndsTheRequestWhenASignalEndsIt)
{
    for (const int number : {SIGTERM, SIGHUP}) {
        const auto terminal = openAtARequest();
        kill(terminal->pid(), number);
        EXPECT_EQ(terminal->wait(), 128 + number);
        EXPECT_TRUE(terminal->isPlain());
    }
}

// --- Other verbs at a terminal -------------------------------------------------------------------

class AtATerminal : public Prompt
{
protected:
    const std::string bold = "\033[1m";
    const std::string green = "\033[32m";
};

TEST_F(AtATerminal, WatchDrawsItsTableInPlaceWithWhatIsNewInBold)
{
    Terminal terminal(ovikctl({"watch", "getBrightness", "getBuzzerMode", "--interval", "0.1"}));
    EXPECT_TRUE(terminal.shows("getBrightness  75\r\ngetBuzzerMode  2\r\n"));
    EXPECT_TRUE(terminal.shows("\033[3A\r\033[J"));
    EXPECT_EQ(terminal.screen().find(bold), std::string::npos);
    panel->platform.answer("Backlight.getBrightness", replyWith("i", 76));
    EXPECT_TRUE(terminal.shows(bold + "getBrightness  76"));
    terminal.type(keys::ctrlC);
    EXPECT_EQ(terminal.wait(), 128 + SIGINT);
}

TEST_F(AtATerminal, WatchShowsALongValueInOneLine)
{
    panel->platform.answer("OVIK.getAllSystemParametersJSON",
                           replyText("{\n\033[2J" + std::string(500, 'x') + "}"));
    Terminal terminal(ovikctl({"watch", "getAllSystemParametersJson", "--interval", "0.1"}));
    EXPECT_TRUE(terminal.shows("getAllSystemParametersJson  {  [2J" + std::string(65, 'x') +
                               "\r\n\033[2A"));
}

TEST_F(AtATerminal, ControlCharactersAreBlanksAndContinuationLinesAreIndented)
{
    panel->platform.answer("OVIK.getAllSystemParametersJSON",
                           replyText("{\n\033[2J\u009b2J\x7f\r\u00fc}"));
    // Encoded in Latin-1: first sequences that are valid UTF-8, then invalid ones.
    panel->platform.answer("NetworkManager.getConfigJSON",
                           replyText("\u00c3\u009b \u00f0\u0090\u0080\u0080 \u009b2J\u00fc "
                                     "\u00c0\u009b \u00e0\u009f\u0080 \u00ed\u00a0\u0080 "
                                     "\u00f0\u008f\u0080\u0080 \u00f4\u0090\u0080\u0080 "
                                     "\u00e2\u0082 \u00f5\u0080 \u00c3"));
    const std::string shown = "{\r\n     [2J  2J  \u00fc}\r\n";
    const std::string nonsense = "a\033\u009b\nb";
    const std::string shownNonsense = "a   \r\n    b";
    struct Row {
        Words words;
        std::string screen; ///< expected start of the screen
        std::string piped;
    };
    const Row table[] = {
        {{"getAllSystemParametersJson"}, shown, "\033[2J\u009b2J\x7f\r"},
        {{"raw", "getAllSystemParametersJson"},
         "getAllSystemParametersJson -> 0 " + shown,
         "\033[2J\u009b2J\x7f\r"},
        {{"getNetworkConfigJson"},
         "\xc3\x9b \xf0\x90\x80\x80  2J\xfc \xc0  \xe0   \xed\xa0  \xf0    \xf4    \xe2  \xf5  "
         "\xc3\r\n",
         "\x9b"
         "2J\xfc \xc0\x9b "},
        {{"raw", nonsense},
         shownNonsense + " -> -8\r\n" + shownNonsense + ": -8: ",
         nonsense + " -> -8\n" + nonsense + ": -8: "},
        {{"doctor", "--socket", "/none\033\u009b\n"},
         "BAD  socket: there is no /none   \r\n    ;",
         "there is no /none\033\u009b\n;"},
    };
    for (const Row& row : table) {
        Terminal terminal(ovikctl(row.words), {"NO_COLOR=1"});
        EXPECT_NE(terminal.wait(), -1);
        EXPECT_EQ(terminal.screen().substr(0, row.screen.size()), row.screen);
        const Ran piped = run(row.words);
        EXPECT_NE((piped.output + piped.errors).find(row.piped), std::string::npos) << piped.output;
    }
}

TEST_F(AtATerminal, ARequestIsShownWithoutItsSecrets)
{
    const std::vector<std::pair<Words, std::string>> table = {
        {{"raw", "setInterfaceConfigJson;eth0;a;s3cret"}, "setInterfaceConfigJson;eth0;... -> 0"},
        {{"raw", "setInterfaceConfigJson;;s3cret"}, "setInterfaceConfigJson;;... -> "},
        {{"raw", "serviceCommand;wifi;connect;s3cret"}, "serviceCommand;wifi;connect;... -> 0 4"},
        {{"raw", "setInterfaceConfigJsn;eth0;s3cret"}, "setInterfaceConfigJsn;... -> -8"},
        {{"raw", "setVolatileParameter;k;v"}, "setVolatileParameter;k;v -> 0"},
        {{"watch", "setInterfaceConfigJson eth0 s3cret"}, "setInterfaceConfigJson;eth0;...  "},
    };
    for (const auto& [words, line] : table) {
        Terminal terminal(ovikctl(words));
        EXPECT_TRUE(terminal.shows(line)) << terminal.screen();
        terminal.type(keys::ctrlC);
        terminal.wait();
        EXPECT_EQ(terminal.screen().find("s3cret"), std::string::npos) << terminal.screen();
        if (words.front() == "raw") {
            EXPECT_EQ(run(words).output.find(words.back() + " -> "), 0u) << "no terminal";
        }
    }
}

TEST_F(AtATerminal, DoctorHasColoursUnlessNoColorIsSet)
{
    Terminal coloured(ovikctl({"doctor"}));
    EXPECT_TRUE(coloured.shows(green + "good"));
    EXPECT_EQ(coloured.wait(), 0);
    Terminal plain(ovikctl({"doctor"}), {"NO_COLOR=1"});
    EXPECT_EQ(plain.wait(), 0);
    EXPECT_EQ(plain.screen().find("\033"), std::string::npos);
    EXPECT_EQ(run({"doctor"}).output.find("\033"), std::string::npos) << "no terminal";
}
} // namespace
