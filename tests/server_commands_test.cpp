// Every command of the protocol through the real program: what it sends over the bus, what it
// answers and what it logs. Requests that no good client makes are in fault_message_test.cpp.

#include "tests/support/fake_platform.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace
{
struct Row {
    const char* word;
    std::string arguments;          ///< behind the word, each with its ";"
    std::string member;             ///< as FakePlatform::answer() takes it
    Reply reply;                    ///< of the platform
    std::vector<std::string> calls; ///< exactly these, as they were on the bus
    std::string response;
    std::string logName; ///< in the error line
};

const std::string leds = "/HWPlugin/2/Leds com.wenu.OVIK.Leds.";
const std::string sensors = "/HWPlugin/2/Sensors com.wenu.OVIK.Sensors.";
const std::string ovik = "/ com.wenu.OVIK.";
const std::string services = "/ServiceManager com.wenu.OVIK.ServiceManager.";
const std::string eeprom = "/I2CSEEPROM com.wenu.OVIK.I2CSEEPROM.";
const std::string network = "/NetworkManager com.wenu.OVIK.NetworkManager.";
const std::string buzzer = "/Buzzer com.wenu.OVIK.Buzzer.";

// "quit" has tests of its own. The plug-in rows name slot 1: the second module found, in slot 2.
// clang-format off
const std::vector<Row> rows = {
    {"getAvailableMemory", "", "SysStat.getAvailableMemory", replyWith("t", uint64_t(5000000000)), {"/SysStat com.wenu.OVIK.SysStat.getAvailableMemory()"}, "0 5000000000", "getAvailableMemory"},
    {"getSysCounter", "", "OVIK.getSysCounter", replyWith("i", 1234), {ovik + "getSysCounter()"}, "0 1234", "getSysCounter"},
    {"getBacklightCounter", "", "OVIK.getBlightCounter", replyWith("i", 99), {ovik + "getBlightCounter()"}, "0 99", "getBacklightCounter"},
    {"getBrightness", "", "Backlight.getBrightness", replyWith("i", 75), {"/Backlight com.wenu.OVIK.Backlight.getBrightness()"}, "0 75", "getBrightness"},
    {"saveBrightness", ";40", "Backlight.saveBrightness", replyWith("i", 0), {"/Backlight com.wenu.OVIK.Backlight.saveBrightness(i) 40"}, "0 0", "saveBrightness"},
    {"getBuzzerMode", "", "Buzzer.GetBuzzerMode", replyWith("i", 2), {buzzer + "GetBuzzerMode()"}, "0 2", "getBuzzerMode"},
    {"setBuzzerMode", ";1", "Buzzer.SetBuzzerMode", replyWith("i", -3), {buzzer + "SetBuzzerMode(i) 1"}, "0 4294967293", "setBuzzerMode"},
    {"setBuzzerUserControl", ";2", "Buzzer.SetBuzzerUserControl", replyWith("i", 0), {buzzer + "SetBuzzerUserControl(i) 2"}, "0 0", "setBuzzerUserControl"},
    {"setBuzzerOnTime", ";300", "Buzzer.SetBuzzerOnTime", replyWith("i", 0), {buzzer + "SetBuzzerOnTime(i) 300"}, "0 0", "setBuzzerOnTime"},
    {"setBuzzerOffTime", ";-5", "Buzzer.SetBuzzerOffTime", replyWith("i", 7), {buzzer + "SetBuzzerOffTime(i) -5"}, "0 7", "setBuzzerOffTime"},
    {"getSystemInfo", "", "SystemInfo.info", replySystemInfo("ABC", "PANEL", "\x01\x02"), {"/SystemInfo com.wenu.OVIK.SystemInfo.info()"}, "0 PANEL,17,513", "getSystemInfo"},
    {"getStorageInfoJson", ";data", "StorageMgr.getStorageInfoJSON", replyText("{\"free\": 1}"), {"/StorageMgr com.wenu.OVIK.StorageMgr.getStorageInfoJSON(s) \"data\""}, "0 {\"free\": 1}", "getStorageInfo"},
    {"getNetworkConfigJson", "", "NetworkManager.getConfigJSON", replyText("{}"), {network + "getConfigJSON()"}, "0 {}", "getNetworkConfigJson"},
    {"setInterfaceConfigJson", ";eth0;{\"a\":1}", "NetworkManager.setInterfaceConfigJSON", replyWith("i", -1), {network + "setInterfaceConfigJSON(ss) \"eth0\" \"{\"a\":1}\""}, "0 -1", "setInterfaceConfigJson"},
    {"applyNewConfiguration", "", "NetworkManager.applyNewConfiguration", replyWith("i", 0), {network + "applyNewConfiguration()"}, "0 0", "applyNewConfiguration"},
    {"mainOsVersion", "", "PartitionInfo.version", replyBytes(std::string("1.2.3\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20)), {"/MainOSInfo com.wenu.OVIK.PartitionInfo.version()"}, "0 1.2.3", "mainOsVersion"},
    {"seepromRead", ";16;3", "I2CSEEPROM.read", replyResultAndBytes(0, std::string("\x01\xAB\x00", 3)), {eeprom + "read(yu) 16 3"}, "0 01,AB,00", "seepromRead"},
    {"seepromReadSlave", ";80;0;2", "I2CSEEPROM.readSlvAddr", replyResultAndBytes(0, "AB"), {eeprom + "readSlvAddr(yyu) 80 0 2"}, "0 41,42", "seepromRead"},
    {"getVolatileParameter", ";key", "OVIK.getVolatileParameter", replyText("v"), {ovik + "getVolatileParameter(s) \"key\""}, "0 v", "getVolatileParameter"},
    {"getSystemParameter", ";key", "OVIK.getSystemParameter", replyText(""), {ovik + "getSystemParameter(s) \"key\""}, "0 ", "getSystemParameter"},
    {"getAllVolatileParametersJson", "", "OVIK.getAllVolatileParametersJSON", replyText("{\"a\":\"\u00fc\"}"), {ovik + "getAllVolatileParametersJSON()"}, "0 {\"a\":\"\u00fc\"}", "getAllVolatileParametersJson"},
    {"getAllSystemParametersJson", "", "OVIK.getAllSystemParametersJSON", replyText("[1]"), {ovik + "getAllSystemParametersJSON()"}, "0 [1]", "getAllSystemParametersJson"},
    {"setVolatileParameter", ";k;\u00fc v", "OVIK.setVolatileParameter", replyWith("i", 0), {ovik + "setVolatileParameter(ss) \"k\" \"\u00fc v\""}, "0 0", "setVolatileParameter"},
    {"setSystemParameter", ";k;", "OVIK.setSystemParameter", replyWith("i", 0), {ovik + "setSystemParameter(ss) \"k\" \"\""}, "0 0", "setSystemParameter"},
    {"setSystemParametersJson", ";k;{}", "OVIK.setSystemParametersJSON", replyWith("i", 5), {ovik + "setSystemParametersJSON(ss) \"k\" \"{}\""}, "0 5", "setSystemParametersJson"},
    {"getHWPluginIoMode", ";1;3", "Sensors.getIoMode", replyWith("i", 2), {sensors + "getIoMode(u) 3"}, "0 2", "getHWPluginIoMode"},
    {"getHWPluginIO", ";1;3", "Sensors.readIo", replyBytes("1"), {sensors + "readIo(uu) 3 1"}, "0 1", "getHWPluginIO"},
    {"setHWPluginIO", ";1;3;1", "Sensors.writeIo", replyWith("i", 0), {sensors + "getIoMode(u) 3", sensors + "writeIo(uay) 3 [31]"}, "0 0", "setHWPluginIO"},
    {"getHWPluginLedMode", ";1;4", "Leds.GetLedMode", replyWith("i", 2), {leds + "GetLedMode(u) 4"}, "0 2", "getHWPluginLedMode"},
    {"setHWPluginLedUserControl", ";1;4;-1", "Leds.SetLedUserControl", replyWith("i", -1), {leds + "GetLedMode(u) 4", leds + "SetLedUserControl(ui) 4 -1"}, "0 -1", "setHWPluginLedUserControl"},
    {"setHWPluginLedValue", ";1;4;255", "Leds.SetLedValue", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "SetLedValue(uu) 4 255"}, "0 0", "setHWPluginLedValue"},
    {"setHWPluginLedOnTime", ";1;4;500", "Leds.SetLedOnTime", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "SetLedOnTime(ui) 4 500"}, "0 0", "setHWPluginLedOnTime"},
    {"setHWPluginLedOffTime", ";1;4;600", "Leds.SetLedOffTime", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "SetLedOffTime(ui) 4 600"}, "0 0", "setHWPluginLedOffTime"},
    {"setHWPluginLedFlash", ";1;4;500", "Leds.flash", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "flash(uui) 4 1 500"}, "0 0", "setHWPluginLedFlash"},
    {"setHWPluginLedBlink", ";1;4;500;250", "Leds.blink", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "blink(uuii) 4 1 500 250"}, "0 0", "setHWPluginLedBlink"},
    {"serviceStart", ";ssh", "ServiceManager.start", replyWith("i", 0), {services + "start(s) \"ssh\""}, "0 0", "serviceStart"},
    {"serviceStop", ";ssh", "ServiceManager.stop", replyWith("i", -2), {services + "stop(s) \"ssh\""}, "0 -2", "serviceStop"},
    {"serviceRestart", ";ssh", "ServiceManager.restart", replyWith("i", 0), {services + "restart(s) \"ssh\""}, "0 0", "serviceRestart"},
    {"serviceReload", ";ssh", "ServiceManager.reload", replyWith("i", 0), {services + "reload(s) \"ssh\""}, "0 0", "serviceReload"},
    {"serviceEnable", ";ssh", "ServiceManager.enable", replyWith("i", 0), {services + "enable(s) \"ssh\""}, "0 0", "serviceEnable"},
    {"serviceDisable", ";ssh", "ServiceManager.disable", replyWith("i", 0), {services + "disable(s) \"ssh\""}, "0 0", "serviceDisable"},
    {"serviceEnabled", ";ssh", "ServiceManager.enabled", replyWith("b", 1), {services + "enabled(s) \"ssh\""}, "0 1", "serviceEnabled"},
    {"serviceApply", ";ssh", "ServiceManager.apply", replyWith("i", 0), {services + "apply(s) \"ssh\""}, "0 0", "serviceApply"},
    {"serviceControlled", ";ssh", "ServiceManager.controlled", replyWith("b", 0), {services + "controlled(s) \"ssh\""}, "0 0", "serviceControlled"},
    {"serviceState", ";ssh", "ServiceManager.state", replyWith("i", 3), {services + "state(s) \"ssh\""}, "0 3", "serviceState"},
    {"serviceCommand", ";ntp;sync;{}", "ServiceManager.command", replyWith("i", 4), {services + "command(sss) \"ntp\" \"sync\" \"{}\""}, "0 4", "serviceCommand"},
};
// clang-format on

