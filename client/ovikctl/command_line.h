#pragma once

#include "client/ovikctl/settings.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

/// The program's options and verbs. The commands of the table are verbs, too.
class CommandLine
{
public:
    /// What is to be done when there is no verb.
    using WithoutVerb = int (*)(const Settings& settings);

    CommandLine(Settings defaults, WithoutVerb withoutVerb);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Runs it, tells of a failure, and returns what the program ends with.
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

    // What the verbs' own options and arguments are read into.
    std::vector<std::string> m_words;
    std::string m_word;
    double m_interval = 1;
    bool m_forPlatform = false;
};

/// The positional arguments of a verb, in their order.
std::vector<const CLI::Option*> argumentsOf(const CLI::App& verb);
/// The names of a verb's options, each with its "--".
std::vector<std::string> optionsOf(const CLI::App& verb);
