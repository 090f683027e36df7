#pragma once

#include "bench/timing.h"

#include <fstream>
#include <string>

struct Goal {
    enum Kind { None, AtLeast, AtMost } kind = None;
    double bound = 0;
};

/// Writes the table of ratios to standard output and to table.md, and the data files for the plots.
class Report
{
public:
    explicit Report(const std::string& directory);

    /**
     * Adds a line to the table.
     *
     * @param ratios one per round
     * @param values numerator and denominator in their unit, such as "12 us / 15 us"
     */
    void row(const std::string& what, const std::string& comparedWith, const Samples& ratios,
             const std::string& values, const Goal& goal = {});

    /// A data file for bench/plots.gp.
    std::ofstream points(const std::string& name) const;

private:
    std::string m_directory;
    std::ofstream m_table;
};

/// "12.3 us / 45.6 us", from the medians.
std::string durations(const Samples& ours, const Samples& others);
/// "123/s / 456/s", from the medians of the ns per operation.
std::string rates(const Samples& ours, const Samples& others);
/// "123 / 456 KiB", from the medians.
std::string kibibytes(const Samples& ours, const Samples& others);
std::string format(const char* form, ...) __attribute__((format(printf, 1, 2)));
