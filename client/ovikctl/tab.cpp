#include "client/ovikctl/tab.h"

#include "client/ovikctl/command_line.h"
#include "client/ovikctl/failure.h"
#include "client/ovikctl/request.h"

#include <algorithm>

namespace
{
/// The words before the cursor; the last is completed and may be empty.
std::vector<std::string> wordsBehindWhich(const std::string& line)
{
    std::vector<std::string> words;
    if (isRaw(line)) {
        size_t begin = 0;
        for (size_t end = 0; end != std::string::npos; begin = end + 1) {
            end = line.find(';', begin);
            words.push_back(line.substr(begin, end - begin));
        }
    } else {
        try {
            words = wordsOf(line);
        } catch (const Failure&) { // no completion inside quotes
            return {};
        }
        if (line.empty() || line.back() == ' ')
            words.emplace_back();
    }
    return words;
}

std::string commonBeginning(const std::vector<std::string>& words)
{
    std::string common = words.front();
    for (const std::string& word : words) {
        const auto end = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
        common.erase(end.first, common.end());
    }
    return common;
}

Tab complete(const std::string& word, const std::vector<std::string>& candidates)
{
    std::vector<std::string> matches;
    for (const std::string& candidate : candidates) {
        if (candidate.compare(0, word.size(), word) == 0)
            matches.push_back(candidate);
    }
    if (matches.empty())
        return {};
    Tab tab;
    tab.insertion = commonBeginning(matches).substr(word.size());
    if (matches.size() == 1)
        tab.insertion += ' ';
    else if (tab.insertion.empty())
        tab.list = matches;
    return tab;
}

/// "setBuzzerMode [mode]  the mode", with brackets around the next argument.
std::string hintOf(const CLI::App& verb, size_t place)
{
    std::string form = verb.get_name();
    std::string meaning = "nothing more";
    size_t i = 0;
    for (const CLI::Option* argument : argumentsOf(verb)) {
        const std::string name = argument->get_name(true);
        const bool isNext = i == place || (i < place && argument->get_allow_extra_args());
        form += isNext ? " [" + name + "]" : " " + name;
        if (isNext)
            meaning = argument->get_description();
        ++i;
    }
    return form + "  " + meaning;
}

std::vector<std::string> namesOf(const CLI::App& program)
{
    std::vector<std::string> names = {"help", "exit"};
    for (const CLI::App* verb : program.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(verb->get_name());
    return names;
}
} // namespace

Tab tabBehind(const std::string& line, const CLI::App& program)
{
    const std::vector<std::string> words = wordsBehindWhich(line);
    if (words.empty())
        return {};
    const std::string& verbName = words.front();
    if (words.size() == 1 || (words.size() == 2 && verbName == "help"))
        return complete(words.back(), namesOf(program));
    const auto found = program.get_subcommands(
        [&](const CLI::App* candidate) { return candidate->get_name() == verbName; });
    if (found.empty())
        return {};
    const CLI::App& verb = *found.front();
    if (words.back().compare(0, 2, "--") == 0) {
        std::vector<std::string> options = optionsOf(program);
        for (const std::string& option : optionsOf(verb))
            options.push_back(option);
        std::sort(options.begin(), options.end());
        options.erase(std::unique(options.begin(), options.end()), options.end());
        return complete(words.back(), options);
    }
    if (verbName == "watch")
        return complete(words.back(), namesOf(program));
    Tab tab;
    tab.hint = hintOf(verb, words.size() - 2);
    return tab;
}
