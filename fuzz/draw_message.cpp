#include "fuzz/draw_message.h"

#include <cstring>

namespace
{
const std::string basicTypes = "ybnqiuxtdsog";
constexpr int deepest = 4;

/// The end of the complete type that starts at @p start; 0 for an invalid one.
size_t endOfType(const std::string& signature, size_t start)
{
    if (start >= signature.size())
        return 0;
    const char type = signature[start];
    if (type == 'v' || basicTypes.find(type) != std::string::npos)
        return start + 1;
    if (type == 'a' && start + 1 < signature.size() && signature[start + 1] == '{') {
        const size_t value = start + 3;
        const size_t end = endOfType(signature, value);
        const bool keyIsBasic = basicTypes.find(signature[start + 2]) != std::string::npos;
        return end && keyIsBasic && signature[end] == '}' ? end + 1 : 0;
    }
    if (type == 'a')
        return endOfType(signature, start + 1);
    if (type != '(')
        return 0;
    size_t end = start + 1;
    do {
        end = endOfType(signature, end);
    } while (end && signature[end] != ')');
    return end ? end + 1 : 0;
}

bool isSignature(const std::string& signature)
{
    constexpr size_t longest = 255; // limit of D-Bus
    if (signature.size() > longest)
        return false;
    size_t end = 0;
    while (end < signature.size()) {
        end = endOfType(signature, end);
        if (!end)
            return false;
    }
    return true;
}

char drawBasicType(FuzzedDataProvider& input)
{
    return basicTypes[input.ConsumeIntegralInRange<size_t>(0, basicTypes.size() - 1)];
}

std::string drawType(FuzzedDataProvider& input, int depth = 0)
{
    switch (depth < deepest ? input.ConsumeIntegralInRange(0, 7) : 0) {
    case 1:
        return "v";
    case 2:
        return "ay";
    case 3:
        return "a" + drawType(input, depth + 1);
    case 4: {
        std::string fields;
        for (int more = input.ConsumeIntegralInRange(0, 10); more >= 0; --more)
            fields += drawType(input, depth + 1);
        return "(" + fields + ")";
    }
    case 5: {
        const char key = drawBasicType(input);
        return std::string("a{") + key + drawType(input, depth + 1) + "}";
    }
    default:
        return std::string(1, drawBasicType(input));
    }
}

template <class Number>
bool appendNumber(FuzzedDataProvider& input, sd_bus_message* message, char type)
{
    // Also for a double: every bit pattern is valid.
    const auto number = input.ConsumeIntegral<Number>();
    return sd_bus_message_append_basic(message, type, &number) >= 0;
}

bool appendOne(FuzzedDataProvider& input, sd_bus_message* message, const std::string& type,
               int depth);

bool appendContainer(FuzzedDataProvider& input, sd_bus_message* message, char kind,
                     const std::string& contents, int count, int depth)
{
    if (sd_bus_message_open_container(message, kind, contents.c_str()) < 0)
        return false;
    for (; count > 0; --count) {
        for (size_t start = 0, end = 0; start < contents.size(); start = end) {
            // A dictionary entry is the array's only content, and not a complete type by itself.
            end = contents[0] == '{' ? contents.size() : endOfType(contents, start);
            if (!appendOne(input, message, contents.substr(start, end - start), depth + 1))
                return false;
        }
    }
    return sd_bus_message_close_container(message) >= 0;
}

bool appendOne(FuzzedDataProvider& input, sd_bus_message* message, const std::string& type,
               int depth)
{
    switch (type[0]) {
    case 'y':
        return appendNumber<uint8_t>(input, message, 'y');
    case 'n':
    case 'q':
        return appendNumber<uint16_t>(input, message, type[0]);
    case 'i':
    case 'u': {
        const int number = drawNumber(input);
        return sd_bus_message_append_basic(message, type[0], &number) >= 0;
    }
    case 'x':
    case 't':
    case 'd':
        return appendNumber<uint64_t>(input, message, type[0]);
    case 'b': {
        const int flag = input.ConsumeBool();
        return sd_bus_message_append_basic(message, 'b', &flag) >= 0;
    }
    case 's':
        return sd_bus_message_append_basic(message, 's', drawText(input).c_str()) >= 0;
    case 'o':
        return sd_bus_message_append_basic(message, 'o', input.ConsumeBool() ? "/a/b" : "/") >= 0;
    case 'g':
        return sd_bus_message_append_basic(message, 'g', input.ConsumeBool() ? "a(ys)" : "") >= 0;
    case 'v': {
        const std::string inside = drawType(input, depth + 1);
        return appendContainer(input, message, 'v', isSignature(inside) ? inside : "i", 1, depth);
    }
    case '(':
        return appendContainer(input, message, 'r', type.substr(1, type.size() - 2), 1, depth);
    case '{':
        return appendContainer(input, message, 'e', type.substr(1, type.size() - 2), 1, depth);
    case 'a': {
        if (type == "ay") {
            // Around the sizes of the records' fields and of a request.
            constexpr size_t most[] = {300, 6, 21, 201, 3333, 70000};
            const size_t choice = input.ConsumeIntegralInRange<size_t>(0, std::size(most) - 1);
            const std::string bytes = drawBytes(input, most[choice], true);
            return sd_bus_message_append_array(message, 'y', bytes.data(), bytes.size()) >= 0;
        }
        return appendContainer(input, message, 'a', type.substr(1),
                               input.ConsumeIntegralInRange(0, depth > 2 ? 2 : 5), depth);
    }
    default:
        return false;
    }
}
} // namespace

std::string drawText(FuzzedDataProvider& input)
{
    const size_t most = input.ConsumeIntegralInRange(0, 15) == 15 ? 12000 : 120;
    const char* const beyondAscii[] = {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
    std::string text;
    for (const char byte : drawBytes(input, most, false)) {
        const auto code = static_cast<unsigned char>(byte);
        text += code < 0x80 ? std::string(1, byte) : beyondAscii[code % 3];
    }
    return text;
}

std::string drawSignature(FuzzedDataProvider& input, const std::string& expected)
{
    std::string signature = expected;
    switch (input.ConsumeIntegralInRange(0, 9)) {
    case 6:
    case 7: {
        const size_t place = input.ConsumeIntegralInRange<size_t>(0, signature.size());
        const size_t replaced = input.ConsumeIntegralInRange<size_t>(0, 1);
        const bool with = input.ConsumeBool();
        signature.replace(place, replaced, with ? drawType(input) : std::string());
        break;
    }
    case 8:
        signature.clear();
        for (int more = input.ConsumeIntegralInRange(0, 3); more > 0; --more)
            signature += drawType(input);
        break;
    case 9:
        signature += drawType(input);
        break;
    default:
        break;
    }
    return isSignature(signature) ? signature : expected;
}

bool appendValues(FuzzedDataProvider& input, sd_bus_message* message, const std::string& signature)
{
    for (size_t start = 0, end = 0; start < signature.size(); start = end) {
        end = endOfType(signature, start);
        if (!end || !appendOne(input, message, signature.substr(start, end - start), 0))
            return false;
    }
    return true;
}
