// The reference is made from the table of commands and from exchanges with the real service in
// front of the simulated panel. scripts/reference.sh writes it; this finds it out of date.

#include "IProxy/ovik_status.h"
#include "client/ovik_client.h"
#include "ovik_server/command_table.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

namespace
{
/// Examples by command word.
using Exchanges = std::map<std::string, std::pair<std::string, std::string>>;

std::string exampleOf(const Command& command)
{
    std::string request = command.word;
    for (int i = 0; i < command.argumentCount(); ++i)
        request += std::string(";") + command.arguments[static_cast<size_t>(i)].example;
    return request;
}

/// Sends each command's example, and only keeps what comes of it the second time: what one of them
/// reads another has set by then. The table's first, "quit", comes last.
Exchanges exchangeAll()
{
    PrivateBus bus;
    Process panel(commandOf(OVIK_PANEL_SIM_PATH));
    Server server;
    Exchanges exchanges;
    if (!server.waitForPlatform())
        return exchanges;
    Client client(serverSocket);
    const auto exchange = [&](const Command& command) {
        const std::string request = exampleOf(command);
        exchanges[command.word] = {request, client.request(request)};
    };
    const std::string last = "quit";
    for (int round = 0; round < 2; ++round) {
        for (const Command& command : commandTable) {
            if (command.word != last)
                exchange(command);
        }
    }
    exchange(*findCommand(last));
    return exchanges;
}

const char* formOf(Shape shape)
{
    switch (shape) {
    case Shape::Status:
        return "status";
    case Shape::Unsigned:
        return "unsigned";
    case Shape::Signed:
        return "signed";
    case Shape::Size:
        return "64-bit";
    case Shape::Text:
        return "text";
    case Shape::SystemInfo:
        return "system info";
    case Shape::Bytes:
        return "bytes";
    case Shape::Outcome:
        return "outcome";
    }
    return "";
}

const char* kindOf(const Argument& argument)
{
    return argument.kind == ArgumentKind::Number ? "number" : "text";
}

/// What a text must look like where "|" ends a cell.
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

// --- Markdown ---

std::string indexInMarkdown()
{
    std::ostringstream out;
    out << "| command | what it does |\n|---|---|\n";
    for (const Command& command : commandTable)
        out << "| [`" << command.word << "`](#" << lowered(command.word) << ") | "
            << cell(command.help) << " |\n";
    return out.str();
}

std::string commandsInMarkdown(const Exchanges& exchanges)
{
    std::ostringstream out;
    for (const Command& command : commandTable) {
        const auto& [request, response] = exchanges.at(command.word);
        out << "### " << command.word << "\n\n" << command.help << ".\n\n";
        for (int i = 0; i < command.argumentCount(); ++i) {
            const Argument& argument = command.arguments[static_cast<size_t>(i)];
            out << "- `" << argument.name << "` (" << kindOf(argument) << "): " << argument.meaning
                << "\n";
        }
        out << "- Answer (" << formOf(command.shape) << ")";
        if (*command.answer)
            out << ": `" << command.answer << "`";
        out << "\n\n      " << request << "  ->  " << response << "\n\n";
    }
    return out.str();
}

const status_t statuses[] = {OVIK_OK,      OVIK_NO_PLATFORM, OVIK_NO_APPLICATION, OVIK_REPLY_ERROR,
                             OVIK_NOT_RUN, OVIK_TIMEOUT,     OVIK_EMPTY_SLOT,     OVIK_WRONG_MODE};

std::string statusesInMarkdown()
{
    std::ostringstream out;
    out << "| status | meaning |\n|---|---|\n";
    for (const status_t status : statuses)
        out << "| `" << status << "` | " << cell(ovik_client_status_text(status)) << " |\n";
    return out.str();
}

// --- scdoc ---

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

std::string commandsInManual()
{
    std::ostringstream out;
    for (const Command& command : commandTable) {
        out << "*" << command.word << "*";
        for (int i = 0; i < command.argumentCount(); ++i)
            out << ";_" << command.arguments[static_cast<size_t>(i)].name << "_";
        out << "\n\t" << escaped(command.help) << ". Answer: " << formOf(command.shape);
        if (*command.answer)
            out << ", " << escaped(command.answer);
        out << ".";
        for (int i = 0; i < command.argumentCount(); ++i) {
            const Argument& argument = command.arguments[static_cast<size_t>(i)];
            out << " _" << argument.name << "_: " << escaped(argument.meaning) << ".";
        }
        out << "\n\n";
    }
    return out.str();
}

std::string statusesInManual()
{
    std::ostringstream out;
    for (const status_t status : statuses)
        out << "*" << status << "*\n\t" << escaped(ovik_client_status_text(status)) << "\n\n";
    return out.str();
}

// --- The documents ---

std::string contentsOf(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The document with what stands between the two marks of a part replaced by @p text.
std::string replaced(const std::string& document, const std::string& begin, const std::string& end,
                     const std::string& text)
{
    const size_t first = document.find(begin);
    const size_t last = document.find(end);
    if (first == std::string::npos || last == std::string::npos || last < first)
        return "no marks " + begin + " and " + end;
    const size_t from = first + begin.size();
    return document.substr(0, from) + "\n" + text + document.substr(last);
}

/// Without the values of the counters, which count while the examples run.
std::string steady(const std::string& document)
{
    static const std::regex counter("(Counter  ->  0 )[0-9]+");
    return std::regex_replace(document, counter, "$1…");
}

class Reference : public testing::Test
{
protected:
    /// The document is what it should be, or is written so if that was asked for.
    static void check(const std::string& name, const std::string& expected)
    {
        const std::string path = std::string(OVIK_SOURCE_DIR "/") + name;
        const bool isCurrent = steady(contentsOf(path)) == steady(expected);
        if (!isCurrent && getenv("OVIK_WRITE_REFERENCE"))
            std::ofstream(path) << expected;
        else
            EXPECT_EQ(steady(contentsOf(path)), steady(expected))
                << name << " is out of date: run scripts/reference.sh";
    }
};

TEST_F(Reference, TheDocumentTellsOfEveryCommand)
{
    const Exchanges exchanges = exchangeAll();
    ASSERT_EQ(exchanges.size(), commandTable.size()) << "the platform was not found";
    for (const auto& [word, exchange] : exchanges)
        EXPECT_EQ(exchange.second.rfind("0", 0), 0u) << exchange.first << " " << exchange.second;

    std::string document = contentsOf(OVIK_SOURCE_DIR "/docs/protocol.md");
    document = replaced(document, "<!-- statuses: scripts/reference.sh -->\n",
                        "<!-- end of statuses -->", statusesInMarkdown() + "\n");
    document = replaced(document, "<!-- index: scripts/reference.sh -->\n", "<!-- end of index -->",
                        indexInMarkdown() + "\n");
    document = replaced(document, "<!-- commands: scripts/reference.sh -->\n",
                        "<!-- end of commands -->", commandsInMarkdown(exchanges));
    check("docs/protocol.md", document);
}

TEST_F(Reference, TheManualPageTellsOfEveryCommand)
{
    std::string page = contentsOf(OVIK_SOURCE_DIR "/packaging/man/ovik_protocol.7.scd");
    page = replaced(page, "; statuses: scripts/reference.sh\n", "; end of statuses",
                    statusesInManual());
    page = replaced(page, "; commands: scripts/reference.sh\n", "; end of commands",
                    commandsInManual());
    check("packaging/man/ovik_protocol.7.scd", page);
}
} // namespace
