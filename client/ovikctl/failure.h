#pragma once

#include "ovik_client.h"

#include <stdexcept>
#include <string>

/// What the program ends with; told in the manual.
enum ExitCode {
    allDone = 0,
    refused = 1, ///< the service answered a failure
    wrongUsage = 2,
    timedOut = 3,
    noPermission = 4,
    noService = 8
};

/// Why a verb cannot go on, in words that end with what cures it.
struct Failure : std::runtime_error {
    Failure(ExitCode exitCode, const std::string& text,
            ovik_client_error clientError = OVIK_CLIENT_OK, int errorNumber = 0)
        : std::runtime_error(text), code(exitCode), error(clientError), systemError(errorNumber)
    {
    }
    ExitCode code;
    ovik_client_error error; ///< if it is one of the client library's
    int systemError;         ///< errno, where the client library tells it
};

/// An error of the client library with the socket at @p path; reads errno.
Failure failureOf(ovik_client_error error, const std::string& path);

/// "-12: what it means; what cures it".
std::string statusInWords(status_t status);

/// What cures a status, without a full stop; empty when nothing does.
const char* cureOf(status_t status);
