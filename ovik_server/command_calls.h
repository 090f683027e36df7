#pragma once

#include "ovik_server/command_table.h"
#include "ovik_server/fields.h"
#include "ovik_server/result.h"

/// Runs a command: reads its arguments, of which none is missing, and calls the C API.
using Call = status_t(const Fields& in, Result& out);

/// What runs a command of the table.
Call* callOf(const Command& command);
