#pragma once

#include "bench/rounds.h"

#include <fstream>
#include <initializer_list>
#include <string>

enum class Goal { None, AtLeast, AtMost };

/// The table of ratios, on standard output and as a file; and files of points to plot.
class Report
{
public:
    explicit Report(const std::string& directory);
    ~Report();

    /// Begins a part of the table.
    void part(const std::string& title);
    /**
     * A line of the table.
     *
     * @param ratios one per round
     * @param took   what was compared, "12 us / 15 us" or "80/s / 100/s": an absolute figure stands
     *               beside its ratio
     */
    void row(const std::string& what, const std::string& against, const Rounds& ratios,
             const std::string& took, Goal goal = Goal::None, double bound = 0);
    /// What belongs to the part but is no ratio.
    void remark(const std::string& text);

    std::ofstream points(const std::string& name) const;

private:
    std::string m_directory;
    std::ofstream m_table;
    std::ofstream m_tsv;
    std::string m_part;
    int m_missed = 0;
    int m_goals = 0;
};

/// "12.3 us"
std::string duration(double nanoseconds);
/// "12.3 us / 45.6 us", of the medians
std::string durations(const Rounds& ours, const Rounds& others);
/// "123/s / 456/s", of the medians of what took so long
std::string rates(const Rounds& ours, const Rounds& others);
/// As printf().
std::string format(const char* form, ...) __attribute__((format(printf, 1, 2)));
