#pragma once

#include "ovik_server/answer.h"
#include "ovik_server/call_status.h"
#include "ovik_server/fields.h"

/// "serviceCommand": a Wi-Fi scan waits for its result, any other command only for the result of
/// an earlier scan.
CallStatus serviceCommand(const Fields& in, answer::Outcome& out);

/**
 * Receives the result of a service command, on the application thread. The result is stored only
 * while a request waits for one; a null text counts as empty.
 */
extern "C" void onCommandResult(const char* service, const char* cmd, const char* json);
