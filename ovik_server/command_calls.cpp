#include "ovik_server/command_calls.h"

#include "ovik_server/service_command.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace
{
/// Scratch for text results.
char str[10000];
constexpr int parameterSize = 100;
constexpr int moduleNameSize = 5;

/// The longest EEPROM read that is tried; far more than an answer can hold.
constexpr int maxReadLength = 65535;

/// The mode in which a plug-in point may be set.
constexpr int settableMode = 2;

/// The C API leaves a text that fills its buffer without a NUL, so it is ended here, at @p end.
status_t inScratch(status_t status, size_t end, Result& out)
{
    str[end] = 0;
    out.text = str;
    return status;
}

// --- One line per form of C function: which fields it is given, and where its answer goes ---

status_t call(status_t (*f)(int*), const Fields&, Result& out) { return f(&out.value); }

status_t call(status_t (*f)(int, int*), const Fields& in, Result& out)
{
    return f(in.number(1), &out.value);
}

status_t call(status_t (*f)(const char*, int*), const Fields& in, Result& out)
{
    return f(in.text(1).constData(), &out.value);
}

status_t call(status_t (*f)(const char*, bool*), const Fields& in, Result& out)
{
    bool flag = false;
    const status_t status = f(in.text(1).constData(), &flag);
    out.value = flag;
    return status;
}

status_t call(status_t (*f)(const char*, const char*, int*), const Fields& in, Result& out)
{
    return f(in.text(1).constData(), in.text(2).constData(), &out.value);
}

status_t call(status_t (*f)(uint64_t*), const Fields&, Result& out) { return f(&out.size); }

status_t call(status_t (*f)(char*, int), const Fields&, Result& out)
{
    return inScratch(f(str, sizeof str), sizeof str - 1, out);
}

status_t call(status_t (*f)(const char*, char*, int), const Fields& in, Result& out)
{
    return inScratch(f(in.text(1).constData(), str, sizeof str), sizeof str - 1, out);
}

status_t call(status_t (*f)(unsigned int, unsigned int, int*), const Fields& in, Result& out)
{
    return f(in.unsignedNumber(1), in.unsignedNumber(2), &out.value);
}

status_t call(status_t (*f)(unsigned int, unsigned int, int, int*), const Fields& in, Result& out)
{
    return f(in.unsignedNumber(1), in.unsignedNumber(2), in.number(3), &out.value);
}

status_t call(status_t (*f)(unsigned int, unsigned int, unsigned int, int*), const Fields& in,
              Result& out)
{
    return f(in.unsignedNumber(1), in.unsignedNumber(2), in.unsignedNumber(3), &out.value);
}

status_t call(status_t (*f)(unsigned int, unsigned int, int, int, int*), const Fields& in,
              Result& out)
{
    return f(in.unsignedNumber(1), in.unsignedNumber(2), in.number(3), in.number(4), &out.value);
}

// --- What a row calls ---

/// A C function of one of the forms above.
template <auto function>
status_t plain(const Fields& in, Result& out)
{
    return call(function, in, out);
}

/// A write to a plug-in point, made only if @p modeQuery says that the point may be set.
template <auto modeQuery, auto write>
status_t guarded(const Fields& in, Result& out)
{
    int mode = 0;
    const status_t status = modeQuery(in.unsignedNumber(1), in.unsignedNumber(2), &mode);
    if (status != OVIK_OK)
        return status;
    return mode == settableMode ? call(write, in, out) : OVIK_WRONG_MODE;
}

/// A parameter is a short text: its buffer is a hundred bytes.
template <auto function>
status_t parameter(const Fields& in, Result& out)
{
    return inScratch(function(in.text(1).constData(), str, parameterSize), parameterSize - 1, out);
}

/// An EEPROM read of @p length bytes, done by @p read.
template <class Read>
status_t readBytes(int length, Result& out, Read read)
{
    if (length < 0 || length > maxReadLength)
        return OVIK_NO_APPLICATION; // the status of memory that cannot be had
    // One byte at least, as malloc may answer null to a length of 0.
    out.bytes.reset(static_cast<unsigned char*>(malloc(static_cast<size_t>(std::max(length, 1)))));
    if (!out.bytes)
        return OVIK_NO_APPLICATION;
    out.byteCount = length;
    return read(out.bytes.get());
}

status_t seepromRead(const Fields& in, Result& out)
{
    const int offset = in.number(1);
    const int length = in.number(2);
    return readBytes(length, out,
                     [&](unsigned char* data) { return ovik_seepromRead(offset, length, data); });
}

status_t seepromReadSlave(const Fields& in, Result& out)
{
    const int slaveAddress = in.number(1);
    const int offset = in.number(2);
    const int length = in.number(3);
    return readBytes(length, out, [&](unsigned char* data) {
        return ovik_seepromReadSlave(slaveAddress, offset, length, data);
    });
}

status_t systemInfo(const Fields&, Result& out)
{
    return inScratch(ovik_getSystemInfo(str, moduleNameSize, &out.hwCode, &out.manufactureCode),
                     moduleNameSize, out); // all of its five bytes may be the name's
}

// An I/O point's value travels to and from the C API as one digit.

status_t readPoint(const Fields& in, Result& out)
{
    unsigned char digit = 0;
    const status_t status =
        ovik_getHWPluginIO(in.unsignedNumber(1), in.unsignedNumber(2), &digit, 1);
    out.value = digit - '0';
    return status;
}

status_t writePoint(unsigned int slot, unsigned int index, unsigned int value, int* pResp)
{
    auto digit = static_cast<unsigned char>('0' + value);
    return ovik_setHWPluginIO(slot, index, &digit, 1, pResp);
}

status_t quit(const Fields&, Result& out)
{
    out.isLast = true;
    return OVIK_OK;
}

constexpr auto ioMode = ovik_getHWPluginIOMode;
constexpr auto ledMode = ovik_getHWPluginLedMode;

/// In the order of the table.
Call* const calls[] = {
#define COMMAND_LOGGED_AS(name, ...) COMMAND(__VA_ARGS__)
#define COMMAND(word, shape, answer, call, ...) call,
#include "ovik_server/commands.def"
};
static_assert(std::size(calls) == std::tuple_size_v<decltype(commandTable)>);
} // namespace

Call* callOf(const Command& command) { return calls[&command - commandTable.data()]; }
