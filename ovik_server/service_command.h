#pragma once

#include "ovik_server/fields.h"
#include "ovik_server/result.h"

/// "serviceCommand": a Wi-Fi scan waits for its outcome, any other command only for an earlier
/// scan.
status_t serviceCommand(const Fields& in, Result& out);

/**
 * Receives the outcome of a service command, on the application thread. It is stored only while a
 * request waits for one; a null text counts as empty.
 */
extern "C" void onCommandResult(const char* service, const char* cmd, const char* json);
