#pragma once

#include "ovik_server/answer.h"
#include "ovik_server/call_status.h"
#include "ovik_server/fields.h"
#include "protocol/command_table.h"

/// Runs a command by one call of the C API, after a query of the point's mode where the row has
/// one. No argument may be missing. Only a success is written to @p resp.
CallStatus runCommand(const Command& command, const Fields& in, Response& resp);
