// Messages that a correct client never sends: how the server reads them, what it passes to the
// platform, and what it answers.

#include "tests/support/client_fault_fixture.h"

namespace
{
struct Exchange {
    std::string message; ///< its exact bytes
    std::string answer;
    std::string call; ///< the only platform call; empty for none
};

struct Row {
    const char* name;
    std::vector<Exchange> exchanges;
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.name; }

std::string terminated(const std::string& text) { return text + '\0'; }

Exchange refused(const std::string& message) { return {message, "-8", ""}; }

Exchange brightness(const std::string& message)
{
    return {message, goodAnswer, "/Backlight com.wenu.OVIK.Backlight.getBrightness()"};
}

const std::string setValue = "setVolatileParameter;k;";

/// A message that sets a parameter, and the value that the platform receives.
Exchange sets(const std::string& message, const std::string& value)
{
    return {message, "0 7", "/ com.wenu.OVIK.setVolatileParameter(ss) \"k\" \"" + value + "\""};
}

Exchange value(const std::string& bytes, const std::string& arrives)
{
    return sets(terminated(setValue + bytes), arrives);
}

/// A field that is read as an int. The platform returns it, and the server prints it unsigned.
Exchange number(const std::string& field, int arrives)
{
    return {terminated("setBuzzerMode;" + field),
            "0 " + std::to_string(static_cast<unsigned int>(arrives)),
            "/Buzzer com.wenu.OVIK.Buzzer.SetBuzzerMode(i) " + std::to_string(arrives)};
}

/// A value of such a length that the message has @p size bytes with its NUL; the server keeps 4999
/// bytes of text.
Exchange sized(size_t size)
{
    constexpr size_t maxText = 4999;
    const std::string text(size - 1 - setValue.size(), 'x');
    return value(text, text.substr(0, maxText - setValue.size()));
}

const std::string bad = "\xEF\xBF\xBD"; // U+FFFD
const std::string byteOrderMark = "\xEF\xBB\xBF";

// clang-format off
const std::vector<Row> rows = {
    // --- Length ---
    {"Of4999Bytes",   {sized(4999)}},
    {"Of5000Bytes",   {sized(5000)}},
    {"Of5001Bytes",   {sized(5001)}},
    {"Of200000Bytes", {sized(200000)}},
    {"CutInsideACharacter", {value(std::string(4975, 'x') + "\u00fc", std::string(4975, 'x') + bad)}},

    // --- NUL ---
    {"WithoutNulInAnEmptyBuffer",   {sets(setValue + "abc", "abc")}},
    {"WithoutNulAfterAShorterOne",  {refused(terminated("x")), sets(setValue + "abc", "abc")}},
    {"WithoutNulAfterALongerOne",   {value("0123456789", "0123456789"), sets(setValue + "ab", "ab23456789")}},
    {"Of5000BytesWithoutNul",       {sets(setValue + std::string(4977, 'x'), std::string(4976, 'x'))}},
    {"WithNulsInside",              {sets(setValue + std::string("ab\0cd;ef\0", 9), "ab")}},
    {"OfOneNul",                    {refused(terminated(""))}},
    {"Of5000Nuls",                  {refused(std::string(5000, '\0'))}},

    // --- Separators ---
    {"OfOneSeparator",              {refused(terminated(";"))}},
    {"Of5000Separators",            {refused(std::string(5000, ';'))}},
    {"ACommandAndThenSeparators",   {brightness(goodRequest + std::string(4900, ';'))}},

    // --- Control bytes and UTF-8 ---
    {"ControlBytesInAValue",        {value("\x01\x02\a\b\t\n\v\f\r\x1B[2J\x1F\x7F", "\x01\x02\a\b\t\n\v\f\r\x1B[2J\x1F\x7F")}},
    {"ControlBytesAsACommand",      {refused(terminated("\x01\x1B\n"))}},
    {"UpToU10FFFF",                 {value("\u00fc\u20ac\U0001F600\U0010FFFD", "\u00fc\u20ac\U0001F600\U0010FFFD")}},
    {"BytesThatUtf8HasNot",         {value("a\xFE\xFFz", "a" + bad + bad + "z")}},
    {"LatinOne",                    {value("M\xFCnchen", "M" + bad + "nchen")}},
    {"ALoneContinuation",           {value("a\x80z", "a" + bad + "z")}},
    {"ACharacterCutShort",          {value("a\xE2\x82", "a" + bad + bad)}},
    {"ACharacterCutByASeparator",   {sets(terminated(setValue + "a\xE2\x82;z"), "a" + bad + bad)}},
    {"OverlongSeparator",           {value("a\xC0\xBBz", "a" + bad + bad + "z")}},
    {"OverlongNul",                 {value("a\xC0\x80z", "a" + bad + bad + "z")}},
    {"OverlongOfThreeBytes",        {value("a\xE0\x80\xAFz", "a" + bad + bad + bad + "z")}},
    {"OverlongOfFourBytes",         {value("a\xF0\x80\x80\xAFz", "a" + bad + bad + bad + bad + "z")}},
    {"ASurrogate",                  {value("a\xED\xA0\x80z", "a" + bad + bad + bad + "z")}},
    {"APairOfSurrogates",           {value("\xED\xA0\xBD\xED\xB8\x80", bad + bad + bad + bad + bad + bad)}},
    {"BeyondU10FFFF",               {value("a\xF4\x90\x80\x80z", "a" + bad + bad + bad + bad + "z")}},
    {"AByteOrderMarkInsideAValue",  {value("a" + byteOrderMark + "z", "a" + byteOrderMark + "z")}},
    {"AByteOrderMarkBeforeAValue",  {value(byteOrderMark + "z", "z")}},
    {"AByteOrderMarkBeforeACommand", {brightness(terminated(byteOrderMark + goodRequest))}},

    // --- Numbers: as an int, or 0 ---
    {"IntMax",              {number("2147483647", 2147483647)}},
    {"IntMaxAndOne",        {number("2147483648", 0)}},
    {"IntMin",              {number("-2147483648", -2147483647 - 1)}},
    {"IntMinLessOne",       {number("-2147483649", 0)}},
    {"UnsignedMax",         {number("4294967295", 0)}},
    {"BeyondUnsignedMax",   {number("4294967297", 0)}},
    {"BeyondLongLong",      {number("99999999999999999999999999", 0)}},
    {"OfFourHundredDigits", {number(std::string(400, '9'), 0)}},
    {"FourHundredZerosAnd5", {number(std::string(400, '0') + "5", 5)}},
    {"AnExponent",          {number("1e3", 0)}},
    {"AFraction",           {number("1.0", 0)}},
    {"AThousandsSeparator", {number("1,000", 0)}},
    {"Hexadecimal",         {number("0x10", 0)}},
    {"OctalIsDecimal",      {number("010", 10)}},
    {"TrailingLetter",      {number("1x", 0)}},
    {"Letters",             {number("abc", 0)}},
    {"MinusZero",           {number("-0", 0)}},
    {"PlusFive",            {number("+5", 5)}},
    {"TwoSigns",            {number("--1", 0)}},
    {"ASignAlone",          {number("-", 0)}},
    {"SpaceBefore",         {number(" 5", 5)}},
    {"SpaceBehind",         {number("5 \t\n", 5)}},
    {"SpaceInside",         {number("1 0", 0)}},
    {"NoDigits",            {number("", 0)}},
    {"FullWidthDigit",      {number("\uff15", 0)}},
    {"BeyondUnsignedMaxAsASlot", {{terminated("getHWPluginIoMode;4294967296;1"), "0 2", "/HWPlugin/0/Sensors com.wenu.OVIK.Sensors.getIoMode(u) 1"}}},
};
// clang-format on

class Message : public ClientFault, public testing::WithParamInterface<Row>
{
};

INSTANTIATE_TEST_SUITE_P(Table, Message, testing::ValuesIn(rows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(Message, IsReadAndAnsweredAsTheTableSays)
{
    platform.answer("Sensors.getIoMode", replyWith("i", 2));
    // Enough rounds to make leftovers add up, and few enough to buffer all answers unread.
    constexpr int rounds = 100;
    Client client(serverSocket);
    for (int round = 0; round < rounds; ++round) {
        for (const Exchange& exchange : GetParam().exchanges)
            ASSERT_TRUE(client.sendBytes(exchange.message));
    }
    std::vector<std::string> calls;
    for (int round = 0; round < rounds; ++round) {
        for (const Exchange& exchange : GetParam().exchanges) {
            ASSERT_EQ(client.receive(), exchange.answer) << "round " << round;
            if (!exchange.call.empty())
                calls.push_back(exchange.call);
        }
    }
    const std::vector<std::string> made = platform.takeCalls();
    ASSERT_EQ(made.size(), calls.size());
    for (size_t i = 0; i < calls.size(); ++i)
        ASSERT_EQ(made[i], calls[i]) << "call " << i;
}

// sd-bus rejects noncharacters, so this test needs the simulated panel.
TEST_F(ClientFault, ANoncharacterIsPassedOnAsItIs)
{
    platform.releaseName();
    Process panel(commandOf(OVIK_PANEL_SIM_PATH));
    {
        Client client(serverSocket);
        const std::string noncharacters = "\uFDD0\uFFFE\uFFFF\U0010FFFF";
        ASSERT_TRUE(waitUntil([&] { return client.request(setValue + noncharacters) == "0 0"; }));
        EXPECT_EQ(client.request("getVolatileParameter;k"), "0 " + noncharacters);
    }
    panel.stop();
    platform.ownName();
    EXPECT_TRUE(waitUntil([] { return Client(serverSocket).request(goodRequest) == goodAnswer; }));
}
} // namespace
