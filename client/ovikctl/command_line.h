#pragma once

#include "client/ovikctl/settings.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

/// The program's options and verbs. Each command of the table is also a verb.
class CommandLine
{
public:
    /// Called when there is no verb.
    using WithoutVerb = int (*)(const Settings& settings);

    CommandLine(Settings defaults, WithoutVerb withoutVerb);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Runs the command line and reports a failure. @return the program's exit code
    int run(std::vector<std::string> words);

    const CLI::App& program() const { return m_app; }

private:
    void addOptions();
    void addCommands();
    void addVerbs();
    CLI::App& addVerb(const char* name, const char* help, std::function<int()> action);
    void parse(std::vector<std::string> words);
    std::string advice() const;

    CLI::App m_app;
    Settings m_settings;
    WithoutVerb m_withoutVerb;
    std::function<int()> m_action;

    // The verbs' own options and arguments.
    std::vector<std::string> m_words;
    std::string m_word;
    double m_interval = 1;
    bool m_forPlatform = false;
};

/// The positional arguments of a verb, in their order.
std::vector<const CLI::Option*> argumentsOf(const CLI::App& verb);
/// The names of a verb's options, each with its "--".
std::vector<std::string> optionsOf(const CLI::App& verb);
