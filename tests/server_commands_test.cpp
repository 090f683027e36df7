// Every command of the protocol through the real server: its D-Bus calls, its answer and its log.
// For requests of faulty clients see fault_message_test.cpp.

#include "protocol/command_table.h"
#include "tests/support/commands.h"
#include "tests/support/footprint.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <regex>

namespace
{
using Row = CommandRow;

const std::vector<Row>& rows = commandRows();
const std::string eeprom = "/I2CSEEPROM com.wenu.OVIK.I2CSEEPROM.";

/// One server with a complete panel, shared by all tests of this file.
struct Panel {
    PrivateBus bus;
    FakePlatform platform;
    Server server;
};

class Commands : public testing::Test
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
        newLog();
    }

    std::string request(const std::string& text) { return client.request(text); }
    std::string request(const Row& row) { return request(row.request()); }
    std::string newLog() { return panel->server.process().newOutput(); }

    static std::unique_ptr<Panel> panel;
    FakePlatform& platform = panel->platform;
    Client client{serverSocket};
};
std::unique_ptr<Panel> Commands::panel;

class EveryCommand : public Commands, public testing::WithParamInterface<Row>
{
};

INSTANTIATE_TEST_SUITE_P(Table, EveryCommand, testing::ValuesIn(rows),
                         [](const auto& row) { return std::string(row.param.word); });

TEST_P(EveryCommand, MakesExactlyItsCallsAndAnswersTheirResult)
{
    const Row& row = GetParam();
    platform.answer(row.member, row.reply);

    EXPECT_EQ(request(row), row.response);
    EXPECT_EQ(platform.takeCalls(), row.calls);
    EXPECT_EQ(newLog(), "");
}

/// A client with read-only access may send only commands with Effect::Reads.
TEST_P(EveryCommand, ReadsOnlyIfItsLastCallAtThePlatformDoes)
{
    const std::regex read("[.](get|Get|read|info|version|enabled|controlled|state)[^.]*$");
    const Effect expected =
        std::regex_search(GetParam().member, read) ? Effect::Reads : Effect::Writes;
    const Command* const command = findCommand(GetParam().word);
    ASSERT_TRUE(command);
    EXPECT_EQ(command->effect, expected);
}

TEST_P(EveryCommand, IgnoresFieldsBeyondItsOwn)
{
    const Row& row = GetParam();
    platform.answer(row.member, row.reply);

    EXPECT_EQ(request(row.request() + ";more;;"), row.response);
    EXPECT_EQ(platform.takeCalls(), row.calls);
}

class CommandWithArguments : public EveryCommand
{
};

std::vector<Row> rowsWithArguments()
{
    std::vector<Row> found;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(found),
                 [](const Row& row) { return !row.arguments.empty(); });
    return found;
}

INSTANTIATE_TEST_SUITE_P(Table, CommandWithArguments, testing::ValuesIn(rowsWithArguments()),
                         [](const auto& row) { return std::string(row.param.word); });

TEST_P(CommandWithArguments, WithTooFewFieldsAnswersMinusEightAndCallsNothing)
{
    const Row& row = GetParam();
    std::string text = row.request();
    // Every shorter form, down to the word without arguments.
    for (size_t end = text.rfind(';'); end != std::string::npos; end = text.rfind(';')) {
        text.resize(end);
        EXPECT_EQ(request(text), "-8") << text;
    }
    EXPECT_EQ(newLog(), "");
    EXPECT_TRUE(platform.takeCalls().empty());
}

// --- Requests ------------------------------------------------------------------------------------

TEST_F(Commands, AWordThatIsNotExactlyACommandAnswersMinusEight)
{
    for (const char* text : {"", ";", "GETBRIGHTNESS", "getbrightness", " getBrightness",
                             "getBrightness ", "getBrightnes", "getBrightnessX", "QUIT", "quit ",
                             ";getBrightness", ";;;;;;;;", "getBackLightCounter", "\xff\xfe"})
        EXPECT_EQ(request(text), "-8") << text;
    EXPECT_TRUE(platform.takeCalls().empty());
    EXPECT_EQ(newLog(), "");
    EXPECT_TRUE(panel->server.process().running());
}

// --- Responses -----------------------------------------------------------------------------------

TEST_F(Commands, ATextIsCutSoThatTheResponseHas9999BytesAndItsNul)
{
    for (const size_t size : {9996u, 9997u, 9998u, 10000u, 1u << 20}) {
        const std::string text = std::string(size - 1, 'x') + 'y';
        platform.answer("OVIK.getAllSystemParametersJSON", replyText(text));
        EXPECT_EQ(request("getAllSystemParametersJson"), ("0 " + text).substr(0, 9999)) << size;
    }
    // A shorter text must not contain the rest of a longer one.
    platform.answer("OVIK.getAllSystemParametersJSON", replyText("{}"));
    EXPECT_EQ(request("getAllSystemParametersJson"), "0 {}");
}

