// Wrong replies of the platform: errors, other types, too few or too many values, bytes and texts
// of any length. Checks the answer of each command, and that nothing leaks.

#include "tests/support/fault_fixture.h"

#include <map>

namespace
{
/// The types of the reply to a command; an integer by default.
std::string replySignature(const CommandRow& row)
{
    static const std::map<std::string, std::string> signatures = {
        {"SysStat.getAvailableMemory", "t"},
        {"ServiceManager.enabled", "b"},
        {"ServiceManager.controlled", "b"},
        {"StorageMgr.getStorageInfoJSON", "s"},
        {"NetworkManager.getConfigJSON", "s"},
        {"OVIK.getVolatileParameter", "s"},
        {"OVIK.getSystemParameter", "s"},
        {"OVIK.getAllVolatileParametersJSON", "s"},
        {"OVIK.getAllSystemParametersJSON", "s"},
        {"PartitionInfo.version", "ay"},
        {"Sensors.readIo", "ay"},
        {"I2CSEEPROM.read", "iay"},
        {"I2CSEEPROM.readSlvAddr", "iay"},
        {"SystemInfo.info", "(yyyayayyyayy)"},
    };
    const auto found = signatures.find(row.member);
    return found == signatures.end() ? "i" : found->second;
}

/// Appends a value that differs from the default one.
void appendValue(sd_bus_message* reply, const std::string& signature)
{
    static const std::map<std::string, std::function<void(sd_bus_message*)>> values = {
        {"", [](sd_bus_message*) {}},
        {"i", [](sd_bus_message* to) { sd_bus_message_append(to, "i", 5); }},
        {"u", [](sd_bus_message* to) { sd_bus_message_append(to, "u", 5); }},
        {"x", [](sd_bus_message* to) { sd_bus_message_append(to, "x", int64_t(5)); }},
        {"t", [](sd_bus_message* to) { sd_bus_message_append(to, "t", uint64_t(5)); }},
        {"y", [](sd_bus_message* to) { sd_bus_message_append(to, "y", 5); }},
        {"d", [](sd_bus_message* to) { sd_bus_message_append(to, "d", 5.0); }},
        {"b", [](sd_bus_message* to) { sd_bus_message_append(to, "b", 1); }},
        {"s", [](sd_bus_message* to) { sd_bus_message_append(to, "s", "five"); }},
        {"o", [](sd_bus_message* to) { sd_bus_message_append(to, "o", "/five"); }},
        {"h", [](sd_bus_message* to) { appendDescriptor(to); }},
        {"v", [](sd_bus_message* to) { sd_bus_message_append(to, "v", "i", 5); }},
        {"ay", [](sd_bus_message* to) { sd_bus_message_append_array(to, 'y', "5", 1); }},
        {"as", [](sd_bus_message* to) { sd_bus_message_append(to, "as", 1, "five"); }},
        {"(i)", [](sd_bus_message* to) { sd_bus_message_append(to, "(i)", 5); }},
        {"a{sv}",
         [](sd_bus_message* to) { sd_bus_message_append(to, "a{sv}", 1, "five", "i", 5); }},
        {"iay",
         [](sd_bus_message* to) {
             sd_bus_message_append(to, "i", 0);
             sd_bus_message_append_array(to, 'y', "5", 1);
         }},
        {"(yyyayayyyayy)",
         [](sd_bus_message* to) {
             sd_bus_message_append(to, "(yyyayayyyayy)", 1, 2, 26, 1, 65, 2, 65, 66, 17, 3, 2, 1, 2,
                                   9);
         }},
    };
    values.at(signature)(reply);
}

/// The answer for the value of appendValue().
std::string answerOfValue(const CommandRow& row)
{
    const std::string signature = replySignature(row);
    if (row.isEeprom())
        return row.word == std::string("seepromRead") ? "0 35,00,00" : "0 35,00";
    if (signature[0] == '(')
        return "0 AB,17,513";
    if (signature == "s")
        return "0 five";
    return signature == "b" ? "0 1" : "0 5";
}

/// The answer when there is neither a value nor a failure.
std::string answerOfNothing(const CommandRow& row)
{
    const std::string signature = replySignature(row);
    if (row.isEeprom())
        return row.word == std::string("seepromRead") ? "0 00,00,00" : "0 00,00";
    if (row.member == "Sensors.readIo")
        return "0 -48"; // a missing byte reads as 0, which is no digit: 0 - '0'
    if (signature[0] == '(')
        return "0 ,0,0";
    return signature == "s" || signature == "ay" ? "0 " : "0 0";
}

/// A plug-in command cannot distinguish a failed call from the result 0.
std::string answerOfError(const CommandRow& row)
{
    return row.isPlugin() ? answerOfNothing(row) : "-4";
}

std::string logOfError(const CommandRow& row)
{
    if (row.isPlugin())
        return "";
    return (row.isEeprom() ? "" : "getReplyValue: error\n") + row.errorLine(-4);
}

bool isModeQuery(const CommandRow& row)
{
    return row.member == "Leds.GetLedMode" || row.member == "Sensors.getIoMode";
}

class Fault : public FaultTest
{
protected:
    using Answer = std::function<std::string(const CommandRow&)>;

