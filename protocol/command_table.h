#pragma once

#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

/// A command by its word: CommandId::getBrightness.
enum class CommandId {
#define COMMAND(word, ...) word,
#include "protocol/commands.def"
};

/// The effect of a command on the panel and the service.
enum class Effect { Reads, Writes, Ends };

/// The form of a successful answer. The answer to a failure is its status only.
enum class Shape {
    Status,     ///< "0"
    Unsigned,   ///< "0 75"
    Signed,     ///< "0 -3"; a flag as 0 or 1
    Size,       ///< "0 12345678901"
    Text,       ///< "0 " and a text up to the end of the message
    SystemInfo, ///< "0 name,12,513": module name, hardware code, manufacturer code
    Bytes,      ///< "0 01,AB,00"
    Outcome,    ///< "0 -3", for a Wi-Fi scan "0 -3;service;command;result"
};

enum class ArgumentKind { Number, Text };

/// The query of a plug-in point's mode, which must be 2 for a write to that point.
enum class ModeQuery { None, getHWPluginIoMode, getHWPluginLedMode };

struct Argument {
    const char* name = nullptr;
    ArgumentKind kind = ArgumentKind::Text;
    const char* example = nullptr; ///< works with the simulated panel
    const char* meaning = nullptr;
    bool isSecret = false; ///< may contain a password: must not appear in logs and histories
};

/// The arguments of a command; each is required.
class Arguments
{
public:
    constexpr void add(const Argument& argument) { m_arguments[m_count++] = argument; }

    constexpr size_t size() const { return m_count; }
    const Argument* begin() const { return m_arguments.data(); }
    const Argument* end() const { return begin() + m_count; }
    const Argument& operator[](size_t place) const { return m_arguments[place]; }

private:
    std::array<Argument, 4> m_arguments;
    size_t m_count = 0;
};

/// One command of the protocol, for the service, its clients and the documents.
struct Command {
    CommandId id;
    const char* word;
    Effect effect;
    Shape shape;        ///< of the answer to a success
    const char* answer; ///< the name of its value
    const char* help;   ///< one line
    const char* logName;
    Arguments arguments;
    bool isAnswerSecret = false; ///< may contain a password: must not appear in logs
    int textLimit = 0;           ///< a longer text answer is cut, in bytes; 0: as many as fit
    ModeQuery modeQuery = ModeQuery::None;

    int argumentCount() const { return static_cast<int>(arguments.size()); }
    bool hasSecret() const; ///< in an argument
};

constexpr CommandId commandIds[] = {
#define COMMAND(word, ...) CommandId::word,
#include "protocol/commands.def"
};
constexpr size_t commandCount = std::size(commandIds);

/// The whole protocol, in the order in which words are compared; the rows are in commands.def.
extern const std::array<Command, commandCount> commandTable;

/// The command of that exact word, or null.
const Command* findCommand(std::string_view word);

/// A status of a response.
struct StatusRow {
    int number;
    const char* meaning;
};

constexpr int statusNumbers[] = {
#define STATUS(name, number, meaning) number,
#include "protocol/statuses.def"
};
constexpr size_t statusCount = std::size(statusNumbers);

/// The rows are in statuses.def.
extern const std::array<StatusRow, statusCount> statusTable;

// The names of properties in documents and lists.
const char* nameOf(Effect effect);
const char* nameOf(Shape shape);
const char* nameOf(ArgumentKind kind);
/// The word of the command that queries the mode.
const char* nameOf(ModeQuery query);
