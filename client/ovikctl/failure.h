#pragma once

#include "ovik_client.h"

#include <stdexcept>
#include <string>

/// The program's exit codes; documented in the manual.
enum ExitCode {
    allDone = 0,
    refused = 1, ///< the service answered with a failure
    wrongUsage = 2,
    timedOut = 3,
    noPermission = 4,
    noService = 8
};

/// The reason why a verb failed. The text ends with the remedy.
struct Failure : std::runtime_error {
    Failure(ExitCode exitCode, const std::string& text,
            ovik_client_error clientError = OVIK_CLIENT_OK, int errorNumber = 0)
        : std::runtime_error(text), code(exitCode), error(clientError), systemError(errorNumber)
    {
    }
    ExitCode code;
    ovik_client_error error; ///< if it is one of the client library's
    int systemError;         ///< errno, where the client library sets it
};

/// An error of the client library with the socket at @p path; reads errno.
Failure failureOf(ovik_client_error error, const std::string& path);

/// "-12: meaning; remedy"
std::string statusInWords(status_t status);

/// The remedy for a status, without a full stop; may be empty.
const char* cureOf(status_t status);
