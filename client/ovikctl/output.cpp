#include "client/ovikctl/output.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <unistd.h>

using nlohmann::json;

namespace
{
/// Bytes that are not UTF-8, as at the end of a cut text, become U+FFFD.
std::string jsonString(std::string_view text)
{
    return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

bool isUtf8(const std::string& text)
{
    try {
        json(text).dump();
        return true;
    } catch (const json::type_error&) {
        return false;
    }
}

/// The length in bytes of the first UTF-8 character of @p text; 0 when it is not UTF-8.
size_t utf8Length(std::string_view text)
{
    const auto byte = [&](size_t i) -> unsigned {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return 1;
    if (first < 0xc2 || first > 0xf4)
        return 0;
    // Excludes overlong forms, surrogates, and characters above U+10FFFF.
    const unsigned least = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
    const unsigned most = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
    if (byte(1) < least || byte(1) > most)
        return 0;
    const size_t length = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    for (size_t i = 2; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80)
            return 0;
    }
    return length;
}

/// Indents continuation lines, so that they cannot be mistaken for further answers or messages.
std::string forTerminal(const std::string& text)
{
    std::string result;
    for (const char c : withoutControls(text, "\n\t"))
        result += c == '\n' ? std::string("\n    ") : std::string(1, c);
    return result;
}

/// Converts Latin-1, the encoding of the storage and network documents.
std::string utf8Of(const std::string& latin1)
{
    std::string text;
    for (const char c : latin1) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x80)
            text += c;
        else
            text += {static_cast<char>(0xc0 | code >> 6), static_cast<char>(0x80 | (code & 0x3f))};
    }
    return text;
}

/// Returns JSON in one line; JSON has line breaks only between its parts. Any other text, such as a
/// long document that the service has cut, becomes a string.
std::string documentOf(std::string text)
{
    if (!isUtf8(text))
        text = utf8Of(text);
    if (text.compare(0, 3, "\ufeff") == 0) // the library accepts it, but it is not valid in JSON
        text.erase(0, 3);
    if (!json::accept(text))
        return jsonString(text);
    std::replace(text.begin(), text.end(), '\n', ' ');
    std::replace(text.begin(), text.end(), '\r', ' ');
    return text;
}

std::string listOf(const std::vector<unsigned char>& bytes) { return json(bytes).dump(); }

void addSystemInfo(JsonObject& object, const Command& command, const ovik_client_system_info& info)
{
    std::istringstream names(command.answer);
    std::string name;
    std::getline(names, name, ',');
    object.add(name.c_str(), info.moduleName);
    std::getline(names, name, ',');
    object.add(name.c_str(), info.hwCode);
    std::getline(names, name, ',');
    object.add(name.c_str(), info.manufactureCode);
}

void addOutcome(JsonObject& object, const ovik_client_outcome& outcome)
{
    object.add("value", outcome.result);
    if (*outcome.details == 0)
        return;
    std::istringstream details(outcome.details);
    std::string service;
    std::string command;
    std::string result;
    std::getline(details, service, ';');
    std::getline(details, command, ';');
    std::getline(details, result, '\0');
    JsonObject of;
    of.add("service", service).add("command", command).addJson("result", documentOf(result));
    object.addJson("outcome", of.text());
}

/// False when the answer does not have its command's shape.
bool addValue(JsonObject& object, const Command& command, const ovik_client_answer& answer)
{
    switch (command.shape) {
    case Shape::Status:
        return true;
    case Shape::Unsigned: {
        unsigned value = 0;
        if (ovik_client_unsigned(&answer, &value) != OVIK_CLIENT_OK)
            return false;
        object.add("value", value);
        return true;
    }
    case Shape::Signed: {
        int value = 0;
        if (ovik_client_signed(&answer, &value) != OVIK_CLIENT_OK)
            return false;
        object.add("value", value);
        return true;
    }
    case Shape::Size: {
        uint64_t value = 0;
        if (ovik_client_size(&answer, &value) != OVIK_CLIENT_OK)
            return false;
        object.addJson("value", std::to_string(value));
        return true;
    }
    case Shape::Text:
        object.addJson("value", command.answer == std::string_view("json")
                                    ? documentOf(answer.text)
                                    : jsonString(answer.text));
        return true;
    case Shape::SystemInfo: {
        ovik_client_system_info info = {};
        if (ovik_client_system_information(&answer, &info) != OVIK_CLIENT_OK)
            return false;
        addSystemInfo(object, command, info);
        return true;
    }
    case Shape::Bytes: {
        std::vector<unsigned char> bytes(answer.length / 2 + 1);
        size_t count = 0;
        if (ovik_client_bytes(&answer, bytes.data(), bytes.size(), &count) != OVIK_CLIENT_OK)
            return false;
        bytes.resize(count);
        object.addJson("value", listOf(bytes));
        return true;
    }
    case Shape::Outcome: {
        ovik_client_outcome outcome = {};
        if (ovik_client_service_outcome(&answer, &outcome) != OVIK_CLIENT_OK)
            return false;
        addOutcome(object, outcome);
        return true;
    }
    }
    return false;
}

