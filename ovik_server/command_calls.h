#pragma once

#include "ovik_server/answer.h"
#include "ovik_server/call_status.h"
#include "ovik_server/fields.h"
#include "protocol/command_table.h"

/// Runs a command, of which no argument is missing, by one call of the C API. A success is written
/// to @p resp, a failure is not.
CallStatus runCommand(const Command& command, const Fields& in, Response& resp);
