#include "protocol/command_table.h"

#include <algorithm>

namespace
{
// --- The details of a row, see commands.def ---

constexpr Argument number(const char* name, const char* example, const char* meaning)
{
    return {name, ArgumentKind::Number, example, meaning};
}

constexpr Argument text(const char* name, const char* example, const char* meaning)
{
    return {name, ArgumentKind::Text, example, meaning};
}

constexpr Argument secret(const char* name, const char* example, const char* meaning)
{
    return {name, ArgumentKind::Text, example, meaning, true};
}

constexpr Argument key(const char* example) { return text("key", example, "the parameter's name"); }

constexpr Argument slot = number("slot", "0", "place in the list of the modules found, from 0");
constexpr Argument point = number("index", "1", "I/O point or LED of the module");
constexpr Argument service = text("service", "vnc", "the platform's name of the service");

struct SecretAnswer {
};
constexpr SecretAnswer secretAnswer;

struct TextLimit {
    int bytes;
};
constexpr TextLimit cutAt(int bytes) { return {bytes}; }

struct LogName {
    const char* name;
};
constexpr LogName loggedAs(const char* name) { return {name}; }

constexpr ModeQuery needsIoMode2 = ModeQuery::getHWPluginIoMode;
constexpr ModeQuery needsLedMode2 = ModeQuery::getHWPluginLedMode;

constexpr void add(Command& row, const Argument& argument) { row.arguments.add(argument); }
constexpr void add(Command& row, SecretAnswer) { row.isAnswerSecret = true; }
constexpr void add(Command& row, TextLimit limit) { row.textLimit = limit.bytes; }
constexpr void add(Command& row, LogName log) { row.logName = log.name; }
constexpr void add(Command& row, ModeQuery query) { row.modeQuery = query; }

template <class... Details>
constexpr Command command(CommandId id, const char* word, Effect effect, Shape shape,
                          const char* answer, const char* help, Details... details)
{
    Command row{id, word, effect, shape, answer, help, word, {}};
    (add(row, details), ...);
    return row;
}
} // namespace

constexpr std::array<Command, commandCount> commandTable = {{
#define COMMAND(word, effect, shape, ...)                                                          \
    command(CommandId::word, #word, Effect::effect, Shape::shape, __VA_ARGS__),
#include "protocol/commands.def"
}};

const Command* findCommand(std::string_view word)
{
    const auto found = std::find_if(commandTable.begin(), commandTable.end(),
                                    [&](const Command& row) { return word == row.word; });
    return found == commandTable.end() ? nullptr : &*found;
}

bool Command::hasSecret() const
{
    return std::any_of(arguments.begin(), arguments.end(),
                       [](const Argument& argument) { return argument.isSecret; });
}

constexpr std::array<StatusRow, statusCount> statusTable = {{
#define STATUS(name, number, meaning) {number, meaning},
#include "protocol/statuses.def"
}};

const char* nameOf(Effect effect)
{
    switch (effect) {
    case Effect::Reads:
        return "reads";
    case Effect::Writes:
        return "writes";
    case Effect::Ends:
        return "ends";
    }
    return "";
}

const char* nameOf(Shape shape)
{
    switch (shape) {
    case Shape::Status:
        return "status";
    case Shape::Unsigned:
        return "unsigned";
    case Shape::Signed:
        return "signed";
    case Shape::Size:
        return "64-bit";
    case Shape::Text:
        return "text";
    case Shape::SystemInfo:
        return "system info";
    case Shape::Bytes:
        return "bytes";
    case Shape::Outcome:
        return "outcome";
    }
    return "";
}

const char* nameOf(ArgumentKind kind) { return kind == ArgumentKind::Number ? "number" : "text"; }

const char* nameOf(ModeQuery query)
{
    switch (query) {
    case ModeQuery::None:
        return "";
    case ModeQuery::getHWPluginIoMode:
        return "getHWPluginIoMode";
    case ModeQuery::getHWPluginLedMode:
        return "getHWPluginLedMode";
    }
    return "";
}
