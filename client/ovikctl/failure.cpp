#include "client/ovikctl/failure.h"

#include <cerrno>
#include <cstring>

namespace
{
/// Errors that the reader can cure are explained without errno.
std::string reasonOf(ovik_client_error error, const std::string& path)
{
    switch (error) {
    case OVIK_CLIENT_NO_SERVICE:
        if (errno == EPROTOTYPE)
            return "who listens at " + path +
                   " is not ovik_server: stop it, then start ovik_server";
        return "no service at " + path +
               ": start it, systemctl start ovik_server, or name its socket with --socket";
    case OVIK_CLIENT_NO_PERMISSION:
        return "this user may not use " + path +
               ": be the service's user, as with sudo, or in the group that it lets in";
    case OVIK_CLIENT_TIMED_OUT:
        return "no answer in time: the service serves another client, one at a time, or waits for "
               "the platform, and may still carry out the request; wait longer with --timeout, or "
               "see what was done before you try again";
    case OVIK_CLIENT_CLOSED:
        return "the service closed the connection: it has ended; see why with journalctl -u "
               "ovik_server, and start it";
    case OVIK_CLIENT_BAD_ANSWER:
        return "who answers at " + path +
               " does not speak the protocol of ovik_server: stop it, then start ovik_server";
    case OVIK_CLIENT_BAD_REQUEST:
        return "the request is longer than the " + std::to_string(OVIK_CLIENT_REQUEST_MAX) +
               " bytes that the service takes: shorten its arguments";
    default:
        break;
    }
    if (errno == ENAMETOOLONG)
        return "a socket's path has at most 107 bytes: name it with a shorter --socket";
    return std::string(ovik_client_error_text(error)) + " (" + strerror(errno) +
           "): see the memory, with free, and the limits, with ulimit -a";
}

ExitCode exitCodeOf(ovik_client_error error)
{
    switch (error) {
    case OVIK_CLIENT_NO_PERMISSION:
        return noPermission;
    case OVIK_CLIENT_TIMED_OUT:
        return timedOut;
    case OVIK_CLIENT_BAD_REQUEST:
        return wrongUsage;
    case OVIK_CLIENT_SYSTEM:
        return errno == ENAMETOOLONG ? wrongUsage : noService;
    default:
        return noService;
    }
}
} // namespace

Failure failureOf(ovik_client_error error, const std::string& path)
{
    const int systemError = errno;
    return {exitCodeOf(error), reasonOf(error, path), error, systemError};
}

const char* cureOf(status_t status)
{
    switch (status) {
    case OVIK_NO_PLATFORM:
        return "ovikctl doctor tells which";
    case OVIK_NO_APPLICATION:
        return "read 0 to 65535 bytes; if you do, restart the service";
    case OVIK_REPLY_ERROR:
        return "see the platform's own log, or its calls with busctl monitor com.wenu.OVIK";
    case OVIK_NOT_RUN:
        return "ovikctl list tells the commands and their arguments";
    case OVIK_TIMEOUT:
        return "try again when the platform has ended the service's earlier command";
    case OVIK_EMPTY_SLOT:
        return "count the modules that are there, from 0; ovikctl doctor tells of the platform";
    case OVIK_WRONG_MODE:
        return "ask getHWPluginLedMode or getHWPluginIoMode which points have mode 2";
    default:
        return "";
    }
}

std::string statusInWords(status_t status)
{
    const std::string cure = cureOf(status);
    return std::to_string(status) + ": " + ovik_client_status_text(status) +
           (cure.empty() ? "" : "; " + cure);
}
