#pragma once

#include "IProxy/ovik_status.h"

#include <fuzzer/FuzzedDataProvider.h>

/// A C API with nothing behind it: its answers are drawn from the input.
struct StandIn {
    FuzzedDataProvider* input = nullptr;
    int calls = 0;
    int sleeps = 0;            ///< of the request that waits for an outcome
    status_t status = OVIK_OK; ///< of the latest call
};
extern StandIn standIn;
