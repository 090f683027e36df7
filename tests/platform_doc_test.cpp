// docs/platform.md documents the service's calls for authors of platforms. Its tables must agree
// with the interface files, the records, and the actual calls of each command.

#include "dbus_ovik/OVIKDBusRecords.h"
#include "tests/support/commands.h"
#include "tests/support/introspection.h"

#include <gtest/gtest.h>

#include <QDBusMetaType>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

namespace
{
using Texts = std::vector<std::string>;

/// Every match of the only group in @p pattern.
Texts matches(const std::string& text, const char* pattern)
{
    const std::regex regex(pattern);
    Texts found;
    std::transform(std::sregex_iterator(text.begin(), text.end(), regex), {},
                   std::back_inserter(found), [](const std::smatch& match) { return match[1]; });
    return found;
}

Texts codeWords(const std::string& cell) { return matches(cell, "`([^`]*)`"); }

/// The body of the table with the header row @p head, row by row.
std::vector<Texts> tableRows(const std::string& head)
{
    std::ifstream page(OVIK_PLATFORM_DOC);
    std::string line;
    while (std::getline(page, line) && line != head) {
    }
    std::getline(page, line); // the line below the header
    std::vector<Texts> rows;
    while (std::getline(page, line) && !line.empty())
        rows.push_back(matches(line, "\\|([^|]+)"));
    return rows;
}

struct DocumentedCall {
    std::string path;
    std::string interface;
    std::string method;
    std::string arguments;
    std::string reply;
    std::string command;
    std::string guard; ///< called before a write
};

/// The table of calls, with one entry per command.
std::vector<DocumentedCall> documentedCalls()
{
    std::vector<DocumentedCall> calls;
    Texts object;
    for (const Texts& cells :
         tableRows("| object and interface | methods | signature | socket commands, in the same "
                   "order |")) {
        // An empty cell repeats the object of the row above.
        if (const Texts named = codeWords(cells.at(0)); !named.empty())
            object = named;
        const Texts methods = codeWords(cells.at(1));
        const std::string types = std::regex_replace(cells.at(2), std::regex(" "), "");
        const std::string arrow = "→";
        const size_t split = types.find(arrow);
        Texts commands = codeWords(cells.at(3));
        std::string guard;
        if (cells.at(3).find("` after `") != std::string::npos) {
            guard = commands.back();
            commands.pop_back();
        }
        EXPECT_EQ(commands.size(), methods.size()) << cells.at(1);
        for (size_t i = 0; i < std::min(methods.size(), commands.size()); ++i)
            calls.push_back({object.at(0), object.at(1), methods[i], types.substr(0, split),
                             types.substr(split + arrow.size()), commands[i], guard});
    }
    return calls;
}

TEST(PlatformDoc, TellsTheCallsOfEveryCommandAndNoOthers)
{
    // The known calls of each command, without the values.
    std::set<std::string> made;
    for (const CommandRow& row : commandRows()) {
        std::string text = row.word;
        for (const std::string& call : row.calls)
            text += ": " + call.substr(0, call.find(')') + 1);
        made.insert(std::regex_replace(text, std::regex("/HWPlugin/\\d/"), "/HWPlugin/N/"));
    }

    std::set<std::string> documented;
    for (const DocumentedCall& call : documentedCalls()) {
        const std::string object = ": " + call.path + ' ' + call.interface + '.';
        std::string text = call.command;
        if (!call.guard.empty())
            text += object + call.guard + "(u)"; // the point's number is the argument
        text += object + call.method + '(' + call.arguments + ')';
        documented.insert(text);
    }
    EXPECT_EQ(documented, made);
}

TEST(PlatformDoc, TellsTheSignaturesOfTheInterfaceFiles)
{
    for (const DocumentedCall& call : documentedCalls()) {
        auto interfaces = introspectedFile(call.interface);
        EXPECT_EQ(interfaces[call.interface].methods[call.method],
                  call.arguments + '>' + call.reply)
            << call.interface << '.' << call.method;
    }
}

template <class Record>
std::string signatureOf()
{
    return QDBusMetaType::typeToSignature(qDBusRegisterMetaType<Record>());
}

TEST(PlatformDoc, TellsEveryRecordWithItsSignature)
{
    const std::map<std::string, std::string> sent = {
        {"systemInfo", signatureOf<systemInfo>()},
        {"partitionInfo", signatureOf<partitionInfo>()},
        {"ovikStorageInfo", signatureOf<ovikStorageInfo>()},
        {"timeZoneInfo", signatureOf<timeZoneInfo>()},
        {"accelerometerAxisData", signatureOf<accelerometerAxisData>()},
        {"accelerometerAngleData", signatureOf<accelerometerAngleData>()},
    };
    std::map<std::string, std::string> documented;
    for (const Texts& cells : tableRows("| record | signature | fields |")) {
        for (const std::string& record : codeWords(cells.at(0)))
            documented[record] = matches(cells.at(1), "(\\S+)").at(0);
    }
    EXPECT_EQ(documented, sent);
}

TEST(PlatformDoc, TellsTheSizeOfEveryByteField)
{
    const std::map<std::string, size_t> sizes = {
        {"serialNo", sizeof(systemInfo::serialNo)},
        {"moduleName", sizeof(systemInfo::moduleName)},
        {"manufactureCode", sizeof(systemInfo::manufactureCode)},
        {"version", sizeof(partitionInfo::version)},
        {"mountPoint", sizeof(ovikStorageInfo::mountPoint)},
    };
    std::map<std::string, size_t> documented;
    for (const Texts& cells : tableRows("| record | signature | fields |")) {
        for (const std::string& field : matches(cells.at(2), "(\\w+\\[\\d+\\])"))
            documented[field.substr(0, field.find('['))] =
                std::stoul(field.substr(field.find('[') + 1));
    }
    EXPECT_EQ(documented, sizes);
}
} // namespace
