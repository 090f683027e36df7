#pragma once

#include <climits>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
#include <string>

// Values for the fakes, generated from the end of the input. After the end of the input, each
// function returns its first choice, so a seed may consist of requests only.

/// Mostly success, sometimes failure, rarely a number that is no status.
inline int drawStatus(FuzzedDataProvider& input)
{
    const int choice = input.ConsumeIntegralInRange(0, 31);
    if (choice < 24)
        return 0;
    return choice < 31 ? -input.ConsumeIntegralInRange(1, 12) : input.ConsumeIntegral<int>();
}

/// The mode in which a plug-in point may be set, or an extreme number.
inline int drawNumber(FuzzedDataProvider& input)
{
    constexpr int choices[] = {2, 0, 1, -1, INT_MAX, INT_MIN};
    const size_t choice = input.ConsumeIntegralInRange<size_t>(0, std::size(choices));
    return choice < std::size(choices) ? choices[choice] : input.ConsumeIntegral<int>();
}

/// At most @p most bytes, without NUL unless @p withNul. Four bytes of the input repeat, so that a
/// small input can produce large answers.
inline std::string drawBytes(FuzzedDataProvider& input, size_t most, bool withNul)
{
    const bool whole = input.ConsumeIntegralInRange(0, 3) == 1;
    const size_t length = whole ? most : input.ConsumeIntegralInRange<size_t>(0, most);
    const auto pattern = input.ConsumeIntegral<uint32_t>();
    std::string bytes(length, 0);
    for (size_t i = 0; i < length; ++i) {
        bytes[i] = static_cast<char>(pattern >> 8 * (i % 4));
        if (!bytes[i] && !withNul)
            bytes[i] = 'x';
    }
    return bytes;
}
