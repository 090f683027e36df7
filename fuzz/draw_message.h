#pragma once

#include "fuzz/draw.h"

#include <systemd/sd-bus.h>

#include <string>

// Contents of D-Bus messages, generated from the input.

/// Valid UTF-8 without NUL, mostly short.
std::string drawText(FuzzedDataProvider& input);

/// First choice is @p expected; otherwise one basic type differs, or the signature is random.
std::string drawSignature(FuzzedDataProvider& input, const std::string& expected);

/// Appends values of the types in @p signature; false when @p signature is invalid.
bool appendValues(FuzzedDataProvider& input, sd_bus_message* message, const std::string& signature);
