#include "bench/report.h"

#include <cstdarg>
#include <cstdio>
#include <filesystem>

Report::Report(const std::string& directory) : m_directory(directory)
{
    std::filesystem::create_directories(directory);
    m_table.open(directory + "/table.md");
    m_tsv.open(directory + "/results.tsv");
    m_table << "| measured | against | ratio | quartiles | took | goal | |\n"
               "|---|---|---|---|---|---|---|\n";
    m_tsv << "part\tmeasured\tagainst\tratio\tquartile1\tquartile3\trounds\ttook\tgoal\tmet\n";
}

Report::~Report()
{
    if (m_goals > 0)
        printf("\n%d of %d rows with a goal meet it\n", m_goals - m_missed, m_goals);
}

void Report::part(const std::string& title)
{
    m_part = title;
    printf("\n%s\n", title.c_str());
    fflush(stdout);
    m_table << "| **" << title << "** | | | | | | |\n";
}

void Report::row(const std::string& what, const std::string& against, const Rounds& ratios,
                 const std::string& took, Goal goal, double bound)
{
    const double ratio = median(ratios);
    const std::string spread =
        format("%.3g to %.3g", quantile(ratios, 0.25), quantile(ratios, 0.75));
    std::string wanted;
    std::string verdict;
    if (goal != Goal::None) {
        const bool met = goal == Goal::AtLeast ? ratio >= bound : ratio <= bound;
        wanted = format("%s %g", goal == Goal::AtLeast ? "at least" : "at most", bound);
        verdict = met ? "met" : "NOT MET";
        ++m_goals;
        m_missed += !met;
    }
    printf("  %-44s %-40s %8.3g  (%s)  %s  %s %s\n", what.c_str(), against.c_str(), ratio,
           spread.c_str(), took.c_str(), wanted.c_str(), verdict.c_str());
    fflush(stdout);
    m_table << "| " << what << " | " << against << " | " << format("%.3g", ratio) << " | "
            << (ratios.size() > 1 ? spread : "") << " | " << took << " | " << wanted << " | "
            << verdict << " |\n";
    m_tsv << m_part << '\t' << what << '\t' << against << '\t' << ratio << '\t'
          << quantile(ratios, 0.25) << '\t' << quantile(ratios, 0.75) << '\t' << ratios.size()
          << '\t' << took << '\t' << wanted << '\t' << verdict << '\n';
    m_table.flush();
    m_tsv.flush();
}

void Report::remark(const std::string& text)
{
    printf("  %s\n", text.c_str());
    fflush(stdout);
    m_table << "| " << text << " | | | | | | |\n";
}

std::ofstream Report::points(const std::string& name) const
{
    return std::ofstream(m_directory + "/" + name + ".tsv");
}

std::string duration(double nanoseconds)
{
    if (nanoseconds < 1e6)
        return format("%.3g us", nanoseconds / 1e3);
    return format("%.3g ms", nanoseconds / 1e6);
}

std::string durations(const Rounds& ours, const Rounds& others)
{
    return duration(median(ours)) + " / " + duration(median(others));
}

std::string rates(const Rounds& ours, const Rounds& others)
{
    return format("%.0f/s / %.0f/s", 1e9 / median(ours), 1e9 / median(others));
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
