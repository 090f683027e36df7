#include "bench/report.h"

#include <cstdarg>
#include <cstdio>
#include <filesystem>

Report::Report(const std::string& directory) : m_directory(directory)
{
    std::filesystem::create_directories(directory);
    m_table.open(directory + "/table.md");
    m_table << "| measured | compared with | ratio | quartiles | values | goal | |\n"
               "|---|---|---|---|---|---|---|\n";
}

void Report::row(const std::string& what, const std::string& comparedWith, const Samples& ratios,
                 const std::string& values, const Goal& goal)
{
    const double ratio = median(ratios);
    std::string spread, wanted, verdict;
    if (ratios.size() > 1)
        spread = format("%.3g to %.3g", quantile(ratios, 0.25), quantile(ratios, 0.75));
    if (goal.kind != Goal::None) {
        const bool isLeast = goal.kind == Goal::AtLeast;
        wanted = format("%s %g", isLeast ? "at least" : "at most", goal.bound);
        verdict = (isLeast ? ratio >= goal.bound : ratio <= goal.bound) ? "met" : "NOT MET";
    }
    const std::string line = "| " + what + " | " + comparedWith + " | " + format("%.3g", ratio) +
                             " | " + spread + " | " + values + " | " + wanted + " | " + verdict +
                             " |\n";
    m_table << line << std::flush;
    fputs(line.c_str(), stdout);
    fflush(stdout);
}

std::ofstream Report::points(const std::string& name) const
{
    return std::ofstream(m_directory + "/" + name + ".tsv");
}

namespace
{
std::string duration(double nanoseconds)
{
    return nanoseconds < 1e6 ? format("%.3g us", nanoseconds / 1e3)
                             : format("%.3g ms", nanoseconds / 1e6);
}
} // namespace

std::string durations(const Samples& ours, const Samples& others)
{
    return duration(median(ours)) + " / " + duration(median(others));
}

std::string rates(const Samples& ours, const Samples& others)
{
    return format("%.0f/s / %.0f/s", 1e9 / median(ours), 1e9 / median(others));
}

std::string kibibytes(const Samples& ours, const Samples& others)
{
    return format("%.0f / %.0f KiB", median(ours), median(others));
}

std::string format(const char* form, ...)
{
    char text[512];
    va_list arguments;
    va_start(arguments, form);
    vsnprintf(text, sizeof text, form, arguments);
    va_end(arguments);
    return text;
}
