#include "ovik_server/ovik_server.h"

#include "ovik_server/command_calls.h"

#include <cstdio>
#include <cstring>

namespace
{
/// The response to the request being answered.
Response resp;

void logFailure(const char* name, const CallStatus& failure)
{
    if (failure.logText)
        printf("OVIK_SERVER: %s error %s\n", name, failure.logText);
    else
        printf("OVIK_SERVER: %s error %d\n", name, failure.status);
}

/// Writes the response. True when the service is to end.
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

/// Diagnostics of the application and the backends are not printed by this program.
void logOVIKErrors(char*) {}

bool OvikServer::handleReq(const char* req, int)
{
    if (respond(Fields(QString::fromUtf8(req))))
        m_quit = true;
    sendResp(resp, static_cast<int>(strlen(resp)) + 1);
    return true;
}
