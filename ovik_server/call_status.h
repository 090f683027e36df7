#pragma once

#include "wrapper_ovik/ovik_c.h"

/// The status of a command's call. The log shows a failure's text instead of its number, if any;
/// only failures of the service itself have one.
struct CallStatus {
    CallStatus(status_t s, const char* text = nullptr) : status(s), logText(text) {}

    status_t status;
    const char* logText;
};
