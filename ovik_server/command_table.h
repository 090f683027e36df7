#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// How a success is answered. A failure is answered with its status alone.
enum class Shape {
    Status,     ///< "0"
    Unsigned,   ///< "0 75"
    Signed,     ///< "0 -3"; a flag as 0 or 1
    Size,       ///< "0 12345678901"
    Text,       ///< "0 " and a text to the end of the message
    SystemInfo, ///< "0 name,12,513": module name, hardware code, manufacturer code
    Bytes,      ///< "0 01,AB,00"
    Outcome,    ///< "0 -3", for a Wi-Fi scan "0 -3;service;command;result"
};

enum class ArgumentKind { None, Number, Text };

struct Argument {
    const char* name = nullptr;
    ArgumentKind kind = ArgumentKind::None;
    const char* example = nullptr; ///< works with the simulated panel
    const char* meaning = nullptr;
    bool isSecret = false; ///< may hold a password: to be kept out of logs and histories
};

/// One command of the protocol, as all that speak it know it: the service, its clients, its manual.
struct Command {
    const char* word;
    std::array<Argument, 4> arguments; ///< all but those of kind None must be given
    Shape shape;                       ///< of the answer to a success
    const char* answer;                ///< the name of its value
    const char* errorName;             ///< in the log line of a failure
    const char* help;                  ///< one line

    int argumentCount() const;
    bool hasSecret() const;
};

/// The whole protocol, in the order of comparison; the rows are in commands.def.
extern const std::array<Command, 47> commandTable;

/// The command of that exact word, or null.
const Command* findCommand(std::string_view word);
