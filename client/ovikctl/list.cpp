#include "client/ovikctl/output.h"
#include "client/ovikctl/verbs.h"

#include <algorithm>

namespace
{
std::string jsonOf(const Command& command)
{
    std::string arguments;
    for (const Argument& argument : command.arguments) {
        if (argument.kind == ArgumentKind::None)
            continue;
        JsonObject object;
        object.add("name", argument.name)
            .add("kind", argument.kind == ArgumentKind::Number ? "number" : "text")
            .add("meaning", argument.meaning)
            .add("example", argument.example)
            .addJson("secret", argument.isSecret ? "true" : "false");
        arguments += (arguments.empty() ? "" : ",") + object.text();
    }
    JsonObject object;
    object.add("command", command.word)
        .addJson("arguments", "[" + arguments + "]")
        .add("answer", command.answer)
        .add("help", command.help);
    return object.text();
}
} // namespace

int runList(const Settings& settings)
{
    size_t width = 0;
    for (const Command& command : commandTable)
        width = std::max(width, formOf(command).size());
    for (const Command& command : commandTable) {
        std::string form = formOf(command);
        form.resize(width, ' ');
        printLine(settings.json ? jsonOf(command) : form + "  " + command.help);
    }
    return allDone;
}
