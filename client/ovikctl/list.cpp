#include "client/ovikctl/output.h"
#include "client/ovikctl/verbs.h"

#include <algorithm>

namespace
{
std::string jsonOf(bool flag) { return flag ? "true" : "false"; }

std::string jsonOf(const Command& command)
{
    std::string arguments;
    for (const Argument& argument : command.arguments) {
        JsonObject object;
        object.add("name", argument.name)
            .add("kind", nameOf(argument.kind))
            .add("meaning", argument.meaning)
            .add("example", argument.example)
            .addJson("secret", jsonOf(argument.isSecret));
        arguments += (arguments.empty() ? "" : ",") + object.text();
    }
    JsonObject object;
    object.add("command", command.word)
        .add("effect", nameOf(command.effect))
        .addJson("arguments", "[" + arguments + "]")
        .add("shape", nameOf(command.shape))
        .add("answer", command.answer)
        .addJson("answerSecret", jsonOf(command.isAnswerSecret))
        .add("answerLimit", command.textLimit)
        .add("modeQuery", nameOf(command.modeQuery))
        .add("logName", command.logName)
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
