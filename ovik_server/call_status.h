#pragma once

#include "wrapper_ovik/ovik_c.h"

/// How the call of a command ended, and how a failure reads in the log: as its number, unless the
/// service's own failure has a text.
struct CallStatus {
    CallStatus(status_t s, const char* text = nullptr) : status(s), logText(text) {}

    status_t status;
    const char* logText;
};
