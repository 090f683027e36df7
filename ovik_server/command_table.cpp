#include "ovik_server/command_table.h"

#include <algorithm>

namespace
{
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

template <class... Arguments>
constexpr Command command(const char* errorName, const char* word, Shape shape, const char* answer,
                          const char* help, Arguments... arguments)
{
    return {word, {{arguments...}}, shape, answer, errorName, help};
}
} // namespace

const std::array<Command, 47> commandTable = {{
#define COMMAND_LOGGED_AS(name, word, shape, answer, call, ...)                                    \
    command(name, #word, Shape::shape, answer, __VA_ARGS__),
#define COMMAND(word, ...) COMMAND_LOGGED_AS(#word, word, __VA_ARGS__)
#include "ovik_server/commands.def"
}};

int Command::argumentCount() const
{
    return static_cast<int>(
        std::count_if(arguments.begin(), arguments.end(), [](const Argument& argument) {
            return argument.kind != ArgumentKind::None;
        }));
}

bool Command::hasSecret() const
{
    return std::any_of(arguments.begin(), arguments.end(),
                       [](const Argument& argument) { return argument.isSecret; });
}

const Command* findCommand(std::string_view word)
{
    const auto found = std::find_if(commandTable.begin(), commandTable.end(),
                                    [&](const Command& row) { return word == row.word; });
    return found == commandTable.end() ? nullptr : &*found;
}