    /// Every command gets the fault several times; the mode queries last, as they guard writes.
    void everyCommandMeets(const std::function<Reply(const CommandRow&)>& reply,
                           const Answer& expected, const Answer& expectedLog)
    {
        std::vector<std::string> requests;
        std::vector<std::string> answers;
        std::string log;
        for (const CommandRow& row : commandRows()) {
            if (isModeQuery(row))
                continue;
            panel->platform->answer(row.member, reply(row));
            requests.push_back(row.request());
            answers.push_back(expected(row));
            log += expectedLog(row);
        }
        repeat(10, [&] {
            EXPECT_EQ(answersTo(*client, requests), answers);
            EXPECT_EQ(newLog(), log);
        });

        for (const CommandRow& row : commandRows()) {
            if (!isModeQuery(row))
                continue;
            panel->platform->answer(row.member, reply(row));
            EXPECT_EQ(client->request(row.request()), expected(row)) << row.word;
            EXPECT_EQ(newLog(), expectedLog(row));
        }
        panel->platform->takeCalls();
        for (const CommandRow& row : commandRows()) {
            if (!row.isGuarded())
                continue;
            EXPECT_EQ(client->request(row.request()), "-12") << row.word;
            EXPECT_EQ(newLog(), row.errorLine(-12));
            EXPECT_EQ(panel->platform->takeCalls(), std::vector{row.calls.front()});
        }
    }
};

std::string noLog(const CommandRow&) { return ""; }

std::string testName(std::string text)
{
    for (char& c : text)
        c = isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return text;
}

// --- Errors --------------------------------------------------------------------------------------

class ErrorReply : public Fault, public testing::WithParamInterface<const char*>
{
};

INSTANTIATE_TEST_SUITE_P(Names, ErrorReply,
                         testing::Values("com.wenu.OVIK.Failed",
                                         "org.freedesktop.DBus.Error.Failed",
                                         "org.freedesktop.DBus.Error.NoReply",
                                         "org.freedesktop.DBus.Error.UnknownMethod",
                                         "org.freedesktop.DBus.Error.UnknownObject",
                                         "org.freedesktop.DBus.Error.InvalidArgs",
                                         // Qt reports this for a reply of an unexpected type
                                         "org.freedesktop.DBus.Error.InvalidSignature",
                                         "org.freedesktop.DBus.Error.ServiceUnknown",
                                         "org.freedesktop.DBus.Error.Disconnected"),
                         [](const auto& test) { return testName(test.param); });

TEST_P(ErrorReply, IsAFailureOfEveryCommandButThoseOfModules)
{
    const std::string name = GetParam();
    everyCommandMeets([&](const CommandRow&) { return replyError(name); }, answerOfError,
                      logOfError);
}

TEST_F(Fault, AnErrorReplyWithoutATextIsAFailureToo)
{
    const Reply reply = [](sd_bus_message* call) {
        sd_bus_error error = SD_BUS_ERROR_MAKE_CONST("com.wenu.OVIK.Failed", nullptr);
        return sd_bus_reply_method_error(call, &error);
    };
    everyCommandMeets([&](const CommandRow&) { return reply; }, answerOfError, logOfError);
}

// --- Values of other types -----------------------------------------------------------------------

class ReplyOfType : public Fault, public testing::WithParamInterface<const char*>
{
};

INSTANTIATE_TEST_SUITE_P(Signatures, ReplyOfType,
                         testing::Values("", "i", "u", "x", "t", "y", "d", "b", "s", "o", "h", "v",
                                         "ay", "as", "(i)", "a{sv}"),
                         [](const auto& test) { return "type_" + testName(test.param); });

TEST_P(ReplyOfType, ThatIsNotTheExpectedOneIsAnsweredAsTheDefaultValue)
{
    const std::string type = GetParam();
    const Reply reply = replyFilledBy([=](sd_bus_message* to) { appendValue(to, type); });
    everyCommandMeets([&](const CommandRow&) { return reply; },
                      [&](const CommandRow& row) {
                          return type == replySignature(row) ? answerOfValue(row)
                                                             : answerOfNothing(row);
                      },
                      noLog);
}

TEST_F(Fault, ValuesBeyondTheExpectedOnesAreIgnored)
{
    everyCommandMeets(
        [](const CommandRow& row) {
            return replyFilledBy([=](sd_bus_message* to) {
                appendValue(to, replySignature(row));
                appendValue(to, "s");
                appendValue(to, "a{sv}");
            });
        },
        answerOfValue, noLog);
}

// --- Bytes ---------------------------------------------------------------------------------------

struct Bytes {
    const char* name;
    const char* request;
    const char* member;
    Reply reply;
    std::string response;
    long memorySlack = usualSlack;
};

void PrintTo(const Bytes& row, std::ostream* out) { *out << row.name; }

std::string nul(const char* text, size_t size) { return std::string(text, size); }

const std::string mebibyte(1 << 20, 'A');

/// Memory that the allocator may keep for messages of a mebibyte; much less than the tests send.
constexpr long mebibyteSlack = 12 * 1024;

class BytesOf : public Fault, public testing::WithParamInterface<Bytes>
{
};

// clang-format off
INSTANTIATE_TEST_SUITE_P(Platform, BytesOf, testing::Values(
    Bytes{"VersionNone", "mainOsVersion", "PartitionInfo.version", replyBytes(""), "0 "},
    Bytes{"VersionOfZeroBytes", "mainOsVersion", "PartitionInfo.version", replyBytes(std::string(20, '\0')), "0 "},
    Bytes{"VersionWithZeroByteInside", "mainOsVersion", "PartitionInfo.version", replyBytes(nul("1.2\0more", 8)), "0 1.2"},
    Bytes{"VersionWithZeroByteFirst", "mainOsVersion", "PartitionInfo.version", replyBytes(nul("\0" "1.2", 4)), "0 "},
    Bytes{"VersionWithoutZeroByte", "mainOsVersion", "PartitionInfo.version", replyBytes("12345678901234567890"), "0 12345678901234567890"},
    Bytes{"VersionThatIsNotUtf8", "mainOsVersion", "PartitionInfo.version", replyBytes("\xff\xfe\x80"), "0 \xff\xfe\x80"},
    Bytes{"VersionWithSeparators", "mainOsVersion", "PartitionInfo.version", replyBytes("a;b %s%n\n"), "0 a;b %s%n\n"},
    Bytes{"VersionOfAMebibyte", "mainOsVersion", "PartitionInfo.version", replyBytes(mebibyte), "0 " + std::string(9997, 'A'), mebibyteSlack},
    Bytes{"VersionOfAMebibyteOfZeroBytes", "mainOsVersion", "PartitionInfo.version", replyBytes(std::string(1 << 20, '\0')), "0 ", mebibyteSlack},
    Bytes{"EepromNone", "seepromRead;0;3", "I2CSEEPROM.read", replyResultAndBytes(0, ""), "0 00,00,00"},
    Bytes{"EepromShort", "seepromRead;0;3", "I2CSEEPROM.read", replyResultAndBytes(0, nul("A\0", 2)), "0 41,00,00"},
    Bytes{"EepromLong", "seepromRead;0;3", "I2CSEEPROM.read", replyResultAndBytes(0, "ABCD"), "0 41,42,43"},
    Bytes{"EepromOfAMebibyte", "seepromRead;0;1", "I2CSEEPROM.read", replyResultAndBytes(0, mebibyte), "0 41", mebibyteSlack},
    Bytes{"EepromFailedWithBytes", "seepromRead;0;2", "I2CSEEPROM.read", replyResultAndBytes(-5, "AB"), "0 41,42"},
    Bytes{"EepromForNoByte", "seepromRead;0;0", "I2CSEEPROM.read", replyResultAndBytes(0, "ABCD"), "0"},
    Bytes{"SlaveShort", "seepromReadSlave;80;0;3", "I2CSEEPROM.readSlvAddr", replyResultAndBytes(0, "A"), "0 41,00,00"},
    Bytes{"SlaveLong", "seepromReadSlave;80;0;3", "I2CSEEPROM.readSlvAddr", replyResultAndBytes(0, mebibyte), "0 41,41,41", mebibyteSlack},
    Bytes{"SystemInfoWithoutBytes", "getSystemInfo", "SystemInfo.info", replySystemInfo("", "", ""), "0 ,17,0"},
    Bytes{"SystemInfoShort", "getSystemInfo", "SystemInfo.info", replySystemInfo("A", "P", "\x01"), "0 P,17,1"},
    Bytes{"SystemInfoLong", "getSystemInfo", "SystemInfo.info", replySystemInfo("ABCDEFG", "PANELX", "\x01\x02\x03"), "0 PANEL,17,513"},
    Bytes{"SystemInfoOfMebibytes", "getSystemInfo", "SystemInfo.info", replySystemInfo(mebibyte, mebibyte, mebibyte), "0 AAAAA,17,16705", mebibyteSlack},
    Bytes{"SystemInfoNameWithZeroByteInside", "getSystemInfo", "SystemInfo.info", replySystemInfo("ABC", nul("P\0NEL", 5), "\xff\xff"), "0 P,17,65535"},
    Bytes{"SystemInfoNameWithZeroByteFirst", "getSystemInfo", "SystemInfo.info", replySystemInfo("ABC", nul("\0ANEL", 5), nul("\0\x80", 2)), "0 ,17,32768"},
    Bytes{"SystemInfoNameThatIsNotUtf8", "getSystemInfo", "SystemInfo.info", replySystemInfo("ABC", "\xff,;\n\x01", "\x01\x02"), "0 \xff,;\n\x01,17,513"},
    Bytes{"InputNone", "getHWPluginIO;1;3", "Sensors.readIo", replyBytes(""), "0 -48"},
    Bytes{"InputOfAZeroByte", "getHWPluginIO;1;3", "Sensors.readIo", replyBytes(nul("\0", 1)), "0 -48"},
    Bytes{"InputLong", "getHWPluginIO;1;3", "Sensors.readIo", replyBytes("1234"), "0 1"},
    Bytes{"InputOfAMebibyte", "getHWPluginIO;1;3", "Sensors.readIo", replyBytes(mebibyte), "0 17", mebibyteSlack}),
    [](const auto& test) { return std::string(test.param.name); });
// clang-format on

TEST_P(BytesOf, AnyNumberAreAnsweredAsFarAsTheyCount)
{
    const Bytes& row = GetParam();
    panel->platform->answer(row.member, row.reply);
    memorySlack = row.memorySlack;
    repeat(40, [&] { EXPECT_EQ(client->request(row.request), row.response); });
    EXPECT_EQ(newLog(), "");
}

// --- Texts ---------------------------------------------------------------------------------------

struct TextCommand {
    const char* name;
    const char* request;
    const char* member;
    size_t most; ///< longest text in the answer, in bytes
    bool isLatin1;
};

void PrintTo(const TextCommand& command, std::ostream* out) { *out << command.name; }

class TextOf : public Fault, public testing::WithParamInterface<TextCommand>
{
protected:
    void expectCut(const std::string& text, const std::string& asAnswered)
    {
        const TextCommand& command = GetParam();
        const bool isBytes = std::string(command.request) == "mainOsVersion";
        panel->platform->answer(command.member, isBytes ? replyBytes(text) : replyText(text));
        EXPECT_EQ(client->request(command.request), "0 " + asAnswered.substr(0, command.most))
            << text.size();
    }
};

INSTANTIATE_TEST_SUITE_P(
    Commands, TextOf,
    testing::Values(TextCommand{"Storage", "getStorageInfoJson;data",
                                "StorageMgr.getStorageInfoJSON", 9997, true},
                    TextCommand{"Network", "getNetworkConfigJson", "NetworkManager.getConfigJSON",
                                9997, true},
                    TextCommand{"Version", "mainOsVersion", "PartitionInfo.version", 9997, false},
                    TextCommand{"VolatileParameter", "getVolatileParameter;k",
                                "OVIK.getVolatileParameter", 99, false},
                    TextCommand{"SystemParameter", "getSystemParameter;k",
                                "OVIK.getSystemParameter", 99, false},
                    TextCommand{"VolatileParameters", "getAllVolatileParametersJson",
                                "OVIK.getAllVolatileParametersJSON", 9997, false},
                    TextCommand{"SystemParameters", "getAllSystemParametersJson",
                                "OVIK.getAllSystemParametersJSON", 9997, false}),
    [](const auto& test) { return std::string(test.param.name); });

/// A text without repeated parts.
std::string textOfSize(size_t size)
{
    std::string text;
    while (text.size() < size)
        text += std::to_string(text.size()) + ' ';
    text.resize(size);
    return text;
}

TEST_P(TextOf, AnyLengthIsCutAtTheEndOfTheAnswer)
{
    std::vector<size_t> sizes = {0, 1, 98, 99, 100};
    for (size_t size = 9990; size <= 10010; ++size)
        sizes.push_back(size);
    repeat(4, [&] {
        for (const size_t size : sizes)
            expectCut(textOfSize(size), textOfSize(size));
    });
}

TEST_P(TextOf, AMebibyteIsCutAtTheEndOfTheAnswer)
{
    const std::string text = textOfSize(1 << 20);
    memorySlack = mebibyteSlack;
    repeat(40, [&] { expectCut(text, text); });
}

TEST_P(TextOf, ManyByteCharactersAreCutInTheMiddle)
{
    struct Character {
        const char* utf8;
        const char* latin1;
    };
    repeat(4, [&] {
        for (const Character& character : {Character{"\u00fc", "\xfc"}, Character{"\u20ac", "?"},
                                           Character{"\U0001F600", "??"}}) {
            for (size_t before = 0; before < 4; ++before) {
                std::string utf8(before, 'x');
                std::string latin1(before, 'x');
                for (int i = 0; i < 12000; ++i) {
                    utf8 += character.utf8;
                    latin1 += character.latin1;
                }
                expectCut(utf8, GetParam().isLatin1 ? latin1 : utf8);
            }
        }
    });
}
} // namespace
