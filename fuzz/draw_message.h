#pragma once

#include "fuzz/draw.h"

#include <systemd/sd-bus.h>

#include <string>

// Contents of D-Bus messages, drawn from the input.

/// Valid UTF-8 without NUL, mostly short.
std::string drawText(FuzzedDataProvider& input);

/// First choice is @p expected; else that with one basic type more, less or changed, or anything.
std::string drawSignature(FuzzedDataProvider& input, const std::string& expected);

/// Appends values of @p signature's types; false when that is no valid signature.
bool appendValues(FuzzedDataProvider& input, sd_bus_message* message, const std::string& signature);
