#include "client/ovikctl/command_line.h"

#include "client/ovikctl/output.h"
#include "client/ovikctl/verbs.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <pwd.h>

namespace
{
const char* const groupOfCommands = "Commands of the service";

/// Quotes the text for a shell where necessary.
std::string shellWord(const std::string& text)
{
    return text.find_first_of("{\"") == std::string::npos ? text : "'" + text + "'";
}

std::string exampleOf(const Command& command)
{
    std::string example = std::string("Example: ovikctl ") + command.word;
    for (const Argument& argument : command.arguments)
        example += " " + shellWord(argument.example);
    return example;
}

/// CLI11 splits "[a,b]" among several arguments as a list. An appended NUL, which no program
/// argument can have, prevents that until the word is read as a C string.
void keepWhole(std::string& word)
{
    if (!word.empty() && word.back() == ']')
        word += '\0';
}

std::vector<std::string> withoutNul(const std::vector<std::string>& words)
{
    std::vector<std::string> texts(words);
    for (std::string& text : texts)
        text.resize(strlen(text.c_str()));
    return texts;
}
/// Used instead of the library's range check, which accepts "nan". Returns the error, or "".
std::string isSeconds(const std::string& text)
{
    double seconds = 0;
    if (CLI::detail::lexical_cast(text, seconds) && seconds >= 0.001 && seconds <= 1000000)
        return "";
    return "give a number of seconds from 0.001 to 1000000";
}

uid_t userOf(const std::string& name)
{
    if (const passwd* const entry = getpwnam(name.c_str()))
        return entry->pw_uid;
    uid_t user = 0;
    const char* const end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data(), end, user);
    if (error != std::errc() || stop != end)
        throw CLI::ValidationError("--service-user",
                                   "there is no user \"" + name + "\": give a name or a number");
    return user;
}
} // namespace

std::vector<const CLI::Option*> argumentsOf(const CLI::App& verb)
{
    return verb.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<std::string> optionsOf(const CLI::App& verb)
{
    std::vector<std::string> names;
    for (const CLI::Option* option : verb.get_options()) {
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

CommandLine::CommandLine(Settings defaults, WithoutVerb withoutVerb)
    : m_app("Asks ovik_server, the service of an operator panel.\n"
            "Without a command, at a terminal: a prompt.",
            "ovikctl"),
      m_settings(std::move(defaults)), m_withoutVerb(withoutVerb)
{
    m_app.require_subcommand(0, 1);
    m_app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    m_app.get_formatter()->column_width(28);
    m_app.footer(
        "Exit status: 0 done, 1 the service answered a failure, 2 wrong usage, 3 time-out,\n"
        "4 no permission, 8 no service.");
    addOptions();
    addVerbs();
    addCommands();
}

void CommandLine::addOptions()
{
    m_app.set_help_flag("-h,--help", "Print what the command does and takes");
    m_app.set_version_flag("--version", "ovikctl " OVIK_VERSION, "Print the version");
    m_app.add_flag("--json", m_settings.json, "Print one JSON object per command");
    m_app.add_flag("-q,--quiet", m_settings.quiet, "Print failures only");
    m_app.add_option("--socket", m_settings.socket, "Where the service listens")
        ->option_text("PATH");
    m_app
        .add_option_function<std::string>(
            "--service-user",
            [this](const std::string& name) { m_settings.serviceUser = userOf(name); },
            "Who runs the service, when neither root nor you")
        ->option_text("USER");
    m_app
        .add_option("--timeout", m_settings.timeout,
                    "How long to wait for an answer; 30, for serviceCommand 70, for doctor 5")
        ->option_text("SECONDS")
        ->check(isSeconds);
}

CLI::App& CommandLine::addVerb(const char* name, const char* help, std::function<int()> action)
{
    CLI::App* const verb = m_app.add_subcommand(name, help);
    verb->fallthrough();
    verb->group("Tools");
    verb->callback([this, action = std::move(action)] { m_action = action; });
    return *verb;
}

void CommandLine::addCommands()
{
    for (const Command& command : commandTable) {
        CLI::App& verb = addVerb(command.word, command.help, [this, &command] {
            return runRequest(m_settings, requestOf(command, withoutNul(m_words)));
        });
        verb.group(groupOfCommands);
        verb.footer(exampleOf(command));
        for (const Argument& argument : command.arguments) {
            verb.add_option_function<std::string>(
                    argument.name, [this](const std::string& word) { m_words.push_back(word); },
                    argument.meaning)
                ->option_text(argument.kind == ArgumentKind::Number ? "NUMBER" : "TEXT")
                ->required();
        }
    }
}

void CommandLine::addVerbs()
{
    addVerb("raw", "Sends requests as they are, such as 'setBuzzerMode;1'",
            [this] { return runRaw(m_settings, withoutNul(m_words)); })
        .add_option("request", m_words, "Sent in turn; without any, the lines of standard input")
        ->option_text("REQUEST...");
    addVerb("batch", "Sends the requests of a file without waiting for each answer",
            [this] { return runBatch(m_settings, m_word); })
        .add_option("file", m_word, "One request in each line; - is standard input")
        ->option_text("FILE")
        ->required();
    addVerb("list", "Tells of every command", [this] { return runList(m_settings); });
    addVerb("wait", "Waits until the service answers", [this] {
        return runWait(m_settings, m_forPlatform);
    }).add_flag("--platform", m_forPlatform, "Until the platform answers through it");
    CLI::App& watch = addVerb("watch", "Asks again and again, until Ctrl-C", [this] {
        return runWatch(m_settings, withoutNul(m_words), m_interval);
    });
    watch.add_option("command", m_words, "Such as getBrightness or 'getHWPluginIO 0 1'")
        ->option_text("COMMAND...")
        ->required();
    watch.add_option("--interval", m_interval, "From one round to the next, 1")
        ->option_text("SECONDS")
        ->check(isSeconds);
    addVerb("doctor", "Finds out what is wrong, and changes nothing",
            [this] { return runDoctor(m_settings); });
    addVerb("completion", "Prints a shell's completion of this program",
            [this] { return runCompletion(m_word, m_app); })
        .add_option("shell", m_word, "bash or zsh")
        ->option_text("SHELL")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh"}));
}

std::string CommandLine::advice() const
{
    const auto verbs = m_app.get_subcommands();
    if (!verbs.empty())
        return "ovikctl " + verbs.front()->get_name() +
               " --help tells what it takes; a text that begins with \"-\" stands behind \"--\"";
    return "ovikctl --help tells the commands, ovikctl raw sends a request as it is";
}

void CommandLine::parse(std::vector<std::string> words)
{
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    for (std::string& word : words)
        keepWhole(word);
    std::reverse(words.begin(), words.end());
    m_app.parse(std::move(words));
}

int CommandLine::run(std::vector<std::string> words)
{
    try {
        parse(std::move(words));
        if (!m_action)
            return m_withoutVerb(m_settings);
        if (m_settings.quiet && !freopen("/dev/null", "w", stdout))
            return wrongUsage;
        return m_action();
    } catch (const CLI::Success& asked) { // help or the version was requested
        return m_app.exit(asked);
    } catch (const CLI::ParseError& error) {
        complain(std::string(error.what()) + "; " + advice());
        return wrongUsage;
    } catch (const Failure& failure) {
        complain(failure.what());
        return failure.code;
    }
}
