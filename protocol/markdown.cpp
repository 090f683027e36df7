// The lists of statuses and commands in docs/protocol.md.

#include "protocol/command_table.h"
#include "protocol/products.h"

#include <algorithm>
#include <sstream>

namespace
{
/// Escapes a table cell's text: "|" would end the cell.
std::string cell(std::string text)
{
    for (size_t at = 0; (at = text.find('|', at)) != std::string::npos; at += 2)
        text.insert(at, "\\");
    return text;
}

std::string lowered(std::string word)
{
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return word;
}

std::string statuses()
{
    std::ostringstream out;
    out << "| status | meaning |\n|---|---|\n";
    for (const StatusRow& status : statusTable)
        out << "| `" << status.number << "` | " << cell(status.meaning) << " |\n";
    out << "\n";
    return out.str();
}

std::string index()
{
    std::ostringstream out;
    out << "| command | effect | what it does |\n|---|---|---|\n";
    for (const Command& command : commandTable)
        out << "| [`" << command.word << "`](#" << lowered(command.word) << ") | "
            << nameOf(command.effect) << " | " << cell(command.help) << " |\n";
    out << "\n";
    return out.str();
}

std::string commands(const Examples& examples)
{
    std::ostringstream out;
    for (const Command& command : commandTable) {
        const std::string request = exampleOf(command);
        out << "### " << command.word << "\n\n" << command.help << ".\n\n";
        for (const Argument& argument : command.arguments)
            out << "- `" << argument.name << "` (" << nameOf(argument.kind)
                << (argument.isSecret ? ", may hold a password" : "") << "): " << argument.meaning
                << "\n";
        out << "- Answer (" << nameOf(command.shape)
            << (command.isAnswerSecret ? ", may hold a password" : "") << ")";
        if (*command.answer)
            out << ": `" << command.answer << "`";
        if (command.textLimit > 0)
            out << ", cut at " << command.textLimit << " bytes";
        out << "\n\n      " << request << "  ->  " << examples.at(request) << "\n\n";
    }
    return out.str();
}
} // namespace

std::string writeMarkdown(const std::string& current, const Examples& examples)
{
    const auto begin = [](const std::string& part) {
        return "<!-- " + part + ": scripts/generate.sh -->";
    };
    const auto end = [](const std::string& part) { return "<!-- end of " + part + " -->"; };
    std::string text = current;
    text = replaced(text, begin("statuses"), end("statuses"), statuses());
    text = replaced(text, begin("index"), end("index"), index());
    return replaced(text, begin("commands"), end("commands"), commands(examples));
}