bool isEepromRow(const Row& row) { return row.member.rfind("I2CSEEPROM.", 0) == 0; }
bool isPluginRow(const Row& row)
{
    return row.member.rfind("Leds.", 0) == 0 || row.member.rfind("Sensors.", 0) == 0;
}

std::string errorLine(const Row& row, int status)
{
    return "OVIK_SERVER: " + row.logName + " error " + std::to_string(status) + "\n";
}

/// One server with a whole panel behind it, for all the tests of this file.
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
        // Plug-in points may be set, unless the test says otherwise.
        platform.answer("Leds.GetLedMode", replyWith("i", 2));
        platform.answer("Sensors.getIoMode", replyWith("i", 2));
        platform.takeCalls();
        newLog();
    }

    std::string request(const std::string& text) { return client.request(text); }
    std::string request(const Row& row) { return request(row.word + row.arguments); }
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

TEST_P(EveryCommand, IgnoresFieldsBeyondItsOwn)
{
    const Row& row = GetParam();
    platform.answer(row.member, row.reply);

    EXPECT_EQ(request(row.word + row.arguments + ";more;;"), row.response);
    EXPECT_EQ(platform.takeCalls(), row.calls);
}

TEST_P(EveryCommand, AnswersAndLogsTheFailureOfThePlatform)
{
    const Row& row = GetParam();
    platform.answer(row.member, replyError("com.wenu.OVIK.Failed"));

    if (isPluginRow(row)) {
        // A failed call to a module cannot be told from its answer 0.
        const bool isByte = row.word == std::string("getHWPluginIO");
        EXPECT_EQ(request(row), isByte ? "0 -48" : "0 0");
        EXPECT_EQ(newLog(), "");
        return;
    }
    EXPECT_EQ(request(row), "-4");
    EXPECT_EQ(newLog(), (isEepromRow(row) ? "" : "getReplyValue: error\n") + errorLine(row, -4));
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
    std::string text = row.word + row.arguments;
    // Every shorter form, down to the word alone.
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
    // Nothing of a long text is left behind for a shorter one.
    platform.answer("OVIK.getAllSystemParametersJSON", replyText("{}"));
    EXPECT_EQ(request("getAllSystemParametersJson"), "0 {}");
}

