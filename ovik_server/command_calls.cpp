#include "ovik_server/command_calls.h"

#include "ovik_server/service_command.h"

#include <algorithm>

namespace
{
using namespace answer;

/// Scratch for text results.
char str[10000];
constexpr int moduleNameSize = 5;

/// The longest EEPROM read that is accepted; far more than fits into an answer.
constexpr int maxReadLength = 65535;

/// The mode in which a plug-in point may be set.
constexpr int settableMode = 2;

// --- call(), for each form of C function: passes its arguments and stores its answer ---

/// A command without a C function.
status_t call(std::nullptr_t, const Fields&, Status&) { return OVIK_OK; }

status_t call(status_t (*f)(int*), const Fields&, Number& out) { return f(&out.value); }

status_t call(status_t (*f)(int, int*), const Fields& in, Number& out)
{
    return f(in.number(1), &out.value);
}

status_t call(status_t (*f)(const char*, int*), const Fields& in, Signed& out)
{
    return f(in.text(1).constData(), &out.value);
}

status_t call(status_t (*f)(const char*, bool*), const Fields& in, Signed& out)
{
    bool flag = false;
    const status_t status = f(in.text(1).constData(), &flag);
    out.value = flag;
    return status;
}

status_t call(status_t (*f)(const char*, const char*, int*), const Fields& in, Signed& out)
{
    return f(in.text(1).constData(), in.text(2).constData(), &out.value);
}

status_t call(status_t (*f)(uint64_t*), const Fields&, Size& out) { return f(&out.value); }

// The C API does not terminate a text that fills its buffer, so terminate it here.

status_t call(status_t (*f)(char*, int), const Fields&, Text& out)
{
    const status_t status = f(str, out.size);
    str[out.size - 1] = 0;
    out.value = str;
    return status;
}

status_t call(status_t (*f)(const char*, char*, int), const Fields& in, Text& out)
{
    const status_t status = f(in.text(1).constData(), str, out.size);
    str[out.size - 1] = 0;
    out.value = str;
    return status;
}

status_t call(status_t (*f)(char*, int, unsigned char*, unsigned short*), const Fields&,
              SystemInfo& out)
{
    const status_t status = f(str, moduleNameSize, &out.hwCode, &out.manufactureCode);
    str[moduleNameSize] = 0; // the name may fill all five bytes
    out.moduleName = str;
    return status;
}

// Plug-in points.

status_t call(status_t (*f)(unsigned int, unsigned int, int*), const Fields& in, Signed& out)
{
    return f(in.unsignedNumber(1), in.unsignedNumber(2), &out.value);
}

status_t call(status_t (*f)(unsigned int, unsigned int, int, int*), const Fields& in, Signed& out)
{
    return f(in.unsignedNumber(1), in.unsignedNumber(2), in.number(3), &out.value);
}

status_t call(status_t (*f)(unsigned int, unsigned int, unsigned int, int*), const Fields& in,
              Signed& out)
{
    return f(in.unsignedNumber(1), in.unsignedNumber(2), in.unsignedNumber(3), &out.value);
}

status_t call(status_t (*f)(unsigned int, unsigned int, int, int, int*), const Fields& in,
              Signed& out)
{
    return f(in.unsignedNumber(1), in.unsignedNumber(2), in.number(3), in.number(4), &out.value);
}

// The C API represents an I/O point's value as one digit.

status_t call(status_t (*f)(unsigned int, unsigned int, unsigned char*, unsigned int),
              const Fields& in, Signed& out)
{
    unsigned char digit = 0;
    const status_t status = f(in.unsignedNumber(1), in.unsignedNumber(2), &digit, 1);
    out.value = digit - '0';
    return status;
}

status_t call(status_t (*f)(unsigned int, unsigned int, unsigned char*, unsigned int, int*),
              const Fields& in, Signed& out)
{
    auto digit = static_cast<unsigned char>('0' + in.unsignedNumber(3));
    return f(in.unsignedNumber(1), in.unsignedNumber(2), &digit, 1, &out.value);
}

// EEPROMs.

/// False when @p length is not accepted, or when there is no memory.
bool allocate(Bytes& out, int length)
{
    if (length < 0 || length > maxReadLength)
        return false;
    // At least one byte, as malloc(0) may return null.
    out.value.reset(static_cast<unsigned char*>(malloc(static_cast<size_t>(std::max(length, 1)))));
    out.count = length;
    return out.value != nullptr;
}

status_t call(status_t (*f)(int, int, unsigned char*), const Fields& in, Bytes& out)
{
    const int length = in.number(2);
    return allocate(out, length) ? f(in.number(1), length, out.value.get()) : OVIK_NO_APPLICATION;
}

status_t call(status_t (*f)(int, int, int, unsigned char*), const Fields& in, Bytes& out)
{
    const int length = in.number(3);
    return allocate(out, length) ? f(in.number(1), in.number(2), length, out.value.get())
                                 : OVIK_NO_APPLICATION;
}

/// The only function with a callback; the call may wait for its result.
CallStatus call(status_t (*)(const char*, const char*, const char*, void*, int*), const Fields& in,
                Outcome& out)
{
    return serviceCommand(in, out);
}

// --- A command runs the C function of its name; three have no function of that name ---

constexpr std::nullptr_t ovik_quit = nullptr;
constexpr auto ovik_getBacklightCounter = ovik_getBackLightCounter;
constexpr auto ovik_getHWPluginIoMode = ovik_getHWPluginIOMode;

template <class Value>
void prepare(const Command&, Value&)
{
}

void prepare(const Command& command, Text& out)
{
    out.size = command.textLimit > 0 ? command.textLimit + 1 : int{sizeof str};
}

template <class Value, class Function>
CallStatus run(Function function, const Command& command, const Fields& in, Response& resp)
{
    Value value;
    prepare(command, value);
    const CallStatus result = call(function, in, value);
    if (result.status == OVIK_OK)
        write(resp, value);
    return result;
}

/// @return OVIK_OK when the point of @p in may be written, OVIK_WRONG_MODE, or the query's failure
status_t checkMode(ModeQuery query, const Fields& in)
{
    if (query == ModeQuery::None)
        return OVIK_OK;
    const auto queryMode =
        query == ModeQuery::getHWPluginIoMode ? ovik_getHWPluginIOMode : ovik_getHWPluginLedMode;
    int mode = 0;
    const status_t status = queryMode(in.unsignedNumber(1), in.unsignedNumber(2), &mode);
    if (status != OVIK_OK)
        return status;
    return mode == settableMode ? OVIK_OK : OVIK_WRONG_MODE;
}
} // namespace

CallStatus runCommand(const Command& command, const Fields& in, Response& resp)
{
    const status_t status = checkMode(command.modeQuery, in);
    if (status != OVIK_OK)
        return status;
    switch (command.id) {
// Compiles only if the function of the row's name has an answer of the row's shape.
#define COMMAND(word, effect, shape, ...)                                                          \
    case CommandId::word:                                                                          \
        return run<shape>(ovik_##word, command, in, resp);
#include "protocol/commands.def"
    }
    return OVIK_NOT_RUN;
}

// The table's numbers must equal those of the C API.
#define STATUS(name, number, meaning) static_assert((name) == (number));
#include "protocol/statuses.def"
