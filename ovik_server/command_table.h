#pragma once

#include "ovik_server/fields.h"
#include "ovik_server/result.h"

#include <array>

class OvikServer;

enum class ArgumentKind { None, Number, Text };

struct Argument {
    const char* name = nullptr;
    ArgumentKind kind = ArgumentKind::None;
};

/// One command of the protocol.
struct Command {
    const char* word;
    std::array<Argument, 4> arguments; ///< all but those of kind None must be given
    Shape shape;                       ///< of the answer to a success
    const char* errorName;             ///< in the log line of a failure
    status_t (*call)(OvikServer& server, const Fields& in, Result& out);

    int argumentCount() const;
};

/// The whole protocol, in the order of comparison.
extern const std::array<Command, 47> commandTable;

/// The command of that exact word, or null.
const Command* findCommand(const QString& word);
