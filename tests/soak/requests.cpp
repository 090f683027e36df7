#include "tests/soak/requests.h"

#include <algorithm>
#include <stdexcept>

namespace
{
using namespace std::string_literals;

constexpr size_t longestMessage = 4999; ///< without its NUL
constexpr size_t longestResponse = 9999;
constexpr size_t longestParameter = 99;
/// Requests up to this size fit into a socket's buffer, so the sender does not block.
constexpr size_t mostBytes = 100000;

const std::string longText(12000, 'c');

// clang-format off
/// Numbers as sent, and as the panel receives them.
const std::pair<std::string, int> oddNumbers[] = {
    {"-1", -1}, {"007", 7}, {"+5", 5}, {"2147483647", 2147483647}, {"2147483648", 0},
    {"4294967296", 0}, {"abc", 0}, {"", 0}, {"1x", 0}, {"0x10", 0}, {"1e3", 0}, {"3.5", 0},
};
/// Texts as sent, and as the panel receives them.
const std::pair<std::string, std::string> oddTexts[] = {
    {"", ""}, {"%s%n%1%2", "%s%n%1%2"}, {"tab\tline\n", "tab\tline\n"}, {"\"a\\\"", "\"a\\\""},
    {"\u65e5\u672c\u8a9e \U0001f600", "\u65e5\u672c\u8a9e \U0001f600"},
    {"a\xff\xfe", "a\ufffd\ufffd"}, {"\xed\xa0\x80", "\ufffd\ufffd\ufffd"}, {"\xc3", "\ufffd"},
    {std::string(98, 'z') + "\u20ac", std::string(98, 'z') + "\u20ac"},
};
// clang-format on

CommandRow rowOf(const std::string& word)
{
    const auto& rows = commandRows();
    const auto row =
        std::find_if(rows.begin(), rows.end(), [&](const auto& r) { return r.word == word; });
    if (row == rows.end())
        throw std::runtime_error("no row of " + word);
    return *row;
}

/// The row with other @p arguments, and "(signature) values" of its call.
CommandRow rowWith(const std::string& word, const std::string& arguments, const std::string& values,
                   const std::string& response)
{
    CommandRow row = rowOf(word);
    row.arguments = arguments;
    row.calls = {row.calls.back().substr(0, row.calls.back().find('(')) + values};
    row.response = response.substr(0, longestResponse);
    return row;
}

/// Replies to a service command: a scan succeeds, and its options are its outcome.
int answerCommand(sd_bus_message* call)
{
    const char* service = nullptr;
    const char* command = nullptr;
    const char* options = nullptr;
    sd_bus_message_rewind(call, true);
    sd_bus_message_read(call, "sss", &service, &command, &options);
    if (service + ";"s + command != "wifi;scan")
        return rowOf("serviceCommand").reply(call);
    const int sent = sd_bus_reply_method_return(call, "i", 0);
    if (sent < 0)
        return sent;
    return sd_bus_emit_signal(sd_bus_message_get_bus(call), "/ServiceManager",
                              "com.wenu.OVIK.ServiceManager", "commandResult", "sss", service,
                              command, options);
}

/// A message that names no command, with a NUL or without.
std::string garbage(Random& random)
{
    static const std::vector<std::string> texts = {
        "unknown;1;2\0"s,        "Quit\0"s, "quit \0"s,  " quit\0"s,
        "\ufeffgetBrightnes\0"s, ";;;\0"s,  "\0quit\0"s, "setBuzzerMode\0"s};
    if (random.chance(50))
        return random.pick(texts);
    std::string bytes(1 + random.below(60), '!');
    for (size_t i = 1; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(random.below(256));
    return bytes;
}

/// A message around the size of the service's buffer; the service truncates longer ones.
Request tooLong(size_t valueSize)
{
    const std::string start = "setVolatileParameter;long;";
    const std::string arrived(std::min(valueSize, longestMessage - start.size()), 'L');
    return {start + std::string(valueSize, 'L') + '\0',
            rowWith("setVolatileParameter", "", "(ss) \"long\" \"" + arrived + '"', "0 0")};
}
} // namespace

Request fixedRequest(const std::string& message, const std::string& response)
{
    CommandRow row = {};
    row.response = response;
    return {message, row};
}

Request scanRequest(const std::string& options)
{
    const CommandRow row =
        rowWith("serviceCommand", ";wifi;scan;" + options,
                "(sss) \"wifi\" \"scan\" \"" + options + '"', "0 0;wifi;scan;" + options);
    return {row.request() + '\0', row};
}

void answerRequests(FakePlatform& platform)
{
    answerCommands(platform);
    platform.answer("Backlight.saveBrightness", replyEcho());
    platform.answer("OVIK.getVolatileParameter", replyEcho());
    platform.answer("NetworkManager.getConfigJSON", replyText(longText));
    platform.answer("ServiceManager.command", answerCommand);
}

Requests::Requests(Random& random) : m_random(random)
{
    for (const CommandRow& row : commandRows()) {
        if (row.word == "getNetworkConfigJson"s)
            m_rows.push_back(rowWith(row.word, "", "()", "0 " + longText));
        else if (row.word != "saveBrightness"s && row.word != "getVolatileParameter"s)
            m_rows.push_back(row);
    }
}

CommandRow Requests::numbered()
{
    ++m_number;
    std::pair<std::string, int> number(std::to_string(m_number), m_number);
    if (m_random.chance(20))
        number = m_random.pick(oddNumbers);
    return rowWith("saveBrightness", ';' + number.first, "(i) " + std::to_string(number.second),
                   "0 " + std::to_string(static_cast<unsigned int>(number.second)));
}

CommandRow Requests::named()
{
    const std::string name = "name" + std::to_string(++m_number);
    std::pair<std::string, std::string> text(name, name);
    if (m_random.chance(20))
        text = m_random.pick(oddTexts);
    return rowWith("getVolatileParameter", ';' + text.first, "(s) \"" + text.second + '"',
                   "0 " + text.second.substr(0, longestParameter));
}

CommandRow Requests::anyRow(bool scans)
{
    // A scan takes at least half a second, so scans are rare.
    if (scans && m_random.chance(1))
        return scanRequest('#' + std::to_string(++m_number)).row;
    switch (m_random.below(4)) {
    case 0:
        return numbered();
    case 1:
        return named();
    default:
        return m_random.pick(m_rows);
    }
}

void Requests::add(std::vector<Request>& requests, bool scans)
{
    const CommandRow row = anyRow(scans);
    const std::string text = row.request();
    Request request = {text + '\0', row};
    switch (m_random.below(40)) {
    case 0: // without its NUL it runs on into what the message before left behind
        requests.push_back(request);
        request.message.resize(1 + m_random.below(text.size()));
        break;
    case 1:
        request.message += "quit"s + '\0';
        break;
    case 2:
        request.message = text + ";more;;" + '\0';
        break;
    case 3: // without its last argument
        if (row.arguments.empty())
            break;
        request = fixedRequest(text.substr(0, text.rfind(';')) + '\0', "-8");
        break;
    case 4:
        request = tooLong(m_random.pick(std::vector<size_t>{4972, 4973, 4974, 5000, 9000}));
        break;
    case 5: // an impossible length
        request = fixedRequest("seepromRead;0;65536"s + '\0', "-3");
        break;
    case 6:
    case 7:
        request = fixedRequest(garbage(m_random), "-8");
        break;
    }
    requests.push_back(request);
}

std::vector<Request> Requests::some(int count, bool scans)
{
    std::vector<Request> requests;
    for (size_t bytes = 0; count > 0 && bytes < mostBytes; --count) {
        add(requests, scans);
        bytes += 1024 + 2 * (requests.back().message.size() + requests.back().row.response.size());
    }
    return requests;
}

std::vector<Request> Requests::allRows() const
{
    std::vector<Request> requests;
    for (const CommandRow& row : m_rows)
        requests.push_back({row.request() + '\0', row});
    requests.push_back(tooLong(9000));
    return requests;
}