TEST_F(Commands, AModuleNameOfFullLengthEndsThere)
{
    // Behind a long text, whose bytes are still in the scratch buffer.
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

long peakMemoryKb(pid_t pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/status");
    std::string word;
    long kb = 0;
    while (file >> word && word != "VmHWM:") {
    }
    file >> kb;
    return kb;
}

TEST_F(Commands, NoLengthMakesTheServerTouchMoreMemoryThanItsAnswerNeeds)
{
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, "x"));
    request("seepromRead;0;1");
    const long before = peakMemoryKb(panel->server.process().pid());
    ASSERT_GT(before, 0);
    for (const char* length : {"65535", "65536", "1000000000", "2147483647", "-1"})
        request(std::string("seepromRead;0;") + length);
    EXPECT_LT(peakMemoryKb(panel->server.process().pid()), before + 1024);
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
        if (row.calls.size() < 2)
            continue;
        for (const int mode : {-1, 0, 1, 3}) {
            platform.answer("Leds.GetLedMode", replyWith("i", mode));
            platform.answer("Sensors.getIoMode", replyWith("i", mode));
            EXPECT_EQ(request(row), "-12");
            EXPECT_EQ(newLog(), errorLine(row, -12));
            EXPECT_EQ(platform.takeCalls(), std::vector{row.calls.front()});
        }
    }
}

TEST_F(Commands, APointWhoseModeCannotBeAskedIsNotWritten)
{
    // A failed query answers 0, and that is not 2.
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
