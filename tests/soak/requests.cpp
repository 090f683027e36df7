#include "tests/soak/requests.h"

#include "protocol/command_table.h"

#include <stdexcept>
#include <vector>

namespace
{
using Texts = std::vector<std::string>;

struct Values {
    ArgumentKind kind;
    const char* argument;
    int first; ///< of a number
    int last;
    Texts texts;
};

const Texts jsonObjects = {"{}",
                           "{\"mode\":\"dhcp\"}",
                           "{\"mode\":\"static\",\"address\":\"192.0.2.77\",\"metric\":3}",
                           "{\"a\":1,\"b\":\"zwei\",\"c\":[1,2,3],\"d\":{\"e\":null}}",
                           "{\"b\":true,\"f\":1.5,\"name\":\"\u00fcber \u20ac\"}",
                           "{\"a\":",
                           "[1,2]",
                           "no object"};
const Texts services = {"wifi", "ssh", "vnc", "ntp", "logger", "none"};

/// What each argument is usually given.
const std::vector<Values> usual = {
    {ArgumentKind::Number, "value", 0, 2, {}},
    {ArgumentKind::Number, "mode", 0, 3, {}},
    {ArgumentKind::Number, "control", 0, 2, {}},
    {ArgumentKind::Number, "time", 0, 1000, {}},
    {ArgumentKind::Number, "onTime", 0, 1000, {}},
    {ArgumentKind::Number, "offTime", 0, 1000, {}},
    {ArgumentKind::Number, "offset", 0, 300, {}},
    {ArgumentKind::Number, "length", 0, 64, {}},
    {ArgumentKind::Number, "slaveAddress", 0x4e, 0x59, {}},
    {ArgumentKind::Number, "slot", 0, 2, {}},
    {ArgumentKind::Number, "index", 0, 8, {}},
    {ArgumentKind::Text, "name", 0, 0, {"internal", "usb", "sdcard", "/mnt/usb", "none"}},
    {ArgumentKind::Text, "interface", 0, 0, {"eth0", "eth1", "wlan0", "lo"}},
    {ArgumentKind::Text, "config", 0, 0, jsonObjects},
    {ArgumentKind::Text,
     "key",
     0,
     0,
     {"language", "keyboard", "timezone", "screensaver", "k1", "k2", "k3", "k4", "net", "\u00fc"}},
    {ArgumentKind::Text,
     "value",
     0,
     0,
     {"", "on", "off", "de", "a longer text", "\u00fcber \u20ac"}},
    {ArgumentKind::Text, "json", 0, 0, jsonObjects},
    {ArgumentKind::Text, "service", 0, 0, services},
    {ArgumentKind::Text, "command", 0, 0, {"scan", "status", "connect"}},
    {ArgumentKind::Text, "options", 0, 0, {"{}", "{\"ssid\":\"\u00fc\"}", ""}},
};

const Texts oddNumbers = {"-1",
                          "2147483647",
                          "2147483648",
                          "-2147483648",
                          "4294967295",
                          "4294967296",
                          "256",
                          "65535",
                          "65536",
                          "3300",
                          "9999999999999999999999",
                          "abc",
                          "",
                          " 7",
                          "7 ",
                          "0x10",
                          "1e3",
                          "3.5",
                          "+5",
                          "007",
                          "\uff17",
                          "1\n"};

const Texts oddTexts = {"",
                        "\ufeffmarked",
                        "\ufeff\ufefftwice",
                        "\u65e5\u672c\u8a9e",
                        "\U0001f600",
                        "a\xff\xfe",
                        "\xed\xa0\x80",
                        "\xc3",
                        "%s%n%1%2",
                        "tab\tline\n",
                        "\"quoted\\\"",
                        std::string(99, 'x'),
                        std::string(100, 'y'),
                        std::string(98, 'z') + "\u20ac",
                        std::string(1500, 'l'),
                        std::string(1200, '\xe4')};

const Values* usualOf(const Argument& argument)
{
    for (const Values& values : usual) {
        if (values.kind == argument.kind && std::string(values.argument) == argument.name)
            return &values;
    }
    return nullptr;
}

constexpr size_t quitIndex = 0;
const size_t serviceCommandIndex = commandTable.size() - 1;
constexpr size_t receiveBuffer = 5000;
} // namespace

