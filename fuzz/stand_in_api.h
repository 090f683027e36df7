#pragma once

#include "IProxy/ovik_status.h"

#include <fuzzer/FuzzedDataProvider.h>

/// A fake C API: its answers are generated from the input.
struct StandIn {
    FuzzedDataProvider* input = nullptr;
    int calls = 0;
    int sleeps = 0;            ///< during the wait for an outcome
    status_t status = OVIK_OK; ///< of the latest call
};
extern StandIn standIn;