JsonObject objectFor(const Request& request)
{
    JsonObject object;
    // Only the command word: a mistyped command may have a secret in its arguments.
    object.add("command", commandWordOf(request.text));
    return object;
}
} // namespace

JsonObject& JsonObject::add(const char* name, std::string_view text)
{
    return addJson(name, jsonString(text));
}

JsonObject& JsonObject::add(const char* name, long long number)
{
    return addJson(name, std::to_string(number));
}

JsonObject& JsonObject::addJson(const char* name, const std::string& value)
{
    m_fields += (m_fields.size() > 1 ? "," : "") + jsonString(name) + ":" + value;
    return *this;
}

std::string jsonOf(const Request& request, const ovik_client_answer& answer)
{
    JsonObject object = objectFor(request);
    object.add("status", answer.status);
    if (answer.status != OVIK_OK)
        object.add("error", ovik_client_status_text(answer.status));
    else if (!request.command || !addValue(object, *request.command, answer))
        object.add("value", answer.text);
    return object.text();
}

std::string jsonOf(const Request& request, const std::string& error)
{
    return objectFor(request).addJson("status", "null").add("error", error).text();
}

std::string lineOf(const Request& request, const ovik_client_answer& answer)
{
    const bool isSeen = isatty(STDOUT_FILENO) != 0;
    std::string line =
        (isSeen ? withoutSecrets(request) : request.text) + " -> " + std::to_string(answer.status);
    // An empty text also has its blank.
    const bool isText = request.command && request.command->shape == Shape::Text;
    if (answer.length > 0 || (isText && answer.status == OVIK_OK))
        line += std::string(" ") + answer.text;
    return line;
}

void printLine(const std::string& line)
{
    const std::string text = isatty(STDOUT_FILENO) ? forTerminal(line) : line;
    fwrite(text.data(), 1, text.size(), stdout);
    putchar('\n');
    fflush(stdout);
}

void complain(const std::string& text)
{
    fflush(stdout);
    fprintf(stderr, "%s\n", (isatty(STDERR_FILENO) ? forTerminal(text) : text).c_str());
}

std::string withoutControls(std::string text, std::string_view kept)
{
    for (size_t i = 0; i < text.size();) {
        const size_t length = utf8Length(std::string_view(text).substr(i));
        const auto first = static_cast<unsigned char>(text[i]);
        const bool isC0 = first < ' ' && kept.find(text[i]) == std::string_view::npos;
        const bool isC1 =
            length == 2 && first == 0xc2 && static_cast<unsigned char>(text[i + 1]) < 0xa0;
        // An 8-bit terminal obeys a single such byte. Other bytes that are not UTF-8 may be Latin-1
        // text.
        const bool isC1Byte = length == 0 && first < 0xa0;
        const size_t step = std::max<size_t>(length, 1);
        if (isC0 || first == 0x7f || isC1 || isC1Byte)
            text.replace(i, step, step, ' ');
        i += step;
    }
    return text;
}

std::string paint(Style style, const std::string& text)
{
    const char* const noColor = getenv("NO_COLOR");
    if (!isatty(STDOUT_FILENO) || (noColor && *noColor))
        return text;
    const char* const code = style == Style::Bold ? "1" : style == Style::Good ? "32" : "31";
    return std::string("\033[") + code + "m" + text + "\033[0m";
}
