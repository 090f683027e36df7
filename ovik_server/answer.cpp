#include "ovik_server/answer.h"

#include <cstdio>

void writeFailure(Response& resp, status_t status) { snprintf(resp, sizeof resp, "%d", status); }

void write(Response& resp, const answer::Status&) { snprintf(resp, sizeof resp, "%d", OVIK_OK); }

void write(Response& resp, const answer::Unsigned& number)
{
    snprintf(resp, sizeof resp, "%d %u", OVIK_OK, static_cast<unsigned int>(number.value));
}

void write(Response& resp, const answer::Signed& number)
{
    snprintf(resp, sizeof resp, "%d %d", OVIK_OK, number.value);
}

void write(Response& resp, const answer::Size& size)
{
    snprintf(resp, sizeof resp, "%d %lld", OVIK_OK, static_cast<long long>(size.value));
}

void write(Response& resp, const answer::Text& text)
{
    snprintf(resp, sizeof resp, "%d %s", OVIK_OK, text.value);
}

void write(Response& resp, const answer::SystemInfo& info)
{
    snprintf(resp, sizeof resp, "%d %s,%d,%d", OVIK_OK, info.moduleName, info.hwCode,
             info.manufactureCode);
}

/// Formatted by hand: snprintf() for each of thousands of bytes would take longer than the read.
void write(Response& resp, const answer::Bytes& bytes)
{
    static const char digits[] = "0123456789ABCDEF";
    // A byte takes three characters; bytes that do not fit completely are left out.
    constexpr size_t byteLength = 3;
    auto length = static_cast<size_t>(snprintf(resp, sizeof resp, "%d", OVIK_OK));
    for (int i = 0; i < bytes.count && length + byteLength < sizeof resp; ++i) {
        const unsigned char byte = bytes.value.get()[i];
        resp[length++] = i == 0 ? ' ' : ',';
        resp[length++] = digits[byte >> 4];
        resp[length++] = digits[byte & 15];
    }
    resp[length] = 0;
}

void write(Response& resp, const answer::Outcome& outcome)
{
    snprintf(resp, sizeof resp, "%d %d%s", OVIK_OK, outcome.result, outcome.details.constData());
}
