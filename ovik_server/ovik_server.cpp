#include "ovik_server/ovik_server.h"

#include "ovik_server/command_calls.h"

#include <cstdio>
#include <cstring>

namespace
{
/// The response to the current request.
Response resp;

void logFailure(const char* name, const CallStatus& failure)
{
    if (failure.logText)
        printf("OVIK_SERVER: %s error %s\n", name, failure.logText);
    else
        printf("OVIK_SERVER: %s error %d\n", name, failure.status);
}

/// Writes the response. @return true when the service must end
bool respond(const Fields& fields)
{
    const Command* const command = findCommand(fields.word().constData());
    if (!command || fields.count() <= command->argumentCount()) {
        writeFailure(resp, OVIK_NOT_RUN);
        return false;
    }
    const CallStatus result = runCommand(*command, fields, resp);
    if (result.status != OVIK_OK) {
        logFailure(command->logName, result);
        writeFailure(resp, result.status);
    }
    return command->effect == Effect::Ends;
}
} // namespace

/// This program discards the diagnostics of the application and the backends.
void logOVIKErrors(char*) {}

bool OvikServer::handleReq(const char* req, int)
{
    if (respond(Fields(QString::fromUtf8(req))))
        m_quit = true;
    sendResp(resp, static_cast<int>(strlen(resp)) + 1);
    return true;
}
