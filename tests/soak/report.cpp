#include "tests/soak/report.h"

#include <algorithm>
#include <iostream>

namespace
{
/// Memory in KiB that the allocator may still take after everything has happened once. A leak of 48
/// bytes per request exceeds it within two minutes. Ignored under a sanitizer.
constexpr long memorySlack = 256;
constexpr size_t fewest = 3;

std::string printable(const std::string& bytes)
{
    constexpr size_t longest = 200;
    std::string text;
    for (const char byte : bytes.substr(0, longest)) {
        char code[8];
        snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned char>(byte));
        text += byte == '\n' || (byte >= ' ' && byte <= '~') ? std::string(1, byte) : code;
    }
    return bytes.size() > longest ? text + "... (" + std::to_string(bytes.size()) + " bytes)"
                                  : text;
}

/// The footprint with the median memory, and the maximum of each other figure.
Footprint typical(std::vector<Footprint> some)
{
    std::sort(some.begin(), some.end(),
              [](const Footprint& a, const Footprint& b) { return a.memory < b.memory; });
    Footprint result = some[some.size() / 2];
    for (const Footprint& one : some) {
        result.descriptors = std::max(result.descriptors, one.descriptors);
        result.threads = std::max(result.threads, one.threads);
    }
    return result;
}

void list(const char* what, const std::map<std::string, long>& counts)
{
    long sum = 0;
    for (const auto& count : counts)
        sum += count.second;
    std::cout << what << ": " << sum << '\n';
    for (const auto& count : counts)
        std::cout << "  " << count.first << ": " << count.second << '\n';
}
} // namespace

void Report::complain(const std::string& what, const std::string& expected, const std::string& got)
{
    ++wrong;
    std::cout << "WRONG: " << printable(what) << "\n  expected: " << printable(expected)
              << "\n  got:      " << printable(got) << std::endl;
}

bool Report::conclude(unsigned int seed, int seconds) const
{
    std::cout << "seed: " << seed << "\nseconds: " << seconds << "\nrequests: " << requests << '\n';
    list("clients", clients);
    list("faults", faults);
    std::cout << "wrong answers: " << wrong << '\n';
    if (footprints.size() < 2 * fewest) {
        std::cout << "growth: not measured, the run was too short\n";
        return wrong == 0;
    }
    const size_t part = std::max(fewest, footprints.size() / 10);
    const auto count = static_cast<std::ptrdiff_t>(part);
    const Footprint first = typical({footprints.begin(), footprints.begin() + count});
    const Footprint last = typical({footprints.end() - count, footprints.end()});
    std::cout << "at first: " << first << "\nat last: " << last
              << "\ngrowth: " << last.memory - first.memory << " KiB (bound " << memorySlack
              << "), " << last.descriptors - first.descriptors << " descriptors, "
              << last.threads - first.threads << " threads, between the typical of " << part
              << " measures at either end of " << footprints.size() << std::endl;
    return wrong == 0 && isBackAt(first, last, memorySlack);
}