void Requests::checkArguments()
{
    for (const Command& command : commandTable) {
        for (int i = 0; i < command.argumentCount(); ++i) {
            const Argument& argument = command.arguments[static_cast<size_t>(i)];
            if (!usualOf(argument))
                throw std::runtime_error(std::string("the soak has no values for ") + command.word +
                                         "'s " + argument.name);
        }
    }
    if (commandTable[quitIndex].word != std::string("quit") ||
        commandTable[serviceCommandIndex].word != std::string("serviceCommand"))
        throw std::runtime_error("commands have changed their places in the table");
}

std::string Requests::request(size_t command, int percentOdd)
{
    const Command& row = commandTable[command];
    std::string text = row.word;
    for (int i = 0; i < row.argumentCount(); ++i) {
        const Argument& argument = row.arguments[static_cast<size_t>(i)];
        const Values& values = *usualOf(argument);
        text += ';';
        if (m_random.chance(percentOdd))
            text += m_random.pick(argument.kind == ArgumentKind::Number ? oddNumbers : oddTexts);
        else if (argument.kind == ArgumentKind::Number)
            text += std::to_string(m_random.between(values.first, values.last));
        else
            text += m_random.pick(values.texts);
    }
    // The results of commands can be told apart.
    if (command == serviceCommandIndex)
        text += '#' + std::to_string(++m_number);
    return text;
}

std::string Requests::garbage(size_t command)
{
    const std::string whole = request(command, 30);
    switch (m_random.below(11)) {
    case 0: // an unknown word
        return m_random.pick(Texts{"unknown", "Quit", "getbrightness", "getBrightness ", "",
                                   " getBrightness", "\ufeffgetBrightnes"}) +
               ";1;2" + '\0';
    case 1: // too few fields
        return whole.substr(0, whole.rfind(';')) + '\0';
    case 2:
        return std::string(1 + m_random.below(20), ';') + '\0';
    case 3: // no NUL
        return whole;
    case 4: // no NUL, and cut
        return whole.substr(0, 1 + m_random.below(whole.size()));
    case 5: // a NUL in between
        return whole + '\0' + "setBuzzerMode;1" + '\0';
    case 6:
        return std::string(1 + m_random.below(3), '\0') + whole + '\0';
    case 7: // longer than what is received
        return "setVolatileParameter;long;" +
               std::string(m_random.pick(std::vector<size_t>{receiveBuffer - 27, receiveBuffer - 26,
                                                             receiveBuffer, 2 * receiveBuffer}),
                           'L') +
               '\0';
    case 8: // more fields than it has
        return whole + ";more;;" + '\0';
    case 9: { // bytes of any kind
        std::string bytes(1 + m_random.below(60), ' ');
        for (char& byte : bytes)
            byte = static_cast<char>(m_random.below(256));
        return bytes;
    }
    default: // an invalid text
        return whole + m_random.pick(oddTexts) + '\0';
    }
}

std::string Requests::sound(size_t command) { return request(command, 0) + '\0'; }

bool Requests::haveCommandsAllCome() const { return m_next >= commandTable.size(); }

std::vector<std::string> Requests::largest() const
{
    const std::string longest(receiveBuffer - 100, 'l');
    std::vector<std::string> messages;
    for (const std::string& key : usualOf({"key", ArgumentKind::Text})->texts) {
        for (const char* word : {"setSystemParameter", "setVolatileParameter"})
            messages.push_back(word + (';' + key + ';' + longest) + '\0');
    }
    for (const char* text : {"getAllSystemParametersJson", "getAllVolatileParametersJson",
                             "getSystemParameter;k1", "seepromRead;0;65535"})
        messages.push_back(text + std::string(1, '\0'));
    return messages;
}

std::string Requests::any()
{
    if (!haveCommandsAllCome()) {
        if (m_next == quitIndex)
            ++m_next;
        return sound(m_next++);
    }
    // A scan takes half a second and more, so commands are rare.
    if (m_random.chance(1))
        return request(serviceCommandIndex, 10) + '\0';
    return anyButCommand();
}

std::string Requests::anyButCommand()
{
    const size_t command = 1 + m_random.below(serviceCommandIndex - 1);
    return m_random.chance(15) ? garbage(command) : request(command, 10) + '\0';
}