TEST_F(Commands, AModuleNameOfFullLengthEndsThere)
{
    // A long text leaves its bytes in the scratch buffer.
    platform.answer("OVIK.getAllSystemParametersJSON", replyText(std::string(5000, 'x')));
    request("getAllSystemParametersJson");
    platform.answer("SystemInfo.info", replySystemInfo("ABC", "PANEL", "\x01\x02"));
    EXPECT_EQ(request("getSystemInfo"), "0 PANEL,17,513");
}

TEST_F(Commands, AParameterIsCutTo99Bytes)
{
    for (const size_t size : {98u, 99u, 100u, 101u, 5000u}) {
        const std::string value = std::string(size - 1, 'x') + 'y';
        for (const std::string kind : {"Volatile", "System"}) {
            platform.answer("OVIK.get" + kind + "Parameter", replyText(value));
            EXPECT_EQ(request("get" + kind + "Parameter;k"), "0 " + value.substr(0, 99)) << size;
        }
    }
}

TEST_F(Commands, StorageAndNetworkDocumentsComeAsLatin1)
{
    platform.answer("NetworkManager.getConfigJSON", replyText("\u00fc\u20ac"));
    EXPECT_EQ(request("getNetworkConfigJson"), "0 \xfc?");
    platform.answer("StorageMgr.getStorageInfoJSON", replyText("\u00fc\u20ac"));
    EXPECT_EQ(request("getStorageInfoJson;\u00fc"), "0 \xfc?");
}

TEST_F(Commands, AReplyOfAnotherTypeIsAnsweredAsTheDefaultValue)
{
    platform.answer("Buzzer.GetBuzzerMode", replyText("two"));
    EXPECT_EQ(request("getBuzzerMode"), "0 0");
    platform.answer("OVIK.getSystemParameter", replyWith("i", 1));
    EXPECT_EQ(request("getSystemParameter;k"), "0 ");
    platform.answer("SystemInfo.info", replyWith("i", 1));
    EXPECT_EQ(request("getSystemInfo"), "0 ,0,0");
    platform.answer("I2CSEEPROM.read", replyWith("i", 1));
    EXPECT_EQ(request("seepromRead;0;2"), "0 00,00");
    EXPECT_EQ(newLog(), "");
}

TEST_F(Commands, AnErrorOfThePlatformNamedLikeATypeMismatchIsAnError)
{
    platform.answer("Buzzer.GetBuzzerMode",
                    replyError("org.freedesktop.DBus.Error.InvalidSignature"));
    EXPECT_EQ(request("getBuzzerMode"), "-4");
    EXPECT_EQ(newLog(), "getReplyValue: error\nOVIK_SERVER: getBuzzerMode error -4\n");
}

// --- Serial EEPROM -------------------------------------------------------------------------------

TEST_F(Commands, OneEepromByteIsAnsweredWithoutAComma)
{
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, "\x7f"));
    EXPECT_EQ(request("seepromRead;0;1"), "0 7F");
}

TEST_F(Commands, TheEepromAddressIsTheLowByte)
{
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, "x"));
    request("seepromRead;421;1");
    EXPECT_EQ(platform.takeCalls(), std::vector{eeprom + "read(yu) 165 1"});
    platform.answer("I2CSEEPROM.readSlvAddr", replyResultAndBytes(0, "x"));
    request("seepromReadSlave;336;-1;1");
    EXPECT_EQ(platform.takeCalls(), std::vector{eeprom + "readSlvAddr(yyu) 80 255 1"});
}

TEST_F(Commands, AShortEepromReplyIsFilledWithZeroBytesAndALongOneCut)
{
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, "AB"));
    EXPECT_EQ(request("seepromRead;0;4"), "0 41,42,00,00");
    EXPECT_EQ(request("seepromRead;0;1"), "0 41");
}

TEST_F(Commands, ThePlatformsResultOfAnEepromReadIsNotReturned)
{
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(-5, ""));
    EXPECT_EQ(request("seepromRead;0;2"), "0 00,00");
}

TEST_F(Commands, AnEepromReadOfNoBytesMakesTheCallAndAnswersTheStatus)
{
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, ""));
    EXPECT_EQ(request("seepromRead;0;0"), "0");
    EXPECT_EQ(platform.takeCalls(), std::vector{eeprom + "read(yu) 0 0"});
}

TEST_F(Commands, AnEepromReadThatCannotBeServedAnswersMinusThreeWithoutACall)
{
    for (const char* length : {"-1", "65536", "2147483647", "-2147483648"}) {
        EXPECT_EQ(request(std::string("seepromRead;0;") + length), "-3");
        EXPECT_EQ(newLog(), "OVIK_SERVER: seepromRead error -3\n");
        EXPECT_EQ(request(std::string("seepromReadSlave;80;0;") + length), "-3");
        EXPECT_EQ(newLog(), "OVIK_SERVER: seepromRead error -3\n");
    }
    EXPECT_TRUE(platform.takeCalls().empty());
}

