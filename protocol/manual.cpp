// The lists of statuses and commands in the manual page ovik_protocol(7).

#include "protocol/command_table.h"
#include "protocol/products.h"

#include <sstream>

namespace
{
/// Escapes the text for scdoc.
std::string escaped(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        if (c == '_' || c == '*' || c == '\\' || c == '#' || c == '<' || c == '~')
            out += '\\';
        out += c;
    }
    return out;
}

std::string statuses()
{
    std::ostringstream out;
    for (const StatusRow& status : statusTable)
        out << "*" << status.number << "*\n\t" << escaped(status.meaning) << "\n\n";
    return out.str();
}

std::string commands()
{
    std::ostringstream out;
    for (const Command& command : commandTable) {
        out << "*" << command.word << "*";
        for (const Argument& argument : command.arguments)
            out << ";_" << argument.name << "_";
        out << "\n\t" << escaped(command.help) << ". Answer: " << nameOf(command.shape);
        if (*command.answer)
            out << ", " << escaped(command.answer);
        if (command.textLimit > 0)
            out << ", cut at " << command.textLimit << " bytes";
        if (command.isAnswerSecret)
            out << "; it may hold a password";
        out << ".";
        for (const Argument& argument : command.arguments)
            out << " _" << argument.name << "_: " << escaped(argument.meaning)
                << (argument.isSecret ? "; may hold a password." : ".");
        out << "\n\n";
    }
    return out.str();
}
} // namespace

std::string writeManual(const std::string& current, const Examples&)
{
    const std::string by = ": scripts/generate.sh";
    const std::string text = replaced(current, "; statuses" + by, "; end of statuses", statuses());
    return replaced(text, "; commands" + by, "; end of commands", commands());
}
