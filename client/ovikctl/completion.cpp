#include "client/ovikctl/command_line.h"
#include "client/ovikctl/verbs.h"
#include "protocol/command_table.h"

#include <iostream>

namespace
{
using Verbs = std::vector<const CLI::App*>;

/// Quotes the text with single quotes of a shell.
std::string shellQuoted(const std::string& text)
{
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' ? "'\\''" : std::string(1, c);
    return result + "'";
}

std::string join(const std::vector<std::string>& words) { return CLI::detail::join(words, " "); }

std::vector<std::string> namesOf(const Verbs& verbs)
{
    std::vector<std::string> names;
    names.reserve(verbs.size());
    for (const CLI::App* verb : verbs)
        names.push_back(verb->get_name());
    return names;
}

std::string allCommands()
{
    std::string result;
    for (const Command& command : commandTable)
        result += (result.empty() ? "" : " ") + std::string(command.word);
    return result;
}

std::string hintOf(const CLI::Option& argument)
{
    return argument.get_name(true) + ": " + argument.get_description();
}

/// The code that completes an argument of a verb that is not a command, for bash and for zsh.
struct Completer {
    std::string bash;
    std::string zsh;
};

Completer completerOf(const CLI::App& verb, const CLI::Option& argument)
{
    const std::string name = argument.get_name(true);
    if (name == "file")
        return {"files", "_files"};
    if (name == "shell")
        return {"offer 'bash zsh'", "(bash zsh)"};
    if (verb.get_name() == "watch")
        return {"offer \"$commands\"", "($commands)"};
    return {"hint " + shellQuoted(hintOf(argument)), " "};
}

// --- bash ----------------------------------------------------------------------------------------

const char* const bashBegin = R"(# Completion of ovikctl for bash; made by: ovikctl completion bash
_ovikctl() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} verb='' place=0 i
    COMPREPLY=()
    offer() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word"); }
    files() { compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$word"); }
    # Of two that begin differently, bash shows both and takes none.
    hint() { [ -n "$word" ] || { compopt -o nosort; COMPREPLY=("$1" ' '); }; }
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
        --socket | --service-user | --timeout | --interval)
            ((++i))
            [ "${COMP_WORDS[i]}" != = ] || ((++i))
            ;;
        -[0-9]* | [!-]*) if [ -n "$verb" ]; then ((++place)); else verb=${COMP_WORDS[i]}; fi ;;
        esac
    done
)";

const char* const bashEnd = R"(    unset -f offer files hint
}
complete -F _ovikctl ovikctl
)";

void printBashArguments(const CLI::App& verb)
{
    int place = 0;
    for (const CLI::Option* argument : argumentsOf(verb)) {
        const std::string places = argument->get_allow_extra_args() ? "*" : std::to_string(place++);
        std::cout << "    " << verb.get_name() << ":" << places << ") "
                  << completerOf(verb, *argument).bash << " ;;\n";
    }
}

void printBash(const CLI::App& program, const Verbs& verbs)
{
    std::cout << bashBegin << "    local commands=" << shellQuoted(allCommands()) << "\n"
              << "    local options=" << shellQuoted(join(optionsOf(program))) << "\n"
              << "    case $verb in\n";
    for (const CLI::App* verb : verbs) {
        const auto options = optionsOf(*verb);
        if (options.size() > 1)
            std::cout << "    " << verb->get_name()
                      << ") options+=" << shellQuoted(" " + join(options)) << " ;;\n";
    }
    std::cout << "    esac\n"
                 "    case $before:$verb:$place:$word in\n"
                 "    --socket:*) files ;;\n"
                 "    --service-user:* | --timeout:* | --interval:*) ;;\n"
                 "    *:*:*:-*) offer \"$options\" ;;\n"
                 "    *::0:*) offer "
              << shellQuoted(join(namesOf(verbs))) << " ;;\n"
              << "    *)\n    case $verb:$place in\n";
    for (const CLI::App* verb : verbs)
        printBashArguments(*verb);
    std::cout << "    esac\n    ;;\n    esac\n" << bashEnd;
}

// --- zsh -----------------------------------------------------------------------------------------

/// Escapes the text for zsh's _arguments, where ":" separates and brackets enclose the meaning.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == ':' || c == '[' || c == ']' || c == '\\')
            result += '\\';
        result += c;
    }
    return result;
}

std::string zshOptions(const CLI::App& verb)
{
    std::string result;
    for (const CLI::Option* option : verb.get_options()) {
        const bool isEverybodys = verb.get_parent() && option == verb.get_help_ptr();
        if (option->get_lnames().empty() || isEverybodys)
            continue;
        std::string spec =
            "--" + option->get_lnames().front() + "[" + escaped(option->get_description()) + "]";
        if (option->get_items_expected_max() > 0)
            spec += ":" + option->get_option_text() + ":" +
                    (option->get_lnames().front() == "socket" ? "_files" : " ");
        result += " " + shellQuoted(spec);
    }
    return result;
}

void printZsh(const CLI::App& program, const Verbs& verbs)
{
    std::cout << "#compdef ovikctl\n"
                 "# Completion of ovikctl for zsh; made by: ovikctl completion zsh\n"
                 "_ovikctl() {\n"
                 "    local curcontext=$curcontext state line ret=1\n"
                 "    local -a verbs commands options\n"
              << "    commands=(" << allCommands() << ")\n    verbs=(\n";
    for (const CLI::App* verb : verbs)
        std::cout << "        "
                  << shellQuoted(escaped(verb->get_name()) + ":" + escaped(verb->get_description()))
                  << "\n";
    std::cout << "    )\n    options=(" << zshOptions(program) << " )\n"
              << "    _arguments -C $options '1:command:->verb' '*::argument:->argument' && ret=0\n"
                 "    case $state in\n"
                 "    verb) _describe -t commands command verbs && ret=0 ;;\n"
                 "    argument)\n"
                 "        case $words[1] in\n";
    for (const CLI::App* verb : verbs) {
        std::cout << "        " << verb->get_name() << ") _arguments $options" << zshOptions(*verb);
        for (const CLI::Option* argument : argumentsOf(*verb))
            std::cout << " "
                      << shellQuoted((argument->get_allow_extra_args() ? "*:" : ":") +
                                     escaped(hintOf(*argument)) + ":" +
                                     completerOf(*verb, *argument).zsh);
        std::cout << " && ret=0 ;;\n";
    }
    std::cout << "        esac\n        ;;\n    esac\n    return ret\n}\n"
                 "compdef _ovikctl ovikctl\n";
}
} // namespace

int runCompletion(const std::string& shell, const CLI::App& program)
{
    const Verbs verbs = program.get_subcommands([](const CLI::App*) { return true; });
    shell == "bash" ? printBash(program, verbs) : printZsh(program, verbs);
    std::cout << std::flush;
    return 0;
}