TEST_F(Commands, NoLengthMakesTheServerTouchMoreMemoryThanItsAnswerNeeds)
{
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, "x"));
    request("seepromRead;0;1");
    const pid_t pid = panel->server.process().pid();
    const long before = statusField(pid, "VmHWM");
    for (const char* length : {"65535", "65536", "1000000000", "2147483647", "-1"})
        request(std::string("seepromRead;0;") + length);
    EXPECT_LT(statusField(pid, "VmHWM"), before + 1024);
}

TEST_F(Commands, AnEepromAnswerIsCutToTheWholeBytesThatFit)
{
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, std::string(65535, '\xAB')));
    for (const int length : {3331, 3332, 3333, 3334, 65535}) {
        const std::string response = request("seepromRead;0;" + std::to_string(length));
        EXPECT_EQ(response.size(), size_t(3 * std::min(length, 3332) + 1)) << length;
        EXPECT_EQ(response.substr(response.size() - 3), ",AB");
    }
}

// --- Plug-in modules -----------------------------------------------------------------------------

const std::vector<std::string> pluginRequests = {"getHWPluginIoMode;S;0",
                                                 "getHWPluginIO;S;0",
                                                 "setHWPluginIO;S;0;1",
                                                 "getHWPluginLedMode;S;0",
                                                 "setHWPluginLedUserControl;S;0;1",
                                                 "setHWPluginLedValue;S;0;1",
                                                 "setHWPluginLedOnTime;S;0;1",
                                                 "setHWPluginLedOffTime;S;0;1",
                                                 "setHWPluginLedFlash;S;0;1",
                                                 "setHWPluginLedBlink;S;0;1;1"};

TEST_F(Commands, APlaceBeyondTheListOfModulesAnswersMinusTen)
{
    for (const std::string& text : pluginRequests) {
        const std::string word = text.substr(0, text.find(';'));
        for (const char* slot : {"2", "3", "4", "2147483647", "-1", "-2147483648"}) {
            const std::string withSlot = word + ";" + slot + text.substr(text.find(";S") + 2);
            EXPECT_EQ(request(withSlot), "-10") << withSlot;
            EXPECT_EQ(newLog(), "OVIK_SERVER: " + word + " error -10\n");
        }
    }
    EXPECT_TRUE(platform.takeCalls().empty());
}

TEST_F(Commands, APointWhoseModeIsNotTwoIsNotWritten)
{
    for (const Row& row : rows) {
        if (!row.isGuarded())
            continue;
        for (const int mode : {-1, 0, 1, 3}) {
            platform.answer("Leds.GetLedMode", replyWith("i", mode));
            platform.answer("Sensors.getIoMode", replyWith("i", mode));
            EXPECT_EQ(request(row), "-12");
            EXPECT_EQ(newLog(), row.errorLine(-12));
            EXPECT_EQ(platform.takeCalls(), std::vector{row.calls.front()});
        }
    }
}

TEST_F(Commands, APointWhoseModeCannotBeAskedIsNotWritten)
{
    // A failed query returns 0, which is not the required 2.
    for (const char* query : {"Leds.GetLedMode", "Sensors.getIoMode"})
        platform.answer(query, replyError("com.wenu.OVIK.Failed"));
    EXPECT_EQ(request("setHWPluginLedValue;0;0;1"), "-12");
    EXPECT_EQ(request("setHWPluginIO;0;0;1"), "-12");
}

TEST_F(Commands, ANegativeResultOfAModuleIsAValue)
{
    platform.answer("Leds.GetLedMode", replyWith("i", -1));
    EXPECT_EQ(request("getHWPluginLedMode;0;0"), "0 -1");
}

TEST_F(Commands, AnOutputValueTravelsAsOneCharacter)
{
    platform.answer("Sensors.writeIo", replyWith("i", 0));
    const std::string write = "/HWPlugin/0/Sensors com.wenu.OVIK.Sensors.writeIo(uay) 5 ";
    for (const auto& [value, byte] : std::map<std::string, std::string>{{"0", "[30]"},
                                                                        {"1", "[31]"},
                                                                        {"9", "[39]"},
                                                                        {"-1", "[2f]"},
                                                                        {"256", "[30]"},
                                                                        {"2147483647", "[2f]"}}) {
        EXPECT_EQ(request("setHWPluginIO;0;5;" + value), "0 0");
        EXPECT_EQ(platform.takeCalls().back(), write + byte);
    }
}

TEST_F(Commands, AnInputValueIsItsCharactersDigit)
{
    for (const auto& [bytes, response] : std::map<std::string, std::string>{{"0", "0 0"},
                                                                            {"9", "0 9"},
                                                                            {"A", "0 17"},
                                                                            {"\xff", "0 207"},
                                                                            {"", "0 -48"},
                                                                            {"12", "0 1"}}) {
        platform.answer("Sensors.readIo", replyBytes(bytes));
        EXPECT_EQ(request("getHWPluginIO;0;0"), response);
    }
}
} // namespace
