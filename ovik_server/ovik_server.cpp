#include "ovik_server/ovik_server.h"

#include "ovik_server/command_calls.h"

#include <cstdio>
#include <cstring>

namespace
{
/// The response to the request being answered.
char resp[10000];

/// By hand: formatting thousands of bytes one by one would take longer than reading them.
void writeBytes(const Result& result)
{
    static const char digits[] = "0123456789ABCDEF";
    // A byte takes three characters; what does not fit whole is left out.
    constexpr size_t byteLength = 3;
    auto length = static_cast<size_t>(snprintf(resp, sizeof resp, "%d", OVIK_OK));
    for (int i = 0; i < result.byteCount && length + byteLength < sizeof resp; ++i) {
        const unsigned char byte = result.bytes.get()[i];
        resp[length++] = i == 0 ? ' ' : ',';
        resp[length++] = digits[byte >> 4];
        resp[length++] = digits[byte & 15];
    }
    resp[length] = 0;
}

/// What does not fit is cut: a response has at most 9999 bytes and its NUL.
void writeSuccess(Shape shape, const Result& result)
{
    switch (shape) {
    case Shape::Status:
        snprintf(resp, sizeof resp, "%d", OVIK_OK);
        break;
    case Shape::Unsigned:
        snprintf(resp, sizeof resp, "%d %u", OVIK_OK, static_cast<unsigned int>(result.value));
        break;
    case Shape::Signed:
        snprintf(resp, sizeof resp, "%d %d", OVIK_OK, result.value);
        break;
    case Shape::Size:
        snprintf(resp, sizeof resp, "%d %lld", OVIK_OK, static_cast<long long>(result.size));
        break;
    case Shape::Text:
        snprintf(resp, sizeof resp, "%d %s", OVIK_OK, result.text);
        break;
    case Shape::SystemInfo:
        snprintf(resp, sizeof resp, "%d %s,%d,%d", OVIK_OK, result.text, result.hwCode,
                 result.manufactureCode);
        break;
    case Shape::Bytes:
        writeBytes(result);
        break;
    case Shape::Outcome:
        snprintf(resp, sizeof resp, "%d %d%s", OVIK_OK, result.value, result.outcome.constData());
        break;
    }
}

void writeFailure(status_t status) { snprintf(resp, sizeof resp, "%d", status); }

void logFailure(const char* name, status_t status)
{
    if (status == OVIK_TIMEOUT) // of the wait for an outcome; no call has this status
        printf("OVIK_SERVER: %s error timeout\n", name);
    else
        printf("OVIK_SERVER: %s error %d\n", name, status);
}

/// True when no request is to be read after this one.
bool answer(const Fields& fields)
{
    const Command* const command = findCommand(fields.word().constData());
    if (!command || fields.count() <= command->argumentCount()) {
        writeFailure(OVIK_NOT_RUN);
        return false;
    }
    Result result;
    const status_t status = callOf(*command)(fields, result);
    if (status == OVIK_OK) {
        writeSuccess(command->shape, result);
    } else {
        logFailure(command->errorName, status);
        writeFailure(status);
    }
    return result.isLast;
}
} // namespace

/// Diagnostics of the application and the backends are not printed by this program.
void logOVIKErrors(char*) {}

bool OvikServer::handleReq(const char* req, int)
{
    if (answer(Fields(QString::fromUtf8(req))))
        m_quit = true;
    sendResp(resp, static_cast<int>(strlen(resp)) + 1);
    return true;
}
