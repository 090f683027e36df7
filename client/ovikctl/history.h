#pragma once

#include <histedit.h>
#include <string>

/// The lines of the prompt, and a file that keeps those without secrets for the next time.
class LineHistory
{
public:
    LineHistory();
    ~LineHistory();
    LineHistory(const LineHistory&) = delete;
    LineHistory& operator=(const LineHistory&) = delete;

    /// For the editor.
    History* lines() { return m_lines; }

    /// Remembers a line for this session, and for the file if @p forFile and no command in it has a
    /// secret.
    void add(const std::string& line, bool forFile);

private:
    History* m_lines;
    std::string m_path; ///< empty when there is no place for it
};
